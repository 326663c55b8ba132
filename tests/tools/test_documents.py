"""The pages' zeb examples, run in their order: each prints exactly the output shown below it."""
import datetime
import json
import re
import shlex
import shutil
import subprocess
import time

import world
from world import World, message

# What differs between runs, in the pages' form. Everything else is compared exactly.
PAGE_STORE = "5E679F7A9408E74B9D80592745FD5AD5"  # the store's identifier, a part of those of all that is in it
PAGE_DAY = "2026-02-01"  # the day on which the reader follows the page; the dates of the mail are others
PAGE_PROVIDER = r"C:\zebapi\bin\zebstore.dll"
DLL_VERSION = f"also on this machine\n   file          '{PAGE_PROVIDER}' (version 0.1.0.0, x64)\n\n"
ADDRESS_BOOK = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\WAB\\DLLPath"
PAGE_FOLDER = "C:\\Users\\ada\\"
ASCII_TREE = {"├─ ": "|- ", "└─ ": "`- ", "│  ": "|  "}  # where the output is no console

STAMP = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d")
STORE_IDENTIFIER_SIZE = re.compile(r"\(\d+ bytes\) (?=0000000038A1BB10)")  # it holds the path of the store's file
SEARCH_KEY = re.compile(r"(PR_SEARCH_KEY +PT_BINARY +\(16 bytes\)) [0-9A-F]{32}$", re.M)
HEX = re.compile(r"[0-9A-F]{32,}")


class Fold:
    """Replaces what differs between runs with names."""

    def __init__(self, store, provider, folder, is_now):
        self.store, self.provider, self.folder, self.is_now = store, provider, folder, is_now
        self.identifiers = []

    def __call__(self, text):
        text = text.replace(self.provider, "<provider>").replace(self.folder, "<folder>/")
        for stroke, ascii_stroke in ASCII_TREE.items() if world.WINDOWS else ():
            text = text.replace(stroke, ascii_stroke)
        text = STAMP.sub(lambda stamp: "<now>" if self.is_now(stamp[0]) else stamp[0], text)
        text = STORE_IDENTIFIER_SIZE.sub("(<size> bytes) ", text)
        text = SEARCH_KEY.sub(r"\1 <key>", text)
        return HEX.sub(self.identifier, text)

    def identifier(self, digits):
        """Numbers the identifiers of the store's objects in order of appearance; other hexadecimal text is unchanged."""
        if not self.store or self.store not in digits[0]:
            return digits[0]
        if digits[0] not in self.identifiers:
            self.identifiers.append(digits[0])
        return f"<identifier {self.identifiers.index(digits[0])}, {len(digits[0])} digits>"


class Example:
    """A command of a page, with the output shown below it."""

    def __init__(self, place, section, command):
        self.place, self.section = place, section
        words = shlex.split(command)
        self.environment = {}
        while re.match(r"[A-Z_]+=", words[0]):
            name, _, value = words.pop(0).partition("=")
            self.environment[name] = value
        self.tool, *self.arguments = words
        self.lines = []

    def watches(self):
        return self.arguments[:1] == ["watch"] or self.tool == "cookbook_watch_folder"

    def shown(self):
        return "\n".join(self.lines).strip("\n") + "\n" if any(self.lines) else ""


