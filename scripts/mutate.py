#!/usr/bin/python3
"""Changes one place of the product at a time and tells which changes no test notices.

mutate.py [--room ROOM] [--sample N] [--seed S] [--jobs N] [--programs REGEX] [--list]
mutate.py --self-test     on a small source: every kind of change is found, and every verdict

Changes the sources of ROOM (zebapi or zebstore, or a path in them; both without it) in a copy of the tree (build/mutants), builds
there what has counters for the changed line (scripts/coverage.py must have run) and runs these programs, the quickest first,
until one fails. Prints "N killed, N survived, N timed out" and each change that survived. What does not compile does not count.
--sample takes N of the places by chance, always the same for one S. --programs leaves out the programs that do not match. --list
prints the places. Exit code 1 when a change survived.

Run by the system's Python, which has the module of Debian's python3-clang-14.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import queue
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import time

from clang.cindex import CursorKind, Index, TokenKind

import coverage

ROOT = pathlib.Path(__file__).resolve().parent.parent
PRESET = "linux-coverage"
ROOMS = ("zebapi", "zebstore")
# A changed loop may ask for all memory there is, and write forever.
MEMORY, FILE = 4 << 30, 1 << 30

SWAPS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "+": "-", "-": "+", "&&": "||", "||": "&&"}
RESULTS = [(r"S_OK", "E_FAIL"), (r"(MAPI_)?E_\w+|MAPI_W_\w+|S_FALSE", "S_OK"), (r"true", "false"), (r"false", "true"),
           (r"nullptr", None), (r"(\d+)", None)]
CONDITIONS = {CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR}
CALLS = {CursorKind.CALL_EXPR}
WRAPPERS = {CursorKind.UNEXPOSED_EXPR, CursorKind.PAREN_EXPR}

Mutant = collections.namedtuple("Mutant", "file line begin end text kind")


class Finder:
    """The places of one source that can be changed, from its syntax tree."""

    def __init__(self, unit, name, source):
        self.name, self.source, self.found = name, source, {}
        for child in unit.cursor.get_children():
            if child.location.file is not None and child.location.file.name == name:
                self.walk(child, False)

    def text(self, extent):
        return self.source[extent.start.offset:extent.end.offset].decode("utf-8", "replace")

    def add(self, begin, end, line, text, kind):
        if begin < end and self.source[begin:end].decode("utf-8", "replace") != text:
            self.found.setdefault((begin, end, text), Mutant(self.name, line, begin, end, text, kind))

    def replace(self, extent, text, kind):
        self.add(extent.start.offset, extent.end.offset, extent.start.line, text, kind)

    def walk(self, cursor, in_body):
        if in_body:
            self.visit(cursor)
        for child in cursor.get_children():
            if child.location.file is not None and child.location.file.name != self.name:
                continue
            if cursor.kind == CursorKind.COMPOUND_STMT:
                self.visit_statement(child)
            self.walk(child, in_body or child.kind == CursorKind.COMPOUND_STMT)

    def visit(self, cursor):
        children = list(cursor.get_children())
        if cursor.kind in CONDITIONS and children:
            self.visit_condition(children[0])
        elif cursor.kind == CursorKind.BINARY_OPERATOR and len(children) == 2:
            self.visit_operator(cursor, children)
        elif cursor.kind == CursorKind.RETURN_STMT:
            self.visit_return(cursor)
        elif cursor.kind == CursorKind.INTEGER_LITERAL:
            text = self.text(cursor.extent)
            if re.fullmatch(r"\d+", text):
                self.replace(cursor.extent, str(int(text) + 1), "literal")

    def visit_condition(self, condition):
        """Not a declaration, and not what a preprocessor's macro makes."""
        text = self.text(condition.extent)
        if condition.kind.is_expression() and text and text.count("(") == text.count(")"):
            self.replace(condition.extent, f"!({text})", "condition")

    def visit_operator(self, cursor, operands):
        begin, end = operands[0].extent.end.offset, operands[1].extent.start.offset
        between = self.source[begin:end].decode("utf-8", "replace")
        operator = between.strip()
        if operator in SWAPS:
            start = begin + between.index(operator)
            self.add(start, start + len(operator), cursor.extent.start.line, SWAPS[operator], "operator")

    def visit_return(self, cursor):
        tokens = [token for token in cursor.get_tokens() if token.kind != TokenKind.COMMENT]
        if len(tokens) < 2 or tokens[-1].spelling == ";" and len(tokens) != 3 or tokens[-1].spelling != ";" and len(tokens) != 2:
            return
        value = tokens[1]
        for pattern, result in RESULTS:
            if re.fullmatch(pattern, value.spelling) and result is not None:
                self.replace(value.extent, result, "result")

    def visit_statement(self, statement):
        call = statement
        while call.kind in WRAPPERS and len(list(call.get_children())) == 1:
            call = next(call.get_children())
        text = self.text(statement.extent)
        if call.kind in CALLS and text.endswith(")"):
            self.replace(statement.extent, "(void)0", "call")


