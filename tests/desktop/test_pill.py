#!/usr/bin/python3
"""The recording pill on the screen: how it looks, and that it is in nobody's way.

With --write-references the pictures that it is compared with are written anew.
"""

import os
import pathlib
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
import gi  # noqa: E402

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

from editors import Mousepad, active_window, applications  # noqa: E402
from pill import PANEL_WIDTH, Pill, differing_pixels, output, screenshot  # noqa: E402
from vemo_program import Vemo, clear_token, program  # noqa: E402
from virtual_desktop import DesktopError, wait_until  # noqa: E402

REFERENCES = pathlib.Path(__file__).resolve().parent / "references"
WRITES_REFERENCES = "--write-references" in sys.argv
SCREEN_WIDTH, PICTURE_HEIGHT = 1280, 120
# Fonts are rendered a little differently from version to version.
TOLERANCE_PERCENT = 8
TOLERATED_PIXELS = 40

STATES = {
    "silent": "recording 0",
    "recording": "recording 0.5",
    "transcribing": "transcribing",
    "error": "error No microphone available",
}
LIVE_TEXT = "the newest words of what was said stay in view while the older ones go away"
COLORS = ("dark", "teal", "light")


def set_background():
    subprocess.run(["xsetroot", "-solid", "#808080"], check=True, timeout=120)


