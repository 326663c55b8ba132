"""zeb-import on real and on damaged mail."""
import email.message
import mailbox
import re
import subprocess

import world
from world import SAMPLES, World

LINUX_ONLY = True  # as zeb-import is
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
        """Path of every folder, and how many messages are in it."""
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
        self.assertIn("is sound", self.zeb("store", "check").out)

    def test_folders_become_the_inbox(self):
        self.importer("pst", str(PST), "--inbox", PERSONAL, "--inbox", COMMERCIAL)
        inbox = self.inbox()
        self.assertEqual(inbox["total"], 61)
        self.assertTrue(all(entry["sender"] and entry["date"] for entry in inbox["messages"]))
        self.assertEqual(sum(not entry["subject"] for entry in inbox["messages"]), 1, "one was sent without")
        self.assertNotIn(PERSONAL, self.all_folders())

    def test_the_subjects_and_dates_are_those_that_another_reader_finds(self):
        self.importer("pst", str(PST), "--inbox", PERSONAL)
        subprocess.run(["pffexport", "-q", "-t", str(self.folder / "other"), str(PST)], check=True,
                       stdout=subprocess.DEVNULL)
        expected = []
        for file in (self.folder / "other.export").glob("*/" + PERSONAL + "/Message*/OutlookHeaders.txt"):
            text = file.read_text(encoding="utf-8")
            expected.append(re.search(r"^Subject:\t*(.*)$", text, re.M).group(1).strip())
        self.assertEqual(len(expected), 47)
        self.assertEqual(sorted(subject.strip() for subject in self.subjects()), sorted(expected))

    def test_a_folder_above_the_inbox_brings_its_subfolders_along(self):
        self.importer("pst", str(PST), "--inbox", "lokay-m/MLOKAY (Non-Privileged)")
        self.assertEqual(self.inbox()["total"], 1)
        self.assertEqual(self.all_folders()["Inbox/Personal"], 47)

    def test_an_ost_file_is_read_too(self):
        done = self.importer("pst", str(SAMPLES / "pstextractortest@outlook.com.ost"))
        self.assertEqual(done.err, "")
        folders = self.all_folders()
        self.assertEqual(folders["Calendar/United States holidays"], 160)

    def test_an_unknown_inbox_folder_is_refused_with_those_there_are(self):
        done = self.importer("pst", str(PST), "--inbox", "Nowhere", code=1)
        self.assertIn("no folder 'Nowhere'", done.err)
        self.assertIn(PERSONAL, done.err)
        self.assertNotIn("lokay-m", self.all_folders())

    def test_a_file_cut_in_half_is_one_sentence_and_the_store_as_it_was(self):
        before = self.all_folders()
        half = self.folder / "half.pst"
        half.write_bytes(PST.read_bytes()[:PST.stat().st_size // 2])
        self.one_sentence(self.importer("pst", str(half), code=1), ["half.pst", "cut short"])
        self.assertEqual(self.all_folders(), before)

    def test_what_is_no_pst_is_refused(self):
        file = self.folder / "text.pst"
        file.write_text("no such file " * 100)
        self.one_sentence(self.importer("pst", str(file), code=1), ["text.pst", "no PST or OST file"])
        self.one_sentence(self.importer("pst", str(self.folder / "absent.pst"), code=1), "absent.pst")
        file.write_bytes(b"!BDN")
        self.one_sentence(self.importer("pst", str(file), code=1), "text.pst")

    def damaged(self, offset):
        """The sample with one block of it wiped out. Its lock file pins it, so offsets stay."""
        data = bytearray(PST.read_bytes())
        data[offset:offset + 64] = bytes(64)
        file = self.folder / "damaged.pst"
        file.write_bytes(data)
        return str(file)

    def test_a_damaged_message_is_reported_with_its_path_and_the_rest_goes_in(self):
        done = self.importer("pst", self.damaged(0x29C000), code=3)
        self.assertRegex(done.out, r"^70 messages in \d+ folders, 1 item skipped\n$")
        self.one_sentence(done, [PERSONAL + ", message 25: skipped: "])
        self.assertEqual(self.all_folders()[PERSONAL], 46)
        self.assertIn("is sound", self.zeb("store", "check").out)

    def test_a_message_with_a_damaged_attachment_does_not_get_in_by_half(self):
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

    def test_an_mbox_file_is_a_folder_of_its_own(self):
        box = mailbox.mbox(self.folder / "old.mbox")
        box.add(mail("a"))
        box.flush()
        self.importer("mbox", str(self.folder / "old.mbox"))
        self.assertEqual(self.all_folders()["old"], 1)

    def test_what_is_no_mbox_is_refused(self):
        file = self.folder / "text.mbox"
        file.write_text("Just text\n")
        self.one_sentence(self.importer("mbox", str(file), code=1), ["text.mbox", "no mbox"])
        self.one_sentence(self.importer("mbox", str(self.folder / "absent.mbox"), code=1), "absent.mbox")

    def test_a_folder_of_eml_files(self):
        top = self.folder / "mail"
        (top / "sub").mkdir(parents=True)
        (top / "a.eml").write_bytes(bytes(mail("in the top")))
        (top / "sub" / "b.eml").write_bytes(bytes(mail("below")))
        (top / "notes.txt").write_text("no mail")
        done = self.importer("eml", str(top), "--inbox", "mail")
        self.assertEqual(done.out, "2 messages in 2 folders\n")
        self.assertEqual(self.subjects(), ["in the top"])
        self.assertEqual(self.all_folders()["Inbox/sub"], 1)

    def test_a_damaged_eml_file_is_reported_and_skipped(self):
        top = self.folder / "mail"
        top.mkdir()
        (top / "1.eml").write_bytes(bytes(mail("good")))
        (top / "2.eml").write_bytes(b"\x00\x01\x02 this is no mail")
        (top / "3.eml").write_bytes(b"")
        done = self.importer("eml", str(top), "--inbox", "mail", code=3)
        self.assertEqual(done.out, "1 message in 1 folder, 2 items skipped\n")
        self.assertRegex(done.err, r"2\.eml: skipped: .*\n.*3\.eml: skipped: ")
        self.assertEqual(self.subjects(), ["good"])

    def test_a_missing_folder_is_named(self):
        self.one_sentence(self.importer("eml", str(self.folder / "absent"), code=1), "absent")


class Usage(World):
    def test_wrong_usage_ends_with_2(self):
        for arguments in ([], ["pst"], ["tar", "x"], ["pst", "a", "--nonsense"]):
            with self.subTest(arguments=arguments):
                self.importer(*arguments, code=2)

    def test_help_tells_the_exit_codes(self):
        self.assertIn("3 done but", self.importer("--help").out)

    def test_without_a_profile_nothing_is_imported(self):
        self.one_sentence(self.importer("pst", str(PST), code=1), "no default profile")
