"""Every command of zeb, its exit code and what it prints."""
import json
import re
import shutil
import subprocess

import world
from world import World, message


class Usage(World):
    registered = False

    def test_wrong_usage_ends_with_2(self):
        for arguments in ([], ["nonsense"], ["inbox", "--nonsense"], ["inbox", "--sort", "colour"],
                          ["inbox", "--limit", "0"], ["inbox", "--limit", "many"], ["load"], ["profile"],
                          ["profile", "create"], ["profile", "create", "a", "--durability", "some"], ["store"], ["mv", "a"]):
            with self.subTest(arguments=arguments):
                self.one_sentence(self.zeb(*arguments, code=2), ["zeb: ", "--help'"])

    def test_mistakes_are_named_as_typed(self):
        for arguments, said in ((["frobnicate"], "'zeb' has no command 'frobnicate'"), ([], "'zeb' needs a command"),
                                (["profile", "frob"], "'zeb profile' has no command 'frob'"),
                                (["profile"], "'zeb profile' needs a command"),
                                (["inbox", "--colour"], "'zeb inbox' has no option '--colour'"),
                                (["inbox", "there"], "'zeb inbox' takes no further argument, such as 'there'"),
                                (["load"], "'zeb load' needs FILE.jsonl"), (["mkdir"], "'zeb mkdir' needs FOLDER"),
                                (["profile", "create"], "'zeb profile create' needs NAME"),
                                (["new"], "'zeb new' needs FOLDER [NAME=VALUE...]"),
                                (["mv", "a"], "'zeb mv' needs FOLDER [MESSAGE...] TARGET"),
                                (["ab", "compare", "00"], "'zeb ab compare' needs B"),
                                (["inbox", "--limit"], "--limit needs a value"),
                                (["inbox", "--sort", "colour"], "--sort: colour not in {date,received,sender,subject,class,size}"),
                                (["\u65e5\u672c\u8a9e"], "'zeb' has no command '\u65e5\u672c\u8a9e'")):
            with self.subTest(arguments=arguments):
                self.refused(*arguments, code=2, saying=f"zeb: {said}; see 'zeb")

    def test_the_version_is_printed(self):
        version = re.search(r"project\(\w+ VERSION (\S+)", (world.ROOT / "CMakeLists.txt").read_text())[1]
        self.assertEqual(self.zeb("--version").out.splitlines()[:2], [f"zeb {version}", f"library   zebapi {version}"])

    def test_help_ends_with_0(self):
        self.assertIn("doctor", self.zeb("--help").out)
        inbox = self.zeb("inbox", "--help").out
        self.assertIn("  --limit N                   List only the first N messages\n", inbox)
        self.assertIn("  --sort date|received|sender|subject|class|size (date)\n", inbox)
        move = self.zeb("mv", "--help").out
        self.assertIn("Usage: zeb mv [OPTIONS] FOLDER [MESSAGE...] TARGET\n", move)
        self.assertIn("\n  FOLDER [MESSAGE...] TARGET  A folder and", move.replace("TARGET\n" + " " * 30, "TARGET  "))
        self.assertIn("Usage: zeb show [OPTIONS] [OBJECT] [MESSAGE]\n", self.zeb("show", "--help").out)


class Doctor(World):
    registered = False

    def test_finds_provider_and_profiles(self):
        self.zeb("provider", "install")
        self.create_profile("mine")
        shown = self.zeb("doctor").out
        self.assertIn("usable: ", shown.strip().split("\n")[-1])
        self.assertIn("* mine", shown)
        found = json.loads(self.zeb("doctor", "--json").out)
        self.assertEqual(found["defaultProfile"], "mine")
        self.assertEqual(found["profiles"], ["mine"])
        self.assertEqual(found["class"], 2)
        self.assertIn("zebstore", found["provider"])
        self.assertTrue(found["candidates"][0]["usable"])
        self.assertIn("DLLPathEx", found["candidates"][0]["origin"])


