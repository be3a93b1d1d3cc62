#!/usr/bin/python3
"""A copy of Vemo in a folder of the user's own finds, fetches, installs and starts its next build."""

import http.server
import pathlib
import re
import shutil
import subprocess
import tempfile
import threading
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from browsers import extents, showing_button  # noqa: E402
from vemo_program import Vemo, program, store_token  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402


class FeedHandler(http.server.BaseHTTPRequestHandler):
    """The files of the feed's folder, in the parts that are asked for; nothing else is there."""

    def do_GET(self):
        file = self.server.folder / self.path.rsplit("/", 1)[-1]
        content = file.read_bytes() if "/desktop/updates/" in self.path and file.is_file() else None
        part = re.fullmatch(r"bytes=(\d+)-(\d+)", self.headers.get("Range", ""))
        status = 404 if content is None else 206 if part else 200
        if content and part:
            content = content[int(part[1]):int(part[2]) + 1]
        self.send_response(status)
        self.send_header("Content-Length", str(len(content or b"")))
        self.end_headers()
        self.wfile.write(content or b"")

    def do_POST(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.send_response(404)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def log_message(self, *_):
        pass


def find_button(process, name):
    """Where a window of the process shows the button; None while it doesn't."""
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        try:
            if application and application.get_process_id() == process:
                # No main loop runs here to hear of changes.
                application.clear_cache()
                return extents(showing_button(application, name))
        except GLib.Error:
            pass  # a window that is just arriving or leaving
    return None


class UpdateTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.feed = self.folder / "feed"
        self.feed.mkdir()
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), FeedHandler)
        self.server.folder = self.feed
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.copy = self.folder / "vemo"
        (self.copy / "versions/1/bin").mkdir(parents=True)
        shutil.copy(program("vemo"), self.copy / "versions/1/bin/vemo")
        shutil.copytree(program("../lib/vemo"), self.copy / "versions/1/lib/vemo")
        shutil.copytree(program("../share/vemo"), self.copy / "versions/1/share/vemo")
        (self.copy / "current").symlink_to("versions/1")
        self.started = self.folder / "started"

    def release(self, *arguments):
        command = [program("vemo-release"), *map(str, arguments)]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()

    def release_next_build(self):
        """One that notes that it has been started, since the real one would have to be built twice."""
        version = self.folder / "next"
        (version / "bin").mkdir(parents=True)
        next_program = version / "bin/vemo"
        next_program.write_text('#!/bin/sh\n[ "$1" = --version ] && echo "Vemo 9.9.9 (99)" && exit\n'
                                f'echo "$$ $0" > {self.started}.new && mv {self.started}.new {self.started}\n')
        next_program.chmod(0o755)
        self.release("add", self.folder / "key", self.feed, version, "9.9.9", 99)

    def start_vemo(self):
        key = self.release("new-key", self.folder / "key")
        self.release_next_build()

        def prepare(vemo):
            with open(vemo.configuration / "vemo.conf", "a", encoding="utf-8") as file:
                file.write(f"updateFeedPublicKey={key}\n")

        vemo = Vemo(f"http://127.0.0.1:{self.server.server_port}/", prepare_home=prepare)
        vemo.program = self.copy / "current/bin/vemo"
        return self.enterContext(vemo)

    def await_download(self, vemo):
        wait_until(lambda: "updates: 9.9.9 downloaded, ready to install" in vemo.log.read_text(),
                   lambda: f"the download; {vemo.log.read_text()}", 90)

    def test_the_cards_button_starts_the_next_build_in_place_of_the_running_one(self):
        store_token("token-of-the-desktop-tests")
        vemo = self.start_vemo()
        self.await_download(vemo)
        self.assertFalse(self.started.exists())
        # A second start brings the window of the first one back.
        subprocess.run([program("vemo")], env=vemo.environment, stdin=subprocess.DEVNULL, check=True, timeout=60)
        place = wait_until(lambda: find_button(vemo.process.pid, "Restart to Update"),
                           lambda: f"the card; {vemo.story()}")
        subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2), str(place.y + place.height // 2),
                        "click", "1"], check=True)
        wait_until(self.started.exists, lambda: f"the next build to start; {vemo.log.read_text()}", 60)
        self.assertEqual(vemo.process.wait(60), 0)
        # The next build is the process that was the old one.
        self.assertEqual(self.started.read_text().split(), [str(vemo.process.pid), str(self.copy / "current/bin/vemo")])
        self.assertEqual((self.copy / "current").readlink(), pathlib.Path("versions/99"))
        self.assertEqual(vemo.logged("updates: restarting to install 9.9.9"), 1)

    def test_the_next_build_is_fetched_in_the_background_and_starts_after_the_quit(self):
        vemo = self.start_vemo()
        self.await_download(vemo)
        self.assertEqual((self.copy / "current").readlink(), pathlib.Path("versions/1"))
        vemo.command("quit")
        self.assertEqual(vemo.process.wait(60), 0)
        self.assertEqual((self.copy / "current").readlink(), pathlib.Path("versions/99"))
        self.assertTrue((self.copy / "versions/1/bin/vemo").exists())
        subprocess.run([self.copy / "current/bin/vemo"], check=True)
        self.assertTrue(self.started.exists())


if __name__ == "__main__":
    unittest.main()
