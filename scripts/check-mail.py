#!/usr/bin/env python3
"""Compares what zeb-import made of mail with what a second reader finds in the same files.

check-mail.py BUILD_DIR               imports the three sample mailboxes and the collection of tests/tools/mail_collection.py, reads
                                      the stores back (store_dump), and compares subject, author, dates, recipients, text and the
                                      hashes of the attachments with those that pffexport and Python's email package find.
                                      Exports the collection as .eml and mbox, imports both again, and compares these and the
                                      headers with what was exported; proves that a change of each is seen.
                                      Prints the counts, each difference, and at the end "N different".
check-mail.py --self-test BUILD_DIR   proves on the collection that a change of each of these is seen
"""
import argparse
import codecs
import collections
import copy
import datetime
import email
import email.header
import email.utils
import hashlib
import html.parser
import importlib.util
import json
import os
import pathlib
import re
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/tools"))
import mail_collection

SPEC = importlib.util.spec_from_file_location("check_import", ROOT / "scripts/check-import.py")
mailboxes = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(mailboxes)

ASPECTS = ("subject", "author", "dates", "recipients", "text", "attachments")
SUBJECT, CLASS, AUTHOR, AUTHOR_ADDRESS, SENDER, SENDER_ADDRESS = 0x37, 0x1A, 0x42, 0x65, 0xC1A, 0xC1F
SUBMITTED, DELIVERED, BODY, HTML, CODE_PAGE, FLAGS = 0x39, 0xE06, 0x1000, 0x1013, 0x3FDE, 0xE07
HEADERS = 0x7D
NAME, ADDRESS, KIND, DATA, FILE_NAME, SHORT_NAME = 0x3001, 0x3003, 0xC15, 0x3701, 0x3707, 0x3704


def digest(data):
    return hashlib.sha256(data).hexdigest()


def by_identifier(properties):
    """What store_dump says of an object: identifier to the value's bytes; named properties are left out."""
    return {int(each["tag"], 16) >> 16: (int(each["tag"], 16) & 0xFFFF, bytes.fromhex("".join(each["values"])))
            for each in properties if int(each["tag"], 16) >> 16 < 0x8000 and "values" in each}


def text_in(values, identifier):
    kind, data = values.get(identifier, (mailboxes.PT_UNICODE, b""))
    return data.decode("utf-16-le", "surrogatepass") if kind == mailboxes.PT_UNICODE else data.decode("utf-8", "surrogateescape")


def number_in(values, identifier):
    return int.from_bytes(values[identifier][1], "little") if identifier in values else None


def letters(text):
    """A text without its white space and marks of lists: what two renderings of one page have in common."""
    return re.sub(r"[\s*\u00a0]", "", text)


class Differences:
    def __init__(self):
        self.compared, self.different, self.shown = collections.Counter(), 0, []

    def compare(self, where, wanted, found):
        for aspect in wanted:
            self.compared[aspect] += 1
            if wanted[aspect] != found[aspect]:
                self.differ(f"{where}: {aspect}: {str(found[aspect])[:300]!r} in the store, not {str(wanted[aspect])[:300]!r}")

    def differ(self, what):
        self.different += 1
        self.shown.append(what)


# What the store has.

def attachment_in_store(attachment):
    values = by_identifier(attachment["properties"])
    if "message" in attachment:
        return ("message", tuple(sorted((k, str(v)) for k, v in stored(attachment["message"]).items())))
    return (text_in(values, FILE_NAME), digest(values.get(DATA, (0, b""))[1]))


def stored(message):
    """The aspects of a message of the store that came from Internet mail."""
    values = by_identifier(message["properties"])
    people = [by_identifier(each) for each in message["recipients"]]
    return {
        "subject": text_in(values, SUBJECT),
        "author": (text_in(values, AUTHOR), text_in(values, AUTHOR_ADDRESS), text_in(values, SENDER), text_in(values, SENDER_ADDRESS)),
        "dates": number_in(values, SUBMITTED),
        "recipients": [(number_in(each, KIND), text_in(each, NAME), text_in(each, ADDRESS)) for each in people],
        "text": text_in(values, BODY) if HTML not in values else
        (letters(text_in(values, BODY)), digest(values[HTML][1]), number_in(values, CODE_PAGE)),
        "attachments": [attachment_in_store(each) for each in message["attachments"]],
    }


# What Python's email package finds.

