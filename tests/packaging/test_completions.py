#!/usr/bin/python3
"""What the shells complete, asked of the shells themselves: a person types and presses Tab."""

import os
import pathlib
import pty
import select
import signal
import tempfile
import time
import unittest

from installation import PACKAGING, PROGRAMS, install, output_of

PROMPT = "ready> "
LIMIT_SECONDS = 60


class Terminal:
    """A shell on a terminal of its own, with nothing of this user's configuration."""

    def __init__(self, command, environment):
        self.process, self._terminal = pty.fork()
        if self.process == 0:
            os.execvpe(command[0], command, environment)
        self._await(PROMPT)

    def close(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self._terminal)

    def run(self, line):
        os.write(self._terminal, f"{line}\n".encode())
        return self._await(PROMPT)

    def completes(self, words, expected):
        """Waits until a Tab behind the words has made the word expected of the last; the line goes again."""
        os.write(self._terminal, f"{words}\t".encode())
        self._await(expected)
        os.write(self._terminal, b"\x15\n")
        self._await(PROMPT)

    def _await(self, expected):
        shown = ""
        deadline = time.monotonic() + LIMIT_SECONDS
        while expected not in shown:
            if not select.select([self._terminal], [], [], max(0, deadline - time.monotonic()))[0]:
                raise AssertionError(f"waited in vain for {expected!r}; shown: {shown!r}")
            shown += os.read(self._terminal, 65536).decode(errors="replace")
        return shown


class CompletionsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.share = install(cls.root / "usr") / "share"
        (cls.root / "home").mkdir()
        (cls.root / "home/words.json").write_text("[]")
        cls.environment = {"HOME": str(cls.root / "home"), "PATH": f"{cls.root}/usr/bin:/usr/bin:/bin", "LANG": "C.UTF-8",
                           "TERM": "dumb", "PS1": PROMPT}

    def terminal(self, *command):
        os.chdir(self.root / "home")
        terminal = Terminal(command, self.environment)
        self.addCleanup(terminal.close)
        return terminal

    def test_bash_completes_words_of_each_program(self):
        bash = self.terminal("bash", "--norc", "--noprofile", "-i")
        for program in PROGRAMS:
            bash.run(f". {self.share}/bash-completion/completions/{program}")
        self.check(bash.completes)

    def test_zsh_completes_words_of_each_program(self):
        zsh = self.terminal("zsh", "-f", "-i")
        zsh.run(f"fpath=({self.share}/zsh/vendor-completions $fpath); autoload -Uz compinit; compinit -u -D; "
                f"zstyle ':completion:*' list-prompt ''; LISTMAX=1000; PS1='{PROMPT}'")
        self.check(zsh.completes)

    def test_fish_completes_words_of_each_program(self):
        for program in PROGRAMS:
            self.assertTrue((self.share / "fish/vendor_completions.d" / f"{program}.fish").exists())

        def completes(line, expected):
            command = f"set fish_complete_path {self.share}/fish/vendor_completions.d $fish_complete_path; complete -C '{line}'"
            status, text = output_of("fish", "--no-config", "-c", command, env=self.environment, cwd=self.root / "home")
            self.assertEqual(0, status, text)
            self.assertTrue(any(expected in row.split("\t")[0] for row in text.splitlines()), f"{line}: {text}")
        self.check(completes)

    def check(self, completes):
        completes("vemo tog", "toggle")
        completes("vemo cancel", "cancel-sign-in")
        completes("vemo-service add", "add-token")
        completes("vemo-shape --js", "--jsonl")
        completes("vemo-shape --set integrationSlack=f", "integrationSlack=false")
        completes("vemo-shape --dictionary wo", "words.json")

    def test_each_shell_can_read_its_file(self):
        for program in PROGRAMS:
            self.assertEqual((0, ""), output_of("bash", "-n", PACKAGING / "completions" / f"{program}.bash"))
            self.assertEqual((0, ""), output_of("zsh", "-n", PACKAGING / "completions" / f"_{program}"))
            self.assertEqual((0, ""), output_of("fish", "-n", PACKAGING / "completions" / f"{program}.fish"))


if __name__ == "__main__":
    unittest.main()
