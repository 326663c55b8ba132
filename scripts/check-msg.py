#!/usr/bin/env python3
"""Compares messages with what becomes of them in .msg files.

check-msg.py BUILD_DIR               imports the collection of tests/tools/mail_collection.py and a sample mailbox, exports every
                                     message as a .msg file (zeb export msg), imports these into another store, and compares all
                                     properties of messages, recipients, attachments and embedded messages.
                                     Prints "N messages, M different" for each, and each difference.
check-msg.py --self-test BUILD_DIR   proves that a change of each part of a message is seen
"""
import argparse
import copy
import importlib.util
import pathlib
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
SPEC = importlib.util.spec_from_file_location("check_mail", ROOT / "scripts/check-mail.py")
mail = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(mail)

SAMPLE = mail.mailboxes.SAMPLES / "pstextractortest@outlook.com.ost"
# What each store has of its own: identifiers, places, sizes and counts, and what may be done with an object.
OWN = {0x0FF9, 0x0FFE, 0x0FF7, 0x0FFB, 0x0FF6, 0x0FFA, 0x340D, 0x0FF8, 0x0FFF, 0x0E09, 0x0FF4, 0x0E08, 0x0E21, 0x3000}
RECIPIENTS_OWN = {0x3000}


def key_of(each):
    tag = int(each["tag"], 16)
    return (each["set"], each.get("name", each.get("id")), tag & 0xFFFF) if "set" in each else tag


def properties_of(properties, own):
    return {key_of(each): each.get("values", each.get("error")) for each in properties if int(each["tag"], 16) >> 16 not in own}


def comparable(message):
    return {"properties": properties_of(message["properties"], OWN),
            "recipients": [properties_of(each, RECIPIENTS_OWN) for each in message["recipients"]],
            "attachments": [{"properties": properties_of(each["properties"], OWN),
                             "message": comparable(each["message"]) if "message" in each else None} for each in message["attachments"]]}


def difference(first, second, where=""):
    """Where two values differ first; empty when they are equal."""
    if first == second:
        return ""
    if isinstance(first, dict) and isinstance(second, dict):
        for name in sorted({*first, *second}, key=repr):
            if first.get(name) != second.get(name):
                shown = name if isinstance(name, str) else hex(name) if isinstance(name, int) else repr(name)
                return difference(first.get(name), second.get(name), f"{where} {shown}")
    if isinstance(first, list) and isinstance(second, list) and len(first) == len(second):
        for number, (one, other) in enumerate(zip(first, second)):
            if one != other:
                return difference(one, other, f"{where}[{number}]")
    return f"{where}: {str(first)[:80]} and {str(second)[:80]}"


class Collection:
    """A store, and another one with what came back."""

    def __init__(self, build, folder, sources):
        self.tools, self.folder = build / "bin", folder
        self.environment = mail.environment_of(folder)
        self.run("zeb", "provider", "install")
        self.create("check")
        for kind, source in sources:
            self.run("zeb-import", kind, source, codes=(0, 3))
        self.first = mail.mailboxes.Store(mail.dump(build, "check", self.environment))
        # Associated messages have no number that zeb export takes.
        self.paths = [path for path, messages in self.first.messages.items()
                      if path[:len(self.first.top)] == self.first.top and len(path) > len(self.first.top) and self.ordinary(messages)]
        for number, path in enumerate(self.paths):
            name = "/".join(part.replace("\\", "\\\\").replace("/", "\\/") for part in path[len(self.first.top):])
            self.run("zeb", "export", "msg", name, "-o", folder / f"msg/{number:03}")
        self.create("again")
        self.said = self.run("zeb-import", folder / "msg")
        self.again = mail.mailboxes.Store(mail.dump(build, "again", self.environment))

    def run(self, tool, *arguments, codes=(0,)):
        return mail.mailboxes.run([self.tools / tool, *arguments], codes=codes, env=self.environment)

    def create(self, profile):
        self.run("zeb", "profile", "create", profile, "--store", self.folder / f"{profile}.zeb", "--default")

    @staticmethod
    def ordinary(messages):
        return [message for message in messages if not message["associated"]]

    def pairs(self):
        for number, path in enumerate(self.paths):
            first = self.ordinary(self.first.messages[path])
            again = self.again.messages.get(self.again.top + ("msg", f"{number:03}"), [])
            for place in range(max(len(first), len(again))):
                where = f"{'/'.join(path)}, message {place + 1}"
                yield where, first[place] if place < len(first) else None, again[place] if place < len(again) else None


def compare(pairs):
    """@return the number of messages and the differences"""
    count, told = 0, []
    for where, first, again in pairs:
        count += 1
        if first is None or again is None:
            told.append(f"{where}: {'came from nowhere' if first is None else 'is missing'}")
        else:
            found = difference(comparable(first), comparable(again))
            told += [where + found] if found else []
    return count, told


def collections(build, folder):
    files = folder / "files"
    mail.mail_collection.write(files)
    boxes = [("mbox", file) for file in sorted(files.glob("*.mbox"))]
    for name, sources in (("collection", [("eml", files / "mail"), ("eml", files / "box"), *boxes]), (SAMPLE.name, [("pst", SAMPLE)])):
        below = folder / name
        below.mkdir()
        yield name, Collection(build, below, sources)


def check(build):
    # libgsf inserts each part of a file in the order of the names: 20,000 attachments take minutes and 1.5 GB.
    mail.mail_collection.PARTS = 2_000
    different = 0
    with tempfile.TemporaryDirectory(prefix="zeb-msg-") as folder:
        for name, collection in collections(build, pathlib.Path(folder)):
            count, told = compare(collection.pairs())
            print(f"{name}: {count} messages, {len(told)} different")
            for each in told[:40]:
                print(f"  {each[:300]}")
            different += len(told) + (count < 100)
    return different


def changes():
    def flip(properties):
        each = [each for each in properties if each.get("values") and each["values"][0] and int(each["tag"], 16) >> 16 not in OWN][-1]
        each["values"][0] = ("0" if each["values"][0][0] != "0" else "1") + each["values"][0][1:]

    return {"property": lambda message: flip(message["properties"]), "recipient": lambda message: flip(message["recipients"][-1]),
            "attachment": lambda message: flip(message["attachments"][-1]["properties"]),
            "message": lambda message: flip(message["attachments"][-1]["message"]["properties"]),
            "missing property": lambda message: message["properties"].pop(),
            "missing attachment": lambda message: message["attachments"].pop()}


def self_test(build):
    mail.mail_collection.PARTS = 20
    missed = 0
    with tempfile.TemporaryDirectory(prefix="zeb-msg-") as folder:
        _, collection = next(collections(build, pathlib.Path(folder)))
        pairs = list(collection.pairs())
    whole = [(where, first, again) for where, first, again in pairs
             if again and again["recipients"] and again["attachments"] and "message" in again["attachments"][-1]]
    for name, change in changes().items():
        where, first, again = whole[0]
        changed = copy.deepcopy(again)
        change(changed)
        told = compare([(where, first, changed)])[1]
        print(f"  {name}: {told[0][:150] if told else 'NOT SEEN'}")
        missed += not told
    return missed + (compare(whole[:1])[1] != [])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    return 1 if (self_test(build) if arguments.self_test else check(build)) else 0


if __name__ == "__main__":
    sys.exit(main())
