#!/usr/bin/python3
"""What is installed beside the programs is whole, and says of them what they say of themselves."""

import os
import pathlib
import re
import tempfile
import unittest

from installation import BUILD, CONFIGURED, PACKAGING, PROGRAMS, output_of


def words_of_help(program):
    """The commands and long options that the program's own help names."""
    _, text = output_of(BUILD / "bin" / program, "--help")
    commands = re.findall(r"^  ([a-z][a-z-]+)(?=  | [A-Z])", text, re.MULTILINE)
    return set(commands) | set(re.findall(r"--[a-z][a-z-]+", text))


class ManualsTest(unittest.TestCase):
    def test_each_manual_is_free_of_warnings(self):
        for program in PROGRAMS:
            page = CONFIGURED / "man" / f"{program}.1"
            self.assertEqual((0, ""), output_of("mandoc", "-Tlint", "-Wwarning", page))
            status, text = output_of("groff", "-man", "-ww", "-z", "-K", "utf8", page)
            self.assertEqual((0, ""), (status, text))
            self.assertEqual((0, ""), output_of("sh", "-c", 'man --warnings --local-file "$0" >/dev/null', page))

    def test_each_manual_and_completion_tells_every_command_of_the_help(self):
        for program in PROGRAMS:
            words = words_of_help(program)
            self.assertGreater(len(words), 4, program)
            manual = (CONFIGURED / "man" / f"{program}.1").read_text().replace("\\-", "-")
            bash = (PACKAGING / "completions" / f"{program}.bash").read_text()
            zsh = (PACKAGING / "completions" / f"_{program}").read_text()
            fish = (PACKAGING / "completions" / f"{program}.fish").read_text()
            for word in words:
                with self.subTest(program=program, word=word):
                    self.assertIn(word, manual)
                    self.assertIn(word, bash)
                    self.assertIn(word, zsh)
                    self.assertRegex(fish, rf"-(l|a) {word.lstrip('-')}\b")


class DesktopTest(unittest.TestCase):
    def test_the_desktop_entries_are_valid(self):
        for entry in PACKAGING.glob("*.desktop"):
            self.assertEqual((0, ""), output_of("desktop-file-validate", entry))

    def test_the_metadata_is_valid(self):
        # The bus knows this name already, and it is no domain.
        status, text = output_of("appstreamcli", "validate", "--no-net",
                                 "--override=cid-desktopapp-is-not-rdns=info",
                                 CONFIGURED / "brelmox.Vemo.metainfo.xml")
        self.assertEqual(0, status, text)

    def test_the_names_on_bus_desktop_and_in_metadata_agree(self):
        name = "brelmox.Vemo"
        metadata = (CONFIGURED / f"{name}.metainfo.xml").read_text()
        self.assertIn(f"<id>{name}</id>", metadata)
        self.assertIn(f'<launchable type="desktop-id">{name}.desktop</launchable>', metadata)
        self.assertIn(f'<dbus type="user">{name}</dbus>', metadata)
        self.assertIn(f"Name={name}\n", (CONFIGURED / f"{name}.service").read_text())
        self.assertIn(f"Icon={name}\n", (PACKAGING / f"{name}.desktop").read_text())


class UnitTest(unittest.TestCase):
    def test_systemd_understands_every_line_of_the_services_unit(self):
        unit = (CONFIGURED / "vemo-service.service").read_text()
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "vemo-service.service"
            file.write_text(re.sub(r"(?m)^ExecStart=.*", f"ExecStart={BUILD}/bin/vemo-service", unit).replace(
                "Documentation=man:vemo-service(1)\n", ""))  # not installed here
            self.assertEqual((0, ""), output_of("systemd-analyze", "verify", "--user", "--man=no", "--recursive-errors=no", file,
                                                env=os.environ | {"XDG_RUNTIME_DIR": folder}))

    def test_the_services_unit_leaves_little_exposed(self):
        # The tool names its own limits: a verdict on a user's unit is that on a system's with the same lines.
        status, text = output_of("systemd-analyze", "security", "--offline=yes", "--threshold=19",
                                 CONFIGURED / "vemo-service.service")
        self.assertEqual(0, status, text)


if __name__ == "__main__":
    unittest.main()
