#!/usr/bin/python3
"""Signing in for real: the real program and service, the service's own sign-in page, a real browser; and what
becomes of redirects, codes and ID tokens that aren't what they should be."""

import base64
import hashlib
import hmac
import json
import pathlib
import secrets
import subprocess
import tempfile
import time
import unittest

import editors
from account_service import (CLIENT, NAME, REDIRECT, AccountService, OtherClient, TokenEndpoint, files_below,
                             places_of, query_of, request)
from browsers import Chromium, Firefox, NotingBrowser
from clipboard import ClipboardOwner, contents
from demonstration import SAMPLE_TEXT, sample_as_wav
from vemo_program import SERVICE_AND_ACCOUNT, Vemo, clear_token, say
from virtual_desktop import wait_until

SIGNED_OUT = "idle: Sign in to connect"


def stored_token():
    found = subprocess.run(["secret-tool", "lookup", *SERVICE_AND_ACCOUNT], capture_output=True, check=False)
    return found.stdout.decode()


class SignInCase(unittest.TestCase):
    """Starts signed out, and ends with a look for secrets in everything that was written."""

    browser_class = NotingBrowser

    def setUp(self):
        clear_token()
        self.secrets = set()
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.service = self.enterContext(AccountService(self.folder))
        self.endpoint = self.enterContext(TokenEndpoint(self.service.provider))
        self.browser = self.enterContext(self.browser_class())
        self.vemo = self.enterContext(Vemo(self.service.address, self.prepare))
        self.vemo.await_status(SIGNED_OUT)
        self.addCleanup(self.assert_no_secret_is_left)

    def prepare(self, vemo):
        (vemo.configuration / "vemo.conf").write_text(
            f"apiBaseURL={self.service.address}\ngoogleAuthorizationEndpoint={self.service.provider}authorize\n"
            f"googleTokenEndpoint={self.endpoint.address}\ngoogleClientId={CLIENT}\n")
        self.browser.install(vemo)

    def open_redirect(self, **query):
        self.vemo.open(REDIRECT + "?" + "&".join(f"{name}={value}" for name, value in query.items()))

    def begin(self):
        """Begins to sign in; the page that was opened."""
        self.vemo.command("sign-in")
        return self.browser.page()

    def sign_in(self):
        self.vemo.open(self.service.press(self.begin()))
        self.await_signed_in()

    def await_signed_in(self):
        self.vemo.await_status("idle")
        token = wait_until(stored_token, "a token in the keyring")
        self.secrets.add(token)
        return token

    def dictate(self):
        self.vemo.start()
        say(sample_as_wav(self.vemo.home))
        self.vemo.stop()

    def assert_signed_out(self):
        self.vemo.await_status(SIGNED_OUT)
        # A keyring that was slow to answer is told once more.
        wait_until(lambda: not stored_token(), "the token to be gone from the keyring")

    def assert_no_secret_is_left(self):
        """What was written anywhere but in the keyring, and by the time that Vemo has ended."""
        output = self.vemo.output
        self.vemo.command("quit")
        self.vemo.process.wait(120)
        paths = files_below(self.vemo.home, self.folder)
        self.assertIn(output, paths)
        self.assertIn(self.vemo.log, paths)
        self.assertEqual([path for path in paths if path.name.startswith("core")], [])
        for secret in self.secrets | self.endpoint.secrets:
            self.assertGreater(len(secret), 20)
            self.assertEqual(places_of(secret, paths), [], "a secret in clear")


class InABrowser:
    """What a person does on the page of a real browser."""

    def sign_in_by_browser(self):
        self.vemo.command("sign-in")
        self.browser.press(f"Continue as {NAME}", self.service.next_logged("POST /consent 303"))
        self.browser.allow_opening("Vemo", lambda: self.vemo.status() == "idle")
        return self.await_signed_in()

    def test_cancelling_on_the_page_is_no_error(self):
        self.vemo.command("sign-in")
        self.browser.press("Cancel", self.service.next_logged("POST /consent 303"))
        self.browser.allow_opening("Vemo")
        # Of the page's redirect and this one, the first ends the sign-in, and the second is nobody's.
        self.open_redirect(error="access_denied")
        self.vemo.await_logged(f"appDelegate: opened URL {REDIRECT}")
        self.assert_signed_out()
        self.assertEqual(self.vemo.logged("google flow FAILED"), 0)

    def test_a_page_that_was_closed_is_given_up_by_the_command_and_the_next_sign_in_works(self):
        self.vemo.command("sign-in")
        self.browser.await_button(f"Continue as {NAME}")
        self.browser.close_page()
        wait_until(lambda: self.vemo.command("cancel-sign-in") == SIGNED_OUT, "the page to be given up")
        self.sign_in_by_browser()


