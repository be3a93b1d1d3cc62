#!/usr/bin/python3
"""A dictation into a password field of each toolkit: refused before the clipboard is touched."""

import pathlib
import subprocess
import tempfile
import unittest

import editors
import keyboard
from clipboard import ClipboardOwner, contents
from dictation_server import DictationServer, transcription
from vemo_program import Vemo, store_token
from virtual_desktop import wait_until

MESSAGE = "Can't paste here (secure input active) — use Copy Last Transcript"
BLOCKED = "inject: blocked — secure input is active"
PASTED = "inject: pasteboard set"
MOST_DICTATIONS = 2
PINENTRY_DIALOG = b"OPTION no-grab\nSETPROMPT Secret\nGETPIN\n"


class PasswordFieldTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        self.server = self.enterContext(DictationServer())

    def start_vemo(self):
        self.vemo = self.enterContext(Vemo(self.server.address))

    def open(self, window_class, *command, stdin=b""):
        program = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(self.close, program)
        program.stdin.write(stdin)
        program.stdin.flush()
        wait_until(lambda: window_class in editors.window_class(editors.active_window() or "0").lower(),
                   f"{window_class} to come to the front")
        return program

    @staticmethod
    def close(program):
        program.terminate()
        try:
            program.communicate(timeout=10)
        except subprocess.TimeoutExpired:
            program.kill()
            program.communicate()

    def assert_refused(self, own=""):
        """A field whose program hasn't told its role within 50 ms, as on a machine that stalls, is an ordinary one: what
        was pasted then makes room for what the user had typed."""
        for _ in range(MOST_DICTATIONS):
            if self.is_refused():
                return
            keyboard.strike("Control_L", "a")
            keyboard.strike("BackSpace")
            keyboard.type_text(own)
        self.fail(f"pasted {MOST_DICTATIONS} times; {self.vemo.story()}")

    def is_refused(self):
        pasted = self.vemo.logged(PASTED)
        with ClipboardOwner([("UTF8_STRING", b"untouched")]) as owner:
            self.server.answers = [transcription("not for this field")]
            self.vemo.dictate()
            wait_until(lambda: self.vemo.logged(BLOCKED) or self.vemo.logged(PASTED) > pasted,
                       lambda: f"the dictation to end; {self.vemo.story()}")
            if not self.vemo.logged(BLOCKED):
                wait_until(self.vemo.is_idle, "Vemo to be idle again")
                return False
            self.assertIn(self.vemo.await_failure(), (f"error: {MESSAGE}", ""))
            self.assertFalse(owner.has_lost_it())
            self.assertEqual(contents(), [("UTF8_STRING", b"untouched")])
        self.assertEqual(self.vemo.logged(f"error: {MESSAGE}"), 1)
        self.assertEqual(self.vemo.logged(BLOCKED), 1)
        self.assertEqual(self.vemo.logged(PASTED), pasted)
        return True

    def test_a_gtk_password_entry_is_left_alone(self):
        self.start_vemo()
        dialog = self.open("zenity", "zenity", "--password")
        self.assert_refused()
        keyboard.type_text("own")
        keyboard.strike("Return")
        self.assertEqual(dialog.stdout.read().strip(), b"own")

    def test_a_field_that_had_the_focus_before_vemo_came_is_left_alone(self):
        dialog = self.open("zenity", "zenity", "--password")
        self.start_vemo()
        self.assert_refused()
        keyboard.type_text("own")
        keyboard.strike("Return")
        self.assertEqual(dialog.stdout.read().strip(), b"own")

    def test_a_qt_password_entry_is_left_alone(self):
        self.start_vemo()
        dialog = self.open("pinentry", "pinentry-qt", stdin=PINENTRY_DIALOG)
        self.assert_refused()
        keyboard.type_text("own")
        keyboard.strike("Return")
        wait_until(lambda: b"D own\n" in dialog.stdout.readline(), "the secret that was typed, and no more")

    def test_a_password_field_in_chromium_is_left_alone(self):
        self.start_vemo()
        folder = self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
        page = pathlib.Path(folder, "page.html")
        page.write_text("<!doctype html><title>starting</title>"
                        "<input type=password autofocus oninput='document.title = `typed ${value}`'"
                        " onkeydown='document.title = `ready`; onkeydown = null'>")
        # Unless it is told to, Chromium lets nobody see into its pages.
        self.open("chromium", *editors.chromium_command(folder, f"file://{page}"), "--force-renderer-accessibility")
        wait_until(self.takes_keys, "the field to take keys")
        keyboard.type_text("ow")
        wait_until(lambda: self.title() == "typed ow", "the page to take what is typed")
        self.assert_refused(own="ow")
        keyboard.type_text("n")
        wait_until(lambda: self.title() == "typed own", "what was typed, and no more")

    def takes_keys(self):
        editors.strike_in_vain()
        return self.title() == "ready"

    @staticmethod
    def title():
        result = subprocess.run(["xdotool", "getactivewindow", "getwindowname"], capture_output=True, check=False)
        return result.stdout.decode().strip()

    def test_behind_another_window_a_password_field_bars_nothing(self):
        self.start_vemo()
        self.open("zenity", "zenity", "--password")
        self.assert_refused()
        wait_until(self.vemo.is_idle, "Vemo to be idle again")
        with editors.Mousepad() as editor:
            self.server.answers = [transcription("For the editor.")]
            self.vemo.dictate_into(editor, "For the editor.")


if __name__ == "__main__":
    unittest.main(verbosity=2)
