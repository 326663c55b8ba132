#!/usr/bin/env python3
"""Compares what zeb-import puts into a store with what another reader, pffexport, shows of the same mailbox.

check-import.py BUILD_DIR [MAILBOX...]   imports each mailbox (without any: the samples) into a store of its own, dumps the
                                         store through the library (store_dump) and the mailbox by "pffexport -m items -d",
                                         and compares every property of every folder, message, recipient and attachment, and
                                         the bytes of every attachment. Prints the counts.
check-import.py --self-test BUILD_DIR    proves on the smallest sample that a change of the store is seen

The differences that may be are the rows of the table in docs/import.md; one that is not there fails, and so does a row
that explains nothing.
"""
import argparse
import collections
import contextlib
import functools
import io
import json
import os
import pathlib
import pickle
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
SAMPLES = ROOT / "build/deps/node_modules/pst-extractor/example/testdata"
MAILBOXES = ["enron.pst", "pstextractortest@outlook.com.ost", "pstextractortestpdf@outlook.com.ost"]
# The folder that becomes the top of the user's mail: what PST and OST files call it.
TOPS = [("Root - Mailbox", "IPM_SUBTREE"), ("Top of Personal Folders",), ("Top of Outlook data file",)]

PT_I2, PT_LONG, PT_BOOLEAN, PT_STRING8, PT_UNICODE, PT_CLSID, PT_BINARY = 2, 3, 0xB, 0x1E, 0x1F, 0x48, 0x102
MV = 0x1000
SIZES = {PT_I2: 2, PT_LONG: 4, 4: 4, 5: 8, 6: 8, 7: 8, PT_BOOLEAN: 2, 0x14: 8, 0x40: 8, PT_CLSID: 16}
BARE = ("Meeting",)
IPM_SUBTREE = "0x35e00102"
ENTRYID, DISPLAY_NAME, ATTACH_DATA = "0x0fff0102", 0x3001, "0x37010102"

Entry = collections.namedtuple("Entry", "id type name number data")
Entry.__doc__ = "One property that the other reader shows; name or number for a named one."


class Unreadable(Exception):
    pass


@functools.lru_cache(maxsize=None)
def read_dump(file):
    """The record sets of an ItemValues.txt: a list of lists of Entry."""
    sets, fields, data = collections.defaultdict(list), {}, bytearray()

    def close():
        if "Entry type" in fields:
            number = fields.get("Maps to entry type")
            sets[int(fields["Set"])].append(
                Entry(int(fields["Entry type"], 16), int(fields["Value type"], 16), fields.get("Maps to entry"),
                      None if number is None else int(number, 16), bytes(data)))
        fields.clear()
        data.clear()

    total = None
    for line in file.read_text(encoding="utf-8", errors="surrogateescape").split("\n"):
        dumped = re.match(r"0x[0-9a-f]{8}: ((?:[0-9a-f]{2} {1,2}){1,16})", line)
        if dumped:
            data += bytes.fromhex(dumped.group(1))
            continue
        label, colon, value = line.partition(":")
        if label == "Number of sets":
            total = int(value)
        if label == "Set":
            close()
        if colon:
            fields[label] = value.strip("\t")
    close()
    shown = [sets[index] for index in sorted(sets)]
    if total is None or (total != len(shown) and any(shown)):
        raise Unreadable(f"{file} tells {total} sets and shows {len(shown)}")
    return shown


def text_of(data):
    """UTF-16 without what ends it."""
    while data[-2:] == b"\0\0" and len(data) % 2 == 0:
        data = data[:-2]
    return data


def elements(kind, data):
    """The elements of a multi-valued property as files keep it."""
    size = SIZES.get(kind)
    if size:
        if len(data) % size:
            raise Unreadable("a multi-valued property ends within an element")
        return [data[i:i + size] for i in range(0, len(data), size)]
    if not data:
        return []
    count = int.from_bytes(data[:4], "little")
    ends = [int.from_bytes(data[4 + 4 * i:8 + 4 * i], "little") for i in range(count)] + [len(data)]
    return [data[begin:end] for begin, end in zip(ends, ends[1:])]


