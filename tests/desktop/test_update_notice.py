#!/usr/bin/python3
"""A release that a Vemo of the package manager's only tells of, and what the user answers."""

import json
import pathlib
import subprocess
import tempfile
import unittest

from dictation_server import Answer
from notification_service import NotificationService
from telemetry_server import TelemetryServer
from vemo_program import Vemo, program, store_token
from virtual_desktop import wait_until

FEED = "/desktop/updates/appcast.xml"
NEXT_VERSION = """#!/bin/sh
echo "Vemo 9.9.9 (99)"
"""


def release(*arguments):
    command = [program("vemo-release"), *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


class NoticeTest(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.key = release("new-key", folder / "key")
        started = folder / "next/bin/vemo"
        started.parent.mkdir(parents=True)
        started.write_text(NEXT_VERSION)
        started.chmod(0o755)
        (folder / "feed").mkdir()
        release("add", folder / "key", folder / "feed", folder / "next", "9.9.9", 99)
        store_token("token-of-the-desktop-tests")
        self.desktop = self.enterContext(NotificationService())
        self.server = self.enterContext(TelemetryServer())
        self.server.other_answers[FEED] = Answer(body=(folder / "feed/appcast.xml").read_bytes())
        self.vemo = self.enterContext(Vemo(self.server.address, prepare_home=self.trust))

    def trust(self, vemo):
        with open(vemo.configuration / "vemo.conf", "a", encoding="utf-8") as file:
            file.write(f"updateFeedPublicKey={self.key}\n")

    def skipped_build(self):
        memory, = self.vemo.home.rglob("updates.json")
        return json.loads(memory.read_text()).get("skippedBuild")

    def test_a_version_that_the_user_skips_is_remembered_and_told_of(self):
        note = self.desktop.await_note()
        self.assertEqual(note.title, "Vemo 9.9.9 is available")
        self.assertEqual(note.text, "Install it the way you installed Vemo, such as with your package manager.")
        self.assertEqual(list(note.buttons), ["Skip This Version", "Remind Me Later"])
        self.assertEqual(self.skipped_build(), "0")
        self.desktop.press(note, "Skip This Version")
        wait_until(lambda: self.skipped_build() == "99", "the version to be passed over from now on")
        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        self.assertEqual([name for name in self.server.event_names() if name.startswith("update_")],
                         ["update_offered", "update_skipped"])


if __name__ == "__main__":
    unittest.main()
