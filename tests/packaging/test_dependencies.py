#!/usr/bin/python3
"""What tools/install-dependencies would install where nothing is installed yet: no more than each purpose takes."""

import os
import pathlib
import tempfile
import unittest

from installation import SOURCE, output_of

PACKING = {"dpkg-dev", "file", "patchelf", "binutils", "xz-utils"}
CHECKING = {"libgtest-dev", "libgmock-dev", "libbenchmark-dev"}
SERVERS_AND_BROWSERS = {"nginx-light", "postgresql", "chromium", "firefox-esr", "systemd-container", "debootstrap"}


class DependenciesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))

    def ask(self, installed, *arguments):
        """On a system where these are installed."""
        query = self.folder / "dpkg-query"
        query.write_text("#!/bin/sh\n" + "".join(f"echo '{package} installed'\n" for package in installed))
        query.chmod(0o755)
        return output_of(SOURCE / "tools/install-dependencies", "--check", *arguments,
                         env={"PATH": f"{self.folder}:{os.environ['PATH']}"})

    def missing(self, *arguments, installed=()):
        status, text = self.ask(installed, *arguments)
        self.assertEqual((1, "missing: "), (status, text[:9]))
        return set(text.removeprefix("missing: ").split())

    def test_who_makes_packages_gets_what_packs_and_no_servers(self):
        packages = self.missing("package")
        self.assertLessEqual({"clang-19", "cmake", "qt6-base-dev"} | PACKING, packages)
        self.assertFalse((SERVERS_AND_BROWSERS | CHECKING) & packages)

    def test_who_builds_and_runs_gets_no_servers_and_nothing_that_packs(self):
        packages = self.missing("build")
        self.assertLessEqual({"clang-19", "cmake", "qt6-base-dev"} | CHECKING, packages)
        self.assertFalse((SERVERS_AND_BROWSERS | PACKING) & packages)

    def test_who_tests_gets_everything_also_unasked(self):
        packages = self.missing("test")
        self.assertLessEqual(self.missing("package") | self.missing("build") | SERVERS_AND_BROWSERS, packages)
        self.assertEqual(packages, self.missing())

    def test_only_what_is_missing_is_named(self):
        everything = self.missing("package")
        self.assertEqual({"cmake"}, self.missing("package", installed=everything - {"cmake"}))
        self.assertEqual((0, ""), self.ask(everything, "package"))

    def test_another_word_is_refused_with_the_usage(self):
        status, text = self.ask((), "everything")
        self.assertEqual(2, status)
        self.assertTrue(text.startswith("usage: tools/install-dependencies"), text)


if __name__ == "__main__":
    unittest.main()
