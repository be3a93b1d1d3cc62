#!/usr/bin/python3
"""What stands in for the commands of the documentation that aren't run is there. usage: test_exceptions.py BUILD"""

import json
import os
import subprocess
import sys
import unittest

from exceptions import EXCEPTIONS
from pages import SOURCE

BUILD = sys.argv.pop(1)


class ExceptionsTest(unittest.TestCase):
    def test_what_covers_each_of_them_is_there(self):
        listing = subprocess.run(["ctest", "--test-dir", BUILD, "--show-only=json-v1"], capture_output=True, text=True,
                                 check=True).stdout
        tests = {test["name"] for test in json.loads(listing)["tests"]}
        self.assertIn("documentation_exceptions", tests)
        for exception in EXCEPTIONS:
            script = SOURCE / exception.covered_by
            with self.subTest(exception.command):
                self.assertTrue(exception.covered_by in tests or script.is_file() and os.access(script, os.X_OK))

    def test_a_script_that_covers_one_runs_it(self):
        shared = (SOURCE / "tools/fresh-debian").read_text()
        for exception in EXCEPTIONS:
            if not exception.covered_by.startswith("tools/"):
                continue
            script = (SOURCE / exception.covered_by).read_text() + shared
            # Names and places are its own.
            words = [word.split("=")[0] for word in exception.command.split()]
            words = [word for word in words if word != "sudo" and ("/" not in word or word.startswith("tools/"))]
            with self.subTest(exception.command):
                self.assertEqual([], [word for word in words if word not in script])


if __name__ == "__main__":
    unittest.main()
