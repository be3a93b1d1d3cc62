"""An isolated desktop for tests and the demonstration.

It has its own home and XDG folders, its own session bus and, as asked, an X display, a window manager,
a sound server with a microphone that plays what is sent to its sink, an unlocked keyring and the
accessibility bus. Nothing in it reaches the desktop of whoever starts it. Each part is waited for
until it answers. Closing the desktop ends every process that was started in it, daemons that left
their parent included, and removes its folder.
"""

import ctypes
import os
import pathlib
import re
import secrets
import select
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import time

PARTS = ("x11", "window-manager", "audio", "keyring", "accessibility")

# The variable that every process of a desktop carries; its value, the desktop's folder, tells whose it is.
MARKER = "VEMO_VIRTUAL_DESKTOP"

# For whatever is waited for. Generous: a machine under full load, or whose disk stands still, takes a minute for what
# is done in tenths of a second otherwise.
LIMIT_SECONDS = 120
END_LIMIT_SECONDS = 5

# What would tie a process to the desktop of whoever starts it.
FOREIGN_VARIABLES = re.compile(
    r"(DISPLAY|WAYLAND_.*|XAUTHORITY|XMODIFIERS|SESSION_MANAGER|DESKTOP_.*|GNOME_.*|KDE_.*|XDG_.*|DBUS_.*|"
    r"PULSE_.*|PIPEWIRE_.*|GTK_.*|GDK_.*|QT_.*|QML.*|AT_SPI_.*|NO_AT_BRIDGE|SSH_AUTH_SOCK|LANG|LANGUAGE|"
    r"LC_.*|TMPDIR|.*_proxy|.*_PROXY)")

# The bus starts nothing on its own, so that only the parts asked for are there.
BUS_CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# No key bindings: every key that a test presses reaches the window in front.
WINDOW_MANAGER_CONFIGURATION = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><focusLast>yes</focusLast></focus>
  <placement><policy>Smart</policy></placement>
  <desktops><number>1</number></desktops>
  <keyboard>
    <keybind key="A-Tab"><action name="NextWindow"/></keybind>
    <keybind key="A-F4"><action name="Close"/></keybind>
  </keyboard>
  <mouse>
    <context name="Client"><mousebind button="Left" action="Press">
      <action name="Focus"/><action name="Raise"/>
    </mousebind></context>
  </mouse>
</openbox_config>
"""


class DesktopError(Exception):
    """A part of the desktop that is missing, doesn't answer or has ended."""


def wait_until(condition, what, limit_seconds=LIMIT_SECONDS):
    """Returns the first true value of condition(); fails with `what`, a text or what gives one, after the limit."""
    deadline = time.monotonic() + limit_seconds
    pause = 0.004
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            what = what() if callable(what) else what
            raise DesktopError(f"waited {limit_seconds} s in vain: {what}")
        time.sleep(pause)
        pause = min(pause * 1.3, 0.05)


