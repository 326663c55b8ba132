#!/usr/bin/env python3
"""Writes a collection of mail as it is found in old archives: mail_collection.py FOLDER

Every message breaks a rule or uses one that is seldom used: character sets, broken structures, zero characters, names in
pieces, messages in messages, signatures, headers given twice, dates of all times, many parts, mbox dialects, a Maildir.
"""
import base64
import pathlib
import quopri
import sys

FROM = b"From: Ada Lovelace <ada@example.org>\n"
TO = b"To: Grace Hopper <grace@example.org>\n"
DATE = b"Date: Fri, 02 Jan 2026 03:04:05 +0100\n"
PARTS = 20_000

CHARSETS = {
    "us-ascii": "plain text", "utf-8": "Gr\u00fc\u00dfe \u4f60\u597d \U0001F600", "iso-8859-1": "Gr\u00fc\u00dfe \u00e6\u00f8\u00e5",
    "iso-8859-2": "P\u0159\u00edli\u0161 \u017elu\u0165", "iso-8859-5": "\u041f\u0440\u0438\u0432\u0435\u0442", "iso-8859-7": "\u0393\u03b5\u03b9\u03b1",
    "iso-8859-9": "\u0130stanbul \u011f", "iso-8859-15": "10 \u20ac \u0153uvre", "windows-1250": "\u0141\u00f3d\u017a", "windows-1251": "\u041c\u0438\u0440",
    "windows-1252": "\u201equoted\u201c \u20ac", "windows-1253": "\u0391\u03b8\u03ae\u03bd\u03b1", "windows-1255": "\u05e9\u05dc\u05d5\u05dd",
    "windows-1256": "\u0633\u0644\u0627\u0645", "koi8-r": "\u041f\u0440\u0438\u0432\u0435\u0442", "koi8-u": "\u0407\u0436\u0430\u043a",
    "shift_jis": "\u65e5\u672c\u8a9e", "euc-jp": "\u65e5\u672c\u8a9e", "iso-2022-jp": "\u65e5\u672c\u8a9e\u306e\u6587", "gb2312": "\u4f60\u597d",
    "gbk": "\u4f60\u597d\u9f8d", "gb18030": "\u4f60\u597d\U00020000", "big5": "\u4f60\u597d", "euc-kr": "\uc548\ub155", "utf-16": "wide \u4f60", "tis-620": "\u0e2a\u0e27\u0e31\u0e2a\u0e14\u0e35"}


def mail(subject, *headers, body=b"text\n", date=DATE):
    """A message out of headers and the bytes after them."""
    return b"Subject: " + subject + b"\n" + FROM + TO + date + b"".join(each + b"\n" for each in headers) + b"\n" + body


def multipart(*parts, kind=b"mixed", boundary=b"=_b/1", end=True):
    """The header and the bytes of a multipart."""
    body = b"".join(b"--" + boundary + b"\n" + part + b"\n" for part in parts) + (b"--" + boundary + b"--\n" if end else b"")
    if not end:
        body = body[:-1]
    return b"Content-Type: multipart/" + kind + b";\n boundary=\"" + boundary + b"\"", body


def composed(subject, *parts, kind=b"mixed", end=True, headers=()):
    header, body = multipart(*parts, kind=kind, end=end)
    return mail(subject, *headers, header, body=body)


