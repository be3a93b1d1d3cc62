#!/usr/bin/python3
"""What Vemo costs while nobody speaks: resident memory, and wake-ups by all of its threads.

usage: bench/whole_path/idle_weight.py [--seconds N] [--programs FOLDER]

Makes a virtual desktop, dictates once so that everything has been used, and watches Vemo for N seconds
(60). Prints one JSON line; exits with 1 above 40 MB or above one wake-up a second.
"""

import json
import sys
import time

from inside_a_desktop import inside_a_desktop
from process_figures import resident_mb, wake_ups, wake_ups_by_name

MEMORY_LIMIT_MB = 40
WAKE_UPS_LIMIT = 1.0
SETTLING_SECONDS = 5


def measure(seconds):
    """Inside the virtual desktop."""
    from dictation_server import DictationServer, transcription
    from vemo_program import Vemo, store_token

    store_token("token-of-the-benchmark")
    with DictationServer() as server, Vemo(server.address) as vemo:
        time.sleep(SETTLING_SECONDS)
        fresh = resident_mb(vemo.process.pid)
        server.answers = [transcription("A sentence.")]
        vemo.dictate()
        vemo.await_logged("inject: restored original pasteboard in background")
        time.sleep(SETTLING_SECONDS)
        before = wake_ups(vemo.process.pid)
        time.sleep(seconds)
        after = wake_ups(vemo.process.pid)
        used = resident_mb(vemo.process.pid)
        woken = wake_ups_by_name(vemo.process.pid, before, after)
    return fresh, used, woken


def main():
    options = inside_a_desktop(__doc__, "seconds", 60)
    fresh, used, woken = measure(options.count)
    rate = sum(woken.values()) / options.count
    print(json.dumps({"residentMB": round(used, 1), "residentMBBeforeTheFirstDictation": round(fresh, 1),
                      "wakeUpsPerSecond": round(rate, 2), "wakeUpsByThread": woken,
                      "limits": {"residentMB": MEMORY_LIMIT_MB, "wakeUpsPerSecond": WAKE_UPS_LIMIT}}))
    if options.report_only:
        return 0
    return 0 if max(fresh, used) <= MEMORY_LIMIT_MB and rate <= WAKE_UPS_LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
