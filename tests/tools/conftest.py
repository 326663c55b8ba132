"""Options of the tools' tests: pytest tests/tools --build FOLDER [-n PROCESSES] [-k WORDS | FILE::CLASS::TEST].

Each process has an environment of its own, so any number may run at the same time.
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import world


def pytest_addoption(parser):
    parser.addoption("--build", type=pathlib.Path, help="the build folder whose tools are tested")


def pytest_configure(config):
    build = config.getoption("--build")
    if build is None:
        raise SystemExit("conftest.py: name the build folder with --build")
    worker = getattr(config, "workerinput", {}).get("workerid", "main")
    world.setup(build.resolve(), worker)


def pytest_unconfigure():
    world.teardown()


def pytest_collection_modifyitems(config, items):
    other_target = "LINUX_ONLY" if world.WINDOWS else "WINDOWS_ONLY"
    other = [item for item in items if getattr(item.module, other_target, False)]
    if not other:
        return
    config.hook.pytest_deselected(items=other)
    items[:] = [item for item in items if item not in other]
