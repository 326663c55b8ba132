"""Text outside every code page, in each place where a command takes text or a path. The test's folder has such a name."""
import json

import world
from world import World, message

TEXT = "\u65e5\u672c\u8a9e \U0001F600 \u0416"
NAMED = "{00020329-0000-0000-C000-000000000046}:PT_UNICODE:name:" + TEXT


class Unicode(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def test_subjects_values_and_names_are_kept(self):
        self.zeb("new", "Inbox", f"PR_SUBJECT={TEXT}", f"{NAMED}={TEXT}", f"0x6800101F=[\"{TEXT}\"]")
        shown = self.shown("Inbox", TEXT)
        self.assertEqual([shown[name] for name in ("PR_SUBJECT", NAMED, "0x6800101F")], [TEXT, TEXT, [TEXT]])
        self.assertIn(TEXT, self.zeb("show", "Inbox", TEXT).out)
        self.assertEqual(self.zeb("set", "Inbox", TEXT, "PR_COMMENT=" + TEXT, "--delete", NAMED).out,
                         f"changed message '{TEXT}' of folder 'Inbox'\n")
        shown = self.shown("Inbox", TEXT)
        self.assertEqual((shown["PR_COMMENT"], NAMED in shown), (TEXT, False))

    def test_folders_are_named_and_filled(self):
        path = f"Inbox/{TEXT}"
        self.assertEqual(self.zeb("mkdir", path).out, f"folder '{path}' exists\n")
        self.zeb("mkdir", "-p", f"{path}/{TEXT}")
        self.zeb("new", "Inbox", "PR_SUBJECT=a")
        self.assertEqual(self.zeb("mv", "Inbox", "a", path).out, f"message 'a' of folder 'Inbox' moved to folder '{path}'\n")
        self.assertEqual([each["subject"] for each in self.found(path)], ["a"])
        self.zeb("mv", path, TEXT)
        self.assertIn(TEXT, [each["name"] for each in self.folders()])
        self.zeb("rmdir", TEXT, "--recursive", "--yes")
        self.refused("find", TEXT, saying=f"there is no folder '{TEXT}'")

    def test_conditions_find_text(self):
        self.load(message("x" + TEXT + "y", PR_SENDER_NAME=TEXT, PR_MESSAGE_CLASS="IPM." + TEXT), message("other"))
        for option, text in (("--subject", TEXT), ("--from", TEXT.lower()), ("--class", "ipm." + TEXT)):
            self.assertEqual([each["number"] for each in self.found("Inbox", option, text)], [1], option)
        self.refused("find", "Inbox", "--since", TEXT, code=2, saying=f"'{TEXT}'")
        self.refused("find", "Inbox", "--size", TEXT, code=2, saying=f"'{TEXT}'")

    def test_what_is_not_there_is_named(self):
        self.refused("show", "Inbox", TEXT, saying=f"'{TEXT}'")
        self.refused("name", TEXT, code=2, saying=f"'{TEXT}'")
        self.refused("name", "PropTags", TEXT, code=2, saying=f"'{TEXT}'")
        self.refused("value", "PropTags", TEXT, saying=f"'{TEXT}'")
        self.refused("eid", TEXT, code=2, saying=f"'{TEXT}'")
        self.refused("ab", "show", TEXT, saying=f"'{TEXT}'")
        self.refused("ab", "list", TEXT, saying=f"'{TEXT}'")
        self.refused("load", self.path(TEXT), saying=TEXT)
        self.refused("inbox", "--profile", TEXT, saying=f"there is no profile '{TEXT}'")
        self.refused("profile", "delete", TEXT, saying=f"profile '{TEXT}'")
        self.refused("provider", "install", "--dll", self.path(TEXT), saying=TEXT)

    def test_profiles_are_named(self):
        self.assertEqual(self.zeb("profile", "create", TEXT, "--store", self.path(TEXT + ".zeb"), "--default").out.split("\n")[0],
                         f"created profile '{TEXT}' and made it the default")
        self.assertTrue((self.folder / (TEXT + ".zeb")).exists())
        self.assertEqual(self.zeb("profile", "default").out, TEXT + "\n")
        self.zeb("new", "Inbox", "PR_SUBJECT=a", "--profile", TEXT)
        self.assertEqual(self.subjects(), ["a"], "the default profile is the same")
        self.assertEqual(self.subjects("--profile", "test"), [])
        self.assertIn({"name": TEXT, "default": True}, json.loads(self.zeb("profile", "list", "--json").out)["profiles"])
        self.zeb("profile", "default", "test")
        self.zeb("profile", "default", TEXT)
        self.zeb("profile", "delete", TEXT)
        self.assertEqual(self.zeb("profile", "list").out, "  test\n")

    def test_files_are_written_and_read(self):
        self.load(message(TEXT, folder=f"Inbox/{TEXT}"))
        self.zeb("save", f"Inbox/{TEXT}", "-o", self.path(TEXT + ".jsonl"))
        saved = (self.folder / (TEXT + ".jsonl")).read_text(encoding="utf-8")
        self.assertIn(TEXT, saved)
        self.zeb("profile", "create", "copy", "--store", self.path("copy.zeb"))
        self.zeb("load", self.path(TEXT + ".jsonl"), "--profile", "copy")
        self.assertEqual(self.zeb("save", f"Inbox/{TEXT}", "--profile", "copy").out, saved)

    def test_the_address_book_finds_names(self):
        self.load({"addressBook": "user", "properties": {"PR_DISPLAY_NAME": TEXT, "PR_EMAIL_ADDRESS": TEXT + "@b.c"}})
        self.assertTrue(self.zeb("ab", "show", TEXT).out.startswith(TEXT + "\n"))
        self.assertTrue(self.zeb("ab", "show", TEXT + "@b.c").out.startswith(TEXT + "\n"))

    def test_variables_of_the_environment_name_files(self):
        for variable in ("ZEBAPI_LOG", "ZEBSTORE_TRACE"):
            with self.subTest(variable=variable):
                self.environment[variable] = self.path(TEXT + variable)
                self.zeb("inbox")
                del self.environment[variable]
                self.assertIn("MAPI", (self.folder / (TEXT + variable)).read_text(encoding="utf-8"))
        self.environment["ZEBSTORE_FAULT"] = TEXT
        self.assertIn(TEXT, self.zeb("inbox").err)
        del self.environment["ZEBSTORE_FAULT"]

    def test_the_default_store_path(self):
        data = self.folder / TEXT
        data.mkdir()
        self.environment["LOCALAPPDATA" if world.WINDOWS else "XDG_DATA_HOME"] = self.path(TEXT)
        shown = self.zeb("profile", "create", "here").out
        if world.WINDOWS:
            # Wine sets the variable itself.
            self.assertIn("\\AppData\\Local\\zebapi\\here.zeb", shown)
        else:
            self.assertTrue((data / "zebapi" / "here.zeb").exists())

    def test_a_registered_provider_is_found(self):
        folder = self.folder / TEXT
        folder.mkdir()
        name = "zebstore.dll" if world.WINDOWS else "libzebstore.so"
        (folder / name).write_bytes((world.BUILD / "bin" / name).read_bytes())
        separator = "\\" if world.WINDOWS else "/"
        self.zeb("provider", "install", "--dll", self.path(TEXT) + separator + name)
        self.assertEqual(self.inbox()["total"], 0)
