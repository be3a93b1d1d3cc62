#!/usr/bin/python3
"""What Vemo does when the server, the disk or the keyring fails it, seen from outside."""

import contextlib
import os
import pathlib
import socket
import ssl
import stat
import subprocess
import tempfile
import unittest

import editors
from clipboard import ClipboardOwner, contents
from dictation_server import Answer, DictationServer, transcription
from vemo_program import Vemo, clear_token, namespaces_of_its_own, program, say, store_token
from virtual_desktop import wait_until

TOKEN = "marked-token-cassowary"
HTML = Answer(body=b"<!doctype html><title>Log in to the network</title>", content_type="text/html")


class TroubleTest(unittest.TestCase):
    def setUp(self):
        store_token(TOKEN)
        self.server = self.enterContext(DictationServer())
        self.editor = self.enterContext(editors.Mousepad())

    def start_vemo(self, address=None, **options):
        self.vemo = self.enterContext(Vemo(address or self.server.address, **options))

    def fail_to_dictate(self):
        """The status that told so, if it was seen."""
        self.server.requests.clear()
        failures = self.vemo.failures()
        self.vemo.dictate()
        return self.vemo.await_failure(failures)

    def assert_ends_with(self, message):
        with self.nothing_pasted():
            self.assertEqual(wait_until(self.fail_to_dictate, "an error to be seen"), f"error: {message}")

    @contextlib.contextmanager
    def nothing_pasted(self):
        with ClipboardOwner([("UTF8_STRING", b"untouched")]) as owner:
            yield
            self.assertFalse(owner.has_lost_it())
            self.assertEqual(contents(), [("UTF8_STRING", b"untouched")])
        self.assertEqual(self.editor.text(), "")

    def assert_requested(self, times):
        """So many times, but for what a machine that stalls asks once more."""
        self.assertIn(len(self.server.requests) - times, range(self.vemo.second_copies() + 1))

    def assert_dictation_works(self, text="It works."):
        self.server.answers = [transcription(text)]
        self.vemo.dictate_into(self.editor, text)


class AnswersOfTheServerTest(TroubleTest):
    def setUp(self):
        super().setUp()
        self.start_vemo()

    def assert_answer_ends_with(self, answer, message, requests=1):
        self.server.answers = [answer]
        self.assert_ends_with(message)
        self.assert_requested(requests)
        self.assert_dictation_works()

    def test_a_page_instead_of_an_answer_is_an_error_and_the_next_dictation_works(self):
        self.assert_answer_ends_with(HTML, "Unexpected server response")

    def test_an_empty_answer_is_an_error(self):
        self.assert_answer_ends_with(Answer(), "Unexpected server response")

    def test_an_answer_that_breaks_off_in_its_json_is_an_error(self):
        self.assert_answer_ends_with(Answer(body=b'{"status":"success","transcr'), "Unexpected server response")

    def test_a_transcription_that_is_no_text_is_an_error(self):
        self.assert_answer_ends_with(Answer(body=b'{"status":"success","transcription":[1]}'),
                                     "Unexpected server response")

    def test_an_answer_of_100_megabytes_is_survived(self):
        self.assert_answer_ends_with(Answer(body=b"[" * 100_000_000), "Unexpected server response")

    def test_three_failures_of_the_server_end_the_dictation(self):
        self.assert_answer_ends_with(Answer(status=500), "Server error (HTTP 500)", requests=3)

    def test_a_failure_of_the_server_is_retried(self):
        def dictate():
            self.server.requests.clear()
            self.server.answers = [Answer(status=503), transcription("It works.")]
            self.vemo.dictate()
        self.vemo.dictate_into(self.editor, "It works.", dictate)
        self.assert_requested(2)

    def test_a_refusal_shows_the_words_of_the_server(self):
        self.assert_answer_ends_with(Answer(status=402, body=b'{"status":"error","error":"Out of minutes"}'),
                                     "Out of minutes")

    def test_a_connection_cut_before_the_answer_is_an_error(self):
        self.assert_answer_ends_with(Answer(hang_up="before"), "Connection lost — try again", requests=3)

    def test_a_connection_cut_within_the_answer_is_an_error(self):
        answer = transcription("This never arrives as a whole.")
        answer.hang_up = "within"
        self.assert_answer_ends_with(answer, "Connection lost — try again", requests=3)

    def test_a_refused_token_signs_out(self):
        self.server.answers = [Answer(status=401)]
        with self.nothing_pasted():
            # Once, and seen or not: who is signed out doesn't fail again.
            self.assertIn(self.fail_to_dictate(), ("error: Sign-in expired — sign in again", ""))
        self.assertEqual(self.vemo.logged("error: unauthorized"), 1)
        self.vemo.command("start")
        self.vemo.await_logged("recording blocked — user not signed in")
        self.assert_requested(1)

    def test_an_answer_without_words_pastes_nothing(self):
        self.server.answers = [transcription("")]
        self.vemo.dictate()
        wait_until(lambda: self.server.requests and self.vemo.is_idle(), "Vemo to be idle again")
        self.assertEqual(self.editor.text(), "")


