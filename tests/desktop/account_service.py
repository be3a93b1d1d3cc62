"""The real companion service with accounts and its local sign-in, and what tests know about it from outside."""

import base64
import contextlib
import hashlib
import http.client
import http.server
import json
import os
import pathlib
import re
import secrets
import subprocess
import threading
import time
import urllib.parse

from vemo_program import program
from virtual_desktop import DesktopError

CLIENT = "desktop.vemo.brelmox"
REDIRECT = "brelmox.vemo.desktop:/oauth2redirect"
NAME, EMAIL = "Ada", "ada@localhost"
ISSUER = "http://localhost/vemo-local-sign-in"


def base64url(data):
    return base64.urlsafe_b64encode(data).rstrip(b"=").decode()


def challenge_of(verifier):
    return base64url(hashlib.sha256(verifier.encode()).digest())


def request(address, method, path, body=None, headers=None):
    """Status, headers and body of the answer."""
    connection = http.client.HTTPConnection(address.removeprefix("http://").rstrip("/"), timeout=120)
    try:
        connection.request(method, path, body, headers or {})
        response = connection.getresponse()
        return response.status, response.headers, response.read().decode()
    finally:
        connection.close()


def form(path, address, **fields):
    return request(address, "POST", path, urllib.parse.urlencode(fields),
                   {"Content-Type": "application/x-www-form-urlencoded"})


class AccountService:
    """`with AccountService(folder) as service: service.address, service.provider`; its files are in the folder."""

    def __init__(self, folder, more_configuration=""):
        self.folder = pathlib.Path(folder)
        self._more_configuration = more_configuration
        self.key = self.folder / "sign-in-key.json"

    def __enter__(self):
        configuration = self.folder / "vemo-service.conf"
        configuration.write_text(
            f"[server]\nport = 0\ntokens-file = {self.folder}/tokens\n"
            f"[accounts]\nenabled = yes\ndatabase = sqlite:{self.folder}/accounts.db\nsign-ins-a-minute = 1000\n"
            f"[local-provider]\nenabled = yes\nport = 0\nname = {NAME}\nemail = {EMAIL}\nkey-file = {self.key}\n"
            + self._more_configuration)
        self._command = [program("vemo-service"), "--config", configuration]
        with open(self.folder / "log", "wb") as log:
            self._process = subprocess.Popen(self._command, stdout=subprocess.PIPE, stderr=log, stdin=subprocess.DEVNULL)
        lines = [self._process.stdout.readline().decode() for _ in range(2)]
        if not lines[0].startswith("Listening on http") or not lines[1].startswith("Local sign-in on http"):
            self.__exit__()
            raise DesktopError(f"the service doesn't start: {(self.folder / 'log').read_text()}")
        self.address, self.provider = (line.split()[-1] + "/" for line in lines)
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """From now on nobody answers."""
        self._process.terminate()
        self._process.wait(120)
        self._process.stdout.close()

    def revoke_tokens(self):
        subprocess.run([*self._command, "revoke-tokens", EMAIL], check=True, capture_output=True)

    def next_logged(self, words):
        """Whether the log has got one more line with the words since this was called."""
        def count():
            return sum(words in line for line in (self.folder / "log").read_text().splitlines())
        before = count()
        return lambda: count() > before

    def press(self, page, decision="continue"):
        """What the browser is sent to when the person opens the page and presses one of its buttons."""
        address = urllib.parse.urlsplit(page)
        status, _, body = request(self.provider, "GET", f"{address.path}?{address.query}")
        if status != 200:
            raise AssertionError(f"the page says {status}: {body}")
        ticket = re.search(r'name="ticket" value="([^"]+)"', body)[1]
        _, headers, _ = form("/consent", self.provider, ticket=ticket, decision=decision)
        return headers["Location"]

    def id_token(self, head=None, sign=None, **claims):
        """An ID token as the provider makes them, but for what is given; `sign` takes what is to be signed."""
        key = json.loads(self.key.read_text())
        now = int(time.time())
        claims = {"iss": ISSUER, "aud": CLIENT, "sub": "somebody", "iat": now, "exp": now + 300, "email": EMAIL,
                  "jti": secrets.token_urlsafe()} | claims
        head = {"alg": "RS256", "kid": key["kid"]} | (head or {})
        signed = ".".join(base64url(json.dumps(part).encode()) for part in (head, claims))
        return f"{signed}.{base64url((sign or rs256(key))(signed.encode()))}"