class DoctorOnProfiles(World):
    """The location of the library's profiles, and of other programs' profiles."""

    SUBSYSTEM = "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles"
    OFFICE = "HKEY_CURRENT_USER\\Software\\Microsoft\\Office"

    def add_version(self, version, *profiles):
        for path in ["Outlook\\Profiles", *("Outlook\\Profiles\\" + profile for profile in profiles)]:
            self.registry_add(f"{self.OFFICE}\\{version}\\{path}", undo=f"{self.OFFICE}\\{version}")

    def set_current(self, version):
        self.registry_add("HKEY_CLASSES_ROOT\\Outlook.Application\\CurVer", "", f"Outlook.Application.{version}",
                          undo="HKEY_CLASSES_ROOT\\Outlook.Application")

    def doctor(self):
        return json.loads(self.zeb("doctor", "--json").out)

    def test_names_the_place(self):
        self.create_profile("mine")
        found = self.doctor()
        self.assertEqual(found["profilesKey"], self.SUBSYSTEM)
        self.assertEqual(found["profilesElsewhere"], [])
        shown = self.zeb("doctor").out
        self.assertIn(f"from     {self.SUBSYSTEM}\n", shown)
        self.assertNotIn("does not look", shown)

    def test_names_a_missing_default_profile(self):
        self.registry_add(self.SUBSYSTEM, "DefaultProfile", "ghost")
        self.assertIn("the default one, 'ghost', does not exist", self.zeb("doctor").out)
        self.zeb("profile", "create", "mine", "--store", self.path("test.zeb"))
        self.registry_add(self.SUBSYSTEM, "DefaultProfile", "ghost")
        shown = self.zeb("doctor").out
        self.assertIn("     mine\n     the default one, 'ghost', does not exist", shown)
        self.assertEqual(self.doctor()["defaultProfile"], "ghost")
        self.registry_add(self.SUBSYSTEM, "DefaultProfile", "MINE")
        shown = self.zeb("doctor").out
        self.assertIn("   * mine\n", shown)
        self.assertNotIn("does not exist", shown)

    def test_names_where_outlook_keeps_others(self):
        self.create_profile("mine")
        self.set_current(16)
        self.add_version("16.0", "Home", "Work")
        found = self.doctor()
        self.assertEqual(found["profiles"], ["mine"])
        self.assertEqual(found["profilesKey"], self.SUBSYSTEM)
        self.assertEqual(found["profilesElsewhere"],
                         [{"keeper": "Outlook 16.0", "key": f"{self.OFFICE}\\16.0\\Outlook\\Profiles",
                           "profiles": ["Home", "Work"]}])
        self.assertIn(f"Outlook 16.0 keeps its profiles in {self.OFFICE}\\16.0\\Outlook\\Profiles, where the library does "
                      "not look: Home, Work\n", self.zeb("doctor").out)

    def test_names_the_older_place_as_unused(self):
        self.create_profile("mine")
        self.set_current(15)
        self.add_version("15.0", "Real")
        found = self.doctor()
        self.assertEqual(found["profiles"], ["Real"])
        self.assertEqual(found["profilesKey"], f"{self.OFFICE}\\15.0\\Outlook\\Profiles")
        self.assertEqual(found["profilesElsewhere"], [{"keeper": "Windows' messaging subsystem", "key": self.SUBSYSTEM,
                                                       "profiles": ["mine"]}])
        self.assertIn(f"Windows' messaging subsystem keeps its profiles in {self.SUBSYSTEM}, where the library does not "
                      "look: mine\n", self.zeb("doctor").out)

    def test_names_the_empty_outlook_key(self):
        self.set_current(16)
        self.assertEqual(self.doctor()["profilesElsewhere"],
                         [{"keeper": "Outlook 16.0", "key": f"{self.OFFICE}\\16.0\\Outlook\\Profiles", "profiles": []}])
        self.assertIn("where the library does not look; none exist yet\n", self.zeb("doctor").out)
        self.add_version("14.0", "Old")
        self.assertEqual([place["profiles"] for place in self.doctor()["profilesElsewhere"]], [["Old"], []])

    def test_names_no_place_already_searched(self):
        for version in ("14", "15", "", "9" * 30):
            with self.subTest(version=version):
                self.set_current(version)
                self.assertEqual(self.doctor()["profilesElsewhere"], [])

    def test_names_the_place_of_lookalike_15(self):
        self.set_current(150)
        found = self.doctor()
        self.assertEqual(found["profilesKey"], f"{self.OFFICE}\\15.0\\Outlook\\Profiles")
        self.assertEqual([place["keeper"] for place in found["profilesElsewhere"]], ["Outlook 150.0"])

    def test_names_only_versions_with_profiles(self):
        self.set_current(14)
        self.add_version("14.0")
        self.add_version("15.0", "Left")
        self.add_version("16.0", "Here")
        self.registry_add(f"{self.OFFICE}\\Common\\Identity", undo=f"{self.OFFICE}\\Common")
        self.assertEqual([place["keeper"] for place in self.doctor()["profilesElsewhere"]],
                         ["Outlook 15.0", "Outlook 16.0"])
        shown = self.zeb("doctor").out
        self.assertIn("none; 'zeb profile create", shown)
        self.assertNotIn("does not exist", shown)


