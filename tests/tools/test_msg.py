"""zeb export msg: every property, in the published form, as another reader finds it."""
import datetime
import re
import struct

from msg_file import MsgFile
from test_save import EVERYTHING, LINES
from world import World, message

TYPES = {"PT_MV_UNICODE": 0x101F, "PT_BOOLEAN": 0x0B, "PT_DOUBLE": 5, "PT_BINARY": 0x102, "PT_STRING8": 0x1E, "PT_LONG": 3}
NUMBERS = {0x02: "<h", 0x03: "<i", 0x04: "<f", 0x05: "<d", 0x06: "<q", 0x07: "<d", 0x0B: "<h", 0x14: "<q"}


def ticks(text):
    """Units of 100 ns since 1601."""
    day, _, fraction = text.rstrip("Z").partition(".")
    since = datetime.datetime.fromisoformat(day) - datetime.datetime(1601, 1, 1)
    return (since.days * 86400 + since.seconds) * 10_000_000 + int(fraction.ljust(7, "0"))


def encoded(kind, value):
    """A value of a .jsonl file as its bytes in a .msg file."""
    if kind & 0x1000:
        return [encoded(kind & ~0x1000, each) for each in value]
    if isinstance(value, dict):
        return bytes.fromhex(value["hex"])
    if kind in (0x40, *NUMBERS) and isinstance(value, str) and value.startswith("0x"):
        return int(value, 16).to_bytes(8 if kind in (5, 6, 7, 0x14, 0x40) else 2 if kind == 0x0B else 4, "little")
    if kind in NUMBERS:
        return struct.pack(NUMBERS[kind], value)
    if kind == 0x40:
        return struct.pack("<q", ticks(value))
    if kind == 0x48:
        first, second, third, fourth, fifth = value.strip("{}").split("-")
        return struct.pack("<IHH", *(int(each, 16) for each in (first, second, third))) + bytes.fromhex(fourth + fifth)
    if kind == 0x1F:
        return value.encode("utf-16-le", "surrogatepass")
    return value.encode() if kind == 0x1E else bytes.fromhex(value)


def expected(properties):
    """The named properties and those with a numeric tag: key of MsgFile to bytes."""
    found = {}
    for name, value in properties.items():
        if re.fullmatch(r"0x[0-9A-F]{8}", name):
            found[int(name, 16)] = encoded(int(name, 16) & 0xFFFF, value)
        elif name.startswith("{"):
            set_, kind, form, named = name.split(":", 3)
            number = struct.unpack("<I", struct.pack("<I", int(named, 0)))[0] if form == "id" else named
            found[encoded(0x48, set_).hex(), number, TYPES[kind]] = encoded(TYPES[kind], value)
    return found


