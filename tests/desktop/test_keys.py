#!/usr/bin/python3
"""Dictation by the keyboard alone: what starts one and what doesn't."""

import contextlib
import json
import tempfile
import unittest

import editors
import keyboard
import window_manager
from companion_service import CompanionService
from demonstration import SAMPLE_TEXT, sample_as_wav
from dictation_server import DictationServer, transcription
from vemo_program import Vemo, say, store_token, with_settings
from virtual_desktop import wait_until

SENTENCE = "A sentence by key."
CONTROL = 0x40000
SHIFT = 0x20000
F8 = 100  # the virtual key code
LOOKS = 200  # at what is in front before the next stroke


class KeysTest(unittest.TestCase):
    editor_class = editors.Mousepad

    def setUp(self):
        store_token("token-of-the-key-tests")
        self.server = self.enterContext(DictationServer())
        self.server.answers = [transcription(SENTENCE)]
        self.addCleanup(keyboard.use_layout, "us")

    def start(self, **settings):
        self.editor = self.enterContext(self.editor_class())
        self.start_vemo(**settings)
        wait_until(lambda: editors.active_window() == self.editor.window, "the editor to be in front again")

    def start_vemo(self, **settings):
        self.vemo = self.enterContext(Vemo(self.server.address, prepare_home=with_settings(**settings)))
        self.vemo.await_logged("HotkeyManager: event tap installed")

    @contextlib.contextmanager
    def held(self, *keys):
        keyboard.press(*keys)
        try:
            yield
        finally:
            keyboard.release(*reversed(keys))

    def await_recording(self):
        self.vemo.await_status("recording")

    def dictate_holding(self, *keys, sound=None):
        self.vemo.await_status("idle")
        with self.held(*keys):
            self.await_recording()
            say(sound or self.vemo.tone)

    def dictate_between_taps_of(self, *keys, sound=None):
        self.vemo.await_status("idle")
        keyboard.strike(*keys)
        self.await_recording()
        say(sound or self.vemo.tone)
        keyboard.strike(*keys)

    def assert_arrives(self, text):
        wait_until(lambda: self.editor.text() == text,
                   lambda: f"the text to arrive instead of {self.editor.text()!r}; {self.vemo.story()}")

    def presses(self):
        """How many times push-to-talk was pressed, once every key event so far has been dealt with."""
        toggles = self.vemo.logged("handleToggleTrigger")
        # The toggle's debounce drops a tap that follows too closely.
        def toggled():
            keyboard.strike("Pause")
            return self.vemo.logged("handleToggleTrigger") > toggles
        wait_until(toggled, lambda: f"the toggle to be heard; {self.vemo.story()}")
        self.vemo.stop()
        return self.vemo.logged("handlePushToTalkDown")


class RecordedSentenceTest(KeysTest):
    """A recorded sentence, heard by the microphone and recognised by the real service."""

    def setUp(self):
        super().setUp()
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.server = self.enterContext(CompanionService(folder))
        self.sentence = sample_as_wav(folder)

    def dictate(self, by, *keys):
        self.vemo.dictate_into(self.editor, SAMPLE_TEXT, lambda: by(*keys, sound=self.sentence))

    def test_holding_right_alt(self):
        self.start()
        self.dictate(self.dictate_holding, "Alt_R")

    def test_tapping_scroll_lock_as_fn(self):
        self.start()
        self.dictate(self.dictate_between_taps_of, "Scroll_Lock")

    def test_tapping_pause_as_fn(self):
        self.start()
        self.dictate(self.dictate_between_taps_of, "Pause")

    def test_tapping_control_space(self):
        self.start(toggleHotkeyChoice="controlSpace", toggleHotkeyLegacyMigrationDone=True)
        self.dictate(self.dictate_between_taps_of, "Control_L", "space")

    def test_holding_a_recorded_chord(self):
        chord = {"keyCode": F8, "modifierFlagsRaw": CONTROL | SHIFT, "isModifierOnly": False}
        self.start(pushToTalkHotkeyChoice="custom", customPushToTalkShortcutData={"data": json.dumps(chord)})
        self.dictate(self.dictate_holding, "Control_L", "Shift_L", "F8")


class HeldAltTest:
    """Alt that was held to speak leaves the document with the focus; the classes below name an editor each."""

    def test_the_text_stands_in_the_document_after_right_alt(self):
        self.start()
        self.vemo.dictate_into(self.editor, SENTENCE, lambda: self.dictate_holding("Alt_R"))

    def test_the_text_stands_in_the_document_after_left_alt(self):
        self.start()
        self.vemo.dictate_into(self.editor, SENTENCE, lambda: self.dictate_holding("Alt_L"))
        with keyboard.Keyboard() as keys:
            wait_until(lambda: keys.keys_down() == set(), "the keys of the paste to be up")
        keyboard.type_text("ab")
        self.assert_arrives(SENTENCE + "ab")


