"""zeb doctor prints the same facts as text and as JSON."""
import json
import os
import pathlib
import re
import shutil
import struct
import tempfile

import world
from world import World

MAIL = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook"
SUBSYSTEM = "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles"


class Account(World):
    registered = False

    def expect_account(self, code=0):
        """Compares the text output with the JSON output. Returns the JSON."""
        found = json.loads(self.zeb("doctor", "--json", code=code).out)
        expected = ""
        for number, each in enumerate(found["candidates"], 1):
            fields = {"from": each["origin"], "path": each["path"],
                      "file": each["file"] if each["file"] != each["path"] else "", "verdict": each["verdict"]}
            lines = [f"   {name:<9}{text}\n" for name, text in fields.items() if text]
            expected += f"{number}. {each['step']}\n" + "".join(lines) + "\n"
        shown = self.zeb("doctor", code=code).out
        self.assertEqual(shown[:shown.index("profiles\n")], expected)
        usable = f"usable: {found['provider']}\n" if found["provider"] else ""
        self.assertTrue(shown.endswith(f"\n\n{usable}" if usable else "\n\n"), shown)
        return found

    def register(self, path):
        (self.folder / "registry.reg").write_text(
            f'Windows Registry Editor Version 5.00\n\n[{MAIL}]\n"DLLPathEx"="{path}"\n', encoding="utf-8")

    def test_a_provider_that_is_used(self):
        self.zeb("provider", "install")
        found = self.expect_account()
        last = found["candidates"][-1]
        self.assertEqual((last["step"], last["origin"]), ("Outlook", f"{MAIL}, value DLLPathEx"))
        self.assertEqual((last["path"], last["usable"], last["class"], last["loaded"]), (found["provider"], True, 2, True))
        self.assertEqual(last["verdict"], "usable, a provider with undecorated names")
        self.assertEqual(last["file"].replace("\\", "/").rsplit("/", maxsplit=1)[-1],
                         "zebstore.dll" if world.WINDOWS else "libzebstore.so")

    def test_providers_that_cannot_be_used(self):
        if world.WINDOWS:
            # Wine has its own, and uses what is registered there.
            self.zeb("provider", "install")
            self.expect_account()
            return
        for path, verdict in (("", "unusable, no file is registered"), ("/nowhere/provider.so", "unusable, it does not load: "),
                              ("libzebapi.so", "unusable, it does not export MAPIInitialize")):
            with self.subTest(path=path):
                self.register(path)
                found = self.expect_account(code=1)
                first = found["candidates"][0]
                self.assertEqual(first["path"], path)
                self.assertTrue(first["verdict"].startswith(verdict), first["verdict"])
                self.assertEqual((found["provider"], found["class"], found["defaultProfile"]), (None, 0, None))
                if path:
                    self.assertEqual(first["verdict"].endswith(": " + first["loadError"]), bool(first["loadError"]))
                else:
                    self.assertEqual(first["verdict"], verdict)
        self.assertEqual(found["candidates"][1]["verdict"], "no file to examine")
        self.assertEqual(first["file"], str(world.BUILD / "bin/libzebapi.so"))
        self.assertEqual((first["missingDecorated"], first["missingUndecorated"]), ("MAPIInitialize", "MAPIInitialize"))
        self.register("/nowhere/provider.so")
        first = self.expect_account(code=1)["candidates"][0]
        self.assertIn("/nowhere/provider.so", first["loadError"])
        self.assertIsNone(first["missingDecorated"])

    def test_profiles_without_a_default(self):
        self.zeb("provider", "install")
        self.zeb("profile", "create", "mine", "--store", self.path("test.zeb"))
        self.registry_add(SUBSYSTEM, "DefaultProfile", "")
        shown = self.zeb("doctor").out
        self.assertIn("profiles\n     mine\n     none of them is the default; 'zeb profile default NAME' sets the default\n", shown)
        self.assertIsNone(json.loads(self.zeb("doctor", "--json").out)["defaultProfile"])


CLIENTS = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail"
OUTLOOK_2016 = "{6DB1921F-8B40-4406-A18B-E906DBEEF0C9}"
X86, X64 = 0x014C, 0x8664


