#!/usr/bin/python3
"""Opens both windows of Vemo as a person does, and says what is to be seen in them, by the screen and by the
accessibility bus. Runs inside a virtual desktop with every part.

usage: tests/packaging/show_windows.py --programs FOLDER --screenshots FOLDER

Prints one JSON line: for each window the number of colours in it and the names that a screen reader would say, and
the libraries of Qt that Vemo has loaded. Exits with 1 when a window stays away or empty.
"""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "desktop"))
from dictation_server import DictationServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import DesktopError, wait_until  # noqa: E402

EXPECTED = {"main": {"Home", "Dictionary", "Shortcuts", "Settings"}, "settings": {"Account", "System", "Profile"}}
COLOURS_OF_A_DRAWN_WINDOW = 50


def shown_below(item):
    if item.get_state_set().contains(Atspi.StateType.SHOWING):
        yield item
    for index in range(item.get_child_count()):
        child = item.get_child_at_index(index)
        yield from shown_below(child) if child else ()


def shown(process):
    """What every window of the process tells on the accessibility bus."""
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        try:
            if application and application.get_process_id() == process:
                # No main loop runs here to hear of changes.
                application.clear_cache()
                yield from shown_below(application)
        except GLib.Error:
            pass  # a window that is just arriving or leaving


def names_of(process):
    return {item.get_name() for item in shown(process)}


def click(process, name):
    button = next(item for item in shown(process) if item.get_name() == name and item.get_role() == Atspi.Role.PUSH_BUTTON)
    place = Atspi.Component.get_extents(button, Atspi.CoordType.SCREEN)
    subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2), str(place.y + place.height // 2),
                    "click", "1"], check=True)


def windows_of(process):
    search = ["xdotool", "search", "--onlyvisible", "--all", "--pid", str(process), "--name", "."]
    return subprocess.run(search, capture_output=True, check=False).stdout.decode().split()


def colours(window, picture):
    taken = subprocess.run(["import", "-window", window, str(picture)], capture_output=True, check=False)
    if taken.returncode:
        return 0
    told = subprocess.run(["identify", "-format", "%k", str(picture)], capture_output=True, check=True)
    return int(told.stdout)


def look_at(kind, vemo, earlier, screenshots):
    """Waits until a window has come up beside the earlier ones and is drawn."""
    process = vemo.process.pid
    window = wait_until(lambda: next((w for w in windows_of(process) if w not in earlier), None),
                        lambda: f"the {kind} window; {vemo.story()}")
    wait_until(lambda: EXPECTED[kind] <= names_of(process),
               lambda: f"{EXPECTED[kind]} in the {kind} window, which has {sorted(names_of(process))}")
    picture = screenshots / f"{kind}.png"
    count = wait_until(lambda: max(0, colours(window, picture) - COLOURS_OF_A_DRAWN_WINDOW),
                       f"the {kind} window to be drawn") + COLOURS_OF_A_DRAWN_WINDOW
    return window, {"colours": count, "names": sorted(names_of(process) - {""})}


def libraries_of_qt(process):
    maps = pathlib.Path("/proc", str(process), "maps").read_text()
    return sorted({path for path in re.findall(r"\S*/(?:libQt|vemo-windows|plugins|qml)\S*\.so\S*", maps)})


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--programs", required=True, help="the folder of vemo")
    parser.add_argument("--screenshots", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    os.environ["VEMO_PROGRAMS"] = arguments.programs
    arguments.screenshots.mkdir(parents=True, exist_ok=True)
    store_token("token")
    with DictationServer() as server, Vemo(server.address) as vemo:
        subprocess.run([vemo.program], env=vemo.environment, check=True, timeout=60)  # shows its window
        first, seen = look_at("main", vemo, [], arguments.screenshots)
        click(vemo.process.pid, "Settings")
        _, settings = look_at("settings", vemo, [first], arguments.screenshots)
        print(json.dumps({"main": seen, "settings": settings, "qt": libraries_of_qt(vemo.process.pid)}), flush=True)


if __name__ == "__main__":
    try:
        main()
    except (DesktopError, AssertionError, subprocess.CalledProcessError) as error:
        sys.exit(f"show_windows: {error}")
