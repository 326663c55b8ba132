#!/usr/bin/env python3
"""Makes the Windows installer from two installed trees.

make-installer.py VERSION MINGW_TREE MSVC_TREE OUTPUT

The installer's lists name every file, so that its uninstaller removes these files and no others. Debug files stay out: the
zips have them.
"""
import pathlib
import subprocess
import sys
import tempfile

LEFT_OUT = {".debug", ".pdb"}
SCRIPT = pathlib.Path(__file__).resolve().parent.parent / "packaging/windows/installer.nsi"


def windows(path):
    return str(path).replace("/", "\\")


def files(tree):
    return sorted(path for path in tree.rglob("*") if path.is_file() and path.suffix not in LEFT_OUT)


def install_list(tree, place):
    """NSIS commands that unpack every file of a tree, folder by folder."""
    lines = []
    for folder in sorted({path.parent for path in files(tree)}):
        lines.append(f'SetOutPath "{windows(place / folder.relative_to(tree))}"')
        lines += [f'File "{path}"' for path in files(tree) if path.parent == folder]
    return lines


def remove_list(tree, place):
    """NSIS commands that delete the same files, and the folders that are empty then, the deepest first."""
    lines = [f'Delete "{windows(place / path.relative_to(tree))}"' for path in files(tree)]
    folders = sorted((path for path in tree.rglob("*") if path.is_dir()), key=lambda path: (-len(path.parts), path))
    lines += [f'RMDir "{windows(place / path.relative_to(tree))}"' for path in folders]
    return lines


def main(version, mingw, msvc, output):
    with tempfile.TemporaryDirectory() as lists:
        for name, tree, place in (("mingw", pathlib.Path(mingw).resolve(), pathlib.PurePosixPath("$INSTDIR")),
                                  ("msvc", pathlib.Path(msvc).resolve(), pathlib.PurePosixPath("$INSTDIR/msvc"))):
            removed = remove_list(tree, place) + ([] if name == "mingw" else [f'RMDir "{windows(place)}"'])
            for kind, lines in (("install", install_list(tree, place)), ("remove", removed)):
                pathlib.Path(lists, f"{name}-{kind}.nsh").write_text("\n".join(lines) + "\n", encoding="utf-8")
        defines = {"VERSION": version, "OUTFILE": pathlib.Path(output).resolve(), "LISTS": lists,
                   "LICENCE": pathlib.Path(mingw).resolve() / "LICENSE"}
        done = subprocess.run(["makensis", "-V2", "-WX", "-INPUTCHARSET", "UTF8",
                               *[f"-D{name}={value}" for name, value in defines.items()], str(SCRIPT)],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"make-installer.py: makensis failed:\n{done.stdout}")


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
