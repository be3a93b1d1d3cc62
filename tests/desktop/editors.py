"""The programs that tests dictate into, each read from outside by means of its own.

Runs inside the virtual desktop. Every editor is started with an empty text and waited for until its
text has the keyboard focus.
"""

import contextlib
import http.server
import pathlib
import shutil
import subprocess
import tempfile
import threading

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import keyboard  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402

# An editor that lays out a megabyte answers late.
Atspi.set_timeout(60_000, 60_000)


def active_window():
    """The identifier of the window in front, or None."""
    result = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, check=False)
    return result.stdout.decode().strip() or None


def window_class(window):
    result = subprocess.run(["xprop", "-id", window, "WM_CLASS"], capture_output=True, check=False)
    return result.stdout.decode()


def applications(is_wanted):
    """Those on the accessibility bus that are wanted, as they are now; none that is just arriving or leaving."""
    found, desktop = [], Atspi.get_desktop(0)
    with contextlib.suppress(GLib.Error):
        for index in range(desktop.get_child_count()):
            with contextlib.suppress(GLib.Error):
                application = desktop.get_child_at_index(index)
                if application and is_wanted(application):
                    # No main loop runs here to hear of changes.
                    application.clear_cache()
                    found.append(application)
    return found


def applications_of(process):
    return applications(lambda application: application.get_process_id() == process.pid)


class Editor:
    """`with Mousepad() as editor: …; editor.text()`"""

    name = ""
    pastes_with = "ctrl+v"

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="editor-"))
        self.process = subprocess.Popen(self.command(), stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            self.window = wait_until(self._window_in_front, f"{self.name} to come to the front")
            wait_until(self.has_focus, f"the text of {self.name} to have the focus")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _window_in_front(self):
        if self.process.poll() is not None:
            raise AssertionError(f"{self.name} ended with {self.process.returncode}")
        window = active_window()
        return window if window and f'"{self.name}"' in window_class(window).lower() else None

    def command(self):
        raise NotImplementedError

    def has_focus(self):
        raise NotImplementedError

    def text(self):
        raise NotImplementedError

    def empty(self):
        """Takes all of its text away, and returns it. What was struck before comes first, even into an editor that
        stalls: that a space has arrived after it tells."""
        keyboard.strike("space")
        held = wait_until(self._text_with_space, f"a space to arrive in {self.name}")

        def is_empty():
            self._clear()
            return self.text() == ""
        wait_until(is_empty, f"{self.name} to be empty")
        return held

    def _text_with_space(self):
        text = self.text()
        return text if text.startswith(" ") or text.endswith(" ") else None

    def _clear(self):
        keyboard.strike("Control_L", "a")
        keyboard.strike("Delete")


class AccessibleEditor(Editor):
    """An editor whose text and focus the accessibility bus tells."""

    _text = None

    def has_focus(self):
        focused = self._focused_text()
        self._text = focused or self._text
        return focused is not None

    def text(self):
        return Atspi.Text.get_text(self._text, 0, -1)

    def _focused_text(self):
        try:
            return next(filter(None, map(focused_text_below, applications_of(self.process))), None)
        except GLib.Error:
            return None  # it changes while it's looked at


def focused_text_below(item):
    states = item.get_state_set()
    if states.contains(Atspi.StateType.EDITABLE) and states.contains(Atspi.StateType.FOCUSED):
        return item
    for index in range(item.get_child_count()):
        child = item.get_child_at_index(index)
        found = child and focused_text_below(child)
        if found:
            return found
    return None


class Mousepad(AccessibleEditor):
    name = "mousepad"

    def command(self):
        return ["mousepad", "--disable-server"]


class Featherpad(AccessibleEditor):
    name = "featherpad"

    def command(self):
        return ["featherpad", "--standalone"]


class Xterm(Editor):
    """A terminal in which `cat` writes what arrives to a file."""

    name = "xterm"
    pastes_with = "ctrl+shift+v"

    def command(self):
        self.file = self.folder / "received"
        # Not by lines, whose length the terminal limits; what it sends as Return arrives as a line end.
        program = f"stty -icanon -echo icrnl -isig -ixon; exec cat >>'{self.file}'"
        return ["xterm", "-u8", "-xrm", "XTerm*VT100.translations: #override "
                "Ctrl Shift <Key>V: insert-selection(CLIPBOARD)", "-e", "sh", "-c", program]

    def has_focus(self):
        return self.file.exists()

    def text(self):
        return self.file.read_bytes().decode(errors="replace")

    def _clear(self):
        self.file.write_bytes(b"")


PAGE = b"""<!doctype html><meta charset="utf-8"><title>text area</title>
<textarea id="text" autofocus rows="20" cols="80"></textarea>
<script>
  const text = document.getElementById("text");
  const send = (path, body) => fetch(path, {method: "POST", body}).catch(() => send(path, body));
  // One after the other, so that the last to arrive is the last.
  let told = Promise.resolve();
  const tell = (path, body) => told = told.then(() => send(path, body));
  const tellFocus = event => tell("/focus", event.type === "blur" ? "lost" : "had");
  text.addEventListener("input", () => tell("/text", text.value));
  // From the first key on: before, the field may have the focus, but not what is typed.
  text.addEventListener("keydown", event => {
    tellFocus(event);
    for (const type of ["focus", "blur"]) text.addEventListener(type, tellFocus);
  }, {once: true});
</script>"""


def chromium_command(profile, address):
    """Starts Chromium with nothing but a page, and without the services that a test has no use for."""
    return ["chromium", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--no-default-browser-check", "--disable-background-networking",
            "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
            "--password-store=basic", f"--user-data-dir={profile}", f"--app={address}"]


def strike_in_vain():
    """A key that writes nothing into an empty field. Chromium drops every key until it has drawn the page, although the
    field has the focus before: it takes what is typed once it has told of one."""
    keyboard.strike("End")


class Chromium(Editor):
    """A text area in a page that tells this program its text and its focus after every change."""

    name = "chromium"

    def __enter__(self):
        self._text = ""
        self._focus = ""
        editor = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self._answer(PAGE if self.path == "/" else b"")

            def do_POST(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                if self.path == "/focus":
                    editor._focus = body.decode()
                else:
                    editor._text = body.decode()
                self._answer(b"")

            def _answer(self, body):
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return super().__enter__()

    def __exit__(self, *_):
        super().__exit__()
        self._server.shutdown()
        self._server.server_close()

    def command(self):
        return chromium_command(self.folder, f"http://127.0.0.1:{self._server.server_port}/")

    def has_focus(self):
        if not self._focus:
            strike_in_vain()
        return self._focus == "had"

    def text(self):
        return self._text


ALL = (Mousepad, Featherpad, Xterm, Chromium)
