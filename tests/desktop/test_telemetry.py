#!/usr/bin/python3
"""What Vemo tells its service beside dictations, and what it never tells."""

import json
import socket
import time
import unittest
import urllib.parse

import editors
from clipboard import ClipboardOwner
from demonstration import shaped_text
from dictation_server import NEVER, Answer, transcription
from telemetry_server import DEVICE, EVENTS, INSTALL, TelemetryServer
from vemo_program import Humming, Vemo, namespaces_of_its_own, store_token, with_settings
from virtual_desktop import wait_until

TOKEN = "marked-token-cassowary"


class TelemetryTest(unittest.TestCase):
    def setUp(self):
        store_token(TOKEN)
        self.server = self.enterContext(TelemetryServer())

    def start_vemo(self, address=None, **options):
        self.vemo = self.enterContext(Vemo(address or self.server.address, **options))

    def quit_vemo(self):
        """Returns how many seconds the program took to end."""
        begin = time.monotonic()
        self.vemo.command("quit")
        self.assertEqual(self.vemo.process.wait(120), 0)
        return time.monotonic() - begin

    def dictate(self, text, expected=None):
        """Up to the text in the history and the clipboard given back. Once: every dictation is told of."""
        before, _ = self.vemo.pastes()
        self.server.answers = [transcription(text)]
        self.vemo.dictate()
        self.vemo.await_dictated(before)
        wait_until(lambda: shaped_text(self.vemo).endswith(expected or text), lambda: f"{text}; {self.vemo.story()}")

    def fail_to_dictate(self, *answers):
        self.server.answers = list(answers)
        failures = self.vemo.failures()
        self.vemo.dictate()
        self.vemo.await_failure(failures)


class ReportsTest(TelemetryTest):
    def assert_common_headers(self, headers):
        self.assertEqual(headers["Content-Type"], "application/json")
        self.assertEqual(headers["x-platform"], "macos")
        self.vemo.await_setting("telemetryInstallId", headers["x-device-id"])
        self.assertRegex(headers["x-device-id"], r"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$")
        self.assertRegex(headers["x-app-version"], r"^\d+\.\d+\.\d+ \(\d+\)$")
        self.assertRegex(headers["x-os-version"], r"^\w.*\d")

    def test_a_launch_sends_the_ping_of_the_installation_and_the_report_on_the_device(self):
        self.start_vemo()
        self.server.await_requests_to(INSTALL, 1)
        self.server.await_requests_to(DEVICE, 1)

        ping = self.server.requests_to(INSTALL)[0]
        self.assert_common_headers(ping.headers)
        self.assertNotIn("Authorization", ping.headers)
        self.assertTrue(ping.headers["x-device-model"])
        self.assertIn("x-locale", ping.headers)
        self.assertEqual(ping.body, b"")

        report = self.server.requests_to(DEVICE)[0]
        self.assert_common_headers(report.headers)
        self.assertEqual(report.headers["Authorization"], f"Bearer {TOKEN}")
        facts = json.loads(report.body)
        self.assertEqual(facts["displayCount"], 1)
        self.assertEqual(facts["mainDisplay"], "1280x800")
        self.assertEqual(facts["inputSources"], ["us"])
        self.assertEqual(facts["shareUsageStatistics"], True)
        self.assertEqual(facts["versionLabel"], report.headers["x-app-version"])
        self.assertEqual(facts["osVersion"], report.headers["x-os-version"])
        wait_until(lambda: self.vemo.settings().get("telemetryDeviceReport"), "the report to be remembered")

    def test_with_sharing_off_the_reports_tell_less(self):
        self.start_vemo(prepare_home=with_settings(shareUsageStatistics=False))
        self.server.await_requests_to(INSTALL, 1)
        self.server.await_requests_to(DEVICE, 1)
        self.assertFalse({"x-locale", "x-timezone"} & set(self.server.requests_to(INSTALL)[0].headers))
        facts = json.loads(self.server.requests_to(DEVICE)[0].body)
        self.assertFalse(facts["shareUsageStatistics"])
        self.assertLessEqual(set(facts), {"macModel", "cpuArchitecture", "osVersion", "appVersion", "appBuild",
                                          "versionLabel", "shareUsageStatistics", "chip"})

    def test_a_second_launch_pings_again_and_has_nothing_new_to_report(self):
        self.start_vemo()
        wait_until(lambda: self.vemo.settings().get("telemetryDeviceReport"), "the report to be remembered")
        self.quit_vemo()
        self.vemo.launch()
        self.server.await_requests_to(INSTALL, 2)
        self.quit_vemo()
        first, second = self.server.requests_to(INSTALL)
        self.assertEqual(first.headers["x-device-id"], second.headers["x-device-id"])
        self.assertEqual(len(self.server.requests_to(DEVICE)), 1)