def character_sets():
    for charset, text in CHARSETS.items():
        data = (text + "\n") * 3
        encoded = data.encode(charset)
        kind = f"Content-Type: text/plain; charset={charset}".encode()
        subject = b"=?%b?B?%b?=" % (charset.encode(), base64.b64encode(text.encode(charset)))
        if charset not in ("utf-16",):
            yield f"charset-{charset}-8bit", mail(subject, kind, b"Content-Transfer-Encoding: 8bit", body=encoded)
            yield f"charset-{charset}-quoted", mail(subject, kind, b"Content-Transfer-Encoding: quoted-printable",
                                                    body=quopri.encodestring(encoded))
        yield f"charset-{charset}-base64", mail(subject, kind, b"Content-Transfer-Encoding: base64", body=base64.encodebytes(encoded))
    for named in (b"us-ascii", b"utf-8", b"x-unknown", b"big5"):
        yield f"wrong-{named.decode()}", mail(b"Gr\xfc\xdfe", b"Content-Type: text/plain; charset=" + named, body=b"Gr\xfc\xdfe aus K\xf6ln\n")
    yield "wrong-utf-8-as-ascii", mail("Gr\u00fc\u00dfe".encode(), b"Content-Type: text/plain; charset=us-ascii", body="\u4f60 \u00fc\n".encode())
    yield "bytes-of-no-set", mail(b"a \x81 b", b"Content-Type: text/plain; charset=utf-8", body=b"a \x81\x8d b\n")
    yield "words-of-wrong-set", mail(b"=?us-ascii?Q?Gr=FC=DFe?= =?utf-8?B?R3L83w==?=", body=b"x\n")
    yield "character-in-two-words", mail(b"=?utf-8?B?5L0=?=\n =?utf-8?B?oA==?= =?utf-8?Q?_end?=")
    yield "subject-folded", mail(b"one\n two\n\tthree")


def broken():
    yield "zero-in-text", mail(b"zero", body=b"one\0two\nthree\n")
    yield "zero-in-headers", mail(b"ze\0ro", body=b"x\n")
    yield "zero-in-part", composed(b"zero", b"Content-Type: text/plain\n\na\0b", b"Content-Type: application/x-a; name=a\n\na\0b")
    yield "no-empty-line", b"Subject: x\n" + FROM + DATE + b"Hello this is text\nmore: text\n\nrest\n"
    yield "no-empty-line-in-part", composed(b"part", b"Content-Type: text/plain\nHello text")
    yield "headers-only", b"Subject: only\n" + FROM + DATE
    for name, kind in (("no", b""), ("empty", b"; boundary=\"\""), ("other", b"; boundary=never")):
        yield f"{name}-boundary", mail(b"boundary", b"Content-Type: multipart/mixed" + kind, body=b"before\n--x\n\npart\n--x--\n")
    yield "no-end", composed(b"end", b"\nfirst", b"Content-Type: application/x-a; name=a\n\nsecond", end=False)
    for name, kind in (("text", b"text"), ("empty", b""), ("garbage", b"garbage garbage")):
        yield f"type-{name}", mail(b"type", b"Content-Type: " + kind, body=b"body\n")
    yield "encoding-unknown", mail(b"encoding", b"Content-Transfer-Encoding: x-none", body=b"body =41\n")
    yield "base64-that-is-none", mail(b"encoding", b"Content-Transfer-Encoding: base64", body=b"Hello, this isn't base64!\n")
    yield "line-ends-crlf", mail(b"ends", body=b"a\nb\n").replace(b"\n", b"\r\n")
    yield "line-ends-mixed", mail(b"ends", body=b"a\nb\r\nc\n")
    yield "byte-order-mark", b"\xef\xbb\xbf" + mail(b"mark")
    yield "from-line", b"From ada@example.org Fri Jan  2 03:04:05 2026\n" + mail(b"from line")
    yield "long-line", mail(b"long", body=b"word " * 50_000 + b"\n")
    yield "long-header", mail(b"x " * 10_000)
    yield "no-subject", FROM + TO + DATE + b"\nx\n"


