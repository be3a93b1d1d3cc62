#!/usr/bin/python3
"""Dictates a recorded sentence into a real editor by the whole real path, and says what came of it.

Runs inside a virtual desktop with every part. Prints one JSON line:
  heard              what the service answered, seen by a proxy between it and Vemo
  pasted             what the editor then held, read from the editor over the accessibility bus
  target             the program that had the focus
  clipboardRestored  whether each format of the clipboard is what it was, byte for byte
  stopToPasteMs      from sending the stop command to the text being seen in the editor
  serviceMs          of it, what the service took for its answer, measured at the proxy
Exits with 1 when the editor doesn't hold the shaped text or the clipboard isn't what it was.
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import wave

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from clipboard import ClipboardOwner, contents  # noqa: E402
from companion_service import CompanionService, RunningService  # noqa: E402
from dictation_server import RecordingProxy  # noqa: E402
from editors import Mousepad, active_window  # noqa: E402
from vemo_program import Vemo, say  # noqa: E402
from virtual_desktop import DesktopError, wait_until  # noqa: E402

SAMPLE = pathlib.Path("/usr/share/pocketsphinx/test/data/goforward.raw")
SAMPLE_TEXT = "Go forward ten meters."
CLIPBOARD = [("UTF8_STRING", "What was copied before: ünïcode ✓".encode()),
             ("text/html", b"<p>What was copied <b>before</b></p>"),
             ("application/x-demonstration", bytes(range(256)) * 40)]
ANSWER_LIMIT_SECONDS = 300


def sample_as_wav(folder):
    """The sample is bare samples; what plays it wants a header."""
    path = pathlib.Path(folder) / "sample.wav"
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(16000)
        file.writeframes(SAMPLE.read_bytes())
    return path


def shaped_text(vemo):
    """The newest entry of Vemo's history, where it keeps what it meant to paste."""
    def newest():
        history = vemo.settings().get("recentDictations")
        return history and find_text(history)
    return wait_until(newest, "the history to have the dictation")


def find_text(value):
    """The first `text` of a history, however the settings file nests it."""
    if isinstance(value, str):
        try:
            return find_text(json.loads(value))
        except ValueError:
            return None
    if isinstance(value, dict):
        return value.get("text") or next(filter(None, map(find_text, value.values())), None)
    if isinstance(value, list):
        return next(filter(None, map(find_text, value)), None)
    return None


def transcription_of(answer):
    try:
        return json.loads(answer).get("transcription", "")
    except ValueError:
        return ""


def demonstrate(service, sample, screenshot):
    with service, RecordingProxy(service.address) as proxy, \
            Vemo(proxy.address) as vemo, ClipboardOwner(CLIPBOARD), Mousepad() as editor:
        before = contents()
        vemo.start()
        say(sample)
        stopped = time.monotonic()
        vemo.stop()
        wait_until(lambda: editor.text() or vemo.status().startswith("error"),
                   "the text to come", ANSWER_LIMIT_SECONDS)
        stop_to_paste = (time.monotonic() - stopped) * 1000
        problem = vemo.status() if not editor.text() else ""
        restored = False
        if not problem:
            try:
                restored = wait_until(lambda: contents() == before, "the clipboard to come back")
            except DesktopError as error:
                problem = str(error)
        pasted = editor.text()
        shaped = shaped_text(vemo) if pasted else ""
        subprocess.run(["import", "-window", "root", str(screenshot)], check=True)
        dictations = [exchange for exchange in proxy.exchanges if exchange.path.startswith("/desktop/dictate")]
        heard = transcription_of(dictations[-1].answer) if dictations else ""
        service_ms = dictations[-1].milliseconds if dictations else 0
        if active_window() != editor.window:
            problem = "the editor has lost the focus"
        if not problem and (not heard or pasted.strip() != shaped.strip()):
            problem = "the editor doesn't hold the shaped text"
        print(json.dumps({
            "heard": heard, "pasted": pasted, "target": editor.name, "clipboardRestored": bool(restored),
            "stopToPasteMs": round(stop_to_paste, 1), "serviceMs": round(service_ms, 1),
            "screenshot": str(screenshot),
        }, ensure_ascii=False), flush=True)
        if problem:
            print(f"demonstration: {problem}", file=sys.stderr)
        return 1 if problem or not restored else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--programs", required=True, help="the folder of vemo, and of vemo-service where it is started")
    parser.add_argument("--screenshot", required=True, type=pathlib.Path, help="the PNG file to write")
    parser.add_argument("--service", help="the address of a service that runs already; by default one is started")
    parser.add_argument("--token", help="an access token of that service")
    parser.add_argument("wav", nargs="?", help="what is said; by default a recorded sentence")
    arguments = parser.parse_args()
    os.environ["VEMO_PROGRAMS"] = arguments.programs
    arguments.screenshot.parent.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        sample = arguments.wav or sample_as_wav(folder)
        service = RunningService(arguments.service, arguments.token) if arguments.service else CompanionService(folder)
        return demonstrate(service, sample, arguments.screenshot.resolve())


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (DesktopError, AssertionError, subprocess.CalledProcessError) as error:
        sys.exit(f"demonstration: {error}")
