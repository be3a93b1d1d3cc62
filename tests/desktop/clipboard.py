"""What the clipboard holds, seen and set from outside."""

import base64
import contextlib
import json
import pathlib
import subprocess
import threading

from virtual_desktop import wait_until

# Formats that speak of the transfer rather than of the content.
TRANSFER_FORMATS = {"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE"}


def read_format(name):
    """The bytes of one format, or None when it isn't offered."""
    def ask():
        with contextlib.suppress(subprocess.TimeoutExpired):  # an owner that went meanwhile never answers
            return subprocess.run(["xclip", "-selection", "clipboard", "-o", "-t", name], capture_output=True,
                                  timeout=20, check=False)
    result = wait_until(ask, f"the clipboard's owner to answer for {name}")
    return result.stdout if result.returncode == 0 else None


def formats():
    """The names of the content's formats, in the order in which they are offered."""
    names = read_format("TARGETS")
    return [name for name in (names or b"").decode().split() if name not in TRANSFER_FORMATS]


def contents():
    """Every format with its bytes, in order; an empty list for an empty clipboard."""
    return [(name, read_format(name)) for name in formats()]


class Copier:
    """A program that is ready to copy something: `with Copier([("UTF8_STRING", b"…")]) as copier: copier.copy()`"""

    def __init__(self, content):
        self._content = [(name, base64.b64encode(data).decode()) for name, data in content]

    def __enter__(self):
        program = pathlib.Path(__file__).with_name("clipboard_owner.py")
        self._process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._said = []
        self._reader = threading.Thread(target=self._listen, daemon=True)
        self._reader.start()
        self._send(json.dumps(self._content))
        wait_until(lambda: "ready" in self._said, "the program to be ready to copy")
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()
        self._reader.join()
        self._process.stdin.close()
        self._process.stdout.close()

    def copy(self):
        self._send("copy")
        wait_until(lambda: "owner" in self._said, "the clipboard to have its owner")

    def has_lost_it(self):
        return "lost" in self._said

    def _send(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def _listen(self):
        for line in self._process.stdout:
            self._said.append(line.strip())


class ClipboardOwner(Copier):
    """A program that has copied something: `with ClipboardOwner([("UTF8_STRING", b"…")]):`"""

    def __enter__(self):
        super().__enter__()
        self.copy()
        return self