def parts():
    page = b"Content-Type: text/html; charset=utf-8\n\n<html><body><p>Page &amp; <b>text</b></p></body></html>"
    pdf = b"Content-Type: application/pdf; name=\"a.pdf\"\nContent-Transfer-Encoding: base64\nContent-Disposition: attachment\n\n"
    data = base64.encodebytes(bytes(range(256)) * 40)
    yield "html-only", mail(b"html", b"Content-Type: text/html; charset=utf-8", body="<p>Gr\u00fc\u00dfe</p><p>end\n".encode())
    yield "alternative", composed(b"alternative", b"\nplain", page, kind=b"alternative")
    yield "mixed", composed(b"mixed", b"\nplain", pdf + data)
    header, body = multipart(page, b"Content-Type: image/png\nContent-ID: <i@x>\n\npng", kind=b"related", boundary=b"r")
    yield "related-in-alternative", composed(b"related", b"\nplain", header + b"\n\n" + body, kind=b"alternative")
    yield "text-with-name", composed(b"named", page, b"Content-Type: text/plain\nContent-Disposition: inline; filename=f.txt\n\ninline")
    yield "several-texts", composed(b"several", b"\nfirst", b"\nsecond", b"\nthird")
    yield "root-attachment", mail(b"root", b"Content-Type: application/pdf; name=a.pdf", b"Content-Transfer-Encoding: base64", body=data)
    names = [b"filename*=utf-8''d%C3%B6c.txt", b"filename*0*=iso-8859-1'de'd%F6; filename*1=c; filename*2=.txt", b"filename*0=\"do\"; filename*1=\"c.txt\""]
    yield "rfc2231", composed(b"names", *[b"Content-Type: application/x-a\nContent-Disposition: attachment;\n " + each + b"\n\nx" for each in names])
    inner = mail(b"inner", b"Content-Type: text/plain; charset=utf-8", body="\u4f60\n".encode())
    whole = inner
    for depth in range(5):
        whole = composed(b"outer %d" % depth, b"\nsee below", b"Content-Type: message/rfc822\n\n" + whole)
        whole = whole.replace(b"=_b/1", b"=_c/%d" % depth)
    yield "nested", whole
    yield "digest", composed(b"digest", b"Content-Type: message/rfc822\n\n" + inner, b"Content-Type: message/rfc822\n\n" + mail(b"other"), kind=b"digest")
    yield "signed", composed(b"signed", b"Content-Type: text/plain\n\nsigned text",
                             b"Content-Type: application/pkcs7-signature; name=smime.p7s\nContent-Transfer-Encoding: base64\n\n" + data,
                             kind=b"signed; protocol=\"application/pkcs7-signature\"")
    yield "encrypted", mail(b"encrypted", b"Content-Type: application/pkcs7-mime; smime-type=enveloped-data; name=smime.p7m",
                            b"Content-Transfer-Encoding: base64", body=data)
    yield "pgp", composed(b"pgp", b"Content-Type: application/pgp-encrypted\n\nVersion: 1", b"Content-Type: application/octet-stream; name=e.asc\n\nabc",
                          kind=b"encrypted")
    yield "flowed", mail(b"flowed", b"Content-Type: text/plain; format=flowed; delsp=yes", body=b"one \ntwo \n three\n> quoted \n> on\n-- \nsig\n")
    yield "report", composed(b"report", b"\nnot delivered", b"Content-Type: message/delivery-status\n\nReporting-MTA: dns; x\n\nAction: failed",
                             b"Content-Type: text/rfc822-headers\n\nSubject: lost", kind=b"report; report-type=delivery-status")
    yield "many-parts", composed(b"many", *[b"Content-Type: application/x-a; name=p%d\n\n%d" % (i, i) for i in range(PARTS)])


