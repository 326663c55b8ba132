#!/usr/bin/env python3
"""A PDB of the MSVC ABI carries the visualizer, and has every type that it is for.

pdb_test.py PDBUTIL PDB
"""
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PDB = Path(sys.argv.pop())
PDBUTIL = sys.argv.pop()
NATVIS = ROOT / "debug/zebapi.natvis"


class Pdb(unittest.TestCase):
    def test_it_carries_the_visualizer(self):
        listed = subprocess.run([PDBUTIL, "export", "--stream=/src/files/" + self.embedded(), "--out=/dev/stdout", PDB],
                                capture_output=True, check=True).stdout
        self.assertIn(NATVIS.read_bytes(), listed)

    def embedded(self):
        """The name of the visualizer's stream."""
        names = subprocess.run([PDBUTIL, "dump", "--named-streams", PDB], capture_output=True, text=True, check=True).stdout
        found = re.findall(r"/src/files/(\S*zebapi\.natvis)", names, re.I)
        self.assertEqual(len(found), 1, names)
        return found[0]

    def test_it_has_the_types(self):
        types = subprocess.run([PDBUTIL, "dump", "--types", PDB], capture_output=True, text=True, check=True).stdout
        known = set(re.findall(r"LF_(?:CLASS|STRUCTURE) \[size = \d+\] `([^`]+)`", types))
        for element in ElementTree.parse(NATVIS).getroot():
            name = element.attrib["Name"]
            # GDB checks the members (debugger_test.py).
            fits = [each for each in known if re.fullmatch(re.escape(name).replace(r"\*", ".*"), each)]
            self.assertTrue(fits, name)


if __name__ == "__main__":
    unittest.main()
