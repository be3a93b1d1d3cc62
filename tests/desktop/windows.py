"""Vemo's own windows as a person has them: found by what they tell a screen reader, used by mouse and keyboard.

Runs inside the virtual desktop. What is shown is asked for anew each time: nothing here remembers an item for longer
than one click.
"""

import dataclasses
import subprocess

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import keyboard  # noqa: E402
import window_manager  # noqa: E402
from editors import active_window, applications_of  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402

Role, State = Atspi.Role, Atspi.StateType
WHEEL = {"up": "4", "down": "5"}
# What may scroll, and so hide what is in it under what is around it.
VIEWS = {Role.FRAME, Role.PANEL, Role.LIST, Role.POPUP_MENU}
MARGIN = 4


@dataclasses.dataclass
class Item:
    """One thing in a window, as it was told to a screen reader."""

    accessible: Atspi.Accessible
    role: Atspi.Role
    name: str
    states: frozenset
    place: tuple  # x, y, width, height on the screen
    depth: int
    view: tuple  # left, top, right, bottom of what shows it: the window, or a page in it that scrolls

    @property
    def middle(self):
        x, y, width, height = self.place
        return x + width // 2, y + height // 2

    @property
    def is_showing(self):
        return State.SHOWING in self.states

    @property
    def is_in_view(self):
        """Whether a click on its middle would be one on it."""
        (x, y), (left, top, right, bottom) = self.middle, self.view
        return self.is_showing and left <= x < right and top + MARGIN <= y < bottom - MARGIN

    @property
    def has_focus(self):
        return State.FOCUSED in self.states

    @property
    def actions(self):
        if "Action" not in self.accessible.get_interfaces():
            return set()
        return {Atspi.Action.get_action_name(self.accessible, index)
                for index in range(Atspi.Action.get_n_actions(self.accessible))}

    def act(self, name):
        """What a screen reader does in a person's stead."""
        for index in range(Atspi.Action.get_n_actions(self.accessible)):
            if Atspi.Action.get_action_name(self.accessible, index) == name:
                Atspi.Action.do_action(self.accessible, index)
                return
        raise AssertionError(f"{self} can't be asked to {name}")

    def __str__(self):
        return f"{self.role.value_nick} “{self.name}”"


def accessibles_below(accessible, depth=0):
    """Everything below with its depth, from top to bottom as it is told."""
    # No main loop runs here to hear of changes.
    accessible.clear_cache()
    yield accessible, depth
    for index in range(accessible.get_child_count()):
        child = accessible.get_child_at_index(index)
        if child:
            yield from accessibles_below(child, depth + 1)


def item(accessible, depth, view=()):
    place = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
    role, name = accessible.get_role(), accessible.get_name()
    if role == Role.PASSWORD_TEXT:
        # Qt withholds the name of what is secret.
        name = name or accessible.get_description()
    return Item(accessible, role, name, frozenset(accessible.get_state_set().get_states()),
                (place.x, place.y, place.width, place.height), depth, view)


def items_below(accessible):
    items, views = [], []
    for found, depth in accessibles_below(accessible):
        view = views[depth - 1] if depth else ()
        below = item(found, depth, view)
        items.append(below)
        views[depth:] = [part_in_view(below) if below.role in VIEWS else view]
    return items


def part_in_view(item):
    x, y, width, height = item.place
    if not item.view:
        return x, y, x + width, y + height
    left, top, right, bottom = item.view
    return max(x, left), max(y, top), min(x + width, right), min(y + height, bottom)


def await_steady(condition, what):
    """As wait_until; a condition doesn't hold while what it looks at is just changing."""
    def holds():
        try:
            return condition()
        except GLib.Error:
            return None
    return wait_until(holds, what)


