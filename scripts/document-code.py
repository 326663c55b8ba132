#!/usr/bin/env python3
"""The C++ and CMake code of the documents is code that the build compiles: each block follows a line that names its source.

    <!-- code: examples/inbox.cpp -->                   the whole file
    <!-- code: tests/documents/RawTasks.cpp inbox -->   the lines between "// [inbox]" and "// [/inbox]"

document-code.py              fails when a block differs from its source, or has none
document-code.py --update     writes the blocks from the sources
document-code.py --self-test  proves that each kind of difference is caught
"""
import re
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BLOCK = re.compile(r"(?:<!-- code: (\S+)(?: (\S+))? -->\n)?```(cpp|cmake)\n(.*?)```\n", re.S)


def source_of(root, path, region):
    """The code that a block must show. Raises ValueError with the reason why there is none."""
    if path is None:
        raise ValueError("no line '<!-- code: FILE -->' comes before it")
    file = root / path
    if not file.is_file():
        raise ValueError(f"there is no file {path}")
    text = file.read_text(encoding="utf-8")
    if region is None:
        return text
    marked = re.search(rf"^// \[{re.escape(region)}\]\n(.*?)^// \[/{re.escape(region)}\]\n", text, re.S | re.M)
    if not marked:
        raise ValueError(f"{path} has no lines marked [{region}]")
    return marked[1]


def pages(root):
    """README.md is not among them: check-readme.py holds its program."""
    return [root / "CONTRIBUTING.md", *sorted((root / "docs").glob("*.md"))]


def problems(root):
    """One line for each block that is not its source, and for each program of the cookbook that no page shows."""
    shown = set()
    for page in filter(Path.exists, pages(root)):
        text = page.read_text(encoding="utf-8")
        for block in BLOCK.finditer(text):
            place = f"{page.relative_to(root)}:{text.count(chr(10), 0, block.start()) + 1}"
            try:
                if source_of(root, block[1], block[2]) != block[4]:
                    yield f"{place}: the code is not that of {block[1]}"
            except ValueError as reason:
                yield f"{place}: a block of code without a source: {reason}"
            shown.add(block[1])
    for program in sorted((root / "examples/cookbook").glob("*.*")):
        name = program.relative_to(root).as_posix()
        if program.suffix in (".cpp", ".h") and name not in shown:
            yield f"{name}: no page shows it"
        if program.suffix == ".cpp" and program.read_text(encoding="utf-8").count("\n") >= 60:
            yield f"{name}: has 60 lines or more"


def update(root):
    for page in pages(root):
        text = page.read_text(encoding="utf-8")

        def filled(block):
            if block[1] is None:
                return block[0]
            region = f" {block[2]}" if block[2] else ""
            return f"<!-- code: {block[1]}{region} -->\n```{block[3]}\n{source_of(root, block[1], block[2])}```\n"
        page.write_text(BLOCK.sub(filled, text), encoding="utf-8")


SELF_TEST = {
    "": "<!-- code: a.cpp -->\n```cpp\nint a;\n```\n<!-- code: b.cpp x -->\n```cpp\nint x;\n```\n",
    "the code is not that of a.cpp": "<!-- code: a.cpp -->\n```cpp\nint b;\n```\n",
    "no line '<!-- code: FILE -->'": "```cpp\nint a;\n```\n",
    "there is no file c.cpp": "<!-- code: c.cpp -->\n```cpp\nint a;\n```\n",
    "has no lines marked [y]": "<!-- code: b.cpp y -->\n```cpp\nint a;\n```\n",
}


def self_test():
    failed = 0
    for expected, page in SELF_TEST.items():
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "a.cpp").write_text("int a;\n")
            (root / "b.cpp").write_text("int n;\n// [x]\nint x;\n// [/x]\n")
            (root / "docs").mkdir()
            (root / "docs/page.md").write_text(page)
            found = "\n".join(problems(root))
        if (expected not in found) if expected else found:
            failed = 1
            print(f"self-test: expected '{expected}', found '{found}'")
    return failed


def main(arguments):
    if arguments == ["--update"]:
        update(ROOT)
        return 0
    if arguments == ["--self-test"]:
        return self_test()
    if arguments:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    found = list(problems(ROOT))
    print("\n".join(found) if found else "the code of the documents is that of its sources")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
