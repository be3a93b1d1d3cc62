#!/usr/bin/python3
"""The virtual desktop itself: its parts answer, and nothing of it is left behind."""

import os
import pathlib
import signal
import subprocess
import unittest

from virtual_desktop import PARTS, DesktopError, VirtualDesktop, wait_until

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "virtual-desktop"


class VirtualDesktopTest(unittest.TestCase):
    def test_each_part_answers_once_the_desktop_is_entered(self):
        with VirtualDesktop(*PARTS) as desktop:
            self.assertIn("1280x800", desktop.output("xdpyinfo"))
            self.assertEqual(desktop.output("pactl", "get-default-source"), "virtmic")
            desktop.run(["secret-tool", "store", "--label=x", "name", "value"], input=b"secret", check=True)
            self.assertEqual(desktop.output("secret-tool", "lookup", "name", "value"), "secret")
            self.assertIsNotNone(desktop.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"))

    def test_the_home_is_new_and_private(self):
        with VirtualDesktop() as desktop:
            home = pathlib.Path(desktop.output("sh", "-c", "echo $HOME"))
            self.assertNotEqual(home, pathlib.Path.home())
            self.assertEqual(home.stat().st_mode & 0o777, 0o700)
            folder = desktop.folder
        self.assertFalse(folder.exists())

    def test_the_display_is_closed_to_those_without_its_cookie(self):
        with VirtualDesktop("x11") as desktop:
            stranger = desktop.environment | {"XAUTHORITY": "/dev/null"}
            self.assertNotEqual(desktop.run(["xdpyinfo"], env=stranger, capture_output=True).returncode, 0)

    def test_a_stroke_on_a_desktop_for_users_counts_once_however_long_the_machine_stalls(self):
        with VirtualDesktop("window-manager") as desktop:
            self.assertRegex(desktop.output("xset", "q"), r"auto repeat: +off")

    def test_a_bare_display_repeats_a_held_key(self):
        with VirtualDesktop("x11") as desktop:
            self.assertRegex(desktop.output("xset", "q"), r"auto repeat: +on")

    def test_a_daemon_that_left_its_parent_ends_with_the_desktop(self):
        with VirtualDesktop() as desktop:
            number = int(desktop.output("sh", "-c", "setsid sleep 1000 >/dev/null 2>&1 & echo $!"))
            os.kill(number, 0)
        self.assertFalse(runs(number))

    def test_the_tool_passes_the_exit_code_on(self):
        self.assertEqual(subprocess.run([TOOL, "--", "sh", "-c", "exit 7"]).returncode, 7)

    def test_a_terminated_tool_ends_its_command_and_its_parts(self):
        tool = subprocess.Popen([TOOL, "--x11", "--", "sh", "-c", "echo $VEMO_VIRTUAL_DESKTOP; exec sleep 1000"],
                                stdout=subprocess.PIPE, text=True)
        folder = pathlib.Path(tool.stdout.readline().strip())
        tool.send_signal(signal.SIGTERM)
        self.assertEqual(tool.wait(120), 128 + signal.SIGTERM)
        tool.stdout.close()
        self.assertFalse(folder.exists())
        wait_until(lambda: not processes_of(folder), "every process of the desktop to end")

    def test_a_part_that_cannot_start_is_named(self):
        with self.assertRaisesRegex(DesktopError, "Xvfb"):
            VirtualDesktop("x11", size="0x0").__enter__()


def runs(number):
    try:
        return "\nState:\tZ" not in pathlib.Path(f"/proc/{number}/status").read_text()
    except OSError:
        return False


def processes_of(folder):
    found = []
    for path in pathlib.Path("/proc").glob("[0-9]*/environ"):
        try:
            if str(folder).encode() in path.read_bytes():
                found.append(path)
        except OSError:
            pass
    return found


if __name__ == "__main__":
    unittest.main(verbosity=2)
