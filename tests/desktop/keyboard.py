"""The keyboard as the X server has it: which keys are down, which modifiers count."""

import ctypes
import ctypes.util
import subprocess

_x11 = ctypes.CDLL(ctypes.util.find_library("X11"))
_x11.XOpenDisplay.restype = ctypes.c_void_p
_x11.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
_x11.XKeysymToKeycode.restype = ctypes.c_ubyte
_x11.XStringToKeysym.argtypes = [ctypes.c_char_p]
_x11.XStringToKeysym.restype = ctypes.c_ulong
_x11.XQueryKeymap.argtypes = [ctypes.c_void_p, ctypes.c_char * 32]
_x11.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
_x11.XDefaultRootWindow.restype = ctypes.c_ulong
_x11.XQueryPointer.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_void_p] * 7
_x11.XCloseDisplay.argtypes = [ctypes.c_void_p]

# Buttons stand above; Caps Lock and Num Lock may be on without a key being down.
MODIFIERS = 0xFF & ~0x02 & ~0x10


class Keyboard:
    def __enter__(self):
        self._display = ctypes.c_void_p(_x11.XOpenDisplay(None))
        if not self._display:
            raise AssertionError("no display")
        return self

    def __exit__(self, *_):
        _x11.XCloseDisplay(self._display)

    def keys_down(self):
        """The codes of all keys that are down."""
        keys = (ctypes.c_char * 32)()
        _x11.XQueryKeymap(self._display, keys)
        return {8 * index + bit for index, byte in enumerate(bytes(keys)) for bit in range(8) if byte >> bit & 1}

    def code(self, keysym_name):
        return _x11.XKeysymToKeycode(self._display, _x11.XStringToKeysym(keysym_name.encode()))

    def modifiers(self):
        """The mask of modifiers in force."""
        ids = [ctypes.c_ulong() for _ in range(2)]
        numbers = [ctypes.c_int() for _ in range(4)]
        mask = ctypes.c_uint()
        _x11.XQueryPointer(self._display, _x11.XDefaultRootWindow(self._display),
                           *[ctypes.byref(value) for value in (*ids, *numbers, mask)])
        return mask.value & MODIFIERS


def press(*keys):
    subprocess.run(["xdotool", "keydown", *keys], check=True)


def release(*keys):
    subprocess.run(["xdotool", "keyup", *keys], check=True)


def type_text(text):
    subprocess.run(["xdotool", "type", "--", text], check=True)


def use_layout(*layout):
    """As setxkbmap takes it: names of layouts by comma, and perhaps -variant NAME."""
    subprocess.run(["setxkbmap", "-layout", *layout], check=True)
