"""zebview: its panes as they are read from outside, driven by keys, clicks and messages."""

import world
import zebview
from world import World, message
from zebview import (ALT, ATTACHMENTS, CONTROL, DOWN, END, ENTER, ESCAPE, F6, FILTER, HOME, LIST, LOG, PAGE_DOWN, PROFILE,
                     PROPERTIES, RECIPIENTS, SHIFT, TAB, TABS, TEXT, TREE, UP, Display, View)

WINDOWS_ONLY = True
DISPLAY = None
SAMPLE = world.ROOT / "docs/mail.jsonl"
RUSSIAN, JAPANESE = "\u041f\u043b\u0430\u043d \u043d\u0430 \u044f\u043d\u0432\u0430\u0440\u044c", "\u65e5\u672c\u8a9e\u306e\u4ef6\u540d \U0001F600"


def setUpModule():
    global DISPLAY
    DISPLAY = Display()


def tearDownModule():
    DISPLAY.close()


class Viewing(World):
    """A profile with the sample mailbox."""

    def setUp(self):
        super().setUp()
        self.create_profile()
        self.zeb("load", "Z:" + str(SAMPLE).replace("/", "\\"))

    def view(self, *arguments):
        """Opens the window; when it is closed in the test, the provider must have nothing left."""
        self.environment["ZEBSTORE_TRACE"] = self.path("view-trace")
        view = View(DISPLAY, self.environment, *arguments)
        del self.environment["ZEBSTORE_TRACE"]
        self.addCleanup(view.end)
        return view

    def close(self, view):
        self.assertTrue(view.close())
        view.wait(lambda: world.END.search((self.folder / "view-trace").read_text(encoding="utf-8")))
        text = (self.folder / "view-trace").read_text(encoding="utf-8")
        for objects, _, frees in world.END.findall(text):
            self.assertEqual((int(objects), int(frees)), (0, 0))


