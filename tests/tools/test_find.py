"""zeb find: conditions, their combination, and the message numbers that other commands accept."""
import json

from world import World, message


class Find(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(
            message("Budget 2026", "2026-01-05T00:00:00Z", PR_SENDER_NAME="Ada", PR_MESSAGE_FLAGS=0),
            message("Lunch", "2026-01-03T12:00:00Z", PR_SENDER_NAME="Grace", PR_SENDER_EMAIL_ADDRESS="grace@ada.example",
                    PR_BODY="x" * 20000),
            message("the budget, again", "2026-01-04T23:59:59Z", PR_SENDER_NAME="Edsger", PR_MESSAGE_CLASS="IPM.Task.Budget"),
            message("Early", "2026-01-02T00:00:00Z", PR_SENDER_NAME="Barbara") | {"attachments": [
                {"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": "00"}}]},
            message("Budget below", "2026-01-01T00:00:00Z", folder="Inbox/Sub", PR_SENDER_NAME="Ada"),
            {**message("Budget hidden"), "associated": True})

    def numbers(self, *conditions):
        return [each["number"] for each in self.found("Inbox", *conditions)]

    def test_each_condition_finds_its_messages(self):
        self.assertEqual(self.numbers("--subject", "BUDGET"), [1, 3])
        self.assertEqual(self.numbers("--from", "ada"), [1, 2])
        self.assertEqual(self.numbers("--since", "2026-01-04T23:59:59Z"), [1, 3])
        self.assertEqual(self.numbers("--until", "2026-01-03"), [2, 4])
        self.assertEqual(self.numbers("--until", "2026-01-03T11:59:59Z"), [4])
        self.assertEqual(self.numbers("--size", "20k"), [2])
        self.assertEqual(self.numbers("--max-size", "20k"), [1, 3, 4])
        self.assertEqual(self.numbers("--class", "ipm.task"), [3])
        self.assertEqual(self.numbers("--class", "task"), [])
        self.assertEqual(self.numbers("--unread"), [1])
        self.assertEqual(self.numbers("--attachments"), [4])

    def test_from_prefers_author_over_sender(self):
        self.load(message("Minutes", "2026-01-06T00:00:00Z", PR_SENDER_NAME="Secretary", PR_SENDER_EMAIL_ADDRESS="office@x",
                          PR_SENT_REPRESENTING_NAME="Konrad Z\u00fcrn", PR_SENT_REPRESENTING_EMAIL_ADDRESS="kz@y"))
        for text, found in (("konrad", ["Minutes"]), ("Z\u00dcRN", ["Minutes"]), ("KZ@Y", ["Minutes"]), ("secretary", []),
                            ("office@x", []), ("grace", ["Lunch"])):
            self.assertEqual([each["subject"] for each in self.found("Inbox", "--from", text)], found, text)

    def test_conditions_hold_together_or_each(self):
        self.assertEqual(self.numbers("--subject", "budget", "--from", "ada"), [1])
        self.assertEqual(self.numbers("--subject", "budget", "--from", "ada", "--or"), [1, 3, 2])
        self.assertEqual(self.numbers("--subject", "nowhere", "--size", "20k", "--or"), [2])

    def test_without_a_condition_everything_is_listed(self):
        self.assertEqual(self.numbers(), [1, 3, 2, 4])
        self.assertEqual(self.numbers("--sort", "subject"), [1, 4, 2, 3])
        self.assertEqual([each["number"] for each in self.found("Inbox", "--associated")], [1])

    def test_the_listing_is_aligned_and_counted(self):
        lines = self.zeb("find", "Inbox", "--subject", "budget").out.splitlines()
        at = lines[0].index("subject")
        self.assertEqual([line[at:] for line in lines[1:3]], ["Budget 2026", "the budget, again"])
        self.assertEqual([line.split()[0] for line in lines[:3]], ["#", "1", "3"])
        self.assertEqual(lines[3:], ["2 of 4 messages matched"])
        self.assertEqual(self.zeb("find", "Inbox", "--limit", "1").out.splitlines()[-1], "1 of 4 messages")

    def test_folders_below_are_searched_when_asked(self):
        found = json.loads(self.zeb("find", "Inbox", "--subject", "budget", "-r", "--json").out)
        self.assertEqual([(each["folder"], each["number"]) for each in found["messages"]],
                         [("Inbox", 1), ("Inbox", 3), ("Inbox/Sub", 1)])
        self.assertEqual((found["found"], found["searched"]), (3, 5))
        shown = self.zeb("find", "Inbox", "--subject", "budget", "-r").out
        self.assertIn("\n\nInbox/Sub\n", shown)
        self.assertIn("3 of 5 messages matched\n", shown)

    def test_bad_dates_sizes_and_folders(self):
        self.refused("find", "Inbox", "--since", "tomorrow", code=2, saying=["--since", "'tomorrow'"])
        self.refused("find", "Inbox", "--until", "2026-02-30", code=2, saying=["--until", "'2026-02-30'"])
        self.refused("find", "Inbox", "--size=-1", code=2, saying=["--size", "'-1'"])
        self.refused("find", "Inbox", "--max-size", "9999999999999999999999k", code=2, saying="--max-size")
        self.refused("find", "Nowhere/Else", saying="'Nowhere'")

    def test_conditions_on_more_parts(self):
        self.load({**message("Plan", "2026-01-07T00:00:00Z", PR_SENDER_NAME="Zed", PR_BODY="Soup and GRÜSSE", **{"0x10900003": 2}),
                   "recipients": [{"properties": {"PR_RECIPIENT_TYPE": 2, "PR_DISPLAY_NAME": "Bob Çelik", "PR_EMAIL_ADDRESS": "bob@example.org"}},
                                  {"properties": {"PR_RECIPIENT_TYPE": 1, "PR_DISPLAY_NAME": "Dan", "0x39FE001F": "dan@smtp.example"}}]})
        def subjects(*conditions):
            return [each["subject"] for each in self.found("Inbox", *conditions)]
        for text in ("çelik", "BOB@example", "dan@smtp"):
            self.assertEqual(subjects("--to", text), ["Plan"], text)
        self.assertEqual(subjects("--to", "zed"), [])
        self.assertEqual(subjects("--body", "grüsse"), ["Plan"])
        self.assertEqual(subjects("--flag"), ["Plan"])
        for text in ("plan", "soup", "ZED", "bob çel"):
            self.assertEqual(subjects("--text", text), ["Plan"], text)
        self.assertEqual(subjects("--not", "--text", "soup"), ["Budget 2026", "the budget, again", "Lunch", "Early"])
        self.assertEqual(subjects("--not", "--subject", "budget", "--from", "ada"), ["Plan", "the budget, again", "Lunch", "Early"])
        self.assertEqual(subjects("--not", "--subject", "budget", "--from", "ada", "--or"), ["Plan", "Early"])
        self.refused("find", "Inbox", "--not", saying="--not needs a condition", code=2)

    def test_any_property_is_compared(self):
        self.load(message("Odd", "2026-01-08T00:00:00Z", PR_IMPORTANCE=2, PR_START_DATE="2026-05-01T00:00:00Z",
                          **{"{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503": 7, "0x6801101F": ["a", "b"], "0x68020003": -5}))
        def subjects(*conditions):
            return [each["subject"] for each in self.found("Inbox", *sum((["--where", each] for each in conditions), []))]
        for condition in ("PR_IMPORTANCE = 2", "PR_IMPORTANCE=2", "PR_IMPORTANCE > 1", "PR_IMPORTANCE >= 2", "PR_START_DATE > 2026-04-30", "0x68020003 < 0",
                          "{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503 = 7", "PR_SUBJECT ~ ODD", "PR_SUBJECT = Odd", "PR_START_DATE"):
            self.assertEqual(subjects(condition), ["Odd"], condition)
        self.assertEqual(subjects("PR_MESSAGE_SIZE > 20K"), ["Lunch"])
        self.assertEqual(subjects("PR_MESSAGE_SIZE < 20K", "PR_SENDER_NAME != Ada"), ["the budget, again", "Early"])
        self.assertEqual(subjects("0x68020003 > 0"), [])
        for condition, saying in (("PR_NONSENSE > 1", "PR_NONSENSE"), ("PR_IMPORTANCE ! 2", "operators"), ("PR_IMPORTANCE > much", "PR_IMPORTANCE"),
                                  ("PR_IMPORTANCE ~ 2", "only texts"), ("0x6801101F = a", "several values"), ("= 2", "")):
            self.refused("find", "Inbox", "--where", condition, saying=saying, code=2)

    def test_orders_offsets_and_reverse(self):
        def subjects(*options):
            return [each["subject"] for each in self.found("Inbox", *options)]
        self.assertEqual(subjects("--sort", "sender"), ["Budget 2026", "Early", "the budget, again", "Lunch"])
        self.assertEqual(subjects("--sort", "sender", "--reverse"), ["Lunch", "the budget, again", "Early", "Budget 2026"])
        self.assertEqual(subjects("--sort", "class")[-1], "the budget, again")
        self.assertEqual(subjects("--reverse"), ["Early", "Lunch", "the budget, again", "Budget 2026"])
        self.assertEqual(subjects("--offset", "1", "--limit", "2"), ["the budget, again", "Lunch"])
        self.assertEqual(subjects("--offset", "9"), [])
        self.assertEqual(subjects("--offset", "3", "--recursive"), ["Early", "Budget below"])
        self.assertEqual(subjects("--offset", "4", "--recursive"), ["Budget below"])

    def test_what_is_found_is_changed(self):
        ids = self.zeb("find", "Inbox", "--subject", "budget", "--recursive", "--ids").out
        self.assertEqual([len(line) for line in ids.splitlines()], [108] * 3)
        self.assertEqual(self.zeb("cp", "-", "Outbox", given=ids).out, "3 messages copied to folder 'Outbox'\n")
        copies = self.zeb("find", "Outbox", "--ids").out
        exported = json.loads(self.zeb("export", "json", "-", given=copies).out)["messages"]
        self.assertEqual(len(exported), 3)
        self.assertEqual(self.zeb("mv", "-", "Sent Items", given=copies.replace("\n", "\r\n\r\n")).out, "3 messages moved to folder 'Sent Items'\n")
        self.assertEqual(self.zeb("rm", "-", "--hard", "--yes", given=ids).out, "3 messages deleted permanently\n")
        self.assertEqual(self.found("Inbox", "--subject", "budget", "--recursive"), [])
        self.refused("rm", "-", saying="no message is given", code=2, given="\n")
        self.refused("rm", "-", saying="0011", given="0011" * 12 + "\n")

    def test_texts_as_regular_expressions(self):
        self.load({**message("Ünïcode 日本", "2026-01-07T00:00:00Z", PR_SENDER_NAME="Zed", PR_BODY="first line\r\nTotal: 17 EUR\r\nlast"),
                   "recipients": [{"properties": {"PR_RECIPIENT_TYPE": 3, "PR_DISPLAY_NAME": "Bob", "PR_EMAIL_ADDRESS": "bob@example.org"}}]},
                  message("Web", "2026-01-08T00:00:00Z", PR_HTML="<p>Total:<b> 99</b> EUR</p>".encode().hex()))
        def subjects(*conditions):
            return [each["subject"] for each in self.found("Inbox", "--regex", *conditions)]
        budgets = ["Budget 2026", "the budget, again"]
        for conditions, wanted in ((("--subject", "^(the )?BUDGET"), budgets), (("--subject", "^(?-i)budget"), []),
                                   (("--subject", "(?-i)budget"), ["the budget, again"]), (("--subject", r"ünïc\w+ \p{Han}{2}$"), ["Ünïcode 日本"]),
                                   (("--from", "^(ada|grace@ada\\.example)$"), ["Budget 2026", "Lunch"]), (("--author", "^zed$"), ["Ünïcode 日本"]),
                                   (("--to", r"^bob@\w+\.org$"), ["Ünïcode 日本"]), (("--body", r"^total: \d{2} eur"), ["Web", "Ünïcode 日本"]),
                                   (("--text", "^(total|lunch|edsger)"), ["Web", "Ünïcode 日本", "the budget, again", "Lunch"]),
                                   (("--subject", "budget", "--size", "1"), budgets), (("--subject", "budget", "--unread"), ["Budget 2026"]),
                                   (("--subject", "^web$", "--unread", "--or"), ["Web", "Budget 2026"]),
                                   (("--subject", "b", "--not"), ["Ünïcode 日本", "Lunch", "Early"]),
                                   (("--subject", "budget", "--unread", "--not"), ["Web", "Ünïcode 日本", "the budget, again", "Lunch", "Early"]),
                                   (("--subject", "budget", "--unread", "--or", "--not"), ["Web", "Ünïcode 日本", "Lunch", "Early"]),
                                   (("--subject", ".", "--sort", "subject", "--limit", "2", "--offset", "1"), ["Early", "Lunch"])):
            self.assertEqual(subjects(*conditions), wanted, conditions)
        self.assertEqual(self.zeb("find", "Inbox", "-r", "--regex", "--subject", "^budget").out.splitlines()[-1], "2 of 7 messages matched")
        self.refused("find", "Inbox", "--regex", "--subject", "a(b", code=2, saying=["--subject 'a(b'", "missing )"])
        self.refused("find", "Inbox", "--regex", "--unread", code=2, saying="--regex needs --subject")

    def test_chosen_columns(self):
        self.zeb("set", "Inbox", "1", "PR_IMPORTANCE=2", "PR_DISPLAY_TO=Bob Çelik; Dan", "0x6801101F=[\"a\",\"b\"]",
                 "{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503=7", "PR_START_DATE=2026-05-01T00:00:00Z")
        names = "subject,number, size,unread,importance,class,date,PR_START_DATE,0x6801101F,{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503"
        shown = self.zeb("find", "Inbox", "--columns", names, "--utc", "--subject", "budget").out.splitlines()
        self.assertEqual(shown[0].split()[:6], ["subject", "number", "size", "unread", "importance", "class"])
        self.assertIn("date (UTC)", shown[0])
        self.assertRegex(shown[1], r"^Budget 2026 +1 +\d+ +yes +2 +IPM.Note +2026-01-05 00:00:00  2026-05-01 00:00:00 +a, b +7$")
        self.assertRegex(shown[2], r"^the budget, again +3 +\d+ +no +1 +IPM.Task.Budget +2026-01-04 23:59:59$")
        self.assertEqual(shown[0].index("class"), shown[2].index("IPM.Task"))
        self.assertEqual(shown[3], "2 of 4 messages matched")
        rows = json.loads(self.zeb("find", "Inbox", "--columns", "number,to,importance,PR_START_DATE,folder,id,attachments,date", "--json").out)["messages"]
        self.assertEqual([list(row) for row in rows], [["number", "to", "importance", "PR_START_DATE", "folder", "id", "attachments", "date"]] * 4)
        self.assertEqual({name: rows[0][name] for name in ("number", "to", "importance", "PR_START_DATE", "folder", "attachments", "date")},
                         {"number": 1, "to": "Bob Çelik; Dan", "importance": 2, "PR_START_DATE": "2026-05-01T00:00:00Z", "folder": "Inbox",
                          "attachments": False, "date": "2026-01-05T00:00:00Z"})
        self.assertEqual(len(rows[0]["id"]), 108)
        self.assertEqual((rows[1]["importance"], rows[1]["PR_START_DATE"], rows[3]["attachments"]), (1, None, True))
        self.refused("find", "Inbox", "--columns", "number,colour", code=2, saying=["no column 'colour'", "PR_SENSITIVITY"])
        self.refused("find", "Inbox", "--columns", "number,", "--ids", code=2, saying="--ids")
