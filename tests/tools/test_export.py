"""zeb export: mail that other programs read, tables and JSON."""
import csv
import email
import email.policy
import io
import json
import mailbox

from test_attachments import attachment
from test_read import recipient
from world import World, message

BODY = "Grüße aus Köln\r\nFrom here on\r\n>From there\r\n>>From deep\r\nends blank \r\n" + "long " * 40 + "\r\n=41 is not A\r\n"


class Export(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def mail(self, *lines):
        """The messages as Python's reader finds them in the files."""
        self.load(*lines)
        self.zeb("export", "eml", "Inbox", "-o", self.path("out"))
        files = sorted((self.folder / "out").iterdir())
        return [email.message_from_bytes(file.read_bytes(), policy=email.policy.default) for file in files]

    def test_a_new_message_gets_headers(self):
        mail, = self.mail({**message("Grüße, zusammen: " + "weit " * 20 + "😀", PR_SENT_REPRESENTING_NAME="Ada (the first)",
                                     PR_SENT_REPRESENTING_EMAIL_ADDRESS="ada@example.org", PR_SENDER_NAME="Dési",
                                     PR_SENDER_EMAIL_ADDRESS="desk@example.org", PR_BODY=BODY, PR_IMPORTANCE=2,
                                     **{"0x1035001F": "<1@x>"}),
                           "recipients": [recipient(1, "Bob, \"B\"", "bob@example.org"), recipient(1, "", "dan@example.org"),
                                          recipient(2, "Zoë", "zoe@example.org"), recipient(3, "Eve", "/O=X", PR_ADDRTYPE="EX")]})
        self.assertEqual(mail["Subject"], "Grüße, zusammen: " + "weit " * 20 + "😀")
        self.assertEqual((mail["From"].addresses[0].display_name, mail["From"].addresses[0].addr_spec),
                         ("Ada (the first)", "ada@example.org"))
        self.assertEqual(str(mail["Sender"]), "Dési <desk@example.org>")
        self.assertEqual([(each.display_name, each.addr_spec) for each in mail["To"].addresses],
                         [('Bob, "B"', "bob@example.org"), ("", "dan@example.org")])
        self.assertEqual(str(mail["Cc"]), "Zoë <zoe@example.org>")
        self.assertEqual((str(mail["Date"]), mail["Message-ID"], mail["Importance"]),
                         ("Fri, 02 Jan 2026 03:04:05 +0000", "<1@x>", "high"))
        self.assertEqual(mail.get_content_type(), "text/plain")
        self.assertEqual(mail.get_payload(decode=True).decode(), BODY)

    def test_every_line_is_short_and_ascii(self):
        self.mail({**message("Ünïcödé " * 30, PR_BODY=BODY * 3, PR_HTML=("<p>" + "ü" * 500).encode().hex(), PR_INTERNET_CPID=65001),
                   "attachments": [attachment("Ein sehr langer Name äöü " * 5 + ".txt", bytes(range(256)) * 9)]})
        file, = (self.folder / "out").iterdir()
        for line in file.read_bytes().split(b"\r\n"):
            self.assertLessEqual(len(line), 78, line)
            self.assertTrue(line.isascii() and b"\n" not in line and b"\r" not in line, line)
            self.assertFalse(line.startswith((b"From ", b">From ", b">>From ")), line)

    def test_stored_headers_stay_as_they_came(self):
        headers = ("Received: from a\r\n\tby b; Fri, 2 Jan 2026 03:04:05 +0000\r\nSUBJECT: Stored\r\nX-Odd:1\r\nno header\r\n"
                   "Content-Type: text/html;\r\n charset=x\r\nMIME-Version: 1.0\r\nTo: bob@example.org\r\n\r\n")
        mail, = self.mail(message("Stored", PR_TRANSPORT_MESSAGE_HEADERS=headers, PR_BODY="text\r\n"))
        self.assertEqual(mail.keys(), ["Received", "SUBJECT", "X-Odd", "To", "MIME-Version", "Content-Type",
                                       "Content-Transfer-Encoding"])
        file, = (self.folder / "out").iterdir()
        self.assertTrue(file.read_bytes().startswith(b"Received: from a\r\n\tby b; Fri, 2 Jan 2026 03:04:05 +0000\r\nSUBJECT: Stored\r\n"
                                                     b"X-Odd:1\r\nTo: bob@example.org\r\nMIME-Version: 1.0\r\n"))

    def test_both_texts_pictures_and_files(self):
        html = '<p>Grüße <img src="cid:pic@x">'
        picture = attachment("pic.png", b"\x89PNG", PR_ATTACH_MIME_TAG="image/png", **{"0x3712001F": "pic@x"})
        mail, = self.mail({**message("all", PR_BODY="Grüße", PR_HTML=html.encode("cp1252").hex(), PR_INTERNET_CPID=1252),
                           "attachments": [attachment("Menü.txt", b"soup" * 30_000), picture, attachment(None, b""),
                                           {"properties": {"PR_ATTACH_METHOD": 5},
                                            "message": {"properties": {"PR_SUBJECT": "inside", "PR_BODY": "deep\r\n"},
                                                        "attachments": [attachment("deep.bin", b"\x00\xff")]}}]})
        self.assertEqual(mail.get_content_type(), "multipart/mixed")
        body, *files = mail.iter_parts()
        self.assertEqual(body.get_content_type(), "multipart/alternative")
        plain, related = body.iter_parts()
        self.assertEqual(plain.get_payload(decode=True).decode(), "Grüße")
        page, shown = related.iter_parts()
        self.assertEqual((page.get_content_type(), page.get_payload(decode=True)), ("text/html", html.encode("cp1252")))
        self.assertEqual(page.get_content_charset(), "windows-1252")
        self.assertEqual((shown.get_content_type(), shown["Content-ID"], shown.get_filename(), shown.get_payload(decode=True)),
                         ("image/png", "<pic@x>", "pic.png", b"\x89PNG"))
        self.assertEqual([(each.get_filename(), each.get_content_type()) for each in files],
                         [("Menü.txt", "application/octet-stream"), (None, "application/octet-stream"), (None, "message/rfc822")])
        self.assertEqual([each.get_payload(decode=True) for each in files[:2]], [b"soup" * 30_000, b""])
        inside = files[2].get_payload(0)
        self.assertEqual(inside["Subject"], "inside")
        text, deep = inside.iter_parts()
        self.assertEqual((text.get_payload(decode=True), deep.get_filename(), deep.get_payload(decode=True)),
                         (b"deep\r\n", "deep.bin", b"\x00\xff"))

    def test_text_made_of_the_html_is_left_out(self):
        mail, = self.mail(message("x", PR_BODY="a b\r\n", PR_HTML=b"<p>a <b>b</b>".hex(), PR_INTERNET_CPID=65001))
        self.assertEqual((mail.get_content_type(), mail.get_payload(decode=True)), ("text/html", b"<p>a <b>b</b>"))

    def test_names_of_files_are_safe_and_ordered(self):
        self.load(*[message(subject, date=f"2026-01-{day + 1:02}T00:00:00Z") for day, subject in
                    enumerate(["../../etc/x", "", "a:b*c", "same", "same"] + ["more"] * 6)])
        self.zeb("export", "eml", "Inbox", "-o", self.path("out"))
        names = sorted(file.name for file in (self.folder / "out").iterdir())
        self.assertEqual(names[:5], ["01 .._.._etc_x.eml", "02 .eml", "03 a_b_c.eml", "04 same.eml", "05 same.eml"])
        self.assertEqual(len(names), 11)
        self.zeb("export", "eml", "Inbox", "-o", self.path("out"))
        self.assertEqual(len(list((self.folder / "out").iterdir())), 22)

    def test_chosen_messages_and_ranges(self):
        self.load(*[message(f"m{i}", date=f"2026-01-{i:02}T00:00:00Z") for i in range(1, 10)], message("1-3", date="2026-02-01T00:00:00Z"))
        def chosen(*texts):
            return [each["subject"] for each in json.loads(self.zeb("export", "json", "Inbox", *texts).out)["messages"]]
        self.assertEqual(chosen("1-3,7"), ["m1", "m2", "m3", "m7"])
        self.assertEqual(chosen("9-", "m2", "2-3,3,2"), ["m9", "1-3", "m2", "m2", "m3"])
        self.assertEqual(chosen("subject:1-3"), ["1-3"])
        self.assertEqual(len(chosen()), 10)
        for bad in ("0-2", "3-2", "4-11", "99999999999-"):
            self.refused("export", "json", "Inbox", bad, saying=f"there are no messages {bad} in folder 'Inbox': it has 10 messages"
                         if bad[0] != "9" else "there is no message with the subject")
        self.zeb("mv", "Inbox", "1-3,7", "Deleted Items")
        self.assertEqual(sorted(self.subjects()), ["1-3", "m4", "m5", "m6", "m8", "m9"])

    def test_one_file_on_standard_output(self):
        self.load(message("a", PR_BODY="x\r\n"), message("b"))
        done = self.run_tool("zeb", "export", "eml", "Inbox", "a")
        self.assertTrue(done.stdout.endswith(b"\r\n\r\nx\r\n"), done)
        self.refused("export", "eml", "Inbox", saying="2 messages as files: give --output DIR", code=2)
        self.refused("export", "pdf", "Inbox", saying="pdf", code=2)

    def test_mbox_as_other_readers_see_it(self):
        self.load(message("a", PR_BODY=BODY, PR_MESSAGE_FLAGS=1, PR_SENDER_EMAIL_ADDRESS="ada@example.org",
                          **{"0x10810003": 102, "0x10900003": 2}),
                  message("b", PR_BODY="no end", PR_MESSAGE_FLAGS=8), message("c", PR_MESSAGE_FLAGS=0))
        self.assertEqual(self.zeb("export", "mbox", "Inbox", "-o", self.path("all.mbox")).out, "3 messages exported\n")
        raw = (self.folder / "all.mbox").read_bytes()
        self.assertNotIn(b"\r", raw)
        self.assertTrue(raw.startswith(b"From ada@example.org Fri Jan  2 03:04:05 2026\nStatus: RO\nX-Status: AF\n"))
        found = {mail["Subject"]: mail for mail in mailbox.mbox(self.folder / "all.mbox")}
        self.assertEqual(sorted(found), ["a", "b", "c"])
        self.assertEqual(found["a"].get_payload(decode=True).decode(), BODY.replace("\r\n", "\n") + "\n")
        self.assertEqual(found["b"].get_payload(decode=True).strip(), b"no end")
        self.assertEqual([(found[name]["Status"], found[name]["X-Status"]) for name in "abc"], [("RO", "AF"), ("O", "T"), ("O", None)])

    def test_csv_for_spreadsheets(self):
        self.load({**message('"quoted", and\nbroken', PR_SENDER_NAME="Ädä", PR_SENDER_EMAIL_ADDRESS="a@x"),
                   "recipients": [recipient(1, "Bob", "b@x"), recipient(1, "", "c@x")], "attachments": [attachment("a", b"1")]})
        rows = list(csv.DictReader(io.StringIO(self.zeb("export", "csv", "Inbox").out)))
        row, = rows
        self.assertEqual(len(row.pop("entry id")), 108)
        self.assertGreater(int(row.pop("size")), 10)
        self.assertEqual(row, {"number": "1", "date": "2026-01-02T03:04:05Z", "from": "Ädä", "from address": "a@x", "to": "Bob <b@x>, c@x",
                               "cc": "", "subject": '"quoted", and\nbroken', "unread": "no", "attachments": "1", "class": "IPM.Note"})
        self.zeb("export", "csv", "Inbox", "-o", self.path("out.csv"))
        self.assertEqual((self.folder / "out.csv").read_bytes(), self.run_tool("zeb", "export", "csv", "Inbox").stdout)

    def test_json_with_the_texts(self):
        self.assertEqual(json.loads(self.zeb("export", "json", "Inbox").out), {"version": 1, "messages": []})
        self.load(message("a", PR_BODY="x"), message("b", PR_BODY="y"))
        read = json.loads(self.zeb("export", "json", "Inbox").out)["messages"]
        self.assertEqual([(each["number"], each["subject"], each["text"]) for each in read], [(1, "a", "x"), (2, "b", "y")])
        self.assertEqual(json.loads(self.zeb("read", "Inbox", read[1]["entryId"], "--json").out)["text"], "y")

    def test_what_mail_cannot_hold_is_said(self):
        self.load({**message("x"), "attachments": [attachment("a", b"1"),
                                                   {"properties": {"PR_ATTACH_METHOD": 4, "PR_ATTACH_LONG_FILENAME": "far"}}]})
        done = self.zeb("export", "eml", "Inbox", "-o", self.path("out"), code=3)
        self.assertEqual(done.err, "zeb: message 1 ('x') of folder 'Inbox': attachment 2 is left out: it is not stored as a file\n")
        file, = (self.folder / "out").iterdir()
        self.assertEqual([part.get_filename() for part in email.message_from_bytes(file.read_bytes()).walk()], [None, None, "a"])

    def test_no_address_begins_a_header(self):
        mail, = self.mail({**message("x", PR_SENDER_NAME="Ada", PR_SENDER_EMAIL_ADDRESS="ada@x>\r\nBcc: eve@x", PR_BODY="text\r\n"),
                           "recipients": [recipient(1, "Bob", "bob@x\nX-Odd: 1"), recipient(1, "", "a@x>, <b@x")]})
        self.assertEqual(mail.keys(), ["From", "To", "Date", "Subject", "MIME-Version", "Content-Type", "Content-Transfer-Encoding"])
        self.assertEqual(len(mail["To"].addresses), 2)
        self.assertEqual(mail.get_payload(decode=True), b"text\r\n")

    def test_what_is_left_out_of_messages_inside_is_said(self):
        far = {"properties": {"PR_ATTACH_METHOD": 4, "PR_ATTACH_LONG_FILENAME": "far"}}
        self.load({**message("x"), "attachments": [attachment("a", b"1"), {"properties": {"PR_ATTACH_METHOD": 5}, "message":
                                                   {"properties": {"PR_SUBJECT": "in"}, "attachments": [attachment("b", b"2"), far]}}]},
                  message("y", **{"0x10090102": "4C5A4675"}))
        done = self.zeb("export", "eml", "Inbox", "-o", self.path("out"), code=3)
        self.assertEqual(done.err.splitlines(), [
            "zeb: message 1 ('x') of folder 'Inbox': attachment 2.2 is left out: it is not stored as a file",
            "zeb: message 2 ('y') of folder 'Inbox': the text is left out: it is stored only as rich text"])