class DoctorWithoutProvider(World):
    """Without any provider; Wine has its own."""

    registered = False

    def setUp(self):
        super().setUp()
        self.registry = self.folder / "registry.reg"

    def register(self, path):
        self.registry.write_text("Windows Registry Editor Version 5.00\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook]\n"
                                 f"\"DLLPathEx\"=\"{path}\"\n", encoding="utf-8")

    def doctor_says(self):
        """The verdict on the registered file and the exit code."""
        if world.WINDOWS:
            return None
        done = self.one_sentence(self.zeb("doctor", code=1), "no usable MAPI provider was found")
        found = json.loads(self.zeb("doctor", "--json", code=1).out)
        self.assertIsNone(found["provider"])
        self.assertIn(found["candidates"][0]["verdict"], done.out)
        return found["candidates"][0]

    def test_says_that_nothing_is_registered(self):
        if world.WINDOWS:
            # Wine's own mapi32.dll is a provider with decorated names.
            self.zeb("provider", "install")
            self.assertEqual(json.loads(self.zeb("doctor", "--json").out)["class"], 2)
            return
        self.assertFalse(self.doctor_says()["usable"])
        self.assertIn("profiles\n     none", self.zeb("doctor", code=1).out)
        self.refused("inbox", saying="no usable MAPI provider")

    def test_says_the_file_does_not_load(self):
        if world.WINDOWS:
            self.refused("provider", "install", "--dll", self.path("absent.dll"), saying="absent.dll")
            return
        self.register("/nowhere/provider.so")
        verdict = self.doctor_says()
        self.assertFalse(verdict["loaded"])
        self.assertIn("does not load", verdict["verdict"])
        self.assertEqual(verdict["path"], "/nowhere/provider.so")

    def test_names_the_export_that_is_missing(self):
        library = world.libraries()[0]
        if world.WINDOWS:
            done = self.zeb("provider", "install", "--dll", "Z:" + str(library).replace("/", "\\"), code=1)
            self.one_sentence(done, ["is not a MAPI provider", "MAPIInitialize"])
            return
        self.register(library)
        verdict = self.doctor_says()
        self.assertTrue(verdict["loaded"])
        self.assertEqual(verdict["missingUndecorated"], "MAPIInitialize")
        self.assertIn("does not export MAPIInitialize", verdict["verdict"])


