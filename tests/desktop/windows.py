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
from editors import active_window  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402

Role, State = Atspi.Role, Atspi.StateType
WHEEL = {"up": "4", "down": "5"}


@dataclasses.dataclass
class Item:
    """One thing in a window, as it was told to a screen reader."""

    accessible: Atspi.Accessible
    role: Atspi.Role
    name: str
    states: frozenset
    place: tuple  # x, y, width, height on the screen
    depth: int

    @property
    def middle(self):
        x, y, width, height = self.place
        return x + width // 2, y + height // 2

    @property
    def is_showing(self):
        return State.SHOWING in self.states

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


def item(accessible, depth):
    place = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
    role, name = accessible.get_role(), accessible.get_name()
    if role == Role.PASSWORD_TEXT:
        # Qt withholds the name of what is secret.
        name = name or accessible.get_description()
    return Item(accessible, role, name, frozenset(accessible.get_state_set().get_states()),
                (place.x, place.y, place.width, place.height), depth)


def items_below(accessible):
    return [item(*found) for found in accessibles_below(accessible)]


class Window:
    """`window = main_window(vemo); window.click("Settings")`"""

    def __init__(self, vemo, title):
        self.vemo = vemo
        self.title = title
        self.await_that(self._frame, "to be there")
        self.await_that(self.is_in_front, "to be in front")

    def await_that(self, condition, what):
        return wait_until(condition, lambda: f"the window “{self.title}” {what}; it shows {self.story()}; "
                                             f"{self.vemo.story()}")

    def story(self):
        return ", ".join(str(item) for item in self.items() if item.is_showing and item.name)

    # What it shows

    def _frame(self):
        desktop = Atspi.get_desktop(0)
        try:
            for index in range(desktop.get_child_count()):
                application = desktop.get_child_at_index(index)
                if not application or application.get_process_id() != self.vemo.process.pid:
                    continue
                application.clear_cache()
                for child in range(application.get_child_count()):
                    frame = application.get_child_at_index(child)
                    if frame and frame.get_role() == Role.FRAME and frame.get_name() == self.title:
                        return frame
        except GLib.Error:
            pass  # an application that is just arriving or leaving
        return None

    def items(self):
        """Everything in it; nothing while it isn't there, or changes while it's read."""
        try:
            frame = self._frame()
            return items_below(frame)[1:] if frame else []
        except GLib.Error:
            return []

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
        try:
            frame = self._frame()
            found = [found for found in accessibles_below(frame)
                     if found[0].get_state_set().contains(State.FOCUSED)] if frame else []
            return item(*max(found, key=lambda found: found[1])) if found else None
        except GLib.Error:
            return None

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
        search = ["xdotool", "search", "--onlyvisible", "--all", "--pid", str(self.vemo.process.pid),
                  "--name", f"^{self.title}$"]
        found = subprocess.run(search, capture_output=True, check=False).stdout.decode().split()
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
        """Where to click: what has only just come may still be moving, or be below the edge of the window."""
        seen = []

        def stands_still():
            item = self.find(name, role)
            if not item or not self.is_in_front():
                return None
            if self._turns_the_wheel_for(item) or not item.is_showing:
                return None
            seen.append(item.place)
            return item.middle if seen[-2:] == [item.place] * 2 else None
        return self.await_that(stands_still, f"to show “{name}” at rest")

    def _turns_the_wheel_for(self, item):
        """Over the page, when the item isn't wholly in the window."""
        x, y, width, height = self.place()
        top, bottom = item.place[1], item.place[1] + item.place[3]
        if bottom > y + height:
            way = "down"
        elif top < y or not item.is_showing:
            way = "up"
        else:
            return False
        point_at(x + width * 2 // 3, y + height // 2)
        subprocess.run(["xdotool", "click", WHEEL[way]], check=True)
        return True

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


def main_window(vemo):
    """Opens it as a second launch of the program does."""
    subprocess.run([vemo.program], env=vemo.environment, stdin=subprocess.DEVNULL, check=True, timeout=60)
    return Window(vemo, "Vemo")


def settings_window(main):
    """Opens it from the main window."""
    main.click("Settings", Role.PUSH_BUTTON)
    return Window(main.vemo, "Settings")
