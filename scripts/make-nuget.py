#!/usr/bin/env python3
"""Makes the NuGet package from the installed tree of the MSVC ABI.

make-nuget.py VERSION TREE OUTPUT.nupkg

The package is a zip in a fixed order with the time of SOURCE_DATE_EPOCH (of 1980 without it), so that the same files give
the same bytes.
"""
import os
import pathlib
import sys
import time
import zipfile
from xml.sax.saxutils import quoteattr

SOURCES = pathlib.Path(__file__).resolve().parent.parent / "packaging/nuget"
CORE = "http://schemas.openxmlformats.org/package/2006"
# What of the tree goes where; the first that fits. Everything else stays out.
PLACES = (("bin/", "build/native/bin/x64/"), ("lib/zebapi", "build/native/lib/x64/zebapi"), ("include/", "build/native/include/"),
          ("licences/", "licences/"), ("docs/", "docs/"), ("examples/", "examples/"))
TOP = ("README.md", "LICENSE", "NOTICES.md", "CHANGELOG.md")


def place(name):
    """The name in the package of a file of the tree, or None."""
    if name in TOP:
        return name
    return next((target + name[len(source):] for source, target in PLACES if name.startswith(source)), None)


def relationships():
    return ('<?xml version="1.0" encoding="utf-8"?>\n'
            f'<Relationships xmlns="{CORE}/relationships"><Relationship Id="R1" Target="/zebapi.nuspec" '
            'Type="http://schemas.microsoft.com/packaging/2010/07/manifest" /></Relationships>\n')


def content_types(names):
    """[Content_Types].xml: a type for every ending, and for every file without one."""
    endings = sorted({pathlib.PurePosixPath(name).suffix[1:] for name in names} - {""})
    kinds = {"rels": "application/vnd.openxmlformats-package.relationships+xml"}
    lines = [f'<Default Extension={quoteattr(each)} ContentType="{kinds.get(each, "application/octet")}" />' for each in endings]
    lines += [f'<Override PartName={quoteattr("/" + each)} ContentType="application/octet" />'
              for each in sorted(names) if not pathlib.PurePosixPath(each).suffix]
    return f'<?xml version="1.0" encoding="utf-8"?>\n<Types xmlns="{CORE}/content-types">{"".join(lines)}</Types>\n'


def parts(version, tree):
    """The package's files by name, without the list of content types."""
    found = {}
    for path in sorted(tree.rglob("*")):
        name = place(path.relative_to(tree).as_posix())
        if path.is_file() and name:
            found[name] = path.read_bytes()
    nuspec = (SOURCES / "zebapi.nuspec.in").read_text(encoding="utf-8").replace("@VERSION@", version)
    found["zebapi.nuspec"] = nuspec.encode()
    found["build/native/zebapi.targets"] = (SOURCES / "zebapi.targets").read_bytes()
    found["_rels/.rels"] = relationships().encode()
    return found


def main(version, tree, output):
    found = parts(version, pathlib.Path(tree))
    missing = {"build/native/lib/x64/zebapi.lib", "build/native/include/zebapi/ZebAPI.h", "LICENSE"} - set(found)
    if missing:
        sys.exit(f"make-nuget.py: {tree} is no installed tree of the MSVC ABI: it has no {', '.join(sorted(missing))}")
    found["[Content_Types].xml"] = content_types([*found, "a.rels"]).encode()
    moment = time.gmtime(max(int(os.environ.get("SOURCE_DATE_EPOCH", "0")), 315532800))[:6]
    with zipfile.ZipFile(output, "w") as package:
        for name in sorted(found):
            entry = zipfile.ZipInfo(name, moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            package.writestr(entry, found[name], compresslevel=9)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