def by_windows_1252(error):
    byte = error.object[error.start:error.start + 1]
    try:
        return byte.decode("cp1252"), error.start + 1
    except UnicodeDecodeError:
        return "\ufffd", error.start + 1


codecs.register_error("windows-1252", by_windows_1252)


def decoded(data, charset):
    """All bytes as text: in the named character set, as UTF-8, or single bytes as windows-1252."""
    for name in (charset or "utf-8", "utf-8"):
        try:
            return data.decode(name).replace("\0", "\ufffd")
        except (UnicodeDecodeError, LookupError):
            continue
    try:
        codecs.lookup(charset or "utf-8")
    except LookupError:
        charset = "utf-8"
    return data.decode(charset or "utf-8", "windows-1252").replace("\0", "\ufffd")


def header_text(raw):
    """A header as email has it, with its encoded words read."""
    # Bytes in no character set come as surrogates, names in pieces as text.
    data = str(raw).encode("utf-8", "surrogateescape")
    unfolded = re.sub(r"\r?\n([ \t])", r"\1", decoded(data, None)).strip()
    pieces = []
    for part, charset in email.header.decode_header(unfolded):
        pieces.append(decoded(part, charset) if isinstance(part, bytes) and charset else
                      part if isinstance(part, str) else part.decode("raw-unicode-escape") if charset is None else decoded(part, charset))
    return "".join(pieces)


def raw_headers(message, name):
    # The items keep the bytes of headers in no character set; get() does not.
    return [value for key, value in message._headers if key.lower() == name.lower()]


def people_in(message, name, first=False):
    values = raw_headers(message, name)
    unfolded = [decoded(re.sub(r"\r?\n", "", str(each)).encode("utf-8", "surrogateescape"), None) for each in values[:1 if first else None]]
    found = []
    for shown, address in email.utils.getaddresses(unfolded):
        if address and "@" in address:
            found.append((header_text(shown) or address, address))
    return found


def moment(message):
    values = raw_headers(message, "Date")
    if not values:
        return None
    when = email.utils.parsedate_to_datetime(values[0])
    if when.tzinfo is None:
        when = when.replace(tzinfo=datetime.timezone.utc)
    return int((when - datetime.datetime(1601, 1, 1, tzinfo=datetime.timezone.utc)) / datetime.timedelta(seconds=1)) * 10_000_000


class Page(html.parser.HTMLParser):
    def __init__(self, page):
        super().__init__(convert_charrefs=True)
        self.text, self.hidden = "", 0
        self.feed(page)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.hidden += tag in ("head", "script", "style")

    def handle_endtag(self, tag):
        self.hidden -= tag in ("head", "script", "style")

    def handle_data(self, data):
        self.text += "" if self.hidden else data


def type_of(part):
    """A type that is none is plain text, and so is a multipart without parts."""
    kind = part.get_content_type()
    return "text/plain" if kind.startswith("multipart/") and not part.is_multipart() else kind


def payload(part):
    if isinstance(part.get_payload(), str) and str(part.get("Content-Transfer-Encoding", "")).lower() == "base64" and \
            re.search(r"[^A-Za-z0-9+/=\s]", part.get_payload()):
        return part.get_payload().encode("ascii", "surrogateescape")
    return part.get_payload(decode=True) or b""


def text_parts(part, root, found):
    """Fills in the plain and the HTML part that are the text of the message."""
    if part.is_multipart() and not part.get_content_type().startswith("message/"):
        for child in part.get_payload():
            text_parts(child, False, found)
            if part.get_content_type() != "multipart/alternative" and found:
                return
        return
    if part.get_content_disposition() == "attachment" or (part.get_filename() and not root):
        return
    kind = type_of(part)
    if kind in ("text/plain", "text/html"):
        found.setdefault(kind, part)


def file_name(part):
    name = part.get_filename()
    return header_text(name) if name else ""


def attachments_of(part, texts):
    if part.get_content_type() in ("message/rfc822", "message/global"):
        inner = part.get_payload()[0] if part.is_multipart() else email.message_from_bytes(payload(part))
        return [("message", tuple(sorted((k, str(v)) for k, v in wanted(inner).items())))]
    if part.is_multipart() and part.get_content_type().startswith("multipart/"):
        return [found for child in part.get_payload() for found in attachments_of(child, texts)]
    if part.is_multipart():
        # Reports are read as messages by this package, and are attachments.
        data = "".join(str(child) for child in part.get_payload()).encode("ascii", "surrogateescape")
        return [(file_name(part), digest(data.rstrip(b"\n")))]
    return [] if any(part is text for text in texts) else [(file_name(part), digest(payload(part)))]


