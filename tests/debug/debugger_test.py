#!/usr/bin/env python3
"""GDB prints the probe's values as debug/zebapi_printers.py says, and finds all that debug/zebapi.natvis names.

debugger_test.py CMAKE BUILD
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(sys.argv.pop()).resolve()
CMAKE = sys.argv.pop()
PROPERTIES = [
    'PR_SUBJECT PT_UNICODE "Lunch \u20ac"', "PR_MESSAGE_FLAGS PT_LONG 3", "PR_HASATTACH PT_BOOLEAN true",
    "PR_CLIENT_SUBMIT_TIME PT_SYSTIME FILETIME 0x01DC7C43E7548000", '0x8002101F PT_MV_UNICODE ["a", "b"]',
    "0x80031003 PT_MV_LONG [4, -5]", "0x80040048 PT_CLSID {00020329-0000-0000-C000-000000000046}",
    "PR_RECORD_KEY PT_BINARY (3 bytes) 0A0B0C", "PR_BODY PT_ERROR MAPI_E_NOT_FOUND"]


def numbered(values):
    return "{" + ", ".join(f"[{number}] = {value}" for number, value in enumerate(values)) + "}"


ROW = f"2 columns = {numbered(PROPERTIES[:2])}"
RESTRICTION = ('(PR_SUBJECT PT_UNICODE contains "lunch" and (PR_MESSAGE_FLAGS PT_LONG & 0x1 == 0 or not exists PR_BODY PT_UNICODE)'
               " and PR_MESSAGE_SIZE PT_LONG > 1024 and one of PR_MESSAGE_RECIPIENTS PT_OBJECT: PR_ROWID PT_LONG != "
               "PR_RECIPIENT_TYPE PT_LONG)")
PRINTED = {
    "values.narrow": '"Lunch?"', "values.wide": '"Gr\u00fc\u00dfe aus dem langen Text"', "values.emptyText": '""',
    "values.numbers": "2 elements = {[0] = 4, [1] = -5}", "values.pointers": "1 element = {[0] = 0x0}",
    "values.map": "1 pair = {[7] = 8}", "values.noBinary": "none", "values.binary": "(3 bytes) 0A0B0C",
    "values.binaries": "1 binary = {[0] = (2 bytes) FFEE}",
    "values.tags": "PR_ENTRYID PT_BINARY, PR_SUBJECT PT_UNICODE, 0x80010003 PT_LONG",
    "values.properties": f"9 properties = {numbered(PROPERTIES)}",
    "values.order": "PR_SUBJECT PT_UNICODE ascending, PR_MESSAGE_SIZE PT_LONG descending",
    "values.restriction": RESTRICTION, "values.problems": "2 PR_BODY PT_UNICODE: MAPI_E_COMPUTED",
    "values.rows": f"1 row = {{[0] = {ROW}}}", "values.noRows": "none", "row": ROW, "view": "PR_MESSAGE_FLAGS PT_LONG 3",
    "*values.properties.m_values": PROPERTIES[0], "*values.binary.m_binary": "(3 bytes) 0A0B0C",
    "exception": "MAPI_E_NOT_FOUND \"MAPI_E_NOT_FOUND\" in folder 'Projects'"}


class Debugger(unittest.TestCase):
    def gdb(self, *commands, script=None, **environment):
        """What GDB prints in the probe, stopped where all values are filled."""
        start = ["set pagination off", "set print elements 1000", "break Stop", "run"]
        given = [word for command in [*start, *commands] for word in ("-ex", command)]
        given += ["-x", str(script)] if script else []
        # The leak sanitizer cannot work in a process that a debugger holds.
        done = subprocess.run(["gdb", "-nx", "-batch", *given, str(BUILD / "bin/debug_probe")], capture_output=True, text=True,
                              timeout=200, check=False, stdin=subprocess.DEVNULL, encoding="utf-8",
                              env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0", "LC_ALL": "C.UTF-8", **environment})
        self.assertIn("Breakpoint 1, Stop", done.stdout, done.stderr)
        return done.stdout, done.stderr

    def test_each_value_is_printed_as_what_it_holds(self):
        source = f"source {ROOT}/debug/zebapi_printers.py"
        out, err = self.gdb(source, *(f"print {name}" for name in PRINTED))
        shown = re.findall(r"^\$\d+ = (?:\([^()]*&\) @?(?:0x[0-9a-f]+)?(?:: )?)?(.*)$", out, re.M)
        self.assertEqual(dict(zip(PRINTED, shown)), PRINTED, err)
        self.assertEqual(len(shown), len(PRINTED))
        self.assertNotIn("Exception", err)

    def test_the_page_shows_what_is_printed(self):
        page = (ROOT / "docs/debugging.md").read_text(encoding="utf-8")
        shown = re.findall(r"^\| .* \| `(.*)` \|$", page, re.M)
        self.assertEqual(len(shown), 7)
        for each in shown:
            self.assertIn(each, PRINTED.values())

    def test_an_installed_library_brings_its_printers(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([CMAKE, "--install", BUILD, "--prefix", folder], check=True, capture_output=True)
            done = subprocess.run(["gdb", "-nx", "-batch", "-iex", f"set auto-load safe-path {folder}", "-ex", "break Stop",
                                   "-ex", "run", "-ex", "print values.tags", str(BUILD / "bin/debug_probe")], check=False,
                                  capture_output=True, text=True, stdin=subprocess.DEVNULL,
                                  env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0", "LD_LIBRARY_PATH": f"{folder}/lib:{BUILD}/bin"})
        self.assertIn(f"= {PRINTED['values.tags']}\n", done.stdout, done.stderr)

    def test_the_names_are_the_librarys(self):
        done = subprocess.run([ROOT / "scripts/debug-names.py", "--check", BUILD], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def evaluated(self, natvis):
        out, err = self.gdb(script=ROOT / "tests/debug/natvis_in_gdb.py", NATVIS=str(natvis))
        lines = re.findall(r"^NATVIS (.*)$", out, re.M)
        self.assertTrue(lines, out + err)
        return lines

    def test_the_visualizer_names_what_is_there(self):
        lines = self.evaluated(ROOT / "debug/zebapi.natvis")
        self.assertEqual(len(lines), 1, lines)
        self.assertGreater(int(lines[0].split()[0]), 100)

    def test_a_wrong_name_is_found(self):
        text = (ROOT / "debug/zebapi.natvis").read_text(encoding="utf-8")
        with tempfile.TemporaryDirectory() as folder:
            wrong = Path(folder) / "wrong.natvis"
            wrong.write_text(text.replace("m_node", "m_gone").replace("res.resNot.lpRes", "res.resNot.lpGone"), encoding="utf-8")
            lines = self.evaluated(wrong)
        self.assertIn("CZebRestriction: 'm_gone == 0': no member m_gone", lines)
        self.assertTrue(any("lpGone" in line for line in lines), lines)


if __name__ == "__main__":
    unittest.main()
