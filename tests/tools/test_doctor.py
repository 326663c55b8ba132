"""zeb doctor tells people and machines the same."""
import json

import world
from world import World

MAIL = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook"
SUBSYSTEM = "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles"


class Account(World):
    registered = False

    def expect_account(self, code=0):
        """Compares what people read with what machines do. Returns the latter."""
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

    def test_providers_that_can_not_be_used(self):
        if world.WINDOWS:
            # Wine has one of its own, and what is registered there is used.
            self.zeb("provider", "install")
            self.expect_account()
            return
        for path, verdict in (("", "unusable, it does not load: no file is named"), ("/nowhere/provider.so", "unusable, it does not load: "),
                              ("libzebapi.so", "unusable, it does not export MAPIInitialize")):
            with self.subTest(path=path):
                self.register(path)
                found = self.expect_account(code=1)
                first = found["candidates"][0]
                self.assertEqual(first["path"], path)
                self.assertTrue(first["verdict"].startswith(verdict), first["verdict"])
                self.assertEqual((found["provider"], found["class"], found["defaultProfile"]), (None, 0, None))
                self.assertEqual(first["verdict"].endswith(": " + first["loadError"]), bool(first["loadError"]))
        self.assertEqual(found["candidates"][1]["verdict"], "names no file to try")
        self.assertEqual(first["file"], str(world.BUILD / "bin/libzebapi.so"))
        self.assertEqual((first["missingDecorated"], first["missingUndecorated"]), ("MAPIInitialize", "MAPIInitialize"))
        self.register("/nowhere/provider.so")
        first = self.expect_account(code=1)["candidates"][0]
        self.assertIn("/nowhere/provider.so", first["loadError"])
        self.assertIsNone(first["missingDecorated"])

    def test_profiles_of_which_none_is_the_default(self):
        self.zeb("provider", "install")
        self.zeb("profile", "create", "mine", "--store", self.path("test.zeb"))
        self.registry_add(SUBSYSTEM, "DefaultProfile", "")
        shown = self.zeb("doctor").out
        self.assertIn("profiles\n     mine\n     none of them is the default; 'zeb profile default NAME' makes it so\n", shown)
        self.assertIsNone(json.loads(self.zeb("doctor", "--json").out)["defaultProfile"])
