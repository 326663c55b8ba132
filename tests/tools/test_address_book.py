"""zeb ab, and the address book lines of zeb load."""
import json

import world
from world import World, message


def user(name, address, **properties):
    return {"addressBook": "user",
            "properties": {"PR_DISPLAY_NAME": name, "PR_EMAIL_ADDRESS": address, **properties}}


def group(name, *members):
    return {"addressBook": "list", "properties": {"PR_DISPLAY_NAME": name}, "members": list(members)}


class AddressBook(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def containers(self, *arguments):
        return json.loads(self.zeb("ab", "list", "--json", *arguments).out)["containers"]

    def entries(self, container, *arguments):
        return json.loads(self.zeb("ab", "list", container, "--json", *arguments).out)["entries"]

    def names(self, container="Global Address List", *arguments):
        return [entry["name"] for entry in self.entries(container, *arguments)]

    def shown(self, entry, *arguments):
        return json.loads(self.zeb("ab", "show", entry, "--json", *arguments).out)

    def test_an_empty_one_has_its_containers(self):
        listed = self.containers()
        self.assertEqual([(each["name"], each["entries"], each["default"], each["exchange"]) for each in listed],
                         [("Global Address List", 0, True, True), ("Contacts", 0, False, False)])
        self.assertEqual(self.zeb("ab", "list").out, "* Global Address List  0 entries\n  Contacts  0 entries\n")
        self.assertEqual(self.zeb("ab", "list", "Contacts").out, "0 entries\n")
        self.assertEqual(self.entries("Contacts"), [])

    def test_entries_are_listed_by_name(self):
        done = self.load(user("Boris Cole", "boris@example.org"), user("Ada Brandt", "ada@example.org"),
                         group("Team", "ada@example.org", "Boris Cole", "eve@example.net"))
        self.assertEqual(done.out, "3 address book entries loaded\n")
        self.assertEqual(self.names(), ["Ada Brandt", "Boris Cole", "Team"])
        self.assertEqual(self.names("global address LIST"), ["Ada Brandt", "Boris Cole", "Team"])
        self.assertEqual(self.names(self.containers()[0]["entryId"].lower()), ["Ada Brandt", "Boris Cole", "Team"])
        shown = self.zeb("ab", "list", "Global Address List", "--limit", "2").out.splitlines()
        self.assertEqual([line.split() for line in shown[1:3]],
                         [["Ada", "Brandt", "user", "ada@example.org"], ["Boris", "Cole", "user", "boris@example.org"]])
        self.assertEqual(shown[3], "2 of 3 entries")
        self.assertEqual([each["kind"] for each in self.entries("Global Address List")], ["user", "user", "list"])

    def test_lines_and_objects_say_the_same(self):
        self.load(user("Ada Brandt", "ada@example.org"), user("Boris", "/o=Org/cn=boris", PR_ADDRTYPE="EX"),
                  user("Nameless", ""), group("Team", "Ada Brandt", "Boris"))
        shown = self.zeb("ab", "list", "Global Address List").out
        lines = shown.splitlines()
        kind, address = lines[0].index("kind"), lines[0].index("address")
        self.assertEqual([(line[:kind].rstrip(), line[kind:address].rstrip(), line[address:]) for line in lines[:-1]],
                         [("name", "kind", "address"), ("Ada Brandt", "user", "ada@example.org"),
                          ("Boris", "user", "EX:/o=Org/cn=boris"), ("Nameless", "user", ""), ("Team", "list", "")])
        self.assertEqual([line for line in lines if line != line.rstrip()], [])
        self.assertEqual(lines[-1], "4 entries")
        found = json.loads(self.zeb("ab", "list", "global address list", "--json", "--limit", "2").out)
        self.assertEqual((found["container"], found["total"], len(found["entries"])), ("Global Address List", 4, 2))
        self.assertEqual([(each["name"], each["addressType"], each["address"]) for each in found["entries"]],
                         [("Ada Brandt", "SMTP", "ada@example.org"), ("Boris", "EX", "/o=Org/cn=boris")])
        self.assertEqual(self.zeb("ab", "list").out, "* Global Address List  4 entries\n  Contacts  0 entries\n")
        shown = self.zeb("ab", "show", "Team").out.splitlines()
        self.assertEqual(shown[-3:], ["2 members", "  " + lines[1], "  " + lines[2]])
        values = self.zeb("ab", "show", "boris").out.splitlines()[2:]
        at = next(line for line in values if line.startswith("  PR_ADDRTYPE ")).index("EX")
        self.assertTrue(all(line[at - 1] == " " != line[at] for line in values), values)

    def test_whole_names_first_and_members_once(self):
        self.load(user("Team", "team@example.org"), user("Teamwork", "work@example.org"),
                  group("One", "team@example.org", "work@example.org"), group("Two", "work@example.org", "One"))
        self.assertEqual(self.shown("team")["name"], "Team")
        self.assertEqual([each["name"] for each in self.shown("Two", "--expand")["members"]], ["Teamwork", "Team"])
        self.assertEqual(self.zeb("ab", "show", "Two").out.splitlines()[-3], "2 members")

    def test_more_entries_than_one_call_reads(self):
        self.load(*[user(f"User {i:03}", f"{i}@example.org") for i in range(450)])
        self.assertEqual(self.names(), [f"User {i:03}" for i in range(450)])
        self.assertEqual(self.zeb("ab", "list", "Global Address List").out.splitlines()[-1], "450 entries")

    def test_messages_and_entries_share_a_file(self):
        done = self.load(message("hello"), user("Ada", "ada@example.org"))
        self.assertEqual(done.out, "1 message loaded\n1 address book entry loaded\n")
        self.assertEqual(self.subjects(), ["hello"])

    def test_show_finds_an_entry(self):
        self.load(user("Ada Brandt", "ada@example.org", PR_COMPANY_NAME="Brandt & Co"), user("Adam", "adam@example.org"))
        by_name = self.shown("ada brandt")
        self.assertEqual(by_name["kind"], "user")
        self.assertEqual(by_name["properties"]["PR_COMPANY_NAME"], "Brandt & Co")
        self.assertEqual(by_name["properties"]["PR_ADDRTYPE"], "SMTP")
        self.assertEqual(by_name["properties"]["PR_SMTP_ADDRESS"], "ada@example.org")
        self.assertNotIn("members", by_name)
        for entry in ("ADA@example.org", "brandt", by_name["entryId"]):
            self.assertEqual(self.shown(entry)["entryId"], by_name["entryId"])
        text = self.zeb("ab", "show", "brandt").out
        self.assertTrue(text.startswith("Ada Brandt\nuser\n"))
        self.assertIn("Brandt & Co", text)
        self.refused("ab", "show", "ada", saying=["'ada'", "2 entries"])
        self.refused("ab", "show", "nobody", saying="'nobody'")

    def test_show_ends_in_a_circular_list(self):
        self.load(user("Ada", "ada@example.org"), group("Loop", "ada@example.org", "Loop"), group("Outer", "Loop"))
        members = lambda entry, *more: [each["name"] for each in self.shown(entry, *more)["members"]]
        self.assertEqual(members("Outer"), ["Loop"])
        self.assertEqual(members("Loop"), ["Ada", "Loop"])
        self.assertEqual(members("Outer", "--expand"), ["Ada"])
        self.assertEqual(members("Loop", "--expand"), ["Ada"])
        self.assertIn("2 members\n", self.zeb("ab", "show", "Loop").out)

    def test_compare(self):
        self.load(user("Ada", "ada@example.org"), user("Boris", "boris@example.org"))
        ada, boris = [each["entryId"] for each in self.entries("Global Address List")]
        self.assertEqual(self.zeb("ab", "compare", ada, ada.lower()).out, "same\n")
        self.assertEqual(self.zeb("ab", "compare", ada, boris).out, "different\n")
        self.assertEqual(json.loads(self.zeb("ab", "compare", ada, boris, "--json").out), {"version": 1, "same": False})
        self.assertEqual(json.loads(self.zeb("ab", "compare", ada, ada, "--json").out), {"version": 1, "same": True})
        self.refused("ab", "compare", ada, boris + "0", code=2, saying="must have two for each byte")
        self.refused("ab", "compare", ada, "xyz", code=2, saying="hexadecimal text, not 'xyz'")
        self.refused("ab", "compare", "00", "00", code=2, saying="the entry identifier '00' is too short")
        self.refused("ab", "compare", ada, "", code=2, saying="the entry identifier is empty")

    def test_contacts_are_the_folders_messages(self):
        address = "{00062004-0000-0000-C000-000000000046}:PT_UNICODE:id:0x8083"
        self.load({"folder": "Contacts", "properties": {"PR_SUBJECT": "Zo\u00eb", "PR_DISPLAY_NAME": "Zo\u00eb",
                                                        "PR_MESSAGE_CLASS": "IPM.Contact", address: "zoe@example.org"}},
                  {"folder": "Contacts", "properties": {"PR_SUBJECT": "a note"}})
        self.assertEqual([(each["name"], each["address"]) for each in self.entries("Contacts")],
                         [("Zo\u00eb", "zoe@example.org")])
        self.assertEqual(self.shown("zoe@example.org")["name"], "Zo\u00eb")

    def test_identifiers_that_name_nothing_are_refused(self):
        self.refused("ab", "list", "Nowhere", saying=["'Nowhere'", "zeb ab list"])
        self.refused("ab", "list", "00" * 30, saying="entry identifier")
        contacts = self.containers()[1]["entryId"]
        self.refused("ab", "list", contacts[:-10], saying="identifier of the contacts folder")
        self.refused("ab", "show", contacts, saying="MAPI_E_INVALID_TYPE")

    def test_wrong_lines_are_refused(self):
        for line, saying in (({"addressBook": "robot", "properties": {}}, '"user" or "list"'),
                             ({"addressBook": "user", "properties": {"PR_EMAIL_ADDRESS": "a@b.c"}}, "display name"),
                             ({"addressBook": "user", "folder": "x", "properties": {}}, "unknown key"),
                             ({**user("Ada", "a@b.c"), "members": ["x"]}, "no \"members\""),
                             ({**group("Team"), "members": [1]}, "must be text"),
                             (group("Team", "nobody at all"), "'nobody at all'")):
            done = self.load(user("Kept", "kept@example.org"), line, code=1)
            self.one_sentence(done, ["mail.jsonl:2", saying])
        self.assertEqual(set(self.names()), {"Kept"})


class Wab(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(user("Ada Brandt", "ada@example.org"), group("Team", "ada@example.org"))

    def install(self):
        shown = self.zeb("provider", "install", "--wab").out
        self.assertIn("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\WAB\\DLLPath\n  (default) = ", shown)

    def test_the_same_commands_read_it(self):
        self.install()
        for command in (("list",), ("list", "Global Address List"), ("list", "--json"),
                        ("show", "Ada Brandt"), ("show", "Team", "--json"), ("show", "Team", "--expand")):
            self.assertEqual(self.zeb("ab", *command, "--wab").out, self.zeb("ab", *command).out)

    def test_compare_compares_texts(self):
        self.install()
        one = "AB" * 20
        self.assertEqual(self.zeb("ab", "compare", one, one.lower(), "--wab").out, "same\n")
        self.assertEqual(self.zeb("ab", "compare", one, "AC" * 20, "--wab").out, "different\n")

    def test_requires_library_and_refuses_profile(self):
        if not world.WINDOWS:
            self.refused("ab", "list", "--wab", saying=["Windows Address Book", "provider install --wab"])
        self.install()
        self.refused("ab", "list", "--wab", "--profile", "test", saying="exclude each other")