class AddressTest(TroubleTest):
    def test_a_host_that_is_unknown_is_an_error(self):
        self.start_vemo("https://no-such-host.invalid/")
        self.assert_ends_with("Can't find the server")

    def test_a_port_where_nobody_listens_is_an_error(self):
        with socket.socket() as unheard:
            unheard.bind(("127.0.0.1", 0))
            self.start_vemo(f"http://127.0.0.1:{unheard.getsockname()[1]}/")
            self.assert_ends_with("Can't reach the server")

    def test_a_certificate_that_is_not_trusted_is_an_error(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-days", "2",
                        "-keyout", folder / "key", "-out", folder / "certificate"], check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(folder / "certificate", folder / "key")
        with DictationServer(context) as secure:
            secure.answers = [transcription("from someone in the middle")]
            self.start_vemo(secure.address)
            self.assert_ends_with("Can't reach the server")
            self.assertEqual(secure.requests, [])

    def test_an_address_that_does_not_parse_stops_the_program_with_one_line(self):
        with tempfile.TemporaryDirectory() as home:
            configuration = pathlib.Path(home, "vemo")
            configuration.mkdir()
            (configuration / "vemo.conf").write_text("apiBaseURL=not an address\n")
            result = subprocess.run([program("vemo")], env=os.environ | {"XDG_CONFIG_HOME": home, "HOME": home},
                                    capture_output=True, timeout=120, check=False)
        self.assertNotEqual(result.returncode, 0)
        lines = result.stderr.decode().strip().splitlines()
        self.assertEqual(len(lines), 1, lines)
        self.assertIn("apiBaseURL", lines[0])


class SignInTest(TroubleTest):
    def test_without_a_token_nothing_is_recorded(self):
        clear_token()
        self.start_vemo()
        self.vemo.await_status("idle: Sign in to connect")
        self.vemo.command("start")
        self.vemo.await_logged("recording blocked — user not signed in")
        self.vemo.await_status("idle: Sign in to connect")
        self.assertEqual(self.server.requests, [])

    def test_the_token_goes_with_the_request(self):
        self.start_vemo()
        self.assert_dictation_works()
        self.assertEqual(self.server.requests[0].headers["Authorization"], f"Bearer {TOKEN}")


class DiskTest(TroubleTest):
    def test_a_full_disk_under_log_and_settings_loses_no_dictation(self):
        def fill_disk(vemo):
            # Both stand on a file system of their own that has no room left, in a namespace of Vemo's.
            full = vemo.home / "full"
            full.mkdir()
            script = vemo.home / "on-a-full-disk"
            script.write_text(
                "#!/bin/sh\n"
                f"mount -t tmpfs -o size=64k,mode=0700 tmpfs '{full}' || exit 99\n"
                f"mkdir -p '{full}/config/vemo' '{full}/state'\n"
                f"cp '{vemo.configuration}/vemo.conf' '{full}/config/vemo/'\n"
                f"dd if=/dev/zero of='{full}/filler' bs=4k 2>/dev/null\n"
                f"export XDG_CONFIG_HOME='{full}/config' XDG_STATE_HOME='{full}/state'\n"
                'exec "$@"\n')
            script.chmod(0o700)
            vemo.wrapper = [*namespaces_of_its_own("--mount"), str(script)]

        self.start_vemo(prepare_home=fill_disk)
        self.assert_dictation_works()
        wait_until(self.vemo.is_idle, "Vemo to be idle again")
        self.assertIn("[Vemo]", self.vemo.output.read_text())

    def test_a_log_that_is_a_link_is_not_written_through(self):
        def plant_link(vemo):
            self.victim = vemo.home / "victim"
            self.victim.write_text("as it was")
            vemo.log.parent.mkdir(parents=True)
            vemo.log.symlink_to(self.victim)

        # The one-time purge of old logs would remove the link; a program that has run before has done it.
        self.start_vemo(prepare_home=plant_link)
        self.assert_dictation_works()
        self.assertEqual(self.victim.read_text(), "as it was")