def crlf(text):
    return re.sub(r"\r\n|\r|\n", "\r\n", text)


def wanted(message):
    """The same aspects of a message as email has it."""
    texts = {}
    text_parts(message, True, texts)
    plain, page = texts.get("text/plain"), texts.get("text/html")
    text = crlf(decoded(payload(plain), plain.get_content_charset())) if plain is not None else ""
    if page is not None:
        shown = decoded(payload(page), page.get_content_charset())
        text = (letters(text or Page(shown).text), digest(shown.encode()), 65001)
    author = (people_in(message, "From", True) or [("", "")])[0]
    sender = (people_in(message, "Sender", True) or [author])[0]
    subject = (raw_headers(message, "Subject") or [""])[0]
    return {
        "subject": header_text(subject), "author": (*author, *sender), "dates": moment(message),
        "recipients": [(kind, *each) for kind, name in ((1, "To"), (2, "Cc"), (3, "Bcc")) for each in people_in(message, name)],
        "text": text, "attachments": attachments_of(message, texts.values()),
    }


# Both.

def environment_of(folder):
    environment = dict(os.environ, ZEBAPI_REGISTRY=str(folder / "registry.reg"), XDG_CONFIG_HOME=str(folder))
    for name in ("ZEBAPI_LOG", "ZEBSTORE_TRACE", "ZEBSTORE_FAULT"):
        environment.pop(name, None)
    return environment


def dump(build, profile, environment):
    return [json.loads(line) for line in mailboxes.run([build / "bin/store_dump", profile], env=environment).splitlines()]


def import_collection(build, folder):
    environment = environment_of(folder)
    tools, files = build / "bin", folder / "files"
    expected = mail_collection.write(files)
    mailboxes.run([tools / "zeb", "provider", "install"], env=environment)
    mailboxes.run([tools / "zeb", "profile", "create", "check", "--store", folder / "check.zeb", "--default"], env=environment)
    for source in [("eml", "mail"), ("eml", "box"), *(("mbox", file.name) for file in sorted(files.glob("*.mbox")))]:
        mailboxes.run([tools / "zeb-import", source[0], files / source[1]], codes=(0, 3), env=environment)
    return expected, dump(build, "check", environment)


def export_collection(build, folder, expected):
    """Exports what import_collection imported in both forms of mail and imports that into another store.
    @return what is there, and the folders of each form by those of the collection"""
    environment = environment_of(folder)
    tools, out = build / "bin", folder / "exported"
    out.mkdir()
    places = {}
    for number, path in enumerate(expected):
        name = "/".join(part.replace("/", "\\/") for part in path)
        mailboxes.run([tools / "zeb", "export", "eml", name, "-o", out / f"eml/{number:03}"], env=environment)
        mailboxes.run([tools / "zeb", "export", "mbox", name, "-o", out / f"{number:03}.mbox"], env=environment)
        places[path] = ("eml", f"{number:03}"), (f"{number:03}",)
    mailboxes.run([tools / "zeb", "profile", "create", "again", "--store", folder / "again.zeb", "--default"], env=environment)
    for source in [("eml", "eml"), *(("mbox", file.name) for file in sorted(out.glob("*.mbox")))]:
        mailboxes.run([tools / "zeb-import", source[0], out / source[1]], codes=(0, 3), env=environment)
    return dump(build, "again", environment), places


def header_lines(message):
    """The stored headers but for those that describe the parts or the state, each in one line."""
    text = text_in(by_identifier(message["properties"]), HEADERS)
    lines = re.sub(r"\r\n[ \t]+", " ", text.split("\r\n\r\n")[0]).split("\r\n")
    return [line.rstrip() for line in lines if re.match(r"[^\s:]+:", line)
            and not re.match(r"(?i)content-|mime-version:|status:|x-status:", line)]


