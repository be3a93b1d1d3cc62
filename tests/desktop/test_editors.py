#!/usr/bin/python3
"""Dictation by the whole real path into programs that nobody here wrote."""

import os
import unittest

import editors
import keyboard
from clipboard import ClipboardOwner, Copier, contents
from dictation_server import DictationServer, transcription
from vemo_program import Vemo, say, store_token, with_settings
from virtual_desktop import wait_until

SENTENCE = "A sentence for the clipboard to give way to."
MOST_COPIES = 5
PNG_HEADER = b"\x89PNG\r\n\x1a\n"


class IntoAnEditor:
    """The promises that hold in every editor; the classes below name one each."""

    layouts = (["ru"], ["ru,us"], ["gr"], ["us", "-variant", "dvorak"], ["de", "-variant", "neo"])

    @classmethod
    def setUpClass(cls):
        store_token("token-of-the-desktop-tests")

    def setUp(self):
        self.server = self.enterContext(DictationServer())
        # With a key for talking that no test holds: an Alt that is held would begin a dictation of its own.
        self.vemo = self.enterContext(Vemo(self.server.address, with_settings(pushToTalkHotkeyChoice="rightCommand")))

    def open_editor(self):
        return self.enterContext(self.editor())

    def dictate(self, editor, text, dictate=None):
        self.server.answers = [transcription(text)]
        self.vemo.dictate_into(editor, text, dictate)
        self.assertEqual(editors.active_window(), editor.window, "the editor has lost the focus")

    def assert_clipboard_comes_back(self, content):
        editor = self.open_editor()
        for _ in range(MOST_COPIES):
            with ClipboardOwner(content) as owner:
                self.dictate(editor, SENTENCE)
                self.vemo.await_dictated()
                wait_until(owner.has_lost_it, "the clipboard to have had another owner")
            self.assertEqual(editor.text(), SENTENCE)
            if len(contents()) >= len(content):
                break
            # On a machine that stalls, the owner may not tell Vemo in time what there is.
            editor.empty()
        self.assertEqual([name for name, _ in contents()], [name for name, _ in content])
        for (name, data), (_, expected) in zip(contents(), content):
            self.assertTrue(data == expected, f"{name} has changed: {data[:80]!r}…")

    # The text

    def test_the_text_arrives_exactly_whatever_it_is_written_in(self):
        editor = self.open_editor()
        self.dictate(editor, "Hello 👩‍👩‍👧‍👦 🇮🇳 👍🏽, שלום עולם, مرحبا, नमस्ते, e\u0301 o\u0308, 日本語 𝄞 — “done” 100%")

    def test_a_megabyte_arrives_whole(self):
        editor = self.open_editor()
        self.dictate(editor, "\n".join(f"line {number:07} of a very long dictation" for number in range(26_215)))

    def test_two_dictations_follow_each_other(self):
        def dictate_both():
            self.server.answers = [transcription("The first."), transcription("The second.")]
            self.vemo.dictate()
            self.vemo.dictate()
        self.vemo.dictate_into(self.open_editor(), "The first.The second.", dictate_both)

    def test_the_text_arrives_whatever_the_keyboard_layout(self):
        self.addCleanup(keyboard.use_layout, "us")
        for layout in self.layouts:
            with self.subTest(layout=layout):
                keyboard.use_layout(*layout)
                with self.editor() as editor:
                    self.dictate(editor, f"By {layout[-1]}.")

    # The clipboard

    def test_a_copied_text_comes_back(self):
        self.assert_clipboard_comes_back([("UTF8_STRING", "Grüße 👋 from before".encode())])

    def test_a_copied_image_comes_back(self):
        self.assert_clipboard_comes_back([("image/png", PNG_HEADER + os.urandom(3_000_000))])

    def test_copied_files_come_back(self):
        self.assert_clipboard_comes_back([
            ("x-special/gnome-copied-files", b"copy\nfile:///tmp/a\nfile:///tmp/b%20c"),
            ("text/uri-list", b"file:///tmp/a\r\nfile:///tmp/b%20c\r\n"),
        ])

    def test_several_formats_come_back_in_order_each_byte_for_byte(self):
        self.assert_clipboard_comes_back([
            ("text/html", b"<b>bold</b>\0after a zero"),
            ("UTF8_STRING", b"bold"),
            ("image/bmp", os.urandom(400_000)),
            ("application/x-empty", b""),
            ("application/x-every-byte", bytes(range(256))),
        ])

    def test_an_empty_clipboard_is_empty_again(self):
        editor = self.open_editor()
        wait_until(lambda: contents() == [], "nobody to own the clipboard")
        self.dictate(editor, SENTENCE)
        self.vemo.await_dictated()
        wait_until(lambda: contents() == [], "the clipboard to be empty")

    def test_a_copy_made_within_the_wait_survives(self):
        editor = self.open_editor()
        # On a machine that stalls, a copy may miss the wait; it then tells nothing, and the next may not.
        for attempt in range(1, MOST_COPIES + 1):
            if self.copy_after_dictating(editor):
                break
            editor.empty()
        else:
            self.fail(f"none of {MOST_COPIES} copies came within the wait")
        self.assertEqual(editor.text(), SENTENCE)

    def copy_after_dictating(self, editor):
        """Copies as soon as the sentence has arrived; whether Vemo's wait wasn't over by then."""
        in_time, too_late = "inject: pasteboard changed since our write", "inject: restored original pasteboard"
        times_in_time, times_too_late = self.vemo.logged(in_time), self.vemo.logged(too_late)
        copied = [("UTF8_STRING", b"copied meanwhile")]
        with ClipboardOwner([("UTF8_STRING", b"copied before")]), Copier(copied) as copier:
            self.server.answers = [transcription(SENTENCE)]
            self.vemo.start()
            say(self.vemo.tone)
            self.vemo.call("stop")
            def is_over():
                return self.vemo.logged(in_time) > times_in_time or self.vemo.logged(too_late) > times_too_late
            wait_until(lambda: editor.text() == SENTENCE or is_over(), lambda: f"the text to arrive; {self.vemo.story()}")
            copier.copy()
            wait_until(is_over, lambda: f"the wait to be over; {self.vemo.story()}")
            self.assertEqual(contents(), copied)
        return self.vemo.logged(in_time) > times_in_time

    # Keys that are down

    def assert_pastes_while_held(self, key):
        editor = self.open_editor()
        with keyboard.Keyboard() as keys:
            def dictate_holding():
                before, _ = self.vemo.pastes()
                keyboard.press(key)
                try:
                    self.vemo.dictate()
                    wait_until(lambda: editor.text() == SENTENCE or self.vemo.has_dictated(before),
                               lambda: f"the text to arrive; {self.vemo.story()}")
                    wait_until(lambda: keys.keys_down() == {keys.code(key)}, "the held key, and no other, to count again")
                    wait_until(editor.has_focus, "the text to have the focus under the held key")
                finally:
                    keyboard.release(key)
            self.dictate(editor, SENTENCE, dictate_holding)
            self.assertTrue(self.vemo.logged("inject: modifiers cleared cleanly=false"))
            self.assertFalse(self.vemo.logged("inject: modifiers cleared cleanly=true"))
            wait_until(lambda: keys.keys_down() == set(), "every key to be up")
            self.assertEqual(keys.modifiers(), 0)
        # What is typed afterwards arrives as typed: nothing is stuck.
        keyboard.type_text("ab")
        wait_until(lambda: editor.text() == SENTENCE + "ab", "typed letters to arrive")

    def test_pasting_works_while_alt_is_held(self):
        self.assert_pastes_while_held("Alt_L")

    def test_pasting_works_while_shift_is_held(self):
        self.assert_pastes_while_held("Shift_L")

    def test_pasting_works_while_super_is_held(self):
        self.assert_pastes_while_held("Super_L")

    def test_pasting_leaves_no_key_down(self):
        editor = self.open_editor()
        self.dictate(editor, SENTENCE)
        with keyboard.Keyboard() as keys:
            wait_until(lambda: keys.keys_down() == set(), "every key to be up")
            self.assertEqual(keys.modifiers(), 0)


class MousepadTest(IntoAnEditor, unittest.TestCase):
    editor = editors.Mousepad


class FeatherpadTest(IntoAnEditor, unittest.TestCase):
    editor = editors.Featherpad


class XtermTest(IntoAnEditor, unittest.TestCase):
    editor = editors.Xterm


class ChromiumTest(IntoAnEditor, unittest.TestCase):
    editor = editors.Chromium
    # Chromium looks at a changed key map only when events come from another keyboard than before. A person's
    # own keyboard sees to that; here there is one keyboard in all, so a key lent to a layout without a Latin V
    # goes unnoticed.
    layouts = tuple(layout for layout in IntoAnEditor.layouts if layout not in (["ru"], ["gr"]))

    def test_a_zero_character_loses_nothing_of_the_rest(self):
        class WithoutZeros(editors.Chromium):
            def text(self):
                return super().text().replace("\0", "")
        self.server.answers = [transcription("before\0after")]
        self.vemo.dictate_into(self.enterContext(WithoutZeros()), "beforeafter")


if __name__ == "__main__":
    unittest.main(verbosity=2)
