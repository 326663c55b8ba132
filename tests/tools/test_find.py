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
