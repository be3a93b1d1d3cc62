#!/usr/bin/python3
"""A dictation that is sent in pieces while it is still spoken: the real program, service and recogniser."""

import difflib
import json
import pathlib
import re
import subprocess
import tempfile
import unittest
import urllib.parse
import wave

import editors
from companion_service import CompanionService
from demonstration import shaped_text
from dictation_server import RecordingProxy
from vemo_program import Vemo

READINGS = pathlib.Path("/usr/share/pocketsphinx/test/data/librivox")
RECOGNITION_LIMIT_SECONDS = 300


def words(text):
    return re.findall(r"[a-z']+", text.lower())


def write_reading(path):
    """Reads a page of a novel, its first sentence once more at the end; returns the words in it."""
    sentences = dict(re.match(r"<s> (.*) </s> \((.*)\)", line).groups()[::-1]
                     for line in (READINGS / "transcription").read_text().splitlines())
    order = [*sentences, next(iter(sentences))]
    with wave.open(str(path), "wb") as page:
        page.setparams((1, 2, 16000, 0, "NONE", ""))
        for name in order:
            with wave.open(str(READINGS / f"{name}.wav")) as sentence:
                page.writeframes(sentence.readframes(sentence.getnframes()))
    return [word for name in order for word in words(sentences[name])]


class Pieces:
    """What a proxy has seen of one dictation."""

    def __init__(self, proxy):
        self._proxy = proxy

    def _exchanges(self, path):
        """The queries, requests and texts. Where the machine is slow, a request may have a second copy."""
        for exchange in list(self._proxy.exchanges):
            parts = urllib.parse.urlsplit(exchange.path)
            if parts.path == path and exchange.status == 200:
                text = json.loads(exchange.answer)["transcription"]
                yield urllib.parse.parse_qs(parts.query), exchange.request, text

    def chunks(self):
        """The texts, by index."""
        return {int(query["chunk_index"][0]): text for query, _, text in self._exchanges("/desktop/dictate/chunk")}

    def stitched(self):
        """The texts as they were sent to be formatted, and what came of them."""
        for _, request, text in self._exchanges("/desktop/dictate/finalize"):
            return json.loads(request)["rawTranscript"], text
        return None


class LongDictationTest(unittest.TestCase):
    def test_half_a_minute_of_speech_leaves_in_pieces_and_arrives_once_as_a_whole(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        page = pathlib.Path(folder) / "page.wav"
        said = write_reading(page)
        service = self.enterContext(CompanionService(folder))
        proxy = self.enterContext(RecordingProxy(service.address))
        vemo = self.enterContext(Vemo(proxy.address))
        editor = self.enterContext(editors.Mousepad())
        pieces = Pieces(proxy)

        vemo.start()
        speech = subprocess.Popen(["paplay", "--device=mic", page])
        self.addCleanup(speech.kill)
        vemo.await_logged("transcribeChunk: sending chunk #0 ")
        self.assertIsNone(speech.poll(), "the first piece has left only after the speech")
        vemo.await_status("recording")
        self.assertEqual(editor.text(), "")
        speech.wait(RECOGNITION_LIMIT_SECONDS)
        vemo.stop()
        vemo.await_dictated(limit_seconds=RECOGNITION_LIMIT_SECONDS)

        chunks = pieces.chunks()
        self.assertEqual(sorted(chunks), [0, 1, 2])
        raw, final = pieces.stitched()
        self.assertEqual(raw.split(), " ".join(chunks[index] for index in range(3)).split())
        self.assertEqual(shaped_text(vemo), final)
        # An editor that stalls is too late for the text, and never has it twice.
        self.assertIn(editor.text(), ("", final))
        heard = words(raw)
        # The recogniser gets a quarter of the words wrong, and more where a piece ends.
        likeness = difflib.SequenceMatcher(None, said, heard, autojunk=False).ratio()
        self.assertGreater(likeness, 0.5, f"said {said}, heard {heard}")


if __name__ == "__main__":
    unittest.main(verbosity=2)
