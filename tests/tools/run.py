#!/usr/bin/env python3
"""Runs the tools' tests: run.py BUILD_DIR linux|windows [TEST...]"""
import importlib
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import world

if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[2] not in ("linux", "windows"):
        sys.exit(__doc__)
    world.setup(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2] == "windows")
    names = sorted(file.stem for file in pathlib.Path(__file__).parent.glob("test_*.py"))
    if world.WINDOWS:
        names = [name for name in names if not getattr(importlib.import_module(name), "LINUX_ONLY", False)]
    loader = unittest.defaultTestLoader
    suite = loader.loadTestsFromNames(sys.argv[3:] or names)
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    world.teardown()
    sys.exit(0 if result.wasSuccessful() else 1)
