#!/usr/bin/python3
"""The pages show every key of both configuration files with its default, every choice of keys, and none besides."""

import math
import re
import unittest

from pages import SOURCE, SPAN, blocks_of_section, rows

SETTINGS_OF_THE_SERVICE = ("setup/Configuration", "setup/AccountSettings", "provider/ProviderSettings",
                           "speech/PocketsphinxEngine")
# What the page says of a key whose default isn't what it shows.
NO_DEFAULT = "an example|by default"


def source_of(path):
    return (SOURCE / path).read_text()


def shown_entries(heading):
    """Each key of the service that a section of the page shows, the comment above it, and its value."""
    for mark, block in blocks_of_section(SOURCE / "docs/self-hosting.md", heading):
        section, comment = None, ""
        for line in block.splitlines() if mark == "ini" else []:
            if entry := re.fullmatch(r"([a-z-]+) = (.*)", line):
                yield f"{section}.{entry[1]}", comment, entry[2]
            if title := re.fullmatch(r"\[(.+)\]", line):
                section = title[1]
            comment = line if line.startswith(";") else ""


def fields_of_structures():
    """Of each structure of the service's settings: type, name and initial value of its fields."""
    headers = "".join(source_of(f"service/src/{name}.h") for name in SETTINGS_OF_THE_SERVICE)
    structures = re.findall(r"^struct (\w+) \{\n(.*?)^\};", headers, re.MULTILINE | re.DOTALL)
    field = re.compile(r"^  (?:std::)?([\w:<>]+) (\w+)(?:\s*=\s*(.*?)|\{\s*(.*?)\});", re.MULTILINE | re.DOTALL)
    return {name: [(kind, field_name, assigned or braced) for kind, field_name, assigned, braced in field.findall(body)]
            for name, body in structures}


def as_in_a_file(kind, value):
    """What a file would say instead of what the source says; nothing for what is empty."""
    if kind == "bool":
        return {"true": "yes", "false": "no"}[value]
    if kind == "EngineName":
        return value.split("::")[1].lower()
    if texts := re.findall(r'"(.*?)"', value):
        return " ".join(texts)
    factors = [int(factor) for factor in value.replace("'", "").split(" * ") if factor.isdigit()]
    if not factors:
        return ""
    return str(math.prod(factors) // (1000 if kind == "chrono::milliseconds" else 1))


def default_values(source):
    """What each field has that no file names, by its path from the structure Configuration."""
    structures = fields_of_structures()
    values = {}
    for kind, name, value in structures["Configuration"]:
        values[name] = as_in_a_file(kind, value)
        for inner_kind, inner_name, inner_value in structures.get(kind, []):
            values[f"{name}.{inner_name}"] = as_in_a_file(inner_kind, inner_value)
    # Those that follow from the home, here that of the examples.
    folders = {"defaultFolder": "/home/me/.config/vemo-service", "dataFolder": "/home/me/.local/share/vemo-service"}
    made = r'configuration\.([\w.]+) = (?:DatabaseAddress::(sqlite)\()?(\w+)\(\) / "(.*?)"'
    for path, sqlite, folder, file in re.findall(made, source):
        values[path] = f"{'sqlite:' if sqlite else ''}{folders[folder]}/{file}"
    return values


class ServiceConfigurationTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        source = source_of("service/src/setup/Configuration.cpp")
        fields = re.findall(r'\{"([a-z-]+\.[a-z-]+)",\s*\{[^}]*?\(c\.([\w.]+)[,)]', source)
        values = default_values(source)
        self.keys = set(re.findall(r'\{"([a-z-]+\.[a-z-]+)"', source))
        self.defaults = {key: values[field] for key, field in fields}
        self.shown = [*shown_entries("Configuration"), *shown_entries("Local sign-in")]

    def test_the_page_has_each_key_and_no_other(self):
        self.assertEqual(self.keys, {key for key, _, _ in self.shown})

    def test_the_page_shows_the_default_of_each_key_where_its_comment_does_not_say_otherwise(self):
        shown = {key: value for key, comment, value in self.shown if not re.search(NO_DEFAULT, comment)}
        self.assertGreater(len(shown), 30)
        self.assertEqual({key: self.defaults[key] for key in shown}, shown)

    def test_what_has_no_default_is_said_to_have_none(self):
        for key, comment, _ in self.shown:
            if not self.defaults[key]:
                self.assertRegex(comment, NO_DEFAULT, key)


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
        built_in = re.findall(r"^      \.(\w+) = (?:QUrl\(u\"(.*?)\"_s\)|\{\}),$", self.source, re.MULTILINE)
        self.assertEqual({key: address or "empty" for key, address in built_in}, self.values)


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
