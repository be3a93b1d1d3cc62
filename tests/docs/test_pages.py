#!/usr/bin/python3
"""What the documentation promises about itself: every command is run or stands in the table of those that aren't,
every page is listed, and every link and path leads somewhere."""

import re
import unittest

from exceptions import EXCEPTIONS
from pages import (IN_THE_TEXT, LINK, PAGES, SOURCE, SPAN, blocks, columns, commands_in_the_text, commands_of, is_run,
                   prose)

MARKS = {"sh", "sh run", "sh run desktop", "text", "ini", "json", "nginx"}
FOLDERS = ("src/", "tests/", "tools/", "bench/", "docs/", "cmake/", "packaging/", "resources/", "service/")


def anchors(page):
    """What links may name behind "#": the headings, as they are turned into identifiers."""
    headings = re.findall(r"^#+ (.*)$", prose(page), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def name(page):
    return str(page.relative_to(SOURCE))


def commands_that_are_run():
    return {command for page in [*PAGES, IN_THE_TEXT] for mark, script in blocks(page) if is_run(mark)
            for command in commands_of(script)}


def commands_that_are_told(page):
    for mark, script in blocks(page):
        if mark == "sh":
            yield from commands_of(script)
    yield from commands_in_the_text(page)


class CommandsTest(unittest.TestCase):
    def test_every_block_says_what_it_is(self):
        self.assertEqual([], [(name(page), mark) for page in PAGES for mark, _ in blocks(page) if mark not in MARKS])

    def test_no_block_is_told_by_its_indentation(self):
        indented = re.compile(r"^\n    \S.*", re.MULTILINE)
        self.assertEqual([], [(name(page), line) for page in PAGES for line in indented.findall(prose(page))])

    def test_every_command_is_run_or_stands_among_the_exceptions(self):
        run = commands_that_are_run()
        covered = run | {exception.command for exception in EXCEPTIONS}
        # The mere name of a program stands for all that it does.
        covered |= {command.split()[0] for command in covered}
        self.assertEqual([], [(name(page), command) for page in PAGES for command in commands_that_are_told(page)
                              if command not in covered])

    def test_every_exception_is_told_on_a_page_and_run_by_none(self):
        told = {command for page in PAGES for command in commands_that_are_told(page)}
        run = commands_that_are_run()
        for exception in EXCEPTIONS:
            self.assertIn(exception.command, told)
            self.assertNotIn(exception.command, run)
            self.assertTrue(exception.reason)


class LinksTest(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        for page in PAGES:
            for link in filter(None, (link for pair in LINK.findall(prose(page)) for link in pair)):
                with self.subTest(page=name(page), link=link):
                    path, _, anchor = link.partition("#")
                    target = (page.parent / path).resolve() if path else page
                    self.assertTrue(target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors(target))

    def test_every_file_of_the_source_that_is_named_is_there(self):
        for page in PAGES:
            for span in SPAN.findall(prose(page)):
                path = span.split()[0].rstrip("/")
                if span.startswith(FOLDERS) and not re.search(r"\b(Fake)?thing\b", path, re.IGNORECASE):
                    base = SOURCE / "service" if page.parent.name == "service" else SOURCE
                    with self.subTest(page=name(page), path=path):
                        self.assertTrue((SOURCE / path).exists() or (base / path).exists())

    def test_the_picture_of_the_house_has_every_folder_and_no_other(self):
        (picture,) = (text for mark, text in blocks(SOURCE / "docs/architecture.md") if mark == "text")
        for top, drawn in (("src", r"^  (\w+)/ "), (".", r"^(\w+)/")):
            folders = {path.name for path in (SOURCE / top).iterdir() if path.is_dir()}
            self.assertEqual({name for name in folders if not name.startswith((".", "_", "build"))}, set(re.findall(drawn, picture, re.MULTILINE)))

    def test_the_picture_of_the_service_has_every_folder_and_no_other(self):
        (picture,) = (text for mark, text in blocks(SOURCE / "service/README.md") if mark == "text")
        for top, drawn in (("src", r"^  (\w+)/ "), (".", r"^(\w+)/")):
            folders = {path.name for path in (SOURCE / "service" / top).iterdir() if path.is_dir()}
            self.assertEqual(folders, set(re.findall(drawn, picture, re.MULTILINE)))

    def test_the_picture_of_the_service_names_classes_that_are_there(self):
        (picture,) = (text for mark, text in blocks(SOURCE / "service/README.md") if mark == "text")
        sources = {path.stem for path in (SOURCE / "service/src").rglob("*.[hc]*")}
        self.assertEqual(set(), set(re.findall(r"\b[A-Z]\w+[A-Z]\w+\b", picture)) - sources)

    def test_every_page_is_listed(self):
        listed = re.findall(r"^- \[.*?\]\((.*?)\)", (SOURCE / "docs/README.md").read_text(), re.MULTILINE)
        listed = [(SOURCE / "docs" / link).resolve() for link in listed]
        pages = set(PAGES) - {SOURCE / "README.md", SOURCE / "docs/README.md"}
        self.assertEqual(pages, set(listed))
        self.assertEqual(len(listed), len(set(listed)), "a page is listed twice")

    def test_the_first_page_leads_to_the_list(self):
        self.assertIn("](docs/README.md)", (SOURCE / "README.md").read_text())


if __name__ == "__main__":
    unittest.main()
