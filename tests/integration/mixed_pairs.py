#!/usr/bin/env python3
"""Puts the builds of the two C++ ABIs together: mixed_pairs.py RUNNER BUILD_DIR BUILD_DIR

What lies between a library and a provider is C, so each library works with either provider. A host needs the library of
its own ABI: with the other one it is not linked.
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

RUNNER, *BUILDS = [pathlib.Path(part).resolve() for part in sys.argv[1:]]
ROOT = pathlib.Path(__file__).resolve().parents[2]
PREFIX = ROOT / "build/wine-mixed"


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


class Pairs(unittest.TestCase):
    """A library of one build over the provider of another."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="mixed-", dir=BUILDS[0]))
        self.addCleanup(shutil.rmtree, self.folder)

    @classmethod
    def tearDownClass(cls):
        subprocess.run(["wineserver", "--kill"], env=dict(os.environ, WINEPREFIX=str(PREFIX), WINEDEBUG="-all"), check=False)

    def pair(self, library, provider, *programs):
        """A folder with the programs and the library of one build, and the provider of the other."""
        folder = self.folder / f"{library.name}-over-{provider.name}"
        folder.mkdir()
        for file in (*(library / "bin").glob("zebapi*.dll"), *(library / "bin" / name for name in programs)):
            shutil.copy(file, folder)
        shutil.copy(provider / "bin/zebstore.dll", folder)
        return folder

    def run_in(self, folder, program, *arguments):
        environment = dict(os.environ, ZEB_WINEPREFIX=str(PREFIX))
        # A file, not a pipe: Wine's own processes inherit it and would keep a pipe open.
        with tempfile.TemporaryFile() as out:
            code = subprocess.run([RUNNER, folder / program, *arguments], env=environment, stdin=subprocess.DEVNULL,
                                  stdout=out, stderr=subprocess.STDOUT, timeout=300).returncode
            out.seek(0)
            text = out.read().decode("utf-8", "replace")
        self.assertEqual(code, 0, f"{folder.name}: {program} {' '.join(map(str, arguments))}\n{text[-8000:]}")
        return text

    def lists_of(self, library, provider):
        """What zeb prints of the sample mail, with a profile and a store of this pair's own."""
        folder = self.pair(library, provider, "zeb.exe")
        self.run_in(folder, "zeb.exe", "provider", "install")
        self.run_in(folder, "zeb.exe", "profile", "create", folder.name, "--store", windows_path(folder / "mail.zeb"), "--default")
        self.run_in(folder, "zeb.exe", "load", windows_path(ROOT / "docs/mail.jsonl"))
        printed = self.run_in(folder, "zeb.exe", "inbox", "--utc") + self.run_in(folder, "zeb.exe", "folders")
        self.run_in(folder, "zeb.exe", "profile", "delete", folder.name)
        return printed

    def test_every_pair_prints_the_same_lists(self):
        printed = {f"{library.name} over {provider.name}": self.lists_of(library, provider)
                   for library in BUILDS for provider in BUILDS}
        first = next(iter(printed.values()))
        self.assertRegex(first, r"[1-9]\d* messages")
        for pair, lists in printed.items():
            self.assertEqual(lists, first, pair)

    def test_integration_passes_over_the_other_provider(self):
        for library, provider in (BUILDS, BUILDS[::-1]):
            with self.subTest(library=library.name):
                folder = self.pair(library, provider, "integration_test.exe")
                self.assertRegex(self.run_in(folder, "integration_test.exe"), r"\[  PASSED  \] [1-9]\d+ tests")


class Links(unittest.TestCase):
    """A host that is compiled for one ABI, linked with the library of each."""

    @staticmethod
    def link(build, library):
        """Repeats the link of the example with the import library of the build `library`."""
        commands = subprocess.run(["ninja", "-C", build, "-t", "commands", "bin/example_inbox.exe"], check=True,
                                  capture_output=True, text=True).stdout
        words = shlex.split(commands.splitlines()[-1])
        with tempfile.TemporaryDirectory(prefix="link-", dir=build) as folder:
            own = [i for i, word in enumerate(words) if re.fullmatch(r"lib/(libzebapi\.dll\.a|zebapi\.lib)", word)]
            output = words.index("-o")
            if len(own) != 1 or words[:2] != [":", "&&"] or words[-2:] != ["&&", ":"]:
                raise AssertionError(f"not the command of a link: {words}")
            words[own[0]] = str(next((library / "lib").glob("*zebapi.*")))
            words[output + 1] = f"{folder}/host.exe"
            words = [re.sub(r"(out-implib,|/implib:|/pdb:)\S*?([^/]*)$", rf"\g<1>{folder}/\2", word) for word in words]
            return subprocess.run(words[2:-2], cwd=build, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def test_only_the_hosts_abi_is_taken(self):
        for host in BUILDS:
            for library in BUILDS:
                done = self.link(host, library)
                with self.subTest(host=host.name, library=library.name):
                    if host == library:
                        self.assertEqual(done.returncode, 0, done.stdout)
                        continue
                    self.assertNotEqual(done.returncode, 0)
                    self.assertRegex(done.stdout, r"undefined (reference|symbol).*Zeb_GetMAPI")


if __name__ == "__main__":
    if len(BUILDS) != 2:
        sys.exit(__doc__)
    unittest.main(argv=sys.argv[:1], verbosity=1)