class Provider(World):
    registered = False

    def test_install_says_what_it_wrote_where(self):
        shown = self.zeb("provider", "install").out
        self.assertIn("HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook", shown)
        self.assertIn("DLLPathEx = ", shown)
        self.assertIn("zebstore", shown)

    KEY = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook"
    WAB = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\WAB\\DLLPath"
    OTHER = "/elsewhere/other.dll"

    def status(self):
        """Maps each key to the registered and the replaced value."""
        return {each["key"]: (each["registered"], each["replaced"])
                for each in json.loads(self.zeb("provider", "status", "--json").out)["registrations"]}

    def own(self):
        """The entries that install registers on a clean machine."""
        self.run_tool("zeb", "provider", "remove")
        self.zeb("provider", "install")
        return self.status()[self.KEY][0]

    def test_another_provider_is_replaced_when_asked(self):
        own = self.own()
        for options, keys in (([], [self.KEY]), (["--wab"], [self.KEY, self.WAB])):
            self.registry_add(self.KEY, "DLLPathEx", self.OTHER)
            self.registry_add(self.WAB, "", self.OTHER)
            with self.subTest(options=options):
                self.refused("provider", "install", *options, saying=["another provider", self.OTHER, "--replace"])
                self.assertEqual(self.status(), {self.KEY: (self.OTHER, None), self.WAB: (self.OTHER, None)})
                done = self.zeb("provider", "install", "--replace", *options).out
                self.assertEqual(done.count(f"  replaced {self.OTHER}; 'zeb provider remove' restores it\n"), len(keys))
                self.assertEqual([self.status()[key] for key in keys], [(own, self.OTHER)] * len(keys))
                self.zeb("provider", "install", *options)
                self.assertEqual([self.status()[key] for key in keys], [(own, self.OTHER)] * len(keys))
                self.assertIn(f"DLLPathEx = {self.OTHER}\n", self.zeb("provider", "remove").out)
                self.assertEqual(self.status(), {self.KEY: (self.OTHER, None), self.WAB: (self.OTHER, None)})
                self.refused("provider", "remove", saying="nothing to remove: no registered provider")

    def test_what_replaced_nothing_leaves_nothing(self):
        own = self.own()
        self.assertEqual(self.status(), {self.KEY: (own, None), self.WAB: (None, None)})
        self.assertIn("DLLPathEx is not set\n", self.zeb("provider", "remove").out)
        self.assertEqual(self.status(), {self.KEY: (None, None), self.WAB: (None, None)})
        shown = self.zeb("provider", "status").out
        self.assertEqual(shown, f"{self.KEY}\n  DLLPathEx is not set\n{self.WAB}\n  (default) is not set\n")

    def test_later_registrations_are_not_removed(self):
        self.own()
        self.registry_add(self.KEY, "DLLPathEx", self.OTHER)
        self.refused("provider", "remove", saying="nothing to remove: no registered provider")
        self.assertEqual(self.status()[self.KEY][0], self.OTHER)

    def test_anothers_entry_for_the_file_stays(self):
        self.run_tool("zeb", "provider", "remove")
        name, copy = ("zebstore.dll", "other.dll") if world.WINDOWS else ("libzebstore.so", "other.so")
        shutil.copy(world.BUILD / "bin" / name, self.folder / copy)
        # First an entry written by zeb: it shows the form of the path.
        self.zeb("provider", "install", "--dll", self.path(copy))
        path = self.status()[self.KEY][0]
        self.zeb("provider", "remove")
        self.registry_add(self.KEY, "DLLPathEx", path)
        self.zeb("provider", "install", "--dll", self.path(copy))
        self.refused("provider", "remove", saying="nothing to remove: no registered provider")
        self.assertEqual(self.status()[self.KEY], (path, None))

    def test_a_copy_replaces_without_a_question(self):
        own = self.own()
        name = "zebstore.dll" if world.WINDOWS else "libzebstore.so"
        (self.folder / "copy").mkdir()
        shutil.copy(world.BUILD / "bin" / name, self.folder / "copy" / name)
        self.zeb("provider", "install", "--dll", self.path("copy/" + name))
        registered, replaced = self.status()[self.KEY]
        self.assertNotEqual(registered, own)
        self.assertIsNone(replaced)

    def test_one_refusal_leaves_both_places(self):
        self.own()
        self.zeb("provider", "remove")
        self.registry_add(self.WAB, "", self.OTHER)
        self.refused("provider", "install", "--wab", saying=["another provider", "WAB", self.OTHER])
        self.assertEqual(self.status(), {self.KEY: (None, None), self.WAB: (self.OTHER, None)})

    def test_a_replaced_values_kind_is_kept(self):
        if world.WINDOWS:
            return self.reg_expand_test()
        own = self.own()
        registry = self.folder / "registry.reg"
        written = "hex(2):25,00,41,00,25,00,00,00"
        registry.write_text(re.sub('"DLLPathEx"=.*', f'"DLLPathEx"={written}', self.registry_text()))
        self.zeb("provider", "install", "--replace")
        self.assertEqual(self.status()[self.KEY][0], own)
        self.zeb("provider", "remove")
        self.assertIn(f'"DLLPathEx"={written}', self.registry_text())
        return None

    def reg_expand_test(self):
        self.own()
        self.assertEqual(self.reg("add", self.KEY, "/v", "DLLPathEx", "/t", "REG_EXPAND_SZ", "/d", "%A%", "/f"), 0)
        self.addCleanup(self.reg, "delete", self.KEY, "/f")
        self.zeb("provider", "install", "--replace")
        self.zeb("provider", "remove")
        shown = subprocess.run([str(world.ROOT / "scripts/wine-run.sh"), "reg", "query", self.KEY, "/v", "DLLPathEx"],
                               env=self.environment, check=True, stdout=subprocess.PIPE, timeout=300).stdout.decode()
        self.assertRegex(shown, r"DLLPathEx\s+REG_EXPAND_SZ\s+%A%")

    def test_a_missing_provider_has_platform_name(self):
        tool = "zeb.exe" if world.WINDOWS else "zeb"
        for file in [world.BUILD / "bin" / tool, *world.libraries()]:
            shutil.copy(file, self.folder)
        command = [str(world.ROOT / "scripts/wine-run.sh")] if world.WINDOWS else []
        more = {} if world.WINDOWS else {"LD_LIBRARY_PATH": str(self.folder)}
        done = subprocess.run([*command, str(self.folder / tool), "provider", "install"], stderr=subprocess.PIPE, check=False,
                              env=self.environment | more, timeout=300)
        self.assertEqual(done.returncode, 1)
        wanted, other = ("zebstore.dll", ".so") if world.WINDOWS else ("libzebstore.so", ".dll")
        self.assertIn(wanted, done.stderr.decode())
        self.assertNotIn(other + "'", done.stderr.decode())

    def test_install_refuses_what_is_no_provider(self):
        self.zeb("provider", "install")
        before = self.zeb("doctor", "--json").out
        self.refused("provider", "install", "--dll", self.path("none.dll"), saying=["does not exist", "none.dll"])
        (self.folder / "text.dll").write_text("not a library")
        self.refused("provider", "install", "--dll", self.path("text.dll"), saying=["text.dll", "not a MAPI provider"])
        self.assertEqual(self.zeb("doctor", "--json").out, before)