def examples(name):
    """The page's examples: an indented line that begins with "$ ", with the indented lines up to the next one."""
    found, section, inside = [], "", False
    for number, line in enumerate((world.ROOT / name).read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("    $ "):
            found.append(Example(f"{name}:{number}: {line.strip()}", section, line[6:]))
            inside = True
        elif inside and (line.startswith("    ") or not line):
            found[-1].lines.append(line[4:])
        else:
            section = line if line.startswith("#") else section
            inside = False
    return found


class Documents(World):
    registered = False

    def setUp(self):
        super().setUp()
        shutil.copytree(world.ROOT / "docs", self.folder / "docs")
        self.watched = None
        provider = str(world.BUILD / "bin" / ("zebstore.dll" if world.WINDOWS else "libzebstore.so"))
        began = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None) - datetime.timedelta(seconds=5)
        self.page = Fold(PAGE_STORE, PAGE_PROVIDER, PAGE_FOLDER, lambda stamp: stamp.startswith(PAGE_DAY))
        self.real = Fold(None, "Z:" + provider.replace("/", "\\") if world.WINDOWS else provider,
                         self.path("x")[:-1],
                         lambda stamp: began <= datetime.datetime.fromisoformat(stamp) <= began + datetime.timedelta(hours=1))

    def follow(self, name):
        """Runs the page's examples in order; a watch runs in parallel to the following examples of its section."""
        found = examples(name)
        self.assertGreater(len(found), 0, name)
        for example in found:
            self.assertRegex(example.tool, "^(zeb|example_inbox|cookbook_.*)$", example.place)
            if self.watched and self.watched.section != example.section:
                self.end_watch()
            if example.watches():
                self.start_watch(example)
                continue
            self.compare(example, self.printed(example))
            if self.watched:
                self.wait_for_change()
        if self.watched:
            self.end_watch()

    def printed(self, example):
        # A failing example shows its error text; a text that requests an option is a usage error.
        failed = example.shown().startswith("zeb: ")
        code = 0 if not failed else 2 if " give --" in example.shown() else 1
        done = self.run_tool(example.tool, *self.arguments(example), cwd=self.folder,
                             env={**self.environment, **example.environment})
        output = (done.stderr + done.stdout).decode("utf-8")
        if example.tool != "zeb":
            output = output.replace("\r\n", "\n")  # zeb itself writes no returns, on any system
        self.assertEqual(done.returncode, code, f"{example.place}\n{output}")
        return output

    def arguments(self, example):
        """Replaces an identifier shown earlier with the real one."""
        known = self.page.identifiers
        return [self.real.identifiers[known.index(each)] if each in known else each for each in example.arguments]

    def compare(self, example, printed):
        if not self.real.store and (self.folder / "demo.zeb").exists():
            self.real.store = self.shown()["PR_RECORD_KEY"]
        shown = example.shown()
        if not world.WINDOWS:
            # Only a DLL has a version, and for an intact file only the version is printed.
            shown = shown.replace(DLL_VERSION, "")
        self.assertEqual(self.page(shown), self.real(printed), example.place)

    def start_watch(self, example):
        command = [str(world.BUILD / "bin" / example.tool), *example.arguments]
        if world.WINDOWS:
            command = [str(world.ROOT / "scripts/wine-run.sh"), command[0] + ".exe", *example.arguments]
        self.watched, self.changes = example, 0
        self.output = (self.folder / "watch-output").open("w+b")
        self.addCleanup(self.output.close)
        self.process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=self.output,
                                        stderr=self.output)
        self.addCleanup(self.process.wait)
        self.addCleanup(self.process.kill)
        self.wait_for_lines(1)

    def wait_for_change(self):
        self.changes += 1
        self.wait_for_lines(1 + self.changes)

    def wait_for_lines(self, count):
        end = time.monotonic() + 60
        while self.seen().count("\n") < count:
            self.assertLess(time.monotonic(), end, f"{self.watched.place}\n{self.seen()}")
            time.sleep(0.05)

    def seen(self):
        self.output.seek(0)
        return self.output.read().decode("utf-8").replace("\r\n", "\n")

    def end_watch(self):
        self.assertEqual(self.process.wait(60), 0, self.watched.place)
        self.compare(self.watched, self.seen())
        self.watched = None

    def test_every_command_is_shown(self):
        listed = self.zeb("--help").out.split("Subcommands:\n")[1]
        commands = {line.split()[0] for line in listed.splitlines() if re.match(r"  \w", line)}
        self.assertEqual({example.arguments[0] for example in examples("docs/zeb.md")}, commands)

    def test_the_readme_shows_what_zeb_prints(self):
        self.follow("README.md")

    def test_the_commands_page_is_right(self):
        self.follow("docs/zeb.md")

    def test_the_providers_page_is_right(self):
        self.follow("docs/zebstore.md")

    def test_the_page_of_failures_is_right(self):
        self.follow("docs/failures.md")

    def test_getting_started_is_right(self):
        self.follow("docs/getting-started.md")

    def test_each_code_has_its_value(self):
        values = {each["name"]: each["value"] for each in json.loads(self.zeb("name", "MAPIErrors", "--json").out)["rows"]}
        named = [(page.name, *pair) for page in (world.ROOT / "docs").glob("*.md")
                 for pair in re.findall(r"(MAPI_[EW]_\w+)`?,? \(?(0x[0-9A-F]{8})", page.read_text(encoding="utf-8"))]
        self.assertGreater(len(named), 20)
        values["MAPI_E_UNEXPECTED_ID"] = 0x80040307  # not in the tables; document_failures_test provokes it
        for page, name, value in named:
            self.assertEqual(f"0x{values[name]:08X}", value, f"{page}: {name}")

    def test_the_cookbook_is_right(self):
        if world.WINDOWS:
            self.addCleanup(self.reg, "delete", ADDRESS_BOOK, "/f")
        self.follow("docs/cookbook.md")


