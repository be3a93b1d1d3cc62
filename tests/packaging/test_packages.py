#!/usr/bin/python3
"""The Debian packages, packed from this build: the same bytes wherever they are packed, nothing for lintian to remark
on, and nothing in them that isn't theirs."""

import pathlib
import re
import subprocess
import tempfile
import unittest

from installation import BUILD, SOURCE, output_of

PLACES = ("usr/bin/", "usr/lib/vemo/", "usr/lib/systemd/user/", "usr/share/")
OTHERS = ("vemo_0.0.1_amd64.deb", "_CPack_Packages/of-another-project", "letter.txt")
MEGABYTE = 1_000_000


def pack(folder):
    """As somebody does who stands there, where other things lie."""
    for other in OTHERS:
        (folder / other).parent.mkdir(parents=True, exist_ok=True)
        (folder / other).write_text("mine")
    subprocess.run([SOURCE / "tools/build-package", "--build", BUILD, "."], check=True, cwd=folder,
                   stdout=subprocess.DEVNULL)
    packages = sorted(path for path in folder.glob("*.deb") if path.name not in OTHERS)
    return {package.name.split("_")[0]: package for package in packages}


class PackagesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        root = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.packages = pack(root / "one")
        cls.others = pack(root / "another/and/longer")

    def entries(self, package):
        """Mode, owner and path of each."""
        listing = subprocess.run(["dpkg-deb", "--contents", self.packages[package]], capture_output=True, text=True,
                                 check=True).stdout
        return [(words[0], words[1], words[5].removeprefix("./")) for words in map(str.split, listing.splitlines())]

    def test_there_is_one_of_the_program_and_one_of_its_service(self):
        self.assertEqual(["vemo", "vemo-service"], sorted(self.packages))

    def test_packed_in_another_folder_they_are_the_same_bytes(self):
        for name, package in self.packages.items():
            self.assertEqual(package.read_bytes(), self.others[name].read_bytes(), name)

    def test_nothing_else_is_touched_where_they_are_put(self):
        for packages in (self.packages, self.others):
            folder = packages["vemo"].parent
            for other in OTHERS:
                self.assertEqual("mine", (folder / other).read_text())
            made = {package.name for package in packages.values()}
            self.assertEqual({other.split("/")[0] for other in OTHERS} | made, {path.name for path in folder.iterdir()})

    def test_lintian_has_nothing_to_remark_on(self):
        status, text = output_of("lintian", "--allow-root", "--fail-on", "error,warning", *self.packages.values())
        self.assertEqual((0, ""), (status, text))

    def test_everything_is_roots_for_all_to_read_and_in_the_packages_own_places(self):
        for package in self.packages:
            for mode, owner, path in self.entries(package):
                with self.subTest(path=path):
                    self.assertEqual("root/root", owner)
                    self.assertRegex(mode, r"^drwxr-xr-x$" if path.endswith("/") or not path else r"^-rw[x-]r-[x-]r-[x-]$")
                    self.assertTrue(any(path.startswith(place) or place.startswith(path) for place in PLACES), path)

    def test_no_script_of_theirs_runs_as_root(self):
        for package in self.packages.values():
            control = subprocess.run(["dpkg-deb", "--ctrl-tarfile", package], capture_output=True, check=True).stdout
            names = subprocess.run(["tar", "-t"], input=control, capture_output=True, check=True).stdout.decode().split()
            self.assertEqual({"./", "./control", "./md5sums"}, set(names))

    def test_they_start_the_programs_where_they_put_them(self):
        with tempfile.TemporaryDirectory() as folder:
            for package in self.packages.values():
                subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
            share = pathlib.Path(folder, "usr/share")
            started = (share / "dbus-1/services/brelmox.Vemo.service").read_text() + pathlib.Path(
                folder, "usr/lib/systemd/user/vemo-service.service").read_text()
            self.assertEqual({"/usr/bin/vemo", "/usr/bin/vemo-service"}, set(re.findall(r"^Exec(?:Start)?=(.*)$", started, re.M)))
            for entry in (share / "applications").glob("*.desktop"):
                for command in re.findall(r"^Exec=(\S+)", entry.read_text(), re.M):
                    self.assertTrue(pathlib.Path(folder, "usr/bin", command).exists(), command)

    def test_each_takes_about_a_megabyte_to_fetch(self):
        for name, package in self.packages.items():
            self.assertLess(package.stat().st_size, 1.5 * MEGABYTE, name)


if __name__ == "__main__":
    unittest.main()
