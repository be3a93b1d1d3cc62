"""The front that the benchmarks here share: their options, and a virtual desktop around the measuring."""

import argparse
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/desktop"))


PARTS = ("window-manager", "audio", "keyring")


def inside_a_desktop(description, count_name, count_default, parts=PARTS):
    """The options, in the process that stands inside the desktop: `count`, and `report_only`, by which no limit
    makes the status. The process outside ends here with the status of the one inside."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument(f"--{count_name}", dest="count", type=int, default=count_default)
    parser.add_argument("--programs", default=str(ROOT / "build/release/bin"))
    parser.add_argument("--report-only", action="store_true", help="exit with 0 whatever the figures are")
    arguments = parser.parse_args()
    if os.environ.get("VEMO_INSIDE_A_DESKTOP"):
        return arguments
    command = [str(ROOT / "tools/virtual-desktop"), *[f"--{part}" for part in parts], "--",
               "env", "VEMO_INSIDE_A_DESKTOP=1", f"VEMO_PROGRAMS={arguments.programs}", *sys.argv]
    sys.exit(subprocess.run(command, check=False).returncode)
