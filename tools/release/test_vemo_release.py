#!/usr/bin/python3
"""Makes keys and releases with vemo-release, and checks what it makes. usage: test_vemo_release.py PROGRAM"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)


class VemoReleaseTest(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.temporary.name)
        self.addCleanup(self.temporary.cleanup)
        self.feed = self.folder / "feed"
        self.feed.mkdir()
        self.version = self.folder / "version"
        (self.version / "bin").mkdir(parents=True)
        program = self.version / "bin" / "vemo"
        program.write_text("#!/bin/sh\necho Vemo 1.1.0\n")
        program.chmod(0o755)
        self.public_key = self.succeed("new-key", self.folder / "key").strip()

    def run_it(self, *arguments):
        return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True)

    def succeed(self, *arguments):
        result = self.run_it(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def fail_with(self, text, *arguments):
        result = self.run_it(*arguments)
        self.assertEqual(result.returncode, 1)
        self.assertIn(text, result.stderr)

    def add(self, build, *options):
        return self.succeed("add", self.folder / "key", self.feed, self.version, "1.1.0", build,
                            *options)

    def test_a_key_is_its_owners_alone_and_never_overwritten(self):
        self.assertEqual(len(self.public_key), 44)
        self.assertEqual((self.folder / "key").stat().st_mode & 0o777, 0o600)
        self.fail_with("is there already", "new-key", self.folder / "key")
        os.chmod(self.folder / "key", 0o644)
        self.fail_with("other users can read it", "renew", self.folder / "key", self.feed)

    def test_a_feed_that_was_made_is_found_good(self):
        self.add(57, "--channel", "beta", "--critical")
        self.add(58)
        self.assertIn("good: 2 versions, serial 2", self.succeed("check", self.public_key, self.feed))

    def test_the_same_version_gives_the_same_archive(self):
        self.add(57)
        first = (self.feed / "vemo-57.tar.xz").read_bytes()
        self.add(58)
        self.assertEqual(first, (self.feed / "vemo-58.tar.xz").read_bytes())

    def test_folders_may_be_named_from_where_one_stands(self):
        command = [PROGRAM, "add", "key", "feed", "version", "1.1.0", "57"]
        result = subprocess.run(command, cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn('path="bin/vemo"', (self.feed / "appcast.xml").read_text())
        self.assertIn("good: 1 versions", self.succeed("check", self.public_key, self.feed))

    def test_a_build_is_released_once(self):
        self.add(57)
        self.fail_with("in the feed already", "add", self.folder / "key", self.feed, self.version,
                       "1.1.0", 57)

    def test_a_changed_archive_or_feed_is_found(self):
        self.add(57)
        archive = self.feed / "vemo-57.tar.xz"
        archive.write_bytes(archive.read_bytes()[:-1] + b"x")
        self.fail_with("isn't what the feed says", "check", self.public_key, self.feed)
        feed = self.feed / "appcast.xml"
        feed.write_text(feed.read_text().replace("1.1.0", "1.2.0"))
        self.fail_with("isn't signed by this key", "check", self.public_key, self.feed)

    def test_a_version_without_a_program_is_not_published(self):
        (self.version / "bin" / "vemo").rename(self.version / "bin" / "other")
        self.fail_with("no program", "add", self.folder / "key", self.feed, self.version, "1", 57)
        self.assertFalse((self.feed / "appcast.xml").exists())

    def test_a_rotated_key_signs_what_is_there_and_what_comes(self):
        self.add(57)
        self.succeed("new-key", self.folder / "next")
        self.succeed("rotate", self.folder / "key", self.folder / "next", self.feed)
        self.assertIn("good: 1 versions", self.succeed("check", self.public_key, self.feed))
        self.fail_with("isn't signed by this key", "renew", self.folder / "key", self.feed)
        self.succeed("renew", self.folder / "next", self.feed)

    def test_what_is_not_understood_is_told(self):
        self.fail_with("usage", "publish")
        self.fail_with("usage", "add", self.folder / "key")


if __name__ == "__main__":
    unittest.main()