def arguments_of(entry):
    """The compiler's arguments that matter for the syntax tree."""
    words = shlex.split(entry["command"])
    kept = [word for i, word in enumerate(words)
            if word.startswith(("-I", "-D", "-std", "-isystem")) or words[i - 1] in ("-isystem", "-I")]
    resources = subprocess.run(["clang", "-print-resource-dir"], check=True, capture_output=True, text=True).stdout.strip()
    return ["-x", "c++", "-Wno-everything", "-resource-dir", resources, *kept]


def places(path, arguments, name):
    """The changes of one source, in its order."""
    unit = Index.create().parse(str(path), args=arguments)
    errors = [str(each) for each in unit.diagnostics if each.severity >= each.Error]
    if errors:
        sys.exit(f"mutate.py: {name} does not parse:\n" + "\n".join(errors[:5]))
    found = Finder(unit, str(path), path.read_bytes()).found
    return [mutant._replace(file=name) for mutant in sorted(found.values())]


def room_arguments(build):
    """The arguments of each room's compilation."""
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    return {room: arguments_of(entry) for entry in entries for room in ROOMS if f"/{room}_objects.dir/" in entry["command"]}


def all_places(build, rooms, reached):
    """The changes in lines that a test reaches, and the number of those in other lines."""
    arguments, found, others = room_arguments(build), [], 0
    for room in rooms:
        for path in sorted((ROOT / room).rglob("*.cpp") if (ROOT / room).is_dir() else [ROOT / room]):
            name = path.relative_to(ROOT).as_posix()
            mutants = places(path, arguments[name.split("/")[0]], name)
            wanted = [mutant for mutant in mutants if reached.get(name, {}).get(str(mutant.line))]
            found += wanted
            others += len(mutants) - len(wanted)
    return found, others


def reached_lines(build):
    """For each line the programs that reach it, from their profiles; kept until they run again."""
    file = build / "reached.json"
    profiles = build / "profiles"
    newest = max((each.stat().st_mtime for each in profiles.glob("*/*.profraw")), default=None)
    if newest is None:
        sys.exit(f"mutate.py: run scripts/coverage.py first: {profiles} is empty")
    if not file.exists() or file.stat().st_mtime < newest:
        file.write_text(json.dumps(coverage.programs_by_line(build, profiles, ROOMS)), encoding="utf-8")
    return json.loads(file.read_text(encoding="utf-8"))


def limit():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def ended(command, folder, environment, seconds):
    """The exit code of a process, or None when it and what it started had to be ended."""
    process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=limit)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return None


def copy(source, target):
    """What has not changed keeps its time, and is not compiled again."""
    if source.exists() and not (target.exists() and target.read_bytes() == source.read_bytes()):
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)


class Tree:
    """A copy of the sources with a build of its own."""

    def __init__(self, folder):
        self.folder, self.build = folder, folder / "build" / PRESET
        folder.mkdir(parents=True, exist_ok=True)
        names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                               capture_output=True).stdout
        for name in filter(None, names.decode().split("\0")):
            copy(ROOT / name, folder / name)
        (folder / "build").mkdir(exist_ok=True)
        if not (folder / "build/deps").exists():
            (folder / "build/deps").symlink_to(ROOT / "build/deps")
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1", LLVM_PROFILE_FILE="/dev/null",
                                CCACHE_SLOPPINESS="pch_defines,time_macros", TMPDIR=str(folder / "build/tmp"))
        (folder / "build/tmp").mkdir(exist_ok=True)
        self.run("cmake", "--preset", PRESET)
        self.run("ninja", "-C", self.build)
        listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build, check=True, capture_output=True).stdout
        self.tests = {test["name"]: test for test in json.loads(listing)["tests"]}

    def run(self, *command):
        done = subprocess.run(command, cwd=self.folder, env=self.environment, capture_output=True, text=True, check=False)
        if done.returncode:
            sys.exit(f"mutate.py: {' '.join(map(str, command))}:\n{done.stdout[-4000:]}{done.stderr[-2000:]}")

    def write(self, mutant):
        """Puts the change into the copy, which is no part of what else is built."""
        source = (ROOT / mutant.file).read_bytes()
        changed = source[:mutant.begin] + mutant.text.encode() + source[mutant.end:] if mutant.text is not None else source
        (self.folder / mutant.file).write_bytes(changed)

    def make(self, program):
        """Builds what a test needs: its own target, or all that the tools' tests run."""
        target = program if any((self.build / "bin").rglob(program)) else "all"
        return subprocess.run(["ninja", "-C", self.build, target], env=self.environment, capture_output=True, check=False).returncode == 0

    def test(self, program, seconds):
        test = self.tests[program]
        properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        environment = dict(self.environment, **dict(each.split("=", 1) for each in properties.get("ENVIRONMENT", [])))
        return ended(test["command"], properties.get("WORKING_DIRECTORY", self.build), environment, seconds)


def verdict(tree, mutant, programs):
    """What becomes of one change; programs are pairs of a name and the seconds that it takes unchanged."""
    tree.write(mutant)
    try:
        for program, seconds in programs:
            if not tree.make(program):
                return "broken", program
            code = tree.test(program, 20 + 10 * seconds)
            if code is None:
                return "timed out", program
            if code != 0:
                return "killed", program
        return "survived", ""
    finally:
        tree.write(mutant._replace(text=None))


