#!/usr/bin/python3
"""Opens both windows of Vemo as a person does, and says what is to be seen in them, by the screen and by the
accessibility bus. Runs inside a virtual desktop with every part.

usage: tests/packaging/show_windows.py --programs FOLDER --screenshots FOLDER

Prints one JSON line: for each window the number of colours in it, the sizes of its icon, and the names that a screen
reader would say, and the libraries of Qt that Vemo has loaded. Exits with 1 when a window stays away or empty.
"""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "desktop"))
from dictation_server import DictationServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import DesktopError, wait_until  # noqa: E402
from windows import main_window, settings_window  # noqa: E402

EXPECTED = {"main": {"Home", "Dictionary", "Shortcuts", "Settings"}, "settings": {"Account", "System", "Profile"}}
COLOURS_OF_A_DRAWN_WINDOW = 50


def names_in(window):
    return {item.name for item in window.items() if item.is_showing}


def colours(window, picture):
    taken = subprocess.run(["import", "-window", window, str(picture)], capture_output=True, check=False)
    if taken.returncode:
        return 0
    told = subprocess.run(["identify", "-format", "%k", str(picture)], capture_output=True, check=True)
    return int(told.stdout)


def sizes_of_icon(window):
    """Of each picture there are width, height and its points."""
    told = subprocess.run(["xprop", "-id", window.identifier(), "-notype", "32c", "_NET_WM_ICON"], capture_output=True,
                          text=True, check=True).stdout
    numbers = list(map(int, re.findall(r"\d+", told)))
    sizes = []
    while numbers:
        width, height = numbers[:2]
        sizes.append(width)
        del numbers[:2 + width * height]
    return sizes


def look_at(kind, window, screenshots):
    """Waits until a window is drawn."""
    window.await_that(lambda: EXPECTED[kind] <= names_in(window), f"to have {EXPECTED[kind]}")
    picture = screenshots / f"{kind}.png"
    count = wait_until(lambda: max(0, colours(window.identifier(), picture) - COLOURS_OF_A_DRAWN_WINDOW),
                       f"the {kind} window to be drawn") + COLOURS_OF_A_DRAWN_WINDOW
    return {"colours": count, "icons": sizes_of_icon(window), "names": sorted(names_in(window) - {""})}


def libraries_of_qt(process):
    maps = pathlib.Path("/proc", str(process), "maps").read_text()
    return sorted({path for path in re.findall(r"\S*/(?:libQt|vemo-windows|plugins|qml)\S*\.so\S*", maps)})


def show():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--programs", required=True, help="the folder of vemo")
    parser.add_argument("--screenshots", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    os.environ["VEMO_PROGRAMS"] = arguments.programs
    arguments.screenshots.mkdir(parents=True, exist_ok=True)
    store_token("token")
    with DictationServer() as server, Vemo(server.address) as vemo:
        main = main_window(vemo)
        seen = {"main": look_at("main", main, arguments.screenshots),
                "settings": look_at("settings", settings_window(main), arguments.screenshots)}
        print(json.dumps(seen | {"qt": libraries_of_qt(vemo.process.pid)}), flush=True)


if __name__ == "__main__":
    try:
        show()
    except (DesktopError, AssertionError, subprocess.CalledProcessError) as error:
        sys.exit(f"show_windows: {error}")
