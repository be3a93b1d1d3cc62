#!/usr/bin/python3
"""A program that dies of a fatal signal at any moment of a dictation says so after the next start."""

import os
import random
import signal
import threading
import unittest

import editors
from dictation_server import transcription
from telemetry_server import PROFILE, TelemetryServer
from vemo_program import Humming, Vemo, store_token

SIGNALS = (signal.SIGSEGV, signal.SIGBUS, signal.SIGILL, signal.SIGFPE, signal.SIGABRT, signal.SIGTRAP, signal.SIGSYS)
NOTE_SIZE = 56
SPEECH = "quokka"

# The last batch has two seconds; on a machine that stalls, it may not leave.
MOST_ENDS = 3

# From the start over recording, transcription and paste to the clipboard's return.
DICTATION_SECONDS = 2.5
SPEECH_SECONDS = 0.6
SERVER_SECONDS = 0.3


class CrashTest(unittest.TestCase):
    def setUp(self):
        store_token("token-of-the-desktop-tests")
        self.server = self.enterContext(TelemetryServer())
        answer = transcription(f"The spoken {SPEECH}.")
        answer.delay = SERVER_SECONDS
        self.server.answers = [answer]
        self.enterContext(editors.Mousepad())
        self.enterContext(Humming())
        self.vemo = self.enterContext(Vemo(self.server.address))

    def test_each_fatal_signal_at_any_moment_of_a_dictation_is_told_after_the_next_start(self):
        seed = int(os.environ.get("VEMO_CRASH_SEED", "7"))
        moments = random.Random(seed)
        for number in SIGNALS * int(os.environ.get("VEMO_CRASH_ROUNDS", "1")):
            for _ in range(MOST_ENDS):
                moment = moments.uniform(0, DICTATION_SECONDS)
                print(f"    {number.name} {moment:.3f} s into a dictation, seed {seed}", flush=True)
                self.die_while_dictating(number, moment)
                self.assert_note_is_of_fixed_size()
                events = self.events_of_the_next_session()
                self.vemo.launch()
                if events:
                    break
            self.assert_told(events, number)

    def die_while_dictating(self, number, moment):
        process = self.vemo.process
        crash = threading.Timer(moment, process.send_signal, [number])
        stop = threading.Timer(SPEECH_SECONDS, self.vemo.command, ["stop"])
        self.vemo.start()
        crash.start()
        stop.start()
        end = os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
        stop.join()
        # CLD_DUMPED would say that a core file holds what was in memory.
        self.assertEqual((end.si_code, end.si_status), (os.CLD_KILLED, number))
        process.wait()

    def assert_note_is_of_fixed_size(self):
        note = (self.vemo.home / ".local/state/vemo/crashes").read_bytes()
        self.assertEqual(len(note), NOTE_SIZE)
        self.assertNotIn(SPEECH.encode(), note)

    def events_of_the_next_session(self):
        sessions, told = len(self.server.requests_to(PROFILE)), len(self.server.events())
        self.vemo.launch()
        self.server.await_session(sessions + 1)
        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        return self.server.events()[told:]

    def assert_told(self, events, number):
        crashes = [event["props"] for event in events if event["name"] == "app_crashed"]
        self.assertEqual([(crash["signal"], crash["appVersion"]) for crash in crashes], [(int(number), self.build())],
                         self.vemo.output.read_text()[-2000:])

    def build(self):
        label = self.server.requests_to("/telemetry/install")[0].headers["x-app-version"]
        return label.partition("(")[2].rstrip(")")


if __name__ == "__main__":
    unittest.main(verbosity=2)
