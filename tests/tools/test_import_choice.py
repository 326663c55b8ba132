"""zeb-import PATH: the kind of the source, and which messages of it are imported."""
import json
import re

import world
from test_import import PST, mail
from test_import_mail import INFO, SEPARATOR, Mail

SUM = re.compile(r"^([\d,]+) messages? read = ([\d,]+) (?:imported|to import) \+ ([\d,]+) duplicates? \+ ([\d,]+) older \+ ([\d,]+) damaged$", re.M)


class Choice(Mail):
    def sums(self, done):
        """The numbers of the sum: read, imported, duplicates, older, damaged. They add up."""
        found = SUM.search(done.out)
        self.assertTrue(found, done.out)
        read, *rest = (int(each.replace(",", "")) for each in found.groups())
        self.assertEqual(read, sum(rest), done.out)
        return [read, *rest]

    def put(self, name, data):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(data)
        return str(file)

    def names(self, folder):
        return sorted(each["properties"].get("PR_SUBJECT", "") for each in self.saved(folder))


class Kind(Choice):
    def test_content_decides_not_the_name(self):
        self.assertRegex(self.importer(self.put("a.eml", PST.read_bytes())).out, r"^71 messages in ")
        self.importer(self.put("box.msg", SEPARATOR + b"Subject: in a box\n\nx\n\n" + SEPARATOR + b"Subject: two\n\nx\n"))
        self.assertEqual(self.names("box"), ["in a box", "two"])
        self.importer(self.put("one/c.mbox", b"\xef\xbb\xbf\r\nSubject: one mail\r\n\r\nx\r\n"))
        self.assertEqual(self.names("one"), ["one mail"])
        self.importer(self.put("wide/c", "\ufeffSubject: wide\n\nx\n".encode("utf-16-le")))
        self.assertEqual(self.names("wide"), ["wide"])

    def test_folders_of_mail(self):
        self.importer(str(self.write("a.eml", b"Subject: a\n\nx\n", "sub/b.eml", b"Subject: b\n\nx\n")), "--inbox", "mail1")
        self.assertEqual(self.subjects(), ["a"])
        top = self.write(f"cur/1{INFO}2,S", b"Subject: seen\n\nx\n", "new/2", b"Subject: new\n\nx\n", "tmp/3", b"Subject: no\n\nx\n")
        self.assertEqual(self.importer(str(top)).out, "2 messages in 1 folder, 1 file ignored\n")
        for name in ("cur", "new", "tmp"):
            (self.folder / "empty" / name).mkdir(parents=True)
        self.assertEqual(self.importer(str(self.folder / "empty")).out, "0 messages in 1 folder\n")

    def test_unknown_kinds_get_one_sentence(self):
        for name, data in (("text", b"just some words\n"), ("none", b""), ("zeros", bytes(4096)), ("almost", b"\xd0\xcf\x11\xe0abcd"),
                           ("prose", b"From here on it is prose\n")):
            with self.subTest(name):
                done = self.importer(self.put(name, data), code=1)
                self.one_sentence(done, [f"{name}' is no mail of a known kind: "])
                self.assertEqual(done.out, "")
        self.one_sentence(self.importer(str(self.folder / "absent"), code=1), "absent' cannot be read: ")
        (self.folder / "bare").mkdir()
        self.one_sentence(self.importer(str(self.folder / "bare"), code=1), "bare' has no mail: ")
        self.one_sentence(self.importer(code=2), "name the file or folder to import")

    def test_a_kind_that_is_named_stays(self):
        file = self.put("x.eml", SEPARATOR + b"Subject: one\n\nx\n\n" + SEPARATOR + b"Subject: two\n\nx\n")
        self.importer("eml", file, "--inbox", self.folder.name)
        self.assertEqual(self.subjects(), ["one"])

    def test_all_flags_of_a_maildir(self):
        flags = ["", "S", "F", "R", "T", "D", "DFRST", "PS"]
        top = self.write(*[part for each in flags for part in (f"cur/{len(each)}{each}.host{INFO}2,{each}", b"Subject: %s\n\nx\n" % each.encode())],
                         f".Sent.2020/cur/1{INFO}2,S", b"Subject: below\n\nx\n", ".a..b/cur/1", b"Subject: odd\n\nx\n")
        for folder in (top, top / ".Sent.2020", top / ".a..b"):
            (folder / "new").mkdir()
        self.importer(str(top))
        found = {}
        for each in self.saved(top.name):
            shown = each["properties"]
            found[shown["PR_SUBJECT"]] = (each["folder"].removeprefix(top.name), shown["PR_MESSAGE_FLAGS"] & 9, shown.get("0x10900003"),
                                          shown.get("0x10810003"), shown.get("PR_MSG_STATUS", 0) & 8)
        self.assertEqual(found, {
            "": ("", 0, None, None, 0), "S": ("", 1, None, None, 0), "F": ("", 0, 2, None, 0), "R": ("", 0, None, 102, 0),
            "T": ("", 0, None, None, 8), "D": ("", 8, None, None, 0), "DFRST": ("", 9, 2, 102, 8), "PS": ("", 1, None, None, 0),
            "below": ("/Sent/2020", 1, None, None, 0), "odd": ("/.a..b", 0, None, None, 0)})


