"""The commands that change a store: mkdir, rmdir, empty, info, new, set, mv, cp, rm."""
import json

import world
from world import World, message

LONG = 30_000 if world.WINDOWS else 32_767  # a command line of Windows holds no more


class Changes(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def counts(self, *arguments):
        """Maps the path of every folder to its number of messages."""
        found = {}

        def walk(folders, above):
            for folder in folders:
                found[above + folder["name"]] = folder["messages"]
                walk(folder["folders"], above + folder["name"] + "/")

        walk(self.folders(*arguments), "")
        return found

    def ids(self, folder):
        return [each["entryId"] for each in self.found(folder, "--sort", "subject")]


class Written(Changes):
    def test_a_message_is_written_with_its_parts(self):
        menu, empty = self.folder / "Menü 日本.txt", self.folder / "empty"
        menu.write_bytes(bytes(range(256)) * 4000)
        empty.write_bytes(b"")
        self.zeb("new", "Inbox", "--from", "Ada Lovelace <ada@example.org>", "--to", "grace@example.org", "--to", '"Dan, Çelik" <dan@example.org>',
                 "--cc", "bob@example.org", "--bcc", "eve@example.org", "--subject", "Lunch 日本", "--body", "At noon?\nGrüße", "--attach", str(menu),
                 "--attach", str(empty), "PR_IMPORTANCE=2")
        read = json.loads(self.zeb("read", "Inbox", "1", "--json").out)
        self.assertEqual({name: read[name] for name in ("from", "to", "cc", "bcc", "subject", "text")},
                         {"from": {"name": "Ada Lovelace", "address": "ada@example.org"},
                          "to": [{"name": "grace@example.org", "address": "grace@example.org"}, {"name": "Dan, Çelik", "address": "dan@example.org"}],
                          "cc": [{"name": "bob@example.org", "address": "bob@example.org"}],
                          "bcc": [{"name": "eve@example.org", "address": "eve@example.org"}], "subject": "Lunch 日本", "text": "At noon?\r\nGrüße"})
        self.assertEqual([each["name"] for each in read["attachments"]], ["Menü 日本.txt", "empty"])
        saved = self.folder / "saved"
        self.zeb("attachments", "Inbox", "1", "--save", str(saved))
        self.assertEqual((saved / menu.name).read_bytes(), menu.read_bytes())
        self.assertEqual(self.shown("Inbox", "1")["PR_IMPORTANCE"], 2)

    def test_the_text_comes_from_standard_input(self):
        self.zeb("new", "Inbox", "--subject", "piped", "--body", "-", given="one\r\ntwo\n\nü日\n")
        self.assertEqual(self.shown("Inbox", "piped")["PR_BODY"], "one\r\ntwo\r\n\r\nü日\r\n")

    def test_wrong_addresses_and_files_write_nothing(self):
        for wrong in ("ada", "@x", "ada@", "a b@c", "Ada <ada@x", "<>", "a@b, c@d", " "):
            self.refused("new", "Inbox", "--to", wrong, saying=["--to", "is not an address"], code=2)
        self.refused("new", "Inbox", "--from", "ada", saying="--from 'ada'", code=2)
        self.refused("new", "Inbox", "--attach", str(self.folder / "absent 日"), saying="absent 日' does not exist")
        self.refused("new", "Inbox", "--attach", str(self.folder), saying="is a folder")
        self.assertEqual(self.found("Inbox"), [])


class Folders(Changes):
    def test_folders_are_made_and_deleted(self):
        self.assertEqual(self.zeb("mkdir", "Inbox/Sub").out, "folder 'Inbox/Sub' exists\n")
        self.refused("mkdir", "Inbox/SUB", saying="folder 'Inbox/SUB' already exists")
        self.refused("mkdir", "Away/Sub", saying="there is no folder 'Away'")
        self.zeb("mkdir", "-p", "Away/Sub/Deep")
        self.zeb("mkdir", "-p", "Away/Sub/Deep")
        self.zeb("rmdir", "Away/Sub/Deep", "--yes")
        self.refused("rmdir", "Away", "--yes", saying=["'Away'", "0 messages and 1 folder", "--recursive"])
        self.assertEqual(self.zeb("rmdir", "Away", "--recursive", "--yes").out, "deleted folder 'Away'\n")
        self.assertEqual({path for path in self.counts() if path.startswith(("Inbox", "Away"))}, {"Inbox", "Inbox/Sub"})

    def test_nothing_is_deleted_without_a_terminal(self):
        self.load(message("kept", folder="Sub"))
        before = self.counts()
        self.refused("rmdir", "Sub", "--recursive", code=2, saying=["'Sub'", "1 message", "--yes"])
        self.refused("empty", "Sub", code=2, saying=["'Sub'", "1 message", "--yes"])
        self.refused("rm", "Sub", "1", "--hard", code=2, saying=["'kept'", "--yes"])
        self.assertEqual(self.counts(), before)

    def test_separators_in_names_and_long_names(self):
        names = ["a/b", "a\\b", "\\", "/", "..", ".", " ", "a:b*c?d\"e<f>g|h", "x\u0001y\nz", "\u00e4\u4f60\U0001F600"]
        for name in names[:4] + names[-3:] if world.WINDOWS else names:
            path = "Inbox/" + name.replace("\\", "\\\\").replace("/", "\\/")
            if world.WINDOWS and "\n" in path:
                continue
            with self.subTest(name=name):
                shown = self.zeb("mkdir", path).out
                self.assertEqual(len(shown.splitlines()), 1)
                self.assertIn("Inbox/" + name, self.counts())
                self.assertEqual(self.zeb("find", path).out, "0 messages\n")
                self.zeb("rmdir", path, "--yes")
        self.assertEqual(self.zeb("mkdir", "n" * LONG).out.count("n"), 119)
        self.assertIn("n" * LONG, self.counts())
        self.one_sentence(self.zeb("mkdir", "n" * LONG, code=1), "already exists")
        self.zeb("rmdir", "n" * LONG, "--yes")
        self.refused("mkdir", "Inbox//Sub", saying="empty name")
        self.refused("mkdir", "", saying="the top folder")
        self.refused("mkdir", "/", saying="the root folder")

    def test_a_root_path_is_no_option(self):
        self.assertEqual(self.zeb("mkdir", "/Mine").out, "folder '/Mine' exists\n")
        self.assertEqual(self.zeb("find", "/Mine").out, "0 messages\n")
        self.assertTrue(self.zeb("show", "/Mine").out.startswith("folder '/Mine'\n"))
        self.assertEqual(self.zeb("rmdir", "/Mine", "--yes").out, "deleted folder '/Mine'\n")

    def test_a_backslash_separates_nothing(self):
        before = self.counts()
        for path in ("Inbox\\Sub", "Inbox\\", "a\\\\\\b"):
            with self.subTest(path=path):
                self.refused("mkdir", path, saying=[f'"{path}" has a lone backslash', "'/' separates folders"])
        self.assertEqual(self.counts(), before)

    def test_the_stores_own_folders_stay(self):
        self.refused("rmdir", "Inbox", "--recursive", "--yes", saying=["'Inbox'", "MAPI_E_NO_ACCESS"])
        self.refused("mv", "Inbox", "Outbox", saying=["'Inbox'", "MAPI_E_NO_ACCESS"])
        self.assertIn("Inbox", self.counts())
        self.refused("rmdir", "/", "--recursive", "--yes", saying="the root folder cannot be deleted")
        self.refused("rmdir", "", "--recursive", "--yes", saying="the top folder cannot be deleted")

    def test_a_folder_is_emptied(self):
        self.load(message("a", folder="Sub"), message("b", folder="Sub/Deep"), {**message("c", folder="Sub"), "associated": True})
        self.assertEqual(self.zeb("empty", "Sub", "--yes").out, "folder 'Sub' is empty: 1 message and 1 folder deleted\n")
        self.assertEqual(len(self.found("Sub", "--associated")), 1)
        self.zeb("empty", "Sub", "--associated", "--yes")
        self.assertEqual(self.found("Sub", "--associated"), [])
        self.assertEqual({path: count for path, count in self.counts().items() if path.startswith("Sub")}, {"Sub": 0})

    def test_folders_move_copy_and_rename(self):
        self.load(message("a", folder="Old"), message("b", folder="Old/Deep"))
        self.assertEqual(self.zeb("mv", "Old", "New").out, "folder 'Old' is now folder 'New'\n")
        self.assertEqual(self.zeb("cp", "New", "Inbox").out, "folder 'New' is now also folder 'Inbox/New'\n")
        self.zeb("mv", "Inbox/New/Deep", "Inbox/Deeper")
        counts = {path: count for path, count in self.counts().items() if count or "New" in path}
        self.assertEqual(counts, {"New": 1, "New/Deep": 1, "Inbox/New": 1, "Inbox/Deeper": 1})
        self.refused("mv", "New", "New/Deep", saying=["'New'", "MAPI_E_FOLDER_CYCLE"])
        self.refused("mv", "New", "Nowhere/Else", saying="'Nowhere'")
        self.refused("mv", "Inbox/New", "/", "--profile", "nobody", saying="'nobody'")

    def test_the_information_message_is_made_once(self):
        self.refused("info", "Inbox", saying=["'Inbox'", "--create"])
        made = json.loads(self.zeb("info", "Inbox", "--create", "--json").out)
        self.assertEqual((made["subject"], made["name"], made["class"]), ("QorInfo", "QorInfo", "IPM.Note.QorInfo"))
        self.assertEqual(json.loads(self.zeb("info", "Inbox", "--create", "--json").out), made)
        self.assertIn("class    IPM.Note.QorInfo", self.zeb("info", "Inbox").out)
        self.assertEqual(self.subjects(), ["QorInfo"])


class FolderDetails(Changes):
    def test_hidden_messages_and_deep_folders_count(self):
        hidden = {**message("hidden", folder="Sub"), "associated": True}
        self.load(hidden, hidden | {"folder": "Sub/One/Two"}, message("shown", folder="Other"), hidden | {"folder": "Other"})
        self.refused("rmdir", "Sub", "--yes", saying="folder 'Sub' contains 1 message and 2 folders; --recursive deletes")
        self.refused("rmdir", "Sub/One/Two", "--yes", saying="contains 1 message and 0 folders")
        self.refused("rmdir", "Other", "--recursive", code=2, saying="delete folder 'Other' with 2 messages and 0 folders permanently")
        self.refused("empty", "Other", code=2, saying="delete 1 message and 0 folders in folder 'Other' permanently")
        self.assertEqual(self.zeb("empty", "Other", "--yes").out, "folder 'Other' is empty: 1 message and 0 folders deleted\n")
        self.assertEqual(self.zeb("empty", "Other", "--associated", "--yes").out,
                         "folder 'Other' is empty: 1 message and 0 folders deleted\n")

    def test_a_failed_path_leaves_no_folders(self):
        number = self.call_number("IMAPIFolder::CreateFolder", "mkdir", "-p", "One/Two")
        self.zeb("rmdir", "One", "--recursive", "--yes")
        self.fail_at(number, "mkdir", "-p", "One/Two", saying=["creating folder 'One/Two'", "MAPI_E_NETWORK_ERROR"])
        self.assertNotIn("One", self.counts())

    def test_a_failed_lookup_is_reported(self):
        number = self.call_number("IMAPIContainer::GetHierarchyTable", "find", "Inbox", which=0)
        self.fail_at(number, "find", "Inbox", saying="MAPI_E_NETWORK_ERROR")

    def test_the_information_message_is_shown(self):
        number = self.call_number("IMAPIContainer::GetContentsTable", "info", "Inbox", which=0, code=1)
        self.fail_at(number, "info", "Inbox", saying="MAPI_E_NETWORK_ERROR")
        made = json.loads(self.zeb("info", "Inbox", "--create", "--json").out)
        self.assertEqual(made["entryId"], self.ids("Inbox")[0])
        self.assertEqual(made["created"], self.shown(made["entryId"])["PR_CREATION_TIME"])
        created = made["created"][:19].replace("T", " ")
        self.assertEqual(self.zeb("info", "Inbox").out,
                         "information message of folder 'Inbox'\n  subject  QorInfo\n  name     QorInfo\n"
                         f"  class    IPM.Note.QorInfo\n  created  {created} +00:00\n  entry    {made['entryId']}\n")


class Messages(Changes):
    def setUp(self):
        super().setUp()
        self.load(message("one"), message("two"), message("three"), message("two", folder="Sub"))

    def test_messages_move_copy_and_go(self):
        self.assertEqual(self.zeb("mv", "Inbox", "one", "Sub").out, "message 'one' of folder 'Inbox' moved to folder 'Sub'\n")
        self.assertEqual(self.zeb("cp", "Inbox", "1", "2", "Sub").out, "2 messages copied to folder 'Sub'\n")
        self.assertEqual(sorted(each["subject"] for each in self.found("Sub")), ["one", "three", "two", "two"])
        self.assertEqual(self.zeb("rm", "Inbox", "2").out, "message 2 ('three') of folder 'Inbox' moved to the deleted items\n")
        self.refused("rm", "Deleted Items", "three", saying=["'three'", "--hard"])
        self.zeb("rm", "Deleted Items", "three", "--hard", "--yes")
        self.assertEqual(self.found("Deleted Items"), [])
        identifiers = self.ids("Sub")
        self.zeb("rm", *identifiers[:2], "--hard", "--yes")
        self.assertEqual(self.ids("Sub"), identifiers[2:])

    def test_ambiguous_or_missing_is_refused(self):
        self.refused("rm", "Inbox", "four", saying=["'four'", "'Inbox'"])
        self.refused("rm", "Inbox", "4", saying=["no message 4", "3 messages"])
        self.refused("rm", "Inbox", "0", saying="no message 0")
        self.refused("rm", "Inbox", "99999999999999999999", saying="no message 99999999999999999999")
        self.refused("rm", "Inbox", code=2, saying="no message is given")
        self.zeb("cp", "Inbox", "2", "Inbox")
        self.refused("mv", "Inbox", "two", "Sub", saying=["2 messages", "'two'", "number"])
        self.refused("mv", "Inbox", "1", "Inbox", saying="already")
        self.refused("mv", "Inbox", "1", "Nowhere", saying="'Nowhere'")

    def test_a_misleading_subject_is_marked(self):
        for subject in ("7", "2026", "5A" * 30, "PR_SUBJECT=x", "subject:y"):
            with self.subTest(subject=subject):
                self.load(message(subject))
                self.assertEqual(self.shown("Inbox", "subject:" + subject)["PR_SUBJECT"], subject)
                self.zeb("set", "Inbox", "subject:" + subject, "PR_COMMENT=found")
                self.zeb("rm", "Inbox", "subject:" + subject, "--hard", "--yes")
        self.refused("show", "Inbox", "2026", saying="write a subject of digits as subject:2026")
        self.refused("show", "Inbox", "subject:8", saying="no message with the subject '8'")

    def test_identifiers_of_nothing_here_are_named(self):
        self.zeb("profile", "create", "other", "--store", self.path("other.zeb"))
        inside, other = self.ids("Inbox")[0], self.ids("Sub")[0]
        self.refused("show", inside, "--profile", "other", saying=["entry identifier", inside[-9:], "MAPI_E_"])
        self.refused("rm", inside, "5A" * 70, "--hard", "--yes", saying=["entry identifier", "MAPI_E_"])
        self.zeb("rm", inside, "--hard", "--yes")
        self.refused("show", inside, saying=["entry identifier", inside[-9:], "MAPI_E_NOT_FOUND"])
        self.refused("set", inside, "PR_SUBJECT=x", saying="MAPI_E_NOT_FOUND")
        self.refused("mv", inside, "Sub", saying="MAPI_E_NOT_FOUND")
        self.refused("show", "5A" * 70, saying=["entry identifier", "MAPI_E_"])
        self.refused("show", other + "0", code=2, saying="digits")
        self.refused("find", other, saying=["entry identifier", "as a folder"])

    def test_identifiers_may_be_of_several_folders(self):
        inside, other = self.ids("Inbox")[0], self.ids("Sub")[0]
        self.assertEqual(self.zeb("cp", inside, other, inside, "Outbox").out, "3 messages copied to folder 'Outbox'\n")
        self.refused("mv", inside, other, "Sub", saying="it already is in folder 'Sub'")
        self.zeb("mv", "Inbox", "three", "Deleted Items")
        deleted = self.ids("Deleted Items")
        self.refused("rm", inside, *deleted, saying="it already is there; --hard")
        self.assertEqual(self.ids("Deleted Items"), deleted)
        self.assertIn(inside, self.ids("Inbox"))
        self.assertEqual(self.zeb("rm", inside, other, "--hard", "--yes").out, "2 messages deleted permanently\n")
        self.assertNotIn(inside, self.ids("Inbox"))
        self.assertNotIn(other, self.ids("Sub"))

    def test_hexadecimal_names_and_foreign_identifiers(self):
        self.load(message("beef", folder="abcd"), message("cafe", folder="abcd"))
        self.assertEqual(self.shown("abcd", "beef")["PR_SUBJECT"], "beef")
        self.refused("show", "Inbox", self.ids("abcd")[0], saying=["names no message of folder 'Inbox'"])
        self.assertEqual(self.shown("abcd", self.ids("abcd")[1])["PR_SUBJECT"], "cafe")
        self.refused("rm", "Inbox", str(2 ** 32 + 1), saying="no message 4294967297")
        self.refused("mv", "/", "Inbox", saying="the root folder cannot be moved")
        self.refused("cp", "", "Inbox", saying="the top folder cannot be copied")
        self.refused("mv", "abcd", "5A" * 30, saying=["entry identifier", "as a folder"])

    def test_what_was_done_is_said(self):
        done = self.zeb("new", "Sub", "PR_SUBJECT=made", "--associated").out
        self.assertEqual(done, f"new message in folder 'Sub'\n  {self.found('Sub', '--associated')[0]['entryId']}\n")
        identifier = self.ids("Inbox")[0]
        shortened = f"the entry identifier {identifier[:36]}...{identifier[-9:]}"
        self.assertEqual(self.zeb("set", identifier, "PR_COMMENT=x").out, f"changed {shortened}\n")
        self.assertEqual(self.zeb("set", "Sub", "two", "PR_COMMENT=x").out, "changed message 'two' of folder 'Sub'\n")
        self.assertEqual(self.zeb("rm", "Inbox", "one", "--hard", "--yes").out,
                         "message 'one' of folder 'Inbox' deleted permanently\n")
        self.assertEqual(self.zeb("rm", "Inbox", "1", "2", "--hard", "--yes").out, "2 messages deleted permanently\n")

    def test_long_subjects_match_by_their_beginning(self):
        self.load(message("s" * 100_000, folder="Long"))
        self.assertEqual(self.zeb("rm", self.ids("Long")[0], "--hard", "--yes").out,
                         f"message '{'s' * 59}\u2026' deleted permanently\n")

    def test_marked_read_or_unread_not_both(self):
        for flags, unread in ((["--read"], []), (["--unread"], ["two"]), (["--read", "PR_COMMENT=x"], [])):
            self.zeb("set", "Sub", "two", *flags)
            self.assertEqual([each["subject"] for each in self.found("Sub", "--unread")], unread)
        self.zeb("set", "Sub", "two", "--read", "--unread", code=2)

    def test_messages_are_made_and_changed(self):
        self.zeb("new", "Sub", "PR_SUBJECT=Hello=you", "PR_IMPORTANCE=2", "PR_START_DATE=2026-01-02", "0x68001003=[1,-2]",
                 "PR_SENDER_SEARCH_KEY=00fF", "{00062008-0000-0000-C000-000000000046}:PT_BOOLEAN:id:0x8503=true")
        shown = self.shown("Sub", "Hello=you")
        self.assertEqual([shown[name] for name in ("PR_SUBJECT", "PR_IMPORTANCE", "PR_START_DATE", "0x68001003")],
                         ["Hello=you", 2, "2026-01-02T00:00:00Z", [1, -2]])
        self.assertEqual(shown["PR_SENDER_SEARCH_KEY"], "00FF")
        self.assertIs(shown["{00062008-0000-0000-C000-000000000046}:PT_BOOLEAN:id:0x8503"], True)
        self.zeb("set", "Sub", "2", "PR_SUBJECT=Goodbye", "--delete", "PR_IMPORTANCE", "--delete", "PR_START_DATE", "--unread")
        shown = self.shown("Sub", "2")
        self.assertEqual((shown["PR_SUBJECT"], shown["PR_NORMALIZED_SUBJECT"], shown["0x68001003"]),
                         ("Goodbye", "Goodbye", [1, -2]))
        self.assertFalse({"PR_IMPORTANCE", "PR_START_DATE"} & set(shown))
        self.assertTrue(self.found("Sub", "--unread"))
        self.zeb("set", "Sub", "PR_COMMENT=about", "PR_CONTAINER_CLASS=IPF.Note")
        self.assertEqual(self.shown("Sub")["PR_COMMENT"], "about")

    def test_a_refused_change_changes_nothing(self):
        self.zeb("set", "Sub", "PR_COMMENT=before")
        folder, mail = self.shown("Sub"), self.shown("Inbox", "1")
        self.refused("set", "Sub", "PR_COMMENT=after", "PR_CONTAINER_CLASS=IPF.Note", "PR_CONTENT_COUNT=7",
                     saying=["'Sub'", "PR_CONTENT_COUNT", "MAPI_E_COMPUTED"])
        self.refused("set", "Inbox", "1", "PR_COMMENT=after", "PR_ENTRYID=00", saying=["'one'", "PR_ENTRYID"])
        self.refused("new", "Inbox", "PR_SUBJECT=half", "PR_ENTRYID=00", saying=["'Inbox'", "PR_ENTRYID"])
        self.assertEqual(self.shown("Sub"), folder)
        self.assertEqual(self.shown("Inbox", "1"), mail)
        self.assertNotIn("half", self.subjects())

    def test_bad_properties_and_values_are_named(self):
        self.refused("set", "Inbox", "1", "colour=red", code=2, saying='"colour"')
        self.refused("set", "Inbox", "1", "PR_IMPORTANCE=high", code=2, saying=["PR_IMPORTANCE", "integer", "high"])
        self.refused("set", "Inbox", "1", "PR_START_DATE=soon", code=2, saying=["PR_START_DATE", "soon"])
        self.refused("set", "Inbox", "1", "PR_SENDER_SEARCH_KEY=abc", code=2, saying=["PR_SENDER_SEARCH_KEY", "abc"])
        self.refused("set", "Inbox", "1", "0x68001003=1", code=2, saying="array")
        self.refused("set", "Inbox", "1", "--delete", "colour", code=2, saying='"colour"')
        self.refused("set", "Inbox", "1", code=2, saying="nothing to change")
        self.refused("set", "Inbox", "1", "2", "PR_SUBJECT=x", code=2, saying="'2' is not NAME=VALUE")
        self.refused("new", "Inbox", "subject", code=2, saying='"subject"')
        self.refused("set", "Inbox", "--read", saying="apply only to messages")
