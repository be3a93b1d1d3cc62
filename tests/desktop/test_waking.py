#!/usr/bin/python3
"""The machine sleeps and wakes: logind says so on the system bus, which here is the session's."""

import os
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from dictation_server import DictationServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402


class WakingTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self.addCleanup(os.environ.pop, "DBUS_SYSTEM_BUS_ADDRESS")
        server = self.enterContext(DictationServer())
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        owner = Gio.bus_own_name_on_connection(self.bus, "org.freedesktop.login1", 0, None, None)
        self.addCleanup(Gio.bus_unown_name, owner)
        self.vemo = self.enterContext(Vemo(server.address))

    def tell(self, is_about_to_sleep):
        self.bus.emit_signal(None, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                             GLib.Variant("(b)", (is_about_to_sleep,)))
        self.bus.flush_sync()

    def test_at_each_waking_the_hotkeys_are_looked_after(self):
        at_the_start = self.vemo.logged("installHotkeyIfNeeded")

        def looked_after(more_than):
            self.tell(True)
            self.tell(False)
            return self.vemo.logged("installHotkeyIfNeeded") > more_than
        wait_until(lambda: looked_after(at_the_start), "the hotkeys to be looked after")
        again = self.vemo.logged("installHotkeyIfNeeded")
        wait_until(lambda: looked_after(again), "the hotkeys to be looked after again")


if __name__ == "__main__":
    unittest.main(verbosity=2)
