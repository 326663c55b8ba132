#!/usr/bin/env python3
"""Writes the names of MAPI's constants for the debugger's printers, from the library's own tables.

debug-names.py BUILD           writes debug/zebapi_names.py (by `zeb name` of a build folder)
debug-names.py --check BUILD   fails when that file does not show the tables as they are
"""
import json
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FILE = ROOT / "debug/zebapi_names.py"


def table(zeb, name):
    """value: name of a table; the first name of a value, as the library gives it."""
    listed = subprocess.run([zeb, "name", name, "--json"], check=True, capture_output=True, text=True).stdout
    names = {}
    for row in json.loads(listed)["rows"]:
        names.setdefault(row["value"], row["name"])
    return names


def text(zeb):
    tags, codes, types = (table(zeb, name) for name in ("PropTags", "MAPIErrors", "PropType"))
    identifiers = table(zeb, "PropIDs")
    parts = ['"""The names of MAPI\'s constants. Written by scripts/debug-names.py."""\n',
             "# By tag, and by property identifier."]
    for name, rows, width in (("TAGS", {**tags, **identifiers}, 8), ("TYPES", types, 4), ("CODES", codes, 8)):
        lines = [f'    0x{value:0{width}X}: "{rows[value]}",' for value in sorted(rows)]
        parts += [f"{name} = {{", *lines, "}"]
    return "\n".join(parts) + "\n"


def main(arguments):
    check = arguments[:1] == ["--check"]
    if len(arguments) != 1 + check:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    written = text(str(Path(arguments[-1]).resolve() / "bin/zeb"))
    if check:
        current = FILE.read_text(encoding="utf-8") == written
        print("the names are current" if current else "debug/zebapi_names.py: other names than the library's: run scripts/debug-names.py")
        return 0 if current else 1
    FILE.write_text(written, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
