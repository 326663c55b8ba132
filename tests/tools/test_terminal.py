"""What a terminal sees and a pipe does not."""
import fcntl
import json
import os
import pty
import struct
import subprocess
import termios

import world
from world import World, message


class Terminal(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def on_terminal(self, *arguments, columns=60):
        """Runs zeb with a terminal of so many columns as output and error; returns what it wrote there."""
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

    def write_many(self, count):
        file = self.folder / "many.jsonl"
        with file.open("w") as stream:
            for i in range(count):
                stream.write(json.dumps(message(f"subject {i}", PR_BODY="x" * 2000)) + "\n")
        return str(file)

    def test_loading_shows_rate_and_time_left_and_clears_the_line(self):
        shown = self.on_terminal("load", self.write_many(6000))
        self.assertRegex(shown, r"\r[\d,]+ messages, [\d,]+/s, \d+ %, \d+:\d\d left")
        self.assertTrue(shown.endswith("\r\x1b[K6,000 messages loaded\r\n"), shown[-100:])

    def test_loading_into_a_pipe_shows_no_progress(self):
        done = self.zeb("load", self.write_many(6000))
        self.assertEqual((done.out, done.err), ("6,000 messages loaded\n", ""))

    def test_the_listing_fits_the_terminal(self):
        self.load(message("a very long subject " * 10))
        for line in self.on_terminal("inbox", columns=60).splitlines():
            self.assertLessEqual(len(line), 60)
        self.assertIn("a very long subject " * 9, self.zeb("inbox").out)