class HeldAltInMousepadTest(HeldAltTest, KeysTest):
    editor_class = editors.Mousepad


class HeldAltInFeatherpadTest(HeldAltTest, KeysTest):
    editor_class = editors.Featherpad


class HeldAltInChromiumTest(HeldAltTest, KeysTest):
    editor_class = editors.Chromium


class TypingTest(KeysTest):
    """What people type all day: combinations reach the application, and start a dictation or not."""

    def test_alt_and_tab_with_the_left_hand_changes_the_window_and_starts_nothing(self):
        other = self.enterContext(editors.Featherpad())
        self.start()
        self.assertEqual(editors.active_window(), self.editor.window)
        def has_changed():
            # Long enough for the window manager to see that Alt is held, unless it stalls; too short for Vemo.
            keyboard.strike("Alt_L", "Tab", milliseconds=100)
            return any(editors.active_window() == other.window for _ in range(LOOKS))
        wait_until(has_changed, "the other window to come to the front")
        self.assertEqual(self.presses(), 0)

    def test_left_alt_held_on_while_windows_go_by_starts_a_dictation(self):
        self.start()
        with self.held("Alt_L"):
            keyboard.strike("Tab")
            self.vemo.await_logged("HotkeyManager: Left Option PTT DOWN (held)")

    def test_left_alt_held_with_shift_starts_nothing(self):
        self.start()
        with keyboard.Keyboard() as keys, self.held("Shift_L"):
            keys.strike("Alt_L", "Tab")
        self.assertEqual(self.presses(), 0)

    def test_alt_and_f4_with_the_left_hand_closes_the_window_and_starts_nothing(self):
        self.start()
        keyboard.strike("Alt_L", "F4")
        wait_until(lambda: self.editor.process.poll() is not None, "the editor to end")
        self.assertEqual(self.presses(), 0)

    def test_left_alt_and_a_letter_opens_a_menu_and_starts_nothing(self):
        self.start()
        keyboard.strike("Alt_L", "f")
        wait_until(self.is_menu_open, "a menu to open")
        keyboard.strike("Escape")
        self.assertEqual(self.presses(), 0)

    def test_right_alt_and_a_letter_opens_a_menu_and_what_it_starts_is_too_short_to_be_sent(self):
        self.start()
        keyboard.strike("Alt_R", "f")
        wait_until(self.is_menu_open, "a menu to open")
        keyboard.strike("Escape")
        self.vemo.await_logged("handlePushToTalkUp: phase=recording")
        wait_until(self.vemo.is_idle, "Vemo to be idle again")
        self.assertEqual(self.server.requests, [])
        self.assertEqual(self.editor.text(), "")

    def test_altgr_on_a_german_keyboard_types_its_characters_and_starts_nothing(self):
        keyboard.use_layout("de")
        self.start()
        for key in ("q", "e", "7", "ssharp"):
            keyboard.strike("ISO_Level3_Shift", key)
        self.assert_arrives("@€{\\")
        with self.held("ISO_Level3_Shift"):
            keyboard.strike("m")
        self.assert_arrives("@€{\\µ")
        self.assertEqual(self.presses(), 0)

    def test_left_alt_dictates_on_a_german_keyboard_as_everywhere(self):
        keyboard.use_layout("de")
        self.start()
        self.vemo.dictate_into(self.editor, SENTENCE, lambda: self.dictate_holding("Alt_L"))

    def test_with_another_key_for_push_to_talk_alt_starts_nothing_however_long_it_is_held(self):
        self.start(pushToTalkHotkeyChoice="rightCommand")
        with self.held("Alt_L"):
            keyboard.strike("Tab")
            self.dictate_between_taps_of("Scroll_Lock")
        wait_until(self.vemo.is_idle, "Vemo to be idle again")
        self.assertEqual(self.presses(), 0)
        with self.held("Super_R"):
            self.vemo.await_logged("handlePushToTalkDown")

    def test_plain_typing_starts_nothing_and_arrives_as_typed(self):
        self.start()
        text = "The quick brown Fox, 100% (really) - and_so on: ~/x {y} | z; A B C"
        keyboard.type_text(text)
        self.assert_arrives(text)
        self.assertEqual(self.presses(), 0)

    def is_menu_open(self):
        """A menu of GTK is a window of the editor that no window manager manages."""
        windows = window_manager.visible_windows("--pid", str(self.editor.process.pid))
        return [window for window in windows if window != self.editor.window]


if __name__ == "__main__":
    unittest.main(verbosity=2)