class Profile(World):
    def test_create_list_choose_and_delete(self):
        self.assertEqual(json.loads(self.zeb("profile", "list", "--json").out), {"version": 1, "profiles": []})
        self.refused("profile", "default", saying="no default profile")
        self.zeb("profile", "create", "one", "--store", self.path("one.zeb"))
        self.zeb("profile", "create", "two", "--store", self.path("two.zeb"), "--durability", "full", "--default")
        self.assertTrue((self.folder / "one.zeb").exists())
        self.assertEqual(self.zeb("profile", "default").out, "two\n")
        self.assertEqual(sorted(self.zeb("profile", "list").out.splitlines()), ["  one", "* two"])
        self.assertEqual(self.zeb("profile", "default", "one").out, "made profile 'one' the default\n")
        listed = {entry["name"]: entry["default"] for entry in json.loads(self.zeb("profile", "list", "--json").out)["profiles"]}
        self.assertEqual(listed, {"one": True, "two": False})
        self.zeb("profile", "delete", "two")
        self.assertEqual(self.zeb("profile", "list").out, "* one\n")
        self.assertTrue((self.folder / "two.zeb").exists(), "deleting a profile leaves its store")

    def test_each_step_says_what_it_did(self):
        self.assertEqual(self.zeb("profile", "create", "one", "--store", self.path("one.zeb"), "--default").out,
                         "created profile 'one' and made it the default\n  store  " + self.path("one.zeb") + "\n")
        self.assertEqual(self.zeb("profile", "create", "two", "--store", self.path("two.zeb"), "--durability", "full").out,
                         "created profile 'two'\n  store  " + self.path("two.zeb") + "\n")
        if not world.WINDOWS:
            self.assertIn('"Durability"="full"', self.registry_text())
        self.assertEqual(self.zeb("profile", "delete", "two").out, "deleted profile 'two'; its store file was kept\n")

    def test_a_relative_path_is_made_absolute(self):
        self.check(self.run_tool("zeb", "profile", "create", "one", "--store", "here.zeb", cwd=self.folder), 0)
        self.assertTrue((self.folder / "here.zeb").exists())
        self.assertEqual(self.inbox("--profile", "one")["total"], 0)
        library = "zebstore.dll" if world.WINDOWS else "libzebstore.so"
        self.check(self.run_tool("zeb", "provider", "install", "--dll", library, cwd=world.BUILD / "bin"), 0)
        self.assertEqual(self.inbox("--profile", "one")["total"], 0)
        path = json.loads(self.zeb("doctor", "--json").out)["provider"].replace("\\", "/")
        self.assertTrue(path.endswith(f"{world.BUILD}/bin/{library}"), path)

    def test_taken_or_unknown_names_are_refused(self):
        self.create_profile("one")
        self.refused("profile", "create", "one", "--store", self.path("x.zeb"), saying="'one'")
        self.refused("profile", "delete", "other", saying="'other'")
        self.refused("profile", "default", "other", saying="'other'")
        self.assertFalse((self.folder / "x.zeb").exists())

    def test_no_folder_is_made(self):
        self.refused("profile", "create", "one", "--store", self.path("absent/deep/one.zeb"),
                     saying=["the folder '" + self.path("absent/deep") + "'", "'one.zeb' does not exist"])
        self.assertFalse((self.folder / "absent").exists())
        self.assertEqual(self.zeb("profile", "list").out, "")

    def test_a_profile_without_a_store(self):
        self.registry_add("HKEY_CURRENT_USER\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem"
                          "\\Profiles\\bare")
        for command in (["inbox"], ["folders"], ["store", "check"], ["find", "Inbox"]):
            with self.subTest(command=command):
                self.refused(*command, "--profile", "bare", saying="opening the default store of profile 'bare': MAPI_E_NOT_FOUND")

    def test_other_codes_are_put_into_words(self):
        self.create_profile()
        number = self.call_number("IMAPITable::QueryRows", "inbox")
        for result, said in ((0x80030070, "the disk is full (0x80030070)"),
                             (0x80041234, "unknown error (0x80041234)")):
            self.fail_at(number, "inbox", saying=said, result=result)

    def test_a_failed_store_leaves_no_profile(self):
        (self.folder / "file").write_text("in the way")
        self.refused("profile", "create", "one", "--store", self.path("file/one.zeb"), saying="one.zeb")
        self.assertEqual(self.zeb("profile", "list").out, "")


