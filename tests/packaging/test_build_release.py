#!/usr/bin/python3
"""What tools/build-release is told of a version: it is told everywhere, and the next build doesn't inherit it."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from installation import SOURCE, output_of

A_DAY = "1709208000"  # 29 February 2024, noon


class ReleaseTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def configure(self, *options):
        """As far as everything that tells the version is written; returns the texts."""
        subprocess.run([SOURCE / "tools/build-release", "--target=help", self.folder, *options], check=True,
                       stdout=subprocess.DEVNULL, env=os.environ | {"SOURCE_DATE_EPOCH": A_DAY})
        written = self.folder / "packaging"
        return {name: (written / name).read_text() for name in ("brelmox.Vemo.metainfo.xml", "changelog", "man/vemo.1")}

    def number(self):
        cache = (self.folder / "CMakeCache.txt").read_text().splitlines()
        (number,) = (line.split("=")[1] for line in cache if line.startswith("VEMO_BUILD_NUMBER:"))
        return number

    def test_version_and_day_are_told_everywhere_and_forgotten_by_the_next_build(self):
        texts = self.configure("-DVEMO_VERSION=1.4.0", "-DVEMO_BUILD_NUMBER=57")
        self.assertEqual("57", self.number())
        for name, text in texts.items():
            self.assertIn("1.4.0", text, name)
        self.assertIn('date="2024-02-29"', texts["brelmox.Vemo.metainfo.xml"])
        self.assertIn('"2024-02-29"', texts["man/vemo.1"])
        self.assertIn("Thu, 29 Feb 2024 00:00:00 +0000", texts["changelog"])
        for name, text in self.configure().items():
            self.assertNotIn("1.4.0", text, name)
        self.assertEqual("1", self.number())

    def test_sources_without_a_history_need_their_time_told(self):
        shutil.copytree(SOURCE / "tools", self.folder / "tools")
        environment = {name: value for name, value in os.environ.items() if name != "SOURCE_DATE_EPOCH"}
        for tool in ("build-release", "build-package", "build-archive"):
            status, text = output_of(self.folder / "tools" / tool, env=environment)
            self.assertEqual(1, status)
            self.assertIn("Outside a clone, SOURCE_DATE_EPOCH has to say the time of the sources\n", text)


if __name__ == "__main__":
    unittest.main()
