#!/usr/bin/python3
"""Owns the clipboard as an application would, with any formats: the other side of clipboard.py.

Reads one JSON line, a list of [format, bytes in base64], and prints "ready". At the next line it takes the
clipboard; prints "owner" once that is its own, "lost" when another has taken it, and serves until then.
"""

import base64
import json
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402


def say(word):
    print(word, flush=True)


def main():
    formats = [(name, base64.b64decode(content)) for name, content in json.loads(sys.stdin.readline())]
    clipboard = Gdk.SELECTION_CLIPBOARD
    window = Gtk.Window(type=Gtk.WindowType.POPUP)
    window.realize()
    window.get_window().set_events(window.get_window().get_events() | Gdk.EventMask.PROPERTY_CHANGE_MASK)

    def serve(_widget, data, number, _time):
        data.set(data.get_target(), 8, formats[number][1])

    def lost(_widget, _event):
        say("lost")
        Gtk.main_quit()
        return True

    window.connect("selection-get", serve)
    window.connect("selection-clear-event", lost)
    for number, (name, _) in enumerate(formats):
        Gtk.selection_add_target(window, clipboard, Gdk.Atom.intern(name, False), number)
    say("ready")
    if not sys.stdin.readline():
        return
    if not Gtk.selection_owner_set(window, clipboard, Gdk.CURRENT_TIME):
        sys.exit("the clipboard could not be had")
    GLib.idle_add(say, "owner")
    Gtk.main()


main()
