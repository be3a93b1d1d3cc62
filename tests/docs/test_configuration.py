#!/usr/bin/python3
"""The pages show every key of both configuration files, with its default, and none besides; and every choice of keys."""

import re
import unittest

from pages import SOURCE, SPAN, blocks, rows


def source_of(path):
    return (SOURCE / path).read_text()


def documented_keys():
    for mark, block in blocks(SOURCE / "docs/self-hosting.md"):
        section = None
        for line in block.splitlines() if mark == "ini" else []:
            if heading := re.fullmatch(r"\[(.+)\]", line):
                section = heading[1]
            elif section and (entry := re.match(r"([a-z-]+) = ", line)):
                yield f"{section}.{entry[1]}"


class ServiceConfigurationTest(unittest.TestCase):
    def test_the_page_has_each_key_and_no_other(self):
        source = source_of("service/src/setup/Configuration.cpp")
        self.assertEqual(set(re.findall(r'\{"([a-z-]+\.[a-z-]+)"', source)), set(documented_keys()))


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