class WholeFlowTest(InABrowser, SignInCase):
    browser_class = Chromium

    def test_from_a_bare_home_to_a_deleted_account(self):
        second = OtherClient(self.service).sign_in()
        self.secrets |= {second.token, second.verifier}
        self.assertEqual(second.call("POST", "dictionary", {"phrase": "vee mo", "replacement": "Vemo"})[0], 201)
        first = OtherClient(self.service).with_token(self.sign_in_by_browser())
        self.assertNotEqual(first.token, second.token)
        self.vemo.await_setting("authDisplayName", NAME)

        with self.subTest("what is dictated counts"), editors.Mousepad() as editor:
            self.assertEqual(first.usage()["totalUtterances"], 0)
            dictations = self.vemo.dictate_into(editor, SAMPLE_TEXT, self.dictate)
            wait_until(lambda: first.usage()["totalUtterances"] == dictations, "the dictation to count")
            usage = second.usage()
            self.assertGreaterEqual(usage["totalWordsTranscribed"], 3)
            self.assertGreater(usage["totalMinutesTranscribed"], 0)

        with self.subTest("a name that is changed elsewhere arrives"):
            self.assertEqual(second.call("PATCH", "auth/profile", {"name": "Countess"})[0], 200)
            self.vemo.open("vemo://profile")
            self.vemo.await_setting("authDisplayName", "Countess")

        with self.subTest("words of two clients"):
            self.assertEqual(first.call("POST", "dictionary", {"phrase": "ada", "replacement": "Ada"})[0], 201)
            self.assertEqual(list(second.words()), ["vee mo", "ada"])
            self.assertEqual(first.call("DELETE", f"dictionary/{first.words()['vee mo']}")[0], 200)
            self.assertEqual(list(second.words()), ["ada"])

        with self.subTest("the deleted account"):
            self.assertEqual(second.call("DELETE", "desktop/auth/account")[0], 200)
            self.assertEqual(first.call("GET", "dictionary")[0], 401)
            self.vemo.open("vemo://profile")
            self.assert_signed_out()


class FirefoxTest(InABrowser, SignInCase):
    browser_class = Firefox


class RevokedTest(SignInCase):
    def test_a_token_that_is_revoked_in_the_middle_of_a_dictation_signs_out_and_leaves_all_that_was_there(self):
        self.sign_in()
        editor = self.enterContext(editors.Mousepad())
        self.vemo.dictate_into(editor, SAMPLE_TEXT, self.dictate)
        self.vemo.await_dictated()
        with ClipboardOwner([("UTF8_STRING", b"untouched")]) as owner:
            self.vemo.start()
            say(sample_as_wav(self.vemo.home))
            self.service.revoke_tokens()
            self.vemo.stop()
            self.assertIn(self.vemo.await_failure(), ("error: Sign-in expired — sign in again", ""))
            self.assertEqual(self.vemo.logged("error: unauthorized"), 1)
            self.assertFalse(owner.has_lost_it())
            self.assertEqual(contents(), [("UTF8_STRING", b"untouched")])
        self.assertEqual(editor.text(), SAMPLE_TEXT)
        self.assert_signed_out()
        self.sign_in()
        editor.empty()
        self.vemo.dictate_into(editor, SAMPLE_TEXT, self.dictate)


class WithoutKeyringTest(SignInCase):
    def start_again(self):
        self.vemo.command("quit")
        self.vemo.process.wait(120)
        self.vemo.launch()

    def await_profile(self):
        is_answered = self.service.next_logged("GET /desktop/auth/profile 200")
        self.vemo.open("vemo://profile")
        wait_until(is_answered, lambda: f"the service to know who asks; {self.vemo.story()}")

    def test_a_sign_in_lasts_in_a_sealed_file_until_the_sign_out(self):
        self.vemo.open(self.service.press(self.begin()))
        self.vemo.await_status("idle")
        folder = self.vemo.home / ".local/state/vemo/secrets"
        self.assertEqual(folder.stat().st_mode & 0o777, 0o700)
        self.assertEqual({path.name: path.stat().st_mode & 0o777 for path in folder.iterdir()},
                         {"sealed": 0o600, "key": 0o600})
        self.start_again()
        self.vemo.await_status("idle")
        self.await_profile()
        self.vemo.command("sign-out")
        self.assert_signed_out()
        self.assertFalse((folder / "sealed").exists())
        self.start_again()
        self.assert_signed_out()


