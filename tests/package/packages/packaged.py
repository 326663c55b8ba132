"""What the tests of the packages share. They work in a folder outside the checkout, with the packages alone."""
import json
import os
import pathlib
import re
import secrets
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]
PACKAGES = ROOT / "build/packages"
VERSION = re.search(r"^project\(.*VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"), re.M)[1]
ABIS = ("mingw", "msvc")
SUBJECTS = ["Lunch?", "Plans for January"]
PREFIX = ROOT / "build/wine-packages"
# What the cross compiler of the MSVC ABI consists of: in place of Visual Studio, not of a package.
COMPILER = re.compile("|".join(re.escape(str(ROOT / part)) for part in
                               ("build/msvc-sysroot", "build/deps/llvm-toolchain-14", "cmake/msvc-abi", "cmake/clang-msvc.cmake",
                                "scripts/wine-run.sh")))
# A user's own description of Debian's cross compiler.
MINGW_TOOLCHAIN = """set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
"""


def zip_of(abi):
    return PACKAGES / f"zebapi-{VERSION}-windows-x64-{abi}.zip"


def run(*command, code=0, **options):
    """What a command prints, both streams; it must end with `code`, if that is not None."""
    # A file, not a pipe: Wine's own processes inherit it and would keep a pipe open long after the program's end.
    with tempfile.TemporaryFile() as out:
        done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT,
                              timeout=600, check=False, **options)
        out.seek(0)
        printed = out.read().decode("utf-8", "replace").replace("\r\n", "\n")
    if code is not None and done.returncode != code:
        raise AssertionError(f"{command} ended with {done.returncode}, not {code}:\n{printed}")
    return printed


def wine(*command, code=0, **options):
    environment = dict(os.environ, ZEB_WINEPREFIX=str(PREFIX))
    return run(ROOT / "scripts/wine-run.sh", *command, code=code, env=environment, **options)


def stop_wine():
    """Ends Wine's server, which writes the registry's files only then."""
    if PREFIX.exists():
        environment = dict(os.environ, WINEPREFIX=str(PREFIX), WINEDEBUG="-all")
        subprocess.run(["wineserver", "--kill"], env=environment, check=False)
        subprocess.run(["wineserver", "--wait"], env=environment, check=False)


def in_wine(path):
    return "Z:" + str(path).replace("/", "\\")


class PackageTest(unittest.TestCase):
    """A test with an empty folder outside the checkout."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="zebapi-packages-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)

    def unpack(self, abi):
        """The tree of a zip for Windows."""
        run("cmake", "-E", "tar", "xf", zip_of(abi), cwd=self.folder)
        return self.folder / zip_of(abi).stem

    def toolchain(self, abi):
        if abi == "msvc":
            return ROOT / "cmake/clang-msvc.cmake"
        file = self.folder / "mingw.cmake"
        file.write_text(MINGW_TOOLCHAIN, encoding="utf-8")
        return file

    def build(self, source, *options):
        """Builds a project with CMake, and looks that no command of its build names the checkout. Returns its folder."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="build-", dir=self.folder))
        run("cmake", "-G", "Ninja", "-S", source, "-B", folder, "-DCMAKE_BUILD_TYPE=Release", *options)
        for name in ("build.ninja", "CMakeFiles/rules.ninja"):
            commands = (folder / name).read_text(encoding="utf-8")
            self.assertEqual([line for line in commands.splitlines() if str(ROOT) in COMPILER.sub("", line)], [])
        run("cmake", "--build", folder)
        return folder

    def make_store(self, folder):
        """With the zeb.exe and the provider in a folder: a profile whose inbox has two messages."""
        zeb, name = folder / "zeb.exe", f"p{secrets.token_hex(4)}"
        wine(zeb, "provider", "install", "--replace")
        self.addCleanup(wine, zeb, "provider", "remove")
        wine(zeb, "profile", "create", name, "--store", in_wine(self.folder / f"{name}.zeb"), "--default")
        self.addCleanup(wine, zeb, "profile", "delete", name)
        mail = self.folder / "mail.jsonl"
        mail.write_text("".join(json.dumps({"folder": "Inbox", "properties": {"PR_SUBJECT": each}}) + "\n" for each in SUBJECTS),
                        encoding="utf-8")
        wine(zeb, "load", in_wine(mail))

    def shows_the_store(self, printed):
        self.assertEqual(sorted(printed.split("\n")), ["", *SUBJECTS])

    def says_no_place_of_the_build(self, tree):
        """No file of a package names the folder that it was built in."""
        place = str(ROOT).encode()
        found = [path for path in sorted(tree.rglob("*")) if path.is_file() and not path.is_symlink()]
        self.assertGreater(len(found), 1)
        self.assertEqual([str(path) for path in found if place in path.read_bytes()], [])


def main(module):
    """Runs the tests of one file by itself."""
    sys.exit(not unittest.main(module, exit=False).result.wasSuccessful())
