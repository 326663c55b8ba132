#!/usr/bin/env python3
"""Runs the tools' tests: run.py BUILD_DIR linux|windows [--part I/N] [TEST...]

Of several parts each runs a share of the tests, in a world of its own, so that they may run at the same time.
"""
import argparse
import importlib
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import world


def share(text):
    part, _, parts = text.partition("/")
    if not 1 <= int(part) <= int(parts):
        raise ValueError(text)
    return int(part), int(parts)


def tests_of(suite):
    for each in suite:
        if isinstance(each, unittest.TestSuite):
            yield from tests_of(each)
        else:
            yield each


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("target", choices=["linux", "windows"])
    parser.add_argument("--part", type=share, default=(1, 1), metavar="I/N")
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_args()
    part, parts = arguments.part
    world.setup(arguments.build.resolve(), arguments.target == "windows", part)
    names = sorted(file.stem for file in pathlib.Path(__file__).parent.glob("test_*.py"))
    if world.WINDOWS:
        names = [name for name in names if not getattr(importlib.import_module(name), "LINUX_ONLY", False)]
    found = unittest.defaultTestLoader.loadTestsFromNames(arguments.tests or names)
    suite = unittest.TestSuite(list(tests_of(found))[part - 1::parts])
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    world.teardown()
    sys.exit(0 if result.wasSuccessful() else 1)