class Msg(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def export(self, *arguments, code=0):
        return self.zeb("export", "msg", *arguments, "-o", self.path("out"), code=code)

    def files(self):
        return sorted((self.folder / "out").iterdir())

    def one(self, line):
        self.load(line)
        self.export(line["folder"])
        file, = self.files()
        return MsgFile(file)


class Contents(Msg):
    def test_every_type_and_size(self):
        found = self.one(LINES[3])
        wanted = expected(EVERYTHING)
        self.assertGreater(len(wanted), 35)
        self.assertEqual({key: found.properties.get(key) for key in wanted}, wanted)
        self.assertEqual(found.properties[0x0037001F].decode("utf-16-le"), EVERYTHING["PR_SUBJECT"])
        self.assertEqual(found.properties[0x1000001F].decode("utf-16-le"), EVERYTHING["PR_BODY"])
        self.assertEqual(found.properties[0x10090102], bytes.fromhex(EVERYTHING["PR_RTF_COMPRESSED"]))
        self.assertEqual(found.properties[0x340D0003], struct.pack("<I", 0x40000), "texts are in 16 bits")
        ada, grace = found.recipients
        self.assertEqual([ada[0x3001001F].decode("utf-16-le"), grace[0x3001001F].decode("utf-16-le")], ["Ada", "Grace"])
        self.assertEqual([ada[0x0C150003], grace[0x0C150003], ada[0x30000003], grace[0x30000003]],
                         [struct.pack("<I", each) for each in (1, 3, 0, 1)])
        wanted = expected(LINES[3]["recipients"][0]["properties"])
        self.assertEqual({key: ada.get(key) for key in wanted}, wanted)

    def test_attachments_and_messages_inside(self):
        found = self.one(LINES[3])
        data, thing, inside = found.attachments
        self.assertEqual(data[0][0x37010102], bytes.fromhex("0123" * 500_000))
        self.assertEqual([each[0][0x0E210003] for each in found.attachments], [struct.pack("<I", i) for i in range(3)])
        self.assertEqual(thing[0][0x37010102], bytes.fromhex("D0CF11E0"))
        properties, recipients, attachments = inside[1]
        self.assertEqual((properties[0x0037001F].decode("utf-16-le"), len(properties[0x1000001F])), ("inside", 100_000))
        self.assertEqual(recipients[0][0x3001001F].decode("utf-16-le"), "Edsger")
        self.assertEqual(attachments[0][1][0][0x0037001F].decode("utf-16-le"), "inmost")

    def test_names_are_shared_and_hashed(self):
        names = {f"{{00062008-0000-0000-C000-0000000000{set_:02X}}}:PT_LONG:id:0x{number:04X}": number for set_ in range(3) for number in
                 range(0x8500, 0x8540)}
        text = {f"{{00020386-0000-0000-C000-000000000046}}:PT_LONG:name:x-header {i}": i for i in range(40)}
        mapi = {"{00020328-0000-0000-C000-000000000046}:PT_LONG:id:0x8001": 1, "{00020329-0000-0000-C000-000000000046}:PT_LONG:name:Keywords": 2}
        inside = {"properties": {"PR_ATTACH_METHOD": 5}, "message": {"properties": {"PR_SUBJECT": "in", **mapi}}}
        found = self.one({**message("x", **names, **text, **mapi), "attachments": [inside]})
        wanted = expected({**names, **text, **mapi})
        self.assertEqual(len(wanted), 3 * 64 + 42)
        self.assertEqual({key: found.properties.get(key) for key in wanted}, wanted)
        self.assertEqual(len(found.names), len(wanted), "an embedded message uses the same names")
        self.assertEqual({key: found.attachments[0][1][0].get(key) for key in expected(mapi)}, expected(mapi))

    def test_many_attachments(self):
        count = 300
        found = self.one({**message("x"), "attachments": [{"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": f"{i:04X}" * (i % 5000)}}
                                                           for i in range(count)]})
        self.assertEqual([each[0].get(0x37010102) for each in found.attachments], [bytes.fromhex(f"{i:04X}" * (i % 5000)) for i in range(count)])


class Files(Msg):
    def test_one_file_or_a_folder_of_them(self):
        self.load(*[message(subject, date=f"2026-01-{day + 1:02}T00:00:00Z") for day, subject in enumerate(["a/b", "", "c"])])
        self.assertEqual(self.export("Inbox").out, "3 messages exported\n")
        self.assertEqual([file.name for file in self.files()], ["1 a_b.msg", "2 .msg", "3 c.msg"])
        self.assertEqual([MsgFile(file).properties[0x0037001F].decode("utf-16-le") for file in self.files()], ["a/b", "", "c"])
        self.export("Inbox", "c")
        self.assertEqual(self.files()[1].name, "1 c.msg")
        for _ in range(2):
            self.assertEqual(self.zeb("export", "msg", "Inbox", "3", "-o", self.path("one.msg")).out, "1 message exported\n")
        self.assertEqual(MsgFile(self.folder / "one.msg").properties[0x0037001F].decode("utf-16-le"), "c")
        self.zeb("export", "msg", "Inbox", "1-2", "-o", self.path("two.msg"))
        self.assertEqual(len(list((self.folder / "two.msg").iterdir())), 2)

    def test_it_goes_to_files_alone(self):
        self.load(message("a"))
        self.refused("export", "msg", "Inbox", saying="1 message as files: give --output DIR", code=2)
        self.refused("export", "msg", "Inbox", "-o", self.path("absent/x.msg"), saying="x.msg' cannot be written: ")

    def test_what_cannot_be_read_leaves_no_file(self):
        self.load(message("a", PR_RTF_COMPRESSED="ab" * 400_000))
        number = self.call_number("IStream::Read", "export", "msg", "Inbox", "-o", self.path("one.msg"), which=0)
        (self.folder / "one.msg").unlink()
        self.fail_at(number, "export", "msg", "Inbox", "-o", self.path("one.msg"), saying="MAPI_E_NETWORK_ERROR")
        self.assertEqual([file.name for file in self.folder.iterdir() if "msg" in file.name], [])
