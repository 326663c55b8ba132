"""zeb watch: each change of a folder, also by another process."""
import datetime
import json
import subprocess
import time

import world
from world import World, message


class Watching(World):
    """A folder with a message that can be watched."""

    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(message("first"), message("elsewhere", folder="Sub"))

    def watch(self, *arguments):
        """Starts zeb watch and waits until it watches."""
        command = [str(world.BUILD / "bin/zeb"), "watch", *arguments]
        if world.WINDOWS:
            command = [str(world.ROOT / "scripts/wine-run.sh"), str(world.BUILD / "bin/zeb.exe"), "watch", *arguments]
        self.out, self.err = (self.folder / "out").open("w+b"), (self.folder / "err").open("w+b")
        self.addCleanup(self.out.close)
        self.addCleanup(self.err.close)
        process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=self.out, stderr=self.err)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.wait_until(lambda: "watching folder 'Inbox'; Ctrl-C stops" in self.said(self.err))
        return process

    def wait_until(self, holds):
        end = time.monotonic() + 60
        while not holds():
            self.assertLess(time.monotonic(), end, self.said(self.err) + self.said(self.out))
            time.sleep(0.05)

    @staticmethod
    def said(stream):
        stream.seek(0)
        return stream.read().decode()


class Watch(Watching):
    def test_additions_changes_and_deletions_are_shown(self):
        process = self.watch("Inbox", "--json", "--count", "3")
        self.load(message("second", PR_SENDER_NAME="Ada"), message("not here", folder="Sub"))
        self.wait_until(lambda: "second" in self.said(self.out))
        # A message that is changed and deleted between two polls is reported once.
        self.zeb("set", "Inbox", "first", "PR_SUBJECT=changed")
        self.wait_until(lambda: "changed" in self.said(self.out))
        self.zeb("rm", "Inbox", "changed", "--hard", "--yes")
        self.assertEqual(process.wait(60), 0)
        changes = [json.loads(line) for line in self.said(self.out).splitlines()]
        self.assertEqual([(each["event"], each["subject"]) for each in changes],
                         [("added", "second"), ("modified", "changed"), ("deleted", "changed")])
        self.assertEqual(changes[0]["sender"], "Ada")
        self.assertEqual(self.shown(changes[0]["entryId"])["PR_SUBJECT"], "second")

    def test_changes_cannot_move_the_cursor(self):
        process = self.watch("Inbox", "--count", "1")
        self.load(message("line\u001b break"))
        self.assertEqual(process.wait(60), 0)
        self.assertRegex(self.said(self.out), r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  added     'line  break'\n$")

    def test_the_time_is_utc_when_asked(self):
        self.environment["TZ"] = "JST-9"
        for more, hours in (("--utc", 0), (None, 9)):
            process = self.watch("Inbox", "--count", "1", *([more] if more else []))
            self.load(message("new"))
            self.assertEqual(process.wait(60), 0)
            told = datetime.datetime.strptime(self.said(self.out)[:19], "%Y-%m-%d %H:%M:%S")
            now = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None)
            self.assertAlmostEqual((told - now).total_seconds() / 3600, hours, delta=0.1)

    def test_every_line_has_its_columns(self):
        self.zeb("set", "Inbox", "first", "PR_SENDER_NAME=Grace\u001b Hopper")
        process = self.watch("Inbox", "--count", "4")
        self.load(message("second", PR_SENDER_NAME="Ada"))
        self.wait_until(lambda: "second" in self.said(self.out))
        self.zeb("set", "Inbox", "first", "PR_COMMENT=x")
        self.wait_until(lambda: "modified" in self.said(self.out))
        self.zeb("rm", "Inbox", "first", "--hard", "--yes")
        self.wait_until(lambda: "deleted" in self.said(self.out))
        self.zeb("empty", "Inbox", "--yes")
        self.assertEqual(process.wait(60), 0)
        lines = self.said(self.out).splitlines()
        for line in lines:
            self.assertRegex(line, r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  ")
        self.assertEqual([line[21:] for line in lines],
                         ["added     'second' from Ada", "modified  'first' from Grace  Hopper", "deleted   'first'", "reload  "])

    def test_very_many_changes_are_one(self):
        self.load(*[message(f"{i}") for i in range(200)])
        process = self.watch("Inbox", "--count", "1", "--json")
        self.zeb("mv", "Inbox", *[str(i) for i in range(2, 202)], "Sub")
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(json.loads(self.said(self.out))["event"], "changed")

    def test_objects_have_time_and_identifier(self):
        first = self.found("Inbox", "--subject", "first")[0]["entryId"]
        process = self.watch("Inbox", "--json", "--count", "2")
        self.load(message("second"))
        self.wait_until(lambda: "second" in self.said(self.out))
        self.zeb("rm", "Inbox", "first", "--hard", "--yes")
        self.assertEqual(process.wait(60), 0)
        added, deleted = [json.loads(line) for line in self.said(self.out).splitlines()]
        self.assertEqual(list(added), ["version", "time", "event", "subject", "sender", "entryId"])
        self.assertRegex(added["time"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d{1,7})?Z$")
        self.assertLessEqual(added["time"][:19], deleted["time"][:19])
        self.assertEqual(added["entryId"], self.found("Inbox", "--subject", "second")[0]["entryId"])
        self.assertEqual((deleted["event"], deleted["subject"]), ("deleted", "first"))
        self.assertEqual(deleted["entryId"], first)

    def test_deletions_of_new_messages_are_known(self):
        process = self.watch("Inbox", "--json", "--count", "2")
        self.load(message("second"))
        self.wait_until(lambda: "second" in self.said(self.out))
        self.zeb("rm", "Inbox", "second", "--hard", "--yes")
        self.assertEqual(process.wait(60), 0)
        added, deleted = [json.loads(line) for line in self.said(self.out).splitlines()]
        self.assertEqual((deleted["event"], deleted["subject"], deleted["entryId"]), ("deleted", "second", added["entryId"]))

    def test_a_missing_folder_is_named(self):
        self.refused("watch", "Nowhere", saying="'Nowhere'")
