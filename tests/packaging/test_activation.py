#!/usr/bin/python3
"""The bus starts Vemo for who calls it, by the file that is installed, and hands the call over."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from gi.repository import Gio, GLib

from installation import BUILD, CONFIGURED, SOURCE

sys.path.insert(0, str(SOURCE / "tests/desktop"))
from virtual_desktop import is_listening, wait_until  # noqa: E402

PROGRAM = BUILD / "bin/vemo"
NAME = "brelmox.Vemo"
CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:path={folder}/bus</listen>
  <servicedir>{folder}/services</servicedir>
  <policy context="default"><allow send_destination="*"/><allow receive_type="*"/><allow own="*"/></policy>
</busconfig>
"""


class ActivationTest(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "services").mkdir()
        installed = (CONFIGURED / f"{NAME}.service").read_text()
        self.assertRegex(installed, r"(?m)^Exec=/.*/bin/vemo$")
        (folder / "services" / f"{NAME}.service").write_text(re.sub(r"(?m)^Exec=.*", f"Exec={PROGRAM}", installed))
        (folder / "bus.conf").write_text(CONFIGURATION.format(folder=folder))
        self.environment = os.environ | {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/bus"}
        daemon = subprocess.Popen(["dbus-daemon", f"--config-file={folder}/bus.conf", "--nofork"], env=self.environment,
                                  stderr=subprocess.DEVNULL)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.terminate)
        wait_until(lambda: is_listening(folder / "bus"), "the bus to answer")
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(f"unix:path={folder}/bus", flags, None, None)

    def call(self, name, path, interface, member, arguments=None):
        return self.bus.call_sync(name, path, interface, member, arguments, None, Gio.DBusCallFlags.NONE, 60_000, None).unpack()

    def ask_the_bus(self, member, name=NAME):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member,
                         GLib.Variant("(s)", (name,)))[0]

    def command(self, word):
        result = subprocess.run([PROGRAM, word], env=self.environment, capture_output=True, text=True, timeout=60, check=False)
        return result.returncode, (result.stdout + result.stderr).split("\n")[0]

    def test_a_call_starts_the_program_and_is_answered_by_it(self):
        (answer,) = self.call(NAME, "/brelmox/Vemo", NAME, "status")
        self.addCleanup(self.command, "quit")
        self.assertRegex(answer, "^idle")
        process = self.ask_the_bus("GetConnectionUnixProcessID")
        self.assertEqual(PROGRAM.resolve(), pathlib.Path(f"/proc/{process}/exe").resolve())
        # What bars a dictation as yet is told, too, and may be gone by now.
        wait_until(lambda: self.command("status")[1].split(":")[0] == "idle", "the command to be answered")
        self.command("quit")
        wait_until(lambda: not self.ask_the_bus("NameHasOwner"), "Vemo to end")

    def test_a_command_starts_no_program(self):
        self.assertEqual((1, "Vemo isn't running."), self.command("status"))
        self.assertEqual((1, "Vemo isn't running."), self.command("toggle"))
        self.assertFalse(self.ask_the_bus("NameHasOwner"))


if __name__ == "__main__":
    unittest.main()
