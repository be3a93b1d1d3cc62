#!/usr/bin/python3
"""Dictates on end into an editor, by a network that fails now and then, and looks for what is left behind.

usage: bench/whole_path/soak.py [--dictations N] [--programs FOLDER]

Makes a virtual desktop and dictates N times (1,000), each time another text. The first eight dictations and then
every sixth meet a fault of the network. Prints one JSON line. Ends at once, with 1, when the editor doesn't hold
every text so far exactly once and in order; exits with 1 when Vemo has grown more than it may since its first
dictations, or has a file descriptor or a thread more.
"""

import collections
import contextlib
import dataclasses
import itertools
import json
import sys
import time

from inside_a_desktop import PARTS, inside_a_desktop
from process_figures import descriptors, resident_mb, thread_names, wake_ups, wake_ups_by_name

from dictation_server import NEVER, Answer, DictationServer, transcription
from vemo_program import MOST_DICTATIONS, Humming, Vemo, store_token
from virtual_desktop import DesktopError, wait_until

UNAVAILABLE = Answer(status=503)
RESET = Answer(hang_up="reset")
CUT = Answer(body=b'{"status":"success",', hang_up="within")

# What the server does with a dictation's requests, one after the other, when it has this answer to give.
FAULTS = {
    "fails once": lambda answer: [UNAVAILABLE, answer],
    "resets the connection": lambda answer: [RESET, answer],
    "answers both copies late": lambda answer: [dataclasses.replace(answer, delay=5.5),
                                                dataclasses.replace(answer, delay=3)],
    "never answers": lambda answer: [NEVER, answer],
    "answers late": lambda answer: [dataclasses.replace(answer, delay=1)],
    "cannot be had": lambda _: [RESET, CUT, RESET],
    "cuts its answer off": lambda answer: [CUT, answer],
    "fails twice": lambda answer: [UNAVAILABLE, CUT, answer],
}
WITHOUT_A_TEXT = "cannot be had"
FAULT_EVERY = 6

# By then what is kept for good has been allocated, in a short run only most of it.
WARM_UP = 50
GROWTH_LIMIT = 0.05
SHORT_WARM_UP = 10
SHORT_GROWTH_LIMIT = 0.1
SHORT_OF = 500
# Of the texts that an editor asks for only after the clipboard was given back, on a machine that stalls.
MOST_TOO_LATE = 0.25

RECORDING_SECONDS = 0.45
IDLE_SECONDS = 3
# Qt keeps a connection for two minutes in case of another request.
CONNECTIONS_END_WITHIN_SECONDS = 150


def text_of(number):
    return f"{number} begins, ünïcode ✓\n{'and goes on ' * (number * 7 % 30)}\n{number} ends."


def first_difference(held, expected):
    at = next((index for index, (one, other) in enumerate(zip(held, expected)) if one != other),
              min(len(held), len(expected)))
    return f"the editor has {held[at:at + 60]!r} where {expected[at:at + 60]!r} should be"


class Soak:
    """Dictates, and knows what the editor has to hold."""

    def __init__(self, server, vemo, editor):
        self._server, self._vemo, self._editor = server, vemo, editor
        self._faults = itertools.cycle(FAULTS)
        self._expected = ""
        self.faults_met = 0
        self.texts = 0
        self.too_short = 0
        self.too_late = 0
        self.failures = 0

    def dictate(self, number):
        fault = next(self._faults) if number <= len(FAULTS) or number % FAULT_EVERY == 0 else None
        self.faults_met += fault is not None
        text = text_of(number)
        answers = FAULTS[fault](transcription(text)) if fault else [transcription(text)]
        copies = self._vemo.second_copies()
        try:
            if fault == WITHOUT_A_TEXT:
                self._request(answers)
                self._vemo.await_failure(self.failures)
                self.failures += 1
            else:
                self._dictate_until_it_arrives(text, answers)
            wait_until(lambda: self._vemo.call("status") == "idle", "the dictation to end")
            self.check()
        except DesktopError as error:
            raise SystemExit(f"dictation {number}, whose server {fault or 'answers'}: {error}; "
                             f"{first_difference(self._editor.text(), self._expected)}; "
                             f"{self._vemo.story()}") from None
        # A machine that stalls may ask once more.
        if len(self._server.requests) - len(answers) not in range(self._vemo.second_copies() - copies + 1):
            raise SystemExit(f"dictation {number}, whose server {fault or 'answers'}, took "
                             f"{len(self._server.requests)} requests instead of {len(answers)}")

    def _request(self, answers):
        self._server.requests.clear()
        self._server.answers = list(answers)
        self._record()

    def _dictate_until_it_arrives(self, text, answers):
        """An editor that stalls is too late for a text; it has to hold all of the others, and is emptied."""
        for _ in range(MOST_DICTATIONS):
            pastes, _ = self._vemo.pastes()
            self._request(answers)
            wait_until(lambda: self._editor.text() == self._expected + text or self._vemo.has_dictated(pastes),
                       "the text to arrive")
            with contextlib.suppress(DesktopError):
                wait_until(lambda: self._editor.text() == self._expected + text, "an editor that takes its time", 5)
                self._expected += text
                self.texts += 1
                return
            self.too_late += 1
            held = self._editor.empty().strip()
            if held not in (self._expected, self._expected + text):
                raise DesktopError(first_difference(held, self._expected))
            self._expected = ""
        raise DesktopError("the text never arrived")

    def is_at_rest(self):
        """Whether the clipboard has been given back after every paste, and the cue is over."""
        begun, over = self._vemo.pastes()
        is_playing = any(name.endswith(".wav") for name in descriptors(self._vemo.process.pid))
        return not is_playing and begun == over

    def check(self):
        held = self._editor.text()
        if held != self._expected:
            raise DesktopError(first_difference(held, self._expected))

    def _record(self):
        """Until it was long enough: on a busy machine the microphone may start late."""
        while True:
            wait_until(lambda: self._vemo.call("start") == "recording", "a recording")
            time.sleep(RECORDING_SECONDS)
            if self._vemo.call("stop") != "idle":
                return
            self.too_short += 1


