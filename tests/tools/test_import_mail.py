"""zeb-import on malformed Internet mail: nothing is lost, and repairs are reported."""
import json
import re
import resource
import subprocess

import world
from world import World


HEAD = b"From: Ada <ada@example.org>\nDate: Fri, 02 Jan 2026 03:04:05 +0000\n"
# Before the flags in the name of a file in a Maildir; names on Windows have no colons.
INFO = ";" if world.WINDOWS else ":"
SEPARATOR = b"From ada@example.org Fri Jan  2 03:04:05 2026\n"


class Mail(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.count = 0

    def write(self, *names_and_bytes):
        """A new folder with these files. Returns its name and path."""
        self.count += 1
        top = self.folder / f"mail{self.count}"
        for name, data in zip(names_and_bytes[::2], names_and_bytes[1::2]):
            (top / name).parent.mkdir(parents=True, exist_ok=True)
            (top / name).write_bytes(data)
        return top

    def saved(self, folder):
        """The messages of a folder and its subfolders, in the form of zeb save."""
        lines = [json.loads(line) for line in self.zeb("save", folder).out.splitlines()]
        return [line for line in lines if "properties" in line]

    def one(self, data, code=0):
        """Imports one message. Returns its properties, its recipients, its attachments and its notes."""
        top = self.write("1.eml", data)
        done = self.importer("eml", str(top), code=code)
        [message] = self.saved(top.name)
        self.said = done.err
        self.recipients = [each["properties"] for each in message.get("recipients", [])]
        self.attachments = message.get("attachments", [])
        if code == 3:
            self.assertEqual(done.out, "1 message in 1 folder, 1 item repaired\n")
            self.assertIn("1.eml: repaired: ", done.err)
        else:
            self.assertEqual((done.out, done.err), ("1 message in 1 folder\n", ""))
        return message["properties"]

    def body(self, data, code=0):
        return self.one(data, code).get("PR_BODY")

    def mbox(self, data, code=0, name="box.mbox"):
        """Imports an mbox file. Returns the messages and the importer's result."""
        self.count += 1
        file = self.folder / f"box{self.count}" / name
        file.parent.mkdir()
        file.write_bytes(data)
        target = f"box{self.count}.mbox"
        file = file.rename(file.parent / target)
        done = self.importer("mbox", str(file), code=code)
        return self.saved(file.stem), done

    def bodies(self, data, code=0):
        return [each["properties"].get("PR_BODY") for each in self.mbox(data, code)[0]]


def text(charset, body, **headers):
    more = b"".join(f"{name.replace('_', '-')}: {value}\n".encode() for name, value in headers.items())
    return HEAD + more + (b"Content-Type: text/plain; charset=%b\n" % charset.encode() if charset else b"") + b"\n" + body


def parts(*each, kind="mixed"):
    return (HEAD + b"Subject: parts\nContent-Type: multipart/%b; boundary=\"b b\"\n\n" % kind.encode() +
            b"".join(b"--b b\n" + part + b"\n" for part in each) + b"--b b--\n")


class Text(Mail):
    def test_bad_bytes_are_windows_1252(self):
        self.assertEqual(self.body(text("us-ascii", b"Gr\xfc\xdfe\n"), 3), "Gr\u00fc\u00dfe\r\n")
        self.assertIn("us-ascii", self.said)
        self.assertEqual(self.body(text("utf-8", "\u4f60 ".encode() + b"\x80\x81.\n"), 3), "\u4f60 \u20ac\ufffd.\r\n")
        self.assertEqual(self.body(text("big5", b"\xa7A\xff!\n"), 3), "\u4f60\u00ff!\r\n")
        self.assertEqual(self.body(text("x-unknown", b"Gr\xfc\xdfe\n"), 3), "Gr\u00fc\u00dfe\r\n")
        self.assertEqual(self.body(text("utf-8//IGNORE", b"Gr\xfc\xdfe\n"), 3), "Gr\u00fc\u00dfe\r\n")
        self.assertEqual(self.body(text("", b"Gr\xfc\xdfe\n"), 3), "Gr\u00fc\u00dfe\r\n")

    def test_utf_8_despite_another_name(self):
        self.assertEqual(self.body(text("us-ascii", "Gr\u00fc\u00dfe \u4f60\n".encode()), 3), "Gr\u00fc\u00dfe \u4f60\r\n")
        self.assertEqual(self.body(text("", "Gr\u00fc\u00dfe \u4f60\n".encode())), "Gr\u00fc\u00dfe \u4f60\r\n")

    def test_valid_character_sets_give_no_warning(self):
        for charset in ("utf-8", "iso-8859-1", "windows-1252", "utf-16", "iso-2022-jp", "koi8-r", "gb18030"):
            wanted = {"koi8-r": "\u043f\u0440", "iso-2022-jp": "\u65e5\u672c", "gb18030": "\u4f60\U0001F600"}.get(charset, "\u00fc\u00df")
            with self.subTest(charset):
                encoded = wanted.encode(charset)
                body = subprocess.run(["base64"], input=encoded, stdout=subprocess.PIPE, check=True).stdout
                self.assertEqual(self.body(text(charset, body, Content_Transfer_Encoding="base64")), wanted)

    def test_text_after_a_zero_is_kept(self):
        self.assertEqual(self.body(text("us-ascii", b"one\0two\nthree\n"), 3), "one\ufffdtwo\r\nthree\r\n")
        found = self.one(b"Subject: one\0two\nFrom: A\0da <ada@example.org>\n\ntext\n", 3)
        self.assertEqual((found["PR_SUBJECT"], found["PR_SENT_REPRESENTING_NAME"], found["PR_BODY"]),
                         ("one\ufffdtwo", "A\ufffdda", "text\r\n"))

    def test_headers_without_an_empty_line(self):
        found = self.one(b"Subject: x\nFrom: ada@example.org\nHello this is text\nmore: text\n\nrest\n", 3)
        self.assertEqual((found["PR_SUBJECT"], found["PR_BODY"]), ("x", "Hello this is text\r\nmore: text\r\n\r\nrest\r\n"))
        self.assertEqual(self.body(parts(b"Content-Type: text/plain\nHello text"), 3), "Hello text")
        self.one(parts(b"\nfirst", b"Content-Type: message/rfc822\n\nSubject: inner\nno header\n"), 3)
        inner = self.attachments[0]["message"]["properties"]
        self.assertEqual((inner["PR_SUBJECT"], inner["PR_BODY"].strip()), ("inner", "no header"))

    def test_an_inner_message_without_headers(self):
        self.one(parts(b"\nfirst", b"Content-Type: message/rfc822\n\nthis is no header\nnor this"), 3)
        self.assertEqual(self.attachments[0]["message"]["properties"]["PR_BODY"].split(), "this is no header nor this".split())

    def test_an_empty_inner_message_is_attached(self):
        self.one(parts(b"\nfirst", b"Content-Type: message/rfc822\n"), 3)
        self.assertEqual(self.attachments[0]["properties"]["0x370E001F"], "message/rfc822")

    def test_a_multipart_without_a_boundary(self):
        raw = b"before\n--x\n\nmo\0re\n--x--\n"
        for kind in (b"multipart/mixed", b"multipart/mixed; boundary=\"\"", b"multipart/mixed; boundary=other", b"multipart"):
            with self.subTest(kind):
                self.assertEqual(self.body(HEAD + b"Content-Type: " + kind + b"\n\n" + raw, 3),
                                 "before\r\n--x\r\n\r\nmo\ufffdre\r\n--x--\r\n")
        self.assertEqual(self.body(parts(b"Content-Type: multipart/mixed\n\n" + raw), 3).split(), "before --x mo\ufffdre --x--".split())

    def test_an_open_multipart_and_text_after(self):
        self.assertEqual(self.body(HEAD + b"Content-Type: multipart/mixed; boundary=x\n\n--x\n\nmore\n"), "more\r\n")
        self.one(HEAD + b"Content-Type: multipart/mixed; boundary=x\n\nbefore\n--x\n\nmore\n--x--\nfooter\n", 3)
        self.assertEqual([bytes.fromhex(each["properties"]["PR_ATTACH_DATA_BIN"]) for each in self.attachments], [b"footer\n"])

    def test_an_invalid_type_is_plain_text(self):
        self.assertEqual(self.body(text("", b"body\n", Content_Type="text")), "body\r\n")
        for kind in ("", "garbage garbage", "/", "text/"):
            with self.subTest(kind):
                self.assertEqual(self.body(text("", b"body\n", Content_Type=kind), 3), "body\r\n")
        self.assertEqual(self.body(text("", b"\xfc\n", Content_Type="text; charset=iso-8859-1")), "\u00fc\r\n")

    def test_text_that_is_not_base64(self):
        self.assertEqual(self.body(text("", b"Hello, this isn't base64!\n", Content_Transfer_Encoding="base64"), 3),
                         "Hello, this isn't base64!\r\n")
        self.assertEqual(self.body(text("", b"aGFsbG8K\nZHU=\n____\nlist footer\n", Content_Transfer_Encoding="base64"), 3),
                         "hallo\r\ndu\r\n____\r\nlist footer\r\n")
        self.assertEqual(self.body(text("", b"aGFsbG8K\nZHU=\nlist footer\n", Content_Transfer_Encoding="base64"), 3),
                         "hallo\r\ndu\r\nlist footer\r\n")
        self.assertEqual(self.body(text("", b"aGFs bG8K\r\nZHU=\r\n\r\n", Content_Transfer_Encoding="base64")), "hallo\r\ndu")

    def test_headers_in_no_known_character_set(self):
        found = self.one(b"Subject: Gr\xfc\xdfe \x81\nFrom: J\xf6rg <j@example.org>\n\nx\n", 3)
        self.assertEqual((found["PR_SUBJECT"], found["PR_SENT_REPRESENTING_NAME"]), ("Gr\u00fc\u00dfe \ufffd", "J\u00f6rg"))
        found = self.one("Subject: Gr\u00fc\u00dfe\nFrom: J\u00f6rg <j@example.org>\n\nx\n".encode())
        self.assertEqual((found["PR_SUBJECT"], found["PR_SENT_REPRESENTING_NAME"]), ("Gr\u00fc\u00dfe", "J\u00f6rg"))

    def test_encoded_words_that_do_not_decode(self):
        found = self.one(b"Subject: =?us-ascii?Q?Gr=FC=DFe_1?= =?x-unknown?Q?Gr=FC=DFe?= =?utf-8?B?R3L83w==?=\n"
                         b"From: =?us-ascii?Q?J=F6rg?= <j@example.org>\n\nx\n", 3)
        self.assertEqual((found["PR_SUBJECT"], found["PR_SENT_REPRESENTING_NAME"]),
                         ("Gr\u00fc\u00dfe 1Gr\u00fc\u00dfeGr\u00fc\u00df", "J\u00f6rg"))
        self.assertIn("=?us-ascii?Q?Gr=FC=DFe_1?=", found.get("0x007D001F", found.get("PR_TRANSPORT_MESSAGE_HEADERS")))
        found = self.one(b"Subject: =?utf-8?Q?J=C3?=\n =?utf-8?Q?=B6rg?= (=?iso-8859-1?q?=FC?=)\n\nx\n")
        self.assertEqual(found["PR_SUBJECT"], "J\u00f6rg (\u00fc)", "a character in two words")
        found = self.one(b"Subject: =?utf-8?B?R3I=?= =?utf-8?B?R3I=?= =?koi8-r?B?0A==?= =?utf-8?Q?_end?=\n\nx\n")
        self.assertEqual(found["PR_SUBJECT"], "GrGr\u043f end", "padding in the middle")

    def test_line_ends(self):
        self.assertEqual(self.body(text("", b"a\nb\r\nc\rd\n\n")), "a\r\nb\r\nc\r\nd\r\n\r\n")
        self.assertEqual(self.body(text("", b"a\nb\n").replace(b"\n", b"\r")), "a\r\nb\r\n", "as on old Macintoshes")


HTML = b"Content-Type: text/html; charset=utf-8\n\n"


class Parts(Mail):
    def data(self):
        return [(each["properties"].get("PR_ATTACH_LONG_FILENAME"), bytes.fromhex(each["properties"].get("PR_ATTACH_DATA_BIN", "")))
                for each in self.attachments]

    def test_named_text_parts_are_attachments(self):
        named = b"Content-Type: text/plain; name=n.txt\nContent-Disposition: inline\n\nnamed"
        inline = b"Content-Type: text/plain\nContent-Disposition: inline; filename=f.txt\n\ninline"
        self.assertNotIn("PR_BODY", self.one(parts(inline)))
        self.assertEqual(self.data(), [("f.txt", b"inline")])
        self.assertEqual(self.one(parts(b"\nbody", named, inline))["PR_BODY"], "body")
        self.assertEqual(self.data(), [("n.txt", b"named"), ("f.txt", b"inline")])
        found = self.one(parts(HTML + b"<p>page</p>", inline))
        self.assertEqual((found["PR_BODY"], found["0x10130102"]), ("page\r\n", b"<p>page</p>".hex().upper()))
        self.assertEqual(self.data(), [("f.txt", b"inline")])

    def test_a_named_root_is_the_text(self):
        self.assertEqual(self.body(HEAD + b"Content-Type: text/plain; name=a.txt\n\nroot\n"), "root\r\n")
        self.assertEqual(self.data(), [])
        self.assertNotIn("PR_BODY", self.one(HEAD + b"Content-Type: application/pdf; name=a.pdf\n\nroot\n"))
        self.assertEqual(self.data(), [("a.pdf", b"root\n")])

    def test_text_after_a_page_is_separate(self):
        found = self.one(parts(HTML + b"<p>page</p>", b"\nfooter of the list"))
        self.assertEqual(found["PR_BODY"], "page\r\n")
        self.assertEqual(self.data(), [(None, b"footer of the list")])

    def test_alternatives_are_found_at_any_depth(self):
        related = b"Content-Type: multipart/related; boundary=r\n\n--r\n" + HTML + b"<p>page</p>\n--r\nContent-Type: image/png\n" \
                  b"Content-ID: <i@x>\n\npng\n--r--"
        found = self.one(parts(b"\nplain", related, kind="alternative"))
        self.assertEqual((found["PR_BODY"], found["0x10130102"]), ("plain", b"<p>page</p>".hex().upper()))
        self.assertEqual([each["properties"]["0x3712001F"] for each in self.attachments], ["i@x"])

    def test_html_alone_gets_its_text(self):
        page = ("<html><head><title>no</title><style>p {}</style></head><body>One   two\n three<p>Gr&uuml;&szlig;e&nbsp;&amp; "
                "\u4f60<br>next<ul><li>a<li>b</ul><table><tr><td>1</td><td>2</td></tr><tr><td>3</td></tr></table>"
                "<script>no()</script><pre>x\n  y</pre></body></html>").encode()
        found = self.one(HEAD + HTML + page)
        self.assertEqual(found["PR_BODY"], "One two three\r\n\r\nGr\u00fc\u00dfe & \u4f60\r\nnext\r\n\r\n* a\r\n* b\r\n\r\n1 2\r\n3\r\n\r\nx\r\n  y\r\n")
        self.assertEqual(found["0x10130102"], page.hex().upper())

    def test_a_page_of_any_size(self):
        page = b"<div>" * 2000 + b"deep" + b"</div>" * 2000 + b"<p>" + b"word " * 200_000 + b"end"
        found = self.one(HEAD + HTML + page)["PR_BODY"]
        self.assertTrue(found.startswith("deep"), found[:20])
        self.assertTrue(found.endswith("end\r\n"), found[-20:])

    def test_a_page_names_its_character_set(self):
        page = b"<meta http-equiv=content-type content='text/html; charset=koi8-r'><p>" + "\u043f\u0440".encode("koi8-r")
        self.assertEqual(self.body(HEAD + b"Content-Type: text/html\n\n" + page), "\u043f\u0440\r\n")

    def test_the_names_of_attachments(self):
        self.one(parts(
            b"\nbody",
            b"Content-Type: application/x-a\nContent-Disposition: attachment;\n filename*0*=utf-8''d%C3%B6; filename*1=c.bin\n\n1",
            b"Content-Type: application/x-a; name=\"=?utf-8?Q?d=C3=B6c?=.bin\"\n\n2",
            b"Content-Type: application/x-a; name=\"d\xf6c.bin\"\n\n3",
            b"Content-Type: message/rfc822; name=\"m.eml\"\n\nSubject: inner\n\n4"), 3)
        self.assertEqual([each["properties"]["PR_ATTACH_LONG_FILENAME"] for each in self.attachments],
                         ["d\u00f6c.bin"] * 3 + ["m.eml"])

    def test_messages_inside_with_a_transfer_encoding(self):
        self.one(parts(b"\nbody", b"Content-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\nU3ViamVjdDogaW4KCmhhbGxvCg=="))
        self.assertEqual({name: self.attachments[0]["message"]["properties"][name] for name in ("PR_SUBJECT", "PR_BODY")},
                         {"PR_SUBJECT": "in", "PR_BODY": "hallo\r\n"})

    def test_of_two_types_the_first_counts(self):
        found = self.one(HEAD + b"Content-Type: multipart/mixed; boundary=x\nContent-Type: text/plain\n\n--x\n\nbody\n--x--\n")
        self.assertEqual(found["PR_BODY"], "body")

    def test_deep_multiparts_keep_their_text(self):
        deep = b"".join(b"Content-Type: multipart/mixed; boundary=z%d\n\n--z%d\n" % (i, i) for i in range(3000))
        found = self.one(HEAD + deep + b"\nhello\n", 3)
        self.assertIn("hello", found["PR_BODY"])

    def cpu(self, count):
        """The processor time of an import with this number of small parts."""
        top = self.write("1.eml", parts(*[b"Content-Type: application/x-a; name=p%d\n\n%d" % (i, i) for i in range(count)]))
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        self.importer("eml", str(top))
        used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before
        self.assertEqual(len(self.saved(top.name)[0]["attachments"]), count)
        return used

    def test_many_parts_take_time_in_proportion(self):
        few, many = self.cpu(1_000), self.cpu(8_000)
        self.assertLess(many, 16 * few, "8 times as many parts")


class WhoAndWhen(Mail):
    def test_dates_of_all_years(self):
        for date, moment in (
                ("Thu, 02 Jan 1969 03:04:05 +0100", "1969-01-02T02:04:05Z"), ("Mon, 2 Jan 1950 03:04:05 GMT", "1950-01-02T03:04:05Z"),
                ("02 Jan 1601 03:04:05 +0000", "1601-01-02T03:04:05Z"), ("Wed, 29 Feb 1928 23:59:59 -0100", "1928-03-01T00:59:59Z"),
                ("2 Jan 69 03:04:05 +0000", "1969-01-02T03:04:05Z"), ("2 Jan 04 03:04:05 +0000", "2004-01-02T03:04:05Z"),
                ("2 Jan 104 03:04:05 +0000", "2004-01-02T03:04:05Z"), ("Fri Jan  2 03:04:05 1959", "1959-01-02T03:04:05Z"),
                ("Fri, 2 Jan 2026 03:04:05 EST (comment)", "2026-01-02T08:04:05Z"), ("2 Jan 2026 03:04:05", "2026-01-02T03:04:05Z"),
                ("Fri, 2 Jan 2399 03:04:05 +0000", "2399-01-02T03:04:05Z"), ("2026-01-02T03:04:05+01:00", "2026-01-02T02:04:05Z")):
            with self.subTest(date):
                found = self.one(f"Subject: x\nDate: {date}\n\nx\n".encode())
                self.assertEqual((found["PR_CLIENT_SUBMIT_TIME"], found["PR_MESSAGE_DELIVERY_TIME"]), (moment, moment))

    def test_an_invalid_date_is_reported(self):
        for date in ("garbage", "Mon, 2 Jan 1500 03:04:05 +0000"):
            self.assertNotIn("PR_CLIENT_SUBMIT_TIME", self.one(f"Subject: x\nDate: {date}\n\nx\n".encode(), 3))
            self.assertIn(f"'{date}' is not a date", self.said)

    def test_of_two_headers_the_first_counts(self):
        found = self.one(b"Subject: first\nSubject: second\nFrom: a@x\nFrom: b@x\nSender: c@x\nSender: d@x\nMessage-ID: <1@x>\n"
                         b"Message-ID: <2@x>\nDate: 2 Jan 2026 03:04:05 +0000\nDate: 2 Jan 2016 03:04:05 +0000\nTo: e@x\nTo: f@x\n\nx\n")
        self.assertEqual([found[name] for name in ("PR_SUBJECT", "PR_SENT_REPRESENTING_EMAIL_ADDRESS", "PR_SENDER_EMAIL_ADDRESS",
                                                   "0x1035001F", "PR_CLIENT_SUBMIT_TIME")],
                         ["first", "a@x", "c@x", "<1@x>", "2026-01-02T03:04:05Z"])
        self.assertEqual([each["PR_EMAIL_ADDRESS"] for each in self.recipients], ["e@x", "f@x"])

    def test_a_message_is_from_its_author(self):
        top = self.write("1.eml", b"Subject: both\nFrom: Ada <ada@x>\nSender: Secretary <sec@y>\n\nx\n",
                         "2.eml", b"Subject: sender\nSender: Secretary <sec@y>\n\nx\n")
        self.importer("eml", str(top), "--inbox", top.name)
        self.assertEqual({each["subject"]: each["sender"] for each in self.inbox()["messages"]},
                         {"both": "Ada", "sender": "Secretary"})
        for name, subjects in (("ada", ["both"]), ("ADA@X", ["both"]), ("secretary", ["sender"]), ("sec@y", ["sender"])):
            self.assertEqual([each["subject"] for each in self.found("Inbox", "--from", name)], subjects, name)
        both = {each["properties"]["PR_SUBJECT"]: each["properties"] for each in self.saved("Inbox")}["both"]
        self.assertEqual((both["PR_SENT_REPRESENTING_EMAIL_ADDRESS"], both["PR_SENDER_EMAIL_ADDRESS"]), ("ada@x", "sec@y"))

    def test_bad_addresses_are_kept_as_names(self):
        found = self.one(b"From: the whole office\nTo: everyone, \"x, y\" <z@x>, broken@, undisclosed-recipients:;, G: a@x, b@x;, "
                         b"q@x (Quu)\n\nx\n")
        self.assertEqual(found["PR_SENT_REPRESENTING_NAME"], "the whole office")
        self.assertNotIn("PR_SENT_REPRESENTING_EMAIL_ADDRESS", found)
        self.assertEqual([(each["PR_DISPLAY_NAME"], each.get("PR_EMAIL_ADDRESS")) for each in self.recipients],
                         [("everyone", "everyone"), ("x, y", "z@x"), ("broken@", None), ("a@x", "a@x"), ("b@x", "b@x"), ("Quu", "q@x")])

    def test_what_else_headers_say(self):
        found = self.one(b"Reply-To: Bob <bob@x>, c@y\nImportance: High\nPriority: urgent\nSensitivity: Company-Confidential\n"
                         b"In-Reply-To: <a@x>\nReferences: <a@x>\n <b@x>\n\nx\n")
        self.assertEqual([found.get(name) for name in ("PR_IMPORTANCE", "PR_PRIORITY", "PR_SENSITIVITY", "PR_REPLY_RECIPIENT_NAMES",
                                                       "0x1042001F", "0x1039001F")], [2, 1, 3, "Bob; c@y", "<a@x>", "<a@x> <b@x>"])
        entries = bytes.fromhex(found["PR_REPLY_RECIPIENT_ENTRIES"])
        self.assertEqual((entries[:4], int.from_bytes(entries[4:8], "little")), (b"\2\0\0\0", len(entries) - 8))
        size = int.from_bytes(entries[8:12], "little")
        first = entries[12:12 + size]
        self.assertEqual(first, bytes(4) + bytes.fromhex("812B1FA4BEA310199D6E00DD010F5402") + b"\0\0\1\x90" +
                         "Bob\0SMTP\0bob@x\0".encode("utf-16-le"))
        second = 12 + -(-size // 4) * 4
        self.assertTrue(entries[second + 4 + 24:].startswith("c@y\0SMTP\0c@y\0".encode("utf-16-le")))
        for header, value in ((b"X-Priority: 1 (Highest)", 2), (b"X-Priority: 3", 1), (b"X-Priority: 5", 0),
                              (b"Importance: low\nX-Priority: 1", 0), (b"X-MSMail-Priority: High", 2)):
            self.assertEqual(self.one(header + b"\n\nx\n")["PR_IMPORTANCE"], value, header)


class Mbox(Mail):
    def test_an_unparsable_message_is_named(self):
        data = b"".join(SEPARATOR + each + b"\n" for each in (
            b"Subject: 1\n\none\n", b"no headers here\nat all\n", b"Subject: 3\n\nthree\n", b"Subject: 4\n\nfour\n"))
        found, done = self.mbox(data, 3)
        self.assertEqual([each["properties"]["PR_SUBJECT"] for each in found], ["1", "3", "4"])
        self.assertEqual(done.out, "3 messages in 1 folder, 1 item skipped\n")
        offset = data.index(SEPARATOR + b"no headers")
        self.one_sentence(done, f", message 2 at offset {offset}: skipped: it is not a mail message")

    def test_prose_with_from_cuts_nothing(self):
        body = (b"text\n\nFrom here on it is prose.\n\nFrom Monday at 10:30 we meet\n\nFrom me\nFrom a@b Fri Jan  2 03:04:05 2026\n"
                b"end\n")
        self.assertEqual(self.bodies(SEPARATOR + b"Subject: 1\n\n" + body + b"\n" + SEPARATOR + b"Subject: 2\n\ntwo\n"),
                         [body.decode().replace("\n", "\r\n"), "two\r\n"])

    def test_separators_of_many_programs(self):
        for line in ("From - Fri Jan 02 03:04:05 2026", "From a@b  Fri Jan  2 03:04 2026", "From a@b Fri Jan  2 03:04:05 CET 2026",
                     "From a@b Fri Jan  2 03:04:05 +0100 2026", "From a@b Fri Jan  2 03:04:05 2026 +0100",
                     "From a b Fri, 2 Jan 2026 03:04:05 +0100 (CET)", "From a@b Fri Jan  2 03:04:05 2026 remote from x",
                     "From 17@xxx Fri Jan 02 03:04:05 +0000 2026", "From a@b Fri Jan  2 03:04:05 96"):
            with self.subTest(line):
                data = b"\n".join([line.encode(), b"Subject: 1", b"", b"one", b"", line.encode(), b"Subject: 2", b"", b"two", b""])
                self.assertEqual(self.bodies(data), ["one\r\n", "two\r\n"])
                self.assertEqual(self.bodies(data.replace(b"\n", b"\r\n")), ["one\r\n", "two\r\n"])

    def test_quoted_lines_lose_one_mark(self):
        self.assertEqual(self.bodies(SEPARATOR + b"Subject: 1\n\n>From a\n>>From b\n> From c\n>Fromage\n"),
                         ["From a\r\n>From b\r\n> From c\r\n>Fromage\r\n"])

    def test_a_matching_content_length_counts(self):
        body = b"one\n\n" + SEPARATOR + b"\n>From quoted\n"
        head = b"Subject: 1\nContent-Length: %d\n\n"
        after = b"\n" + SEPARATOR + b"Subject: 2\n\ntwo\n"
        whole = body.decode().replace("\n", "\r\n")
        self.assertEqual(self.bodies(SEPARATOR + head % len(body) + body + after), [whole, "two\r\n"])
        self.assertEqual(self.bodies(SEPARATOR + head % len(body) + body), [whole], "the end of the file is as good")
        plain = b"one\n>From quoted\n"
        for wrong in (3, len(plain) - 1, len(plain) + 5, 10 ** 12):
            with self.subTest(wrong):
                self.assertEqual(self.bodies(SEPARATOR + head % wrong + plain + after), ["one\r\nFrom quoted\r\n", "two\r\n"])

    def test_the_state_of_messages(self):
        states = [b"Status: RO\n", b"Status: O\n", b"X-Status: AF\nStatus: R\n", b"Status: RO\nX-Status: T\n", b"", b"Status: delivered\n"]
        found, _ = self.mbox(b"".join(SEPARATOR + state + b"Subject: %d\n\nx\n\n" % i for i, state in enumerate(states)))
        flags = [each["properties"]["PR_MESSAGE_FLAGS"] & 9 for each in found]
        self.assertEqual(flags, [1, 0, 1, 9, 1, 1])
        self.assertEqual([found[2]["properties"].get(name) for name in ("0x10810003", "0x10900003")], [102, 2])

    def test_byte_order_mark_and_empty_lines(self):
        self.assertEqual(self.bodies(b"\xef\xbb\xbf\n\n" + SEPARATOR + b"Subject: 1\n\none\n"), ["one\r\n"])

    def test_messages_with_nothing_in_them(self):
        found, done = self.mbox(SEPARATOR + b"\n" + SEPARATOR + b"Subject: 2\n\n" + SEPARATOR + b"Subject: 3", 3)
        self.assertEqual([each["properties"]["PR_SUBJECT"] for each in found], ["2", "3"])
        self.assertIn("message 1 at offset 0: skipped", done.err)

    def test_empty_lines_of_a_message_stay(self):
        self.assertEqual(self.bodies(SEPARATOR + b"Subject: 1\n\none\n\n\n\n" + SEPARATOR + b"Subject: 2\n\ntwo\n\n\n"),
                         ["one\r\n\r\n\r\n", "two\r\n\r\n"])


class Files(Mail):
    def test_files_that_begin_otherwise_are_read(self):
        mail = "Subject: x\n\n\u00fc\n"
        for data in (b"\xef\xbb\xbf" + mail.encode(), b"\n\n" + mail.encode(), SEPARATOR + mail.encode(), b">" + SEPARATOR + mail.encode(),
                     b"\xff\xfe" + mail.encode("utf-16-le"), b"\xfe\xff" + mail.encode("utf-16-be")):
            found = self.one(data)
            self.assertEqual((found["PR_SUBJECT"], found["PR_BODY"]), ("x", "\u00fc\r\n"), data[:20])

    def test_extensions_and_what_is_ignored(self):
        top = self.write("A.EML", b"Subject: A\n\nx\n", "b.Eml", b"Subject: b\n\nx\n", "notes.txt", b"Subject: no\n\nx\n",
                         "sub/c.eml", b"Subject: c\n\nx\n", "sub/d.eml.bak", b"x")
        links = [] if world.WINDOWS else ["/link: ignored: it is a link to a folder"]  # Wine shows links as folders
        for _ in links:
            (top / "link").symlink_to(top / "sub")
        done = self.importer("eml", str(top))
        self.assertEqual(done.out, f"3 messages in 2 folders, {2 + len(links)} files ignored\n")
        for name in (*links, "/notes.txt: ignored: it is not an .eml or .msg file",
                     "/sub/d.eml.bak: ignored: it is not an .eml or .msg file"):
            self.assertIn(name, done.err)
        self.assertEqual([each["properties"]["PR_SUBJECT"] for each in self.saved(top.name)], ["A", "b", "c"])

    def test_one_file(self):
        top = self.write("mail.txt", b"Subject: one\n\nx\n", "other.eml", b"Subject: other\n\nx\n")
        self.assertEqual(self.importer("eml", str(top / "mail.txt")).out, "1 message in 1 folder\n")
        self.assertEqual([each["properties"]["PR_SUBJECT"] for each in self.saved(top.name)], ["one"])
        done = self.check(self.run_tool("zeb-import", "eml", "other.eml", "--inbox", top.name, cwd=top), 0)
        self.assertEqual(done.out, "1 message in 1 folder\n")
        self.assertEqual(self.subjects(), ["other"])

    def test_a_maildir(self):
        top = self.write(f"cur/1.a{INFO}2,S", b"Subject: seen\n\nx\n", f"cur/2.a{INFO}2,", b"Subject: unseen\n\nx\n", f"cur/3.a{INFO}2,DFRS",
                         b"Subject: all\n\nx\n", "new/4.a", b"Subject: new\nStatus: RO\n\nx\n", "tmp/5.a", b"Subject: no\n\nx\n",
                         f".Sent.2020/cur/6.a{INFO}2,S", b"Subject: below\n\nx\n", ".Sent.2020/new/7", b"Subject: below too\n\nx\n",
                         "dovecot-uidlist", b"3")
        done = self.importer("eml", str(top))
        self.assertEqual(done.out, "6 messages in 2 folders, 2 files ignored\n")
        self.assertIn("/tmp/5.a: ignored: it is not yet delivered", done.err)
        self.assertIn("/dovecot-uidlist: ignored", done.err)
        found = {each["properties"]["PR_SUBJECT"]: (each["folder"], each["properties"]["PR_MESSAGE_FLAGS"] & 9) for each in self.saved(top.name)}
        name = top.name
        self.assertEqual(found, {"seen": (name, 1), "unseen": (name, 0), "all": (name, 9), "new": (name, 0),
                                 "below": (name + "/Sent/2020", 1), "below too": (name + "/Sent/2020", 0)})

    def test_one_part_of_a_maildir(self):
        top = self.write(f"cur/1.a{INFO}2,S", b"Subject: seen\n\nx\n", "new/4.a", b"Subject: new\n\nx\n")
        self.assertEqual(self.importer("eml", str(top / "cur")).out, "1 message in 1 folder\n")
        self.assertEqual([each["properties"]["PR_SUBJECT"] for each in self.saved("cur")], ["seen"])