def compare_exported(differences, lines, again, places):
    store, other = mailboxes.Store(lines), mailboxes.Store(again)
    for path, forms in places.items():
        messages = store.messages.get(store.top + path, [])
        for form, is_mbox in zip(forms, (False, True)):
            found = other.messages.get(other.top + form, [])
            where = f"{'/'.join(path)} as {'mbox' if is_mbox else 'eml'}"
            if len(found) != len(messages):
                differences.differ(f"{where}: {len(found)} messages come back, not {len(messages)}")
            for number, (message, copied) in enumerate(zip(messages, found), 1):
                differences.compare(f"{where}, message {number}", comparable(message, is_mbox), comparable(copied, is_mbox))


def comparable(message, is_mbox):
    aspects = dict(stored(message), headers=header_lines(message))
    if is_mbox and isinstance(aspects["text"], str):
        # The file's last line has an end.
        aspects["text"] = aspects["text"].rstrip("\r\n")
    return aspects


def compare_collection(differences, expected, lines):
    store = mailboxes.Store(lines)
    for path, messages in expected.items():
        found = store.messages.get(store.top + path, [])
        where = "/".join(path)
        if len(found) != len(messages):
            differences.differ(f"{where}: {len(found)} messages in the store, not {len(messages)}")
        for number, ((data, read), message) in enumerate(zip(messages, found), 1):
            data = re.sub(rb"\A(?:\xef\xbb\xbf)?(?:From [^\n]*\n)?", b"", data)
            parsed = email.message_from_bytes(data)
            differences.compare(f"{where}, message {number}", wanted(parsed), stored(message))
            flags = number_in(by_identifier(message["properties"]), FLAGS)
            differences.compare(f"{where}, message {number}", {"state": read is not False}, {"state": bool(flags & 1)})


def of_mailbox(properties, recipients, attachments):
    """The aspects of a message of a mailbox; a mark of two characters before a subject is no part of it."""
    subject = text_in(properties, SUBJECT)
    return {
        "subject": subject[2:] if subject[:1] == "\1" else subject,
        "author": tuple(text_in(properties, each) for each in (AUTHOR, AUTHOR_ADDRESS, SENDER, SENDER_ADDRESS)),
        "dates": (number_in(properties, SUBMITTED), number_in(properties, DELIVERED)),
        "recipients": [(number_in(each, KIND), text_in(each, NAME), text_in(each, ADDRESS)) for each in recipients],
        "text": tuple(digest(properties[each][1]) if each in properties else None for each in (BODY, HTML)),
        "attachments": attachments,
    }


def shown_by_pffexport(folder):
    def values(entries):
        # A table's columns come again as properties; the first is as good as any.
        return {each.id: (mailboxes.PT_UNICODE if each.type in (mailboxes.PT_UNICODE, mailboxes.PT_STRING8) else each.type,
                          bytes.fromhex(mailboxes.values_of(each)[0]).decode("utf-8").encode("utf-16-le")
                          if each.type == mailboxes.PT_STRING8 else bytes.fromhex("".join(mailboxes.values_of(each))))
                for each in reversed(entries) if each.id < 0x8000}

    people = folder / "RecipientsItemValues.txt"
    recipients = [values(each) for each in mailboxes.read_dump(people)] if people.exists() else []
    attached = folder / "Attachments"
    files = sorted((each for each in attached.iterdir() if each.name != "ItemValues.txt"),
                   key=lambda each: int(each.name.split("_")[0])) if attached.is_dir() else []
    found = of_mailbox(values(mailboxes.read_dump(folder / "ItemValues.txt")[0]), recipients, [digest(each.read_bytes()) for each in files])
    if folder.name.startswith(mailboxes.BARE):
        del found["recipients"], found["attachments"]
    return found


def compare_mailbox(differences, build, mailbox, folder):
    lines, exported, output = mailboxes.read_both(build, mailbox, folder)
    left = collections.defaultdict(list)
    for line in lines:
        if line["kind"] == "message":
            attachments = [digest(by_identifier(each["properties"]).get(DATA, (0, b""))[1]) for each in line["attachments"]]
            found = of_mailbox(by_identifier(line["properties"]), [by_identifier(each) for each in line["recipients"]], attachments)
            left[found["subject"]].append(found)
    for file in sorted(exported.rglob("ItemValues.txt")):
        if not mailboxes.is_message(file.parent):
            continue
        expected = shown_by_pffexport(file.parent)
        candidates = left[expected["subject"]]
        if not candidates:
            differences.differ(f"{file.parent}: not in the store")
            continue
        best = max(candidates, key=lambda each: sum(each[aspect] == expected[aspect] for aspect in expected))
        candidates.remove(best)
        differences.compare(str(file.parent.relative_to(exported)), expected, best)
    rest, left_out = sum(map(len, left.values())), len(re.findall(r"^Skipped item", output, re.M))
    if rest != left_out:
        differences.differ(f"{mailbox.name}: {rest} messages are in the store alone, and the other reader left out {left_out}")


