#!/usr/bin/python3
"""How Vemo comes up: for the first time, once more, at login, and from where it can't stay."""

import contextlib
import pathlib
import subprocess
import unittest

from gi.repository import Gio, GLib

import editors
from dictation_server import DictationServer
from vemo_program import Vemo, clear_token, namespaces_of_its_own, store_token
from virtual_desktop import wait_until
from windows import State, Window, await_steady, items_below, main_window, settings_window

ENGINE_THREAD = "QQmlThread"
ENTRY = "autostart/brelmox.Vemo.desktop"
SWITCH = "Launch app at login"
STICK = pathlib.Path("/media/stick")
MESSAGE = "Move Vemo to your Applications folder"


def thread_names(process):
    names = set()
    for task in pathlib.Path(f"/proc/{process.pid}/task").iterdir():
        with contextlib.suppress(OSError):  # it has just ended
            names.add((task / "comm").read_text().strip())
    return names


def has_loaded(process, library):
    return library in pathlib.Path(f"/proc/{process.pid}/maps").read_text()


class StartTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        self.server = self.enterContext(DictationServer())

    def start(self, kind=Vemo):
        self.vemo = self.enterContext(kind(self.server.address))
        return self.vemo


class FirstStartTest(StartTest):
    def test_a_fresh_home_shows_the_sign_in_and_then_the_way_to_the_first_dictation(self):
        clear_token()
        self.start()
        window = main_window(self.vemo)
        for words in ("Type Less,", "Speak more", "Continue with Google"):
            window.await_item(words)
        self.assertFalse(window.shows("Home"))

        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        store_token("token-of-the-desktop-tests")
        self.vemo.launch()
        window = main_window(self.vemo)
        for words in ("Start Dictating Now", "No transcriptions yet"):
            window.await_item(words)
        for words in ("to talk into any textbox.", "Open a textbox anywhere and hold Either Option (⌥) to get started."):
            window.await_that(lambda: words in window.story(), f"to say “{words}”")
        self.assertFalse(window.shows("Continue with Google"))


class SecondLaunchTest(StartTest):
    def test_a_second_launch_raises_the_window_of_the_first_and_ends(self):
        self.start()
        window = main_window(self.vemo)
        first = window.identifier()
        other = subprocess.Popen(["zenity", "--info", "--text=in front"], stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL)
        self.addCleanup(other.wait)
        self.addCleanup(other.terminate)
        wait_until(lambda: "zenity" in editors.window_class(editors.active_window() or "0").lower(),
                   "another window to be in front")
        self.vemo.launch_again()
        window.await_that(window.is_in_front, "to be in front again")
        self.assertEqual(self.vemo.windows(), [first])

        window.close()
        self.vemo.launch_again()
        Window(self.vemo, "Vemo")
        self.assertEqual(len(self.vemo.windows()), 1)
        self.assertIsNone(self.vemo.process.poll())

    def test_the_engine_of_the_windows_goes_with_the_last_of_them(self):
        self.start()
        main = main_window(self.vemo)
        settings = settings_window(main)
        main.close()
        self.assertIn(ENGINE_THREAD, thread_names(self.vemo.process))
        settings.close()
        wait_until(lambda: ENGINE_THREAD not in thread_names(self.vemo.process), "the engine to be gone")


class LoginTest(StartTest):
    def switch_is_on(self, settings):
        return State.CHECKED in settings.await_item(SWITCH).states

    def test_the_switch_tells_of_the_entry_and_the_entry_starts_vemo_with_its_window(self):
        self.start()
        entry = self.vemo.home / ".config" / ENTRY
        settings = settings_window(main_window(self.vemo))
        settings.click("System")
        self.assertFalse(self.switch_is_on(settings))
        self.assertFalse(entry.exists())
        settings.click(SWITCH)
        wait_until(entry.is_file, "the entry to be written")
        self.assertTrue(self.switch_is_on(settings))

        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        told, command = GLib.shell_parse_argv(Gio.DesktopAppInfo.new_from_filename(str(entry)).get_commandline())
        self.assertTrue(told)
        self.assertEqual(pathlib.Path(command[0]).resolve(), pathlib.Path(self.vemo.program).resolve())
        self.vemo.program, *self.vemo.arguments = command
        self.vemo.launch()  # waits for the window
        self.vemo.arguments = []

        entry.unlink()
        settings = settings_window(main_window(self.vemo))
        settings.click("System")
        self.assertFalse(self.switch_is_on(settings))


class VemoOnAStick(Vemo):
    """Where desktops mount what is plugged in, seen by this process alone."""

    def launch(self):
        command = 'mount -t tmpfs none /media && mkdir "$1" && mount --bind "$0" "$1" && exec "$1/vemo"'
        with open(self.home / "output", "ab") as output:
            self.process = subprocess.Popen(
                [*namespaces_of_its_own("--mount"), "sh", "-c", command, self.program.parent, STICK],
                env=self.environment, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)

    def story(self):
        return (self.home / "output").read_text(errors="replace")

    def alert(self):
        """What the alert shows a screen reader; nothing before it is there."""
        return [item for application in editors.applications_of(self.process) for item in items_below(application)]

    def alert_item(self, name):
        return next((item for item in self.alert() if item.name == name), None)


class RefusedPlaceTest(StartTest):
    def refuse_and_end(self, vemo):
        await_steady(lambda: vemo.alert_item(MESSAGE), lambda: f"the alert; {vemo.story()}")
        for library in ("libQt6Qml", "libQt6Quick"):
            self.assertFalse(has_loaded(vemo.process, library), library)
        button = await_steady(lambda: vemo.alert_item("Quit"), "the button")
        with contextlib.suppress(GLib.Error):  # no answer comes from a program that has ended
            button.act("Press")
        self.assertEqual(vemo.process.wait(120), 0)

    def test_from_a_removable_medium_each_start_shows_the_alert_and_ends(self):
        vemo = self.start(VemoOnAStick)
        self.refuse_and_end(vemo)
        vemo.launch()
        self.refuse_and_end(vemo)
        self.assertEqual(self.server.requests + self.server.other_requests, [])
        self.assertFalse(vemo.log.exists())
        self.assertFalse((vemo.configuration / "settings.json").exists())


if __name__ == "__main__":
    unittest.main(verbosity=2)
