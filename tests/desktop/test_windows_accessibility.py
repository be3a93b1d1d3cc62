#!/usr/bin/python3
"""Both windows of the running program as a screen reader tells them, and as somebody has them who uses no mouse."""

import pathlib
import tempfile
import unittest

import keyboard
from accessibility import DISABLED, Walks
from account_service import CLIENT, AccountService
from browsers import NotingBrowser
from vemo_program import Vemo, clear_token
from virtual_desktop import wait_until
from windows import Role, State, Window, main_window, settings_window

RECORDING = "Press any key or combination on your keyboard…"


class WindowsTest(Walks, unittest.TestCase):
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
        self.vemo.open(redirect)
        self.main.await_item("Start Dictating Now")


class NobodyTest(WindowsTest):
    def test_somebody_who_is_not_signed_in(self):
        self.assert_page_usable(self.main)
        self.assertEqual([item.name for item in self.main.shown() if item.role == Role.LINK], ["Terms", "Privacy Policy"])
        self.assert_menu_usable(self.main, "Vemo menu", "Vemo menu", "Quit Vemo")
        self.main.click("Vemo menu")
        self.main.click("Settings")
        window = Window(self.vemo, "Settings")
        self.assert_tabs(window, {"Account": "Sign In with Google", "System": "Privacy"})
        self.assertFalse(window.find("Sign Out"))
        self.assertTrue(window.find("Sign In with Google", Role.PUSH_BUTTON))


class MainWindowTest(WindowsTest):
    def test_the_main_window(self):
        self.sign_in()
        self.assert_tabs(self.main, {"Home": "Start Dictating Now", "Stats": "Refresh", "Dictionary": "Add New",
                                     "Shortcuts": "Add New"})
        self.main.click("Home")
        self.assert_menu_usable(self.main, "Language: English", "Language: English", "   Hindi (हिन्दी)")
        self.assert_menu_usable(self.main, "Vemo menu", "Vemo menu", "Quit Vemo")
        self.assert_sheet_usable(self.main, "Connect…", "Connect Slack Workspace")
        self.add_a_word()
        self.assert_page_usable(self.main)
        self.main.click("Shortcuts")
        self.assert_sheet_usable(self.main, "Add New", "Add Shortcut")

    def add_a_word(self):
        self.main.click("Dictionary")
        self.main.click("Add New")
        self.await_sheet(self.main, "Add Word to Dictionary")
        add = self.main.await_item("Add to Dictionary")
        self.assertEqual(add.accessible.get_description(), DISABLED)
        keyboard.type_text("brelmo")
        self.main.strike("Tab")
        keyboard.type_text("Brelmox")
        self.main.await_that(lambda: (item := self.main.find("Add to Dictionary"))
                             and not item.accessible.get_description(), "to offer it")
        self.main.strike("Return")
        self.main.await_item("brelmo, written as Brelmox", Role.LIST_ITEM)


class SettingsWindowTest(WindowsTest):
    def test_the_settings_window(self):
        self.sign_in()
        window = settings_window(self.main)
        self.assert_tabs(window, {"Account": "Save", "System": "Privacy"})
        self.assert_menu_usable(window, "English (Translit)", "Script / Output Mode", "   Mixed (Codemix)")
        self.assert_switch_tells_its_state(window, "Dictation & notification sounds", "dictationSounds")
        self.assert_one_colour_is_chosen(window)
        self.assert_arrow_leads(window, "Left", "System", "Account")
        self.assert_arrow_leads(window, "Right", "Account", "System")
        self.assert_recorder_usable(window, "Record a shortcut: Start / Stop mic", "Record Start / Stop Shortcut")
        self.assert_sheet_usable(window, "Choose Folder…", "Choose Folder…")
        self.assert_sheet_usable(window, "Connect…", "Connect Slack Workspace")
        window.click("Account", Role.PAGE_TAB)
        self.assert_sheet_usable(window, "Delete Account…", "Delete your Vemo account?")

    def assert_switch_tells_its_state(self, window, name, setting):
        for _ in range(2):
            switch = window.await_item(name, Role.CHECK_BOX)
            was_on = State.CHECKED in switch.states
            switch.act("Press")
            wait_until(lambda: self.vemo.settings().get(setting) == (not was_on), f"the setting {setting} to change")
            window.await_that(lambda: (item := window.find(name, Role.CHECK_BOX))
                              and (State.CHECKED in item.states) != was_on, f"to tell the new state of “{name}”")

    def assert_one_colour_is_chosen(self, window):
        def chosen():
            return [item.name for item in window.shown() if item.role == Role.RADIO_BUTTON and State.CHECKED in item.states]
        before = window.await_that(chosen, "to have a colour chosen")
        self.assertEqual(len(before), 1)
        other = next(item for item in window.shown() if item.role == Role.RADIO_BUTTON and item.name not in before)
        other.act("Press")
        window.await_that(lambda: chosen() == [other.name], f"to have “{other.name}” chosen")

    def assert_recorder_usable(self, window, button, title):
        window.click(button)
        self.await_sheet(window, title)
        self.assert_told(window, window.sheet)
        window.await_that(lambda: (item := window.focused()) and item.name == RECORDING, "to await a shortcut")
        buttons = [item.name for item in window.sheet() if item.role == Role.PUSH_BUTTON]
        for name in buttons:
            window.strike("Tab")
            window.await_that(lambda: (item := window.focused()) and item.name == name, f"to have the keyboard at “{name}”")
        self.assertEqual(buttons[-3:], ["Reset to Default", "Cancel", "Save"])
        self.leave(window, title, button)


class AccountTest(WindowsTest):
    def test_the_end_of_an_account(self):
        self.sign_in()
        window = settings_window(self.main)
        window.click("Account", Role.PAGE_TAB)
        self.delete_account(window)
        self.assert_alert_usable(window, "Your account was deleted")
        window.strike("Escape")
        wait_until(lambda: not window.identifier(), "the settings to close")
        self.main.await_that(self.main.is_in_front, "to be in front")
        self.assert_page_usable(self.main)

        self.sign_in()
        window = settings_window(self.main)
        window.click("Account", Role.PAGE_TAB)
        self.service.stop()
        self.delete_account(window)
        self.assert_alert_usable(window, "Your account wasn't deleted")
        self.leave(window, "Your account wasn't deleted", "Delete Account…")

    def assert_alert_usable(self, window, title):
        self.await_sheet(window, title)
        self.assert_usable(window, window.sheet)
        self.assertEqual([item.name for item in self.stops(window.sheet())], ["OK"])
        self.assertEqual([item.role for item in window.sheet() if item.role == Role.ALERT], [Role.ALERT])

    def delete_account(self, window):
        """By the keyboard."""
        window.click("Delete Account…")
        self.await_sheet(window, "Delete your Vemo account?")
        self.await_keyboard(window, "Cancel")
        window.strike("Tab")
        self.await_keyboard(window, "Delete Account")
        window.strike("Return")



if __name__ == "__main__":
    unittest.main(verbosity=2)