class Machine(World):
    """A machine whose search ends at the system's stub, next to a copy of zeb."""

    registered = False

    def setUp(self):
        super().setUp()
        # The search reads a provider's path as narrow text.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zeb-doctor-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.environment["ZEBAPI_REGISTRY"] = str(self.folder / "registry.reg")
        if world.WINDOWS:
            # The following steps read the profiles through a provider.
            self.addCleanup(self.run_tool, "zeb", "provider", "install", "--replace")
            self.reg("delete", MAIL, "/f")
            self.reg("delete", CLIENTS, "/ve", "/f")
            self.addCleanup(self.reg, "delete", CLIENTS, "/ve", "/f")
        suffix = ".exe" if world.WINDOWS else ""
        own = self.folder / "bin"
        own.mkdir()
        for file in (world.BUILD / "bin" / f"zeb{suffix}", *world.libraries()):
            shutil.copy(file, own)
        shutil.copy(world.BUILD / "bin/mapi_stub.dll", own / "MAPI32.DLL")
        self.program = str(own / f"zeb{suffix}")

    def doctor(self, code):
        """The output of the copy's doctor: the findings by topic, and its last line."""
        command = ([str(world.ROOT / "scripts/wine-run.sh")] if world.WINDOWS else []) + [self.program, "doctor"]
        shown = self.check(self.run_command(command), code)
        found = json.loads(self.check(self.run_command([*command, "--json"]), code).out)
        lines = [f"   {each['topic']:<14}{each['text']}\n" for each in found["setup"]]
        self.assertIn("also on this machine\n" + "".join(lines) + "\n", shown.out)
        self.assertEqual(found["candidates"][-1]["step"], "system")
        self.assertEqual(found["stubWithoutClient"], code == 1)
        self.error = shown.err
        return {topic: [each["text"] for each in found["setup"] if each["topic"] == topic]
                for topic in {each["topic"] for each in found["setup"]}}

    def library(self, name, machine):
        """A file with only the header of a Windows library."""
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(b"MZ" + bytes(58) + struct.pack("<I", 64) + b"PE\0\0" + struct.pack("<H", machine) + bytes(64))
        return self.path(name)

    def escaped(self, text):
        return text if world.WINDOWS else text.replace("\\", "\\\\")

    def client(self, name, **values):
        self.registry_add(CLIENTS, "", name, undo=f"{CLIENTS}\\{name}")
        for value, text in values.items():
            self.registry_add(f"{CLIENTS}\\{name}", value, self.escaped(text))

    def test_a_stub_without_a_client(self):
        findings = self.doctor(code=1)
        self.assertEqual(findings["mail client"], [f"no default mail client is registered in {CLIENTS}"])
        self.assertIn("is the system's stub, and no mail client with 64-bit MAPI is registered", self.error)

    def test_a_client_whose_library_is_missing(self):
        self.client("Post", DLLPathEx=self.path("none.dll"))
        findings = self.doctor(code=1)
        self.assertEqual(findings["mail client"][0], f"the default client is 'Post' ({CLIENTS})")
        self.assertIn("'Post', value DLLPathEx, names '" + self.path("none.dll") + "', which does not exist: unusable",
                      findings["mail client"][1])

    def test_a_client_that_is_a_provider(self):
        name = "zebstore.dll" if world.WINDOWS else "libzebstore.so"
        file = str(world.BUILD / "bin" / name)
        self.client("Post", DLLPath="Z:" + file.replace("/", "\\") if world.WINDOWS else file)
        findings = self.doctor(code=0)
        self.assertIn("'Post', value DLLPath, names '", findings["mail client"][1])
        self.assertTrue(findings["mail client"][1].endswith(": usable, a provider with undecorated names"))

    def test_the_component_of_a_newer_office(self):
        self.client("Microsoft Outlook", MSIComponentID=OUTLOOK_2016)
        findings = self.doctor(code=1)
        self.assertEqual(findings["component"], [
            f"MSIComponentID of 'Microsoft Outlook' is {OUTLOOK_2016}, which leads to no file; the search asks for "
            "{FF1D0740-D227-11D1-A4B0-006008AF820E}, the component of Outlook 2007 and before"])
        self.environment["ZEB_TEST_COMPONENT"] = self.library("olmapi32.dll", X64)
        self.assertIn("leads to '" + self.path("olmapi32.dll") + "' (x64); the search asks for",
                      self.doctor(code=0)["component"][0])
        self.environment["ZEB_TEST_COMPONENT"] = self.library("olmapi32.dll", X86)
        self.assertIn("which is of a 32-bit Office; this program has 64 bits", self.doctor(code=1)["component"][0])

    def test_click_to_run(self):
        key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Office\\ClickToRun\\Configuration"
        self.registry_add(key, "InstallationPath", self.escaped(self.path("office")))
        self.registry_add(key, "VersionToReport", "16.0.17932.20700")
        self.registry_add(key, "Platform", "x64")
        self.library("office/root/VFS/ProgramFilesCommonX64/system/msmapi/1033/msmapi32.dll", X64)
        file = self.path("office") + "\\root\\VFS\\ProgramFilesCommonX64\\system\\msmapi\\1033\\msmapi32.dll"
        self.assertEqual(self.doctor(code=1)["Click-to-Run"], [
            f"Office 16.0.17932.20700 (x64) is installed in '{self.path('office')}'; its MAPI is '{file}' (x64)"])

    def test_click_to_run_of_32_bits(self):
        key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Office\\ClickToRun\\Configuration"
        self.registry_add(key, "InstallationPath", self.escaped(self.path("office")))
        self.registry_add(key, "Platform", "x86")
        self.library("office/root/VFS/ProgramFilesCommonX86/system/msmapi/1033/msmapi32.dll", X86)
        self.assertTrue(self.doctor(code=1)["Click-to-Run"][0].endswith(
            "which is of a 32-bit Office; this program has 64 bits"))

    def test_the_verdict_names_32_bit_office(self):
        self.registry_add(MAIL, "DLLPathEx", self.escaped(self.library("olmapi32.dll", X86)))
        command = ([str(world.ROOT / "scripts/wine-run.sh")] if world.WINDOWS else []) + [self.program, "doctor", "--json"]
        found = json.loads(self.check(self.run_command(command), 1).out)
        self.assertEqual(found["candidates"][0]["verdict"], "unusable, 32-bit Office; this program has 64 bits")

    def test_the_page_of_failures_shows_what_it_prints(self):
        text = (world.ROOT / "docs/failures.md").read_text(encoding="utf-8").split("## What zeb doctor prints")[1]
        lines = re.findall(r"^\| `([^`]+)` \|", text.split("\n## ")[0], re.M)
        self.assertEqual(len(lines), 8)
        command = ([str(world.ROOT / "scripts/wine-run.sh")] if world.WINDOWS else []) + [self.program, "doctor"]
        printed = self.check(self.run_command(command), 1).out
        self.client("Post", DLLPathEx=self.path("none.dll"))
        printed += self.check(self.run_command(command), 1).out
        # The library is loaded twice then, which the sanitizer would report.
        self.environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_odr_violation=0"
        for file in ("", self.path("none.dll"), self.library("olmapi32.dll", X86), self.foreign_library()):
            self.registry_add(MAIL, "DLLPathEx", self.escaped(file))
            printed += self.check(self.run_command(command), 1).out
        for line in lines:
            self.assertIn(line.rstrip("\u2026"), printed)

    def foreign_library(self):
        """A library that loads and is no provider: the library itself."""
        file = next(each for each in world.libraries() if not each.is_symlink())
        return "Z:" + str(file).replace("/", "\\") if world.WINDOWS else str(file)

    def test_the_address_books_library(self):
        key = "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\WAB\\DLLPath"
        self.registry_add(key, "", self.escaped(self.path("wab32.dll")))
        self.assertEqual(self.doctor(code=1)["address book"],
                         [f"{key} names '{self.path('wab32.dll')}', which does not exist"])
        self.library("wab32.dll", X64)
        self.assertEqual(self.doctor(code=1)["address book"], [f"{key} names '{self.path('wab32.dll')}' (x64)"])

    def test_the_joined_common_folder_path(self):
        key = "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion"
        if not world.WINDOWS:
            self.registry_add(key, "CommonFilesDir", self.escaped("C:\\Program Files\\Common Files"))
        self.assertEqual(self.doctor(code=1)["common MAPI"], [
            f"{key}, value CommonFilesDir is 'C:\\Program Files\\Common Files', without a backslash at its end: the search "
            "makes 'C:\\Program Files\\Common FilesSystem\\Mapi\\1033\\' of it"])

    def test_versions_of_files(self):
        if not world.WINDOWS:
            self.client("Microsoft Outlook", DLLPathEx=self.library("olmapi32.dll", X86))
            self.assertEqual(self.doctor(code=1)["file"],
                             [f"'{self.path('olmapi32.dll')}', which is of a 32-bit Office; this program has 64 bits"])
            return
        # A library of Wine's has a version in its resources.
        self.client("Microsoft Outlook", DLLPathEx="C:\\windows\\system32\\kernel32.dll")
        self.assertRegex(self.doctor(code=1)["file"][0], r"kernel32.dll' \(version \d+\.\d+\.\d+\.\d+, x64\)$")
