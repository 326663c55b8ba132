"""Another reader of .msg files, on olefile, by the published format alone."""
import struct

import olefile

FIXED = {0x02: 2, 0x03: 4, 0x04: 4, 0x05: 8, 0x06: 8, 0x07: 8, 0x0A: 4, 0x0B: 2, 0x14: 8, 0x40: 8}
PT_GUID, PT_STRING8, PT_UNICODE, PT_BINARY, MANY = 0x48, 0x1E, 0x1F, 0x102, 0x1000
MESSAGE_CLASS = "00020D0B-0000-0000-C000-000000000046"
MAPI_SET = bytes.fromhex("2803020000000000C000000000000046")
PUBLIC_SET = bytes.fromhex("2903020000000000C000000000000046")


class MsgFile:
    """The message of a file: `properties` (tag, or (set, name, type) for a named one, to its value: bytes, or a list of them),
    `recipients`, and `attachments` (properties and message)."""

    def __init__(self, file):
        with olefile.OleFileIO(str(file), raise_defects=olefile.DEFECT_INCORRECT) as ole:
            self.ole = ole
            assert ole.root.clsid == MESSAGE_CLASS, ole.root.clsid
            self.streams = {tuple(path): None for path in ole.listdir(streams=True, storages=False)}
            self.folders = {tuple(path) for path in ole.listdir(streams=False, storages=True)}
            self.used = set()
            self.names = self.read_names()
            self.properties, self.recipients, self.attachments = self.message((), 32)
            unused = set(self.streams) - self.used
            assert not unused, f"streams without an entry: {sorted(unused)}"

    def stream(self, *path):
        self.used.add(path)
        return self.ole.openstream(list(path)).read()

    def read_names(self):
        top = "__nameid_version1.0"
        sets, entries, texts = (self.stream(top, f"__substg1.0_{number:04X}0102") for number in (2, 3, 4))
        names, buckets = {}, {}
        for at in range(0, len(entries), 8):
            first, second = struct.unpack_from("<II", entries, at)
            index, number, is_text = second >> 16, second >> 1 & 0x7FFF, second & 1
            assert index == at // 8, "the entries are in the order of the identifiers"
            set_ = {1: MAPI_SET, 2: PUBLIC_SET}.get(number, sets[(number - 3) * 16:(number - 2) * 16])
            assert len(set_) == 16, number
            name = first
            if is_text:
                assert first % 4 == 0, first
                size, = struct.unpack_from("<I", texts, first)
                name = texts[first + 4:first + 4 + size].decode("utf-16-le")
            names[0x8000 + index] = (set_.hex(), name)
            if not is_text:
                bucket = 0x1000 + (first ^ number << 1) % 0x1F
                buckets.setdefault(bucket, []).append(struct.pack("<II", first, second))
        for bucket, wanted in buckets.items():
            found = self.stream(top, f"__substg1.0_{bucket:04X}0102")
            parts = [found[at:at + 8] for at in range(0, len(found), 8)]
            assert all(each in parts for each in wanted), f"bucket {bucket:04X}"
        parts = [path for path in self.streams if path[0] == top and path[1][12:16] >= "1000"]
        assert sum(len(self.stream(*path)) for path in parts) == len(entries), "each name is in one bucket"
        return names

    def message(self, path, header):
        data = self.stream(*path, "__properties_version1.0")
        counts = struct.unpack_from("<8x4I", data)
        recipients = [self.parts(path + (name,), 8) for name in self.numbered(path, "__recip_version1.0_#")]
        attachments = [self.attachment(path + (name,)) for name in self.numbered(path, "__attach_version1.0_#")]
        assert counts == (len(recipients), len(attachments)) * 2, counts
        return self.parts(path, header), recipients, attachments

    def numbered(self, path, prefix):
        names = sorted(each[-1] for each in self.folders if each[:-1] == path and each[-1].startswith(prefix))
        assert names == [f"{prefix}{i:08X}" for i in range(len(names))], names
        return names

    def attachment(self, path):
        properties = self.parts(path, 8)
        if properties.get(0x3701000D) != "message":
            return properties, None
        return properties, self.message(path + ("__substg1.0_3701000D",), 24)

    def parts(self, path, header):
        data = self.stream(*path, "__properties_version1.0")
        assert (len(data) - header) % 16 == 0 and not any(data[:8]), (path, len(data))
        found = {}
        for at in range(header, len(data), 16):
            tag, flags, value = struct.unpack_from("<II8s", data, at)
            assert flags == 6, hex(flags)
            key = tag if tag >> 16 < 0x8000 else (*self.names[tag >> 16], tag & 0xFFFF)
            assert key not in found, key
            found[key] = self.value(path, tag, value)
        return found

    def value(self, path, tag, value):
        kind, (size, reserved) = tag & 0xFFFF, struct.unpack("<II", value)
        name = f"__substg1.0_{tag:08X}"
        if kind in FIXED:
            assert not any(value[FIXED[kind]:]), value
            return value[:FIXED[kind]]
        if kind == 0x0D and path + (name,) in self.folders:
            assert (size, reserved) == (0xFFFFFFFF, 1)
            return "message"
        stream = self.stream(*path, name)
        if kind & MANY and kind & ~MANY in FIXED or kind & ~MANY == PT_GUID:
            assert size == len(stream), (hex(tag), size)
            width = FIXED.get(kind & ~MANY, 16)
            return [stream[at:at + width] for at in range(0, len(stream), width)] if kind & MANY else stream
        if kind & MANY:
            return self.elements(path, name, kind & ~MANY, stream)
        assert size == len(stream) + {PT_UNICODE: 2, PT_STRING8: 1}.get(kind, 0), (hex(tag), size, len(stream))
        return stream

    def elements(self, path, name, kind, sizes):
        width = 8 if kind == PT_BINARY else 4
        values = []
        for i in range(len(sizes) // width):
            size, = struct.unpack_from("<I", sizes, i * width)
            value = self.stream(*path, f"{name}-{i:08X}")
            assert len(value) == size, (name, i)
            end = {PT_UNICODE: b"\0\0", PT_STRING8: b"\0"}.get(kind, b"")
            assert value.endswith(end)
            values.append(value[:len(value) - len(end)])
        return values
