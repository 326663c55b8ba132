#!/usr/bin/env python3
"""Runs the integration suite by way of the system's own MAPI library: run_foreign.py LAUNCHER PROGRAM LIST

LIST (docs/windows.md) lists what cannot work there, one row with the name of the test for each:
| what | `Suite.Name` | why |
A listed test must fail, every other one pass, and every listed one be there; anything else fails.
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def listed_tests(text):
    rows = re.findall(r"^\| [^|]+ \| `(\w+\.\w+)` \| ([^|]+) \|$", text, re.M)
    return {name: reason.strip() for name, reason in rows}


def outcome(launcher, program):
    """Test by test whether it passed, and what was printed."""
    with tempfile.TemporaryDirectory(prefix="zeb-foreign-") as folder:
        report = pathlib.Path(folder) / "report.json"
        environment = dict(os.environ, GTEST_OUTPUT=f"json:Z:{report}")
        with open(pathlib.Path(folder) / "output", "w+b") as output:
            code = subprocess.run([launcher, program], env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=subprocess.STDOUT, timeout=900, check=False).returncode
            output.seek(0)
            printed = output.read().decode("utf-8", "replace")
        if not report.exists():
            sys.exit(f"{printed[-8000:]}\nrun_foreign.py: the program ended with {code} and left no report")
        data = json.loads(report.read_text(encoding="utf-8", errors="replace"))
    return {f"{suite['name']}.{test['name']}": test["status"] == "RUN" and not test.get("failures")
            for suite in data["testsuites"] for test in suite["testsuite"]}, printed


def judge(passed, listed):
    """One sentence for each test that is not as the list has it."""
    wrong = [f"{name} fails, and is not listed" for name in sorted(passed) if not passed[name] and name not in listed]
    wrong += [f"{name} passes, but is listed: {listed[name]}" for name in sorted(listed) if passed.get(name)]
    return wrong + [f"{name} is listed, but there is no such test" for name in sorted(listed) if name not in passed]


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    listed = listed_tests(pathlib.Path(sys.argv[3]).read_text(encoding="utf-8"))
    passed, printed = outcome(sys.argv[1], sys.argv[2])
    wrong = judge(passed, listed)
    if wrong:
        print(printed)
    for sentence in wrong:
        print("WRONG:", sentence)
    for name in sorted(set(listed) & set(passed)):
        print(f"listed: {name}")
    print(f"Ran {len(passed)} tests in one program\n\n{'FAILED (failures=%d)' % len(wrong) if wrong else 'OK'}")
    return 1 if wrong or not listed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