class Panes(Viewing):
    def test_folders_rows_and_pages(self):
        view = self.view()
        self.assertEqual(view.title(), "zebstore - zebview")
        self.assertEqual(view.ask("combo", id=PROFILE), {"items": ["test"], "selected": 0})
        self.assertEqual(view.labels(), ["zebstore", " Archive", " Contacts (0/1)", " Deleted Items", " Inbox (1/3)",
                                         "  Projects (0/1)", " Outbox", " Sent Items", "Address book",
                                         " Global Address List", " Contacts"])
        self.assertEqual(view.ask("tree", id=TREE)["selected"], "Inbox (1/3)")
        self.assertEqual(view.status(), "Inbox: 3 messages")
        rows = view.rows(LIST)
        self.assertEqual([row[:3] for row in rows], [["2026-01-03 11:58:40", "Ada Lovelace", "Re: Lunch?"],
                                                     ["2026-01-03 11:50:12", "Grace Hopper", "Lunch?"],
                                                     ["2026-01-02 09:15:00", "Ada Lovelace", "Plans for January"]])
        self.assertEqual([int(row[3]) for row in rows], [each["size"] for each in self.inbox()["messages"]])
        self.check_message(view)
        self.check_attachment(view)
        view.choose("Projects")
        self.assertEqual(view.subjects(), ["The plan, again"])
        self.close(view)

    def check_message(self, view):
        view.select(1)
        view.wait_text(TEXT, "At noon")
        self.assertEqual(view.text(TEXT), "From:\tGrace Hopper <grace@example.org>\nTo:\tAda Lovelace <ada@example.org>\n"
                         "Date:\t2026-01-03 11:50:12 +00:00\nSubject:\tLunch?\n\n"
                         "At noon, as ever? The menu is attached.\n\nGrace")
        self.assertEqual(view.rows(RECIPIENTS), [["To", "Ada Lovelace", "ada@example.org"]])
        self.assertEqual([row[0::2] for row in view.rows(ATTACHMENTS)], [["menu.txt", "file"]])
        properties = {row[0]: row[1:] for row in view.rows(PROPERTIES)}
        self.assertEqual(properties["PR_SUBJECT"], ["PT_UNICODE", "Lunch?"])
        self.assertEqual(properties["PR_MESSAGE_FLAGS"][0], "PT_LONG")
        self.assertEqual(properties["PR_CLIENT_SUBMIT_TIME"], ["PT_SYSTIME", "2026-01-03 11:50:12 +00:00"])
        self.assertEqual(properties["PR_HASATTACH"], ["PT_BOOLEAN", "true"])
        shown = self.shown("Inbox", "subject:Lunch?")
        # A file names some tags by number only.
        self.assertEqual({name for name in shown if not name.startswith("0x")} - {*properties}, set())
        self.assertEqual(len(properties), len(shown))
        self.assertEqual(properties["PR_ENTRYID"], ["PT_BINARY", shown["PR_ENTRYID"]])
        self.assertEqual(view.ask("tabs", id=TABS)["titles"],
                         ["Message", f"Properties ({len(shown)})", "Recipients (1)", "Attachments (1)"])
        # Reading leaves it unread or read as it was.
        self.assertEqual([each["unread"] for each in self.inbox()["messages"]], [True, False, False])

    def check_attachment(self, view):
        view.ask("command", command=zebview.SAVE)
        self.assertEqual(view.ask("dialog", text=self.path("\u043c\u0435\u043d\u044e.txt"))["before"], "menu.txt")
        saved = self.folder / "\u043c\u0435\u043d\u044e.txt"
        view.wait(saved.exists, view.status)
        self.assertEqual(saved.read_bytes(), b"Soup, bread, apple pie and coffee.\r\n")
        view.wait(lambda: view.status() == "saved " + self.path("\u043c\u0435\u043d\u044e.txt"), view.status)

    def test_order_and_filter(self):
        self.load(message(RUSSIAN, "2026-02-01T00:00:00Z", PR_SENDER_NAME="\u0410\u043d\u043d\u0430"),
                  message(JAPANESE, "2026-02-02T00:00:00Z", PR_SENDER_NAME="\u5c71\u7530"))
        view = self.view()
        by_date = [JAPANESE, RUSSIAN, "Re: Lunch?", "Lunch?", "Plans for January"]
        self.assertEqual(view.subjects(), by_date)
        self.assertEqual([each["sorted"] for each in view.ask("list", id=LIST)["columns"]], ["down", "", "", "", ""])
        view.ask("header", id=LIST, column=0)
        view.wait_for(LIST, 2, by_date[::-1])
        view.ask("header", id=LIST, column=2)
        by_subject = ["Lunch?", "Plans for January", "Re: Lunch?", RUSSIAN, JAPANESE]
        view.wait_for(LIST, 2, by_subject)
        self.assertEqual([each["sorted"] for each in view.ask("list", id=LIST)["columns"]], ["", "", "up", "", ""])
        view.ask("header", id=LIST, column=2)
        view.wait_for(LIST, 2, by_subject[::-1])
        view.press(CONTROL, ord("F"))
        view.wait_focus(FILTER)
        for text, matching in (("lunch", ["Re: Lunch?", "Lunch?"]), ("GRACE", ["Lunch?"]), ("\u044f\u043d\u0432", [RUSSIAN]),
                               ("\u672c\u8a9e", [JAPANESE]), ("nothing", [])):
            view.press(CONTROL, ord("A"))
            view.ask("type", text=text)
            view.wait(lambda: view.text(FILTER) == text, lambda: view.text(FILTER))
            view.wait_for(LIST, 2, matching)
        self.assertEqual(view.status(), "Inbox: 0 messages match the filter")
        view.press(ESCAPE)
        view.wait_for(LIST, 2, by_subject[::-1])
        view.wait_focus(LIST)
        view.select(0)
        view.wait_text(TEXT, "Subject:\t" + JAPANESE)
        self.close(view)

    def test_values_are_opened(self):
        long = "".join(f"line {i} \u65e5\n" for i in range(9000))
        self.load(message("long", folder="Values", PR_BODY=long,
                          **{"{00062004-0000-0000-C000-000000000046}:PT_LONG:id:0x8083": 7}),
                  message("page", folder="Values", PR_HTML=b"<p>Dear <b>reader</b>,<p>\xc3\xa9 &lt;3".hex().upper()))
        view = self.view()
        view.choose("Values")
        view.wait_for(LIST, 2, ["long", "page"])
        view.select(1)
        view.wait_text(TEXT, "Dear reader,")
        self.assertIn("\u00e9 <3", view.text(TEXT))
        view.select(0)
        view.wait_text(TEXT, "line 8999 \u65e5")
        names = view.column(PROPERTIES, 0)
        rows = dict(zip(names, (row[1:] for row in view.rows(PROPERTIES))))
        self.assertRegex(rows["PR_BODY"][1], r"^\([\d,]+ characters\)$")
        self.assertEqual(rows["named property {00062004-0000-0000-C000-000000000046} 0x8083"], ["PT_LONG", "7 (0x00000007)"])
        for name, part in (("PR_BODY", "line 8999 \u65e5"), ("PR_ENTRYID", "Provider"), ("PR_SEARCH_KEY", "00000000  ")):
            view.ask("click", id=PROPERTIES, row=names.index(name), double=True)
            view.wait(lambda: any(part in each["text"] for each in view.ask("windows", **{"class": "ZebViewValue"})["windows"]),
                      lambda: (name, view.ask("windows", **{"class": "ZebViewValue"}), view.status()))
        self.assertEqual(len(view.ask("windows", **{"class": "ZebViewValue"})["windows"]), 3)
        self.close(view)

    def test_address_book(self):
        view = self.view()
        view.press(CONTROL, ord("B"))
        view.wait(lambda: view.status().startswith("Global Address List: "), view.status)
        self.assertEqual([row[0::3] for row in view.rows(LIST)],
                         [["Ada Lovelace", "ada@example.org"], ["Grace Hopper", "grace@example.org"], ["Lunch club", ""]])
        self.assertEqual(view.column(LIST, 1), ["user", "user", "list"])
        view.select(2)
        view.wait(lambda: view.column(RECIPIENTS, 1) == ["Ada Lovelace", "Grace Hopper"], lambda: view.rows(RECIPIENTS))
        view.select(0)
        view.wait_text(TEXT, "Title:\tAnalyst")
        self.assertIn(["PR_TITLE", "PT_UNICODE", "Analyst"], view.rows(PROPERTIES))
        self.close(view)


