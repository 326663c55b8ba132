#!/usr/bin/env python3
"""Measures what the Linux suite reaches of the product's rooms, by the counters that clang puts into the sources.

coverage.py [BUILD_DIR] [--only REGEX] [--list FILE] [--report]
coverage.py --self-test     counts a small program: killed processes, templates, a room without lines, a floor

Runs the test programs of a build with ZEB_COVERAGE (default build/linux-coverage), prints the lines and branches that they
reached of each room, and writes those that they did not reach to FILE (default BUILD_DIR/not-reached.txt).
--report takes the counters of what ran last, by hand too. A branch is one outcome of a condition in the sources; what an
exception leaves is none, nor is what the compiler knows beforehand; a constexpr function that only the compiler runs has no
lines. Exit code 1 when a test fails, or a room is below its floor.
"""
import argparse
import collections
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
VERSION = 14  # of clang in the presets
# The least that is reached of each room: lines and branches, in per cent.
FLOORS = {"zebapi": (99.8, 98.9), "zebstore": (96.3, 90.7), "platform": (95.5, 89.5)}
# An outcome's count is a difference of two counters; a process that forks leaves them apart.
NEGATIVE = 1 << 62
# Programs that look at the libraries' files or at the tests themselves, and long ones that reach nothing which no other reaches.
LEFT_OUT = (r"(?!debugger_test|package_test|install_exports_|failures_calls_are_complete|.*_self_test"
            r"|soak_|import_test|large_value_|zebstore_power_loss_|zebstore_kill_)")


def run_tests(build, profiles, only):
    for old in profiles.glob("*/*.profraw"):
        old.unlink()
    command = [ROOT / "scripts/run-tests.py", build, "--only", f"^{LEFT_OUT}(?=.*(?:{only}))", "--profiles", profiles]
    return subprocess.run(command, check=False).returncode


def counted_programs(build):
    """The programs and libraries in which clang has put counters."""
    for file in sorted((build / "bin").rglob("*")):
        if file.is_file() and not file.is_symlink():
            content = file.read_bytes()
            if content.startswith(b"\x7fELF") and b"__llvm_covmap" in content:
                yield file


def merged(raw, data):
    """All counters in one file. Every file must be whole: no process writes one at its end."""
    if not raw:
        sys.exit(f"coverage.py: no test has counted anything for {data}")
    subprocess.run([f"llvm-profdata-{VERSION}", "merge", "-sparse", "-o", data, *raw], check=True)
    return data


def exported(programs, data):
    """What llvm-cov tells of each file."""
    objects = [part for program in programs for part in ("-object", program)][1:]
    command = [f"llvm-cov-{VERSION}", "export", "-skip-functions", "-skip-expansions", "-instr-profile", data, *objects]
    done = subprocess.run(command, check=True, capture_output=True)
    return json.loads(done.stdout)["data"][0]["files"]


def line_counts(segments):
    """How often each line with code was reached: by the count that it begins with, or the greatest that begins in it."""
    counts = {}
    starting = collections.defaultdict(list)
    for segment in segments:
        starting[segment[0]].append(segment)
    before = None
    for line in range(segments[0][0] if segments else 0, segments[-1][0] + 1 if segments else 0):
        here = starting.get(line, [])
        entries = [count for _, _, count, has_count, is_entry, is_gap in here if has_count and is_entry and not is_gap]
        skipped = bool(here) and not here[0][3] and here[0][4]
        if not skipped and (entries or before is not None and before[3]):
            counts[line] = max(entries + [before[2]] if before is not None else entries)
        before = here[-1] if here else before
    return counts


class Room:
    """The lines and branches of one room: those of templates are what any instance reached."""

    def __init__(self):
        self.lines = collections.defaultdict(dict)
        self.branches = collections.defaultdict(dict)

    def add(self, name, counts, branches):
        for line, count in counts.items():
            self.lines[name][line] = max(count, self.lines[name].get(line, 0))
        for branch in branches:
            place, known = tuple(branch[:4]), self.branches[name].get(tuple(branch[:4]), (0, 0))
            self.branches[name][place] = tuple(a + (b if b < NEGATIVE else 0) for a, b in zip(known, branch[4:6]))

    def reached(self):
        """Lines reached, lines, branches reached, branches."""
        lines = [count for file in self.lines.values() for count in file.values()]
        sides = [count for file in self.branches.values() for both in file.values() for count in both]
        return sum(map(bool, lines)), len(lines), sum(map(bool, sides)), len(sides)


