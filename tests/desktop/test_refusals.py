#!/usr/bin/python3
"""What the pill says when a held key can't lead to a dictation, and that nothing else happens."""

import itertools
import subprocess
import unittest

import editors
import keyboard
from clipboard import ClipboardOwner, contents
from pill import Pill
from test_keys import KeysTest
from vemo_program import clear_token
from virtual_desktop import wait_until

LOOKS = 8  # at the pill before the next try, at least; a message stays for 2.4 s, and a look takes its time
MOST_LOOKS = 200


class RefusalTest(KeysTest):
    def await_message(self, message, trigger):
        pill = Pill()

        def is_told():
            trigger()
            looks = itertools.takewhile(lambda look: look < LOOKS or not self.vemo.is_idle(), range(MOST_LOOKS))
            return any(pill.shows(message) for _ in looks)
        wait_until(is_told, lambda: f"the pill to say “{message}”; {self.vemo.story()}")
        wait_until(lambda: not pill.is_visible(), "the pill to go")

    def hold_alt(self):
        before = self.vemo.logged("handlePushToTalkDown")
        with self.held("Alt_R"):
            self.vemo.await_logged("handlePushToTalkDown", before + 1)

    def assert_refused(self, message):
        with ClipboardOwner([("UTF8_STRING", b"untouched")]) as owner:
            self.await_message(message, self.hold_alt)
            self.assertFalse(owner.has_lost_it())
            self.assertEqual(contents(), [("UTF8_STRING", b"untouched")])
        self.assertEqual(self.vemo.logged("recording started"), 0)
        self.assertEqual(self.server.requests, [])
        self.assertEqual(self.editor.text(), "")


class SignedOutTest(RefusalTest):
    def test_while_signed_out_the_pill_asks_to_sign_in(self):
        clear_token()
        self.start()
        self.assert_refused("Please sign in to dictate")
        self.vemo.await_status("idle: Sign in to connect")


class NoMicrophoneTest(RefusalTest):
    """On a desktop of its own: it takes the microphone away."""

    def test_without_a_microphone_the_pill_asks_for_one(self):
        subprocess.run(["pactl", "unload-module", "module-remap-source"], check=True)
        self.start()
        self.assert_refused("Microphone access needed")
        self.vemo.await_status("idle: Microphone access needed")


class PasswordFieldTest(RefusalTest):
    def test_in_a_password_field_the_pill_says_so_and_neither_field_nor_clipboard_gets_the_text(self):
        dialog = subprocess.Popen(["zenity", "--password"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(dialog.stdout.close)
        self.addCleanup(dialog.wait)
        self.addCleanup(dialog.terminate)
        def is_in_front():
            return "zenity" in editors.window_class(editors.active_window() or "0").lower()
        wait_until(is_in_front, "the password dialog to come to the front")
        self.start_vemo()
        wait_until(is_in_front, "the password dialog to be in front again")
        with ClipboardOwner([("UTF8_STRING", b"untouched")]) as owner:
            self.await_message("Can't paste here (secure input active) — use Copy Last Transcript",
                               lambda: self.dictate_holding("Alt_R"))
            self.assertFalse(owner.has_lost_it())
        keyboard.strike("Return")
        self.assertEqual(dialog.stdout.read().strip(), b"")


if __name__ == "__main__":
    unittest.main(verbosity=2)