class HostileRedirectTest(SignInCase):
    def assert_flow_fails(self, message):
        self.vemo.await_logged(f"auth: google flow FAILED — {message}")
        self.assert_signed_out()

    def test_a_wrong_state_ends_the_sign_in_before_the_code_is_used(self):
        page = self.begin()
        self.open_redirect(code=OtherClient(self.service).code(), state="wrong")
        self.assert_flow_fails("Sign-in failed a security check")
        self.assertEqual(self.endpoint.secrets, set())
        # The person's own redirect comes too late, and is nobody's.
        self.vemo.open(self.service.press(page))
        self.assert_signed_out()
        self.sign_in()

    def test_an_error_goes_before_its_wrong_state(self):
        self.begin()
        self.open_redirect(error="server_error", state="wrong")
        self.assert_flow_fails("server_error")

    def test_a_redirect_when_no_sign_in_is_under_way_is_nobodys(self):
        self.open_redirect(code=OtherClient(self.service).code(), state="any")
        self.vemo.await_logged(f"appDelegate: opened URL {REDIRECT}")
        self.assert_signed_out()
        self.sign_in()
        self.open_redirect(error="access_denied")
        self.vemo.await_status("idle")

    def test_a_code_that_was_used_before_gives_nothing(self):
        other = OtherClient(self.service)
        code = other.code()
        self.assertEqual(other.exchange(code)[0], 200)
        self.open_redirect(code=code, state=query_of(self.begin())["state"])
        self.assert_flow_fails("This sign-in was used before, or is too old.")

    def test_a_code_for_another_verifier_gives_nothing_to_either(self):
        other = OtherClient(self.service)
        code = other.code()
        self.open_redirect(code=code, state=query_of(self.begin())["state"])
        self.assert_flow_fails("Another program asked for this sign-in.")
        self.assertEqual(other.exchange(code)[0], 400)

    def test_addresses_that_make_no_sense_are_survived(self):
        for address in ("", ":", "brelmox.vemo.desktop:", REDIRECT + "?", REDIRECT + "?code=%zz&state=%00",
                        REDIRECT + "?code=" + "x" * 100_000, "file:///etc/passwd"):
            self.begin()
            self.vemo.open(address)
            self.vemo.command("cancel-sign-in")
        self.assert_signed_out()
        self.sign_in()


class AddressOfVemoTest(SignInCase):
    def test_an_address_starts_vemo_where_it_is_not_running_and_brings_its_window_back_where_it_is(self):
        self.vemo.command("quit")
        self.vemo.process.wait(120)
        self.vemo.arguments = ["open", "vemo://welcome"]
        self.vemo.launch()
        self.vemo.await_logged("app: onOpenURL vemo://welcome")
        self.assertEqual(self.vemo.windows(), [])
        self.vemo.open("vemo://again")
        self.vemo.put_window_away()


class ForgedIdTokenTest(SignInCase):
    def assert_refused(self, id_token):
        refusals = self.vemo.logged("auth: sign-in FAILED — HTTP 401")
        self.endpoint.id_token = id_token
        self.vemo.open(self.service.press(self.begin()))
        self.vemo.await_logged("auth: sign-in FAILED — HTTP 401", times=refusals + 1)
        self.assert_signed_out()

    def test_no_forged_id_token_gets_a_token(self):
        now = int(time.time())
        key = json.loads(self.service.key.read_text())
        public = request(self.service.provider, "GET", "/jwks")[2].encode()
        stranger = secrets.token_bytes(256)
        good = self.service.id_token()
        forged = {
            "for another audience": self.service.id_token(aud="another.client"),
            "of another issuer": self.service.id_token(iss="http://localhost/other"),
            "expired": self.service.id_token(iat=now - 7200, exp=now - 3600),
            "not signed": good[:good.rindex(".") + 1],
            "with the algorithm none": self.service.id_token({"alg": "none"}, lambda _: b""),
            "symmetric, with the public key": self.service.id_token(
                {"alg": "HS256"}, lambda data: hmac.digest(public, data, hashlib.sha256)),
            "symmetric, with the modulus": self.service.id_token(
                {"alg": "HS256"}, lambda data: hmac.digest(base64.urlsafe_b64decode(key["n"] + "=="), data, "sha256")),
            "signed by a stranger": self.service.id_token(sign=lambda _: stranger),
            "no token at all": "x" * 64,
        }
        for what, token in forged.items():
            with self.subTest(what):
                self.assert_refused(token)
        self.endpoint.id_token = good
        self.vemo.open(self.service.press(self.begin()))
        self.await_signed_in()
        # Once more, and it is a replay.
        self.vemo.command("sign-out")
        self.assert_refused(good)


if __name__ == "__main__":
    unittest.main(verbosity=2)