class EventsTest(TelemetryTest):
    def setUp(self):
        super().setUp()
        self.enterContext(editors.Mousepad())

    def test_the_events_of_a_dictation_leave_when_the_program_ends(self):
        self.start_vemo()
        self.dictate("Three short words.")
        self.quit_vemo()
        names = self.server.event_names()
        self.assertEqual([name for name in names if not name.startswith(("permission_", "request_slow"))],
                         ["app_launched", "dictation_started", "dictation_completed", "first_dictation", "session_ended"])
        self.assertEqual(self.server.properties_of("dictation_started"), [{"mode": "hold", "shortcut": "eitherOption"}])
        completed, = self.server.properties_of("dictation_completed")
        self.assertGreater(completed.pop("seconds"), 0.3)
        self.assertGreaterEqual(completed.pop("latencyMs"), 0)
        self.assertTrue(completed.pop("model"))
        self.assertEqual(completed, {"lengthBucket": "lt10s", "words": 3, "language": "en", "outputMode": "transcribe",
                                     "chunked": False, "streamed": False})
        for event in self.server.events():
            self.assertEqual(set(event), {"name", "props", "at"})
            self.assertRegex(event["at"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        batch, = self.server.requests_to(EVENTS)
        self.assertEqual(batch.headers["Authorization"], f"Bearer {TOKEN}")
        self.assertEqual(batch.headers["x-device-id"], self.vemo.settings()["telemetryInstallId"])

    def test_turning_the_program_off_and_on_tells_of_each_session_and_of_one_first_dictation(self):
        self.start_vemo()
        self.dictate("First.")
        self.quit_vemo()
        self.vemo.launch()
        self.dictate("Second.")
        self.quit_vemo()
        names = self.server.event_names()
        for name, count in (("app_launched", 2), ("session_ended", 2), ("dictation_completed", 2), ("first_dictation", 1),
                            ("update_installed", 0)):
            self.assertEqual(names.count(name), count, name)

    def test_another_build_than_last_time_is_an_update(self):
        self.start_vemo(prepare_home=with_settings(telemetryLastLaunchedBuild="0"))
        self.server.await_session()
        self.quit_vemo()
        update, = self.server.properties_of("update_installed")
        self.assertEqual(update["build"], int(self.vemo.settings()["telemetryLastLaunchedBuild"]))

    def test_with_sharing_off_failures_are_told_and_nothing_else(self):
        self.start_vemo(prepare_home=with_settings(shareUsageStatistics=False))
        self.dictate("Nobody hears of this.")
        self.fail_to_dictate(Answer(status=402, body=b'{"status":"error","error":"Out of minutes"}'))
        self.quit_vemo()
        self.assertEqual([name for name in self.server.event_names() if name != "request_slow"],
                         ["request_failed", "dictation_failed"])
        self.assertEqual(self.server.properties_of("dictation_failed"), [{"reason": "server", "chunked": False}])
        failed, = self.server.properties_of("request_failed")
        self.assertEqual((failed["endpoint"], failed["status"]), ("dictate", 402))

    def test_a_refused_token_takes_the_events_of_its_account_along(self):
        self.start_vemo()
        self.dictate("Signed in.")
        self.fail_to_dictate(Answer(status=401))
        self.server.await_requests_to(EVENTS, 1)
        batch, = self.server.requests_to(EVENTS)
        self.assertEqual(batch.headers["Authorization"], f"Bearer {TOKEN}")
        self.assertIn("dictation_completed", self.server.event_names())
        self.quit_vemo()
        self.assertEqual(len(self.server.requests_to(EVENTS)), 1, "without a token nothing leaves")


class MarksTest(TelemetryTest):
    """Each thing that is nobody's business has a mark, and what Vemo says and keeps is searched for them."""

    SPEECH = "quokka"
    SNIPPET = "axolotl"
    DICTIONARY = "pangolin"
    CLIPBOARD = "narwhal"
    MARKS = (SPEECH, SNIPPET, DICTIONARY, CLIPBOARD, TOKEN)

    def prepare_home(self, vemo):
        def entries(*items):
            return {"data": json.dumps(list(items))}
        with_settings(
            customDictionaryEntries=entries({"id": "1", "phrase": "scaly beast", "replacement": self.DICTIONARY}),
            customShortcutEntries=entries({"id": "2", "trigger": "my address", "snippet": f"{self.SNIPPET} street"}))(vemo)

    def test_what_was_said_saved_copied_or_signed_in_with_leaves_in_dictations_alone(self):
        self.enterContext(editors.Mousepad())
        self.start_vemo(prepare_home=self.prepare_home)
        with ClipboardOwner([("UTF8_STRING", f"the clipboard's {self.CLIPBOARD}".encode())]):
            self.dictate_in_every_way()
        self.quit_vemo()

        self.assert_no_mark_left_the_machine()
        for path in [self.vemo.output, *(self.vemo.home / ".local/state").rglob("*")]:
            if path.is_file():
                self.assertEqual(self.marks_in(path), [], path)
        self.assertTrue(self.vemo.log.is_file())

    def dictate_in_every_way(self):
        said = f"The spoken {self.SPEECH}"
        self.dictate(f"{said}.")
        self.dictate(f"{said} met a scaly beast.", f"{said} met a {self.DICTIONARY}.")
        self.dictate(f"{said} lives at my address.", f"{self.SNIPPET} street.")
        before, _ = self.vemo.pastes()
        self.server.answers = [transcription(f"{said} went on and on.")]
        with Humming():
            self.vemo.start()
            self.vemo.await_logged("transcribeChunk: sending chunk #0 ")
            self.vemo.stop()
        self.vemo.await_dictated(before)
        self.assertEqual(self.marks_in(self.vemo.configuration / "settings.json"),
                         [self.SPEECH, self.SNIPPET, self.DICTIONARY], "the search doesn't find what is there")
        for answer in (Answer(status=402, body=json.dumps({"status": "error", "error": said}).encode()),
                       Answer(status=500, body=said.encode()),
                       Answer(body=said.encode()),
                       Answer(body=json.dumps({"status": "success", "transcription": [said]}).encode()),
                       Answer(status=401, body=said.encode())):
            self.fail_to_dictate(answer)

    def marks_in(self, path):
        content = path.read_bytes().lower()
        return [mark for mark in self.MARKS if mark.encode() in content]

    def assert_no_mark_left_the_machine(self):
        names = self.server.event_names()
        for name in ("dictation_completed", "dictation_failed", "request_failed"):
            self.assertIn(name, names)
        self.assertTrue(self.server.requests)
        for request in self.server.requests + self.server.other_requests:
            headers = {name.lower(): value for name, value in request.headers.items()}
            authorization = headers.pop("authorization", None)
            self.assertEqual(authorization, None if request.path == INSTALL else f"Bearer {TOKEN}", request.path)
            body = b"" if request in self.server.requests else request.body
            sent = urllib.parse.unquote(request.path) + json.dumps(headers) + body.decode()
            for mark in self.MARKS:
                self.assertNotIn(mark, sent.lower(), request.path)


class EndTest(TelemetryTest):
    """The last batch has two seconds, whatever the network is like."""

    LONGEST_WAIT = 2.0
    # What ending takes beside the wait, on a machine that has much else to do.
    ALLOWANCE = 2.0
    MOST_ENDS = 5
    server_hears = True

    def assert_ends(self, before, not_before=0):
        """Within so many seconds, at its quickest: what a machine that stalls adds to an end isn't the program's."""
        for number in range(1, self.MOST_ENDS + 1):
            if self.server_hears:
                self.server.await_session(number)
            seconds = self.quit_vemo()
            print(f"    {self.id().split('.')[-1]}: ended after {seconds:.2f} s")
            # Where the server no longer tells that Vemo has something to send, the first end alone is sure to.
            if self.server_hears or number == 1:
                self.assertGreaterEqual(seconds, not_before)
            if seconds < before:
                return
            self.vemo.launch()
        self.fail(f"none of {self.MOST_ENDS} ends came within {before} s")

    def assert_ends_after_the_wait(self):
        self.assert_ends(self.LONGEST_WAIT + self.ALLOWANCE, not_before=self.LONGEST_WAIT)

    def test_a_server_that_answers_holds_nothing_up(self):
        self.start_vemo()
        self.assert_ends(before=self.LONGEST_WAIT)
        self.assertIn("session_ended", self.server.event_names())

    def test_a_server_that_never_answers_is_given_two_seconds(self):
        self.server.other_answers[EVENTS] = NEVER
        self.start_vemo()
        self.assert_ends_after_the_wait()
        self.assertIn("session_ended", self.server.event_names())

    def test_a_server_that_trickles_is_given_two_seconds(self):
        self.server.other_answers[EVENTS] = Answer(body=b" " * 1000, trickle=0.1)
        self.start_vemo()
        self.assert_ends_after_the_wait()

    def test_a_server_that_takes_no_connection_is_given_two_seconds(self):
        self.start_vemo()
        self.server.await_session()
        self.server.deafen()
        self.server_hears = False
        self.assert_ends_after_the_wait()

    def test_where_nobody_listens_nobody_waits(self):
        with socket.socket() as unheard:
            unheard.bind(("127.0.0.1", 0))
            self.server_hears = False
            self.start_vemo(f"http://127.0.0.1:{unheard.getsockname()[1]}/")
            self.assert_ends(before=self.LONGEST_WAIT)

    def test_a_name_server_that_never_answers_is_given_two_seconds(self):
        self.server_hears = False
        self.start_vemo("https://vemo.example/", prepare_home=behind_a_silent_name_server)
        # Whoever asks it is given another second.
        self.assert_ends(before=self.LONGEST_WAIT + 1 + self.ALLOWANCE)


def behind_a_silent_name_server(vemo):
    """Vemo runs in a network of its own, in which nothing is but a name server that hears and says nothing."""
    configuration = vemo.home / "resolv.conf"
    configuration.write_text("nameserver 127.0.0.1\n")
    silence = vemo.home / "silence"
    silence.write_text(
        "#!/usr/bin/python3\n"
        "import fcntl, os, socket, struct, subprocess, sys\n"
        "name_server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
        "fcntl.ioctl(name_server, 0x8914, struct.pack('16sh14x', b'lo', 1))  # SIOCSIFFLAGS, IFF_UP\n"
        "name_server.bind(('127.0.0.1', 53))\n"
        "name_server.set_inheritable(True)\n"
        f"subprocess.run(['mount', '--bind', '{configuration}', '/etc/resolv.conf'], check=True)\n"
        "os.execv(sys.argv[1], sys.argv[1:])\n")
    silence.chmod(0o700)
    vemo.wrapper = [*namespaces_of_its_own("--mount", "--net"), str(silence)]


if __name__ == "__main__":
    unittest.main(verbosity=2)