class DryRun(Choice):
    def test_nothing_is_written(self):
        self.importer(str(self.write("a.eml", b"Subject: there\n\nx\n")), "--inbox", "mail1")
        before = self.zeb("save", "/").out
        done = self.importer("--dry-run", str(PST), "--inbox", "lokay-m/MLOKAY (Non-Privileged)/Personal")
        self.assertEqual(self.zeb("save", "/").out, before)
        self.assertEqual(self.sums(done), [71, 71, 0, 0, 0])
        folders = dict(reversed(line.strip().split("  ", 1)) for line in done.out.splitlines()[:-2])
        self.assertEqual((folders["Inbox"], folders["lokay-m/MLOKAY (Non-Privileged)/TW-Commercial Group"]), ("47", "14"))
        self.assertEqual(sum(map(int, folders.values())), 71)
        self.assertIn("nothing is written; an import would bring 71 messages in ", done.out)

    def test_damage_is_found(self):
        top = self.write("a.eml", b"Subject: a\n\nx\n", "b.eml", b"\0\1", "c.eml", b"Subject: c\nDate: nonsense\n\nx\n")
        done = self.importer(str(top), "--dry-run", code=3)
        self.assertEqual(self.sums(done), [3, 2, 0, 0, 1])
        self.assertIn("b.eml: skipped: it is not a mail message\n", done.err)
        self.assertEqual(self.importer(str(top), code=3).err, done.err)
        damaged = bytearray(PST.read_bytes())
        damaged[0xD1B040:0xD1B080] = bytes(64)  # in the bytes of an attachment
        self.assertEqual(self.sums(self.importer(self.put("x.pst", damaged), "--dry-run", code=3)), [71, 70, 0, 0, 1])


class Since(Choice):
    def test_earlier_messages_are_left_out(self):
        dates = {"old": b"Thu, 01 Jan 2026 23:59:59 +0000", "on": b"Fri, 02 Jan 2026 00:00:00 +0000", "new": b"Sat, 03 Jan 2026 00:00:00 +0000"}
        top = self.write(*[part for name, date in dates.items() for part in
                           (f"{name}.eml", b"Subject: %b\nDate: %b\n\nx\n" % (name.encode(), date))], "none.eml", b"Subject: none\n\nx\n")
        done = self.importer(str(top), "--since", "2026-01-02")
        self.assertEqual(self.sums(done), [4, 3, 0, 1, 0])
        self.assertEqual(self.names(top.name), ["new", "none", "on"])
        for form, count in (("2026-01-02T00:00:01Z", 2), ("2026-01-02 01:00:00+01:00", 3), ("2026-01-03T00:00:00", 2), ("1d", None)):
            with self.subTest(form):
                read, kept, *_ = self.sums(self.importer(str(top), "--since", form, "--dry-run"))
                self.assertEqual((read, kept), (4, count if count is not None else kept))
        self.one_sentence(self.importer(str(top), "--since", "soon", code=2), "--since needs a date such as ")