@functools.lru_cache(maxsize=None)
def values_of(entry):
    """What the store must have: a list of the values' bytes as hexadecimal text."""
    kind = entry.type & ~MV
    raw = elements(kind, entry.data) if entry.type & MV else [entry.data]
    if kind == PT_UNICODE:
        raw = [text_of(value) for value in raw]
    elif kind == PT_STRING8:
        raw = [value.rstrip(b"\0").decode("cp1252").encode() for value in raw]
    elif kind in SIZES:
        # Booleans take one byte in a file and two in a property; shorts take four in a table.
        raw = [value[:SIZES[kind]].ljust(SIZES[kind], b"\0") if value else value for value in raw]
    return [value.hex() for value in raw]


class Names:
    """A named property's tag in the file must be one name in the store, and the other way round."""

    def __init__(self):
        self.possible = {}

    def fits(self, tag, found):
        known = self.possible.get(tag)
        fits = found if known is None else known & found
        if not fits:
            return False
        self.possible[tag] = fits
        return True

    def clashes(self):
        sure = collections.defaultdict(list)
        for tag, names in self.possible.items():
            if len(names) == 1:
                sure[next(iter(names))].append(tag)
        return {name: tags for name, tags in sure.items() if len(tags) > 1}


class Explained:
    """The rows of docs/import.md: | object | `0xNNNN` | how | why |. `how` says what is checked of the difference:
    "own" (the store answers for itself), "mark" (two characters before a text), "cell" (an empty column of a table in the
    file), "row" (a number that such a table gives its rows)."""

    def __init__(self, text):
        self.rows = {(kind, int(tag, 16)): how for kind, tag, how in re.findall(
            r"^\| (folder|message|recipient|attachment) \| `(0x[0-9A-F]{4})`[^|]* \| (own|mark|cell|row) \|", text, re.M)}
        self.seen = set()

    def take(self, kind, entry, stored):
        """Whether the difference of what is shown from `stored`, the values in the store, is one of those."""
        how = self.rows.get((kind, entry.id))
        fits = {None: False, "own": stored != [], "row": stored == [], "cell": stored == [] and not any(entry.data),
                "mark": entry.data[:2] == b"\1\0" and stored == [[text_of(entry.data)[4:].hex()]]}[how]
        if fits:
            self.seen.add((kind, entry.id))
        return fits

    def idle(self):
        return [f"{kind} 0x{tag:04X}" for kind, tag in self.rows if (kind, tag) not in self.seen]