class Stage:
    """The pill by itself, told what to show."""

    def __enter__(self):
        self.process = subprocess.Popen([program("pill_stage")], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(120)
        self.process.stdout.close()

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        if self.process.stdout.readline().strip() != "ok":
            raise AssertionError(f"the stage has ended at “{command}”")


class Compositor:
    def __enter__(self):
        set_background()
        self.process = subprocess.Popen(["picom", "--backend", "xrender", "--config", "/dev/null"],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        wait_until(is_composited, "picom to composite")
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(120)
        wait_until(lambda: not is_composited(), "picom to be gone")


def is_composited():
    pump()
    return Gdk.Screen.get_default().is_composited()


def pump():
    while Gtk.events_pending():
        Gtk.main_iteration()
    return True


def accessible_names(program_name):
    """The names of what a program's windows hold, as a screen reader sees them."""
    def names(element):
        yield element.get_name()
        for index in range(element.get_child_count()):
            yield from names(element.get_child_at_index(index))
    try:
        return [name for element in applications(lambda application: application.get_name() == program_name)
                for name in names(element)]
    except GLib.Error:
        return []  # it changes while it's looked at


class PillTest(unittest.TestCase):
    def setUp(self):
        set_background()
        self.stage = self.enterContext(Stage())
        self.pill = Pill()

    def settle(self, command, reference):
        """Waits until the pill looks like the reference."""
        path = REFERENCES / f"{reference}.png"
        shot = pathlib.Path(os.environ["TMPDIR"]) / f"{reference}.png"
        x = (SCREEN_WIDTH - PANEL_WIDTH) // 2

        def looks_right():
            self.stage.tell(command)  # an error goes away by itself
            screenshot(shot, x, 0, PANEL_WIDTH, PICTURE_HEIGHT)
            return differing_pixels(path, shot, TOLERANCE_PERCENT) <= TOLERATED_PIXELS

        if WRITES_REFERENCES:
            self.write_reference(command, shot, path, x)
            return
        try:
            wait_until(looks_right, reference)
        except DesktopError:
            kept = pathlib.Path(os.environ["VEMO_PROGRAMS"]) / f"failed-{reference}.png"
            kept.write_bytes(shot.read_bytes())
            self.fail(f"{reference} doesn't look like its reference, but like {kept}")

    def write_reference(self, command, shot, path, x):
        """It stands still when three pictures in a row are the same."""
        pictures = []

        def is_still():
            self.stage.tell(command)
            screenshot(shot, x, 0, PANEL_WIDTH, PICTURE_HEIGHT)
            pictures.append(output("convert", str(shot), "rgb:-"))
            return len(pictures) > 6 and pictures[-1] == pictures[-2] == pictures[-3]

        wait_until(is_still, "the pill to stand still")
        subprocess.run(["convert", str(shot), "-strip", "-define", "png:exclude-chunks=date,time", str(path)],
                       check=True, timeout=120)

    def compare_all(self, ground):
        for color in COLORS:
            self.stage.tell(f"color {color}")
            for state, command in STATES.items():
                with self.subTest(color=color, state=state):
                    self.settle(command, f"{ground}-{color}-{state}")
            with self.subTest(color=color, state="live text"):
                self.stage.tell("transcribing")
                self.settle(f"live {LIVE_TEXT}", f"{ground}-{color}-live")


class CompositedPicturesTest(PillTest):
    def setUp(self):
        self.enterContext(Compositor())
        super().setUp()

    def test_each_state_in_each_color_looks_like_its_reference(self):
        self.compare_all("composited")


class BarePicturesTest(PillTest):
    def test_each_state_in_each_color_looks_like_its_reference(self):
        self.compare_all("bare")

    def test_a_compositor_that_appears_and_disappears_is_followed(self):
        self.stage.tell("color dark")
        self.settle("transcribing", "bare-dark-transcribing")
        with Compositor():
            self.settle("transcribing", "composited-dark-transcribing")
        set_background()
        self.settle("transcribing", "bare-dark-transcribing")

    def test_hidden_nothing_of_it_is_left(self):
        self.settle("recording 0.5", "bare-dark-recording")
        self.stage.tell("hide")
        wait_until(lambda: not self.pill.is_visible(), "the pill to go")
        self.settle("hide-now", "hidden")


class OnTheDesktopTest(PillTest):
    def show(self):
        self.stage.tell("recording 0.5")
        wait_until(self.pill.shows_waveform, "the pill to be seen")

    def full_screen_window(self):
        """A window over all of the screen that tells of clicks."""
        window = Gtk.Window()
        window.clicks = []
        window.add_events(Gdk.EventMask.BUTTON_PRESS_MASK)
        window.connect("button-press-event", lambda _, event: window.clicks.append((event.x_root, event.y_root)))
        window.fullscreen()
        window.show_all()
        self.addCleanup(lambda: (window.destroy(), pump()))
        wait_until(lambda: pump() and window.get_window().get_state() & Gdk.WindowState.FULLSCREEN,
                   "the window to be full-screen")
        wait_until(lambda: pump() and window.is_active(), "the window to be active")
        return window

    def test_it_is_above_a_full_screen_window_that_comes_before_or_after(self):
        self.show()
        self.full_screen_window()
        wait_until(lambda: pump() and self.pill.shows_waveform(), "the pill to be above the later window")
        self.stage.tell("hide-now")
        self.show()

    def test_a_click_at_its_centre_reaches_the_window_below(self):
        window = self.full_screen_window()
        self.show()
        x, y = wait_until(self.pill.place, "the pill to have a place")
        x, y = x + PANEL_WIDTH // 2, y + 29
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True, timeout=120)
        wait_until(lambda: pump() and window.clicks, "the click")
        self.assertEqual(set(window.clicks), {(x, y)})

    def test_it_is_in_no_list_of_windows_and_tells_nothing_by_its_name(self):
        self.stage.tell("error Something that nobody needs to know")
        window = wait_until(self.pill.window, "the pill to be seen")
        self.assertNotIn(f"{int(window):#x}", output("xprop", "-root", "_NET_CLIENT_LIST", "_NET_CLIENT_LIST_STACKING"))
        properties = output("xprop", "-id", window)
        self.assertIn('WM_NAME(STRING) = "Vemo"', properties)
        self.assertNotIn("nobody", properties)

    def test_it_is_on_every_virtual_desktop(self):
        self.addCleanup(subprocess.run, ["xdotool", "set_num_desktops", "1"], check=True)
        subprocess.run(["xdotool", "set_num_desktops", "2"], check=True, timeout=120)
        wait_until(lambda: output("xdotool", "get_num_desktops") == "2", "two desktops")
        self.show()
        subprocess.run(["xdotool", "set_desktop", "1"], check=True, timeout=120)
        wait_until(lambda: output("xdotool", "get_desktop") == "1", "the other desktop")
        wait_until(self.pill.shows_waveform, "the pill to be seen there, too")

    def test_a_screen_reader_finds_the_live_text_by_its_label(self):
        self.stage.tell("recording 0")
        self.assertNotIn("Dictated so far", accessible_names("pill_stage"))
        self.stage.tell("live so far so good")
        wait_until(lambda: "Dictated so far" in accessible_names("pill_stage"), "the live text to be found")

    def test_the_editor_keeps_the_focus_through_show_change_and_hide(self):
        with Mousepad() as editor:
            typed = ""
            for command in ("recording 0.5", "transcribing", "error No microphone available", "hide", "recording 0",
                            "hide-now"):
                self.stage.tell(command)
                subprocess.run(["xdotool", "key", "x"], check=True, timeout=120)
                typed += "x"
                wait_until(lambda: editor.text() == typed, f"the letter typed after “{command}”")
                self.assertEqual(active_window(), editor.window)
                wait_until(editor.has_focus, f"the editor to have the focus after “{command}”")


def randr(*arguments):
    """Its exit status tells little on a virtual display; tests look at what comes of it."""
    subprocess.run(["xrandr", *arguments], capture_output=True, check=False, timeout=120)


class ScreensTest(PillTest):
    def tearDown(self):
        for name in ("left", "right"):
            randr("--delmonitor", name)
        randr("--output", "screen", "--mode", "1280x800")

    def await_place(self, x, y):
        wait_until(lambda: pump() and self.pill.place() == (x, y), lambda: f"{x}, {y}; it is at {self.pill.place()}")

    def test_another_resolution_moves_it(self):
        self.stage.tell("recording 0.5")
        self.await_place((SCREEN_WIDTH - PANEL_WIDTH) // 2, 0)
        randr("--newmode", "small", "63.5", "1024", "1072", "1176", "1328", "768", "771", "775", "798")
        randr("--addmode", "screen", "small")
        randr("--output", "screen", "--mode", "small")
        self.assertIn("current 1024 x 768", output("xrandr"))
        self.await_place((1024 - PANEL_WIDTH) // 2, 0)

    def test_a_second_screen_takes_it_along_with_the_active_window(self):
        self.stage.tell("recording 0.5")
        self.await_place((SCREEN_WIDTH - PANEL_WIDTH) // 2, 0)
        randr("--setmonitor", "left", "640/200x800/250+0+0", "screen")
        randr("--setmonitor", "right", "640/200x800/250+640+0", "none")
        self.await_place(320 - PANEL_WIDTH // 2, 0)
        window = Gtk.Window()
        window.set_default_size(200, 100)
        window.show_all()
        self.addCleanup(lambda: (window.destroy(), pump()))
        wait_until(lambda: pump() and window.is_active(), "the window to be active")
        window.move(900, 300)
        wait_until(lambda: pump() and window.get_position()[0] > 800, "the window to be on the other screen")
        self.stage.tell("transcribing")
        self.await_place(960 - PANEL_WIDTH // 2, 0)

    def test_it_clears_the_strip_of_a_panel(self):
        panel = Gtk.Window()
        panel.set_type_hint(Gdk.WindowTypeHint.DOCK)
        panel.set_default_size(1280, 30)
        panel.show_all()
        self.addCleanup(lambda: (panel.destroy(), pump()))
        wait_until(lambda: pump() and panel.get_window(), "the panel")
        subprocess.run(["xprop", "-id", str(panel.get_window().get_xid()), "-f", "_NET_WM_STRUT_PARTIAL", "32c", "-set",
                        "_NET_WM_STRUT_PARTIAL", "0, 0, 30, 0, 0, 0, 0, 0, 0, 1279, 0, 0"], check=True, timeout=120)
        wait_until(lambda: "= 0, 30, 1280, 770" in output("xprop", "-root", "_NET_WORKAREA"), "the work area")

        def clears_strip():
            self.stage.tell("error No microphone available")
            return self.pill.shows("No microphone available", top_inset=30)
        wait_until(clears_strip, lambda: f"the pill to be below the panel; its window is at {self.pill.place()}")


class VemosPillTest(unittest.TestCase):
    def test_a_dictation_without_a_sign_in_says_so_on_the_pill(self):
        clear_token()
        pill = Pill()
        with Vemo("http://127.0.0.1:9/") as vemo:
            self.assertFalse(pill.is_visible())

            def says_so():
                if not pill.is_visible():
                    vemo.command("start")
                return pill.shows("Please sign in to dictate")
            wait_until(says_so, "the message")
            self.assertFalse(pill.shows("Microphone access needed"))
            self.assertFalse(pill.shows("Please sign in to dictat"))
            wait_until(lambda: not pill.is_visible(), "the message to go")


if __name__ == "__main__":
    unittest.main(argv=[argument for argument in sys.argv if argument != "--write-references"], verbosity=2)
