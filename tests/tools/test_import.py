"""zeb-import on real and on damaged mail."""
import email.message
import email.mime.multipart
import email.mime.text
import json
import mailbox
import re
import subprocess

import world
from world import SAMPLES, World

PST = SAMPLES / "enron.pst"
PERSONAL = "lokay-m/MLOKAY (Non-Privileged)/Personal"
COMMERCIAL = "lokay-m/MLOKAY (Non-Privileged)/TW-Commercial Group"


def mail(subject, text="Hello", **headers):
    made = email.message.EmailMessage()
    made["Subject"] = subject
    made["From"] = "Ada Lovelace <ada@example.org>"
    made["To"] = "Grace Hopper <grace@example.org>, edsger@example.org"
    made["Cc"] = "Group: barbara@example.org;"
    made["Date"] = "Fri, 02 Jan 2026 03:04:05 +0100"
    made["Message-ID"] = "<one@example.org>"
    for name, value in headers.items():
        made[name.replace("_", "-")] = value
    made.set_content(text)
    return made


class Import(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def all_folders(self):
        """Maps the path of every folder to its number of messages."""
        found = {}

        def walk(folders, above):
            for folder in folders:
                path = above + folder["name"]
                found[path] = folder["messages"]
                walk(folder["folders"], path + "/")

        walk(self.folders(), "")
        return found


class Pst(Import):
    def test_everything_goes_in_with_its_folders(self):
        done = self.importer("pst", str(PST))
        self.assertRegex(done.out, r"^71 messages in \d+ folders\n$")
        self.assertEqual(done.err, "")
        folders = self.all_folders()
        self.assertEqual(folders[PERSONAL], 47)
        self.assertEqual(folders[COMMERCIAL], 14)
        self.assertEqual(folders["lokay-m/MLOKAY (Non-Privileged)/Systems"], 7)
        self.assertEqual(folders["lokay-m/MLOKAY (Non-Privileged)/Sent Items"], 2)
        self.assertEqual(folders["lokay-m/MLOKAY (Non-Privileged)"], 1)
        self.assertIn("is intact", self.zeb("store", "check").out)

    def test_folders_become_the_inbox(self):
        self.importer("pst", str(PST), "--inbox", PERSONAL, "--inbox", COMMERCIAL)
        inbox = self.inbox()
        self.assertEqual(inbox["total"], 61)
        self.assertTrue(all(entry["sender"] and entry["date"] for entry in inbox["messages"]))
        self.assertEqual(sum(not entry["subject"] for entry in inbox["messages"]), 1, "one was sent without")
        self.assertNotIn(PERSONAL, self.all_folders())

    def test_another_reader_finds_the_same(self):
        self.importer("pst", str(PST), "--inbox", PERSONAL)
        subprocess.run(["pffexport", "-q", "-t", str(self.folder / "other"), str(PST)], check=True,
                       stdout=subprocess.DEVNULL)
        expected = []
        for file in (self.folder / "other.export").glob("*/" + PERSONAL + "/Message*/OutlookHeaders.txt"):
            text = file.read_text(encoding="utf-8")
            expected.append(re.search(r"^Subject:\t*(.*)$", text, re.M).group(1).strip())
        self.assertEqual(len(expected), 47)
        self.assertEqual(sorted(subject.strip() for subject in self.subjects()), sorted(expected))

    def test_a_parent_brings_its_subfolders(self):
        self.importer("pst", str(PST), "--inbox", "lokay-m/MLOKAY (Non-Privileged)")
        self.assertEqual(self.inbox()["total"], 1)
        self.assertEqual(self.all_folders()["Inbox/Personal"], 47)

    def test_an_ost_file_is_read_too(self):
        done = self.importer("pst", str(SAMPLES / "pstextractortest@outlook.com.ost"))
        self.assertEqual(done.err, "")
        folders = self.all_folders()
        self.assertEqual(folders["Calendar/United States holidays"], 160)

    def test_a_merged_inbox_follows_the_first(self):
        for folders in (("Calendar", "Contacts"), ("Contacts", "Calendar")):
            self.create_profile(folders[0], f"{folders[0]}.zeb")
            self.importer("pst", str(SAMPLES / "pstextractortest@outlook.com.ost"),
                          *[part for folder in folders for part in ("--inbox", folder)])
            # Its own inbox comes before either in the file.
            self.assertEqual(self.shown("Inbox")["PR_CONTAINER_CLASS"], "IPF.Note")

    def test_an_unknown_inbox_folder_is_refused(self):
        done = self.importer("pst", str(PST), "--inbox", "Nowhere", code=1)
        self.assertIn("no folder 'Nowhere'", done.err)
        self.assertIn(PERSONAL, done.err)
        self.assertNotIn("lokay-m", self.all_folders())

    def test_half_a_file_changes_nothing(self):
        before = self.all_folders()
        half = self.folder / "half.pst"
        half.write_bytes(PST.read_bytes()[:PST.stat().st_size // 2])
        self.one_sentence(self.importer("pst", str(half), code=1), ["half.pst", "truncated"])
        self.assertEqual(self.all_folders(), before)

    def test_what_is_no_pst_is_refused(self):
        file = self.folder / "text.pst"
        file.write_text("no such file " * 100)
        self.one_sentence(self.importer("pst", str(file), code=1), ["text.pst", "is not a PST or OST file"])
        self.one_sentence(self.importer("pst", str(self.folder / "absent.pst"), code=1), "absent.pst")
        file.write_bytes(b"!BDN")
        self.one_sentence(self.importer("pst", str(file), code=1), "text.pst")

    def damaged(self, offset):
        """The sample with one block overwritten. Its lock file pins the version, so the offsets are stable."""
        data = bytearray(PST.read_bytes())
        data[offset:offset + 64] = bytes(64)
        file = self.folder / "damaged.pst"
        file.write_bytes(data)
        return str(file)

    def test_a_damaged_message_is_reported(self):
        done = self.importer("pst", self.damaged(0x29C000), code=3)
        self.assertRegex(done.out, r"^70 messages in \d+ folders, 1 item skipped\n$")
        self.one_sentence(done, [PERSONAL + ", message 25: skipped: "])
        self.assertEqual(self.all_folders()[PERSONAL], 46)
        self.assertIn("is intact", self.zeb("store", "check").out)

    def test_a_damaged_attachment_omits_its_message(self):
        done = self.importer("pst", self.damaged(0xD1B040), code=3)
        self.assertRegex(done.out, r"^70 messages in \d+ folders, 1 item skipped\n$")
        self.one_sentence(done, ": skipped: ")
        self.assertEqual(sum(self.all_folders().values()), 70)


class Mime(Import):
    def test_an_mbox_file(self):
        box = mailbox.mbox(self.folder / "some mail.mbox")
        with_parts = mail("Gr\u00fc\u00dfe", "text \u00e4\n")
        with_parts.add_alternative("<p>html</p>", subtype="html")
        with_parts.add_attachment(b"\x00\x01" * 50000, maintype="application", subtype="pdf", filename="d\u00f6c.pdf")
        forwarded = mail("Fwd: inside")
        forwarded.add_attachment(mail("inside"))
        for one in (mail("first"), with_parts, forwarded):
            box.add(one)
        box.flush()
        done = self.importer("mbox", str(self.folder / "some mail.mbox"), "--inbox", "some mail")
        self.assertEqual((done.out, done.err), ("3 messages in 1 folder\n", ""))
        found = {entry["subject"]: entry for entry in self.inbox()["messages"]}
        self.assertEqual(set(found), {"first", "Gr\u00fc\u00dfe", "Fwd: inside"})
        self.assertEqual(found["first"]["sender"], "Ada Lovelace")
        self.assertEqual(found["first"]["date"], "2026-01-02T02:04:05Z")
        self.assertGreater(found["Gr\u00fc\u00dfe"]["size"], 100000)

    def saved(self, folder):
        """The messages of a folder by subject, in the form of zeb save."""
        lines = [json.loads(line) for line in self.zeb("save", folder).out.splitlines()]
        return {line["properties"]["PR_SUBJECT"]: line for line in lines if "properties" in line}

    def test_every_part_has_its_mapi_form(self):
        made = mail("whole", Sender="Secretary <sec@example.org>", Bcc="hidden@example.org", In_Reply_To="<zero@example.org>",
                    References="<a@example.org> <b@example.org>",
                    Received="from x by y; Sat, 03 Jan 2026 00:00:00 +0000")
        made.add_alternative("<p>\u00e4</p>", subtype="html")
        made.add_attachment(b"\x00\x01", maintype="application", subtype="pdf", filename="a.pdf", cid="<part@example.org>")
        made.add_attachment("attached text", filename="b.txt")
        made.add_attachment(mail("inside"))
        top = self.folder / "mail"
        top.mkdir()
        (top / "1.eml").write_bytes(bytes(made))
        bare = email.message.EmailMessage()
        bare["From"] = "bare@example.org"
        bare["Date"] = "Fri, 02 Jan 2026 03:04:05 +0100"
        bare.set_content("Hello")
        (top / "2.eml").write_bytes(bytes(bare))
        self.assertEqual(self.importer("eml", str(top)).out, "2 messages in 1 folder\n")
        found = self.saved("mail")
        whole = found["whole"]["properties"]
        expected = {"PR_SENDER_NAME": "Secretary", "PR_SENDER_EMAIL_ADDRESS": "sec@example.org",
                    "PR_SENT_REPRESENTING_NAME": "Ada Lovelace", "PR_SENT_REPRESENTING_EMAIL_ADDRESS": "ada@example.org",
                    "PR_CLIENT_SUBMIT_TIME": "2026-01-02T02:04:05Z", "PR_MESSAGE_DELIVERY_TIME": "2026-01-03T00:00:00Z",
                    "PR_MESSAGE_CLASS": "IPM.Note", "PR_BODY": "Hello\r\n", "0x3FDE0003": 65001,
                    "0x10130102": "<p>\u00e4</p>\n".encode().hex().upper(), "0x1035001F": "<one@example.org>",
                    "0x1042001F": "<zero@example.org>", "0x1039001F": "<a@example.org> <b@example.org>"}
        self.assertEqual({name: whole.get(name) for name in expected}, expected)
        self.assertEqual(whole["PR_MESSAGE_FLAGS"] & 1, 1, "read")
        self.assertIn("Subject: whole", whole.get("0x007D001F", whole.get("PR_TRANSPORT_MESSAGE_HEADERS", "")))
        people = [{name: each["properties"].get(name) for name in
                   ("PR_RECIPIENT_TYPE", "PR_DISPLAY_NAME", "PR_EMAIL_ADDRESS", "PR_ADDRTYPE")} for each in
                  found["whole"]["recipients"]]
        self.assertEqual([tuple(each.values()) for each in people],
                         [(1, "Grace Hopper", "grace@example.org", "SMTP"), (1, "edsger@example.org", "edsger@example.org", "SMTP"),
                          (2, "barbara@example.org", "barbara@example.org", "SMTP"),
                          (3, "hidden@example.org", "hidden@example.org", "SMTP")])
        pdf, text, inside = found["whole"]["attachments"]
        expected = {"PR_ATTACH_METHOD": 1, "PR_ATTACH_LONG_FILENAME": "a.pdf", "PR_DISPLAY_NAME": "a.pdf",
                    "0x370E001F": "application/pdf", "0x3712001F": "part@example.org", "PR_ATTACH_DATA_BIN": "0001"}
        self.assertEqual({name: pdf["properties"].get(name) for name in expected}, expected)
        self.assertEqual((text["properties"]["PR_ATTACH_LONG_FILENAME"], bytes.fromhex(text["properties"]["PR_ATTACH_DATA_BIN"])),
                         ("b.txt", b"attached text\n"))
        self.assertEqual((inside["properties"]["PR_ATTACH_METHOD"], inside["message"]["properties"]["PR_SUBJECT"]), (5, "inside"))
        plain = found[""]["properties"]
        self.assertEqual((plain["PR_SENDER_NAME"], plain["PR_SENDER_EMAIL_ADDRESS"], plain["PR_SENT_REPRESENTING_NAME"]),
                         ("bare@example.org",) * 3)
        self.assertEqual(plain["PR_MESSAGE_DELIVERY_TIME"], "2026-01-02T02:04:05Z", "as when it was sent")

    def test_files_come_in_name_order(self):
        bad = " " if world.WINDOWS else "\u001b"  # a name on Windows has no control characters
        top = self.folder / "mail"
        for name in ("c", "b", "a"):
            (top / name).mkdir(parents=True)
            (top / name / "1.eml").write_bytes(bytes(mail(name)))
            (top / f"{name}.eml").write_bytes(bytes(mail(f"top {name}")))
        (top / "notes.txt").write_bytes(bytes(mail("no mail")))
        if not world.WINDOWS:  # Wine shows links as folders
            (top / "z").symlink_to(top / "a")
        (top / f"x{bad}.eml").write_bytes(b"no mail")
        done = self.importer("eml", f"{top}/", code=3)
        self.assertEqual(done.out, "6 messages in 4 folders, 1 item skipped, " + ("1 file" if world.WINDOWS else "2 files") + " ignored\n")
        self.assertIn("/x .eml: skipped: it is not a mail message\n", done.err)
        found = [json.loads(line) for line in self.zeb("save", "mail").out.splitlines()]
        self.assertEqual([line["properties"]["PR_SUBJECT"] for line in found if "properties" in line],
                         ["top a", "top b", "top c", "a", "b", "c"])
        self.refused("find", "/mail", saying="there is no folder '/mail'")
        self.assertIn("no folder '/mail'", self.importer("eml", str(top), "--inbox", "/mail", code=1).err)

    def test_inbox_folders_come_in_name_order(self):
        for name in ("c", "b", "a"):
            (self.folder / "mail" / name).mkdir(parents=True)
            (self.folder / "mail" / name / "1.eml").write_bytes(bytes(mail(name)))
        self.importer("eml", str(self.folder / "mail"), "--inbox", "mail/c", "--inbox", "mail/a", "--inbox", "mail/b")
        self.assertEqual([(each["number"], each["subject"]) for each in self.found("Inbox", "--sort", "subject")],
                         [(1, "a"), (2, "b"), (3, "c")])

    def test_attached_or_second_text_is_attached(self):
        top = self.folder / "mail"
        top.mkdir()
        page = email.message.EmailMessage()
        page["Subject"] = "page"
        page.set_content("<p>page</p>", subtype="html")
        page.add_attachment("not the body", filename="b.txt")
        (top / "1.eml").write_bytes(bytes(page))
        two = email.mime.multipart.MIMEMultipart()
        two["Subject"] = "two"
        two.attach(email.mime.text.MIMEText("one"))
        two.attach(email.mime.text.MIMEText("other"))
        (top / "2.eml").write_bytes(bytes(two))
        self.importer("eml", str(top))
        found = self.saved("mail")
        self.assertEqual(found["page"]["properties"]["PR_BODY"], "page\r\n")
        self.assertEqual(found["two"]["properties"]["PR_BODY"], "one")
        for subject, data in (("page", b"not the body\n"), ("two", b"other")):
            self.assertEqual([bytes.fromhex(each["properties"]["PR_ATTACH_DATA_BIN"]) for each in found[subject]["attachments"]],
                             [data])

    def test_a_skipped_mail_has_its_number(self):
        box = mailbox.mbox(self.folder / "some.mbox")
        whole = mail("inmost")
        for _ in range(33):
            outer = mail("outer")
            outer.add_attachment(whole)
            whole = outer
        for one in (mail("first"), whole, mail("third")):
            box.add(one)
        box.flush()
        done = self.importer("mbox", str(self.folder / "some.mbox"), code=3)
        self.assertEqual(done.out, "2 messages in 1 folder, 1 item skipped\n")
        offset = (self.folder / "some.mbox").read_bytes().index(b"Subject: outer")
        told = re.search(r"some\.mbox, message 2 at offset (\d+): skipped: ", self.one_sentence(done, "some.mbox").err)
        self.assertTrue(told and 0 < offset - int(told[1]) < 100, done.err)

    def test_mails_nest_at_most_32_deep(self):
        top = self.folder / "mail"
        top.mkdir()
        for depth in (32, 33):
            whole = mail("inmost")
            for _ in range(depth):
                outer = mail(f"outer {depth}")
                outer.add_attachment(whole)
                whole = outer
            (top / f"{depth}.eml").write_bytes(bytes(whole))
        done = self.importer("eml", str(top), code=3)
        self.assertEqual(done.out, "1 message in 1 folder, 1 item skipped\n")
        self.one_sentence(done, ["33.eml: skipped: ", "more than 32 deep"])

    def test_an_mbox_file_is_a_folder(self):
        box = mailbox.mbox(self.folder / "old.mbox")
        box.add(mail("a"))
        box.flush()
        self.importer("mbox", str(self.folder / "old.mbox"))
        self.assertEqual(self.all_folders()["old"], 1)

    def test_what_is_no_mbox_is_refused(self):
        file = self.folder / "text.mbox"
        file.write_text("Just text\n")
        self.one_sentence(self.importer("mbox", str(file), code=1), ["text.mbox", "is not an mbox"])
        self.one_sentence(self.importer("mbox", str(self.folder / "absent.mbox"), code=1), "absent.mbox")

    def test_a_folder_of_eml_files(self):
        top = self.folder / "mail"
        (top / "sub").mkdir(parents=True)
        (top / "a.eml").write_bytes(bytes(mail("in the top")))
        (top / "sub" / "b.eml").write_bytes(bytes(mail("below")))
        (top / "notes.txt").write_text("no mail")
        done = self.importer("eml", str(top), "--inbox", "mail")
        self.assertEqual(done.out, "2 messages in 2 folders, 1 file ignored\n")
        self.one_sentence(done, "/notes.txt: ignored: ")
        self.assertEqual(self.subjects(), ["in the top"])
        self.assertEqual(self.all_folders()["Inbox/sub"], 1)

    def test_a_damaged_eml_file_is_skipped(self):
        top = self.folder / "mail"
        top.mkdir()
        (top / "1.eml").write_bytes(bytes(mail("good")))
        (top / "2.eml").write_bytes(b"\x00\x01\x02 this is no mail")
        (top / "3.eml").write_bytes(b"")
        (top / "4.eml").write_bytes(b"a b: c\n\nx")
        done = self.importer("eml", str(top), "--inbox", "mail", code=3)
        self.assertEqual(done.out, "1 message in 1 folder, 3 items skipped\n")
        self.assertRegex(done.err, r"2\.eml: skipped: .*\n.*3\.eml: skipped: .*\n.*4\.eml: skipped: ")
        self.assertEqual(self.subjects(), ["good"])

    def test_a_missing_folder_is_named(self):
        self.one_sentence(self.importer("eml", str(self.folder / "absent"), code=1), "absent")


class Usage(World):
    def test_wrong_usage_ends_with_2(self):
        for arguments in ([], ["pst"], ["tar", "x"], ["pst", "a", "--nonsense"]):
            with self.subTest(arguments=arguments):
                self.importer(*arguments, code=2)

    def test_help_lists_the_exit_codes(self):
        self.assertIn("3 done except", self.importer("--help").out)

    def test_without_a_profile_nothing_is_imported(self):
        self.one_sentence(self.importer("pst", str(PST), code=1), "no default profile")
