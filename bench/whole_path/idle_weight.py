#!/usr/bin/python3
"""What Vemo costs while nobody speaks: resident memory, and wake-ups by all of its threads.

usage: bench/whole_path/idle_weight.py [--seconds N] [--programs FOLDER]

Makes a virtual desktop, dictates once so that everything has been used, and watches Vemo for N seconds
(60). Prints one JSON line; exits with 1 above 40 MB or above one wake-up a second.
"""

import json
import pathlib
import sys
import time

from inside_a_desktop import inside_a_desktop

MEMORY_LIMIT_MB = 40
WAKE_UPS_LIMIT = 1.0
SETTLING_SECONDS = 5


def figure(status_file, name):
    for line in status_file.read_text().splitlines():
        if line.startswith(name + ":"):
            return int(line.split()[1])
    raise SystemExit(f"{status_file} tells no {name}")


def wake_ups(process_id):
    """Every time that a thread went to sleep by itself it has to be woken."""
    return {task.name: figure(task / "status", "voluntary_ctxt_switches")
            for task in pathlib.Path(f"/proc/{process_id}/task").iterdir()}


def thread_names(process_id):
    return {task.name: (task / "comm").read_text().strip()
            for task in pathlib.Path(f"/proc/{process_id}/task").iterdir()}


def measure(seconds):
    """Inside the virtual desktop."""
    from dictation_server import DictationServer, transcription
    from vemo_program import Vemo, store_token

    store_token("token-of-the-benchmark")
    with DictationServer() as server, Vemo(server.address) as vemo:
        fresh = figure(pathlib.Path(f"/proc/{vemo.process.pid}/status"), "VmRSS") / 1024
        server.answers = [transcription("A sentence.")]
        vemo.dictate()
        vemo.await_logged("inject: restored original pasteboard in background")
        time.sleep(SETTLING_SECONDS)
        before = wake_ups(vemo.process.pid)
        time.sleep(seconds)
        after = wake_ups(vemo.process.pid)
        used = figure(pathlib.Path(f"/proc/{vemo.process.pid}/status"), "VmRSS") / 1024
        names = thread_names(vemo.process.pid)
    woken = {names[task]: count - before.get(task, 0) for task, count in after.items()
             if count > before.get(task, 0)}
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
