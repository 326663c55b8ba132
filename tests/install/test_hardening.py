"""scripts/check-hardening.py sees what a file lacks."""
import importlib.util
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SPEC = importlib.util.spec_from_file_location("hardening", ROOT / "scripts/check-hardening.py")
hardening = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(hardening)
BOTH = '-DBOTH=".section both,\\"wx\\"\\n.byte 0\\n.text"'
ELF_BOTH = BOTH.replace("wx", "awx")
SOURCE = "#ifdef BOTH\n__asm__(BOTH);\n#endif\n#include <string.h>\nint main(int c, char** v) { char text[64]; strcpy(text, v[0]); return text[c]; }\n"
MINGW = "x86_64-w64-mingw32-gcc-posix"
STRONG = ("-O2", "-fstack-protector-strong")
WEAK = ("-O2", "-fno-stack-protector")


class Lacks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "main.c").write_text(SOURCE, encoding="utf-8")

    def lacks(self, compiler, *options, sanitized=False):
        file = self.folder / "program.exe"
        subprocess.run([compiler, str(self.folder / "main.c"), "-o", str(file), *options], check=True)
        return hardening.lacks(file, sanitized)

    def test_a_protected_program_lacks_nothing(self):
        self.assertEqual(self.lacks("gcc", *STRONG, "-fPIE", "-pie", "-Wl,-z,relro,-z,now", "-Wl,-rpath,$ORIGIN:/usr/lib/x"), [])

    def test_each_lack_of_a_program(self):
        self.assertEqual(self.lacks("gcc", *WEAK, "-no-pie", "-Wl,-z,lazy", "-Wl,-z,execstack", "-Wl,-rpath,$ORIGIN::lib"),
                         ["libraries are looked for in the current folder", "libraries are looked for in 'lib'",
                          "an executable stack", "no full RELRO", "no random address", "no protected stacks"])

    def test_writable_code(self):
        self.assertEqual(self.lacks("gcc", *STRONG, ELF_BOTH, "-fPIE", "-pie", "-Wl,-z,relro,-z,now"),
                         ["memory that is writable and executable"])
        self.assertEqual(self.lacks(MINGW, *STRONG, BOTH, "-static"), ["section both is writable and executable"])

    def test_sanitized_programs_are_asked_less(self):
        self.assertEqual(self.lacks("gcc", *WEAK, "-no-pie", sanitized=True), [])
        self.assertEqual(self.lacks("gcc", *WEAK, "-Wl,-rpath,:", sanitized=True)[:1], ["libraries are looked for in the current folder"])

    def test_each_lack_of_a_windows_program(self):
        self.assertEqual(self.lacks(MINGW, *STRONG, "-static"), [])
        self.assertEqual(self.lacks(MINGW, *WEAK, "-Wl,--disable-dynamicbase,--disable-high-entropy-va,--disable-nxcompat"),
                         ["no random address of 64 bits", "executable data", "no protected stacks"])


if __name__ == "__main__":
    unittest.main()
