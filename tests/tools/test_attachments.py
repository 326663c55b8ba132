"""zeb attachments: a list, and files that never replace others."""
import json
import os

from world import World, message


def attachment(name=None, content=b"", **properties):
    values = {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": content.hex()}
    if name is not None:
        values["PR_ATTACH_LONG_FILENAME"] = name
    return {"properties": {**values, **properties}}


class Attachments(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def with_attachments(self, *attachments):
        self.load({**message("Files"), "attachments": list(attachments)})

    def saved(self, code=0):
        """The content of each file of the directory after saving there."""
        self.zeb("attachments", "Inbox", "Files", "--save", self.path("out"), code=code)
        return {each.name: each.read_bytes() for each in (self.folder / "out").iterdir()}

    def test_a_list_of_names_and_sizes(self):
        self.with_attachments(attachment("Menü.txt", b"soup"), attachment(None, b"x"),
                              {"properties": {"PR_ATTACH_METHOD": 5, "PR_DISPLAY_NAME": "inside"},
                               "message": {"properties": {"PR_SUBJECT": "inside"}}})
        lines = self.zeb("attachments", "Inbox", "Files").out.splitlines()
        self.assertEqual(lines[0], "message 'Files' of folder 'Inbox'")
        self.assertRegex(lines[1], r"^  1  Menü\.txt  \d+ bytes$")
        self.assertRegex(lines[2], r"^  2  \(no name\)  \d+ bytes$")
        self.assertRegex(lines[3], r"^  3  inside  message  \d+ bytes$")
        self.assertEqual(lines[4:], ["3 attachments"])
        listed = json.loads(self.zeb("attachments", "Inbox", "1", "--json").out)["attachments"]
        self.assertEqual([(each["number"], each["name"], each["message"], each["file"]) for each in listed],
                         [(0, "Menü.txt", False, None), (1, None, False, None), (2, "inside", True, None)])

    def test_a_message_without_any(self):
        self.load(message("Plain"))
        self.assertEqual(self.zeb("attachments", "Inbox", "Plain", "--save", self.path("out")).out.splitlines()[1:],
                         ["0 attachments"])
        self.assertEqual(json.loads(self.zeb("attachments", "Inbox", "Plain", "--json").out), {"version": 1, "attachments": []})

    def test_files_hold_every_byte(self):
        large = bytes(range(256)) * 1200
        self.with_attachments(attachment("日本語 😀.bin", large), attachment("empty", b""), attachment(None, b"\r\n"))
        self.assertEqual(self.saved(), {"日本語 😀.bin": large, "empty": b"", "attachment": b"\r\n"})

    def test_no_file_is_overwritten(self):
        (self.folder / "out").mkdir()
        (self.folder / "out" / "a.tar.gz").write_bytes(b"mine")
        self.with_attachments(attachment("a.tar.gz", b"1"), attachment("a.tar.gz", b"2"))
        out = self.zeb("attachments", "Inbox", "Files", "--save", self.path("out")).out
        self.assertRegex(out, r"  1  a\.tar\.gz  \d+ bytes  saved as a\.tar \(2\)\.gz\n")
        listed = json.loads(self.zeb("attachments", "Inbox", "Files", "--save", self.path("more"), "--json").out)["attachments"]
        self.assertEqual([each["file"] for each in listed],
                         [self.path("more/a.tar.gz"), self.path("more/a.tar (2).gz")])
        self.assertEqual({each.name: each.read_bytes() for each in (self.folder / "out").iterdir()},
                         {"a.tar.gz": b"mine", "a.tar (2).gz": b"1", "a.tar (3).gz": b"2"})

    def test_names_stay_in_the_directory(self):
        wanted = {"../../evil.sh": "_.._evil.sh", "/etc/passwd": "_etc_passwd", "C:\\temp\\x.txt": "C__temp_x.txt",
                  "..": "attachment", "...hidden": "hidden", "nul.txt": "_nul.txt", "Com1": "_Com1", "COMET": "COMET",
                  "a\u0007b\nc?.txt": "a b c_.txt", "dots. . ": "dots", "x" * 300 + ".pdf": "x" * 196 + ".pdf", "y" * 199 + " z": "y" * 199,
                  "ü" * 150 + ".txt": "ü" * 98 + ".txt"}
        self.with_attachments(*(attachment(name, name.encode()) for name in wanted))
        self.assertEqual(self.saved(), {safe: name.encode() for name, safe in wanted.items()})

    def test_messages_are_not_files(self):
        self.with_attachments({"properties": {"PR_ATTACH_METHOD": 5, "PR_DISPLAY_NAME": "inside"},
                               "message": {"properties": {"PR_SUBJECT": "inside"}}}, attachment("a.txt", b"a"),
                              {"properties": {"PR_ATTACH_METHOD": 4, "PR_ATTACH_LONG_FILENAME": "far.txt"}})
        done = self.zeb("attachments", "Inbox", "Files", "--save", self.path("out"), code=3)
        self.assertEqual(done.err.splitlines(), [
            "zeb: attachment 1 ('inside') is a message, which 'zeb save' writes with the message around it",
            "zeb: attachment 3 ('far.txt') is not stored as a file"])
        self.assertEqual(os.listdir(self.folder / "out"), ["a.txt"])

    def test_a_directory_that_cannot_be(self):
        self.with_attachments(attachment("a.txt", b"a"))
        (self.folder / "file").write_text("x")
        self.refused("attachments", "Inbox", "Files", "--save", self.path("file"), saying="cannot be created")
        self.refused("attachments", "Inbox", "Nothing", saying="'Nothing'")
        self.refused("attachments", "Inbox", saying="MESSAGE", code=2)