class Ground(Viewing):
    """The free part of the panes, as it is on the screen."""

    def check_panes(self, colour):
        view = self.view()
        view.select(1)
        view.wait_text(TEXT, "At noon")
        for pane in (TREE, LIST, TEXT):
            place = view.ask("place", id=pane)
            free = place["left"] + place["width"] // 2, place["top"] + 3 * place["height"] // 4
            view.wait(lambda free=free: DISPLAY.colour(*free) == colour, lambda pane=pane, free=free: (pane, DISPLAY.colour(*free)))
        self.close(view)

    def test_it_is_light(self):
        self.check_panes((255, 255, 255))

    def test_it_is_dark(self):
        self.addCleanup(self.reg, "delete", zebview.PERSONALIZE, "/f")
        self.assertEqual(self.reg("add", zebview.PERSONALIZE, "/v", "AppsUseLightTheme", "/t", "REG_DWORD", "/d", "0", "/f"), 0)
        self.check_panes((30, 30, 30))


class Changes(Viewing):
    def test_changes_of_other_processes_appear(self):
        view = self.view()
        view.select(2)
        view.wait_text(TEXT, "First the engine")
        self.load(message("new one", "2026-03-01T00:00:00Z", PR_MESSAGE_FLAGS=0),
                  message("new folder", folder="Fresh"))
        view.wait_for(LIST, 2, ["new one", "Re: Lunch?", "Lunch?", "Plans for January"])
        # What was selected is it still, one row further down.
        view.wait(lambda: view.ask("list", id=LIST)["selected"] == 3, lambda: view.ask("list", id=LIST))
        view.wait(lambda: {" Inbox (2/4)", " Fresh (0/1)"} <= {*view.labels()} or " Fresh (1/1)" in view.labels(), view.labels)
        self.assertIn(" Inbox (2/4)", view.labels())
        self.assertIn("First the engine", view.text(TEXT))
        self.zeb("rm", "Inbox", "subject:new one", "--hard", "--yes")
        view.wait_for(LIST, 2, ["Re: Lunch?", "Lunch?", "Plans for January"])
        view.wait(lambda: view.status() == "Inbox: 3 messages", view.status)
        self.close(view)