def headers():
    yield "twice", b"Subject: first\nSubject: second\nFrom: a@x.org\nFrom: b@x.org\nTo: c@x.org\nTo: d@x.org\n" + DATE + DATE.replace(b"2026", b"2016") + b"\nx\n"
    yield "sender", mail(b"sender", b"Sender: Secretary <sec@example.org>", b"Reply-To: Office <office@example.org>")
    yield "groups", mail(b"groups", b"Cc: Friends: a@x.org, B <b@x.org>;, c@x.org", b"Bcc: hidden@x.org")
    yield "quoted-names", mail(b"names", b"Cc: \"Doe, John\" <john@x.org>, \"a \\\"b\\\"\" <q@x.org>, e@x.org (Comment)")
    yield "encoded-names", mail(b"names", b"Cc: =?utf-8?B?5L2g5aW9?= <n@x.org>, =?iso-8859-1?Q?J=F6rg_M=FCller?= <j@x.org>")
    yield "undisclosed", mail(b"undisclosed", b"Cc: undisclosed-recipients:;")
    for year, date in (("1969", b"Thu, 02 Jan 1969 03:04:05 +0100"), ("1952", b"Wed, 02 Jan 1952 03:04:05 -0500"), ("1901", b"02 Jan 1901 03:04 GMT"),
                       ("1600s", b"Thu, 29 Feb 1680 23:59:59 +0000"), ("2-digits", b"Fri, 02 Jan 98 03:04:05 +0000"), ("zone-name", b"Fri, 02 Jan 2026 03:04:05 EST"),
                       ("2099", b"Fri, 02 Jan 2099 03:04:05 +1400")):
        yield f"date-{year}", mail(b"date", date=b"Date: " + date + b"\n")


def mbox_files():
    """Name, bytes, and the messages that are in them."""
    line = b"From ada@example.org Fri Jan  2 03:04:05 2026\n"
    prose = mail(b"prose", body=b"one\n\nFrom here on it is prose.\nFrom ada@example.org Fri Jan  2 03:04:05 2026\nend\n")
    plain = [mail(b"first"), prose, mail(b"third", b"Status: O")]
    yield "mboxo", b"".join(line + each + b"\n" for each in plain), plain
    quoted = mail(b"quoted", body=b"one\n\n" + line + b">" + line + b">>From x\n")
    yield "mboxrd", b"".join(line + each.replace(b"\n>>From", b"\n>>>From").replace(b"\n>From", b"\n>>From").replace(b"\nFrom a", b"\n>From a") + b"\n"
                             for each in (quoted, mail(b"last"))), [quoted, mail(b"last")]
    body = b"one\n\n" + line + b"Subject: inside\n\n>From x\n"
    counted = mail(b"counted", b"Content-Length: %d" % len(body), body=body)
    wrong = mail(b"miscounted", b"Content-Length: 3", body=b"longer than three\n")
    yield "content-length", b"".join(line + each + b"\n" for each in (counted, wrong)), [counted, wrong]
    crlf = [each.replace(b"\n", b"\r\n") for each in (mail(b"first"), mail(b"second"))]
    yield "crlf", b"".join(line.replace(b"\n", b"\r\n") + each + b"\r\n" for each in crlf), crlf


def maildir():
    """Path, bytes, whether it is read."""
    yield "cur/1.host:2,S", mail(b"read"), True
    yield "cur/2.host:2,F", mail(b"unread"), False
    yield "new/3.host", mail(b"new"), False
    yield ".Sent/cur/4.host:2,RS", mail(b"sent"), True
    yield ".Sent/new/5.host", mail(b"sent too"), False


def messages():
    for group in (character_sets, broken, parts, headers):
        for name, data in group():
            yield f"{group.__name__}/{name}.{'EML' if name == 'headers-only' else 'eml'}", data


def write(folder):
    """@return what is in the collection: the store's path of the folder, the bytes of the messages there, in the order in which
    they come, and whether each is read (None: whatever is usual)."""
    found = {}

    def put(path, data):
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_bytes(data)

    for path, data in sorted(messages(), key=lambda each: pathlib.PurePath(each[0])):
        put("mail/" + path, data)
        found.setdefault(("mail", path.split("/")[0]), []).append((data, None))
    for name, data, inside in mbox_files():
        put(f"{name}.mbox", data)
        found[name,] = [(each, False if b"Status: O" in each else None) for each in inside]
    for path, data, read in maildir():
        put("box/" + path, data)
        found.setdefault(("box", "Sent") if path.startswith(".Sent") else ("box",), []).append((data, read))
    return found


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: mail_collection.py FOLDER")
    print(sum(len(each) for each in write(pathlib.Path(sys.argv[1])).values()), "messages")
