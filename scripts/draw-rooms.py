#!/usr/bin/env python3
"""Draws the rooms and who may include whom, from the rules of check-layering.py.

draw-rooms.py           writes docs/images/rooms.svg (Graphviz)
draw-rooms.py --check   fails when that picture does not show the rules as they are
"""
import html
import importlib.util
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs/images/rooms.svg"
# What each room is, for its box.
TITLES = {
    "platform": "the operating system",
    "framework": "strings, containers, exceptions",
    "qorlog": "log",
    "qorth": "loader, registry reader",
    "zebapi": "the library",
    "zebstore": "the embedded provider",
    "tools": "zeb, zeb-import",
    "examples": "hosts",
}


def rules():
    spec = importlib.util.spec_from_file_location("check_layering", ROOT / "scripts/check-layering.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def reduced(graph):
    """The graph without the edges that a longer way shows too."""
    def reaches(start, end, without):
        open_, seen = [n for n in graph.get(start, ()) if (start, n) != without], set()
        while open_:
            node = open_.pop()
            if node == end:
                return True
            if node not in seen:
                seen.add(node)
                open_ += graph.get(node, ())
        return False

    return {node: {other for other in others if not reaches(node, other, (node, other))} for node, others in graph.items()}


def edges():
    """(from, to) of the rooms, then of the rooms inside zebapi and zebstore ("zebapi/values")."""
    layering = rules()
    outer = {room: set(others) for room, others in layering.MAY_INCLUDE.items()}
    for host in layering.HOSTS:
        outer[host].add("zebapi")
    found = {(room, other) for room, others in reduced(outer).items() for other in others}
    for room, inner in layering.INNER.items():
        named = {name: {other for other in others if other} for name, others in inner.items() if name}
        found |= {(f"{room}/{name}", f"{room}/{other}") for name, others in reduced(named).items() for other in others}
    return found


def dot(shown):
    lines = ["digraph rooms {", "rankdir=BT; compound=true; fontname=\"sans-serif\";",
             "node [shape=box, style=\"rounded,filled\", fillcolor=\"#f4f6fa\", fontname=\"sans-serif\", fontsize=11];",
             "edge [color=\"#5b6b82\", arrowsize=0.7];"]
    for room, title in TITLES.items():
        lines.append(f'"{room}" [label=<<b>{room}/</b><br/>{title}>, fillcolor="#dfe8f6"];')
    for room in ("zebapi", "zebstore"):
        inner = sorted({name for edge in shown for name in edge if name.startswith(room + "/")})
        lines.append(f'subgraph "cluster_{room}" {{ label="inside {room}/"; fontname="sans-serif"; fontsize=11; color="#b9c6da";')
        lines += [f'"{name}" [label="{name.split("/")[1]}"];' for name in inner]
        lines.append("}")
    lines += [f'"{a}" -> "{b}";' for a, b in sorted(shown)]
    return "\n".join([*lines, "}"]) + "\n"


def drawn(svg):
    """The (from, to) pairs that a picture of Graphviz's shows."""
    titles = [html.unescape(title) for title in re.findall(r"<title>(.*?)</title>", svg)]
    return {tuple(title.split("->")) for title in titles if "->" in title}


def main(arguments):
    shown = edges()
    if arguments == ["--check"]:
        picture = drawn(PICTURE.read_text(encoding="utf-8")) if PICTURE.exists() else set()
        for a, b in sorted(shown ^ picture):
            print(f"docs/images/rooms.svg: {'lacks' if (a, b) in shown else 'shows, against the rules,'} {a} -> {b}")
        return 1 if shown != picture or not shown else 0
    if arguments:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    if shutil.which("dot") is None:
        sys.exit("draw-rooms.py: dot is missing: install Graphviz")
    svg = subprocess.run(["dot", "-Tsvg"], input=dot(shown), check=True, capture_output=True, text=True).stdout
    PICTURE.parent.mkdir(parents=True, exist_ok=True)
    # Without the program's version, which differs from machine to machine.
    PICTURE.write_text(re.sub(r"<!--.*?-->\n?", "", svg, flags=re.S), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
