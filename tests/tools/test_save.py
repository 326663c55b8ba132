"""zeb save: what it writes is what zeb load reads, without loss."""
import json
import os

import world
from world import World, message

SET = "{00020329-0000-0000-C000-000000000046}"
OTHER = "{00062008-0000-0000-C000-000000000046}"

# Bytes that are no text in UTF-8; Windows' code pages know every byte.
NO_TEXT = {} if world.WINDOWS else {
    "0x681C001E": {"hex": "41FF42"}, "0x681D101E": ["a", {"hex": "FF"}], f"{OTHER}:PT_STRING8:id:0x8504": {"hex": "80FF"}}
NO_TEXT_OF_RECIPIENT = {} if world.WINDOWS else {"PR_COMMENT_A": {"hex": "FF"}}

EVERYTHING = {
    **NO_TEXT,
    "PR_SUBJECT": "all \u00e4\u4f60\U0001F600 \"\\\u0001", "PR_COMMENT_W": "wide", "0x68000002": -3, "0x68010003": -2147483648,
    "0x68020004": -0.0625, "0x68160004": "0x7FC00001", "0x68030005": "0x7FF8000000000001", "0x68170005": 5e-324,
    "0x68180005": 1.7976931348623157e308, "0x68190005": -0.0, "0x681A0005": 0.1, "0x68040006": 9223372036854775807,
    "0x68050007": 40000.25, "0x6807000B": True, "0x681B000B": "0x0002", "0x68080014": -9223372036854775808,
    "0x6809001F": "", "0x680A001F": {"hex": "00D84100"},
    "0x680B0040": "1601-01-01T00:00:00Z", "0x681E0040": "0x7FFFFFFFFFFFFFFF", "0x681F0040": "9999-12-31T23:59:59.9999999Z",
    "0x680C0048": "{00062008-0000-0000-C000-000000000046}", "0x680D0102": "", "0x680E1002": [1, -1], "0x680F1003": [],
    "0x68201004": [0.5, "0xFF800000"], "0x68211005": [0.1], "0x6811101F": ["\u00e4", ""], "0x68121102": ["", "00"],
    "0x68131040": ["2026-01-01T00:00:00.5Z"], "0x68141014": [1], "0x68151048": ["{00062008-0000-0000-C000-000000000046}"],
    "0x68221006": [1, -1], "0x68231007": [1.5], "PR_BODY": "\u00e4\r\n" * 100_000, "PR_RTF_COMPRESSED": "AB" * 400_000,
    "PR_MESSAGE_FLAGS": 16, f"{SET}:PT_MV_UNICODE:name:Key:words \u00e4": ["x"], f"{OTHER}:PT_BOOLEAN:id:0x8503": False,
    f"{SET}:PT_DOUBLE:id:0xFFFFFFFF": 1.25,
    f"{OTHER}:PT_BINARY:name:large": "00" * 300_000}

LINES = [
    {"folder": "/Beside", "folderProperties": {"PR_COMMENT": "a folder of the root"}},
    {"folder": "Projects/One\\/Two\\\\Three", "folderProperties": {
        "PR_CONTAINER_CLASS": "IPF.Task", f"{SET}:PT_LONG:id:0x9000": 5, "0x68000102": "00" * 40_000}},
    {"folder": "Projects", "associated": True, "properties": {"PR_SUBJECT": "hidden", "PR_MESSAGE_CLASS": "IPM.Hidden"}},
    {"folder": "Projects", "properties": EVERYTHING,
     "recipients": [
         {"properties": {"PR_DISPLAY_NAME": "Ada", "PR_RECIPIENT_TYPE": 1, "PR_ENTRYID": "00112233", "PR_OBJECT_TYPE": 6,
                         "PR_SEARCH_KEY": "00" * 1000, **NO_TEXT_OF_RECIPIENT, f"{OTHER}:PT_LONG:id:0x8505": 7}},
         {"properties": {"PR_DISPLAY_NAME": "Grace", "PR_RECIPIENT_TYPE": 3}}],
     "attachments": [
         {"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_LONG_FILENAME": "a.bin", "PR_ATTACH_DATA_BIN": "0123" * 500_000}},
         {"properties": {"PR_ATTACH_METHOD": 6, "PR_ATTACH_DATA_OBJ": "D0CF11E0"}},
         {"properties": {"PR_ATTACH_METHOD": 5, "PR_RENDERING_POSITION": -1},
          "message": {"properties": {"PR_SUBJECT": "inside", "PR_BODY": "y" * 50_000},
                      "recipients": [{"properties": {"PR_DISPLAY_NAME": "Edsger"}}],
                      "attachments": [{"properties": {"PR_ATTACH_METHOD": 5},
                                       "message": {"properties": {"PR_SUBJECT": "inmost", "PR_MESSAGE_FLAGS": 8}}}]}}]},
    {"folder": "Projects", "properties": {
        "PR_SUBJECT": "Re: bare", "PR_MESSAGE_CLASS": None, "PR_NORMALIZED_SUBJECT": None, "0x003D001F": None,
        "PR_DISPLAY_TO": None, "PR_DISPLAY_CC": None, "PR_DISPLAY_BCC": None},
     "recipients": [{"properties": {"PR_DISPLAY_NAME": "Ada"}}]}]