class VirtualDesktop:
    """`with VirtualDesktop("x11", "audio") as desktop: desktop.run([...])`"""

    def __init__(self, *parts, size="1280x800"):
        unknown = set(parts) - set(PARTS)
        if unknown:
            raise ValueError(f"no such part of a desktop: {', '.join(sorted(unknown))}")
        self.parts = set(parts)
        if "window-manager" in self.parts:
            self.parts.add("x11")
        self.size = size
        self.folder = None
        self.environment = {}
        self._processes = {}

    def __enter__(self):
        try:
            self._start()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    # What the user of a desktop calls

    def start(self, command, **options):
        """Starts a program of the desktop; it is ended with the desktop at the latest."""
        options.setdefault("env", self.environment)
        return subprocess.Popen(command, **options)

    def run(self, command, **options):
        """Runs a program of the desktop to its end; subprocess.run's arguments and result."""
        options.setdefault("env", self.environment)
        return subprocess.run(command, **options)

    def output(self, *command):
        """What a helper program prints, or None when it fails."""
        result = self.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          stdin=subprocess.DEVNULL, timeout=LIMIT_SECONDS)
        return result.stdout.decode(errors="replace").strip() if result.returncode == 0 else None

    def close(self):
        if not self.folder:
            return
        # What runs in the desktop ends before the parts that it talks to.
        parts = [process.pid for process in self._processes.values()]
        self._end_marked_processes(except_for=parts)
        for process in reversed(self._processes.values()):
            self._end(process)
        self._end_marked_processes(except_for=[])
        self._processes.clear()
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder = None

    # The parts

    def _start(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vemo-desktop-"))
        self._make_home()
        # Those that need no other part start side by side, and are waited for together.
        self._start_bus()
        display = self._start_display() if "x11" in self.parts else None
        if "audio" in self.parts:
            self._start_audio()
        if display:
            self._await_display(*display)
        self._await_bus()
        if "window-manager" in self.parts:
            self._start_window_manager()
        if "keyring" in self.parts:
            self._start_keyring()
        if "accessibility" in self.parts:
            self._start_accessibility()
        if "window-manager" in self.parts:
            self._await_window_manager()
        if "audio" in self.parts:
            self._await_audio()
        if "keyring" in self.parts:
            self._await_keyring()
        if "accessibility" in self.parts:
            self._await_accessibility()

    def _make_home(self):
        home = self.folder / "home"
        folders = {
            "HOME": home,
            "XDG_CONFIG_HOME": home / ".config",
            "XDG_DATA_HOME": home / ".local/share",
            "XDG_STATE_HOME": home / ".local/state",
            "XDG_CACHE_HOME": home / ".cache",
            "XDG_RUNTIME_DIR": self.folder / "run",
            "TMPDIR": self.folder / "tmp",
        }
        for folder in folders.values():
            folder.mkdir(parents=True, exist_ok=True, mode=0o700)
        self.logs = self.folder / "log"
        self.logs.mkdir()
        self.runtime = folders["XDG_RUNTIME_DIR"]
        self.home = home

        self.environment = {name: value for name, value in os.environ.items()
                            if not FOREIGN_VARIABLES.fullmatch(name)}
        self.environment.update({name: str(folder) for name, folder in folders.items()})
        self.environment.update({
            MARKER: str(self.folder),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            "XDG_CONFIG_DIRS": "/etc/xdg",
            "LANG": "C.UTF-8",
            "LC_ALL": "C.UTF-8",
            "GSETTINGS_BACKEND": "memory",
        })
        if "accessibility" in self.parts:
            self.environment.update({"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1"})
        else:
            self.environment["NO_AT_BRIDGE"] = "1"

    def _start_bus(self):
        configuration = self.folder / "bus.conf"
        socket = self.runtime / "bus"
        configuration.write_text(BUS_CONFIGURATION.format(socket=socket))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"
        self._start_part("dbus-daemon", ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile"])

    def _await_bus(self):
        self._await_part("dbus-daemon", lambda: is_listening(self.runtime / "bus"))

    def _start_display(self):
        authority = self.folder / "Xauthority"
        authority.touch(mode=0o600)
        authority.write_bytes(x_authority(secrets.token_bytes(16)))
        self.environment["XAUTHORITY"] = str(authority)
        # Where a user works, no key repeats: on a machine that stalls, a stroke would count as several.
        repetition = ["-r"] if "window-manager" in self.parts else []
        reader, writer = os.pipe()
        process = self._start_part("Xvfb", [
            "Xvfb", "-displayfd", str(writer), "-screen", "0", f"{self.size}x24", "-nolisten", "tcp",
            "-noreset", "-auth", str(authority), *repetition], pass_fds=[writer])
        os.close(writer)
        return process, reader

    def _await_display(self, _process, reader):
        # The number comes, with a line end, when the server is ready for clients.
        number = b""
        with os.fdopen(reader, "rb", buffering=0) as pipe:
            while not number.endswith(b"\n"):
                if not select.select([pipe], [], [], LIMIT_SECONDS)[0]:
                    raise self._part_failed("Xvfb", "gives no display number")
                piece = pipe.read(16)
                if not piece:
                    raise self._part_failed("Xvfb", "ended")
                number += piece
        self.environment["DISPLAY"] = f":{number.decode().strip()}"
        self.environment["XDG_SESSION_TYPE"] = "x11"

    def _start_window_manager(self):
        configuration = self.folder / "openbox.xml"
        configuration.write_text(WINDOW_MANAGER_CONFIGURATION)
        self._start_part("openbox", ["openbox", "--sm-disable", "--config-file", str(configuration)])

    def _await_window_manager(self):
        def manages():
            answer = self.output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK", "_NET_CLIENT_LIST")
            return answer and answer.count(": window id #") == 2
        self._await_part("openbox", manages)

    def _start_audio(self):
        socket = self.runtime / "pulse-native"
        self.environment.update({
            "PULSE_SERVER": f"unix:{socket}",
            "PULSE_RUNTIME_PATH": str(self.runtime / "pulse"),
            "PULSE_STATE_PATH": str(self.folder / "pulse-state"),
        })
        # Without norewinds the sink's clock turns every two seconds, and what is recorded from it starts
        # as late; microphones start within some tens of milliseconds.
        self._start_part("pulseaudio", [
            "pulseaudio", "-n", "--exit-idle-time=-1", "--daemonize=no", "--use-pid-file=no",
            "--realtime=no", "--high-priority=no",
            # A sink of its own for what programs play by default, so that a cue isn't heard as speech.
            "--load=module-null-sink sink_name=speakers",
            "--load=module-null-sink sink_name=mic norewinds=1",
            "--load=module-remap-source master=mic.monitor source_name=virtmic",
            f"--load=module-native-protocol-unix socket={socket} auth-anonymous=1"])

    def _await_audio(self):
        socket = self.runtime / "pulse-native"
        self._await_part("pulseaudio", socket.exists)
        self._await_part("pulseaudio", lambda: self.output("pactl", "set-default-source", "virtmic") is not None)
        self._await_part("pulseaudio", lambda: self.output("pactl", "set-default-sink", "speakers") is not None)
        self._await_part("pulseaudio", lambda: self.output("pactl", "get-default-source") == "virtmic")

    def _start_keyring(self):
        process = self._start_part("gnome-keyring-daemon", [
            "gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets",
            f"--control-directory={self.runtime / 'keyring'}"], stdin=subprocess.PIPE)
        # The password ends with the stream; a line end would be part of it.
        process.stdin.write(b"virtual desktop")
        process.stdin.close()

    def _await_keyring(self):
        def is_unlocked():
            answer = self.call("org.freedesktop.secrets", "/org/freedesktop/secrets/aliases/default",
                               "org.freedesktop.DBus.Properties.Get",
                               "string:org.freedesktop.Secret.Collection", "string:Locked")
            return answer and "boolean false" in answer
        self._await_part("gnome-keyring-daemon", is_unlocked)

    def _start_accessibility(self):
        self._start_part("at-spi-bus-launcher", ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])

    def _await_accessibility(self):
        bus = ("org.a11y.Bus", "/org/a11y/bus")
        self._await_part("at-spi-bus-launcher", lambda: self.call(*bus, "org.a11y.Bus.GetAddress"))
        for property_name in ("IsEnabled", "ScreenReaderEnabled"):
            self.call(*bus, "org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status",
                      f"string:{property_name}", "variant:boolean:true")

    # Processes

    def call(self, destination, path, member, *arguments):
        """One method call over the session bus: the printed answer, or None."""
        return self.output("dbus-send", "--session", "--print-reply", "--reply-timeout=20000",
                           f"--dest={destination}", path, member, *arguments)

    def _start_part(self, name, command, **options):
        if not shutil.which(command[0]):
            raise DesktopError(f"{command[0]} is not installed; tools/install-dependencies installs it")
        with open(self.logs / f"{name}.log", "wb") as log:
            options.setdefault("stdin", subprocess.DEVNULL)
            # A session of its own: Ctrl-C in a terminal ends what runs in the desktop first, then the desktop.
            process = subprocess.Popen(command, env=self.environment, stdout=log, stderr=log,
                                       start_new_session=True, preexec_fn=end_with_parent, **options)
        self._processes[name] = process
        return process

    def _await_part(self, name, condition):
        def ready():
            if self._processes[name].poll() is not None:
                raise self._part_failed(name, "ended")
            return condition()
        try:
            wait_until(ready, f"{name} to answer")
        except DesktopError as error:
            raise self._part_failed(name, str(error)) from None

    def _part_failed(self, name, what):
        log = self.logs / f"{name}.log"
        last_lines = log.read_text(errors="replace").splitlines()[-20:] if log.exists() else []
        return DesktopError("\n".join([f"{name}: {what}", *last_lines]))

    def _end(self, process):
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(END_LIMIT_SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def _end_marked_processes(self, except_for):
        kept = {os.getpid(), *except_for}
        entry = f"{MARKER}={self.folder}".encode()
        deadline = time.monotonic() + END_LIMIT_SECONDS
        while handles := open_processes_with(entry, kept):
            overdue = time.monotonic() > deadline
            for handle in handles:
                try:
                    signal.pidfd_send_signal(handle, signal.SIGKILL if overdue else signal.SIGTERM)
                except ProcessLookupError:
                    pass
            # A handle becomes readable when its process has ended.
            select.select(handles, [], [], 0.1)
            for handle in handles:
                os.close(handle)
            if time.monotonic() > deadline + END_LIMIT_SECONDS:
                break


def open_processes_with(entry, kept):
    """Handles of the running processes whose environment has the entry."""
    handles = []
    for name in os.listdir("/proc"):
        if not name.isdigit() or int(name) in kept:
            continue
        try:
            handle = os.pidfd_open(int(name))
        except OSError:
            continue
        # Read after the handle is open: the number can't have passed to another process between the two.
        try:
            environment = pathlib.Path("/proc", name, "environ").read_bytes()
        except OSError:
            environment = b""
        if entry in environment.split(b"\0"):
            handles.append(handle)
        else:
            os.close(handle)
    return handles


def is_listening(path):
    """Whether somebody takes connections there: the file of a socket comes before."""
    with socket.socket(socket.AF_UNIX) as client:
        return client.connect_ex(str(path)) == 0


def x_authority(cookie):
    """An Xauthority file whose cookie counts for every display, as its number isn't known beforehand."""
    family_wild = 0xFFFF
    fields = [b"", b"", b"MIT-MAGIC-COOKIE-1", cookie]
    return struct.pack(">H", family_wild) + b"".join(struct.pack(">H", len(field)) + field for field in fields)


_libc = ctypes.CDLL(None)


def end_with_parent():
    """Keeps a killed test from leaving its display behind."""
    PR_SET_PDEATHSIG = 1
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
