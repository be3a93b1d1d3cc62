#!/usr/bin/python3
"""Makes keys and releases with vemo-release, and checks what it makes. usage: test_vemo_release.py PROGRAM"""
import datetime
import os
import pathlib
import platform
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
LARGEST_FEED = 4 * 1024 * 1024
LONGEST_TEXT = 64 * 1024


class VemoReleaseTest(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.temporary.name)
        self.addCleanup(self.temporary.cleanup)
        self.feed = self.folder / "feed"
        self.feed.mkdir()
        self.version = self.folder / "version"
        (self.version / "bin").mkdir(parents=True)
        self.public_key = self.succeed("new-key", self.folder / "key").strip()

    def run_it(self, *arguments, **environment):
        return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True,
                              env=os.environ | environment)

    def succeed(self, *arguments):
        result = self.run_it(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def fail_with(self, text, *arguments, **environment):
        result = self.run_it(*arguments, **environment)
        self.assertEqual(result.returncode, 1)
        self.assertIn(text, result.stderr)

    def make_program(self, told):
        """A version that tells what `--check` is answered with."""
        program = self.version / "bin" / "vemo"
        program.write_text(f"#!/bin/sh\necho '{told}'\n")
        program.chmod(0o755)

    def addition(self, build, *options):
        self.make_program(f"Vemo 1.1.0 ({build})")
        return "add", self.folder / "key", self.feed, self.version, "1.1.0", build, *options

    def add(self, build, *options):
        return self.succeed(*self.addition(build, *options))

    def add_with_notes(self, build, notes):
        """What adds a version with these notes, to be run."""
        (self.folder / "notes").write_text(notes, encoding="utf-8")
        return self.addition(build, "--notes", self.folder / "notes")

    def content(self):
        """Of the feed's folder, with what is hidden."""
        return {path.name: path.read_bytes() for path in self.feed.iterdir()}

    def days_left(self):
        told = re.search("<expires>(.*)Z</expires>", (self.feed / "appcast.xml").read_text())[1]
        expires = datetime.datetime.fromisoformat(told + "+00:00")
        left = (expires - datetime.datetime.now(datetime.timezone.utc)) / datetime.timedelta(days=1)
        self.assertAlmostEqual(left, round(left), delta=0.01)
        return round(left)

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
        self.succeed("withdraw", self.folder / "key", self.feed, 57)
        (self.feed / "vemo-57.tar.xz").unlink()
        self.add(57)
        self.assertEqual(first, (self.feed / "vemo-57.tar.xz").read_bytes())

    def test_folders_may_be_named_from_where_one_stands(self):
        self.make_program("Vemo 1.1.0 (57)")
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
        for architecture in ("mips64", platform.machine()):
            self.fail_with("program" if architecture == "mips64" else "doesn't start here", "add",
                           self.folder / "key", self.feed, self.version, "1", 57, "--architecture", architecture)
        self.assertFalse((self.feed / "appcast.xml").exists())

    def test_a_version_that_calls_itself_another_is_not_published(self):
        for told in ("Vemo 1.1.0 (5)", "Vemo 11.1.0 (57)", "Vemo 1.1.0"):
            self.make_program(told)
            self.fail_with("calls itself another one", "add", self.folder / "key", self.feed, self.version,
                           "1.1.0", 57)

    def test_a_withdrawn_version_is_in_the_feed_no_more(self):
        self.add(57)
        self.add(58)
        self.succeed("withdraw", self.folder / "key", self.feed, 58)
        self.assertIn("good: 1 versions, serial 3", self.succeed("check", self.public_key, self.feed))
        self.fail_with("isn't in the feed", "withdraw", self.folder / "key", self.feed, 58)

    def test_a_rotated_key_signs_what_is_there_and_what_comes(self):
        self.add(57)
        self.succeed("new-key", self.folder / "next")
        self.succeed("rotate", self.folder / "key", self.folder / "next", self.feed)
        self.assertIn("good: 1 versions", self.succeed("check", self.public_key, self.feed))
        self.fail_with("isn't signed by this key", "renew", self.folder / "key", self.feed)
        self.succeed("renew", self.folder / "next", self.feed)

    def test_keys_follow_one_another_for_whoever_begins_with_any_of_them(self):
        self.add(57)
        second = self.succeed("new-key", self.folder / "second").strip()
        third = self.succeed("new-key", self.folder / "third").strip()
        self.succeed("rotate", self.folder / "key", self.folder / "second", self.feed)
        self.succeed("rotate", self.folder / "second", self.folder / "third", self.feed)
        for key in (self.public_key, second, third):
            self.assertIn("good: 1 versions", self.succeed("check", key, self.feed))

    def test_a_chain_of_keys_that_cannot_be_read_is_not_begun_anew(self):
        self.add(57)
        self.succeed("new-key", self.folder / "next")
        (self.feed / "keys.txt").mkdir()
        self.fail_with("keys.txt", "rotate", self.folder / "key", self.folder / "next", self.feed)

    def test_a_feed_holds_a_month_unless_told(self):
        self.add(57)
        self.assertEqual(self.days_left(), 30)

    def test_a_feed_holds_a_day_to_a_leap_year(self):
        self.succeed("new-key", self.folder / "next")
        self.fail_with("--days takes 1 to 366", *self.addition(57, "--days", 0))
        self.assertEqual(self.content(), {})
        for build, days in ((57, 1), (58, 366)):
            self.add(build, "--days", days)
            self.assertEqual(self.days_left(), days)
        before = self.content()
        key, next_key = self.folder / "key", self.folder / "next"
        for days in (0, 367, 3_000_000, -1, "many", "1.5", ""):
            for command in (self.addition(59), ("withdraw", key, self.feed, 58), ("renew", key, self.feed),
                            ("rotate", key, next_key, self.feed)):
                self.fail_with("--days takes 1 to 366", *command, "--days", days)
        self.fail_with("--days takes 1 to 366", "renew", key, self.feed, "--days")
        self.assertEqual(self.content(), before)

    def test_a_feed_holds_as_long_as_the_one_before_unless_told(self):
        key, next_key = self.folder / "key", self.folder / "next"
        self.succeed("new-key", next_key)
        self.add(57, "--days", 90)
        for command in (self.addition(58), ("withdraw", key, self.feed, 57), ("renew", key, self.feed),
                        ("rotate", key, next_key, self.feed), ("renew", next_key, self.feed)):
            self.succeed(*command)
            self.assertEqual(self.days_left(), 90, command)
        self.succeed("renew", next_key, self.feed, "--days", 7)
        self.succeed("renew", next_key, self.feed)
        self.assertEqual(self.days_left(), 7)

    def test_checking_leaves_the_feeds_folder_alone(self):
        self.add(57)
        before = self.feed.stat().st_mtime_ns
        self.succeed("check", self.public_key, self.feed)
        self.assertEqual(self.feed.stat().st_mtime_ns, before)
        self.fail_with("/proc: ", "check", self.public_key, self.feed, TMPDIR="/proc")

    def test_a_text_that_clients_would_refuse_is_not_published(self):
        self.succeed(*self.add_with_notes(57, "x" * LONGEST_TEXT))
        before = self.content()
        self.fail_with("a text is too long", *self.add_with_notes(58, "x" * (LONGEST_TEXT + 1)))
        self.assertEqual(self.content(), before)

    def test_a_feed_that_clients_would_refuse_for_its_size_is_not_published(self):
        feed = self.feed / "appcast.xml"
        for build in range(10, 31):
            self.succeed(*self.add_with_notes(build, "€" * LONGEST_TEXT))  # three bytes each
        self.succeed(*self.add_with_notes(31, "x"))
        room = LARGEST_FEED - feed.stat().st_size + 1
        self.succeed("withdraw", self.folder / "key", self.feed, 31)
        notes = "€" * (room // 3) + "x" * (room % 3)
        before = self.content()
        self.fail_with("too large for clients", *self.add_with_notes(31, notes + "x"))
        self.assertEqual(self.content(), before)
        self.succeed(*self.add_with_notes(31, notes))
        self.assertEqual(feed.stat().st_size, LARGEST_FEED)
        self.assertIn("good: 22 versions", self.succeed("check", self.public_key, self.feed))

    def test_an_archive_stays_as_it_is_until_all_is_checked(self):
        self.add(57)
        self.succeed("withdraw", self.folder / "key", self.feed, 57)
        before = self.content()
        (self.version / "other").write_text("other")
        self.fail_with("a text is too long", *self.add_with_notes(57, "x" * (LONGEST_TEXT + 1)))
        self.assertEqual(self.content(), before)
        (self.version / "~").write_text("a name that no feed holds")
        self.fail_with("can't hold", *self.addition(57))
        self.assertEqual(self.content(), before)
        (self.version / "~").unlink()
        self.add(57)
        self.assertNotEqual(self.content()["vemo-57.tar.xz"], before["vemo-57.tar.xz"])
        self.assertEqual(set(self.content()), {"appcast.xml", "vemo-57.tar.xz"})
        self.assertEqual((self.feed / "vemo-57.tar.xz").stat().st_mode & 0o444, 0o444)
        self.assertIn("good: 1 versions", self.succeed("check", self.public_key, self.feed))

    def test_what_is_not_understood_is_told(self):
        self.fail_with("usage", "publish")
        self.fail_with("usage", "add", self.folder / "key")


if __name__ == "__main__":
    unittest.main()
