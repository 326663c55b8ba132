#!/usr/bin/env python3
"""Fails unless the host program shown in README.md is examples/inbox.cpp, letter for letter, every file that the
README and docs/ name in backticks or as a path is there, every command line of zeb is one that the tests run, and every test
that SECURITY.md names is there."""
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

# The pages whose "$ zeb" examples tests/tools/test_documents.py runs.
followed = re.findall(r'self\.follow\("(.+)"\)', (root / "tests/tools/test_documents.py").read_text(encoding="utf-8"))
for page in [root / "README.md", root / "CONTRIBUTING.md", *sorted((root / "docs").glob("*.md"))]:
    name, text = page.relative_to(root).as_posix(), page.read_text(encoding="utf-8")
    for file in re.findall(r"(?<![\w/.])((?:docs|scripts|examples|cmake|deps)/[\w./-]*\w)", text):
        if not (root / file).exists():
            problems.append(f"{name} names {file}, which is not there")
    for line in re.findall(r"^    ((?:\$ )?zeb .*)", text, re.M):
        if not line.startswith("$ ") or name not in followed:
            problems.append(f"{name} shows '{line}', which no test runs")

security = (root / "SECURITY.md").read_text(encoding="utf-8")
claims = [line for line in security.splitlines() if line.startswith("| ")][1:]
tests = {path: path.read_text(encoding="utf-8") for suffix in ("cpp", "py") for path in (root / "tests").rglob(f"*.{suffix}")}
for claim in claims:
    for suite, name, function in re.findall(r"`(\w+)\.(\w+)`|`(test_\w+)`", claim):
        wanted = rf"def {function}\(" if function else rf"TEST(?:_[FP])?\(\w*{suite}\w*, {name}\)"
        if not any(re.search(wanted, text) for text in tests.values()):
            problems.append(f"SECURITY.md names the test {function or f'{suite}.{name}'}, which is not there")
    if "`" not in claim.split("|")[2]:
        problems.append(f"SECURITY.md shows nothing for '{claim.split('|')[1].strip()}'")
if not claims:
    problems.append("SECURITY.md has no table of its claims")

print("\n".join(problems) if problems else "README.md and docs/ agree with the tree")
sys.exit(1 if problems else 0)
