"""Which windows there are, and what a person asks of them by the window manager's own buttons."""

import ctypes
import subprocess

from virtual_desktop import wait_until


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("padding", ctypes.c_long * 12)]


CLIENT_MESSAGE = 33
SUBSTRUCTURE_MASKS = (1 << 19) | (1 << 20)


def shown_windows(process, title):
    """The numbers of a program's windows of that title."""
    return visible_windows("--all", "--pid", str(process.pid), "--name", f"^{title}$")


def visible_windows(*conditions):
    """The numbers of those that xdotool finds by its options."""
    def found():
        # Any window that goes away meanwhile, whoever's, ends the search with an X error.
        result = subprocess.run(["xdotool", "search", "--onlyvisible", *conditions], capture_output=True, check=False)
        return None if b"X Error" in result.stderr else [result.stdout.decode().split()]
    return wait_until(found, "a search for windows to come to its end")[0]


def close(window):
    """Presses the close button of a window (its number as xdotool tells it)."""
    x11 = ctypes.CDLL("libX11.so.6")
    for name in ("XOpenDisplay", "XDefaultRootWindow", "XInternAtom"):
        getattr(x11, name).restype = ctypes.c_void_p
    display = ctypes.c_void_p(x11.XOpenDisplay(None))
    message = ClientMessage(type=CLIENT_MESSAGE, window=int(window), format=32,
                            message_type=x11.XInternAtom(display, b"_NET_CLOSE_WINDOW", False))
    root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
    x11.XSendEvent(display, root, False, ctypes.c_long(SUBSTRUCTURE_MASKS), ctypes.byref(message))
    x11.XCloseDisplay(display)
