"""The browser that a sign-in page opens in, by the desktop's own choice of what opens web addresses."""

import json
import pathlib
import shutil
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import keyboard  # noqa: E402
import window_manager  # noqa: E402
from editors import active_window, applications, chromium_command  # noqa: E402
from virtual_desktop import DesktopError, wait_until  # noqa: E402

# At what comes of a click.
LOOKS = 60
BETWEEN_LOOKS = 0.05


class Browser:
    """Made the default browser of a home by install(vemo), from Vemo's prepare_home."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="browser-"))
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder, ignore_errors=True)

    def script(self):
        raise NotImplementedError

    def install(self, vemo):
        program = self.folder / "browser"
        program.write_text(f"#!/bin/sh\n{self.script()}\n")
        program.chmod(0o700)
        applications = vemo.home / ".local/share/applications"
        applications.mkdir(parents=True)
        (applications / "browser.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Browser\nExec={program} %u\nMimeType=x-scheme-handler/http;\n")
        (vemo.home / ".config/mimeapps.list").write_text(
            "[Default Applications]\nx-scheme-handler/http=browser.desktop\n")


class NotingBrowser(Browser):
    """Shows nothing; what was opened is for the test to deal with."""

    def script(self):
        return f"""printf '%s' "$1" > '{self.folder}/new' && mv '{self.folder}/new' '{self.folder}/page'"""

    def page(self):
        """The address that was opened; waits for it, and forgets it."""
        path = self.folder / "page"
        wait_until(path.exists, "a page to be opened")
        address = path.read_text()
        path.unlink()
        return address


class RealBrowser(Browser):
    """A browser as it is packaged, with no policy: the question before another program opens is answered as a person
    answers it."""

    name = None  # as screen readers know it
    window_class = None

    def __exit__(self, *_):
        for window in self._windows():
            subprocess.run(["xdotool", "windowclose", window], check=False, capture_output=True)
        self._await_end()
        super().__exit__()

    def command(self):
        raise NotImplementedError

    def open_button(self, application):
        """What the button is called that lets the page open the application."""
        raise NotImplementedError

    def script(self):
        return f"""exec {self.command()} "$1" >/dev/null 2>&1"""

    def _await_front(self):
        wait_until(lambda: (active_window() or "") in self._windows(), f"{self.name} to be in front")

    def _await_end(self):
        wait_until(lambda: not self._windows(), f"{self.name} to close its windows")

    def _windows(self):
        return window_manager.visible_windows("--class", self.window_class)

    def _button(self, name):
        try:
            buttons = [showing_button(application, name)
                       for application in applications(lambda application: application.get_name() == self.name)]
        except GLib.Error:
            return None  # a window is just arriving or leaving
        return next(filter(None, buttons), None)

    def await_button(self, name):
        return wait_until(lambda: self._button(name), f"{self.name} to show the button “{name}”")

    def press(self, name, has_worked):
        """Clicks on a button. A browser drops what comes before it has drawn a page, or too soon after a question has
        come up, so the click is repeated when nothing has come of it after many looks: a page takes one click alone,
        however late it comes of it."""
        self._await_front()
        for clicks in range(20):
            place = wait_until(lambda: (clicks and has_worked()) or extents(self._button(name)),
                               f"{self.name} to show the button “{name}”")
            if place is True:
                return
            subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2), str(place.y + place.height // 2),
                            "click", "1"], check=True)
            if any(has_worked() or time.sleep(BETWEEN_LOOKS) for _ in range(LOOKS)):
                return
        raise DesktopError(f"clicked on “{name}” in vain")

    def allow_opening(self, application, has_worked=None):
        """Says yes to the question whether the page may open the application; until the question has gone, where nothing
        else tells of it."""
        name = self.open_button(application)
        # A look fails when something changes meanwhile.
        self.press(name, has_worked or (lambda: not any(self._button(name) for _ in range(3))))

    def close_page(self):
        self._await_front()

        def is_closed():
            if active_window() in self._windows():
                keyboard.strike("Control_L", "w")
            return any(not self._windows() for _ in range(50))
        wait_until(is_closed, f"{self.name} to close its windows")
        self._await_end()


class Chromium(RealBrowser):
    name = "Chromium"
    window_class = "chromium"

    def command(self):
        *command, _ = chromium_command(self.folder / "profile", "")
        return f"{' '.join(command)} --force-renderer-accessibility"

    def open_button(self, application):
        return f"Open {application}"


class Firefox(RealBrowser):
    name = "Firefox"
    window_class = "firefox-esr"

    # What it opens, asks and looks up by itself the first time, which a test has no use for.
    QUIET = {
        "app.normandy.enabled": False,
        "browser.aboutwelcome.enabled": False,
        "browser.shell.checkDefaultBrowser": False,
        "browser.startup.homepage_override.mstone": "ignore",
        "datareporting.policy.dataSubmissionEnabled": False,
        "network.captive-portal-service.enabled": False,
        "network.connectivity-service.enabled": False,
        "trailhead.firstrun.didSeeAboutWelcome": True,
    }

    def command(self):
        profile = self.folder / "profile"
        profile.mkdir()
        lines = [f"user_pref({json.dumps(name)}, {json.dumps(value)});" for name, value in self.QUIET.items()]
        (profile / "user.js").write_text("\n".join(lines))
        return f"firefox-esr --no-remote --profile {profile}"

    def open_button(self, application):
        return "Open Link"

    def script(self):
        return f"""echo $$ > {self.folder}/process\n{super().script()}"""

    def _await_end(self):
        super()._await_end()
        # Until then it refuses to start with the same profile.
        process = pathlib.Path("/proc", (self.folder / "process").read_text().strip())
        wait_until(lambda: not process.exists(), "Firefox to end")


def extents(button):
    """Where the button is on the screen; None when it's nowhere yet."""
    try:
        place = button and Atspi.Component.get_extents(button, Atspi.CoordType.SCREEN)
    except GLib.Error:
        return None  # it is just going
    return place if place and min(place.x, place.y) >= 0 and min(place.width, place.height) > 1 else None


def showing_button(item, name):
    states = item.get_state_set()
    if item.get_role() == Atspi.Role.PUSH_BUTTON and item.get_name() == name and states.contains(Atspi.StateType.SHOWING):
        return item
    for index in range(item.get_child_count()):
        child = item.get_child_at_index(index)
        found = child and showing_button(child, name)
        if found:
            return found
    return None
