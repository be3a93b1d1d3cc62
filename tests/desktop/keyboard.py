"""The keyboard as the X server has it: which keys are down, which modifiers count."""

import ctypes
import ctypes.util
import subprocess

_xtest = ctypes.CDLL(ctypes.util.find_library("Xtst"))
_xtest.XTestFakeKeyEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]

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
_x11.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]

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

    def move(self, keysym_names, is_down):
        """Presses the keys, or lets them go, one after the other."""
        for name in keysym_names:
            _xtest.XTestFakeKeyEvent(self._display, self.code(name), is_down, 0)
        _x11.XSync(self._display, False)

    def strike(self, *keysym_names, milliseconds=0):
        """Presses the keys one after the other and lets them go. The server itself sees to the time that they
        are all held, so that a busy machine doesn't make a hold of a stroke."""
        codes = [self.code(name) for name in keysym_names]
        for code in codes:
            _xtest.XTestFakeKeyEvent(self._display, code, True, 0)
        for index, code in enumerate(reversed(codes)):
            _xtest.XTestFakeKeyEvent(self._display, code, False, 0 if index else milliseconds)
        _x11.XSync(self._display, False)

    def modifiers(self):
        """The mask of modifiers in force."""
        ids = [ctypes.c_ulong() for _ in range(2)]
        numbers = [ctypes.c_int() for _ in range(4)]
        mask = ctypes.c_uint()
        _x11.XQueryPointer(self._display, _x11.XDefaultRootWindow(self._display),
                           *[ctypes.byref(value) for value in (*ids, *numbers, mask)])
        return mask.value & MODIFIERS


def strike(*keysym_names, milliseconds=0):
    with Keyboard() as keyboard:
        keyboard.strike(*keysym_names, milliseconds=milliseconds)


def press(*keysym_names):
    """These keys and no others; xdotool would press a left Alt beside a right one."""
    with Keyboard() as keyboard:
        keyboard.move(keysym_names, is_down=True)


def release(*keysym_names):
    with Keyboard() as keyboard:
        keyboard.move(keysym_names, is_down=False)


def type_text(text):
    subprocess.run(["xdotool", "type", "--", text], check=True)


def use_layout(*layout):
    """As setxkbmap takes it: names of layouts by comma, and perhaps -variant NAME."""
    subprocess.run(["setxkbmap", "-layout", *layout], check=True)
