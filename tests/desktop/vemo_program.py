"""Vemo as a person has it: the real program with a home of its own, driven by its commands."""

import array
import contextlib
import json
import math
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import wave

from gi.repository import Gio

import window_manager
from virtual_desktop import LIMIT_SECONDS, DesktopError, wait_until

# For one text to come into an editor.
MOST_DICTATIONS = 5

SERVICE_AND_ACCOUNT = ["service", "brelmox.Vemo", "account", "authToken"]


def store_token(token):
    subprocess.run(["secret-tool", "store", "--label=Vemo", *SERVICE_AND_ACCOUNT],
                   input=token.encode(), check=True)


def clear_token():
    subprocess.run(["secret-tool", "clear", *SERVICE_AND_ACCOUNT], check=False)


def program(name):
    """A program of the build under test."""
    return pathlib.Path(os.environ["VEMO_PROGRAMS"]) / name


def write_tone(path, seconds=0.8, frequency=300):
    """A sound that no recorder takes for silence."""
    rate = 16000
    samples = array.array("h", (int(12000 * math.sin(2 * math.pi * frequency * n / rate))
                                for n in range(int(rate * seconds))))
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def say(path):
    """Plays a file where the microphone hears it; returns when all of it has been heard."""
    subprocess.run(["paplay", "--device=mic", str(path)], check=True, timeout=600)


class Humming:
    """`with Humming():` the microphone hears a sound that doesn't end."""

    def __enter__(self):
        command = ["pactl", "load-module", "module-sine", "sink=mic", "frequency=300"]
        self._module = subprocess.run(command, capture_output=True, check=True).stdout.decode().strip()
        return self

    def __exit__(self, *_):
        subprocess.run(["pactl", "unload-module", self._module], check=False)


def with_settings(**settings):
    """For Vemo's prepare_home: it starts with these in its settings file."""
    def prepare(vemo):
        (vemo.configuration / "settings.json").write_text(json.dumps(settings))
    return prepare


