"""What is asked of each window for those who hear it read out, or who use no mouse."""

import enum

from windows import Role, State

TEXTS = {Role.TEXT, Role.PASSWORD_TEXT}
PRESSED = {Role.PUSH_BUTTON, Role.PAGE_TAB, Role.CHECK_BOX, Role.RADIO_BUTTON, Role.LIST_ITEM, Role.MENU_ITEM, Role.LINK}
SCROLLED = {Role.DOCUMENT_FRAME}
CONTROLS = TEXTS | PRESSED | SCROLLED
READ = {Role.HEADING, Role.LABEL, Role.ALERT, Role.DIALOG, Role.LIST, Role.POPUP_MENU, Role.PAGE_TAB_LIST, Role.ANIMATION}
PLACES = {Role.FILLER, Role.PANEL}
DISABLED = "Not available now"


class Reading(enum.Enum):
    LEFT_TO_RIGHT = enum.auto()
    RIGHT_TO_LEFT = enum.auto()

    def goes_on(self, before, after):
        """Whether the second item is read after the first: on in its line, in the next column, further down, or in
        it."""
        (x, y, width, height), (next_x, next_y, next_width, next_height) = before.place, after.place
        is_beside = next_x >= x + width if self is Reading.LEFT_TO_RIGHT else next_x + next_width <= x
        is_below = next_y >= y + height / 2
        is_within = x <= next_x and next_x + next_width <= x + width and y <= next_y and next_y + next_height <= y + height
        return is_beside or is_below or is_within


class Walks:
    """For a unittest.TestCase; `reading` is the direction of its windows."""

    reading = Reading.LEFT_TO_RIGHT

    def assert_told(self, window, shown):
        """Each thing has a role that says how it is used, a name, and an action if it can be pressed."""
        told = window.await_that(lambda: [(item, item.actions if self.is_pressed(item) else None) for item in shown()],
                                 "to show something")
        for item, actions in told:
            self.assertIn(item.role, CONTROLS | READ | PLACES, str(item))
            self.assertNotRegex(item.name, "QQuick|undefined|NaN|object")
            if item.role not in PLACES:
                self.assertTrue(item.name.strip(), f"a {item.role.value_nick} at {item.place} has no name")
            if actions is not None:
                self.assertTrue(actions & {"Press", "Toggle"}, f"{item} can't be pressed")
        self.assertLessEqual(sum(item.role == Role.DIALOG for item, _ in told), 1)

    def is_pressed(self, item):
        is_only_read = item.role == Role.LIST_ITEM and State.FOCUSABLE not in item.states
        return item.role in PRESSED and not is_only_read

    def stops(self, items):
        """What Tab is to stop at."""
        return [item for item in items if item.role in CONTROLS and State.FOCUSABLE in item.states
                and DISABLED not in item.accessible.get_description()]

    def walk(self, window, stops):
        """Where the keyboard is after each stroke of Tab, up to where it was at the beginning."""
        first = window.await_that(lambda: (item := window.focused()) and item.role in CONTROLS and item,
                                  "to have the keyboard")
        visited = [first]
        while len(stops) > 1:
            window.strike("Tab")
            last = visited[-1].accessible
            now = window.await_that(lambda: (item := window.focused()) and item.accessible != last and item,
                                    f"to move the keyboard on from {visited[-1]}")
            if now.accessible == first.accessible:
                break
            self.assertNotIn(now.accessible, [item.accessible for item in visited], f"{now} comes twice")
            visited.append(now)
        return visited

    def assert_usable(self, window, shown):
        """shown() is what a person has before them: a page, or the sheet over it."""
        self.assert_told(window, shown)
        window.strike("Tab")
        stops = window.await_that(lambda: self.stops(shown()), "to show where the keyboard can be")
        forward = self.walk(window, stops)
        self.assertCountEqual([str(item) for item in forward], [str(item) for item in stops])
        self.assert_read_in_order([next(stop for stop in stops if stop.accessible == item.accessible) for item in forward])
        for before in forward[:-4:-1]:
            window.strike("Shift_L", "Tab")
            window.await_that(lambda: (item := window.focused()) and item.accessible == before.accessible,
                              f"to move the keyboard back to {before}")

    def assert_read_in_order(self, stops):
        """Only from the last of all does the keyboard go back, to the first."""
        back = [f"from {before} at {before.place} to {after} at {after.place}"
                for before, after in zip(stops, stops[1:] + stops[:1])
                if before is not after and not self.reading.goes_on(before, after)]
        self.assertLessEqual(len(back), 1, "the keyboard goes back " + ", and ".join(back))

    def assert_page_usable(self, window):
        self.assert_usable(window, window.shown)

    def assert_sheet_usable(self, window, button, title):
        """Opens it by the button, and leaves it."""
        window.click(button)
        self.await_sheet(window, title)
        self.assert_usable(window, window.sheet)
        self.leave(window, title, button)

    def assert_menu_usable(self, window, button, name, choice):
        """Opens it, walks it by its own keys, and leaves it."""
        def is_open():
            # A press that stops a page which is still rolling out is none on the button.
            if not window.find(choice, Role.MENU_ITEM):
                window.click(button)
            return any(window.find(choice, Role.MENU_ITEM) for _ in range(8))
        window.await_that(is_open, f"to open the menu of “{button}”")
        self.assert_told(window, window.shown)
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
        self.await_keyboard(window, button)

    def await_sheet(self, window, title):
        window.await_that(lambda: any(item.role == Role.DIALOG and item.name == title for item in window.shown()),
                          f"to show the sheet “{title}”")

    def leave(self, window, title, button):
        """By Escape, which gives the keyboard back to where it was before."""
        window.strike("Escape")
        window.await_that(lambda: not any(item.role == Role.DIALOG for item in window.shown()), f"to close “{title}”")
        self.await_keyboard(window, button)

    def await_keyboard(self, window, name):
        window.await_that(lambda: (item := window.focused()) and item.name == name, f"to have the keyboard at “{name}”")

    def assert_arrow_leads(self, window, arrow, before, after):
        """From one of several, of which one is chosen, to another, which it chooses."""
        window.click(before)
        self.await_keyboard(window, before)
        window.strike(arrow)
        window.await_that(lambda: (item := window.focused()) and item.name == after
                          and item.states & {State.SELECTED, State.CHECKED}, f"to choose “{after}” by {arrow}")

    def assert_tabs(self, window, pages):
        """Each page by its tab, of which the one in front says so."""
        for tab, content in pages.items():
            window.click(tab, Role.PAGE_TAB)
            window.await_item(content)
            window.await_that(lambda: [item.name for item in window.shown() if item.role == Role.PAGE_TAB
                                       and State.SELECTED in item.states] == [tab], f"to say that “{tab}” is in front")
            self.assert_page_usable(window)
