#!/usr/bin/python3
"""What is left in memory of windows that have closed.

usage: bench/windows/window_memory.py [--rounds N] [--programs FOLDER]

Makes a virtual desktop; starts Vemo once without its windows' shared object, so that none ever opens, and once with
it, and opens and closes both windows N times (20). Prints one JSON line; exits with 1 when the process holds more than
10 MB more after the last window closed than without any window ever: of all resident memory, or of what is anonymous
in it. Code that the kernel can read again from its files comes and goes in the first figure. What is anonymous also
must not grow by more than 0.1 MB with each closing from the third to the last.
"""

import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "whole_path"))
from inside_a_desktop import inside_a_desktop  # noqa: E402
from process_figures import figure, resident_mb  # noqa: E402

LIMIT_MB = 10
LIMIT_MB_PER_ROUND = 0.1
SETTLING_SECONDS = 5
RESTING_SECONDS = 1
MINIMUM_ROUNDS = 3


class Held:
    """What a process holds now."""

    def __init__(self, process_id):
        self.resident = round(resident_mb(process_id), 1)
        self.anonymous = round(figure(pathlib.Path(f"/proc/{process_id}/status"), "RssAnon") / 1024, 1)


def without_windows(folder):
    """A copy of the program that can't open one."""
    from vemo_program import program

    (folder / "bin").mkdir()
    shutil.copy(program("vemo"), folder / "bin/vemo")
    shutil.copytree(program("../share/vemo"), folder / "share/vemo")
    return folder / "bin/vemo"


def open_and_close_both(vemo):
    from virtual_desktop import wait_until
    import window_manager

    def windows(title):
        search = ["xdotool", "search", "--onlyvisible", "--all", "--pid", str(vemo.process.pid), "--name", f"^{title}$"]
        return subprocess.run(search, capture_output=True, check=False).stdout.decode().split()

    subprocess.run([vemo.program], env=vemo.environment, check=True)  # a second launch brings the first forward
    main = wait_until(lambda: windows("Vemo"), "the main window")

    def settings_are_open():
        subprocess.run(["xdotool", "windowfocus", main[0], "key", "ctrl+comma"], check=False)
        return windows("Settings")

    settings = wait_until(settings_are_open, "the settings window")
    time.sleep(1)
    with_both = Held(vemo.process.pid)
    for window in main + settings:
        window_manager.close(window)
    wait_until(lambda: not windows("Vemo") and not windows("Settings"), "the windows to be closed")
    return with_both


def measure(rounds):
    """Inside the virtual desktop."""
    from dictation_server import DictationServer
    from vemo_program import Vemo, store_token

    class WindowlessVemo(Vemo):
        def put_window_away(self):
            pass

    store_token("token-of-the-benchmark")
    with DictationServer() as server:
        with tempfile.TemporaryDirectory() as folder:
            vemo = WindowlessVemo(server.address)
            vemo.program = without_windows(pathlib.Path(folder))
            with vemo:
                time.sleep(SETTLING_SECONDS)
                never = Held(vemo.process.pid)
        with Vemo(server.address) as vemo:
            time.sleep(SETTLING_SECONDS)
            after = [Held(vemo.process.pid)]
            for _ in range(rounds):
                with_both = open_and_close_both(vemo)
                time.sleep(RESTING_SECONDS)
                after.append(Held(vemo.process.pid))
    return never, with_both, after


def growth_per_round(after):
    """Of what is anonymous, once all that is made once and kept has been made."""
    third, *_, last = after[2:]
    return round((last.anonymous - third.anonymous) / (len(after) - 3), 3)


def main():
    options = inside_a_desktop(__doc__, "rounds", 20)
    if options.count < MINIMUM_ROUNDS:
        sys.exit(f"window_memory: at least {MINIMUM_ROUNDS} rounds")
    never, with_both, after = measure(options.count)
    left = {kind: round(max(getattr(held, kind) for held in after) - getattr(never, kind), 1)
            for kind in ("resident", "anonymous")}
    per_round = growth_per_round(after)
    print(json.dumps({"MBBeforeTheFirstOpening": vars(never), "MBWithBothWindows": vars(with_both),
                      "MBAfterEachClosing": [vars(held) for held in after], "MBLeft": left,
                      "MBMoreWithEachRound": per_round,
                      "limits": {"MBLeft": LIMIT_MB, "MBMoreWithEachRound": LIMIT_MB_PER_ROUND}}))
    is_light = max(left.values()) <= LIMIT_MB and per_round <= LIMIT_MB_PER_ROUND
    return 0 if is_light or options.report_only else 1


if __name__ == "__main__":
    sys.exit(main())
