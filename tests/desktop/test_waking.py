#!/usr/bin/python3
"""The machine sleeps and wakes: logind says so on the system bus, which here is the session's."""

import os
import unittest

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from dictation_server import Answer  # noqa: E402
from telemetry_server import DEVICE, TelemetryServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402


class WakingTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self.addCleanup(os.environ.pop, "DBUS_SYSTEM_BUS_ADDRESS")
        self.server = self.enterContext(TelemetryServer())
        self.server.other_answers[DEVICE] = Answer(status=500)
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        owner = Gio.bus_own_name_on_connection(self.bus, "org.freedesktop.login1", 0, None, None)
        self.addCleanup(Gio.bus_unown_name, owner)
        self.vemo = self.enterContext(Vemo(self.server.address))

    def tell(self, is_about_to_sleep):
        self.bus.emit_signal(None, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                             GLib.Variant("(b)", (is_about_to_sleep,)))
        self.bus.flush_sync()

    def wake_until(self, condition, what):
        """Nothing tells from outside that Vemo listens, so the machine may have to wake more than once."""
        def woken():
            self.tell(True)
            self.tell(False)
            return condition()
        wait_until(woken, what)

    def wake(self):
        before = self.vemo.logged("installHotkeyIfNeeded")
        self.wake_until(lambda: self.vemo.logged("installHotkeyIfNeeded") > before, "the hotkeys to be looked after")

    def test_at_each_waking_the_hotkeys_are_looked_after(self):
        self.wake()
        self.wake()

    def test_at_a_waking_the_device_is_reported_if_it_is_due(self):
        self.server.await_requests_to(DEVICE, 1)
        self.server.other_answers[DEVICE] = Answer(status=204)
        self.wake_until(lambda: self.vemo.settings().get("telemetryDeviceReport"), "the report that failed to be sent again")

        self.wake()
        reports = len(self.server.requests_to(DEVICE))
        self.wake()
        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        self.assertEqual(len(self.server.requests_to(DEVICE)), reports, "nothing has changed on this day")


if __name__ == "__main__":
    unittest.main(verbosity=2)
