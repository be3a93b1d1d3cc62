#!/usr/bin/python3
"""What is installed beside the programs is whole, and says of them what they say of themselves."""

import os
import pathlib
import re
import subprocess
import unittest

PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging"
BUILD = pathlib.Path(os.environ["VEMO_BUILD"])
CONFIGURED = BUILD / "packaging"
PROGRAMS = ("vemo", "vemo-shape", "vemo-service")


def output_of(*command):
    """Of a tool that tells by its status or by what it prints that something is wrong."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False,
                            stdin=subprocess.DEVNULL)
    return result.returncode, result.stdout + result.stderr


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


class CompletionsTest(unittest.TestCase):
    def complete(self, program, *words):
        function = "_" + program.replace("-", "_")
        script = (f"source {PACKAGING}/completions/{program}.bash; COMP_WORDS=({program} {' '.join(words)} ''); "
                  f"COMP_CWORD={len(words) + 1}; {function}; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
        return output_of("bash", "-c", script)[1].split()

    def test_a_first_word_is_offered_every_command(self):
        self.assertIn("toggle", self.complete("vemo"))
        self.assertIn("add-token", self.complete("vemo-service"))
        self.assertIn("--jsonl", self.complete("vemo-shape"))

    def test_nothing_follows_a_command_of_vemo(self):
        self.assertEqual([], self.complete("vemo", "toggle"))

    def test_a_switch_is_offered_both_its_values(self):
        self.assertIn("integrationSlack=false", self.complete("vemo-shape", "--set"))

    def test_each_shell_can_read_its_file(self):
        for program in PROGRAMS:
            self.assertEqual((0, ""), output_of("zsh", "-n", PACKAGING / "completions" / f"_{program}"))
            self.assertEqual((0, ""), output_of("fish", "-n", PACKAGING / "completions" / f"{program}.fish"))


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
    def test_the_services_unit_leaves_little_exposed(self):
        # The tool names its own limits: a verdict on a user's unit is that on a system's with the same lines.
        status, text = output_of("systemd-analyze", "security", "--offline=yes", "--threshold=19",
                                 CONFIGURED / "vemo-service.service")
        self.assertEqual(0, status, text)


if __name__ == "__main__":
    unittest.main()
