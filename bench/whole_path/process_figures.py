"""What the system tells of a running process."""

import collections
import os
import pathlib


def figure(status_file, name):
    for line in status_file.read_text().splitlines():
        if line.startswith(name + ":"):
            return int(line.split()[1])
    raise SystemExit(f"{status_file} tells no {name}")


def resident_mb(process_id):
    return figure(pathlib.Path(f"/proc/{process_id}/status"), "VmRSS") / 1024


def tasks(process_id):
    return list(pathlib.Path(f"/proc/{process_id}/task").iterdir())


def thread_names(process_id):
    return {task.name: (task / "comm").read_text().strip() for task in tasks(process_id)}


def descriptors(process_id):
    """How many of each kind are open: "TCP" for the network, else what the link's name begins with."""
    network = pathlib.Path(f"/proc/{process_id}/net")
    tcp = {line.split()[9] for name in ("tcp", "tcp6") for line in (network / name).read_text().splitlines()[1:]}
    kinds = collections.Counter()
    for link in pathlib.Path(f"/proc/{process_id}/fd").iterdir():
        try:
            kind, _, number = os.readlink(link).partition(":")
        except FileNotFoundError:
            continue  # closed meanwhile
        kinds["TCP" if kind == "socket" and number.strip("[]") in tcp else kind] += 1
    return dict(kinds)


def wake_ups(process_id):
    """By thread: every time that one went to sleep by itself it has to be woken."""
    return {task.name: figure(task / "status", "voluntary_ctxt_switches") for task in tasks(process_id)}


def wake_ups_by_name(process_id, before, after):
    """Between two answers of wake_ups(), the threads that had any."""
    names = thread_names(process_id)
    return {names.get(task, task): count - before.get(task, 0) for task, count in after.items()
            if count > before.get(task, 0)}