class State:
    """Vemo between two dictations."""

    def __init__(self, process_id):
        self.resident_mb = resident_mb(process_id)
        self.descriptors = descriptors(process_id)
        self.threads = collections.Counter(thread_names(process_id).values())

    def has_no_more_than(self, other):
        return (sum(self.descriptors.values()) <= sum(other.descriptors.values())
                and self.threads.total() <= other.threads.total())


def measure(dictations):
    """Inside the virtual desktop."""
    from editors import Mousepad

    warm_up = min(SHORT_WARM_UP, dictations) if dictations < SHORT_OF else WARM_UP
    store_token("token-of-the-soak")
    with DictationServer() as server, Vemo(server.address) as vemo, Mousepad() as editor, Humming():
        process = vemo.process.pid
        soak = Soak(server, vemo, editor)

        def state_at_rest():
            wait_until(soak.is_at_rest, "Vemo to be at rest")
            soak.check()
            return State(process)

        begin = time.monotonic()
        for number in range(1, dictations + 1):
            soak.dictate(number)
            if number == warm_up:
                warm = state_at_rest()
            if number % WARM_UP == 0:
                print(f"after {number}: {resident_mb(process):.2f} MB", file=sys.stderr, flush=True)
        last = state_at_rest()
        seconds = time.monotonic() - begin

        before = wake_ups(process)
        time.sleep(IDLE_SECONDS)
        woken = wake_ups_by_name(process, before, wake_ups(process))
        try:
            wait_until(lambda: State(process).has_no_more_than(warm), "", CONNECTIONS_END_WITHIN_SECONDS)
        except DesktopError:
            pass  # the figures tell
        soak.check()
        return soak, warm, last, State(process), woken, seconds


def main():
    options = inside_a_desktop(__doc__, "dictations", 1000, (*PARTS, "accessibility"))
    soak, warm, last, idle, woken, seconds = measure(options.count)
    growth = last.resident_mb / warm.resident_mb - 1
    growth_limit = SHORT_GROWTH_LIMIT if options.count < SHORT_OF else GROWTH_LIMIT
    print(json.dumps({
        "dictations": options.count, "ofThemMetAFault": soak.faults_met, "textsInTheEditor": soak.texts,
        "tooShortAndRepeated": soak.too_short, "tooLateAndRepeated": soak.too_late,
        "seconds": round(seconds), "residentMBAfterWarmUp": round(warm.resident_mb, 2),
        "residentMBAtTheEnd": round(last.resident_mb, 2), "growth": round(growth, 4), "growthLimit": growth_limit,
        "descriptorsAfterWarmUp": warm.descriptors, "descriptorsAtIdle": idle.descriptors,
        "threadsAfterWarmUp": warm.threads, "threadsAtIdle": idle.threads,
        f"wakeUpsIn{IDLE_SECONDS}s": woken,
    }))
    within = (growth <= growth_limit and idle.has_no_more_than(warm)
              and soak.too_late <= MOST_TOO_LATE * options.count)
    return 0 if within or options.report_only else 1


if __name__ == "__main__":
    sys.exit(main())