class Cookbook(World):
    """What the cookbook's page says of its programs, in addition to their output."""

    def programs(self):
        return sorted(file.stem for file in (world.ROOT / "examples/cookbook").glob("*.cpp"))

    def test_each_program_is_shown(self):
        shown = {example.tool for example in examples("docs/cookbook.md")} - {"zeb"}
        self.assertEqual(shown, {f"cookbook_{name}" for name in self.programs()})
        self.assertEqual(len(shown), 12)

    def test_each_program_says_why_it_cannot(self):
        for name in self.programs():
            done = self.run_tool(f"cookbook_{name}")
            self.assertEqual(done.returncode, 1, name)
            said = (done.stdout if name == "host_test" else done.stderr).decode()
            self.assertEqual(len(said.splitlines()), 1, name + said)

    def test_the_host_survives_each_failure_of_the_provider(self):
        self.create_profile()
        self.load(message("one", PR_MESSAGE_FLAGS=0), message("two", PR_MESSAGE_FLAGS=1))
        failed = 0
        # A sample: each run starts a program. Fewer on Windows, where it takes longer. The last one has no such call.
        for call in [*range(1, 40, 9 if world.WINDOWS else 2), 1000]:
            self.environment["ZEBSTORE_FAULT"] = f"call:{call}:0x80040115"
            done = self.run_tool("cookbook_host_test")
            said = done.stdout.decode().replace("\r", "")
            self.assertEqual(done.returncode, 0, said)
            failed += said.startswith("passed: failed with '")
        self.assertEqual(said, "passed: 1 unread\n")
        self.assertGreater(failed, 1 if world.WINDOWS else 6)


class LoadFormat(World):
    """docs/load-format.md: its examples can be loaded and saved again."""

    SET = "{00020329-0000-0000-C000-000000000046}"
    # The names and values that the page's tables show, with values and types of ours.
    NAMES = {"PR_SUBJECT": "a", "PR_SUBJECT_W": "a", "PR_SUBJECT_A": "a", "0x3FDE0003": 28591,
             "{GUID}:PT_BOOLEAN:id:0x8503": True, "{GUID}:PT_MV_UNICODE:name:Keywords": ["a", "b"]}
    VALUES = {"0x68000003": '"0x8004010F"', "0x6801000A": '"0x8004010F"', "0x68020004": '"0x7FC00000"',
              "0x68030005": '"0x7FF8000000000000"', "0x6804000B": "true", "0x6805000B": "false",
              "0x6806000B": '"0x0002"', "0x68070040": '"2026-01-02T03:04:05.1234567Z"',
              "0x68080040": '"0x7FFFFFFFFFFFFFFF"', "0x68090048": '"{00062008-0000-0000-C000-000000000046}"'}

    def setUp(self):
        super().setUp()
        self.create_profile()
        self.page = (world.ROOT / "docs/load-format.md").read_text(encoding="utf-8")

    def table(self, heading, column):
        """The code in a column of the table below a heading."""
        rows = re.search(rf"\n## {heading}\n\n((?:\|.*\n)+)", self.page)[1].splitlines()[2:]
        return [code for row in rows for code in re.findall(r"`([^`]+)`", row.split(" | ")[column])]

    def saved(self):
        return [json.loads(line) for line in self.zeb("save", "/").out.splitlines()]

    def test_its_lines_load_and_come_back(self):
        lines = [json.loads(line) for block in re.findall(r"```json\n(.*?)```", self.page, re.S)
                 for line in block.splitlines()]
        self.assertEqual(self.load(*lines).out, "1 message loaded\n1 folder loaded\n3 address book entries loaded\n")
        saved = self.saved()
        for line in lines:
            for key in {"properties", "folderProperties"} & line.keys() if "folder" in line else ():
                self.assertTrue(any(each["folder"] == line["folder"] and line[key].items() <= each.get(key, {}).items()
                                    for each in saved), line)
        entries = json.loads(self.zeb("ab", "list", "Global Address List", "--json").out)["entries"]
        self.assertEqual([each["name"] for each in entries],
                         [line["properties"]["PR_DISPLAY_NAME"] for line in lines if "addressBook" in line])

    def test_each_name_form_is_taken(self):
        self.assertEqual(self.table("Names of properties", 0), list(self.NAMES))
        names = {name.replace("{GUID}", self.SET): value for name, value in self.NAMES.items()}
        self.load(*[{"folder": "Inbox", "properties": {name: value}} for name, value in names.items()])
        saved = [each["properties"] for each in self.saved() if "properties" in each]
        self.assertEqual(len(saved), len(names))
        for each, (name, value) in zip(saved, names.items()):
            self.assertEqual(each[re.sub("_[AW]$", "", name)], value)

    def test_each_value_form_is_taken(self):
        shown = [code for code in self.table("Values", 1) if not re.match(r'PT_|null|{"hex"', code)]
        self.assertEqual(shown, list(dict.fromkeys(self.VALUES.values())))
        self.load("{" + '"folder": "Inbox", "properties": {'
                  + ", ".join(f'"{tag}": {value}' for tag, value in self.VALUES.items()) + "}}")
        kept = {each["tag"] for each in json.loads(self.zeb("show", "Inbox", "1", "--json").out)["properties"]}
        self.assertEqual(self.VALUES.keys() - kept, {"0x6801000A"})  # an error is taken and not stored
