#!/usr/bin/python3
"""The page on self-hosting shows every key that vemo-service reads, and none besides."""

import pathlib
import re
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]


def documented_keys():
    page = (SOURCE / "docs/self-hosting.md").read_text()
    for block in re.findall(r"^```ini\n(.*?)^```$", page, re.MULTILINE | re.DOTALL):
        section = None
        for line in block.splitlines():
            if heading := re.fullmatch(r"\[(.+)\]", line):
                section = heading[1]
            elif section and (entry := re.match(r"([a-z-]+) = ", line)):
                yield f"{section}.{entry[1]}"


class ConfigurationTest(unittest.TestCase):
    def test_the_page_has_each_key_and_no_other(self):
        source = (SOURCE / "service/src/setup/Configuration.cpp").read_text()
        self.assertEqual(set(re.findall(r'\{"([a-z-]+\.[a-z-]+)"', source)), set(documented_keys()))


if __name__ == "__main__":
    unittest.main()
