#!/usr/bin/env python3
"""Installs a build into an empty folder and builds and runs a host against it, as a user would.

installed_host_test.py BUILD_DIR SOURCE_DIR CMAKE [--toolchain FILE] [--other-toolchain FILE] [--flags FLAGS]
                       [--runner PROGRAM] [--mapi-headers DIR...]
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ARGUMENTS = None


class InstalledHost(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="installed-", dir=ARGUMENTS.build))
        cls.prefix = cls.folder / "prefix"
        cls.run_checked([ARGUMENTS.cmake, "--install", ARGUMENTS.build, "--prefix", cls.prefix])

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    @staticmethod
    def run_checked(command):
        done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, errors="replace")
        if done.returncode != 0:
            raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
        return done.stdout

    def build_host(self):
        build = self.folder / "host"
        command = [ARGUMENTS.cmake, "-G", "Ninja", "-S", pathlib.Path(__file__).parent / "host", "-B", build,
                   f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_FIND_ROOT_PATH={self.prefix}",
                   f"-DHOST_SOURCE={ARGUMENTS.source}/examples/inbox.cpp",
                   "-DZEBAPI_MAPI_HEADERS=" + ";".join(ARGUMENTS.mapi_headers)]
        if ARGUMENTS.flags:
            command.append(f"-DCMAKE_CXX_FLAGS={ARGUMENTS.flags}")
        if ARGUMENTS.toolchain:
            command.append(f"-DCMAKE_TOOLCHAIN_FILE={ARGUMENTS.toolchain}")
        self.run_checked(command)
        self.run_checked([ARGUMENTS.cmake, "--build", build])
        return build

    def test_a_host_builds_and_runs(self):
        build = self.build_host()
        self.starts(build / ("host.exe" if ARGUMENTS.toolchain else "host"))
        printed = self.starts(build / ("interfaces.exe" if ARGUMENTS.toolchain else "interfaces"), says="0x80004003")
        self.assertEqual(printed.split(), ["0x80004003", "00020306", "0002030C", "00020308", "00020309", "0002031C"])

    def test_the_guides_first_project_builds_and_starts(self):
        project = self.folder / "starter"
        shutil.copytree(ARGUMENTS.source / "tests/documents/starter", project)
        shutil.copy(ARGUMENTS.source / "examples/inbox.cpp", project)
        command = [ARGUMENTS.cmake, "-G", "Ninja", "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                   f"-DCMAKE_FIND_ROOT_PATH={self.prefix}", "-DZEBAPI_MAPI_HEADERS=" + ";".join(ARGUMENTS.mapi_headers)]
        command += [f"-DCMAKE_CXX_FLAGS={ARGUMENTS.flags}"] if ARGUMENTS.flags else []
        command += [f"-DCMAKE_TOOLCHAIN_FILE={ARGUMENTS.toolchain}"] if ARGUMENTS.toolchain else []
        self.run_checked(command)
        self.run_checked([ARGUMENTS.cmake, "--build", project / "build"])
        if ARGUMENTS.toolchain:
            self.assertTrue(list((project / "build").glob("zebapi*.dll")))
        self.starts(project / "build" / ("inbox.exe" if ARGUMENTS.toolchain else "inbox"))

    def test_the_package_refuses_another_platform(self):
        project = self.folder / "foreign"
        project.mkdir()
        (project / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(Foreign LANGUAGES NONE)\n"
                                                "find_package(ZebAPI 0.1 REQUIRED)\n")
        other = "Linux" if ARGUMENTS.toolchain else "Windows"
        done = subprocess.run([ARGUMENTS.cmake, "-S", project, "-B", project / "build", f"-DCMAKE_SYSTEM_NAME={other}",
                               f"-DZebAPI_DIR={next(self.prefix.glob('lib/**/ZebAPIConfig.cmake')).parent}"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertNotEqual(done.returncode, 0, done.stdout)
        own = "Windows" if ARGUMENTS.toolchain else "Linux"
        self.assertIn(f"This package of ZebAPI is for {own}, and the project is built for {other}.",
                      " ".join(done.stdout.split()))

    def starts(self, program, says="MAPI_E_"):
        """Runs a host, on Windows next to the installed DLL, and expects that the library answers it.
        Returns what it printed."""
        environment = dict(os.environ, ZEBAPI_REGISTRY=str(self.folder / "empty.reg"))
        if ARGUMENTS.toolchain:
            program = shutil.copy(program, self.prefix / "bin" / "host.exe")
        # Files, not pipes: Wine's own processes inherit them and would keep a pipe open long after the host's end.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            code = subprocess.run([*ARGUMENTS.runner, str(program)], env=environment, stdin=subprocess.DEVNULL,
                                  stdout=out, stderr=err, timeout=120).returncode
            for stream in (out, err):
                stream.seek(0)
            printed, complained = (stream.read().decode("utf-8", "replace") for stream in (out, err))
        # Nothing is registered in an empty registry, so the library says so instead of printing mail.
        self.assertEqual(code, 1, printed + complained)
        self.assertIn(says, complained)
        return printed

    def the_command_of_the_readme_builds_a_host_that_starts(self):
        readme = (ARGUMENTS.source / "README.md").read_text(encoding="utf-8")
        command = re.search(r"^    (x86_64-w64-mingw32-g\+\+\S* (?:.*\\\n)*.*)$", readme, re.M)[1]
        folder = self.folder / "plain"
        folder.mkdir()
        for source, says in ((ARGUMENTS.source / "examples" / "inbox.cpp", "MAPI_E_"),
                             (pathlib.Path(__file__).parent / "host" / "interfaces.cpp", "0x80004003")):
            shutil.copy(source, folder / "host.cpp")
            self.run_checked(["sh", "-ec", f"cd '{folder}'; " + command.replace("DIR/", f"{self.prefix}/")])
            self.starts(folder / "host.exe", says)

    def the_package_says_when_it_is_of_the_other_abi(self):
        done = subprocess.run([ARGUMENTS.cmake, "-S", pathlib.Path(__file__).parent / "host", "-B", self.folder / "other",
                               f"-DHOST_SOURCE={ARGUMENTS.source}/examples/inbox.cpp", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                               f"-DCMAKE_TOOLCHAIN_FILE={ARGUMENTS.other_toolchain}"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertNotEqual(done.returncode, 0, done.stdout)
        self.assertIn("This package of ZebAPI is built in the MSVC ABI, and the project's compiler has the other one.",
                      " ".join(done.stdout.split()))

    def test_every_included_header_is_installed(self):
        names = {path.name for path in (self.prefix / "include" / "zebapi").glob("*.h")}
        self.assertTrue({"ZebAPI.h", "IProp.h", "Container.h", "Table.h"} <= names, names)

    def test_nothing_internal_is_installed(self):
        headers = {path.relative_to(self.prefix / "include").as_posix() for path in self.prefix.glob("include/**/*.h")}
        self.assertIn("zebapi/objects/IProp.h", headers)
        self.assertEqual([name for name in headers if "/internal/" in name or "/search/" in name or "qorlog" in name], [])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("source", type=pathlib.Path)
    parser.add_argument("cmake")
    parser.add_argument("--toolchain")
    parser.add_argument("--other-toolchain", help="one of the other C++ ABI")
    parser.add_argument("--flags", default="")
    parser.add_argument("--runner", action="append", default=[])
    parser.add_argument("--mapi-headers", action="append", default=[])
    ARGUMENTS = parser.parse_args()
    ARGUMENTS.build = ARGUMENTS.build.resolve()
    if "mingw" in pathlib.Path(ARGUMENTS.toolchain or "").name:
        # The README's command is that of MinGW-w64's compiler.
        InstalledHost.test_the_readmes_command = InstalledHost.the_command_of_the_readme_builds_a_host_that_starts
    if ARGUMENTS.other_toolchain:
        InstalledHost.test_the_package_refuses_the_other_abi = InstalledHost.the_package_says_when_it_is_of_the_other_abi
    sys.exit(not unittest.main(argv=sys.argv[:1], exit=False, verbosity=1).result.wasSuccessful())
