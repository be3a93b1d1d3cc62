#!/usr/bin/python3
"""vemo-shape from outside: what it writes, byte for byte, and what it refuses."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["VEMO_SHAPE"]


def entries(heard, written, pairs):
    return [{"id": "8C1F1D3E-0F9B-4C53-9E1D-3B7F4B0C9A11", heard: a, written: b} for a, b in pairs]


class ShapeTest(unittest.TestCase):
    def setUp(self):
        # Not below a folder called "tmp" or "build": a project there has no files.
        folder = tempfile.TemporaryDirectory(dir="/dev/shm")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_program(self, text, *options):
        data = text if isinstance(text, bytes) else text.encode()
        return subprocess.run([PROGRAM, *options], input=data, capture_output=True, timeout=60)

    def shaped(self, text, *options):
        done = self.run_program(text, *options)
        self.assertEqual(done.stderr, b"")
        self.assertEqual(done.returncode, 0)
        return done.stdout

    def refused(self, *options, text="x"):
        done = self.run_program(text, *options)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stderr.count(b"\n"), 1)
        self.assertTrue(done.stderr.startswith(b"vemo-shape: "))
        return done.stderr.decode()

    def file(self, name, content):
        path = self.folder / name
        path.write_text(content if isinstance(content, str) else json.dumps(content))
        return str(path)

    def test_nothing_is_added_to_the_text(self):
        self.assertEqual(self.shaped(""), b"")
        self.assertEqual(self.shaped("a memo"), b"a vemo")
        self.assertEqual(self.shaped("a memo\n"), b"a vemo\n")
        self.assertEqual(self.shaped("\ufeffa\r\n\n\0b"), "\ufeffa\r\n\n\0b".encode())

    def test_a_text_that_is_not_utf8_is_refused(self):
        self.assertIn("UTF-8", self.refused(text=b"a \xff b"))

    def test_the_application_in_front_decides_about_code(self):
        self.assertEqual(self.shaped("an api"), b"an api")
        self.assertEqual(self.shaped("an api", "--bundle-id", "com.microsoft.VSCode"), b"an API")
        self.assertEqual(self.shaped("an api", "--app-name", "Barcode Scanner"), b"an API")
        self.assertEqual(self.shaped("an api", "--app-name", "Zed"), b"an api")

    def test_the_lists_are_read_from_files(self):
        dictionary = self.file("d.json", entries("phrase", "replacement", [("foo", "$1 bar")]))
        snippets = self.file("s.json", entries("trigger", "snippet", [("my sign", "Yours,\nM.")]))
        self.assertEqual(
            self.shaped("Foo, my sign now", "--dictionary", dictionary, "--snippets", snippets),
            b"$1 bar, Yours,\nM. now")

    def test_people_and_channels_are_read_from_a_file(self):
        user = {"id": "U1", "name": "x", "realName": "Maria Gomez", "displayName": "mg", "isBot": False}
        channel = {"id": "C1", "name": "General", "isPrivate": False}
        slack = self.file("slack.json", {"users": [user], "channels": [channel]})
        self.assertEqual(self.shaped("tag maria in channel general", "--slack", slack), b"@mg #General")

    def test_files_of_the_workspace_are_tagged(self):
        (self.folder / "src").mkdir()
        (self.folder / "src" / "AppState.swift").touch()
        (self.folder / "LoginViewModel.ts").touch()
        self.assertEqual(
            self.shaped("open app state dot shift, look at login view dot ts", "--workspace", str(self.folder)),
            b"open @AppState.swift, look at @LoginViewModel.ts")

    def test_the_switches_are_set(self):
        text = "open notes dot md and tag Maria"
        self.assertEqual(self.shaped(text), b"open @Notes.md and @Maria")
        self.assertEqual(self.shaped(text, "--set", "integrationVSCode=false"),
                         b"open notes dot md and @Maria")
        self.assertEqual(
            self.shaped(text, "--set", "integrationVSCode=true", "--set", "integrationSlack=false"),
            b"open @Notes.md and tag Maria")

    def test_each_line_of_jsonl_is_a_text(self):
        lines = ["a memo", "two\nlines", "", '"\\ \u0001 \U0001F600']
        data = "".join(json.dumps(line) + "\n" for line in lines)
        shaped = self.shaped(data, "--jsonl").decode()
        self.assertEqual([json.loads(line) for line in shaped.splitlines()],
                         ["a vemo", "two\nlines", "", '"\\ \u0001 \U0001F600'])
        self.assertTrue(shaped.endswith("\n"))
        self.assertEqual(self.shaped('"a memo"', "--jsonl"), b'"a vemo"')
        self.assertEqual(self.shaped("", "--jsonl"), b"")

    def test_unpaired_surrogates_pass_through_jsonl(self):
        shaped = self.shaped('"\\ud83d api \\udc00 memo"\n', "--jsonl", "--app-name", "code")
        self.assertEqual(json.loads(shaped), "\ud83d API \udc00 vemo")

    def test_a_line_that_is_no_json_string_is_refused_after_those_before_it(self):
        for line in ("x", "1", "", '"a","b"', '"a"],["b"', '["a"]'):
            done = self.run_program('"memo"\n' + line + "\n", "--jsonl")
            self.assertEqual(done.returncode, 2, line)
            self.assertEqual(done.stdout, b'"vemo"\n')
            self.assertIn(b"line 2", done.stderr)

    def test_files_that_do_not_parse_are_refused(self):
        for option in ("--dictionary", "--snippets", "--slack"):
            for content in ("", "{", "17", '"a"', "[1]", '[{"id": "1"}]', '{"users": []}',
                            '{"users": {}, "channels": []}', '{"users": [{"id": "U"}], "channels": []}'):
                path = self.file("list.json", content)
                self.assertIn(path, self.refused(option, path))
            self.assertIn("nowhere", self.refused(option, str(self.folder / "nowhere")))
            self.assertIn("can't be read", self.refused(option, str(self.folder)))

    def test_options_that_make_no_sense_are_refused(self):
        self.refused("--nonsense")
        self.refused("--dictionary")
        self.refused("text")
        self.refused("--workspace", str(self.folder / "nowhere"))
        self.refused("--set", "integrationSlack")
        self.refused("--set", "integrationSlack=maybe")
        self.refused("--set", "showInDock=false")

    def test_a_text_that_cant_be_written_is_no_success(self):
        for options in ([], ["--jsonl"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([PROGRAM, *options], input=b'"memo"', stdout=full,
                                      stderr=subprocess.PIPE, timeout=60)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stderr, b"vemo-shape: standard output can't be written: No space left on device\n")

    def test_help_names_every_option(self):
        usage = self.shaped("", "--help").decode()
        for option in ("--bundle-id", "--app-name", "--dictionary", "--snippets", "--slack",
                       "--workspace", "--set", "--jsonl"):
            self.assertIn(option, usage)


if __name__ == "__main__":
    unittest.main()
