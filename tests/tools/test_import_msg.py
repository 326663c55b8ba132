"""zeb-import on .msg files, whole and damaged."""
import json
import struct

from test_import_mail import Mail
from test_save import LINES
from world import message

SECTOR = 512


def nested(depth):
    line = {"properties": {"PR_SUBJECT": "0"}}
    for level in range(1, depth + 1):
        line = {"properties": {"PR_SUBJECT": str(level)}, "attachments": [{"properties": {"PR_ATTACH_METHOD": 5}, "message": line}]}
    return {"folder": "Inbox", **line}


class Msg(Mail):
    def exported(self, *lines, folder="Inbox", name="msg"):
        self.load(*lines)
        self.zeb("export", "msg", folder, "-o", self.path(name))
        return sorted((self.folder / name).iterdir())

    def fresh(self, name="second"):
        self.create_profile(name, name + ".zeb")

    def of_folder(self, folder):
        return [{key: value for key, value in line.items() if key != "folder"} for line in self.saved(folder)]


class RoundTrip(Msg):
    def test_every_property_comes_back(self):
        self.exported(LINES[3], folder="Projects")
        before = self.of_folder("Projects")
        self.fresh()
        self.importer(str(self.folder / "msg"))
        self.maxDiff = 3000
        self.assertEqual(self.of_folder("msg"), before)
        self.assertEqual(len(before), 1)

    def test_messages_nest_at_most_32_deep(self):
        file, = self.exported(nested(32))
        self.fresh()
        self.importer(str(file))
        before, = self.saved("msg")
        for _ in range(32):
            before = before["attachments"][0]["message"]
        self.assertEqual(before["properties"]["PR_SUBJECT"], "0")

    def test_a_folder_has_both_kinds(self):
        file, = self.exported(message("in msg"))
        top = self.write("a.eml", b"Subject: in eml\n\nx\n", "sub/b.MSG", file.read_bytes(), "c.eml", file.read_bytes(), "d.msg", b"Subject: in d\n\nx\n")
        self.assertEqual(self.importer(str(top)).out, "4 messages in 2 folders\n")
        self.assertEqual([(each["folder"], each["properties"]["PR_SUBJECT"]) for each in self.saved(top.name)],
                         [(top.name, "in eml"), (top.name, "in msg"), (top.name, "in d"), (f"{top.name}/sub", "in msg")])

    def test_large_values_are_read_in_pieces(self):
        big = "5A" * 3_000_000
        file, = self.exported({**message("x"), "attachments": [{"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": big}} for _ in range(4)]})
        self.fresh()
        self.importer(str(file))
        found, = self.saved("msg")
        self.assertEqual([each["properties"]["PR_ATTACH_DATA_BIN"] == big for each in found["attachments"]], [True] * 4)


class Damaged(Msg):
    def small(self):
        line = {**message("small", PR_BODY="some text", **{"{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503": 1}),
                "recipients": [{"properties": {"PR_DISPLAY_NAME": "Ada", "PR_RECIPIENT_TYPE": 1}}],
                "attachments": [{"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": "AB" * 5000}},
                                {"properties": {"PR_ATTACH_METHOD": 5}, "message": {"properties": {"PR_SUBJECT": "in"}}}]}
        return self.exported(line)[0].read_bytes()

    def check_damaged(self, files):
        """Each file becomes a message, or is reported in one sentence with its name. Returns the reasons by name."""
        top = self.write(*[part for name, data in files.items() for part in (name + ".msg", data)])
        done = self.importer(str(top), "--json", code=3)
        found = json.loads(done.out)
        self.assertEqual(found["read"], len(files))
        self.assertEqual(found["imported"] + found["damaged"], len(files))
        lines = [line for line in done.err.splitlines() if ": skipped: " in line]
        self.assertEqual(len(lines), found["damaged"], done.err)
        self.assertEqual(len(done.err.splitlines()), found["damaged"] + found["repaired"], done.err)
        self.assertIn("is intact", self.zeb("store", "check").out)
        return {line.split(": ")[1].split("/")[-1].removesuffix(".msg"): line.split(": skipped: ")[1] for line in lines}

    def test_sectors_that_are_zero_or_cut(self):
        whole = self.small()
        count = len(whole) // SECTOR
        self.assertGreater(count, 20)
        files = {}
        for i in range(count):
            files[f"zero{i:03}"] = whole[:i * SECTOR] + bytes(SECTOR) + whole[(i + 1) * SECTOR:]
            files[f"cut{i:03}"] = whole[:i * SECTOR]
            files[f"ones{i:03}"] = whole[:i * SECTOR] + b"\xff" * SECTOR + whole[(i + 1) * SECTOR:]
        told = self.check_damaged(files)
        print(f"{len(files)} damaged files, {len(told)} reported")
        self.assertGreater(len(told), count)
        for i in range(1, count):
            file = self.put(f"cut{i}", whole[:i * SECTOR])
            if i % 10 == 1:
                self.one_sentence(self.importer(file, code=3), f"cut{i}: skipped: ")

    def put(self, name, data):
        file = self.folder / name
        file.write_bytes(data)
        return str(file)

    def test_chains_that_are_circles(self):
        whole = bytearray(self.small())
        table = struct.unpack_from("<I", whole, 0x4C)[0]
        start = (table + 1) * SECTOR
        links = list(struct.unpack_from("<128I", whole, start))
        files = {}
        for i, link in enumerate(links):
            if link >= 0xFFFFFFF0 and link != 0xFFFFFFFE:
                continue
            for target in (i, 0):
                changed = bytearray(whole)
                struct.pack_into("<I", changed, start + 4 * i, target)
                files[f"link{i:03}to{target}"] = bytes(changed)
        directory = (struct.unpack_from("<I", whole, 0x30)[0] + 1) * SECTOR
        for field, name in ((0x44, "left"), (0x48, "right"), (0x4C, "child")):
            for entry in range(4):
                for target in range(4):
                    changed = bytearray(whole)
                    struct.pack_into("<I", changed, directory + 128 * entry + field, target)
                    files[f"{name}{entry}to{target}"] = bytes(changed)
        for size in (0xFFFFFFFF, 0x7FFFFFFF, 0x10000000):
            for entry in range(12):
                changed = bytearray(whole)
                struct.pack_into("<I", changed, directory + 128 * entry + 0x78, size)
                files[f"size{entry}x{size:X}"] = bytes(changed)
        told = self.check_damaged(files)
        print(f"{len(files)} files with circles or sizes that are wrong, {len(told)} reported")
        self.assertGreater(len(told), 20)

    def test_a_compound_file_without_a_message(self):
        whole = self.small().replace("__properties_version1.0".encode("utf-16-le"), "__properties_version9.9".encode("utf-16-le"))
        self.one_sentence(self.importer(self.put("x.msg", whole), code=3), "x.msg: skipped: it is a compound file without a message")

    def test_properties_without_a_name_are_left_out(self):
        whole = self.small().replace("__nameid_version1.0".encode("utf-16-le"), "__nameid_version9.9".encode("utf-16-le"))
        done = self.importer(self.put("x.msg", whole), code=3)
        self.one_sentence(done, "x.msg: repaired: the property 0x80000003 is left out: it has no name")