class Calls(Viewing):
    def test_the_log_shows_each_call(self):
        view = self.view()
        view.wait(lambda: "IMAPITable::QueryRows" in view.column(LOG, 1), lambda: view.rows(LOG))
        rows = view.rows(LOG, count=1000)
        self.assertEqual([row[1] for row in rows if row[0] == "1"], ["MAPIInitialize"] * 2)
        self.assertIn("IMsgStore::OpenEntry", [row[1] for row in rows])
        for row in rows:
            self.assertRegex(row[2], r"^(S_OK|MAPI_[A-Z_]+ 0x[0-9A-F]{8}|)$", row)
        view.ask("command", command=zebview.CLEAR_LOG)
        view.wait(lambda: view.ask("list", id=LOG)["total"] < 3)
        view.choose("Archive")
        view.wait(lambda: "IMAPITable::SortTable" in view.column(LOG, 1), lambda: view.rows(LOG))
        view.press(CONTROL, ord("L"))
        view.wait(lambda: not view.ask("place", id=LOG)["visible"])
        self.close(view)

    def test_failures_are_shown_with_their_code(self):
        self.zeb("profile", "create", "broken", "--store", self.path("bad.zeb"))
        (self.folder / "bad.zeb").write_bytes(b"this is no store" * 1000)
        view = self.view("--profile", "broken")
        for control in (zebview.STATUS, TEXT):
            view.wait_text(control, "MAPI_E_")
            self.assertRegex(view.text(control), r"bad\.zeb.*\(MAPI_E_[A-Z_]+ 0x8004[0-9A-F]{4}\)")
        failed = [row for row in view.rows(LOG, count=1000) if "MAPI_E_" in row[2]]
        self.assertTrue(failed, view.rows(LOG, count=1000))
        self.assertTrue(any("bad.zeb" in row[3] for row in failed), failed)
        # Another profile can be opened after that.
        view.ask("command", command=zebview.CHOOSE_PROFILE)
        view.wait_focus(PROFILE)
        chosen = view.ask("combo", id=PROFILE)
        self.assertEqual(chosen["items"][chosen["selected"]], "broken")
        view.press(0x24 if chosen["items"][0] == "test" else 0x23)
        view.press(ENTER)
        view.wait(lambda: view.status() == "Inbox: 3 messages", view.status)
        self.assertEqual(view.subjects(), ["Re: Lunch?", "Lunch?", "Plans for January"])
        self.close(view)

    def test_a_missing_profile_and_a_failing_call(self):
        view = self.view("--profile", "\u043d\u0435\u0442")
        view.wait_text(zebview.STATUS, "there is no profile '\u043d\u0435\u0442'")
        self.assertEqual(view.labels(), [])
        view.end()
        number = self.call_number(r"IMsgStore::OpenEntry", "inbox")
        self.environment["ZEBSTORE_FAULT"] = f"call:{number}:0x80040115"
        view = self.view()
        del self.environment["ZEBSTORE_FAULT"]
        view.wait(lambda: any("MAPI_E_NETWORK_ERROR 0x80040115" in row[2] for row in view.rows(LOG, count=1000)),
                  lambda: view.rows(LOG, count=1000))


