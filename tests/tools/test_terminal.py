"""Output that goes to a terminal only, not to a pipe."""
import fcntl
import json
import os
import pty
import re
import sqlite3
import struct
import subprocess
import termios
import time

import world
from world import World, message

LINUX_ONLY = True  # a terminal of Wine's is none of Python's


class Terminal(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def on_terminal(self, *arguments, columns=60):
        """Runs zeb with a terminal of this width as output and error; returns its output."""
        leader, follower = pty.openpty()
        fcntl.ioctl(follower, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        process = subprocess.Popen([str(world.BUILD / "bin/zeb"), *arguments], env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=follower, stderr=follower)
        os.close(follower)
        written = b""
        while True:
            try:
                piece = os.read(leader, 65536)
            except OSError:
                break
            if not piece:
                break
            written += piece
        os.close(leader)
        self.assertEqual(process.wait(), 0, written)
        return written.decode("utf-8")

    def answer(self, reply, *arguments, code):
        """Runs zeb with a terminal as input, output and error and answers its question; returns the terminal's content."""
        leader, follower = pty.openpty()
        process = subprocess.Popen([str(world.BUILD / "bin/zeb"), *arguments], env=self.environment, stdin=follower,
                                   stdout=follower, stderr=follower)
        os.close(follower)
        shown = b""
        while not shown.endswith(b"[y/N] "):
            shown += os.read(leader, 4096)
        os.write(leader, reply)
        try:
            while piece := os.read(leader, 4096):
                shown += piece
        except OSError:
            pass
        os.close(leader)
        self.assertEqual(process.wait(), code, shown)
        return shown.decode("utf-8")

    def test_destructive_commands_ask_and_obey(self):
        self.load(message("a"), message("b"))
        for reply in (b"n\n", b"\n", b"\x04"):
            shown = self.answer(reply, "rm", "Inbox", "a", "--hard", code=1)
            self.assertTrue(shown.startswith("Really delete message 'a' of folder 'Inbox' permanently? [y/N] "), shown)
            self.assertIn("zeb: cancelled: nothing was changed", shown)
        self.assertEqual(len(self.subjects()), 2)
        self.assertIn("deleted permanently", self.answer(b"y\n", "rm", "Inbox", "a", "--hard", code=0))
        self.assertEqual(self.subjects(), ["b"])
        self.answer(b"y\n", "empty", "Inbox", code=0)
        self.assertEqual(self.subjects(), [])

    def test_capital_answers_and_half_a_terminal(self):
        self.load(message("a"))
        leader, follower = pty.openpty()
        done = self.run_tool("zeb", "rm", "Inbox", "a", "--hard", stdin=follower)
        os.close(follower)
        os.close(leader)
        self.one_sentence(self.check(done, 2), "no terminal for the question")
        self.answer(b"Y\n", "rm", "Inbox", "a", "--hard", code=0)
        self.assertEqual(self.subjects(), [])

    def test_failed_output_is_a_failure(self):
        self.load(message("a"))
        for command in (["inbox"], ["inbox", "--json"], ["find", "Inbox"], ["save", "Inbox"], ["doctor"], ["name", "PropTags"]):
            with self.subTest(command=command), open("/dev/full", "wb") as full:
                done = subprocess.run([str(world.BUILD / "bin/zeb"), *command], env=self.environment, stdout=full,
                                      stderr=subprocess.PIPE, check=False)
                said = json.loads(done.stderr)["error"]["message"] if "--json" in command else done.stderr.decode()
                self.assertEqual((done.returncode, said.removeprefix("zeb: ").rstrip("\n")), (1, "standard output cannot be written"))

    def test_saving_progress_not_between_lines(self):
        self.zeb("load", self.write_many(1000))
        shown = self.on_terminal("save", "Inbox", "-o", self.path("out.jsonl"))
        self.assertRegex(shown, r"\r[\d,]+ messages, [\d,]+/s, \d+ %, \d+:\d\d left")
        self.assertTrue(shown.endswith("1,000 messages in 1 folder saved\r\n"), shown[-100:])
        self.assertNotIn("\x1b", self.on_terminal("save", "Inbox"))

    def test_properties_fit_the_terminal(self):
        self.load(message("a" * 300))
        lines = self.on_terminal("show", "Inbox", "1", columns=70).splitlines()
        self.assertTrue(all(len(line) <= 70 for line in lines[1:]), max(lines[1:], key=len))
        self.assertIn("a" * 300, self.on_terminal("show", "Inbox", "1", "--full", columns=70))

    def test_the_address_book_fits_the_terminal(self):
        self.load({"addressBook": "user", "properties": {"PR_DISPLAY_NAME": "Ada", "PR_EMAIL_ADDRESS": "a" * 90 + "@b.c"}})
        lines = self.on_terminal("ab", "list", "Global Address List", columns=50).splitlines()
        self.assertEqual([len(line) for line in lines if line.startswith("Ada")], [50])

    def write_many(self, count):
        file = self.folder / "many.jsonl"
        with file.open("w") as stream:
            for i in range(count):
                stream.write(json.dumps(message(f"subject {i}", PR_BODY="x" * 2000)) + "\n")
        return str(file)

    def test_loading_shows_rate_and_time(self):
        file = self.write_many(2000)
        begin = time.monotonic()
        shown = self.on_terminal("load", file)
        seconds = time.monotonic() - begin
        steps = re.findall(r"\r[\d,]+ lines, [\d,]+/s, (\d+) %, (\d+):\d\d left", shown)
        self.assertTrue(steps, shown[-200:])
        self.assertLessEqual(len(steps), seconds * 10 + 1)
        percents = [int(percent) for percent, _ in steps]
        self.assertEqual(percents, sorted(percents))
        self.assertLessEqual(percents[-1], 100)
        self.assertTrue(all(int(minutes) < 60 for _, minutes in steps), steps)
        self.assertTrue(shown.endswith("\r\x1b[K2,000 messages loaded\r\n"), shown[-100:])

    def test_loading_into_pipes_shows_no_progress(self):
        done = self.zeb("load", self.write_many(2000))
        self.assertEqual((done.out, done.err), ("2,000 messages loaded\n", ""))

    def make_older(self, store):
        """Writes the store's file in the version before checksums."""
        database = sqlite3.connect(store)
        database.execute("DROP TABLE date_run")
        database.execute("ALTER TABLE chunk DROP COLUMN sum")
        for column in ("created", "modified"):
            database.execute(f"ALTER TABLE folder DROP COLUMN {column}")
        for table in ("store", "folder", "message", "recipient", "attachment", "address", "directory"):
            database.execute(f"UPDATE {table} SET props=CAST(x'01' || substr(props, 2, length(props) - 9) AS BLOB) "
                             "WHERE props IS NOT NULL")
        database.execute("PRAGMA user_version=3")
        database.commit()
        database.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        database.close()

    def test_an_upgrade_is_announced(self):
        store = self.folder / "test.zeb"
        self.load(message("kept"))
        line = f"upgrading store '{store}'\r\n"
        for command in (["inbox"], ["store", "repair", "--in-place"], ["store", "compact"]):
            with self.subTest(command=command):
                self.make_older(store)
                self.assertEqual(self.on_terminal(*command, columns=100)[:len(line)], line)
                self.assertNotIn("upgrading", self.on_terminal(*command, columns=100))
        self.make_older(store)
        self.assertEqual(self.zeb("inbox").err, "")
        self.assertEqual(self.subjects(), ["kept"])

    def test_the_listing_fits_the_terminal(self):
        self.load(message("a very long subject " * 10))
        for line in self.on_terminal("inbox", columns=60).splitlines():
            self.assertLessEqual(len(line), 60)
        self.assertIn("a very long subject " * 9, self.zeb("inbox").out)

    def test_narrow_terminals_show_the_subject(self):
        self.load(message("a very long subject " * 10, PR_SENDER_NAME="Ada Lovelace, Countess of"))
        for command in (["inbox"], ["find", "Inbox"]):
            for columns in (40, 50, 60, 70, 80, 90, 120):
                with self.subTest(command=command, columns=columns):
                    lines = self.on_terminal(*command, columns=columns).splitlines()
                    self.assertTrue(all(len(line) <= columns for line in lines), lines)
                    self.assertIn("a very long subj", lines[1])
                    self.assertIn("2026-01-02", lines[1])
                    self.assertEqual(lines[0].index("subject"), lines[1].index("a very"))
                    if columns >= 60:
                        self.assertIn("Ada Lovelace", lines[1])
                    if columns >= 90:
                        self.assertIn("2026-01-02 03:04:05", lines[1])

    def test_long_property_names_fit(self):
        self.load(message("a", **{"{00020329-0000-0000-C000-000000000046}:PT_UNICODE:name:" + "n" * 60: "v" * 60}))
        lines = self.on_terminal("show", "Inbox", "1", columns=60).splitlines()
        self.assertTrue(all(len(line) <= 60 for line in lines[1:]), max(lines[1:], key=len))
        self.assertRegex("\n".join(lines), r"n+\u2026  PT_UNICODE     v{5,}\u2026")

    def test_reading_wraps_and_uses_the_pager(self):
        self.load(message("a", PR_BODY="word " * 30))
        self.environment.pop("PAGER", None)
        lines = self.on_terminal("read", "Inbox", "a", columns=50).splitlines()
        self.assertEqual(lines[-3:], [("word " * 10)[:-1]] * 3)
        self.environment["PAGER"] = "sed 's/^/through: /'"
        shown = self.on_terminal("read", "Inbox", "a", columns=50).splitlines()
        self.assertEqual(shown, ["through: " + line for line in lines])
        self.assertEqual(self.on_terminal("read", "Inbox", "a", "--no-pager", columns=50).splitlines(), lines)
        self.assertNotIn("through", self.zeb("read", "Inbox", "a").out)
        self.environment["PAGER"] = "no-such-pager"
        shown = self.on_terminal("read", "Inbox", "a", columns=50).splitlines()
        self.assertEqual(shown[-len(lines):], lines)
        self.assertIn("zeb: the pager 'no-such-pager' cannot be started", shown)
