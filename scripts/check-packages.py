#!/usr/bin/env python3
"""Makes the packages and tests each of them, as its user would use it.

check-packages.py [--full] [--made] [--only NAME]

--full   builds everything once more in another folder, without the compiler cache, and compares the bytes of all packages
--made   tests what is in build/packages, without making it first
--only   the tests whose names contain NAME
"""
import argparse
import pathlib
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
FULL = ("OtherFolderTest",)


def tests(suite):
    for each in suite:
        if isinstance(each, unittest.TestSuite):
            yield from tests(each)
        else:
            yield each


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--made", action="store_true")
    parser.add_argument("--only", default="")
    arguments = parser.parse_args()
    if not arguments.made:
        made = subprocess.run([str(ROOT / "scripts/make-packages.sh")], check=False)
        if made.returncode != 0:
            return made.returncode
    folder = str(ROOT / "tests/package/packages")
    sys.path.insert(0, folder)
    found = tests(unittest.defaultTestLoader.discover(folder, pattern="test_*.py"))
    chosen = [each for each in found if arguments.only in each.id()
              and (arguments.full or type(each).__name__ not in FULL)]
    if not chosen:
        sys.exit(f"check-packages.py: no test matches '{arguments.only}'")
    result = unittest.TextTestRunner(verbosity=2).run(unittest.TestSuite(chosen))
    return 0 if result.wasSuccessful() and not result.skipped else 1


if __name__ == "__main__":
    sys.exit(main())
