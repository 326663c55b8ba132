"""The text and JSON output of zeb inbox, find and folders."""
import json

import world
from world import World, message


def dated(subject, day, **properties):
    return message(subject, f"2026-01-{day:02}T00:00:00Z", **properties)


class Lines(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def line(self, each, sender, number=None):
        """The text line of a message that is listed as a JSON object."""
        date = (each["date"] or "").replace("T", " ").rstrip("Z")
        begin = "" if number is None else f"{number:>7}  "
        return f"{begin}{date:<19}  {sender}  {each['size']:>10,}  {each['subject']}"

    def test_columns_are_padded_cut_and_aligned(self):
        wide, combining = "\u4f60" * 60, "e\u0301" * 20
        self.load(dated("cut", 9, PR_SENDER_NAME=wide, PR_BODY="x" * 800_000), dated("del\u007fete", 8, PR_SENDER_NAME=combining),
                  {"folder": "Inbox", "properties": {"PR_SUBJECT": "bare"}},
                  dated("28", 7, PR_SENDER_NAME="s" * 28), dated("29", 6, PR_SENDER_NAME="s" * 29))
        senders = ["\u4f60" * 13 + "\u2026 ", combining + " " * 8, "s" * 28, "s" * 27 + "\u2026", " " * 28]
        listed = self.inbox()["messages"]
        self.assertEqual([each["subject"] for each in listed], ["cut", "del\u007fete", "28", "29", "bare"])
        self.assertGreater(listed[0]["size"], 1_000_000)
        lines = self.zeb("inbox").out.splitlines()
        self.assertEqual(lines[0], f"{'date (local)':<19}  {'sender':<28}  {'size':>10}  subject")
        shown = [self.line(each, sender).replace("\u007f", " ") for each, sender in zip(listed, senders)]
        self.assertEqual(lines[1:], [*shown, "5 messages"])
        numbers = [1, 2, 4, 5, 3]
        shown = [self.line(each, sender, number).replace("\u007f", " ")
                 for each, sender, number in zip(listed, senders, numbers)]
        self.assertEqual(self.zeb("find", "Inbox").out.splitlines()[1:], [*shown, "5 messages"])

    def test_columns_have_the_widths_of_unicode(self):
        watch, pointed = "\u231a", "\u05d0\u05b0"
        self.load(dated("wide", 9, PR_SENDER_NAME=watch * 20), dated("marks", 8, PR_SENDER_NAME=pointed * 20))
        shown = [self.line(each, sender) for each, sender in
                 zip(self.inbox()["messages"], [watch * 13 + "\u2026 ", pointed * 20 + " " * 8])]
        self.assertEqual(self.zeb("inbox").out.splitlines()[1:], [*shown, "2 messages"])

    def test_objects_say_more_than_lines(self):
        self.load({"folder": "Inbox", "properties": {"PR_SUBJECT": "a", "PR_MESSAGE_FLAGS": 0}},
                  dated("b", 1, PR_MESSAGE_FLAGS=1, PR_SENDER_NAME="Ada"))
        listed = self.inbox()["messages"]
        self.assertEqual([list(each) for each in listed], [["date", "sender", "size", "subject", "unread", "entryId"]] * 2)
        self.assertEqual([(each["date"], each["sender"], each["subject"], each["unread"]) for each in listed],
                         [("2026-01-01T00:00:00Z", "Ada", "b", False), (None, "", "a", True)])
        for each in listed:
            self.assertEqual(self.shown(each["entryId"])["PR_SUBJECT"], each["subject"])
            self.assertEqual(self.shown(each["entryId"])["PR_MESSAGE_SIZE"], each["size"])
        self.assertEqual([list(each) for each in self.found("Inbox")], [["folder", "number", *listed[0]]] * 2)

    def test_long_lists_have_rows_in_lines(self):
        self.load(dated("a \u4f60", 1), dated('"b"', 2))
        for arguments, before, after in ((["inbox"], {"total": 2}, {}), (["find", "Inbox"], {}, {"found": 2, "searched": 2}),
                                         (["find", "Inbox", "--subject", "x"], {}, {"found": 0, "searched": 2}),
                                         (["ab", "list", "Contacts"], {"container": "Contacts", "total": 0}, {})):
            out = self.zeb(*arguments, "--json").out
            name = "entries" if arguments[0] == "ab" else "messages"
            rows = [json.dumps(each, separators=(",", ":"), ensure_ascii=False) for each in json.loads(out)[name]]
            body = "[" + ",".join("\n    " + row for row in rows) + ("\n  ]" if rows else "]")
            members = [f'"{key}": {json.dumps(value)}' for key, value in {"version": 1, **before}.items()] + [f'"{name}": {body}']
            members += [f'"{key}": {value}' for key, value in after.items()]
            self.assertEqual(out, "{\n  " + ",\n  ".join(members) + "\n}\n")

    def test_a_short_list_is_indented(self):
        self.load(dated("a", 1, folder="Inbox/Sub"))
        for arguments in (["name"], ["name", "0x80040111"], ["profile", "list"], ["provider", "status"], ["stores"],
                          ["folders"], ["ab", "list"], ["show", "Inbox"], ["show", "Inbox/Sub", "1"]):
            out = self.zeb(*arguments, "--json").out
            self.assertEqual(out, json.dumps(json.loads(out), indent=2, ensure_ascii=False) + "\n")

    def test_equals_sort_by_date_then_subject(self):
        self.load(dated("same", 1), dated("same", 3), dated("same", 2), dated("dame", 2), dated("tame", 2))
        date = lambda each: (each["subject"], each["date"][8:10])
        self.assertEqual({each["size"] for each in self.inbox()["messages"]}, {self.inbox()["messages"][0]["size"]})
        for command in (self.inbox, lambda *more: {"messages": self.found("Inbox", *more)}):
            by_date = [("same", "03"), ("dame", "02"), ("same", "02"), ("tame", "02"), ("same", "01")]
            self.assertEqual([date(each) for each in command()["messages"]], by_date)
            self.assertEqual([date(each) for each in command("--sort", "size")["messages"]], by_date)
            self.assertEqual([date(each) for each in command("--sort", "subject")["messages"]],
                             [("dame", "02"), ("same", "03"), ("same", "02"), ("same", "01"), ("tame", "02")])

    def test_delivery_time_replaces_submit_time(self):
        bare = {"folder": "Inbox", "properties": {"PR_SUBJECT": "b", "PR_MESSAGE_DELIVERY_TIME": "2026-01-05T06:07:08Z"}}
        self.load(dated("a", 9, PR_MESSAGE_DELIVERY_TIME="2026-01-20T00:00:00Z"), bare,
                  {"folder": "Inbox", "properties": {"PR_SUBJECT": "c"}})
        self.assertEqual([(each["subject"], each["date"]) for each in self.inbox()["messages"]],
                         [("a", "2026-01-09T00:00:00Z"), ("b", "2026-01-05T06:07:08Z"), ("c", None)])
        # After those with a submit time, the latest first.
        later = {"PR_SUBJECT": "later", "PR_MESSAGE_DELIVERY_TIME": "2026-01-07T00:00:00Z"}
        self.load(bare | {"folder": "Sorted"}, dated("d", 3, folder="Sorted"), {"folder": "Sorted", "properties": later})
        self.assertEqual([each["subject"] for each in self.found("Sorted")], ["d", "later", "b"])
        self.assertIn("2026-01-05 06:07:08", self.zeb("inbox").out)
        since = lambda *conditions: [each["subject"] for each in self.found("Inbox", *conditions)]
        self.assertEqual(since("--since", "2026-01-05T06:07:08Z"), ["a", "b"])
        self.assertEqual(since("--since", "2026-01-05T06:07:09Z"), ["a"])
        self.assertEqual(since("--until", "2026-01-05"), ["b"])
        self.assertEqual(since("--since", "2026-01-10T00:00:00Z"), [])

    def test_one_is_no_plural(self):
        self.load(dated("a", 1), dated("b", 2, folder="Sub"), dated("c", 3, folder="Sub"))
        self.assertEqual(self.zeb("inbox").out.splitlines()[-1], "1 message")
        self.assertEqual(self.zeb("find", "Inbox").out.splitlines()[-1], "1 message")
        self.assertEqual(self.zeb("find", "Sub", "--subject", "b").out.splitlines()[-1], "1 of 2 messages matched")
        self.assertEqual(self.zeb("find", "Sub", "--subject", "d").out, "0 of 2 messages matched\n")

    def test_the_limit_spans_all_folders(self):
        self.load(*[dated(each, 1, folder=folder) for folder in ("Top", "Top/One", "Top/Two") for each in "ab"])
        self.assertEqual([(each["folder"], each["subject"]) for each in self.found("Top", "-r", "--limit", "3")],
                         [("Top", "a"), ("Top", "b"), ("Top/One", "a")])
        lines = self.zeb("find", "Top", "-r", "--limit", "3").out.splitlines()
        heading = lines[1]
        self.assertTrue(heading.startswith("      #  date (local) "), heading)
        self.assertEqual(lines, ["Top", heading, lines[2], lines[3], "", "Top/One", heading, lines[7], "3 of 6 messages"])

    def test_more_messages_than_one_call_reads(self):
        count = 1_203 if world.WINDOWS else 5_203
        self.load(*[message(f"subject {i:04}") for i in range(count)])
        found = self.found("Inbox", "--sort", "subject")
        self.assertEqual([(each["number"], each["subject"]) for each in found],
                         [(i + 1, f"subject {i:04}") for i in range(count)])
        self.assertEqual(self.zeb("find", "Inbox").out.splitlines()[-1], f"{count:,} messages")


class Folders(World):
    def test_the_tree_is_sorted_and_counted(self):
        self.create_profile()
        self.load(dated("a", 1, folder="Inbox/Sub/Deep", PR_MESSAGE_FLAGS=0), dated("b", 1, folder="Inbox/Sub/Deep"),
                  dated("c", 1, folder="Inbox/Other"), dated("d", 1, folder="Zoo/Last"))
        if not world.WINDOWS:
            self.environment["LC_ALL"] = "C"  # under Wine this would hide the store, whose path is not ASCII
        shown = self.zeb("folders").out
        self.assertEqual(shown.splitlines(), [
            "zebstore", "|- Contacts  0", "|- Deleted Items  0", "|- Inbox  0", "|  |- Other  1", "|  `- Sub  0",
            "|     `- Deep  2 (1 unread)", "|- Outbox  0", "|- Sent Items  0", "`- Zoo  0", "   `- Last  1", "10 folders"])
        found = json.loads(self.zeb("folders", "--json").out)
        self.assertEqual(found["store"], "zebstore")
        inbox = found["folders"][2]
        self.assertEqual([each["name"] for each in inbox["folders"]], ["Other", "Sub"])
        deep = inbox["folders"][1]["folders"][0]
        self.assertEqual((deep["name"], deep["messages"], deep["unread"], deep["folders"]), ("Deep", 2, 1, []))
        self.assertEqual(self.shown(deep["entryId"])["PR_DISPLAY_NAME"], "Deep")
