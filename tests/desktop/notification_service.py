"""The desktop's notification service, as a test plays it: it shows nothing and remembers what it was to show."""

import dataclasses

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from virtual_desktop import wait_until  # noqa: E402

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
INTERFACE = f"""<node><interface name="{NAME}">
<method name="GetCapabilities"><arg type="as" direction="out"/></method>
<method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
<arg type="a{{sv}}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/></method>
<method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface></node>"""


@dataclasses.dataclass
class Note:
    number: int
    title: str
    text: str
    buttons: dict  # what is written on each, and its name


class NotificationService:
    """`with NotificationService() as desktop: note = desktop.await_note()`"""

    def __enter__(self):
        self.notes = []
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self._registration = self._bus.register_object(PATH, interface, self._call, None, None)
        self._owner = Gio.bus_own_name_on_connection(self._bus, NAME, 0, None, None)
        return self

    def __exit__(self, *_):
        Gio.bus_unown_name(self._owner)
        self._bus.unregister_object(self._registration)

    def _call(self, _bus, _sender, _path, _interface, method, parameters, invocation):
        if method == "GetCapabilities":
            invocation.return_value(GLib.Variant("(as)", (["actions", "body"],)))
        elif method == "Notify":
            _, _, _, title, text, actions, _, _ = parameters.unpack()
            self.notes.append(Note(len(self.notes) + 1, title, text, dict(zip(actions[1::2], actions[::2]))))
            invocation.return_value(GLib.Variant("(u)", (len(self.notes),)))
        else:
            invocation.return_value(None)

    def await_note(self):
        def newest():
            while GLib.MainContext.default().iteration(False):
                pass
            return self.notes and self.notes[-1]
        return wait_until(newest, "a note to be shown")

    def press(self, note, button):
        self._bus.emit_signal(None, PATH, NAME, "ActionInvoked", GLib.Variant("(us)", (note.number, note.buttons[button])))
        self._bus.flush_sync()