def namespaces_of_its_own(*kinds):
    """The front of a command that runs in them, with the rights to set them up."""
    return ["unshare", *kinds, *([] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"])]


class Vemo:
    """`with Vemo(server.address) as vemo: vemo.dictate()`"""

    def __init__(self, api_address, prepare_home=None):
        """prepare_home(vemo) is called before the start; it may set `wrapper`, a command that starts Vemo."""
        self._api_address = api_address
        self._prepare_home = prepare_home
        self.wrapper = []
        self.program = program("vemo")
        self.arguments = []

    def __enter__(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="home-"))
        self.environment = dict(os.environ)
        for name, folder in (("HOME", "."), ("XDG_CONFIG_HOME", ".config"), ("XDG_DATA_HOME", ".local/share"),
                             ("XDG_STATE_HOME", ".local/state"), ("XDG_CACHE_HOME", ".cache")):
            self.environment[name] = str(self.home / folder)
        self.configuration = self.home / ".config/vemo"
        self.log = self.home / ".local/state/Logs/Vemo/debug.log"
        self.configuration.mkdir(parents=True)
        (self.configuration / "vemo.conf").write_text(f"apiBaseURL={self._api_address}\n")
        self.tone = self.home / "tone.wav"
        write_tone(self.tone)
        if self._prepare_home:
            self._prepare_home(self)
        self.launch()
        return self

    def launch(self):
        """Starts the program; once more, when it has ended."""
        self.output = self.home / "output"
        with open(self.output, "ab") as output:
            os.fchmod(output.fileno(), 0o600)
            self.process = subprocess.Popen([*self.wrapper, self.program, *self.arguments], env=self.environment,
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)
        try:
            wait_until(self.is_idle, lambda: f"Vemo to be idle; {self.story()}")
            self.put_window_away()
        except BaseException:
            self.__exit__()
            raise

    def launch_again(self, *arguments):
        """A second launch, which has the first show its window, and ends without a word. Where a machine stalls, it may
        give up before it has its answer, say so, and have to be repeated."""
        def is_answered():
            ended = subprocess.run([self.program, *arguments], env=self.environment, stdin=subprocess.DEVNULL,
                                   capture_output=True, timeout=120, check=False)
            return (ended.returncode, ended.stdout, ended.stderr) == (0, b"", b"")
        wait_until(is_answered, lambda: f"a second launch to be answered; {self.story()}")

    def open(self, address):
        """As the desktop does with an address of a scheme that Vemo has claimed."""
        self.launch_again("open", address)

    def windows(self):
        return window_manager.shown_windows(self.process, "Vemo")

    def put_window_away(self):
        """Closes the window that came up at the start, so that the focus is with whoever had it."""
        wait_until(self.windows, lambda: f"the window of Vemo; {self.story()}")
        for window in self.windows():
            window_manager.close(window)
        wait_until(lambda: not self.windows(), "the window of Vemo to be out of sight")

    def __exit__(self, *_):
        self.command("quit")
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def command(self, name):
        """What `vemo NAME` prints, without the line end."""
        result = subprocess.run([program("vemo"), name], env=self.environment, stdin=subprocess.DEVNULL,
                                capture_output=True, timeout=120, check=False)
        return result.stdout.decode().strip()

    def call(self, name):
        """As command(), for where the milliseconds that a program of its own takes would matter."""
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        answer = bus.call_sync("brelmox.Vemo", "/brelmox/Vemo", "brelmox.Vemo", name, None, None,
                               Gio.DBusCallFlags.NONE, 1000 * LIMIT_SECONDS, None)
        return answer.unpack()[0]

    def status(self):
        if self.process.poll() is not None:
            raise AssertionError(f"Vemo ended with {self.process.returncode}:\n{self.output.read_text()}")
        return self.command("status")

    def is_idle(self):
        """Idle it also is while something bars the next dictation; the status then says what."""
        return self.status().split(":")[0] == "idle"

    def await_status(self, status):
        """Right after a start, nobody knows yet who is signed in, nor of a microphone."""
        wait_until(lambda: self.status() == status, lambda: f"the status “{status}”; {self.story()}")

    def logged(self, words):
        """How many lines of the log hold the words."""
        try:
            return sum(words in line for line in self.log.read_text(errors="replace").splitlines())
        except FileNotFoundError:
            return 0

    def await_logged(self, words, times=1):
        wait_until(lambda: self.logged(words) >= times, lambda: f"{times} log lines with “{words}”; {self.story()}")

    def story(self):
        """How it stands and what it has printed last, for a test that fails."""
        last_lines = "\n".join(self.output.read_text(errors="replace").splitlines()[-60:])
        return f"the status is “{self.status()}”, the output:\n{last_lines}"

    def start(self, command="start"):
        """Begins a dictation. A start that follows a stop too closely is dropped, so it asks again."""
        def recording():
            if self.is_idle():
                self.command(command)
            return self.status() == "recording"
        wait_until(recording, lambda: f"Vemo to record; {self.story()}")

    def stop(self):
        self.command("stop")

    def dictate(self):
        """Everything up to the stop; the answer is not waited for."""
        self.start()
        say(self.tone)
        self.stop()

    def dictate_into(self, editor, text, dictate=None):
        """Dictates until the text is all that an editor, empty so far, holds; returns how many times that took.

        Vemo gives the clipboard back 0.9 s after its paste. An editor, or a machine, that stalls for as long pastes
        what was copied before, or nothing; the editor is then emptied, and it's dictated once more. A text that came,
        but not as it should, stays a failure."""
        for attempt in range(1, MOST_DICTATIONS + 1):
            before, _ = self.pastes()
            (dictate or self.dictate)()
            wait_until(lambda: editor.text() == text or self.has_dictated(before),
                       lambda: f"the text to arrive instead of {excerpt(editor.text())}; {self.story()}")
            with contextlib.suppress(DesktopError):
                wait_until(lambda: editor.text() == text, "an editor that takes its time", 20)
                return attempt
            held = editor.empty().strip()
            if held != text.strip() and (text[:10] in held or text[-10:] in held):
                raise AssertionError(f"instead of {excerpt(text)} came {excerpt(held)}; {self.story()}")
            print(f"    dictation {attempt} came too late: {excerpt(held)}", file=sys.stderr, flush=True)
        raise AssertionError(f"none of {MOST_DICTATIONS} dictations arrived; {self.story()}")

    def pastes(self):
        """How many have begun, and how many of them are over: the clipboard was given back, or is someone else's."""
        said = self.output.read_text(errors="replace")  # unlike the log itself, this never starts over
        return said.count("inject: starting"), said.count("inject: restored") + said.count("not restoring")

    def has_dictated(self, pastes_before):
        """Whether a text has been pasted since, and every paste is over."""
        begun, over = self.pastes()
        return begun == over > pastes_before and self.is_idle()

    def await_dictated(self, pastes_before=0, limit_seconds=LIMIT_SECONDS):
        wait_until(lambda: self.has_dictated(pastes_before), lambda: f"the dictation to end; {self.story()}", limit_seconds)

    def settings(self):
        """What is saved; a moment ago it may have been less."""
        try:
            return json.loads((self.configuration / "settings.json").read_text())
        except (OSError, ValueError):
            return {}

    def await_setting(self, name, value):
        wait_until(lambda: self.settings().get(name) == value,
                   lambda: f"the setting {name} to be {value!r}; it is {self.settings().get(name)!r}")

    def second_copies(self):
        """How many requests were sent once more because no answer had come for five seconds."""
        return self.output.read_text(errors="replace").count("sending a second copy")

    def failures(self):
        """How many dictations have failed."""
        return self.output.read_text(errors="replace").count("[Vemo] error: ")

    def await_failure(self, failures_before=0):
        """The status that tells of a failure, or "" where it has gone: it stays for two seconds, and a machine that
        stalls asks too late."""
        def outcome():
            has_failed = self.failures() > failures_before
            status = self.status()
            return [status] if status.startswith("error") else [""] if has_failed else None
        shown, = wait_until(outcome, lambda: f"the dictation to fail; {self.story()}")
        wait_until(self.is_idle, "Vemo to be idle again")
        return shown


def excerpt(text):
    return f"{text[:200]!r} ({len(text)} characters)"
