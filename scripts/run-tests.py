#!/usr/bin/env python3
"""Runs the test programs that CTest knows in one build folder, and counts single tests.

run-tests.py BUILD_DIR [--only REGEX] [--tally FILE] [--jobs N] [--list] [--profiles FOLDER]

GoogleTest's programs and pytest are counted by their own report, Python's unittest programs by their summary, anything
else as one test. A program runs as a whole, not each of its tests by itself: starting one takes longer than most tests.
Prints one line a program, the whole output of one that failed, then what the programs counted ("counted NAME: N" in their
output), and appends "NAME PASSED FAILED" lines to the tally file. With --profiles, what each program and its processes reach is
counted in a folder of its name there (scripts/coverage.py). Exit code 1 when a test failed or a program crashed, 2 when there was
nothing to run.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import time
from xml.etree import ElementTree


def programs(build, only):
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, check=True, capture_output=True, text=True)
    for test in json.loads(listing.stdout)["tests"]:
        if only and not re.search(only, test["name"]):
            continue
        if "command" not in test:
            sys.exit(f"run-tests.py: {test['name']} is not built in {build}")
        properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        yield test["name"], test["command"], properties


def count(report, output, code):
    """Passed and failed tests of one program that ended with `code`."""
    if report.exists():
        try:
            tests = list(ElementTree.parse(report).iter("testcase"))
        except ElementTree.ParseError:
            return 0, 1
        ran = [test for test in tests if test.get("status") != "notrun"]
        bad = sum(1 for test in ran if any(test.find(kind) is not None for kind in ("failure", "error", "skipped")))
        return len(ran) - bad, bad
    summary = re.search(r"^Ran (\d+) tests? in", output, re.M)
    if summary:
        total = int(summary.group(1))
        bad = sum(int(n) for n in re.findall(r"(?:failures|errors|skipped)=(\d+)", output))
        return total - bad, bad
    return (1, 0) if code == 0 else (0, 1)


def run_once(command, log, folder, environment, timeout):
    # A file, not a pipe: Wine's own processes inherit it and would keep a pipe open long after the program's end.
    late = ""
    with log.open("wb") as out:
        try:
            code = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                  stderr=subprocess.STDOUT, timeout=timeout).returncode
        except subprocess.TimeoutExpired:
            code, late = -1, "\nran out of time\n"
    return code, log.read_bytes().decode("utf-8", "replace") + late


def profile_of(profiles, name):
    """One file for each binary, in which all its processes count."""
    return {"LLVM_PROFILE_FILE": str(profiles / name / "%m%c.profraw")} if profiles else {}


def run(build, logs, profiles, name, command, properties):
    report = logs / f"{name}.xml"
    log = logs / f"{name}.log"
    report.unlink(missing_ok=True)
    environment = {**os.environ, **profile_of(profiles, name)}
    for entry in properties.get("ENVIRONMENT", []):
        key, _, value = entry.partition("=")
        environment[key] = value
    # Under Wine a Linux path is found on drive Z.
    windows = any(part.endswith(".exe") for part in command)
    environment["GTEST_OUTPUT"] = f"xml:{'Z:' if windows else ''}{report}"
    environment["PYTEST_ADDOPTS"] = f"--junit-xml={report}"
    begin = time.monotonic()
    timeout = properties.get("TIMEOUT", 600)
    code, output = run_once(command, log, properties.get("WORKING_DIRECTORY", build), environment, timeout)
    passed, failed = count(report, output, code)
    if code != 0 and failed == 0:
        failed = 1
    if code == 0 and passed == 0 and failed == 0:
        failed, output = 1, output + "\nran no test\n"
    log.write_text(output, encoding="utf-8")
    return name, passed, failed, code, output, time.monotonic() - begin


class Counts:
    """The sums of what test programs count beside their verdicts."""
    LINES = {
        "fault points": ("calls", "allocations", "new", "system calls"),
        "crashes": ("kills", "I/O faults", "power losses"),
        "model": ("operations", "differences"),
    }

    def __init__(self):
        self.sums = collections.Counter()
        self.failed = collections.Counter()

    def add(self, output, failed):
        found = re.findall(r"^counted (.+): (\d+)\r?$", output, re.M)
        for name, number in found:
            self.sums[name] += int(number)
        for line in {self.line_of(name) for name, _ in found}:
            self.failed[line] += failed

    @classmethod
    def line_of(cls, name):
        return next((line for line, names in cls.LINES.items() if name in names), "fault points")

    def lines(self):
        """One for each line with a count; a failed test of a program that counts crashes has lost something, and one of the
        model's differs even where it does not come to its count."""
        for line, names in self.LINES.items():
            if line not in self.failed:
                continue
            if line == "model":
                self.sums["differences"] = max(self.sums["differences"], self.failed[line])
            points = line == "fault points"
            parts = [f"{name} {self.sums[f'{line}, {name}']}" if points else f"{self.sums[name]} {name}" for name in names]
            lost = f": {self.failed[line]} lost" if line == "crashes" else ""
            yield f"{line}: " + (" " if points else ", ").join(parts) + lost


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--only", help="only programs whose name matches")
    parser.add_argument("--tally", type=pathlib.Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--profiles", type=lambda name: pathlib.Path(name).resolve())
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    # Longest first, so that no long one runs alone at the end.
    found = sorted(programs(build, arguments.only), key=lambda each: -each[2].get("TIMEOUT", 0))
    if arguments.list:
        print("\n".join(name for name, _, _ in found))
        return 0
    if not found:
        print(f"run-tests.py: no test program in {build} matches", file=sys.stderr)
        return 2
    logs = build / "test-logs"
    logs.mkdir(exist_ok=True)
    bad = False
    counts = Counts()
    times = {}
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        jobs = [pool.submit(run, build, logs, arguments.profiles, *program) for program in found]
        for job in concurrent.futures.as_completed(jobs):
            name, passed, failed, code, output, seconds = job.result()
            print(f"  {build.name:16} {name:28} {passed:5} passed {failed:3} failed {seconds:7.1f} s", flush=True)
            counts.add(output, failed)
            times[name] = seconds
            if failed:
                bad = True
                print(output[-12000:])
                print(f"  {name} ended with code {code}; the whole output is {logs / (name + '.log')}", flush=True)
            if arguments.tally:
                with arguments.tally.open("a") as tally:
                    tally.write(f"{build.name}/{name} {passed} {failed}\n")
    if arguments.profiles:
        arguments.profiles.mkdir(parents=True, exist_ok=True)
        (arguments.profiles / "seconds.json").write_text(json.dumps(times), encoding="utf-8")
    for line in counts.lines():
        print(f"  {build.name:16} {line}")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