class Duplicates(Choice):
    def test_a_second_import_brings_nothing(self):
        for source in (str(PST), str(world.SAMPLES / "pstextractortest@outlook.com.ost")):
            with self.subTest(source):
                read, first, again, *_ = self.sums(self.importer(source, "--skip-duplicates"))
                self.assertGreater(first, 60)
                self.assertEqual(self.sums(self.importer(source, "--skip-duplicates")), [read, 0, read, 0, 0])
                self.assertEqual(first + again, read)

    def test_what_is_compared(self):
        base = dict(Subject="a", Date="Fri, 02 Jan 2026 03:04:05 +0000")
        head = "".join(f"{name}: {value}\n" for name, value in base.items())
        files = {"1": head + "Message-ID: <1@x>\nX-Other: 1\n\nbody\n", "2 same": head + "Message-ID: <1@x>\nTo: b@x\n\nbody\n",
                 "3 other text": head + "Message-ID: <1@x>\n\nbody.\n", "4 other id": head + "Message-ID: <2@x>\n\nbody\n",
                 "5 other subject": head.replace(": a", ": b") + "Message-ID: <1@x>\n\nbody\n",
                 "6 other date": head.replace("05 +", "06 +") + "Message-ID: <1@x>\n\nbody\n",
                 "7 none": head + "\nbody\n", "8 none": head + "X-Other: 1\n\nbody\n", "9 none": head + "To: b@x\n\nbody\n"}
        top = self.write(*[part for name, text in files.items() for part in (f"{name}.eml", text.encode())])
        self.assertEqual(self.sums(self.importer(str(top), "--skip-duplicates")), [9, 7, 2, 0, 0])
        self.assertEqual(self.sums(self.importer(str(top), "--skip-duplicates")), [9, 0, 9, 0, 0])
        self.assertEqual(self.importer(str(top)).out, "9 messages in 1 folder\n")

    def test_attachments_tell_messages_without_identifiers_apart(self):
        mails = []
        for data in (b"\1" * 300_000, b"\2" * 300_000, b"\1" * 300_001, b"small", b"smalL"):
            made = mail("same")
            del made["Message-ID"]
            made.add_attachment(data, maintype="application", subtype="x", filename="a")
            mails.append(bytes(made))
        top = self.write(*[part for i, each in enumerate(mails) for part in (f"{i}.eml", each)])
        # Of values above 256 KiB the size counts.
        self.assertEqual(self.sums(self.importer(str(top), "--skip-duplicates")), [5, 4, 1, 0, 0])
        self.assertEqual(self.sums(self.importer(str(top), "--skip-duplicates")), [5, 0, 5, 0, 0])

    def test_a_message_elsewhere_is_none(self):
        top = self.write("a.eml", b"Subject: a\nMessage-ID: <1@x>\n\nx\n")
        self.importer(str(top))
        self.assertEqual(self.sums(self.importer(str(top), "--inbox", top.name, "--skip-duplicates")), [1, 1, 0, 0, 0])
        both = self.write("a.eml", b"Subject: a\nMessage-ID: <1@x>\n\nx\n", "sub/a.eml", b"Subject: a\nMessage-ID: <1@x>\n\nx\n")
        self.assertEqual(self.sums(self.importer(str(both), "--skip-duplicates")), [2, 1, 1, 0, 0], "in one import")


class Result(Choice):
    def test_json_adds_up(self):
        top = self.write("a.eml", b"Subject: a\nDate: Fri, 02 Jan 2026 03:04:05 +0000\n\nx\n", "b.eml", b"\0", "c.eml", b"Subject: a\nDate: "
                         b"Fri, 02 Jan 2026 03:04:05 +0000\n\nx\n", "d.eml", b"Subject: d\nDate: Fri, 02 Jan 2015 03:04:05 +0000\n\nx\n", "e", b"")
        done = self.importer(str(top), "--skip-duplicates", "--since", "2026-01-01", "--json", code=3)
        found = json.loads(done.out)
        self.assertEqual(list(found)[0], "version")
        self.assertEqual(found, {"version": 1, "dryRun": False, "read": 4, "imported": 1, "duplicates": 1, "older": 1, "damaged": 1,
                                 "repaired": 0, "skippedItems": 1, "ignored": 1, "folders": [{"path": top.name, "messages": 1}]})
        failed = json.loads(self.importer(str(self.folder / "absent"), "--json", code=1).err)
        self.assertEqual((failed["version"], failed["error"]["exitCode"]), (1, 1))
        self.assertIn("absent", failed["error"]["message"])