def number(text):
    return int.from_bytes(base64.urlsafe_b64decode(text + "=="))


def rs256(key):
    """Signs as PKCS #1 1.5 does, with SHA-256."""
    def sign(data):
        modulus = number(key["n"])
        size = (modulus.bit_length() + 7) // 8
        digest = bytes.fromhex("3031300d060960864801650304020105000420") + hashlib.sha256(data).digest()
        padded = b"\x00\x01" + b"\xff" * (size - len(digest) - 3) + b"\x00" + digest
        return pow(int.from_bytes(padded), number(key["d"]), modulus).to_bytes(size)
    return sign


class OtherClient:
    """Another client of the same person, which speaks the protocols by itself."""

    def __init__(self, service):
        self.service = service
        self.verifier = secrets.token_urlsafe(64)
        self.token = None

    def page(self):
        return "/authorize?" + urllib.parse.urlencode({
            "client_id": CLIENT, "redirect_uri": REDIRECT, "response_type": "code", "scope": "openid email profile",
            "code_challenge": challenge_of(self.verifier), "code_challenge_method": "S256", "state": "other"})

    def code(self):
        return query_of(self.service.press(self.page()))["code"]

    def exchange(self, code):
        return form("/token", self.service.provider, client_id=CLIENT, code=code, code_verifier=self.verifier,
                    grant_type="authorization_code", redirect_uri=REDIRECT)

    def sign_in(self):
        id_token = json.loads(self.exchange(self.code())[2])["id_token"]
        status, answer = self.call("POST", "desktop/auth/google", {"idToken": id_token})
        if status != 200:
            raise AssertionError(f"the service refuses the sign-in: {answer}")
        self.token = answer["token"]
        return self

    def with_token(self, token):
        self.token = token
        return self

    def call(self, method, path, body=None):
        """Status and JSON of the answer."""
        headers = {"Content-Type": "application/json"}
        if self.token:
            headers["Authorization"] = f"Bearer {self.token}"
        status, _, text = request(self.service.address, method, "/" + path, json.dumps(body) if body else None, headers)
        return status, json.loads(text)

    def usage(self):
        return self.call("GET", "desktop/auth/profile")[1]["user"]["consumption"]

    def words(self):
        return {entry["phrase"]: entry["id"] for entry in self.call("GET", "dictionary")[1]["dictionary"]}


def query_of(address):
    return dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))


class TokenEndpoint:
    """Stands before the provider's token endpoint, and knows the secrets that went through it. With an `id_token`
    it answers with that one instead."""

    def __init__(self, provider):
        self._provider = provider
        self.id_token = None
        self.secrets = set()

    def __enter__(self):
        owner = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                body = self.rfile.read(int(self.headers["Content-Length"])).decode()
                fields = dict(urllib.parse.parse_qsl(body))
                status, _, answer = form("/token", owner._provider, **fields)
                if owner.id_token:
                    status, answer = 200, json.dumps({"id_token": owner.id_token})
                owner.secrets |= {fields["code"], fields["code_verifier"]}
                if status == 200:
                    owner.secrets.add(json.loads(answer)["id_token"])
                self.send_response(status)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(answer.encode())))
                self.end_headers()
                self.wfile.write(answer.encode())

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.address = f"http://127.0.0.1:{self._server.server_port}/token"
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()


def files_below(*folders):
    return [path for folder in folders for path in pathlib.Path(folder).rglob("*") if path.is_file()]


def places_of(secret, paths):
    """The files that hold the secret in clear."""
    def holds_it(path):
        with contextlib.suppress(FileNotFoundError):  # a database's journal comes and goes
            return os.access(path, os.R_OK) and secret.encode() in path.read_bytes()
    return [str(path) for path in paths if holds_it(path)]