def report(name, differences):
    print(f"{name}: " + ", ".join(f"{count} {aspect}" for aspect, count in differences.compared.items()) + f": {differences.different} different")
    for each in differences.shown[:40]:
        print(f"  {each}")
    return differences.different


def check(build):
    different = 0
    for name in mailboxes.MAILBOXES:
        differences = Differences()
        with tempfile.TemporaryDirectory(prefix="zeb-mail-") as folder:
            compare_mailbox(differences, build, mailboxes.SAMPLES / name, pathlib.Path(folder))
        different += report(name, differences) + (not differences.compared["text"])
    differences = Differences()
    with tempfile.TemporaryDirectory(prefix="zeb-mail-") as folder:
        expected, lines = import_collection(build, pathlib.Path(folder))
        compare_collection(differences, expected, lines)
        exported = Differences()
        again, places = export_collection(build, pathlib.Path(folder), expected)
        compare_exported(exported, lines, again, places)
    different += report("collection", differences) + (not differences.compared["text"])
    different += report("collection, exported and imported again", exported) + (not exported.compared["headers"])
    print("changes of what was exported and imported again:")
    different += missed_after_export(lines, again, places)
    print(f"{different} different")
    return different


def last(lines, tag):
    return [each for line in lines if line["kind"] == "message" for each in line["properties"] if each["tag"] == tag][-1]


def flip(values):
    values[-1] = values[-1][:-1] + ("0" if values[-1][-1:] != "0" else "1")


def with_part(lines, part):
    return [line for line in lines if line["kind"] == "message" and line[part]][-1][part][-1]


# A change of the last message that has it, by what is to be seen.
CHANGES = {
    "subject": lambda lines: flip(last(lines, "0x0037001f")["values"]),
    "author": lambda lines: flip(last(lines, "0x0042001f")["values"]),
    "dates": lambda lines: flip(last(lines, "0x00390040")["values"]),
    "text": lambda lines: flip(last(lines, "0x1000001f")["values"]),
    "state": lambda lines: last(lines, "0x0e070003").update(values=["00000000" if last(lines, "0x0e070003")["values"][0][1] != "0" else "01000000"]),
    "recipients": lambda lines: flip([each for each in with_part(lines, "recipients") if each["tag"] == "0x3001001f"][-1]["values"]),
    "attachments": lambda lines: flip([each for each in with_part(lines, "attachments")["properties"] if each["tag"] == "0x37010102"][-1]["values"]),
    "messages": lambda lines: lines.remove([line for line in lines if line["kind"] == "message"][-1]),
}


def missed_changes(changes, lines, compare):
    """The number of changes that the comparison does not see. Prints what it says of each."""
    missed = 0
    for name, change in changes.items():
        changed = copy.deepcopy(lines)
        change(changed)
        differences = Differences()
        compare(differences, changed)
        seen = any(name in each for each in differences.shown)
        print(f"  {name}: {differences.shown[0][:150] if seen else 'NOT SEEN'}")
        missed += not seen
    return missed


def missed_after_export(lines, again, places):
    # Without the message of 20,000 parts, which takes long to copy.
    lines, again = ([line for line in each if len(line.get("attachments", [])) < 1000] for each in (lines, again))

    def change_headers(changed):
        values = last(changed, "0x007d001f")["values"]
        values[0] = values[0][:1] + ("0" if values[0][1] != "0" else "1") + values[0][2:]

    changes = {name: change for name, change in CHANGES.items() if name != "state"}
    return missed_changes({**changes, "headers": change_headers}, again,
                          lambda differences, changed: compare_exported(differences, lines, changed, places))


def self_test(build):
    mail_collection.PARTS = 20
    with tempfile.TemporaryDirectory(prefix="zeb-mail-") as folder:
        expected, lines = import_collection(build, pathlib.Path(folder))
    return missed_changes(CHANGES, lines, lambda differences, changed: compare_collection(differences, expected, changed))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--self-test", action="store_true")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    return 1 if (self_test(build) if arguments.self_test else check(build)) else 0


if __name__ == "__main__":
    sys.exit(main())
