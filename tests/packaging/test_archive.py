#!/usr/bin/python3
"""The self-contained archive, packed from this build: the same bytes wherever it is packed, whole without what a
desktop may lack, and its windows open."""

import json
import pathlib
import re
import subprocess
import tempfile
import unittest

from installation import BUILD, SOURCE, elf_files

MEGABYTE = 1_000_000


def pack(folder):
    subprocess.run([SOURCE / "tools/build-archive", "--build", BUILD, "--quick", folder], check=True,
                   stdout=subprocess.DEVNULL)
    (archive,) = pathlib.Path(folder).glob("vemo-*.tar.xz")
    return archive


def needed_by(binary):
    told = subprocess.run(["readelf", "-d", binary], capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"\(NEEDED\).*\[(.*)\]", told))


class ArchiveTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.archive = pack(cls.root / "one")
        cls.other = pack(cls.root / "another/and/longer")
        home = cls.root / "home"
        home.mkdir()
        subprocess.run(["tar", "-C", home, "-xf", cls.archive], check=True)
        cls.copy = home / "vemo"
        cls.version = (cls.copy / "current").resolve()

    def test_packed_in_another_folder_it_is_the_same_bytes(self):
        self.assertEqual(self.archive.read_bytes(), self.other.read_bytes())

    def test_a_version_is_plain_files_and_one_link_leads_to_it(self):
        links = [path.relative_to(self.copy) for path in self.copy.rglob("*") if path.is_symlink()]
        self.assertEqual([pathlib.Path("current")], links)
        self.assertEqual(self.copy / "versions", self.version.parent)

    def test_it_brings_qt_and_what_a_desktop_may_lack_and_nothing_that_goes_unused(self):
        brought = {file.name for file in (self.version / "lib").iterdir() if file.is_file()}
        self.assertLessEqual({"libQt6Core.so.6", "libQt6Quick.so.6", "libicuuc.so.72", "libsodium.so.23"}, brought)
        needed = set().union(*map(needed_by, elf_files(self.version)))
        self.assertEqual(set(), brought - needed)
        # These and what they need themselves come with the desktop; older ones would break newer ones there.
        self.assertFalse({"libc.so.6", "libstdc++.so.6", "libGL.so.1", "libpulse.so.0", "libgio-2.0.so.0", "libmount.so.1",
                          "libz.so.1", "libfreetype.so.6", "libexpat.so.1"} & brought)

    def test_every_library_is_looked_for_in_the_copy_first(self):
        for binary in elf_files(self.version):
            told = subprocess.run(["readelf", "-d", binary], capture_output=True, text=True, check=True).stdout
            (path,) = re.findall(r"R(?:UN)?PATH.*\[(.*)\]", told)
            self.assertEqual(self.version / "lib", (binary.parent / path.replace("$ORIGIN", ".")).resolve(), binary)

    def test_its_windows_open_with_its_own_qt(self):
        seen = subprocess.run([SOURCE / "tests/packaging/show_windows.py", "--programs", self.copy / "current/bin",
                               "--screenshots", self.root / "pictures"], capture_output=True, text=True, check=False)
        self.assertEqual(0, seen.returncode, seen.stderr)
        qt = json.loads(seen.stdout)["qt"]
        self.assertGreater(len(qt), 10)
        self.assertEqual([], [library for library in qt if not library.startswith(str(self.version))])


if __name__ == "__main__":
    unittest.main()
