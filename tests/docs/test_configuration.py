#!/usr/bin/python3
"""The pages show every key of both configuration files, with its default, and none besides; and every choice of keys."""

import math
import re
import unittest

from pages import FENCE, SOURCE, SPAN, rows


def source_of(path):
    return (SOURCE / path).read_text()


def shown_entries(heading):
    """Each key of the service that a section of the page shows in its blocks, the comment above it, and its value."""
    section_of_page = re.split(r"^## ", (SOURCE / "docs/self-hosting.md").read_text().split(f"{heading}\n")[1], flags=re.MULTILINE)[0]
    for mark, block in FENCE.findall(section_of_page):
        section, comment = None, ""
        for line in block.splitlines() if mark == "ini" else []:
            if entry := re.fullmatch(r"([a-z-]+) = (.*)", line):
                yield f"{section}.{entry[1]}", comment, entry[2]
            if title := re.fullmatch(r"\[(.+)\]", line):
                section = title[1]
            comment = line if line.startswith(";") else ""


def default_values(source):
    """What each field of the service's configuration has from the start, as a file would say it."""
    headers = "".join(source_of(f"service/src/{name}.h") for name in (
        "setup/Configuration", "setup/AccountSettings", "provider/ProviderSettings", "speech/PocketsphinxEngine"))
    structures = dict(re.findall(r"^struct (\w+) \{\n(.*?)^\};", headers, re.MULTILINE | re.DOTALL))
    fields = {name: re.findall(r"^  (?:std::)?([\w:<>]+) (\w+)(?:\s*=\s*(.*?)|\{(.*?)\});", body, re.MULTILINE | re.DOTALL)
              for name, body in structures.items()}
    values = {}
    for kind, name, *value in fields["Configuration"]:
        inner = [(f"{name}.{field}", type_, *rest) for type_, field, *rest in fields.get(kind, [])]
        for path, type_, assigned, braced in inner or [(name, kind, *value)]:
            values[path] = as_in_a_file(type_, (assigned or braced).strip())
    home = {"defaultFolder": "/home/me/.config/vemo-service", "dataFolder": "/home/me/.local/share/vemo-service"}
    made = r'configuration\.([\w.]+) = (?:DatabaseAddress::(sqlite)\()?(\w+)\(\) / "(.*?)"'
    for path, sqlite, folder, file in re.findall(made, source):
        values[path] = f"{'sqlite:' if sqlite else ''}{home[folder]}/{file}"
    return values


def as_in_a_file(kind, value):
    if kind == "bool":
        return {"true": "yes", "false": "no"}[value]
    if kind == "EngineName":
        return value.split("::")[1].lower()
    if texts := re.findall(r'"(.*?)"', value):
        return " ".join(texts)
    numbers = [int(number) for number in value.replace("'", "").split(" * ") if number.isdigit()]
    if not numbers:
        return ""
    return str(math.prod(numbers) // (1000 if kind == "chrono::milliseconds" else 1))


class ServiceConfigurationTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.source = source_of("service/src/setup/Configuration.cpp")
        self.shown = list(shown_entries("## Configuration")) + list(shown_entries("## Local sign-in"))

    def test_the_page_has_each_key_and_no_other(self):
        keys = set(re.findall(r'\{"([a-z-]+\.[a-z-]+)"', self.source))
        self.assertEqual(keys, {key for key, _, _ in self.shown})

    def test_the_page_shows_the_defaults(self):
        """Of each key but where a comment says otherwise."""
        fields = dict(re.findall(r'\{"([a-z-]+\.[a-z-]+)",\s*\{[^}]*?\(c\.([\w.]+)[,)]', self.source))
        defaults = default_values(self.source)
        shown = {key: value for key, comment, value in self.shown if not re.search("an example|by default", comment)}
        self.assertGreater(len(shown), 30)
        self.assertEqual({key: defaults[fields[key]] for key in shown}, shown)

    def test_what_has_no_default_is_shown_as_an_example(self):
        fields = dict(re.findall(r'\{"([a-z-]+\.[a-z-]+)",\s*\{[^}]*?\(c\.([\w.]+)[,)]', self.source))
        defaults = default_values(self.source)
        for key, comment, _ in self.shown:
            if defaults[fields[key]] == "":
                self.assertRegex(comment, "an example|by default", key)


class DeploymentConfigurationTest(unittest.TestCase):
    def setUp(self):
        self.source = source_of("src/storage/DeploymentConfiguration.cpp")
        table = [row for row in rows(SOURCE / "docs/configuration.md") if "key" in row]
        self.values = {SPAN.findall(row["key"])[0]: row["value if not named"].strip("`") for row in table}

    def test_the_table_has_each_key_and_no_other(self):
        keys = re.findall(r"\b(?:Address|Text)Key\{u\"(\w+)\"", self.source)
        self.assertGreater(len(keys), 5)
        self.assertEqual(sorted(keys), sorted(self.values))

    def test_the_table_has_the_value_of_each_key_that_is_not_named(self):
        built_in = {key: address or "empty" for key, address in
                    re.findall(r"^      \.(\w+) = (?:QUrl\(u\"(.*?)\"_s\)|\{\}),$", self.source, re.MULTILINE)}
        self.assertEqual(built_in, self.values)


class KeyChoicesTest(unittest.TestCase):
    def test_the_table_has_the_choices_of_the_settings_window_and_no_other(self):
        presets = re.findall(r'\{(?:modifier|chord)\(u"(\w+)"_s.*?\)?\),\s*QT_TRANSLATE_NOOP\("Keys", "(.*?)"\)',
                             source_of("src/desktop/HotkeyChoices.cpp"))
        self.assertGreater(len(presets), 5)
        table = [row for row in rows(SOURCE / "docs/keys.md") if "in the settings window" in row]
        choices = {row["choice"].strip("`"): row["in the settings window"] for row in table}
        self.assertIn("custom", choices)
        self.assertEqual(presets, [choice for choice in choices.items() if choice[0] != "custom"])


if __name__ == "__main__":
    unittest.main()
