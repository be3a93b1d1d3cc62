#!/usr/bin/python3
"""Vemo in the desktop's panel: its item and the menu of it, in a real panel and over the bus."""

import pathlib
import subprocess
import tempfile
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from dictation_server import DictationServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import LIMIT_SECONDS, wait_until  # noqa: E402

WATCHER = "org.kde.StatusNotifierWatcher"
MENU = ("/MenuBar", "com.canonical.dbusmenu")
XFCONF_DAEMON = "xfce4/xfconf/xfconfd"


class Panel:
    """`with Panel() as panel:` a real panel on the desktop; `panel.items()` are the items that it shows."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="panel-")
        self.processes = []
        daemon = next(pathlib.Path("/usr/lib").glob(f"*/{XFCONF_DAEMON}"))
        self.start(daemon)
        wait_until(lambda: has_owner("org.xfce.Xfconf"), "the panel's settings")
        self.start("xfce4-panel", "--disable-wm-check")
        wait_until(lambda: has_owner(WATCHER), lambda: "the panel: " + self.output())
        return self

    def start(self, *command):
        with open(pathlib.Path(self.folder.name) / "output", "ab") as output:
            self.processes.append(subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                                   stderr=subprocess.STDOUT))

    def output(self):
        return (pathlib.Path(self.folder.name) / "output").read_text(errors="replace")

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(120)
        self.folder.cleanup()

    def items(self):
        return [item.split("/")[0] for item in
                get_property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")]


def bus():
    return Gio.bus_get_sync(Gio.BusType.SESSION)


def call(name, path, interface, method, arguments=None):
    return bus().call_sync(name, path, interface, method, arguments, None, 0, 1000 * LIMIT_SECONDS, None).unpack()


def has_owner(name):
    return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                GLib.Variant("(s)", (name,)))[0]


def get_property(name, path, interface, prop):
    return call(name, path, "org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, prop)))[0]


class MenuOnTheBus:
    """The menu of an item, as a panel reads and presses it."""

    def __init__(self, item):
        self._item = item

    def rows(self, parent=0):
        _, (_, _, children) = call(self._item, *MENU, "GetLayout", GLib.Variant("(iias)", (parent, -1, [])))
        return [(number, properties) for number, properties, _ in children]

    def labels(self):
        return ["-" if properties.get("type") == "separator" else properties["label"].replace("__", "_")
                for _, properties in self.rows()]

    def find(self, label, parent=0):
        for number, properties in self.rows(parent):
            if properties.get("label", "").startswith(label):
                return number, properties
        raise AssertionError(f"no “{label}” in {self.rows(parent)}")

    def press(self, label, parent=0):
        number, _ = self.find(label, parent)
        call(self._item, *MENU, "Event", GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0)))


class TrayTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        self.server = self.enterContext(DictationServer())

    def start_vemo(self):
        self.vemo = self.enterContext(Vemo(self.server.address))
        return self.vemo


class PanelTest(TrayTest):
    def setUp(self):
        super().setUp()
        self.panel = self.enterContext(Panel())
        self.start_vemo()
        wait_until(lambda: self.panel.items(), lambda: f"the item in the panel; {self.vemo.story()}")
        self.menu = MenuOnTheBus(self.panel.items()[0])

    def await_labels(self, *labels):
        wait_until(lambda: self.menu.labels() == list(labels), lambda: f"the menu to be {labels}; it is {self.menu.labels()}")

    def test_the_menu_is_shown_and_each_kind_of_line_does_its_work(self):
        self.await_labels("Ready", "Open Vemo Window", "Settings", "-", "Enable Vemo", "-", "Language: English", "-",
                          "Signed in: unknown", "Sign Out", "-", "Quit Vemo")

        self.assertEqual(self.menu.find("Enable Vemo")[1]["toggle-state"], 1)
        self.menu.press("Enable Vemo")
        wait_until(lambda: self.menu.find("Enable Vemo")[1]["toggle-state"] == 0, "Vemo to be off")
        wait_until(lambda: self.vemo.settings().get("isEnabled") is False, "the setting to be written")

        languages, _ = self.menu.find("Language: English")
        self.menu.press("   Hindi", languages)
        wait_until(lambda: "Language: Hindi" in self.menu.labels(), "the language to be Hindi")
        wait_until(lambda: self.vemo.settings().get("dictationLanguage") == "hi", "the setting to be written")

        self.menu.press("Sign Out")
        wait_until(lambda: "Sign In with Google" in self.menu.labels(), "nobody to be signed in")

        self.menu.press("Quit Vemo")
        self.assertEqual(self.vemo.process.wait(120), 0)
        wait_until(lambda: not self.panel.items(), "the item to be gone")

    def test_the_image_follows_the_dictation_and_the_last_text_is_offered(self):
        item = self.panel.items()[0]

        def icon():
            return get_property(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "IconName")
        wait_until(lambda: icon() == "vemo-idle-symbolic", "the image of rest before")
        self.vemo.start()
        wait_until(lambda: icon() == "vemo-record.circle-symbolic", "the image of a recording")
        self.vemo.stop()
        wait_until(lambda: icon() == "vemo-idle-symbolic", "the image of rest")


class NoPanelTest(TrayTest):
    def test_a_missing_panel_is_told_once_whatever_comes_and_goes_afterwards(self):
        vemo = self.start_vemo()
        vemo.await_logged("tray: no panel shows status items here")
        # Whoever hasn't seen it said in the window is told again, once a panel has come and gone.
        subprocess.run([vemo.program], env=vemo.environment, stdin=subprocess.DEVNULL, check=False, timeout=120)
        vemo.put_window_away()
        for _ in range(2):
            with Panel() as panel:
                wait_until(lambda: panel.items(), lambda: f"the item in the panel; {vemo.story()}")
        self.assertEqual(vemo.logged("tray: no panel shows status items here"), 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