class Store(World):
    def test_stores_lists_the_profiles_store(self):
        self.create_profile()
        self.assertTrue(self.zeb("stores").out.startswith("* "))
        stores = json.loads(self.zeb("stores", "--json").out)["stores"]
        self.assertEqual(len(stores), 1)
        self.assertTrue(stores[0]["default"])
        self.assertEqual((stores[0]["name"], stores[0]["provider"]), ("zebstore", "zebstore"))
        self.assertEqual(stores[0]["entryId"], self.shown()["PR_ENTRYID"])
        self.assertEqual(self.zeb("stores").out, "* zebstore  zebstore  " + self.path("test.zeb") + "\n")
        self.assertEqual(stores[0]["file"], self.path("test.zeb"))

    def test_check_of_a_sound_store(self):
        self.create_profile()
        self.load(message("a"))
        self.assertIn("is intact", self.zeb("store", "check").out)

    def test_check_of_a_damaged_store(self):
        store = self.create_profile()
        self.load(*[message(f"subject {i}", PR_BODY="x" * 3000) for i in range(200)])
        data = bytearray(store.read_bytes())
        # Whole pages in the middle of the tables, far from the header and the schema.
        middle = len(data) // 2 // 4096 * 4096
        data[middle:middle + 3 * 4096] = b"\x5a" * (3 * 4096)
        store.write_bytes(data)
        done = self.zeb("store", "check", code=1)
        self.assertIn("damaged", done.err)


