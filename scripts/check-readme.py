#!/usr/bin/env python3
"""Fails unless the host program shown in README.md is examples/inbox.cpp, letter for letter, and every file that the
README and docs/ name in backticks or as a path is there."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
readme = (root / "README.md").read_text(encoding="utf-8")
problems = []

shown = re.search(r"```cpp\n(.*?)```", readme, re.S)
example = (root / "examples" / "inbox.cpp").read_text(encoding="utf-8")
if not shown or shown.group(1) != example:
    problems.append("README.md does not show examples/inbox.cpp as it is")

for page in [root / "README.md", root / "CONTRIBUTING.md", *sorted((root / "docs").glob("*.md"))]:
    for name in re.findall(r"(?<![\w/.])((?:docs|scripts|examples|cmake|deps)/[\w./-]*\w)", page.read_text(encoding="utf-8")):
        if not (root / name).exists():
            problems.append(f"{page.relative_to(root)} names {name}, which is not there")

print("\n".join(problems) if problems else "README.md and docs/ agree with the tree")
sys.exit(1 if problems else 0)
