"""The inbox shown in README.md is the one that run.sh creates from the sample mailbox."""
import re

import world
from world import World


class ReadmeMailbox(World):
    def test_the_readmes_lines_are_there(self):
        script = (world.ROOT / "run.sh").read_text(encoding="utf-8")
        folders = re.findall(r'"([^"]+)"', re.search(r"^inbox=\((.*)\)$", script, re.M)[1])
        self.create_profile()
        self.importer("pst", str(world.SAMPLES / "enron.pst"), *[part for name in folders for part in ("--inbox", name)])
        real = self.zeb("inbox", "--utc").out.splitlines()
        readme = (world.ROOT / "README.md").read_text(encoding="utf-8")
        block = re.search(r"It ends with\n\n((?:    .*\n)+)", readme)[1]
        *shown, under_wine, in_msvc_abi, native, last = [line[4:] for line in block.splitlines()]
        self.assertEqual([line for line in real if line in shown], [line for line in shown if line != "..."])
        self.assertEqual((under_wine, in_msvc_abi, native, last),
                         (f"zeb.exe: {real[-1]}", f"zeb.exe (MSVC ABI): {real[-1]}", f"zeb: {real[-1]}", "identical"))