class Comparison:
    def __init__(self, explained):
        self.explained = explained
        self.compared = collections.Counter()
        self.equal = collections.Counter()
        self.excused = collections.Counter()
        self.problems = []
        self.names = Names()

    def problem(self, where, what):
        self.problems.append(f"{where}: {what}")

    def entry_equals(self, entry, properties):
        wanted = values_of(entry)
        if entry.id < 0x8000:
            tag = f"0x{entry.id:04x}{entry.type:04x}"
            return any(each["tag"] == tag and each.get("values") == wanted for each in properties)
        found = {(each.get("set"), each.get("name", each.get("id"))) for each in properties
                 if int(each["tag"], 16) & 0xFFFF == entry.type and each.get("values") == wanted
                 and int(each["tag"], 16) >> 16 >= 0x8000
                 and (each.get("name") == entry.name if entry.name is not None else each.get("id") == entry.number)}
        return bool(found) and self.names.fits(entry.id, found)

    def entries(self, kind, where, entries, properties):
        for entry in entries:
            self.compared[kind] += 1
            if self.entry_equals(entry, properties):
                self.equal[kind] += 1
            elif entry.id < 0x8000 and self.explained.take(kind, entry, [
                    each.get("values") for each in properties if int(each["tag"], 16) == entry.id << 16 | entry.type]):
                self.excused[kind, entry.id] += 1
            else:
                self.problem(where, f"0x{entry.id:04x}{entry.type:04x} {entry.name or entry.number or ''} is "
                                    f"{self.show(entry, properties)} in the store, not {str(values_of(entry))[:120]}")

    @staticmethod
    def show(entry, properties):
        same = [each for each in properties if int(each["tag"], 16) >> 16 == entry.id and entry.id < 0x8000]
        return str([(each["tag"], each.get("values", each.get("error"))) for each in same])[:160] if same else "not"

    def attachments(self, where, folder, message):
        stored = message["attachments"]
        shown = read_dump(folder / "ItemValues.txt") if (folder / "ItemValues.txt").exists() else []
        files = [each for each in folder.iterdir() if each.name != "ItemValues.txt"] if folder.is_dir() else []
        for each in files:
            if each.is_dir():
                self.problem(where, f"the other reader shows a folder {each.name} among the attachments")
        if len(shown) != len(stored) or len(files) != len(stored):
            self.problem(where, f"{len(stored)} attachments in the store, {len(shown)} shown, {len(files)} written out")
            return
        for index, (entries, attachment) in enumerate(zip(shown, stored)):
            self.entries("attachment", f"{where}, attachment {index + 1}", entries, attachment["properties"])
        for file in files:
            index = int(file.name.split("_")[0]) - 1
            self.compared["attached file"] += 1
            values = [each.get("values") for each in stored[index]["properties"] if each["tag"] == ATTACH_DATA]
            if values == [[file.read_bytes().hex()]]:
                self.equal["attached file"] += 1
            else:
                self.problem(where, f"the bytes of attachment {index + 1} differ from {file.name}")

    def message(self, where, folder, entries, message):
        self.entries("message", where, entries, message["properties"])
        # Of some kinds of messages the other reader shows nothing but the properties.
        if folder.name.startswith(BARE):
            return
        file = folder / "RecipientsItemValues.txt"
        shown = read_dump(file) if file.exists() else []
        if len(shown) != len(message["recipients"]):
            self.problem(where, f"{len(message['recipients'])} recipients in the store, {len(shown)} shown")
        for index, (expected, recipient) in enumerate(zip(shown, message["recipients"])):
            self.entries("recipient", f"{where}, recipient {index + 1}", expected, recipient)
        self.attachments(where, folder / "Attachments", message)

    def messages(self, where, folders, messages):
        """Each message that is shown, with the one of the store's that is most like it."""
        left = [(index, {(each["tag"], *each.get("values", ())) for each in message["properties"]})
                for index, message in enumerate(messages)]
        for folder in folders:
            entries = read_dump(folder / "ItemValues.txt")[0]
            if not left:
                self.problem(where, f"{folder.name} is not in the store")
                continue
            wanted = {(f"0x{each.id:04x}{each.type:04x}", *values_of(each)) for each in entries if each.id < 0x8000}
            best = max(left, key=lambda candidate: len(wanted & candidate[1]))
            left.remove(best)
            self.message(f"{where}, {folder.name}", folder, entries, messages[best[0]])

    def report(self):
        total, equal = sum(self.compared.values()), sum(self.equal.values())
        for kind in self.compared:
            print(f"  {kind}: {self.compared[kind]} compared, {self.equal[kind]} equal, "
                  f"{self.compared[kind] - self.equal[kind]} different")
        for (kind, tag), count in sorted(self.excused.items()):
            print(f"    explained: {kind} 0x{tag:04X}, {count} times")
        print(f"  compared {total}, equal {equal}, different {total - equal}, "
              f"of these explained {sum(self.excused.values())}")


class Store:
    """What store_dump says, by folder; the path of the top of the user's mail is ()."""

    def __init__(self, lines):
        self.store = [line for line in lines if line["kind"] == "store"][0]
        self.folders = {tuple(line["folder"]): line for line in lines if line["kind"] == "folder"}
        self.messages = collections.defaultdict(list)
        for line in lines:
            if line["kind"] == "message":
                self.messages[tuple(line["folder"])].append(line)
        identifier = self.value(self.store, IPM_SUBTREE)
        self.top = [path for path, line in self.folders.items() if self.value(line, ENTRYID) == identifier][0]

    @staticmethod
    def value(line, tag):
        return [each["values"] for each in line["properties"] if each["tag"] == tag][0]

    def count(self):
        return sum(len(messages) for messages in self.messages.values())