class Keyboard(Viewing):
    def test_everything_is_reached_by_keys(self):
        view = self.view()
        view.press(CONTROL, ord("F"))
        view.wait_focus(FILTER)
        for pane in (TREE, LIST, TABS, TEXT, LOG, PROFILE):
            view.press(TAB)
            view.wait_focus(pane)
        view.press(SHIFT, TAB)
        view.wait_focus(LOG)
        for pane in (TREE, LIST, TEXT, LOG):
            view.press(F6)
            view.wait_focus(pane)
        view.press(SHIFT, F6)
        view.wait_focus(TEXT)
        view.press(SHIFT, F6)
        view.wait_focus(LIST)
        view.press(DOWN)
        view.press(DOWN)
        view.wait_text(TEXT, "Subject:\t")
        self.assertIn(view.ask("list", id=LIST)["selected"], (1, 2))
        view.press(ENTER)
        view.wait_focus(TEXT)
        for key, page in (("2", PROPERTIES), ("3", RECIPIENTS), ("4", ATTACHMENTS), ("1", TEXT)):
            view.press(CONTROL, ord(key))
            view.wait_focus(page)
            self.assertTrue(view.ask("place", id=page)["visible"])
        view.press(CONTROL, ord("2"))
        view.wait_focus(PROPERTIES)
        view.press(DOWN)
        view.press(ENTER)
        view.wait(lambda: len(view.ask("windows", **{"class": "ZebViewValue"})["windows"]) == 1, view.status)
        view.press(ESCAPE)
        view.wait(lambda: not view.ask("windows", **{"class": "ZebViewValue"})["windows"])
        view.wait_focus(PROPERTIES)
        view.press(ALT, ord("V"))
        view.wait(lambda: view.ask("focus")["menu"])
        view.press(ord("G"))
        view.wait(lambda: not view.ask("place", id=LOG)["visible"])
        self.close(view)

    def test_keys_and_clicks_in_a_large_folder(self):
        count = 6000
        self.load(*[message(f"letter {number}", f"2026-03-01T{number // 3600:02}:{number // 60 % 60:02}:{number % 60:02}Z",
                            folder="Large") for number in range(count)])
        view = self.view()
        view.choose(next(label.strip() for label in view.labels() if "Large" in label))
        page = view.ask("scroll", id=LIST, key=PAGE_DOWN, times=2)["top"]
        self.assertGreater(page, 3)
        for key, row in ((HOME, 0), (UP, 0), (DOWN, 1), (END, count - 1), (DOWN, count - 1), (UP, count - 2)):
            view.ask("scroll", id=LIST, key=key, times=1)
            self.assertEqual(view.ask("list", id=LIST, count=1)["selected"], row, key)
        view.wait_text(TEXT, "letter 1\n")
        view.ask("scroll", id=LIST, key=HOME, times=1)
        view.ask("click", id=LIST, row=2)
        view.wait_text(TEXT, f"letter {count - 3}\n")
        view.ask("click", id=LIST, row=2)
        self.assertEqual(view.ask("list", id=LIST, count=1)["selected"], 2)
        self.close(view)

    def test_the_window_grows_with_its_screen(self):
        view = self.view()
        before = view.ask("list", id=LIST)["columns"]
        height = view.ask("place", id=TABS)["height"]
        view.ask("dpi", dpi=192)
        after = view.ask("list", id=LIST)["columns"]
        for old, new in zip(before, after):
            self.assertAlmostEqual(new["width"], 2 * old["width"], delta=2, msg=old["title"])
        self.assertGreater(view.ask("place", id=TABS)["height"], 1.6 * height)
        self.assertEqual(view.subjects(), ["Re: Lunch?", "Lunch?", "Plans for January"])
        self.close(view)
