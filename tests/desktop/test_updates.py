#!/usr/bin/python3
"""A release on its whole way: signed, served by the real service, found, fetched, installed and started by a copy of
the build before that lives in a folder of the user's own."""

import pathlib
import shutil
import signal
import subprocess
import tempfile
import unittest

from gi.repository import Gio, GLib

from accessibility import Walks
from companion_service import CompanionService
from notification_service import NotificationService
from vemo_program import Vemo, program
from virtual_desktop import wait_until
from windows import Role, main_window, settings_window

NOTES = """# Quicker
- The window opens at once
- Reads [more languages](https://languages.example/all)

Thanks to all who wrote.
"""


def release(*arguments):
    command = [program("vemo-release"), *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def lay_out(version, name):
    """The files of a version as the self-contained archive has them."""
    (version / "bin").mkdir(parents=True)
    (version / "lib/vemo").mkdir(parents=True)
    for built, file in ((name, "bin/vemo"), ("../lib/vemo/vemo-windows.so", "lib/vemo/vemo-windows.so")):
        subprocess.run(["strip", "-o", version / file, program(built)], check=True)
    shutil.copytree(program("../share/vemo"), version / "share/vemo")


def make_unable_to_show_anything(version):
    """It answers when it is asked for a check, which shows nothing, and aborts at each start."""
    plugins = version / "plugins/platforms"
    plugins.mkdir(parents=True)
    folder = subprocess.run(["qtpaths6", "--query", "QT_INSTALL_PLUGINS"], capture_output=True, text=True, check=True)
    shutil.copy(pathlib.Path(folder.stdout.strip(), "platforms/libqoffscreen.so"), plugins)
    (version / "bin/qt.conf").write_text("[Paths]\nPlugins = ../plugins\n")


class UpdatingCopy:
    """A running copy that has fetched the next build."""

    @staticmethod
    def spoil(version):
        """What a test does to the next build before it is released."""

    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        feed = folder / "feed"
        feed.mkdir()
        self.key = release("new-key", folder / "key")
        lay_out(folder / "next", "vemo-next-build")
        self.spoil(folder / "next")
        (folder / "notes").write_text(NOTES)
        release("add", "--notes", folder / "notes", folder / "key", feed, folder / "next", "9.9.9", 99)
        release("check", self.key, feed)
        service = self.enterContext(CompanionService(folder, f"[updates]\nfolder = {feed}\n"))
        self.copy = folder / "vemo"
        lay_out(self.copy / "versions/1", "vemo")
        (self.copy / "current").symlink_to("versions/1")
        self.vemo = Vemo(service.address, prepare_home=self.trust)
        self.vemo.program = self.copy / "current/bin/vemo"
        self.enterContext(self.vemo)
        wait_until(lambda: self.vemo.logged("updates: 9.9.9 downloaded, ready to install"),
                   lambda: f"the download; {self.vemo.log.read_text()}", 180)
        self.assertEqual(self.current(), pathlib.Path("versions/1"))

    def trust(self, vemo):
        with open(vemo.configuration / "vemo.conf", "a", encoding="utf-8") as file:
            file.write(f"updateFeedPublicKey={self.key}\n")

    def current(self):
        return (self.copy / "current").readlink()

    def runs(self, build):
        running = pathlib.Path(f"/proc/{self.vemo.process.pid}/exe").resolve()
        return running == self.copy.resolve() / f"versions/{build}/bin/vemo"

    def runs_the_next_build(self):
        return self.runs(99)

    def log_out(self):
        self.vemo.process.terminate()
        self.assertEqual(self.vemo.process.wait(120), 0)

    def quit(self):
        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)

    def assert_that_the_next_build_has_come(self):
        self.assertEqual(self.current(), pathlib.Path("versions/99"))
        told = subprocess.run([self.vemo.program, "--version"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(told.strip(), "Vemo 9.9.9 (99)")


class CardTest(Walks, UpdatingCopy, unittest.TestCase):
    def test_the_cards_button_starts_the_next_build_in_place_of_the_running_one(self):
        main = main_window(self.vemo)
        main.await_item("Restart to Update", Role.PUSH_BUTTON)
        self.assert_page_usable(main)
        self.assert_notes_usable(main)
        main.click("Restart to Update", Role.PUSH_BUTTON)
        wait_until(self.runs_the_next_build, lambda: f"the next build to start; {self.vemo.log.read_text()}")
        wait_until(self.vemo.is_idle, lambda: f"the next build to be idle; {self.vemo.story()}")
        self.assertEqual(self.vemo.logged("updates: restarting to install 9.9.9"), 1)
        self.assert_that_the_next_build_has_come()

    def assert_notes_usable(self, main):
        main.click("What's new")
        self.await_sheet(main, "What's new")
        self.assertEqual([(item.role, item.name) for item in main.sheet()],
                         [(Role.DOCUMENT_FRAME, "What's new"), (Role.HEADING, "Quicker"),
                          (Role.LABEL, "The window opens at once"), (Role.LABEL, "Reads more languages"),
                          (Role.LINK, "more languages"), (Role.LABEL, "Thanks to all who wrote.")])
        self.assert_usable(main, main.sheet)
        self.leave(main, "What's new", "What's new")
        main.await_that(lambda: (item := main.focused()) and item.role == Role.PUSH_BUTTON, "to have it at the button")


class QuitTest(UpdatingCopy, unittest.TestCase):
    def test_the_next_build_starts_after_the_quit_also_at_login_and_stays(self):
        settings = settings_window(main_window(self.vemo))
        settings.click("System")
        settings.click("Launch app at login")
        entry = self.vemo.home / ".config/autostart/brelmox.Vemo.desktop"
        wait_until(entry.is_file, "the entry to be written")
        self.quit()
        self.assert_that_the_next_build_has_come()
        self.assertTrue((self.copy / "versions/1/bin/vemo").exists(), "until the next one has run for a while")
        _, command = GLib.shell_parse_argv(Gio.DesktopAppInfo.new_from_filename(str(entry)).get_commandline())
        self.vemo.program, *self.vemo.arguments = command
        for end in (self.quit, self.log_out, self.quit):  # soon after one another
            self.vemo.launch()
            self.assertTrue(self.runs_the_next_build())
            end()
            self.assertFalse((self.copy / "trial").exists())
        self.assert_that_a_desktop_without_a_bus_is_not_held_against_it()
        self.vemo.launch()
        wait_until(lambda: not (self.copy / "versions/1").exists(), "the version before to go")
        self.assertTrue(self.runs_the_next_build())

    def assert_that_a_desktop_without_a_bus_is_not_held_against_it(self):
        without_bus = self.vemo.environment | {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
        ended = subprocess.run([self.vemo.program], env=without_bus, capture_output=True, text=True, timeout=120, check=False)
        self.assertEqual((ended.returncode, ended.stderr), (1, "Vemo needs a D-Bus session bus.\n"))
        self.assertFalse((self.copy / "trial").exists())


class BadBuildTest(UpdatingCopy, unittest.TestCase):
    @staticmethod
    def spoil(version):
        make_unable_to_show_anything(version)

    def test_a_build_that_aborts_at_its_start_gives_way_to_the_one_before(self):
        self.quit()
        self.assertEqual(self.current(), pathlib.Path("versions/99"))
        for _ in range(2):
            ended = subprocess.run([self.vemo.program], env=self.vemo.environment, stdin=subprocess.DEVNULL,
                                   capture_output=True, timeout=120, check=False)
            self.assertEqual(ended.returncode, -signal.SIGABRT, ended.stderr)
        desktop = self.enterContext(NotificationService())
        self.vemo.launch()
        self.assertTrue(self.runs(1))
        self.assertEqual(self.current(), pathlib.Path("versions/1"))
        self.vemo.await_logged("updates: build 99 didn't start well here")
        self.assertEqual(desktop.await_note().text, "The new version didn't start well on this computer.")


if __name__ == "__main__":
    unittest.main()
