#!/usr/bin/env python3
"""Draws docs/images/zebview*.png: the window over the sample mailbox, under Wine on a display without a screen.

draw-zebview.py BUILD     a build for Windows with zebview and zebview_driver
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/tools"))
import world
import zebview

SIZE = "1180x780"


def run(build, environment, *arguments):
    subprocess.run([str(ROOT / "scripts/wine-run.sh"), *arguments], env=environment, check=True, stdout=subprocess.DEVNULL)


def zeb(build, environment, *arguments):
    run(build, environment, str(build / "bin/zeb.exe"), *arguments)


def save(display, name):
    """A picture of the whole display, with few colours and without metadata."""
    file = ROOT / "docs/images" / name
    subprocess.run(["import", "-display", display.name, "-window", "root", "-strip", "+dither", "-colors", "64", f"png8:{file}"], check=True)
    print(f"{file.relative_to(ROOT)}  {file.stat().st_size} bytes")


def draw(build, display, environment):
    view = zebview.View(display, environment, build=build, size=SIZE)
    try:
        view.select(1)
        view.wait_text(zebview.TEXT, "At noon")
        time.sleep(1)
        save(display, "zebview.png")
        view.press(zebview.CONTROL, ord("2"))
        view.wait_focus(zebview.PROPERTIES)
        view.press(zebview.DOWN)
        time.sleep(1)
        save(display, "zebview-properties.png")
        view.press(zebview.CONTROL, ord("B"))
        view.wait(lambda: view.status().startswith("Global Address List"))
        view.select(2)
        view.press(zebview.CONTROL, ord("3"))
        view.wait(lambda: len(view.rows(zebview.RECIPIENTS)) == 2)
        time.sleep(1)
        save(display, "zebview-address-book.png")
    finally:
        view.end()


def draw_dark(build, display, environment):
    run(build, environment, "reg", "add", zebview.PERSONALIZE, "/v", "AppsUseLightTheme", "/t", "REG_DWORD", "/d", "0", "/f")
    view = zebview.View(display, environment, build=build, size=SIZE)
    try:
        view.select(1)
        view.wait_text(zebview.TEXT, "At noon")
        time.sleep(1)
        save(display, "zebview-dark.png")
    finally:
        view.end()
        run(build, environment, "reg", "delete", zebview.PERSONALIZE, "/f")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    build = pathlib.Path(sys.argv[1]).resolve()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zebview-"))
    environment = dict(os.environ, ZEB_WINEPREFIX=str(ROOT / "build/wine-pictures"), LC_ALL="C.UTF-8", TZ="UTC")
    display = zebview.Display(SIZE)
    try:
        zeb(build, environment, "provider", "install", "--replace")
        zeb(build, environment, "profile", "create", "demo", "--store", "Z:" + str(folder / "demo.zeb").replace("/", "\\"), "--default")
        zeb(build, environment, "load", "Z:" + str(ROOT / "docs/mail.jsonl").replace("/", "\\"))
        draw(build, display, environment)
        draw_dark(build, display, environment)
        zeb(build, environment, "profile", "delete", "demo")
    finally:
        display.close()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
