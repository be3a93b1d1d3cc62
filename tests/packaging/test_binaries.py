#!/usr/bin/python3
"""What people run is hardened, and holds no path of the machine that built it."""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["VEMO_BUILD"])
PROGRAMS = [BUILD / "bin" / name for name in ("vemo", "vemo-shape", "vemo-service")]
BINARIES = PROGRAMS + [BUILD / "lib" / "vemo" / "vemo-windows.so"]


def readelf(option, binary):
    return subprocess.run(["readelf", "--wide", option, str(binary)], capture_output=True, text=True,
                          check=True).stdout


class BinariesTest(unittest.TestCase):
    def of_each(self, binaries=None):
        for binary in binaries or BINARIES:
            with self.subTest(binary=binary.name):
                yield binary

    def test_programs_are_position_independent(self):
        for binary in self.of_each(PROGRAMS):
            self.assertRegex(readelf("-h", binary), r"Type:\s+DYN")
            self.assertRegex(readelf("-d", binary), r"FLAGS_1.*\bPIE\b")

    def test_relocations_are_read_only_and_resolved_at_the_start(self):
        for binary in self.of_each():
            self.assertIn("GNU_RELRO", readelf("-l", binary))
            self.assertRegex(readelf("-d", binary), r"BIND_NOW|FLAGS_1.*\bNOW\b")

    def test_the_stack_is_not_executable_and_guarded(self):
        for binary in self.of_each():
            self.assertRegex(readelf("-l", binary), r"GNU_STACK.*\sRW\s")
            self.assertIn("__stack_chk_fail", readelf("--dyn-syms", binary))

    def test_checked_forms_of_the_c_library_are_used(self):
        for binary in self.of_each(PROGRAMS):
            self.assertRegex(readelf("--dyn-syms", binary), r"__\w+_chk\b(?<!__stack_chk)")

    def test_the_release_asks_for_the_third_level_of_checks(self):
        commands = (BUILD / "build.ninja").read_text()
        self.assertIn("-D_FORTIFY_SOURCE=3", commands)
        self.assertNotRegex(commands, r"-D_FORTIFY_SOURCE=[012]\b")

    if os.uname().machine == "x86_64":  # the one ABI that has them
        def test_functions_that_can_be_jumped_to_begin_with_a_landing_pad(self):
            for binary in self.of_each():
                self.assertGreater(binary.read_bytes().count(b"\xf3\x0f\x1e\xfa"), 100)

    def test_no_search_path_is_left_in_an_installed_binary(self):
        for binary in self.of_each():
            installed = BUILD / "packaging" / "checked" / binary.name
            installed.parent.mkdir(exist_ok=True)
            subprocess.run(["strip", "-o", str(installed), str(binary)], check=True)
            self.assertNotRegex(readelf("-d", installed), r"RPATH|RUNPATH")

    def test_no_path_of_the_source_is_in_the_code(self):
        for binary in self.of_each():
            stripped = BUILD / "packaging" / "checked" / binary.name
            stripped.parent.mkdir(exist_ok=True)
            subprocess.run(["strip", "-o", str(stripped), str(binary)], check=True)
            found = re.findall(re.escape(str(SOURCE)).encode() + rb"[^\0]*", stripped.read_bytes())
            self.assertEqual([], found[:3])


if __name__ == "__main__":
    unittest.main()
