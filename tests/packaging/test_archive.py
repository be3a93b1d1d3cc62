#!/usr/bin/python3
"""The self-contained archive, packed from this build: the same bytes wherever it is packed, whole without what a
desktop may lack, with the terms of what it brings; it opens its windows, dictates by https and sounds by itself."""

import json
import os
import pathlib
import re
import ssl
import subprocess
import sys
import sysconfig
import tempfile
import unittest

from installation import BUILD, SOURCE, elf_files, output_of

sys.path.insert(0, str(SOURCE / "tests/desktop"))
from dictation_server import DictationServer  # noqa: E402
from vemo_program import Vemo, store_token  # noqa: E402
from virtual_desktop import wait_until  # noqa: E402

MEGABYTE = 1_000_000
SYSTEM = pathlib.Path("/usr/lib", sysconfig.get_config_var("MULTIARCH"))
# While it runs, by no name in a file; and what they are of the system's.
ASKED_FOR = {"libssl.so": "libssl.so.3", "libcrypto.so": "libcrypto.so.3",
             "libcanberra-pulse.so": "libcanberra-0.30/libcanberra-pulse.so"}
OF_THE_DESKTOP = {
    "libc.so.6", "libm.so.6", "libdl.so.2", "librt.so.1", "libpthread.so.0", "libresolv.so.2", "libstdc++.so.6", "libgcc_s.so.1",
    "libX11.so.6", "libX11-xcb.so.1", "libxcb.so.1", "libxcb-glx.so.0", "libxcb-randr.so.0", "libxcb-shm.so.0",
    "libxcb-sync.so.1", "libxcb-xfixes.so.0", "libGL.so.1", "libGLX.so.0", "libGLdispatch.so.0",
    "libpulse.so.0", "libfontconfig.so.1", "libfreetype.so.6", "libharfbuzz.so.0", "libglib-2.0.so.0", "libgobject-2.0.so.0",
    "libgio-2.0.so.0", "libdbus-1.so.3", "libz.so.1"}


def pack(folder):
    """As somebody does who stands there, where other things lie."""
    for other in ("vemo/settings", "vemo-0.0.1-x86_64.tar.xz"):
        (folder / other).parent.mkdir(parents=True, exist_ok=True)
        (folder / other).write_text("mine")
    subprocess.run([SOURCE / "tools/build-archive", "--build", BUILD, "--quick", "."], check=True, cwd=folder,
                   stdout=subprocess.DEVNULL)
    (archive,) = set(folder.glob("vemo-*.tar.xz")) - {folder / "vemo-0.0.1-x86_64.tar.xz"}
    return archive


def with_empty_files(version, folder):
    """The version's files by their names alone, since the real ones take minutes to pack, but for the program."""
    for file in (file for file in version.rglob("*") if file.is_file()):
        empty = folder / file.relative_to(version)
        empty.parent.mkdir(parents=True, exist_ok=True)
        empty.touch()
    (folder / "bin/vemo").write_text(f'#!/bin/sh\nexec "{version}/bin/vemo" "$@"\n')
    (folder / "bin/vemo").chmod(0o755)
    return folder


def names_in(binaries, kind):
    """What they call themselves (SONAME), or others (NEEDED)."""
    told = subprocess.run(["readelf", "-d", *binaries], capture_output=True, text=True, check=True).stdout
    return set(re.findall(rf"\({kind}\).*\[(.*)\]", told))


def libraries_of(process):
    maps = pathlib.Path("/proc", str(process.pid), "maps").read_text()
    return {pathlib.Path(path) for path in re.findall(r"/\S*\.so\b\S*", maps)}


def unknown_authority(folder):
    """The TLS of a server that nobody has reason to trust."""
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
                    "/CN=localhost", "-keyout", folder / "key.pem", "-out", folder / "cert.pem"], check=True,
                   capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(folder / "cert.pem", folder / "key.pem")
    return context


class ArchiveTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.archive = pack(cls.root / "one")
        cls.other = pack(cls.root / "another/and/longer")
        cls.home = cls.root / "home"
        (cls.home / ".local/opt").mkdir(parents=True)
        subprocess.run(["tar", "-C", cls.home / ".local/opt", "-xf", cls.archive], check=True)
        cls.copy = cls.home / ".local/opt/vemo"
        cls.version = (cls.copy / "current").resolve()
        cls.terms = cls.version / "share/doc"
        cls.brought = {file.name for file in (cls.version / "lib").iterdir() if file.is_file()}

    def packages(self):
        """Those that each file brought from the system comes from."""
        files = [SYSTEM / ASKED_FOR.get(file, file) for file in self.brought]
        for folder in ("plugins", "qml"):
            files += [SYSTEM / "qt6" / file.relative_to(self.version)
                      for file in (self.version / folder).rglob("*") if file.is_file()]
        names = {str(file).removeprefix("/usr") for file in files}
        told = subprocess.run(["dpkg-query", "-S", *names, *map("/usr{}".format, names)], capture_output=True, text=True,
                              check=False).stdout
        owners = {file.removeprefix("/usr"): owner.split(":")[0] for owner, file in re.findall(r"^(.*): (.*)$", told, re.M)}
        self.assertEqual(names, set(owners))
        return set(owners.values())

    def test_packed_in_another_folder_it_is_the_same_bytes(self):
        self.assertEqual(self.archive.read_bytes(), self.other.read_bytes())

    def test_nothing_else_is_touched_where_it_is_put(self):
        for folder in (self.archive.parent, self.other.parent):
            self.assertEqual({"vemo", "vemo-0.0.1-x86_64.tar.xz", self.archive.name}, {path.name for path in folder.iterdir()})
            self.assertEqual("mine", (folder / "vemo/settings").read_text())
            self.assertEqual("mine", (folder / "vemo-0.0.1-x86_64.tar.xz").read_text())

    def test_it_takes_no_more_than_the_page_on_installing_says(self):
        page = (SOURCE / "docs/installing.md").read_text()
        packed, unpacked = map(int, re.search(r"\((\d+) MB, (\d+) MB unpacked\)", page).groups())
        size = sum(file.lstat().st_size for file in self.copy.rglob("*"))
        self.assertLess(abs(size / MEGABYTE - unpacked), 5)
        self.assertLess(packed * MEGABYTE, self.archive.stat().st_size)  # it is packed quickly here
        self.assertLess(self.archive.stat().st_size, 1.7 * packed * MEGABYTE)

    def test_a_version_is_plain_files_and_one_link_leads_to_it(self):
        links = [path.relative_to(self.copy) for path in self.copy.rglob("*") if path.is_symlink()]
        self.assertEqual([pathlib.Path("current")], links)
        self.assertEqual(self.copy / "versions", self.version.parent)

    def test_it_brings_qt_and_what_a_desktop_may_lack_and_nothing_that_goes_unused(self):
        self.assertLessEqual({"libQt6Core.so.6", "libQt6Quick.so.6", "libicuuc.so.72", "libsodium.so.23", "libOpenGL.so.0",
                              "libEGL.so.1", "libbsd.so.0", "libgcrypt.so.20", *ASKED_FOR}, self.brought)
        needed = names_in(elf_files(self.version), "NEEDED")
        self.assertEqual(set(ASKED_FOR), self.brought - needed)

    def test_what_it_leaves_to_the_desktop_every_desktop_has(self):
        binaries = elf_files(self.version)
        missing = names_in(binaries, "NEEDED") - names_in(binaries, "SONAME")
        self.assertEqual(set(), {name for name in missing if not name.startswith("ld-linux")} - OF_THE_DESKTOP)
        # Older ones would break newer libraries there.
        self.assertEqual(set(), self.brought & OF_THE_DESKTOP)

    def test_every_library_is_looked_for_in_the_copy_first(self):
        for binary in elf_files(self.version):
            told = subprocess.run(["readelf", "-d", binary], capture_output=True, text=True, check=True).stdout
            (path,) = re.findall(r"R(?:UN)?PATH.*\[(.*)\]", told)
            self.assertEqual(self.version / "lib", (binary.parent / path.replace("$ORIGIN", ".")).resolve(), binary)

    def test_it_holds_the_terms_of_each_package_that_it_brings_files_of(self):
        packages = self.packages()
        self.assertLessEqual({"libqt6core6", "libssl3", "libcanberra-pulse", "qml6-module-qtquick",
                              "qml6-module-qtquick-controls"}, packages)
        for package in packages | {"vemo"}:
            self.assertGreater((self.terms / package / "copyright").stat().st_size, 100, package)

    def test_it_holds_the_texts_that_those_terms_refer_to(self):
        terms = " ".join(file.read_text(errors="replace") for file in self.terms.glob("*/copyright"))
        names = set(re.findall(r"common-licenses/([\w.-]*\w)", terms))
        self.assertLessEqual({"GPL-3", "LGPL-3", "LGPL-2.1"}, names)
        for name in names:
            self.assertGreater((self.terms / "common-licenses" / name).stat().st_size, 1000, name)

    def test_it_names_the_sources_of_each_of_them(self):
        told = subprocess.run(["dpkg-query", "-W", "-f", "  ${source:Package} ${source:Version}\n", *self.packages()],
                              capture_output=True, text=True, check=True).stdout
        listed = (self.terms / "SOURCES").read_text().splitlines()
        self.assertEqual(set(told.splitlines()), {line for line in listed if line.startswith("  ")})

    def test_the_lines_of_the_page_on_installing_put_it_into_the_menu(self):
        page = (SOURCE / "docs/installing.md").read_text()
        (lines,) = re.findall(r"into the menu.*?^```sh\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
        subprocess.run(["bash", "-euc", lines], check=True, env={"HOME": str(self.home), "PATH": os.environ["PATH"]})
        share = self.home / ".local/share"
        entry = share / "applications/brelmox.Vemo.desktop"
        self.assertEqual((0, ""), output_of("desktop-file-validate", entry))
        commands = re.findall(r"(?m)^Exec=(.*)$", entry.read_text())
        self.assertEqual([f"{self.copy}/current/bin/vemo{words}" for words in ("", " toggle", " quit")], commands)
        (icon,) = re.findall(r"(?m)^Icon=(.*)$", entry.read_text())
        self.assertIn("<svg", (share / f"icons/hicolor/scalable/apps/{icon}.svg").read_text())
        status, text = output_of(self.home / ".local/bin/vemo", "--version")
        self.assertEqual(0, status, text)

    def test_its_version_can_be_released(self):
        told = subprocess.run([self.version / "bin/vemo", "--check"], capture_output=True, text=True, check=True).stdout
        ((version, build),) = re.findall(r"^Vemo (\S+) \((\d+)\)$", told, re.MULTILINE)
        self.assertEqual(self.version.name, build)
        feed, key = self.root / "feed", self.root / "key"
        feed.mkdir()

        def release(*words):
            return subprocess.run([BUILD / "bin/vemo-release", *words], capture_output=True, text=True, check=True).stdout

        public_key = release("new-key", key).strip()
        release("add", key, feed, with_empty_files(self.version, self.root / "to release"), version, build)
        self.assertIn("good: 1 versions", release("check", public_key, feed))
        listed = (feed / "appcast.xml").read_text()
        self.assertEqual(len([file for file in self.version.rglob("*") if file.is_file()]), listed.count("<file "))
        page = (SOURCE / "docs/releasing.md").read_text()
        (kilobytes,) = map(int, re.findall(r"(\d+) KB for one of the\s+archive's", page))
        self.assertLess(abs(len(listed) / 1000 - kilobytes), 5)

    def test_its_windows_open_with_its_own_qt_and_its_icon(self):
        seen = subprocess.run([SOURCE / "tests/packaging/show_windows.py", "--programs", self.copy / "current/bin",
                               "--screenshots", self.root / "pictures"], capture_output=True, text=True, check=False)
        self.assertEqual(0, seen.returncode, seen.stderr)
        told = json.loads(seen.stdout)
        for kind in ("main", "settings"):  # where there is none, the window manager puts in one of 48
            self.assertIn(64, told[kind]["icons"], kind)
        qt = told["qt"]
        self.assertGreater(len(qt), 10)
        self.assertEqual([], [library for library in qt if not library.startswith(str(self.version))])

    def test_it_records_sounds_and_asks_by_https_with_its_own_libraries(self):
        os.environ["VEMO_PROGRAMS"] = str(self.copy / "current/bin")
        store_token("token")
        with DictationServer(tls=unknown_authority(self.root)) as server, Vemo(server.address) as vemo:
            vemo.start()
            own = {self.version / "lib" / name for name in ASKED_FOR}
            wait_until(lambda: own <= libraries_of(vemo.process), lambda: f"{own} in {libraries_of(vemo.process)}")
            # What the desktop's libraries need themselves may have come with them.
            theirs = {library for library in libraries_of(vemo.process) if not library.is_relative_to(self.version)}
            for name in self.brought - names_in(theirs, "NEEDED"):
                self.assertEqual([], [library for library in theirs if f"{library.name}.".startswith(f"{name}.")])


if __name__ == "__main__":
    unittest.main()
