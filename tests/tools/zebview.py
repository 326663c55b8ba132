"""A window of zebview on a display of its own, driven from outside."""
import json
import os
import subprocess
import time

import world

# Numbers of tools/zebview/Ids.h.
PROFILE, FILTER, TREE, LIST, TABS, TEXT, PROPERTIES, RECIPIENTS, ATTACHMENTS, LOG, STATUS = range(100, 111)
(EXIT, CHOOSE_PROFILE, SAVE, OPEN_VALUE, COPY, SELECT_ALL, RELOAD, FILTER_COMMAND, NEXT, PREVIOUS, BOOK, ALL_FOLDERS,
 TOGGLE_LOG, CLEAR_LOG) = range(200, 214)
# Windows' numbers of keys.
BACK, TAB, ENTER, SHIFT, CONTROL, ALT, ESCAPE, PAGE_DOWN, END, HOME, UP, DOWN, F5, F6 = (
    0x08, 0x09, 0x0D, 0x10, 0x11, 0x12, 0x1B, 0x22, 0x23, 0x24, 0x26, 0x28, 0x74, 0x75)
PERSONALIZE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize"
LONG = 60


class Display:
    """An X server without a screen, on a number that it chooses itself."""

    def __init__(self, size="1300x900"):
        read, write = os.pipe()
        self.process = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", size + "x24", "-nolisten", "tcp"],
                                        pass_fds=[write], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as stream:
            self.name = ":" + stream.readline().strip()

    def colour(self, x, y):
        """The red, green and blue of a point of the screen, each of 0 to 255."""
        point = subprocess.run(["import", "-display", self.name, "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8", "rgb:-"],
                               stdout=subprocess.PIPE, check=True).stdout
        return tuple(point)

    def close(self):
        self.process.terminate()
        self.process.wait()


class View:
    """zebview, and the program that drives it."""

    count = 0

    def __init__(self, display, environment, *arguments, build=None, size="1300x900"):
        build = build or world.BUILD
        View.count += 1
        desktop = f"view-{os.getpid()}-{View.count}"
        environment = dict(environment, DISPLAY=display.name)
        wine = str(world.ROOT / "scripts/wine-run.sh")
        quiet = {"stderr": subprocess.DEVNULL, "env": environment}
        self.window = subprocess.Popen([wine, "explorer", f"/desktop={desktop},{size}", str(build / "bin/zebview.exe"), *arguments],
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, **quiet)
        self.driver = subprocess.Popen([wine, str(build / "bin/zebview_driver.exe"), desktop], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, **quiet)
        assert self.ask("wait", **{"class": "ZebView"})["found"], "no window of zebview appeared"

    def ask(self, what, **request):
        self.driver.stdin.write((json.dumps({"do": what, **request}) + "\n").encode())
        self.driver.stdin.flush()
        answer = json.loads(self.driver.stdout.readline())
        assert "error" not in answer, answer
        return answer

    def close(self):
        """Closes the window as its user does, and ends the driver."""
        still_open = self.ask("close")["open"]
        self.end()
        return not still_open

    def end(self):
        for process in (self.driver, self.window):
            process.kill()
            process.wait()
        self.driver.stdin.close()
        self.driver.stdout.close()

    @staticmethod
    def wait(holds, seen=lambda: None):
        """Waits until a condition holds; shows what is seen instead when it never does."""
        end = time.monotonic() + LONG
        while not holds():
            assert time.monotonic() < end, seen()
            time.sleep(0.05)

    def text(self, control):
        return self.ask("text", id=control)["text"].replace("\r\n", "\n")

    def title(self):
        return self.ask("text")["text"]

    def status(self):
        return self.text(STATUS)

    def rows(self, control, **window):
        return self.ask("list", id=control, **window)["rows"]

    def column(self, control, column):
        return [row[column] for row in self.rows(control)]

    def subjects(self):
        return self.column(LIST, 2)

    def wait_for(self, control, column, texts):
        self.wait(lambda: self.column(control, column) == texts, lambda: (self.rows(control), self.status()))

    def wait_text(self, control, part):
        self.wait(lambda: part in self.text(control), lambda: self.text(control))

    def wait_focus(self, control):
        self.wait(lambda: self.ask("focus")["id"] == control, lambda: self.ask("focus"))

    def choose(self, label):
        return self.ask("choose", id=TREE, label=label, list=LIST)["milliseconds"]

    def select(self, row, control=LIST):
        self.ask("select", id=control, row=row)

    def press(self, *keys):
        self.ask("press", keys=list(keys))

    def labels(self):
        """The labels of the tree, each after a blank for each level."""
        def lines(items, depth):
            for item in items:
                yield " " * depth + item["text"]
                yield from lines(item["items"], depth + 1)
        return list(lines(self.ask("tree", id=TREE)["items"], 0))