class Folders(World):
    def test_shows_a_tree_with_counts(self):
        self.create_profile()
        self.load(message("a", folder="Inbox/Sub/Deeper"), message("b"), message("c"))
        shown = self.zeb("folders").out
        lines = shown.splitlines()
        self.assertRegex(lines[-1], r"^\d+ folders$")
        inbox = next(line for line in lines if "Inbox" in line)
        self.assertIn("2", inbox)
        deeper = next(line for line in lines if "Deeper" in line)
        self.assertGreater(deeper.index("Deeper"), inbox.index("Inbox"))
        self.assertEqual("\u2500" in shown, not world.WINDOWS, "boxes only where the reader shows them")
        if not world.WINDOWS:
            # Under Wine this would hide files whose names are not ASCII.
            self.environment["LC_ALL"] = "C"
        self.assertTrue(self.zeb("folders").out.isascii())

    def test_json_is_the_same_tree(self):
        self.create_profile()
        self.load(message("a", folder="Inbox/Sub"))
        inbox = next(folder for folder in self.folders() if folder["name"] == "Inbox")
        self.assertEqual([(sub["name"], sub["messages"]) for sub in inbox["folders"]], [("Sub", 1)])

    def test_all_begins_at_the_root(self):
        self.create_profile()
        self.assertGreater(len(str(self.folders("--all"))), len(str(self.folders())))


