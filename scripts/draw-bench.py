#!/usr/bin/python3
"""Draws the results of ./bench.sh for docs/performance.md.

draw-bench.py [FOLDER] [IMAGE]

Reads each results*.json under FOLDER (build/bench), and writes IMAGE (docs/images/bench.svg): for each measurement the ratio
of every pair and their median, divided by the goal. Debian's python3-matplotlib draws it (scripts/setup.sh plots).
"""
import json
import pathlib
import sys

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "bench", "svg.fonttype": "none", "font.size": 9, "font.family": "sans-serif"})

import matplotlib.pyplot as plt  # noqa: E402 the backend is chosen before
from matplotlib.ticker import FuncFormatter, NullFormatter  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parent.parent
MET, MISSED, PAIR = "#2f6f4f", "#b03a2e", "#9aa5b1"


def results(folder):
    files = sorted(path for path in folder.glob("**/results*.json") if "short" not in path.parts)
    if not files:
        sys.exit(f"draw-bench.py: no results*.json in '{folder}'; ./bench.sh writes them")
    return [each for path in files for each in json.loads(path.read_text(encoding="utf-8"))]


def draw(measured, image):
    measured = sorted(measured, key=lambda each: each["value"] / each["goal"])
    figure, axes = plt.subplots(figsize=(8.5, 0.24 * len(measured) + 1))
    for row, each in enumerate(measured):
        pairs = [ours / base / each["goal"] for ours, base in zip(each["ours"], each["baseline"])]
        axes.scatter(pairs, [row] * len(pairs), s=9, color=PAIR, linewidths=0, zorder=2)
        axes.scatter([each["value"] / each["goal"]], [row], s=26, marker="D", zorder=3, color=MET if each["met"] else MISSED)
    axes.axvline(1, color="#444444", linewidth=1)
    axes.set_xscale("log", base=2)
    axes.set_yticks(range(len(measured)), [f"{each['name']}  {each['value']:.3g} / {each['goal']:g}" for each in measured])
    axes.xaxis.set_major_formatter(FuncFormatter(lambda value, _: f"{value:g}"))
    axes.xaxis.set_minor_formatter(NullFormatter())
    axes.set_xlabel("ratio / goal; small dots: single pairs, diamonds: medians")
    axes.grid(axis="x", color="#e3e6ea", zorder=0)
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)
    axes.tick_params(axis="y", length=0)
    figure.tight_layout()
    figure.savefig(image, metadata={"Date": None})


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "build/bench"
    image = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else ROOT / "docs/images/bench.svg"
    draw(results(folder), image)


if __name__ == "__main__":
    main()
