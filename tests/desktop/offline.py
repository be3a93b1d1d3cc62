"""Vemo's windows over fakes, in the states that vemo-offline has."""

import subprocess

from vemo_program import program
from windows import Window


class Offline:
    """`with Offline("home-full", "--right-to-left") as window:`"""

    def __init__(self, state, *options):
        self._command = [program("vemo-offline"), state, *options]
        self._title = "Settings" if state.startswith("settings") else "Vemo"

    def __enter__(self):
        self.process = subprocess.Popen(self._command, stdin=subprocess.DEVNULL)
        try:
            return Window(self, self._title)
        except BaseException:
            self.__exit__()
            raise

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(120)

    def story(self):
        return f"vemo-offline runs as {self.process.pid}, ended: {self.process.poll()}"