class Inbox(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def load_three(self):
        self.load(message("banana", "2026-01-03T00:00:00Z", PR_SENDER_NAME="Ada", PR_BODY="x" * 5000),
                  message("Apple", "2026-01-01T00:00:00Z", PR_SENDER_NAME="Grace"),
                  message("cherry", "2026-01-02T00:00:00Z", PR_SENDER_NAME="Edsger", PR_BODY="x" * 100000))

    def test_an_empty_inbox(self):
        self.assertEqual(self.zeb("inbox").out, "0 messages\n")
        self.assertEqual(self.inbox(), {"version": 1, "total": 0, "messages": []})

    def test_aligns_columns_and_ends_with_count(self):
        self.load_three()
        lines = self.zeb("inbox").out.splitlines()
        self.assertEqual(lines[-1], "3 messages")
        self.assertEqual(len(lines), 5)
        at = lines[0].index("subject")
        self.assertEqual([line[at:] for line in lines[1:4]], ["banana", "cherry", "Apple"])
        self.assertTrue(lines[1].startswith("2026-01-03 00:00:00  Ada "))

    def test_sorts(self):
        self.load_three()
        self.assertEqual(self.subjects(), ["banana", "cherry", "Apple"])
        self.assertEqual(self.subjects("--sort", "date"), ["banana", "cherry", "Apple"])
        self.assertEqual(self.subjects("--sort", "subject"), ["Apple", "banana", "cherry"])
        self.assertEqual(self.subjects("--sort", "size"), ["cherry", "banana", "Apple"])

    def test_limit(self):
        self.load_three()
        self.assertEqual(self.subjects("--limit", "2"), ["banana", "cherry"])
        self.assertEqual(self.zeb("inbox", "--limit", "2").out.splitlines()[-1], "2 of 3 messages")
        self.assertEqual(self.zeb("inbox", "--limit", "9").out.splitlines()[-1], "3 messages")

    def test_text_of_any_language_is_utf8(self):
        self.load(message("Gr\u00fc\u00dfe \u4f60\u597d \U0001F600", PR_SENDER_NAME="\u0410\u043d\u043d\u0430"))
        found = self.inbox()["messages"][0]
        self.assertEqual(found["subject"], "Gr\u00fc\u00dfe \u4f60\u597d \U0001F600")
        self.assertEqual(found["sender"], "\u0410\u043d\u043d\u0430")
        self.assertIn("\u4f60\u597d \U0001F600", self.zeb("inbox").out)

    def test_control_characters_are_filtered(self):
        self.load(message("a\u001b[2Jb\u0007c\nd\u009be"))
        shown = self.zeb("inbox").out
        self.assertEqual(len(shown.splitlines()), 3)
        self.assertTrue(all(character == "\n" or character >= " " for character in shown))
        self.assertNotIn("\u009b", shown)

    def test_a_long_sender_is_cut(self):
        self.load(message("after", PR_SENDER_NAME="\u4f60" * 60))
        lines = self.zeb("inbox").out.splitlines()
        self.assertIn("\u2026", lines[1])
        self.assertTrue(lines[1].endswith("  after"))

    def test_the_profile_can_be_named(self):
        self.zeb("profile", "create", "other", "--store", self.path("other.zeb"))
        self.load_three()
        self.assertEqual(self.inbox("--profile", "other")["total"], 0)
        self.assertEqual(self.inbox("--profile", "test")["total"], 3)
        self.refused("inbox", "--profile", "nobody", saying="'nobody'")

    def test_more_messages_than_one_call_reads(self):
        self.load(*[message(f"subject {i:04}") for i in range(1203)])
        self.assertEqual(self.subjects("--sort", "subject"), [f"subject {i:04}" for i in range(1203)])


class Example(World):
    def test_prints_the_default_inboxs_subjects(self):
        self.create_profile()
        self.load(message("one"), message("two"))
        done = self.run_tool("example_inbox")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(done.stdout.decode().split()), ["one", "two"])

    def test_reads_the_last_rows_by_index(self):
        self.create_profile()
        self.load(*[message(f"subject{i:02}") for i in range(12)])
        done = self.run_tool("example_list")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.decode().split(), [f"subject{i:02}" for i in range(2, 12)])

    def test_tours_the_library(self):
        self.create_profile()
        self.load(message("Another tour"), message("elsewhere"))
        done = self.run_tool("example_tour")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.decode().splitlines(), [
            "found Another tour, <error>", "found Gr\u00fc\u00dfe from the tour, 5",
            "to Ada Lovelace, ada@example.org", "file note.txt, 0"])
        self.assertEqual(done.stderr, b"")

    def test_says_why_it_can_not(self):
        for name in "example_inbox", "example_list", "example_tour":
            # A host in a few lines does not clean up after a failure.
            done = self.run_tool(name, traced=False)
            self.assertEqual(done.returncode, 1)
            self.assertTrue(done.stderr.strip())
