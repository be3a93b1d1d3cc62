#!/usr/bin/python3
"""What is installed beside the programs is whole, and says of them what they say of themselves."""

import os
import pathlib
import re
import socket
import subprocess
import tempfile
import unittest

from installation import BUILD, CONFIGURED, PACKAGING, PROGRAMS, SOURCE, output_of

MANUALS = [f"{program}.1" for program in PROGRAMS] + ["vemo.conf.5", "vemo-service.conf.5"]


HIDDEN = {"vemo": {"open"}}  # for the desktop, not for people


def words_of_help(program):
    """The commands and long options that the program's own help names."""
    _, text = output_of(BUILD / "bin" / program, "--help")
    commands = re.findall(r"^  ([a-z][a-z-]+)(?=  | [A-Z])", text, re.MULTILINE)
    return set(commands) | set(re.findall(r"--[a-z][a-z-]+", text))


def manual_of(page):
    return (CONFIGURED / "man" / page).read_text().replace("\\-", "-")


def entries_of_manual(program):
    """What stands before each paragraph of its commands and options."""
    parts = re.split(r"^\.SH (.*)$", manual_of(f"{program}.1"), flags=re.MULTILINE)
    for title, text in zip(parts[1::2], parts[2::2]):
        if title in ("COMMANDS", "OPTIONS"):
            yield from re.findall(r"^\.TP\n\.B[RI]? (.*)$", text, re.MULTILINE)


def words_of_manual(program):
    pattern = r"(?<![\w\\-])(--[a-z][a-z-]+|[a-z][a-z-]+)"
    return set(re.findall(pattern, "\n".join(entries_of_manual(program))))


def words_of_completions(program):
    """What each shell is told to offer: by shell, commands and long options."""
    folder = PACKAGING / "completions"
    lists = re.findall(r"-W '([^']*)'|choices='(--[^']*)'", (folder / f"{program}.bash").read_text())
    zsh = (folder / f"_{program}").read_text()
    fish = (folder / f"{program}.fish").read_text()
    return {
        "bash": set(" ".join(map("".join, lists)).split()),
        "zsh": set(re.findall(r"(?<![\w-])(--[a-z-]+)(?=[\[}])|", zsh)) - {""} | set(re.findall(r"^ +([a-z-]+)\\:", zsh, re.M)),
        "fish": {f"--{word}" for word in re.findall(r" -l ([a-z-]+)", fish)}
                | set(re.findall(r"__fish_use_subcommand -a ([a-z-]+)", fish)),
    }


class ManualsTest(unittest.TestCase):
    def test_each_manual_is_free_of_warnings(self):
        for page in MANUALS:
            page = CONFIGURED / "man" / page
            self.assertEqual((0, ""), output_of("mandoc", "-Tlint", "-Wwarning", page))
            status, text = output_of("groff", "-man", "-ww", "-z", "-K", "utf8", page)
            self.assertEqual((0, ""), (status, text))
            self.assertEqual((0, ""), output_of("sh", "-c", 'man --warnings --local-file "$0" >/dev/null', page))

    def test_each_manual_and_completion_tells_the_commands_of_the_help_and_no_others(self):
        for program in PROGRAMS:
            words = words_of_help(program)
            self.assertGreater(len(words), 4, program)
            self.assertEqual(words | HIDDEN.get(program, set()), words_of_manual(program), program)
            for shell, offered in words_of_completions(program).items():
                self.assertEqual(words, offered, f"{program} in {shell}")

    def test_each_manual_that_one_points_to_is_there(self):
        for page in MANUALS:
            pages = {f"{name}.{section}" for name, section in re.findall(r"^\.BR (\S+) \((\d)\)", manual_of(page), re.M)}
            self.assertTrue(pages, page)
            self.assertLessEqual(pages, set(MANUALS), page)

    def test_each_manual_of_a_program_tells_its_exit_statuses(self):
        for program in PROGRAMS:
            for arguments, status in ((["--help"], 0), (["--nonsense"], 2)):
                self.assertEqual(status, output_of(BUILD / "bin" / program, *arguments)[0], program)
                self.assertRegex(manual_of(f"{program}.1").split(".SH EXIT STATUS")[1], rf"\.TP\n\.B {status}\n")