def seconds_of(build, programs):
    """How long each program took when it was measured."""
    times = json.loads((build / "profiles/seconds.json").read_text(encoding="utf-8"))
    return sorted(((program, times[program]) for program in programs if program in times), key=lambda each: each[1])


def describe(mutant):
    source = (ROOT / mutant.file).read_bytes()
    before = " ".join(source[mutant.begin:mutant.end].decode("utf-8").split())
    return f"{mutant.file}:{mutant.line}: {mutant.kind}: {before} -> {mutant.text}"


def run(mutants, reached, build, arguments):
    trees = queue.Queue()
    for number in range(arguments.jobs):
        trees.put(Tree(ROOT / "build/mutants" / str(number)))

    def one(mutant):
        programs = [each for each in reached[mutant.file][str(mutant.line)] if re.search(arguments.programs, each)]
        tree, begin = trees.get(), time.monotonic()
        try:
            found, program = verdict(tree, mutant, seconds_of(build, programs)) if programs else ("left out", "")
        finally:
            trees.put(tree)
        print(f"  {found:9} {time.monotonic() - begin:6.1f} s  {describe(mutant)}  {program}", flush=True)
        return found

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        return list(zip(mutants, pool.map(one, mutants)))


def report(results, others):
    counts = collections.Counter(found for _, found in results)
    survivors = [mutant for mutant, found in results if found == "survived"]
    for mutant in survivors:
        print(f"survived: {describe(mutant)}")
    print(f"{others} places in lines that no test reaches, {counts['broken']} changes that do not compile, "
          f"{counts['left out']} without a program")
    print(f"mutants: {counts['killed']} killed, {counts['survived']} survived, {counts['timed out']} timed out")
    return 1 if survivors else 0


SELF_TEST = """int S_OK, E_FAIL, MAPI_E_CALL_FAILED;
void f(int n);
int g(int a, int b)
{
    int sizes[3] = {};
    if (a == b && a < 3)
    {
        f(a + 1);
        return S_OK;
    }
    for (int i = 0; i <= b; ++i)
    {
        (void)sizes;
    }
    return a ? E_FAIL : 7;
}
bool h(bool a)
{
    return true;
}
"""
EXPECTED = ["5 literal 3 -> 4", "6 condition a == b && a < 3 -> !(a == b && a < 3)", "6 operator == -> !=", "6 operator && -> ||",
            "6 operator < -> <=", "6 literal 3 -> 4", "8 call f(a + 1) -> (void)0", "8 operator + -> -", "8 literal 1 -> 2",
            "9 result S_OK -> E_FAIL", "11 literal 0 -> 1", "11 operator <= -> <", "15 condition a -> !(a)", "15 literal 7 -> 8",
            "19 result true -> false"]


class Double:
    """A tree in which each program has an exit code: "broken" does not compile, None runs for ever."""

    def __init__(self, codes):
        self.codes, self.written = codes, []

    def write(self, mutant):
        self.written.append(mutant.text)

    def make(self, program):
        return self.codes[program] != "broken"

    def test(self, program, _):
        return self.codes[program]


VERDICTS = [((0, 0), "survived"), ((0, 1), "killed"), ((0, None), "timed out"), (("broken", 1), "broken"), ((-11, "broken"), "killed")]


def self_test():
    folder = pathlib.Path(subprocess.run(["mktemp", "-d"], check=True, capture_output=True, text=True).stdout.strip())
    path = folder / "self.cpp"
    path.write_text(SELF_TEST)
    found = [f"{each.line} {each.kind} {SELF_TEST[each.begin:each.end]} -> {each.text}"
             for each in sorted(places(path, ["-x", "c++", "-std=c++17"], "self.cpp"), key=lambda each: (each.begin, -each.end))]
    path.unlink()
    folder.rmdir()
    problems = [f"missed: {each}" for each in EXPECTED if each not in found]
    problems += [f"not expected: {each}" for each in found if each not in EXPECTED]
    for codes, expected in VERDICTS:
        tree = Double(dict(enumerate(codes)))
        became, _ = verdict(tree, Mutant("self.cpp", 1, 0, 1, "x", "literal"), [(0, 1.0), (1, 1.0)])
        if became != expected or tree.written != ["x", None]:
            problems.append(f"{codes}: {became}, not {expected}")
    print("\n".join(problems) if problems else f"{len(found)} changes, {len(VERDICTS)} verdicts")
    return 1 if problems else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--room", action="append")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--programs", default=".")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    if arguments.self_test:
        return self_test()
    build = ROOT / "build" / PRESET
    reached = reached_lines(build)
    mutants, others = all_places(build, arguments.room or ROOMS, reached)
    if arguments.sample is not None and arguments.sample < len(mutants):
        mutants = sorted(random.Random(arguments.seed).sample(mutants, arguments.sample))
    if arguments.list:
        print("\n".join(map(describe, mutants)))
        return 0
    return report(run(mutants, reached, build, arguments), others)


if __name__ == "__main__":
    sys.exit(main())
