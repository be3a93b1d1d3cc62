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

from vemo_program import Vemo, program
from virtual_desktop import wait_until


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
                                f'echo "$0" > {self.started}\n')
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

    def test_the_next_build_is_fetched_in_the_background_and_starts_after_the_quit(self):
        vemo = self.start_vemo()
        wait_until(lambda: "updates: 9.9.9 downloaded, ready to install" in vemo.log.read_text(),
                   lambda: f"the download; {vemo.log.read_text()}", 90)
        self.assertEqual((self.copy / "current").readlink(), pathlib.Path("versions/1"))
        vemo.command("quit")
        self.assertEqual(vemo.process.wait(60), 0)
        self.assertEqual((self.copy / "current").readlink(), pathlib.Path("versions/99"))
        self.assertTrue((self.copy / "versions/1/bin/vemo").exists())
        subprocess.run([self.copy / "current/bin/vemo"], check=True)
        self.assertTrue(self.started.exists())


if __name__ == "__main__":
    unittest.main()
