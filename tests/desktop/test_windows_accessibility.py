#!/usr/bin/python3
"""Both windows of the running program as a screen reader tells them, and as somebody has them who uses no mouse."""

import json
import pathlib
import subprocess
import tempfile
import unittest

import keyboard
from account_service import CLIENT, AccountService
from browsers import NotingBrowser
from vemo_program import Vemo, clear_token, program
from virtual_desktop import wait_until
from windows import Role, State, main_window, settings_window

TEXTS = {Role.TEXT, Role.PASSWORD_TEXT}
PRESSED = {Role.PUSH_BUTTON, Role.PAGE_TAB, Role.CHECK_BOX, Role.RADIO_BUTTON, Role.LIST_ITEM, Role.MENU_ITEM, Role.LINK}
CONTROLS = TEXTS | PRESSED
READ = {Role.HEADING, Role.LABEL, Role.ALERT, Role.DIALOG, Role.LIST, Role.POPUP_MENU, Role.PAGE_TAB_LIST, Role.ANIMATION}
PLACES = {Role.FILLER, Role.PANEL}
DISABLED = "Not available now"
RECORDING = "Press any key or combination on your keyboard…"


class AccessibilityTest(unittest.TestCase):
    def setUp(self):
        clear_token()
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.service = self.enterContext(AccountService(self.folder))
        self.browser = self.enterContext(NotingBrowser())
        self.vemo = self.enterContext(Vemo(self.service.address, self.prepare))
        self.main = main_window(self.vemo)

    def prepare(self, vemo):
        (vemo.configuration / "vemo.conf").write_text(
            f"apiBaseURL={self.service.address}\ngoogleAuthorizationEndpoint={self.service.provider}authorize\n"
            f"googleTokenEndpoint={self.service.provider}token\ngoogleClientId={CLIENT}\n")
        self.browser.install(vemo)

    def sign_in(self):
        self.vemo.command("sign-in")
        redirect = self.service.press(self.browser.page())
        subprocess.run([program("vemo"), "open", redirect], env=self.vemo.environment, check=True, timeout=60)
        self.main.await_item("Start Dictating Now")

    def settings(self):
        return json.loads((self.vemo.configuration / "settings.json").read_text())

    # What is asked of everything that is shown

    def assert_told(self, items):
        """Each thing has a role that says how it is used, a name, and an action if it can be pressed."""
        for item in items:
            self.assertIn(item.role, CONTROLS | READ | PLACES, str(item))
            self.assertNotRegex(item.name, "QQuick|undefined|NaN|object")
            if item.role not in PLACES:
                self.assertTrue(item.name.strip(), f"a {item.role.value_nick} at {item.place} has no name")
            if item.role in PRESSED:
                self.assertTrue(item.actions & {"Press", "Toggle"}, f"{item} can't be pressed")
        self.assertLessEqual(sum(item.role == Role.DIALOG for item in items), 1)

    def stops(self, items):
        """What Tab is to stop at."""
        return [item for item in items if item.role in CONTROLS and State.FOCUSABLE in item.states
                and DISABLED not in item.accessible.get_description()]

    def walk(self, window):
        """Where the keyboard is after each stroke of Tab, up to where it was at the beginning."""
        first = window.await_that(window.focused, "to have the keyboard")
        visited = [first]
        while True:
            window.strike("Tab")
            last = visited[-1].accessible
            now = window.await_that(lambda: (item := window.focused()) and item.accessible != last and item,
                                    f"to move the keyboard on from {visited[-1]}")
            if now.accessible == first.accessible:
                return visited
            self.assertNotIn(now.accessible, [item.accessible for item in visited], f"{now} comes twice")
            visited.append(now)

    def assert_usable(self, window, shown):
        """shown() is what a person has before them: a page, or the sheet over it."""
        self.assert_told(shown())
        window.strike("Tab")
        stops = self.stops(shown())
        window.await_that(lambda: (item := window.focused()) and item.role in CONTROLS, "to have the keyboard")
        forward = self.walk(window)
        self.assertCountEqual([str(item) for item in forward], [str(item) for item in stops])
        for before in forward[:-4:-1]:
            window.strike("Shift_L", "Tab")
            window.await_that(lambda: (item := window.focused()) and item.accessible == before.accessible,
                              f"to move the keyboard back to {before}")

    def assert_page_usable(self, window):
        self.assert_usable(window, window.shown)

    def assert_sheet_usable(self, window, title):
        self.await_sheet(window, title)
        self.assert_usable(window, window.sheet)
        self.leave(window, title)

    def assert_menu_usable(self, window, button, name, choice):
        """Opens it, walks it by its own keys, and leaves it."""
        def is_open():
            # A press that stops a page which is still rolling out is none on the button.
            window.click(button)
            return any(window.find(choice, Role.MENU_ITEM) for _ in range(8))
        window.await_that(is_open, f"to open the menu of “{button}”")
        self.assert_told(window.shown())
        self.assertIn((Role.MENU_ITEM, choice), [(item.role, item.name) for item in window.shown()])
        self.assertTrue(any(item.role in (Role.DIALOG, Role.POPUP_MENU) and item.name == name for item in window.shown()))
        window.strike("Down")
        before = window.await_that(lambda: (item := window.focused()) and item.role == Role.MENU_ITEM and item,
                                   "to have the keyboard in the menu")
        window.strike("Down")
        window.await_that(lambda: (item := window.focused()) and item.accessible != before.accessible, "to go down")
        window.strike("Up")
        window.await_that(lambda: (item := window.focused()) and item.accessible == before.accessible, "to go up")
        window.strike("Escape")
        window.await_gone(choice)

    def await_sheet(self, window, title):
        window.await_that(lambda: any(item.role == Role.DIALOG and item.name == title for item in window.shown()),
                          f"to show the sheet “{title}”")

    def leave(self, window, title):
        window.strike("Escape")
        window.await_that(lambda: not any(item.role == Role.DIALOG for item in window.shown()), f"to close “{title}”")

    # The walks

    def test_somebody_who_is_not_signed_in(self):
        self.assert_page_usable(self.main)
        self.assertEqual([item.name for item in self.main.shown() if item.role == Role.LINK], ["Terms", "Privacy Policy"])
        self.assert_menu_usable(self.main, "Vemo menu", "Vemo menu", "Quit Vemo")

    def test_the_main_window(self):
        self.sign_in()
        self.assert_tabs(self.main, {"Home": "Start Dictating Now", "Stats": "Refresh", "Dictionary": "Add New",
                                     "Shortcuts": "Add New"})
        self.main.click("Home")
        self.assert_menu_usable(self.main, "Language: English", "Language: English", "   Hindi (हिन्दी)")
        self.assert_menu_usable(self.main, "Vemo menu", "Vemo menu", "Quit Vemo")
        self.main.click("Connect…")
        self.assert_sheet_usable(self.main, "Connect Slack Workspace")
        self.add_a_word()
        self.assert_page_usable(self.main)
        self.main.click("Shortcuts")
        self.main.click("Add New")
        self.assert_sheet_usable(self.main, "Add Shortcut")

    def add_a_word(self):
        self.main.click("Dictionary")
        self.main.click("Add New")
        self.await_sheet(self.main, "Add Word to Dictionary")
        add = self.main.find("Add to Dictionary")
        self.assertEqual(add.accessible.get_description(), DISABLED)
        keyboard.type_text("brelmo")
        self.main.strike("Tab")
        keyboard.type_text("Brelmox")
        self.main.await_that(lambda: not self.main.find("Add to Dictionary").accessible.get_description(), "to offer it")
        self.main.strike("Return")
        self.main.await_item("brelmo, written as Brelmox", Role.LIST_ITEM)

    def test_the_settings_window(self):
        self.sign_in()
        window = settings_window(self.main)
        self.assert_tabs(window, {"Account": "Save", "System": "Privacy"})
        self.assert_menu_usable(window, "English (Translit)", "Script / Output Mode", "   Mixed (Codemix)")
        self.assert_switch_tells_its_state(window, "Dictation & notification sounds", "dictationSounds")
        self.assert_one_colour_is_chosen(window)
        window.click("Record a shortcut: Start / Stop mic")
        self.assert_recorder_usable(window)
        window.click("Choose Folder…")
        self.assert_sheet_usable(window, "Choose Folder…")
        window.click("Account", Role.PAGE_TAB)
        window.click("Delete Account…")
        self.assert_sheet_usable(window, "Delete your Vemo account?")

    def assert_tabs(self, window, pages):
        """Each page by its tab, of which the one in front says so."""
        for tab, content in pages.items():
            window.click(tab, Role.PAGE_TAB)
            window.await_item(content)
            window.await_that(lambda: [item.name for item in window.shown() if item.role == Role.PAGE_TAB
                                       and State.SELECTED in item.states] == [tab], f"to say that “{tab}” is in front")
            self.assert_page_usable(window)

    def assert_switch_tells_its_state(self, window, name, setting):
        for _ in range(2):
            switch = window.find(name, Role.CHECK_BOX)
            was_on = State.CHECKED in switch.states
            switch.act("Press")
            wait_until(lambda: self.settings().get(setting) == (not was_on), f"the setting {setting} to change")
            window.await_that(lambda: (State.CHECKED in window.find(name, Role.CHECK_BOX).states) != was_on,
                              f"to tell the new state of “{name}”")

    def assert_one_colour_is_chosen(self, window):
        def chosen():
            return [item.name for item in window.shown() if item.role == Role.RADIO_BUTTON and State.CHECKED in item.states]
        self.assertEqual(len(chosen()), 1)
        before = chosen()
        other = next(item for item in window.shown() if item.role == Role.RADIO_BUTTON and item.name not in before)
        other.act("Press")
        window.await_that(lambda: chosen() == [other.name], f"to have “{other.name}” chosen")

    def assert_recorder_usable(self, window):
        title = "Record Start / Stop Shortcut"
        self.await_sheet(window, title)
        self.assert_told(window.sheet())
        window.await_that(lambda: (item := window.focused()) and item.name == RECORDING, "to await a shortcut")
        buttons = [item.name for item in window.sheet() if item.role == Role.PUSH_BUTTON]
        for name in buttons:
            window.strike("Tab")
            window.await_that(lambda: (item := window.focused()) and item.name == name, f"to have the keyboard at “{name}”")
        self.assertEqual(buttons[-3:], ["Reset to Default", "Cancel", "Save"])
        self.leave(window, title)


if __name__ == "__main__":
    unittest.main(verbosity=2)