class Save(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def saved(self, name, *arguments, code=0):
        self.zeb("save", *arguments, "-o", self.path(name), code=code)
        return (self.folder / name).read_bytes()

    def again(self, first):
        """Loads a saved file into an empty store and saves that."""
        self.create_profile("second", "second.zeb")
        self.zeb("load", self.path(first))
        return self.saved("again.jsonl", "/")

    def assert_same(self, first, second):
        """Equal bytes; else the first line and key that differ."""
        if first == second:
            return
        pairs = list(zip(first.splitlines(), second.splitlines()))
        for one, other in pairs:
            if one != other:
                one, other = json.loads(one), json.loads(other)
                self.assertEqual(one, other)
        self.fail(f"{len(first.splitlines())} and {len(second.splitlines())} lines, equal as far as both go")


class Contents(Save):
    def test_saving_and_loading_keeps_every_byte(self):
        self.load(*LINES)
        first = self.saved("first.jsonl", "/")
        self.assert_same(first, self.again("first.jsonl"))
        lines = [json.loads(line) for line in first.splitlines()]
        messages = [line for line in lines if "properties" in line]
        self.assertEqual([line["properties"]["PR_SUBJECT"] for line in messages],
                         ["hidden", EVERYTHING["PR_SUBJECT"], "Re: bare"])
        self.assertEqual([line.get("associated") for line in messages], [True, None, None])
        full, bare = messages[1], messages[2]
        self.maxDiff = 3000
        missing = {name: value for name, value in EVERYTHING.items()
                   if repr(full["properties"].get(name.removesuffix("_W"))) != repr(value)}
        self.assertEqual(missing, {})
        self.assertEqual([bare["properties"][name] for name in ("PR_MESSAGE_CLASS", "PR_NORMALIZED_SUBJECT", "PR_DISPLAY_TO")],
                         [None, None, None])
        recipient = LINES[3]["recipients"][0]["properties"]
        self.assertEqual({name: full["recipients"][0]["properties"].get(name) for name in recipient}, recipient)
        data = [each["properties"].get("PR_ATTACH_DATA_BIN") for each in full["attachments"]]
        self.assertEqual(data, ["0123" * 500_000, "D0CF11E0", None])
        inmost = full["attachments"][2]["message"]["attachments"][0]["message"]["properties"]
        self.assertEqual((inmost["PR_SUBJECT"], inmost["PR_MESSAGE_FLAGS"] & 8), ("inmost", 8))
        folders = {line["folder"]: line["folderProperties"] for line in lines if "folderProperties" in line}
        self.assertEqual(folders["/Beside"], {"PR_COMMENT": "a folder of the root"})
        self.assertEqual(folders["Projects/One\\/Two\\\\Three"], LINES[1]["folderProperties"])
        self.assertIn("Inbox", folders)

    def test_part_of_the_store_to_output(self):
        self.load(message("a", folder="Sub"), message("b", folder="Sub/Deep"), message("c"))
        lines = [json.loads(line) for line in self.zeb("save", "Sub").out.splitlines()]
        self.assertEqual([(line["folder"], line.get("properties", {}).get("PR_SUBJECT")) for line in lines],
                         [("Sub", None), ("Sub", "a"), ("Sub/Deep", None), ("Sub/Deep", "b")])
        self.assertEqual(len(self.zeb("save", "Sub", "--this-only").out.splitlines()), 2)
        folder = self.shown("Sub/Deep")["PR_ENTRYID"]
        self.assertEqual(json.loads(self.zeb("save", folder).out.splitlines()[0])["folder"], "Sub/Deep")

    def test_a_file_is_whole_or_absent(self):
        self.load(message("a"))
        (self.folder / "kept.jsonl").write_text("kept")
        files = lambda: sorted(name for name in os.listdir(self.folder) if "jsonl" in name)
        before = files()
        self.refused("save", "Nowhere", "-o", self.path("new.jsonl"), saying="'Nowhere'")
        self.refused("save", "Inbox", "-o", self.path("absent/new.jsonl"), saying=["new.jsonl", "cannot be written"])
        (self.folder / "directory").mkdir()
        self.refused("save", "Inbox", "-o", self.path("directory"), saying="directory' is a directory")
        self.environment["ZEBSTORE_FAULT"] = "call:40:0x80004005"
        self.zeb("save", "/", "-o", self.path("kept.jsonl"), code=1)
        del self.environment["ZEBSTORE_FAULT"]
        self.assertEqual((self.folder / "kept.jsonl").read_text(), "kept")
        self.assertEqual(files(), before)
        self.assertEqual(self.zeb("save", "Inbox", "-o", self.path("kept.jsonl")).out, "1 message in 1 folder saved\n")
        self.assertEqual(files(), before)

    def test_a_vanishing_message_is_omitted(self):
        self.load(message("a"), message("b"), message("c"))
        number = self.call_number("IMAPIContainer::OpenEntry", "save", "Inbox", which=-2)
        self.fail_at(number, "save", "Inbox", "-o", self.path("x.jsonl"), saying="MAPI_E_NETWORK_ERROR")
        self.environment["ZEBSTORE_FAULT"] = f"call:{number}:0x8004010F"
        done = self.zeb("save", "Inbox")
        self.assertEqual(done.err, "")
        self.assertEqual([json.loads(line)["properties"]["PR_SUBJECT"] for line in done.out.splitlines()[1:]], ["a", "c"])

    def test_unreadable_values_end_with_3(self):
        self.load(message("a", PR_BODY="x" * 600_000, PR_RTF_COMPRESSED="ab" * 300_000))
        number = self.call_number("IMAPIProp::OpenProperty", "save", "Inbox", which=0)
        self.environment["ZEBSTORE_FAULT"] = f"call:{number}:0x80040115"
        done = self.zeb("save", "Inbox", "-o", self.path("out.jsonl"), code=3)
        self.one_sentence(done, ["a message of folder 'Inbox': property 0x", " is omitted: ", "MAPI_E_NETWORK_ERROR"])
        self.assertEqual(done.out, "1 message in 1 folder saved\n")
        self.assertEqual(json.loads((self.folder / "out.jsonl").read_text().splitlines()[1])["properties"]["PR_SUBJECT"], "a")

    def test_many_messages_and_folder_counts(self):
        self.assertEqual(self.load({"folder": "Sub", "folderProperties": {}}).out, "1 folder loaded\n")
        self.load(*[message(f"{i:04}", folder="Sub") for i in range(1101)], message("below", folder="Sub/Deep"))
        self.assertEqual(self.zeb("save", "Sub", "-o", self.path("out.jsonl")).out, "1,102 messages in 2 folders saved\n")
        lines = [json.loads(line) for line in (self.folder / "out.jsonl").read_text().splitlines()]
        self.assertEqual([line["properties"]["PR_SUBJECT"] for line in lines if "properties" in line],
                         [f"{i:04}" for i in range(1101)] + ["below"])

    def test_a_folder_line_is_never_partial(self):
        self.load({"folder": "Sub", "folderProperties": {"PR_COMMENT": "before"}})
        done = self.load({"folder": "Sub", "folderProperties": {"PR_COMMENT": "after", "PR_CONTENT_COUNT": 7}}, code=1)
        self.one_sentence(done, ["mail.jsonl:1: ", "PR_CONTENT_COUNT"])
        done = self.load({"folder": "New", "folderProperties": {"PR_COMMENT": "x", "PR_ENTRYID": "00"}}, code=1)
        self.one_sentence(done, ["mail.jsonl:1: ", "PR_ENTRYID"])
        done = self.load({"folder": "New", "folderProperties": {}, "properties": {}}, code=1)
        self.one_sentence(done, ["mail.jsonl:1: ", '"properties"', "folder"])
        self.assertEqual(self.shown("Sub")["PR_COMMENT"], "before")
        self.assertNotIn("New", [folder["name"] for folder in self.folders()])
        self.load({"folder": "Sub", "folderProperties": {"PR_COMMENT": None}})
        self.assertNotIn("PR_COMMENT", self.shown("Sub"))

    def test_recipients_have_no_empty_property(self):
        line = message("a") | {"recipients": [{"properties": {"PR_DISPLAY_NAME": None}}]}
        self.one_sentence(self.load(line, code=1), ["mail.jsonl:1: ", "PR_DISPLAY_NAME"])