def is_message(folder):
    """Folders of messages are called by what the message is and a number of five digits; a folder may be, too, but has
    no message class."""
    return bool(re.search(r"\d{5}$", folder.name)) and \
        any(entry.id == 0x1A for entry in read_dump(folder / "ItemValues.txt")[0])


def walk(comparison, store, folder, path, source_top):
    """Compares the folder that the other reader wrote at `folder` and all below. @return the messages there."""
    inside = sorted(each for each in folder.iterdir() if each.is_dir())
    messages = [each for each in inside if is_message(each)]
    if path:
        where = path[len(source_top):] if path[:len(source_top)] == source_top else path
        target = store.top + where if path[:len(source_top)] == source_top else where
        name = "/".join(path)
        entries = read_dump(folder / "ItemValues.txt")[0]
        if target in store.folders:
            comparison.entries("folder", name, entries, store.folders[target]["properties"])
            comparison.messages(name, messages, store.messages[target])
        else:
            comparison.problem(name, "the folder is not in the store")
    count = len(messages)
    for each in inside:
        if each not in messages:
            shown = [e.data for e in read_dump(each / "ItemValues.txt")[0] if e.id == DISPLAY_NAME]
            below = path + (text_of(shown[0]).decode("utf-16-le"),)
            count += walk(comparison, store, each, below, source_top)
    return count


def run(command, codes=(0,), **more):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, errors="replace", check=False, **more)
    if done.returncode not in codes:
        raise Unreadable(f"{pathlib.Path(command[0]).name} ended with {done.returncode}: {(done.stderr or done.stdout)[-500:]}")
    return done.stdout


def read_both(build, mailbox, folder):
    """The store's side as lines of store_dump, and the folder and the output of the other reader."""
    environment = dict(os.environ, ZEBAPI_REGISTRY=str(folder / "registry.reg"), XDG_CONFIG_HOME=str(folder))
    for name in ("ZEBAPI_LOG", "ZEBSTORE_TRACE", "ZEBSTORE_FAULT"):
        environment.pop(name, None)
    tools = build / "bin"
    run([tools / "zeb", "provider", "install"], env=environment)
    run([tools / "zeb", "profile", "create", "check", "--store", folder / "check.zeb", "--default"], env=environment)
    run([tools / "zeb-import", "pst", mailbox], env=environment)
    lines = [json.loads(line) for line in run([tools / "store_dump", "check"], env=environment).splitlines()]
    output = run(["pffexport", "-q", "-m", "items", "-d", "-t", folder / "other", mailbox])
    return lines, folder / "other.export", output


def compare(comparison, lines, exported, output):
    store = Store(lines)
    tops = [top for top in TOPS if exported.joinpath(*top).is_dir()]
    if not tops:
        raise Unreadable("the top of the user's mail is not among " + ", ".join("/".join(top) for top in TOPS))
    shown = walk(comparison, store, exported, (), tops[0])
    left_out = len(re.findall(r"^Skipped item", output, re.M))
    print(f"  {len(store.folders)} folders, {store.count()} messages in the store; the other reader shows {shown} "
          f"messages and leaves out {left_out}")
    if shown + left_out != store.count():
        comparison.problem("the mailbox", f"{store.count()} messages in the store, not {shown + left_out}")
    for name, tags in comparison.names.clashes().items():
        comparison.problem("named properties", f"{name} is mapped to {[hex(tag) for tag in tags]} of the file")


def check(build, mailboxes, explained):
    failed = False
    for mailbox in mailboxes:
        print(mailbox.name)
        comparison = Comparison(explained)
        with tempfile.TemporaryDirectory(prefix="zeb-import-") as folder:
            compare(comparison, *read_both(build, mailbox, pathlib.Path(folder)))
        comparison.report()
        for problem in comparison.problems[:40]:
            print(f"  NOT EXPLAINED: {problem}")
        failed = failed or bool(comparison.problems) or not comparison.compared["message"]
    return failed


