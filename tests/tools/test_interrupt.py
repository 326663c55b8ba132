"""Ctrl-C stops each command with a message."""
import json
import os
import re
import signal
import subprocess
import time

import test_import_mail
import test_watch
import world
from world import message

LINUX_ONLY = True  # no signal reaches a program of Wine's as Ctrl-C


class Interrupt(test_watch.Watching):
    def started(self, arguments, when):
        """A running zeb for which the condition holds; None when it ended before."""
        process = subprocess.Popen([str(world.BUILD / "bin/zeb"), *arguments], env=self.environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        end = time.monotonic() + 60
        while not when(process):
            self.assertLess(time.monotonic(), end)
            if process.poll() is not None:
                return None
            time.sleep(0.002)
        return process

    def interrupted(self, *arguments, when, code=1, tries=1):
        """Starts zeb, sends it Ctrl-C when the condition holds, and returns its standard error output.

        A call that changes nothing may be tried again: on a busy machine it may end before this process looks.
        """
        process = next(filter(None, (self.started(arguments, when) for _ in range(tries))), None)
        self.assertIsNotNone(process, "it ended before")
        process.send_signal(signal.SIGINT)
        said = process.stderr.read().decode()
        self.assertEqual(process.wait(60), code, said)
        return said

    def test_an_interrupt_ends_the_watch_well(self):
        process = self.watch("Inbox")
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(self.said(self.out), "")

    def test_loading_continues_after_an_interrupt(self):
        count = 6_000
        file = self.folder / "many.jsonl"
        with file.open("w") as stream:
            for i in range(count):
                stream.write(json.dumps(message(f"{i:05}", folder="Many")) + "\n")
        size = (self.folder / "test.zeb").stat().st_size
        wal = self.folder / "test.zeb-wal"
        said = self.interrupted("load", str(file), when=lambda _: wal.exists() and wal.stat().st_size > size)
        self.assertRegex(said, r"^zeb: .*many.jsonl:\d+: interrupted; the [\d,]+ lines before it are loaded; --from-line \d+ continues\n$")
        line = int(said.split("--from-line ")[1].split()[0])
        self.assertEqual(len(self.found("Many")), line - 1)
        self.zeb("load", str(file), "--from-line", str(line))
        self.assertEqual([each["subject"] for each in self.found("Many", "--sort", "subject")], [f"{i:05}" for i in range(count)])

    def test_a_long_call_ends_too(self):
        self.load(*[message(f"{i}", PR_BODY="x" * 20_000) for i in range(2_000)])
        for command in (["store", "check"], ["find", "Inbox", "--subject", "nowhere"]):
            with self.subTest(command=command):
                said = self.interrupted(*command, when=lambda process: "test.zeb" in open_files(process),
                                        tries=20)
                self.assertEqual(said, "zeb: interrupted\n")


class Import(test_import_mail.Mail):
    def interrupted(self, *arguments):
        process = subprocess.Popen([str(world.BUILD / "bin/zeb-import"), *arguments], env=self.environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        wal = self.folder / "test.zeb-wal"
        limit = time.monotonic() + 60
        while time.monotonic() < limit and process.poll() is None and not (wal.exists() and wal.stat().st_size > 200_000):
            time.sleep(0.01)
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=60)
        self.assertEqual((process.returncode, out), (1, ""), err)
        told = re.fullmatch(r"zeb-import: interrupted; in the store now: ([0-9,]+) messages? in \d+ folders?\n", err)
        self.assertTrue(told, err)
        return int(told[1].replace(",", ""))

    def test_an_interrupt_keeps_what_went_in(self):
        count = 20_000
        data = b"".join(test_import_mail.SEPARATOR + b"Subject: %d\n\n" % i + b"text\n" * 200 + b"\n" for i in range(count))
        (self.folder / "many.mbox").write_bytes(data)
        told = self.interrupted("mbox", str(self.folder / "many.mbox"), "--inbox", "many")
        self.assertLess(told, count)
        self.assertEqual(self.inbox("--limit", "1")["total"], told)
        self.assertIn("is intact", self.zeb("store", "check").out)


def open_files(process):
    """The names of the files that a process has open."""
    names = []
    for link in (world.pathlib.Path("/proc") / str(process.pid) / "fd").iterdir():
        try:
            names.append(os.path.basename(os.readlink(link)))
        except OSError:
            pass
    return names
