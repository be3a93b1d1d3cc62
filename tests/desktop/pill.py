"""The recording pill, looked at from outside: its window, and what of it is on the screen."""

import pathlib
import subprocess
import tempfile

import window_manager
from vemo_program import program

PANEL_WIDTH, PANEL_HEIGHT = 460, 160


def output(*command):
    result = subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL, timeout=120, check=False)
    return result.stdout.decode(errors="replace").strip() if result.returncode == 0 else ""


def screenshot(path, x, y, width, height):
    subprocess.run(["import", "-silent", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage",
                    str(path)], check=True, timeout=120)


def differing_pixels(picture, other, tolerance_percent):
    """How many pixels of two pictures of one size differ by more than that part of full scale."""
    result = subprocess.run(["compare", "-metric", "AE", "-fuzz", f"{tolerance_percent}%", str(picture), str(other),
                             "null:"], capture_output=True, timeout=120, check=False)
    if result.returncode not in (0, 1):
        raise AssertionError(result.stderr.decode(errors="replace"))
    return float(result.stderr.decode().split()[0])


class Pill:
    """`wait_until(lambda: pill.shows("Please sign in to dictate"), …)`"""

    def __init__(self):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="pill-"))
        self._drawn = {}  # by message and color

    def window(self):
        """The identifier of the pill's window while it's on the screen, or None."""
        for window in window_manager.visible_windows("--class", "^Vemo$"):
            if "Override Redirect State: yes" in output("xwininfo", "-id", window):
                return window
        return None

    def is_visible(self):
        return self.window() is not None

    def place(self):
        """x and y of the panel's top left corner, or None while it's hidden."""
        window = self.window()
        values = dict(line.split("=", 1) for line in
                      output("xdotool", "getwindowgeometry", "--shell", window).splitlines()) if window else {}
        return (int(values["X"]), int(values["Y"])) if "Y" in values else None

    def shows(self, message, color="dark", top_inset=0):
        """Whether the pill on the screen, which stands still, holds this message.

        It looks at the pill's inside, through which little of what lies below shines. What it expects is drawn
        before it looks, and once: a message is gone before a slow machine has drawn anything.
        """
        expected, (x, y, width, height) = self._expected(message, color)
        place = self.place()
        if not place:
            return False
        actual = self._folder / "actual.png"
        screenshot(actual, place[0] + x, place[1] + y + top_inset, width, height)
        return differing_pixels(expected, actual, 12) < width * height * 0.03

    def _expected(self, message, color):
        """A picture of the inside of the pill with this message, and where in the panel that is."""
        if (message, color) not in self._drawn:
            self._drawn[message, color] = self._draw(message, color)
        return self._drawn[message, color]

    def _draw(self, message, color):
        picture = self._folder / f"expected-{len(self._drawn)}.png"
        drawn = output(program("pill_picture"), message, picture, color)
        x, y, width, height = map(int, drawn.split())
        # Not its round corners and its edge, where the ground shows.
        x, y, width, height = x + height // 2, y + 2, width - height, height - 4
        subprocess.run(["mogrify", "-background", "#808080", "-flatten", "-crop", f"{width}x{height}+{x}+{y}",
                        "+repage", str(picture)], check=True, timeout=120)
        return picture, (x, y, width, height)

    def shows_waveform(self):
        """Whether the pill is up in the shape that it has while recording and processing."""
        place = self.place()
        if not place:
            return False
        actual = self._folder / "waveform.png"
        # The bars stand in the middle; left and right of a pill of 104 there's no other pill.
        screenshot(actual, place[0] + PANEL_WIDTH // 2 - 52, place[1] + 10, 104, 38)
        bars = output("convert", str(actual), "-crop", "72x2+16+18", "+repage", "-format", "%k", "info:")
        return int(bars or 0) > 8
