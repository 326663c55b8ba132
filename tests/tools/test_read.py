"""zeb read: a message as people read it."""
import json

from test_attachments import attachment
from world import World, message

LONG = "The quick brown fox jumps over the lazy dog, and then it does the same again in the other direction."


def recipient(kind, name, address, **properties):
    return {"properties": {"PR_RECIPIENT_TYPE": kind, "PR_DISPLAY_NAME": name, "PR_ADDRTYPE": "SMTP",
                           "PR_EMAIL_ADDRESS": address, **properties}}


class Read(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.bodies = 0

    def body(self, text, *arguments, **properties):
        """The text that is shown of a message with this body."""
        self.bodies += 1
        subject = f"Body {self.bodies}"
        self.load(message(subject, PR_BODY=text, **properties))
        page = self.zeb("read", "Inbox", subject, "--utc", *arguments).out
        return page.split(f"Subject: {subject}\n\n")[1]

    def html(self, html, **properties):
        self.load(message("Body", PR_HTML=html.hex(), **properties))
        return self.zeb("read", "Inbox", "Body").out.split("Subject: Body\n\n")[1]

    def test_headers_then_the_text_then_attachments(self):
        self.load({**message("Lunch?\tToday", PR_SENT_REPRESENTING_NAME="Ada", PR_SENT_REPRESENTING_EMAIL_ADDRESS="ada@example.org",
                             PR_SENDER_NAME="Desk", PR_SENDER_EMAIL_ADDRESS="desk@example.org", PR_BODY="Soup\r\nor salad?\r\n"),
                   "recipients": [recipient(1, "Bob", "bob@example.org"), recipient(2, "Cy", "cy@example.org"),
                                  recipient(1, "", "dan@example.org"), recipient(3, "eve@example.org", "eve@example.org")],
                   "attachments": [attachment("Menü.txt", b"soup")]})
        page = self.zeb("read", "Inbox", "1", "--utc").out.split("\n")
        self.assertEqual(page[:11], [
            "From:    Ada <ada@example.org>", "Sender:  Desk <desk@example.org>", "To:      Bob <bob@example.org>, dan@example.org",
            "Cc:      Cy <cy@example.org>", "Bcc:     eve@example.org", "Date:    2026-01-02 03:04:05 UTC",
            "Subject: Lunch? Today", "", "Soup", "or salad?", ""])
        self.assertEqual(page[11], "1 attachment:")
        self.assertRegex(page[12], r"^  1  Menü\.txt  \d+ bytes$")
        self.assertEqual(page[13:], [""])

    def test_a_message_with_hardly_anything(self):
        self.load({"folder": "Inbox", "properties": {"PR_SUBJECT": "bare"}})
        self.assertEqual(self.zeb("read", "Inbox", "bare").out, "Subject: bare\n\n(no text)\n")

    def test_addresses_that_say_nothing_are_left_out(self):
        self.load({**message("x", PR_SENDER_NAME="Ada", PR_SENDER_ADDRTYPE="EX", PR_SENDER_EMAIL_ADDRESS="/O=ORG/CN=ADA",
                             PR_BODY="x"),
                   "recipients": [recipient(1, "Bob", "/O=ORG/CN=BOB", PR_ADDRTYPE="EX", PR_SMTP_ADDRESS="bob@example.org")]})
        self.assertEqual(self.zeb("read", "Inbox", "x").out.split("\n")[:2], ["From:    Ada", "To:      Bob <bob@example.org>"])

    def test_reading_changes_nothing(self):
        self.load(message("x", PR_BODY="x", PR_MESSAGE_FLAGS=0))
        self.zeb("read", "Inbox", "x")
        self.assertTrue(self.found("Inbox", "--unread"))

    def test_long_lines_are_wrapped(self):
        self.assertEqual(self.body(LONG), LONG + "\n")
        wrapped = self.body(f"{LONG}\r\n  * {LONG}\n{'w' * 50}\nshort  line", "--width", "40").split("\n")
        self.assertEqual(wrapped[:3], ["The quick brown fox jumps over the lazy", "dog, and then it does the same again in",
                                       "the other direction."])
        self.assertEqual(wrapped[3:6], ["  * The quick brown fox jumps over the", "  lazy dog, and then it does the same",
                                        "  again in the other direction."])
        self.assertEqual(wrapped[6:], ["w" * 50, "short  line", ""])

    def test_quotations_keep_their_marks(self):
        wrapped = self.body(f"> > {LONG}\n> answer\n>\nnew", "--width", "40").split("\n")
        self.assertEqual(wrapped, ["> > The quick brown fox jumps over the", "> > lazy dog, and then it does the same",
                                   "> > again in the other direction.", "> answer", ">", "new", ""])

    def test_wide_characters_take_two_columns(self):
        self.assertEqual(self.body("日本語の長い文は空白なしで折り返す", "--width", "20").split("\n"),
                         ["日本語の長い文は空白", "なしで折り返す", ""])
        self.assertEqual(self.body("e\u0301" * 25 + " 😀😀 end", "--width", "20", PR_SENDER_NAME="b").split("\n")[1:], ["😀😀 end", ""])

    def test_controls_do_not_reach_the_terminal(self):
        self.assertEqual(self.body("a\u001b[31mred\u0007\tx\u0085y\r\n\u009b2J\n"), "a [31mred       x y\n 2J\n")

    def test_html_where_there_is_no_other_text(self):
        self.assertEqual(self.html("<html><head><title>t</title></head><body><p>Grüße &amp; <b>mehr</b></p><ul><li>eins<li>zwei</ul>"
                                   "<table><tr><td>a<td>b</table>".encode()), "Grüße & mehr\n\n* eins\n* zwei\n\na b\n")

    def test_html_in_its_code_page(self):
        for page, text, encoding in ((1252, "Grüße €", "cp1252"), (932, "日本語", "cp932"), (65001, "😀", "utf-8"), (1251, "Привет", "cp1251"),
                                     (99999, "ü", "utf-8"), (None, "Grüße", "utf-8"), (None, "Grüße", "cp1252"), (20127, "plain", "ascii")):
            with self.subTest(page=page, text=text):
                more = {} if page is None else {"PR_INTERNET_CPID": page}
                self.load(message(f"{page} {text} {encoding}", PR_HTML=f"<p>{text}</p>".encode(encoding).hex(), **more))
                self.assertEqual(self.zeb("read", "Inbox", f"{page} {text} {encoding}").out.split("\n\n")[1], text + "\n")

    def test_the_html_text_when_asked_for(self):
        self.load(message("both", PR_BODY="plain", PR_HTML=b"<p>marked up".hex()))
        self.assertTrue(self.zeb("read", "Inbox", "both").out.endswith("\n\nplain\n"))
        self.assertTrue(self.zeb("read", "Inbox", "both", "--html").out.endswith("\n\nmarked up\n"))
        self.assertEqual(self.body("only plain", "--html"), "only plain\n")

    def test_all_headers_when_asked_for(self):
        headers = "Received: from a\r\n\tby b\r\nSubject: Body\r\nX-\u001bOdd: 1\r\n\r\n"
        self.load(message("Body", PR_TRANSPORT_MESSAGE_HEADERS=headers, PR_BODY="text"), message("none", PR_BODY="text"))
        self.assertEqual(self.zeb("read", "Inbox", "Body", "--headers").out,
                         "Received: from a\n        by b\nSubject: Body\nX- Odd: 1\n\ntext\n")
        done = self.zeb("read", "Inbox", "none", "--headers")
        self.assertEqual(done.err, "zeb: message 'none' of folder 'Inbox' has no headers of the internet\n")
        self.assertIn("Subject: none\n\ntext\n", done.out)

    def test_json_has_every_part(self):
        self.load({**message("x", PR_SENDER_NAME="Ada", PR_BODY="a\r\nb"), "recipients": [recipient(2, "Bob", "b@c")],
                   "attachments": [attachment("a.txt", b"1")]})
        read = json.loads(self.zeb("read", "Inbox", "x", "--json").out)
        self.assertEqual([each["name"] for each in read.pop("attachments")], ["a.txt"])
        nobody = {"name": None, "address": None}
        self.assertEqual(read, {"version": 1, "from": {"name": "Ada", "address": None}, "sender": nobody, "to": [], "cc": [{"name": "Bob", "address": "b@c"}],
                                "bcc": [], "date": "2026-01-02T03:04:05Z", "subject": "x", "headers": None, "text": "a\r\nb"})

    def test_what_cannot_be_read(self):
        self.refused("read", "Inbox", "Nothing", saying="'Nothing'")
        self.refused("read", "Inbox", saying="MESSAGE", code=2)
        self.refused("read", "Inbox", "1", "--width", "3", saying="--width", code=2)
