#!/usr/bin/env python3
"""Draws the pictures of docs/concepts.md.

draw-concepts.py           writes docs/images/*.svg (Graphviz)
draw-concepts.py --check   fails when a picture is missing or shows other boxes, arrows or texts than are written here
"""
import html
import re
import shutil
import subprocess
import sys
from pathlib import Path

IMAGES = Path(__file__).resolve().parent.parent / "docs/images"
STYLE = """fontname="sans-serif"; fontsize=12; nodesep=0.35; ranksep=0.45;
node [shape=box, style="rounded,filled", fillcolor="#f4f6fa", color="#5b6b82", fontname="sans-serif", fontsize=11];
edge [color="#5b6b82", arrowsize=0.7, fontname="sans-serif", fontsize=10];
"""
HOST, OURS, MAPI, BAD = "#fdf3dc", "#dfe8f6", "#e4f2e4", "#f9e0de"

# Of each picture: the direction, the boxes (name: text, colour), the arrows (from, to, text, dashed or not).
PICTURES = {
    "ownership": ("LR", {
        "wrapper": ("wrapper\\nCZebFolder, CZebTable, ...", OURS), "copy": ("its copy", OURS),
        "object": ("MAPI object\\nIMAPIFolder", MAPI),
        "owner": ("owner\\nCZebRowSet, CZebBinary,\\nCZebPropValArray, ...", OURS), "block": ("block of MAPI memory\\nSRowSet, SBinary, SPropValue[]", MAPI),
        "view": ("view\\nCZebRow, CZebOnePropVal,\\nCZebRestriction", OURS)},
        [("wrapper", "object", "counts a reference", ""), ("copy", "object", "counts a reference", ""),
         ("owner", "block", "frees", ""), ("view", "block", "looks at", "dashed")]),
    "exceptions": ("TB", {
        "call": ("MAPI call", MAPI), "ok": ("result, or a warning", MAPI), "failed": ("failing HRESULT", BAD),
        "text": ("GetLastError of the same object", MAPI), "throw": ("CZebException*\\ncode, provider's text, operation, object", OURS),
        "catch": ("the host catches it\\nGetResult, GetContext, Delete", HOST),
        "empty": ("call on an empty wrapper", BAD), "com": ("_com_error E_POINTER\\nby value", OURS),
        "all": ("catch (...)\\nZeb_DescribeCurrentException", HOST)},
        [("call", "ok", "succeeds", ""), ("call", "failed", "fails", ""), ("failed", "text", "is asked at once", ""), ("text", "throw", "", ""),
         ("throw", "catch", "", ""), ("throw", "all", "", ""), ("empty", "com", "no MAPI call", ""), ("com", "all", "", "")]),
    "threads": ("TB", {
        "main": ("thread of the host\\nopens, reads, changes", HOST), "other": ("another thread of the host\\nwith objects of its own", HOST),
        "deliver": ("thread of the provider\\ndelivers notifications", MAPI), "handler": ("delegate\\nOnTableModified_...", HOST),
        "session": ("session and stores", OURS), "window": ("window of the host", HOST)},
        [("main", "session", "one object: one thread at a time", ""), ("other", "session", "", ""),
         ("deliver", "handler", "calls, without a lock", ""), ("handler", "window", "posts a message", ""),
         ("window", "main", "reads the rows again", "")]),
    "tables": ("LR", {
        "folder": ("folder\\nGetContentsTable", OURS), "table": ("table, in the provider\\ncolumns, restriction, order, position", MAPI),
        "set": ("SetColumns\\nRestrict, SortTable", HOST), "batch": ("batch of 100 rows\\nCZebRowSet", OURS),
        "row": ("CZebRow\\nuntil the next row", OURS), "value": ("CZebOnePropVal\\nrow[PR_SUBJECT_W]", OURS)},
        [("folder", "table", "opens", ""), ("set", "table", "tells what to show", ""), ("table", "batch", "QueryRows", ""),
         ("batch", "row", "view", "dashed"), ("row", "value", "view", "dashed")]),
    "named-properties": ("LR", {
        "name": ("name\\nproperty set + text or number", HOST), "a": ("tag 0x8012001F", OURS), "b": ("tag 0x8077001F", OURS),
        "va": ("value in a message of store A", MAPI), "vb": ("value in a message of store B", MAPI)},
        [("name", "a", "GetNamedTag in store A", ""), ("name", "b", "GetNamedTag in store B", ""),
         ("a", "va", "SetProps", ""), ("b", "vb", "SetProps", ""), ("a", "vb", "means another name there", "dashed")]),
}


def quoted(text):
    return '"' + text.replace('"', '\\"') + '"'


def dot(direction, boxes, arrows):
    lines = ["digraph concept {", f"rankdir={direction};", STYLE]
    lines += [f"{quoted(name)} [label={quoted(text)}, fillcolor={quoted(colour)}];" for name, (text, colour) in boxes.items()]
    lines += [f"{quoted(a)} -> {quoted(b)} [label={quoted(' ' + text + ' ' if text else '')}, style={quoted(style or 'solid')}];"
              for a, b, text, style in arrows]
    return "\n".join([*lines, "}"]) + "\n"


def expected(boxes, arrows):
    """What a picture must show: the titles of its boxes and arrows, and its texts, one for each line."""
    titles = sorted([*boxes, *(f"{a}->{b}" for a, b, _, _ in arrows)])
    texts = sorted([line for text, _ in boxes.values() for line in text.split("\\n")] + [text for _, _, text, _ in arrows if text])
    return titles, texts


def drawn(svg):
    titles = [html.unescape(title) for title in re.findall(r"<title>(.*?)</title>", svg)]
    texts = [html.unescape(text).replace("\u00a0", " ").strip() for text in re.findall(r"<text[^>]*>(.*?)</text>", svg)]
    return sorted(title for title in titles if title != "concept"), sorted(text for text in texts if text)


def main(arguments):
    if arguments not in ([], ["--check"]):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    wrong = 0
    for name, (direction, boxes, arrows) in PICTURES.items():
        picture = IMAGES / f"{name}.svg"
        if arguments:
            if not picture.exists() or drawn(picture.read_text(encoding="utf-8")) != expected(boxes, arrows):
                print(f"docs/images/{name}.svg: does not show what scripts/draw-concepts.py describes")
                wrong = 1
            continue
        if shutil.which("dot") is None:
            sys.exit("draw-concepts.py: dot is missing: install Graphviz")
        svg = subprocess.run(["dot", "-Tsvg"], input=dot(direction, boxes, arrows), check=True, capture_output=True, text=True).stdout
        picture.write_text(re.sub(r"<!--.*?-->\n?", "", svg, flags=re.S), encoding="utf-8")
    return wrong


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
