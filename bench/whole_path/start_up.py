#!/usr/bin/python3
"""How soon after its start Vemo answers, with a keyring that answers and with one that is silent.

usage: bench/whole_path/start_up.py [--starts N] [--programs FOLDER]

Makes a virtual desktop, starts Vemo N times (20) in each state of the keyring, in turn, and asks for its status by the
session bus until there is an answer. Prints one JSON line; exits with 1 when the silent keyring costs the middle start
more than 100 ms: a start waits for no keyring.
"""

import json
import os
import signal
import statistics
import subprocess
import sys
import time

from inside_a_desktop import inside_a_desktop

LIMIT_MS = 100


def milliseconds_to_answer(address):
    """Of one start."""
    from gi.repository import GLib
    from vemo_program import Vemo, program

    class TimedVemo(Vemo):
        def launch(self):
            self.output = self.home / "output"
            with open(self.output, "ab") as output:
                begin = time.monotonic()
                self.process = subprocess.Popen([program("vemo")], env=self.environment, stdin=subprocess.DEVNULL,
                                                stdout=output, stderr=subprocess.STDOUT)
            while True:
                try:
                    self.call("status")
                    break
                except GLib.Error:
                    time.sleep(0.001)
            self.milliseconds = (time.monotonic() - begin) * 1000

    with TimedVemo(address) as vemo:
        return vemo.milliseconds


def keyring_process():
    from gi.repository import Gio, GLib

    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    return bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "GetConnectionUnixProcessID", GLib.Variant("(s)", ("org.freedesktop.secrets",)), None,
                         Gio.DBusCallFlags.NONE, -1, None).unpack()[0]


def measure(count):
    """Inside the virtual desktop."""
    from dictation_server import DictationServer
    from vemo_program import store_token

    store_token("token-of-the-benchmark")
    keyring = keyring_process()
    answering, silent = [], []
    with DictationServer() as server:
        for _ in range(count):
            answering.append(milliseconds_to_answer(server.address))
            os.kill(keyring, signal.SIGSTOP)
            try:
                silent.append(milliseconds_to_answer(server.address))
            finally:
                os.kill(keyring, signal.SIGCONT)
    return statistics.median(answering), statistics.median(silent)


def main():
    options = inside_a_desktop(__doc__, "starts", 20)
    answering, silent = measure(options.count)
    print(json.dumps({"answeringKeyringMs": round(answering), "silentKeyringMs": round(silent),
                      "ratio": round(silent / answering, 2), "limits": {"silentKeyringCostsMs": LIMIT_MS}}))
    if options.report_only:
        return 0
    return 0 if silent - answering <= LIMIT_MS else 1


if __name__ == "__main__":
    sys.exit(main())
