#!/usr/bin/python3
"""Both windows over fakes, in states that take a while to come to and in a language that is read from right to left,
for those who hear them read out or use no mouse."""

import unittest

from accessibility import Reading, Walks
from offline import Offline
from windows import Role

UNDER_WAY = ("signing-in", "home-recording", "dictionary-loading", "sheet-slack-connecting", "update-waiting",
             "settings-signing-in", "settings-saving", "settings-deleting", "settings-refreshing",
             "settings-project-scanning")
FAILED = ("sign-in-failed", "sheet-slack-failed", "settings-sign-in-failed", "settings-folder-missing")
EMPTY_OR_FULL = ("stats-empty", "dictionary-empty", "shortcuts-empty", "dictionary-5000", "sheet-word-long",
                 "settings-long-names")

PAGES = ("signed-out", "home-full", "home-permissions", "stats-full", "dictionary-full", "shortcuts-full",
         "settings-account", "settings-signed-out", "settings-system", "settings-no-permissions")
SHEETS = ("sheet-word", "sheet-shortcut", "sheet-slack", "update-notes", "settings-folder", "settings-not-deleted")


class StatesTest(Walks, unittest.TestCase):
    def test_what_is_under_way_leaves_the_rest_in_reach_and_says_what_is_not(self):
        self.assert_states_usable(UNDER_WAY)

    def test_what_has_failed_is_told_and_can_be_tried_again(self):
        self.assert_states_usable(FAILED)

    def test_nothing_and_much_are_both_walked(self):
        self.assert_states_usable(EMPTY_OR_FULL)

    def assert_states_usable(self, states):
        for state in states:
            with self.subTest(state), Offline(state) as window:
                items = window.await_that(window.shown, "to show something")
                has_sheet = any(item.role == Role.DIALOG for item in items)
                self.assert_usable(window, window.sheet if has_sheet else window.shown)


class RightToLeftTest(Walks, unittest.TestCase):
    reading = Reading.RIGHT_TO_LEFT

    def show(self, state):
        return Offline(state, "--right-to-left")

    def test_each_page_is_walked_in_the_order_in_which_it_is_read(self):
        for state in PAGES:
            with self.subTest(state), self.show(state) as window:
                self.assert_page_usable(window)

    def test_each_sheet_is_walked_in_the_order_in_which_it_is_read_and_left_by_escape(self):
        for state in SHEETS:
            with self.subTest(state), self.show(state) as window:
                window.await_that(window.sheet, "to show a sheet")
                self.assert_usable(window, window.sheet)
                window.strike("Escape")
                window.await_that(lambda: not window.sheet(), "to close the sheet")

    def test_the_tabs_stand_where_reading_begins(self):
        with self.show("home-empty") as window:
            tab, page = window.await_item("Home", Role.PAGE_TAB), window.await_item("Start Dictating Now")
            self.assertGreater(tab.place[0], page.place[0] + page.place[2])

    def test_the_arrows_lead_where_they_point(self):
        with self.show("settings-account") as window:
            self.assert_arrow_leads(window, "Left", "Account", "System")
            self.assert_arrow_leads(window, "Right", "System", "Account")
            window.click("System")
            colours = [item.name for item in window.await_that(
                lambda: [item for item in window.shown() if item.role == Role.RADIO_BUTTON], "to show the colours")]
            self.assert_arrow_leads(window, "Left", colours[0], colours[1])
            self.assert_arrow_leads(window, "Right", colours[1], colours[0])


if __name__ == "__main__":
    unittest.main(verbosity=2)
