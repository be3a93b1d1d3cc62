#!/usr/bin/python3
"""The panel's images, as a real toolkit draws them in the colours of a light panel and of a dark one."""

import pathlib
import unittest

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

IMAGES = pathlib.Path(__file__).resolve().parents[2] / "resources/icons/tray"
SIZES = (16, 22, 24, 32, 48)


def opaque_pixels(pixbuf):
    """The colours of the pixels that nothing shines through."""
    data, row, channels = pixbuf.get_pixels(), pixbuf.get_rowstride(), pixbuf.get_n_channels()
    places = (y * row + x * channels for y in range(pixbuf.get_height()) for x in range(pixbuf.get_width()))
    return [tuple(data[at:at + 3]) for at in places if data[at + 3] == 255]


class PanelIconsTest(unittest.TestCase):
    def setUp(self):
        self.theme = Gtk.IconTheme()
        self.theme.append_search_path(str(IMAGES))

    def draw(self, name, size, level):
        icon = self.theme.lookup_icon(name, size, Gtk.IconLookupFlags.FORCE_SIZE)
        pixbuf, was_symbolic = icon.load_symbolic(Gdk.RGBA(level, level, level, 1), None, None, None)
        self.assertTrue(was_symbolic, name)
        self.assertEqual(pixbuf.get_width(), size)
        return opaque_pixels(pixbuf)

    def test_each_takes_the_panels_color_at_each_size_and_stays_a_drawing(self):
        names = sorted(file.stem for file in IMAGES.glob("*.svg"))
        self.assertEqual(len(names), 5)
        for name in names:
            for size in SIZES:
                for level in (0, 1):
                    with self.subTest(name=name, size=size, level=level):
                        pixels = self.draw(name, size, level)
                        self.assertEqual(set(pixels), {(255 * level,) * 3})
                        self.assertGreater(len(pixels), size * size * 0.08, "it can hardly be seen")
                        self.assertLess(len(pixels), size * size * 0.6, "it is a blot")


if __name__ == "__main__":
    unittest.main(verbosity=2)