class PrivacyTest(TroubleTest):
    def test_what_was_said_copied_or_signed_in_with_is_readable_nowhere(self):
        marks = ["quokka", "cassowary", "axolotl"]
        self.start_vemo()
        with ClipboardOwner([("UTF8_STRING", b"the clipboard's axolotl")]):
            self.assert_dictation_works("The spoken quokka.")
            self.vemo.await_dictated()
            self.server.answers = [Answer(status=402, body=b'{"status":"error","error":"the quokka refused"}')]
            self.fail_to_dictate()
        self.vemo.command("quit")
        self.vemo.process.wait(120)
        places = {"the standard output": self.vemo.output.read_bytes()}
        for path in self.vemo.home.rglob("*"):
            if path.is_file() and (path.name.startswith("debug") or readable_by_others(path, self.vemo.home)):
                places[str(path)] = path.read_bytes()
        self.assertIn(str(self.vemo.log), places)
        for request in self.server.other_requests:
            places[request.path] = request.body
        for place, content in places.items():
            for mark in marks:
                self.assertNotIn(mark.encode(), content, f"{mark} in {place}")

    def test_log_and_settings_are_for_their_owner_alone(self):
        self.start_vemo()
        self.assert_dictation_works()
        wait_until(self.vemo.settings, "the settings to be written")
        for path in (self.vemo.log, self.vemo.configuration / "settings.json"):
            self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600, path)
        self.assertEqual(stat.S_IMODE(self.vemo.log.parent.stat().st_mode), 0o700)


def readable_by_others(path, top):
    """Whether others could read the file if the home itself were open to them."""
    if not path.stat().st_mode & 0o044:
        return False
    return all(folder.stat().st_mode & 0o011 for folder in path.parents if top in folder.parents)


class ControlTest(TroubleTest):
    def test_a_second_start_leaves_the_first_program_running(self):
        self.start_vemo()
        settings = self.vemo.settings()
        self.vemo.launch_again()
        # The first may still be writing what it adds.
        self.assertEqual(self.vemo.settings(), self.vemo.settings() | settings)
        self.assertIsNone(self.vemo.process.poll())
        self.vemo.put_window_away()
        self.assert_dictation_works()

    def test_no_core_file_can_be_written(self):
        self.start_vemo()
        limits = pathlib.Path(f"/proc/{self.vemo.process.pid}/limits").read_text()
        self.assertRegex(limits, r"Max core file size +1 ")

    def test_commands_without_a_running_program_say_so(self):
        for command in ("status", "start", "stop", "toggle", "quit"):
            result = subprocess.run([program("vemo"), command], capture_output=True, timeout=120, check=False)
            self.assertNotEqual(result.returncode, 0, command)
            self.assertTrue(result.stderr.strip(), command)

    def test_toggle_starts_and_stops(self):
        self.start_vemo()
        self.server.answers = [transcription("By one key.")]

        def dictate():
            self.vemo.start("toggle")
            say(self.vemo.tone)
            self.vemo.command("toggle")
        self.vemo.dictate_into(self.editor, "By one key.", dictate)

    def test_a_termination_ends_the_program_soon_and_cleanly(self):
        self.start_vemo()
        self.vemo.start()
        self.vemo.process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.vemo.process.wait(120)
        self.assertEqual(self.vemo.process.returncode, 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