def is_known_beforehand(text, place):
    """Whether a condition is a constant: neither outcome is counted."""
    line, column, end_line, end_column = place
    if line != end_line or line > len(text):
        return False
    condition, before = text[line - 1][column - 1:end_column - 1], text[line - 1][:column - 1]
    return condition in ("true", "false", "0", "1") or re.search(r"\bconstexpr\s*\($", before) is not None


def name_of(root, build, name):
    """The path in the tree, or None for a file outside of it."""
    path = pathlib.Path(os.path.normpath(root / name))
    if not path.is_file():
        path = pathlib.Path(os.path.normpath(build / name))
    return path.relative_to(root).as_posix() if root in path.parents else None


def compiled_away(text, counts):
    """The lines of constexpr functions that only the compiler has run: there is no code to reach."""
    found = set()
    for line, count in counts.items():
        signature = text[line - 2].strip() if line > 1 else ""
        if not count and text[line - 1].strip() == "{" and signature.startswith(("constexpr ", "static constexpr ")):
            end = "}".rjust(len(text[line - 1].rstrip()))
            while line in counts and not counts[line] and text[line - 1].rstrip() != end:
                found.add(line)
                line += 1
            found.add(line)
    return found


def rooms_of(files, root, build, names):
    rooms = {name: Room() for name in names}
    for file in files:
        name = name_of(root, build, file["filename"])
        room = rooms.get(name.split("/")[0]) if name else None
        if room is None:
            continue
        text = (root / name).read_text(encoding="utf-8").splitlines()
        counts = line_counts(file["segments"])
        absent = compiled_away(text, counts)
        branches = [each for each in file["branches"] if each[0] not in absent
                    and (any(each[4:6]) or not is_known_beforehand(text, each[:4]))]
        room.add(name, {line: count for line, count in counts.items() if line not in absent}, branches)
    return rooms


def percent(part, whole):
    """Rounded down: 100 is all."""
    return int(10000 * part / whole) / 100


def summary(rooms):
    """The line of figures, and one line for each room that has none or is below its floor."""
    figures, problems = [], []
    for name, room in rooms.items():
        lines, all_lines, branches, all_branches = room.reached()
        if not all_lines or not all_branches:
            problems.append(f"{name}: no lines were counted")
            continue
        found = percent(lines, all_lines), percent(branches, all_branches)
        figures.append(f"{name} L {found[0]:.2f} % B {found[1]:.2f} %")
        for what, value, floor in zip(("lines", "branches"), found, FLOORS.get(name, (0, 0))):
            if value < floor:
                problems.append(f"{name}: {value:.2f} % of the {what} are reached, the floor is {floor} %")
    return "coverage: " + ", ".join(figures), problems


def not_reached(rooms, root):
    """One line for each line and branch that was not reached, by file. A branch in a line that was not reached is left out."""
    for room in rooms.values():
        for name in sorted(room.lines.keys() | room.branches.keys()):
            text = (root / name).read_text(encoding="utf-8").splitlines()
            lines = room.lines.get(name, {})
            found = [(line, 0, "never reached") for line, count in lines.items() if not count]
            for (line, column, _, end), sides in room.branches.get(name, {}).items():
                for side, count in zip(("true", "false"), sides):
                    if not count and lines.get(line, 1):
                        found.append((line, column, f"never {side}: {text[line - 1][column - 1:end - 1]}"))
            for line, column, what in sorted(found):
                yield f"{name}:{line}:{column}: {what}" if column else f"{name}:{line}: {what}: {text[line - 1].strip()}"


def programs_by_line(build, profiles, names):
    """For each file of the rooms and each of its lines, the test programs that reach it."""
    everything = list(counted_programs(build))
    found = collections.defaultdict(lambda: collections.defaultdict(list))
    for folder in sorted(each for each in profiles.iterdir() if each.is_dir()):
        own = [each for each in everything if each.name == folder.name]
        # A program that drives the tools may run any of them.
        objects = own + [each for each in everything if each.suffix == ".so"] if own else everything
        raw = sorted(folder.glob("*.profraw"))
        for room in rooms_of(exported(objects, merged(raw, profiles / "one.profdata")) if raw else [], ROOT, build, names).values():
            for name, lines in room.lines.items():
                for line in (line for line, count in lines.items() if count):
                    found[name][line].append(folder.name)
    return found