class ConfigurationManualsTest(unittest.TestCase):
    def values(self, page):
        """Section, key and value of each entry, in their order."""
        section = ""
        pattern = r'^\.SS (?P<section>\[.*\])$|^\.BI (\S+) " = " "?([^"\n]+)|^\.B (\w+)\n\.I (\S+)\n\.br$'
        for found in re.finditer(pattern, manual_of(page), re.MULTILINE):
            section = found["section"] or section
            if not found["section"]:
                yield section, found[2] or found[4], found[3] or found[5]

    def written(self, page):
        file = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()), page)
        lines, last = [], ""
        for section, key, value in self.values(page):
            lines += [section] if section != last else []
            lines.append(f"{key} = {value}")
            last = section
        file.write_text("\n".join(lines) + "\n")
        return file

    def test_the_manual_of_the_services_configuration_has_each_key_and_no_other(self):
        source = (SOURCE / "service/src/setup/Configuration.cpp").read_text()
        self.assertEqual(sorted(re.findall(r'\{"([a-z-]+\.[a-z-]+)"', source)),
                         sorted(f"{section[1:-1]}.{key}" for section, key, _ in self.values("vemo-service.conf.5")))

    def test_the_service_takes_each_value_that_the_manual_shows(self):
        status, text = output_of(BUILD / "bin/vemo-service", "--config", self.written("vemo-service.conf.5"), "stats")
        self.assertEqual(1, status, text)
        self.assertIn("enabled = yes in [accounts]", text)  # all that is missing

    def test_the_manual_of_the_programs_configuration_has_each_key_and_no_other(self):
        source = (SOURCE / "src/storage/DeploymentConfiguration.cpp").read_text()
        self.assertEqual(sorted(re.findall(r'(?:Address|Text)Key\{u"(\w+)"', source)),
                         sorted(key for _, key, _ in self.values("vemo.conf.5")))

    def test_the_manual_of_the_programs_configuration_tells_what_is_built_in(self):
        source = (SOURCE / "src/storage/DeploymentConfiguration.cpp").read_text()
        built_in = dict(re.findall(r'\.(\w+) = QUrl\(u"([^"]+)"_s\)', source))
        self.assertEqual(5, len(built_in))
        self.assertLessEqual(built_in.items(), {key: value for _, key, value in self.values("vemo.conf.5")}.items())

    def test_the_program_takes_each_value_that_the_manual_shows(self):
        home = self.written("vemo.conf.5").parent
        (home / "vemo").mkdir()
        (home / "vemo.conf.5").rename(home / "vemo/vemo.conf")
        environment = {"XDG_CONFIG_HOME": str(home), "HOME": str(home), "PATH": os.environ["PATH"]}
        self.assertEqual((1, "Vemo needs an X display; DISPLAY isn't set.\n"),
                         output_of(BUILD / "bin/vemo", env=environment))


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
    @classmethod
    def setUpClass(cls):
        cls.text = (CONFIGURED / "vemo-service.service").read_text()
        cls.home = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))

    def lines(self, name):
        return re.findall(rf"(?m)^{name}=(.*)$", self.text)

    def run_as_the_unit_does(self, configuration):
        """Its first lines, from a session that keeps its data elsewhere."""
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.home), "XDG_DATA_HOME": str(self.home / "elsewhere"),
                       **dict(line.replace("%h", str(self.home)).split("=", 1) for line in self.lines("Environment"))}
        (self.home / ".config/vemo-service").mkdir(parents=True, exist_ok=True)
        (self.home / ".config/vemo-service/vemo-service.conf").write_text(configuration)
        return subprocess.Popen([BUILD / "bin/vemo-service"], env=environment, text=True, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def test_systemd_understands_every_line_of_the_services_unit(self):
        file = self.home / "vemo-service.service"
        file.write_text(re.sub(r"(?m)^ExecStart=.*", f"ExecStart={BUILD}/bin/vemo-service", self.text).replace(
            "Documentation=man:vemo-service(1)\n", ""))  # not installed here
        self.assertEqual((0, ""), output_of("systemd-analyze", "verify", "--user", "--man=no", "--recursive-errors=no", file,
                                            env=os.environ | {"XDG_RUNTIME_DIR": str(self.home)}))

    def test_the_services_unit_leaves_little_exposed(self):
        # The tool names its own limits: a verdict on a user's unit is that on a system's with the same lines.
        status, text = output_of("systemd-analyze", "security", "--offline=yes", "--threshold=19",
                                 CONFIGURED / "vemo-service.service")
        self.assertEqual(0, status, text)

    def test_what_the_service_stores_lies_where_its_unit_lets_it_write(self):
        service = self.run_as_the_unit_does("[server]\nport = 0\n[accounts]\nenabled = yes\n")
        self.addCleanup(service.communicate)
        self.addCleanup(service.terminate)
        self.assertRegex(service.stdout.readline(), "^Listening on ")
        (database,) = self.home.rglob("accounts.db")
        (writable,) = self.lines("ReadWritePaths")
        self.assertIn(f"-{database.parent}", writable.replace("%h", str(self.home)).split())
        self.assertIn(str(database.parent), self.lines("ExecStartPre")[0].replace("%h", str(self.home)).split())

    def test_a_configuration_that_it_cant_use_is_not_tried_again_and_a_port_that_is_taken_is(self):
        (final,) = self.lines("RestartPreventExitStatus")
        self.assertEqual(["on-failure"], self.lines("Restart"))
        wrong = self.run_as_the_unit_does("[server]\nport = many\n")
        wrong.communicate()
        self.assertEqual(final, str(wrong.returncode))
        with socket.create_server(("127.0.0.1", 0)) as taken:
            unlucky = self.run_as_the_unit_does(f"[server]\nport = {taken.getsockname()[1]}\n")
            unlucky.communicate()
            self.assertGreater(unlucky.returncode, 0)
            self.assertNotEqual(final, str(unlucky.returncode))

    def test_what_fails_again_and_again_comes_to_an_end(self):
        (limit,), (starts,), (pause,) = map(self.lines, ("StartLimitIntervalSec", "StartLimitBurst", "RestartSec"))
        self.assertRegex(limit, "^[0-9]+min$")
        self.assertLess(int(starts) * (int(pause) + 1), int(limit.removesuffix("min")) * 60)


if __name__ == "__main__":
    unittest.main()