def damages(lines):
    """Changed copies of the store's side, each with what was done to it. A change is made where it can be: on the last
    object that has what it needs."""

    def tagged(tag):
        return lambda each: re.fullmatch(tag, each["tag"]) and "".join(each.get("values", []))

    def having(kind, tag):
        return lambda line: line["kind"] == kind and not line.get("associated") and any(map(tagged(tag), line["properties"]))

    def containing(part):
        return lambda line: line["kind"] == "message" and not line["associated"] and line[part]

    def last(all_lines, fits):
        return [line for line in all_lines if fits(line)][-1]

    def flip(properties, tag):
        values = [each for each in properties if tagged(tag)(each)][-1]["values"]
        value = values[-1]
        values[-1] = value[:-1] + ("0" if value[-1:] != "0" else "1")

    def flip_in(kind, tag):
        return lambda c: flip(last(c, having(kind, tag))["properties"], tag)

    def drop(kind, tag):
        def change(c):
            properties = last(c, having(kind, tag))["properties"]
            properties.remove([each for each in properties if tagged(tag)(each)][-1])
        return change

    def retype(c):
        [each for each in last(c, having("message", TEXT))["properties"] if tagged(TEXT)(each)][-1]["tag"] = TEXT[:-1] + "e"

    def rename(c):
        named = [each for line in c for each in line["properties"] if each.get("name") == "TeeVersion"]
        named[-1]["set"] = named[-1]["set"][::-1]

    TEXT = "0x0c1a001f"
    changes = {
        "a byte of a message's text": flip_in("message", TEXT),
        "a byte of a named property": flip_in("message", "0x8...001f"),
        "an element of a multi-valued property": flip_in("message", "0x....101f"),
        "a byte after the mark of a subject": flip_in("message", "0x0037001f"),
        "a byte of a folder": flip_in("folder", "0x30070040"),
        "a type": retype,
        "the set of one name": rename,
        "a missing property": drop("message", TEXT),
        "a missing property that the store answers": drop("message", "0x0e080003"),
        "a byte of a recipient": lambda c: flip(last(c, containing("recipients"))["recipients"][-1], "0x3003001f"),
        "a missing recipient": lambda c: last(c, containing("recipients"))["recipients"].pop(),
        "a byte of an attachment's name":
            lambda c: flip(last(c, containing("attachments"))["attachments"][-1]["properties"], "0x3704001f"),
        "a byte of an attached file":
            lambda c: flip(last(c, containing("attachments"))["attachments"][-1]["properties"], ATTACH_DATA),
        "a missing attachment": lambda c: last(c, containing("attachments"))["attachments"].pop(),
        "a missing message": lambda c: c.remove(last(c, having("message", TEXT))),
        "a missing folder": lambda c: c.remove(last(c, lambda line: line["kind"] == "folder")),
    }
    whole = pickle.dumps(lines)
    for what, change in changes.items():
        changed = pickle.loads(whole)
        change(changed)
        yield what, changed


def self_test(build, explained):
    with tempfile.TemporaryDirectory(prefix="zeb-import-") as folder:
        lines, exported, output = read_both(build, SAMPLES / MAILBOXES[-1], pathlib.Path(folder))
        clean = Comparison(explained)
        compare(clean, lines, exported, output)
        if clean.problems:
            sys.exit("check-import.py: the sample itself differs: " + clean.problems[0])
        missed = []
        for what, changed in damages(lines):
            comparison = Comparison(explained)
            with contextlib.redirect_stdout(io.StringIO()):
                compare(comparison, changed, exported, output)
            print(f"  {what}: {comparison.problems[0][:150] if comparison.problems else 'NOT SEEN'}")
            if not comparison.problems:
                missed.append(what)
    return missed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("mailbox", type=pathlib.Path, nargs="*")
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    explained = Explained((ROOT / "docs/import.md").read_text(encoding="utf-8"))
    build = arguments.build.resolve()
    try:
        if arguments.self_test:
            return 1 if self_test(build, explained) else 0
        failed = check(build, arguments.mailbox or [SAMPLES / name for name in MAILBOXES], explained)
    except Unreadable as problem:
        sys.exit(f"check-import.py: {problem}")
    if not arguments.mailbox and explained.idle():
        print("docs/import.md explains what does not occur: " + ", ".join(explained.idle()))
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
