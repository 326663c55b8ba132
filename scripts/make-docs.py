#!/usr/bin/env python3
"""Makes the site of the documents: the public headers and docs/*.md, by Doxygen.

make-docs.py [FOLDER]   writes FOLDER/html/index.html (default: build/docs); fails on any warning and on any public name
                        without a text, and lists them
"""
import html
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# What hosts include: all that these reach is public, as in cmake/ZebInstall.cmake.
ROOTS = ["zebapi/ZebAPI.h", "framework/framework.h"]
# Declares overloads for Doxygen, which does not know the order of slots (docs/msvc.md), and makes the comment at the top of a
# header that of its file: Doxygen lists functions outside classes only in files that have one. Lines keep their numbers.
FILTER = (r"""sed '/ZEB_OVERLOADS($/,/);$/{s/ZEB_OVERLOADS($//;s/)\( const\)*,$/)\1;/;s/)\( const\)*);$/)\1;/};"""
          r"""1,/^#pragma once/s#^// *#/// #;1s#^/// #/// @thisfile #'""")
SETTINGS = {
    "PROJECT_NAME": "ZebAPI",
    "PROJECT_BRIEF": '"A class interface over Extended MAPI"',
    "USE_MDFILE_AS_MAINPAGE": "docs/README.md",
    "STRIP_FROM_PATH": ".",
    "STRIP_FROM_INC_PATH": ".",
    "FILTER_PATTERNS": f'*.h="{FILTER}" *.md="python3 scripts/make-docs.py --page"',
    "IMAGE_PATH": "docs/images docs",
    "MACRO_EXPANSION": "YES",
    "EXPAND_ONLY_PREDEF": "YES",
    "SKIP_FUNCTION_MACROS": "NO",
    "PREDEFINED": '"ZEBAPI_EXPORT=" "STDMETHOD(name)=virtual HRESULT name" "STDMETHOD_(type,name)=virtual type name" '
                  '"ZEB_DECLARE_DYNAMIC(name)=" "_WIN32=1"',
    "ALIASES": '"thisfile=@file^^"',
    # Of the standard library's namespace; the helpers of one macro, which a comment there explains.
    "EXCLUDE_SYMBOLS": "std std::* ZEB_OVERLOADS_*",
    "GENERATE_LATEX": "NO",
    "JAVADOC_AUTOBRIEF": "YES",
    "TOC_INCLUDE_HEADINGS": "2",
    "AUTOLINK_SUPPORT": "NO",
    "SORT_MEMBER_DOCS": "NO",
    "EXTRACT_STATIC": "YES",
    "HIDE_UNDOC_CLASSES": "NO",
    "INHERIT_DOCS": "YES",
    "WARN_IF_UNDOCUMENTED": "YES",
    # A text says what a parameter's name does not.
    "WARN_IF_INCOMPLETE_DOC": "NO",
    "WARN_NO_PARAMDOC": "NO",
    "QUIET": "YES",
    "DOT_IMAGE_FORMAT": "svg",
    "HAVE_DOT": "NO",
    "CLASS_GRAPH": "YES",
}


def public_headers():
    """The headers that the umbrella and the framework's reach, in the order in which they are reached."""
    seen, open_ = [], list(ROOTS)
    while open_:
        header = open_.pop(0)
        if header not in seen:
            seen.append(header)
            open_ += re.findall(r'^#include "([^"]+)"', (ROOT / header).read_text(encoding="utf-8"), re.M)
    return seen


def anchor(page, heading):
    """The label of a heading; `heading` as in a link inside a page ("getting-started")."""
    return f"{Path(page).stem.lower()}-{heading}"


def page_text(name):
    """A page for Doxygen: headings get labels, which links inside pages need, and "docs/wab.md" becomes a link."""
    lines, in_code = [], False
    for line in (ROOT / name).read_text(encoding="utf-8").splitlines():
        in_code = in_code != line.startswith("```")
        heading = re.match(r"##+ (.*)$", line)
        if in_code or line.startswith("    "):
            pass
        elif heading:
            slug = re.sub(r"[^\w-]", "", heading[1].lower().replace(" ", "-"))
            line += f" {{#{anchor(name, slug)}}}"
        else:
            line = re.sub(r"\]\(#([\w-]+)\)", lambda link: f"](#{anchor(name, link[1])})", line)
            line = re.sub(r"\]\(([\w-]+)\.md#([\w-]+)\)", lambda link: f"](#{anchor(link[1], link[2])})", line)
            line = re.sub(r"(?<![\w(/`\[])docs/([\w-]+)\.md", r"[docs/\1.md](\1.md)", line)
        lines.append(line)
    return "\n".join(lines) + "\n"


def run(output):
    version = re.search(r"project\(ZebAPI VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]
    inputs = [*public_headers(), *(f"docs/{page.name}" for page in sorted((ROOT / "docs").glob("*.md")))]
    lines = [f"{key} = {value}" for key, value in SETTINGS.items()]
    lines += [f"PROJECT_NUMBER = {version}", f"OUTPUT_DIRECTORY = {output}", f"INPUT = {' '.join(inputs)}"]
    done = subprocess.run(["doxygen", "-"], input="\n".join(lines), cwd=ROOT, capture_output=True, text=True, check=False)
    return done.returncode, [line for line in done.stderr.splitlines() if line.strip()]


def broken_links(site):
    """One line for each link of the site to a file that it does not have."""
    for page in sorted(site.glob("*.html")):
        for link in sorted(set(re.findall(r'(?:href|src|data)="([^"]+)"', page.read_text(encoding="utf-8", errors="replace")))):
            file = html.unescape(link).split("#")[0].split("?")[0]
            if file and not re.match(r"[a-z]+:", file) and not (site / file).exists():
                yield f"{page.name}: a link to '{link}', which is not there"


def main(arguments):
    if arguments[:1] == ["--page"] and len(arguments) == 2:
        sys.stdout.write(page_text(arguments[1]))
        return 0
    if len(arguments) > 1:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    if shutil.which("doxygen") is None:
        sys.exit("make-docs.py: doxygen is missing: install it")
    output = Path(arguments[0]).resolve() if arguments else ROOT / "build/docs"
    output.mkdir(parents=True, exist_ok=True)
    shutil.rmtree(output / "html", ignore_errors=True)
    code, warnings = run(output)
    warnings += broken_links(output / "html")
    print("\n".join(warnings) if warnings else f"{output}/html/index.html")
    return 1 if code or warnings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
