#!/usr/bin/python3
"""Troubleshooting explains every sentence with which Vemo and its service fail, and none that they don't say."""

import re
import unittest

from pages import SOURCE, SPAN, columns

# The state of things, said by the menu and `vemo status`.
STATUS = ("session/AppState.cpp", "session/DictationRemoteControl.cpp")
# Nothing is to be done about them, or they say it themselves.
SPEAKS_FOR_ITSELF = {
    "Cancelled", "You're not signed in.", "Couldn't reach Vemo. Check your connection and try again.",
    "Something went wrong. Please try again.", "We couldn't delete your account. Please try again or email us.",
}


def explained(heading):
    return {message for column, cell in columns(SOURCE / "docs/troubleshooting.md") if column == heading
            for message in re.findall(r'"([^"]+)"', cell)}


def sources(folder, *without):
    files = [file for file in sorted((SOURCE / folder).rglob("*.cpp")) if not str(file).endswith(without)]
    # A sentence may go on in the next line.
    return re.sub(r'"\s*\n\s*"', "", "".join(file.read_text() for file in files))


def told_in(context, source):
    told = re.findall(rf'(?:translate|QT_TRANSLATE_NOOP)\(\s*"{context}",\s*"([^"]+)"', source)
    return {message.replace("%1", "…") for message in told} - SPEAKS_FOR_ITSELF


class TroubleshootingTest(unittest.TestCase):
    maxDiff = None

    def test_the_pill_says_what_is_explained_and_nothing_else(self):
        self.assertEqual(told_in("Dictation", sources("src", *STATUS)), explained("the pill says"))

    def test_the_status_is_what_is_explained_and_nothing_else(self):
        explained_here = {span for column, cell in columns(SOURCE / "docs/troubleshooting.md") if column == "status"
                          for span in SPAN.findall(cell)}
        phases = set(re.findall(r'return u"(\w+)"_s', (SOURCE / "src/session/Phase.cpp").read_text()))
        texts = told_in("Dictation", (SOURCE / "src/session/AppState.cpp").read_text())
        # A status has no text while nothing is wrong, and says a phase by its name.
        texts = {text for text in texts if text != "Ready" and not text.endswith("…")}
        said = phases - {"error"} | {"error: …"} | {f"idle: {text}" for text in texts}
        self.assertEqual(said, explained_here)

    def test_signing_in_fails_with_what_is_explained_and_nothing_else(self):
        self.assertEqual(told_in("Account", sources("src")), explained("Vemo's window says"))

    def test_every_sentence_of_a_recogniser_is_explained(self):
        recognisers = sources("service/src/speech", "Recording.cpp")
        said = {message.strip() for message in re.findall(r'"(The [^"]+)"', recognisers)}
        self.assertGreater(len(said), 10)
        self.assertEqual(set(), said - explained("the service says"))

    def test_the_service_says_every_sentence_of_its_that_is_explained(self):
        source = sources("service/src")
        self.assertEqual([], [message for message in explained("the service says") if f'"{message}' not in source])

    def test_vemo_refuses_to_start_with_what_is_explained_and_nothing_else(self):
        source = sources("src/app") + sources("src/platform/xdg")
        said = set(re.findall(r'u"(Vemo (?:needs|doesn\'t answer)[^"]*)"', source))
        self.assertGreater(len(said), 3)
        self.assertEqual(said, {message.removesuffix("…") for message in explained("the terminal says")})


if __name__ == "__main__":
    unittest.main()