class Window:
    """`window = main_window(vemo); window.click("Settings")`"""

    def __init__(self, vemo, title):
        self.vemo = vemo
        self.title = title
        self.await_that(self._frame, "to be there")
        self.await_that(self.is_in_front, "to be in front")

    def await_that(self, condition, what):
        return await_steady(condition, lambda: f"the window “{self.title}” {what}; it shows {self.story()}; "
                                               f"{self.vemo.story()}")

    def story(self):
        return ", ".join(str(item) for item in self.items() if item.is_showing and item.name)

    # What it shows

    def _frame(self):
        for application in applications_of(self.vemo.process):
            for child in range(application.get_child_count()):
                frame = application.get_child_at_index(child)
                if frame and frame.get_role() == Role.FRAME and frame.get_name() == self.title:
                    return frame
        return None

    def items(self):
        """Everything in it, read anew as long as it changes meanwhile; nothing while it isn't there."""
        def read():
            frame = self._frame()
            return [items_below(frame)[1:] if frame else []]
        return await_steady(read, f"the window “{self.title}” to be read")[0]

    def shown(self):
        """All that isn't hidden; also what has to be scrolled into sight."""
        return [item for item in self.items() if item.place[2] > 0]

    def find(self, name, role=None):
        """The last item of that name that is not hidden, as sheets and menus come after what they cover."""
        found = [item for item in self.shown() if item.name == name and (role is None or item.role == role)]
        return found[-1] if found else None

    def shows(self, name):
        found = self.find(name)
        return bool(found and found.is_showing)

    def await_item(self, name, role=None):
        return self.await_that(lambda: self.find(name, role), f"to show “{name}”")

    def await_gone(self, name):
        self.await_that(lambda: not self.shows(name), f"to show “{name}” no longer")

    def focused(self):
        """The innermost item that has the keyboard; None when the window hasn't."""
        frame = self._frame()
        found = [found for found in accessibles_below(frame)
                 if found[0].get_state_set().contains(State.FOCUSED)] if frame else []
        return item(*max(found, key=lambda found: found[1])) if found else None

    def sheet(self):
        """What an open sheet holds, or nothing."""
        items = self.shown()
        sheets = [index for index, item in enumerate(items) if item.role == Role.DIALOG]
        if not sheets:
            return []
        inner = sheets[-1]
        return [item for item in items[inner + 1:] if item.depth > items[inner].depth]

    # Where it is

    def identifier(self):
        found = window_manager.shown_windows(self.vemo.process, self.title)
        return found[0] if found else None

    def is_in_front(self):
        window = self.identifier()
        return bool(window) and active_window() == window

    def place(self):
        frame = Atspi.Component.get_extents(self._frame(), Atspi.CoordType.SCREEN)
        return frame.x, frame.y, frame.width, frame.height

    # What a person does with it

    def close(self):
        window_manager.close(self.identifier())
        wait_until(lambda: not self.identifier(), f"the window “{self.title}” to close")

    def click(self, name, role=None):
        """Brings it into sight with the wheel, waits until it stands still, and clicks on it."""
        point_at(*self._settled(name, role))
        subprocess.run(["xdotool", "click", "1"], check=True)

    def _settled(self, name, role):
        """Where to click: what has only just come may still be moving, or have to be scrolled into view."""
        seen, enough = [], 2

        def stands_still():
            nonlocal enough
            item = self.find(name, role)
            if not item or not self.is_in_front():
                return None
            if not item.is_in_view:
                turn_the_wheel_for(item)
                # A page rolls out, and a press that stops it is none on what it shows.
                enough = 5
                return None
            seen.append(item.place)
            return item.middle if seen[-enough:] == [item.place] * enough else None
        return self.await_that(stands_still, f"to show “{name}” at rest")

    def fill(self, name, text):
        """Clicks into a field and types."""
        self.click(name)
        self.await_that(lambda: (item := self.focused()) and item.name == name, f"to have the keyboard in “{name}”")
        keyboard.type_text(text)

    def strike(self, *keysym_names):
        self.await_that(self.is_in_front, "to be in front")
        keyboard.strike(*keysym_names)


def point_at(x, y):
    subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)


def turn_the_wheel_for(item):
    left, top, right, bottom = item.view
    point_at((left + 2 * right) // 3, (top + bottom) // 2)
    way = "down" if item.middle[1] >= bottom - MARGIN else "up"
    subprocess.run(["xdotool", "click", WHEEL[way]], check=True)


def main_window(vemo):
    """Opens it as a second launch of the program does."""
    vemo.launch_again()
    return Window(vemo, "Vemo")


def settings_window(main):
    """Opens it from the main window."""
    main.click("Settings", Role.PUSH_BUTTON)
    return Window(main.vemo, "Settings")
