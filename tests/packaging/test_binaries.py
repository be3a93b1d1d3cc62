#!/usr/bin/python3
"""What people run is hardened, and holds no path of the machine that built it: every file that the packages bring
and the loader can load, and the program that signs releases."""

import os
import re
import subprocess
import tempfile
import unittest

from installation import BUILD, PROGRAMS, SOURCE, elf_files, install


def readelf(option, binary):
    return subprocess.run(["readelf", "--wide", option, str(binary)], capture_output=True, text=True,
                          check=True).stdout


class BinariesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory())
        install(cls.folder)
        signer = os.path.join(cls.folder, "vemo-release")
        subprocess.run(["strip", "-o", signer, BUILD / "bin" / "vemo-release"], check=True)
        cls.binaries = elf_files(cls.folder)

    def of_each(self):
        for binary in self.binaries:
            with self.subTest(binary=binary.name):
                yield binary

    def test_what_is_checked_is_everything_that_is_shipped(self):
        self.assertEqual({*PROGRAMS, "vemo-release", "vemo-windows.so"}, {binary.name for binary in self.binaries})

    def test_each_is_position_independent(self):
        for binary in self.of_each():
            self.assertRegex(readelf("-h", binary), r"Type:\s+DYN")
            if binary.suffix != ".so":
                self.assertRegex(readelf("-d", binary), r"FLAGS_1.*\bPIE\b")
            self.assertNotIn("TEXTREL", readelf("-d", binary))

    def test_relocations_are_read_only_and_resolved_at_the_start(self):
        for binary in self.of_each():
            self.assertIn("GNU_RELRO", readelf("-l", binary))
            self.assertRegex(readelf("-d", binary), r"FLAGS_1.*\bNOW\b")

    def test_the_stack_is_not_executable_and_guarded(self):
        for binary in self.of_each():
            self.assertRegex(readelf("-l", binary), r"GNU_STACK.*\sRW\s")
            self.assertIn("__stack_chk_fail", readelf("--dyn-syms", binary))

    def test_nothing_is_both_writable_and_executable(self):
        for binary in self.of_each():
            self.assertNotRegex(readelf("-l", binary), r"LOAD.*\bRWE\b")

    def test_checked_forms_of_the_c_library_are_used(self):
        for binary in self.of_each():
            self.assertRegex(readelf("--dyn-syms", binary), r"__(mem|str|v?s?n?printf)\w*_chk\b")

    def test_the_release_asks_for_each_protection_of_every_file_that_it_compiles(self):
        commands = re.findall(r"^build \S+\.o: .*\n(?:  .*\n)*?  FLAGS = (.*)$", (BUILD / "build.ninja").read_text(), re.MULTILINE)
        self.assertGreater(len(commands), 100)
        for flag in ("-D_FORTIFY_SOURCE=3", "-fstack-protector-strong", "-fstack-clash-protection"):
            self.assertEqual([], [line for line in commands if flag not in line][:3], flag)
        self.assertEqual([], [line for line in commands if re.search(r"-D_FORTIFY_SOURCE=[012]\b", line)])

    if os.uname().machine == "x86_64":  # the one ABI that has them
        def test_functions_that_can_be_jumped_to_begin_with_a_landing_pad(self):
            for binary in self.of_each():
                landing_pads = binary.read_bytes().count(b"\xf3\x0f\x1e\xfa")
                functions = readelf("--debug-dump=frames", binary).count(" FDE ")
                self.assertGreater(functions, 50)
                self.assertGreaterEqual(landing_pads, functions)

    def test_no_search_path_is_left(self):
        for binary in self.of_each():
            if binary.name != "vemo-release":  # stays in the build
                self.assertNotRegex(readelf("-d", binary), r"RPATH|RUNPATH")

    def test_no_path_of_the_source_is_in_the_code(self):
        for binary in self.of_each():
            self.assertEqual([], re.findall(re.escape(str(SOURCE)).encode() + rb"[^\0]*", binary.read_bytes())[:3])


if __name__ == "__main__":
    unittest.main()