def report(build, profiles, listing):
    raw = sorted(profiles.glob("*/*.profraw"))
    files = exported(list(counted_programs(build)), merged(raw, profiles / "all.profdata"))
    rooms = rooms_of(files, ROOT, build, FLOORS)
    listing.write_text("".join(line + "\n" for line in not_reached(rooms, ROOT)), encoding="utf-8")
    line, problems = summary(rooms)
    for name, room in rooms.items():
        print("  %-10s %6d of %6d lines, %6d of %6d branches" % (name, *room.reached()))
    print("".join(f"  {problem}\n" for problem in problems) + f"  not reached: {os.path.relpath(listing)}\n  {line}")
    return 1 if problems else 0


# A program that is killed when it has arguments, and a template of which each instance reaches a part.
SELF_TEST = """#include <signal.h>
template <class T> int half(T value)
{
    if (value > 2)
    {
        return 1;
    }
    return 2;
}
int killed(int count)
{
    if (count > 2)
    {
        return 3;
    }
    return raise(SIGKILL);
}
constexpr int least(int count)
{
    return count > 2 ? 2 : count;
}
static_assert(least(3) == 2);
int main(int count, char**)
{
    while (true)
    {
        return count > 1 ? killed(count) : half(1) + half('a') > 9 && half(1L);
    }
}
"""
# Of four conditions (the loop's is none): that of the template is reached whole, that of the arguments too.
REACHED = (17, 20, 6, 10)
NOT_REACHED = """room/main.cpp:12:9: never true: count > 2
room/main.cpp:13: never reached: {
room/main.cpp:14: never reached: return 3;
room/main.cpp:15: never reached: }
room/main.cpp:27:44: never true: half(1) + half('a') > 9
room/main.cpp:27:71: never false: half(1L)
room/main.cpp:27:71: never true: half(1L)"""


def counted_self_test(root):
    """The rooms of the program, of which one is empty."""
    build = root / "build"
    for folder in ("room", "build/bin"):
        (root / folder).mkdir(parents=True)
    (root / "room/main.cpp").write_text(SELF_TEST)
    flags = ["-fprofile-instr-generate", "-fcoverage-mapping", "-mllvm", "-runtime-counter-relocation",
             "-fcoverage-compilation-dir=.", "-fcoverage-prefix-map=../="]
    subprocess.run(["clang++", "-std=c++17", *flags, "../room/main.cpp", "-o", "bin/main"], cwd=build, check=True)
    environment = dict(os.environ, LLVM_PROFILE_FILE=str(root / "profiles/%m%c.profraw"))
    for arguments in ([], ["killed"], []):
        subprocess.run([build / "bin/main", *arguments], env=environment, check=False)
    data = merged(sorted(root.glob("profiles/*.profraw")), root / "all.profdata")
    return rooms_of(exported(list(counted_programs(build)), data), root, build, ("room", "absent"))


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        rooms = counted_self_test(root)
        listed = "\n".join(not_reached(rooms, root))
    FLOORS["room"] = (85.0, 60.01)
    found = (rooms["room"].reached(), listed, *summary(rooms))
    expected = (REACHED, NOT_REACHED, "coverage: room L 85.00 % B 60.00 %",
                ["room: 60.00 % of the branches are reached, the floor is 60.01 %", "absent: no lines were counted"])
    for one, other in zip(found, expected):
        if one != other:
            print(f"self-test: expected\n{other}\nfound\n{one}")
    return 0 if found == expected else 1


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path, nargs="?", default=ROOT / "build/linux-coverage")
    parser.add_argument("--only", default=".")
    parser.add_argument("--list", type=pathlib.Path)
    parser.add_argument("--report", action="store_true")
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    if arguments.self_test:
        return self_test()
    build = arguments.build.resolve()
    profiles = build / "profiles"
    failed = 0 if arguments.report else run_tests(build, profiles, arguments.only)
    return report(build, profiles, arguments.list or build / "not-reached.txt") or failed


if __name__ == "__main__":
    sys.exit(main())
