"""A server that answers dictations, and what else it is asked, as a test has scripted, and remembers it all."""

import dataclasses
import http.client
import http.server
import json
import math
import select
import socket
import struct
import threading
import time


@dataclasses.dataclass
class Request:
    path: str
    headers: dict
    body: bytes


@dataclasses.dataclass
class Answer:
    status: int = 200
    body: bytes = b""
    content_type: str = "application/json"
    delay: float = 0  # seconds until the answer begins; a client that has left by then gets none
    trickle: float = 0  # seconds from each byte of the body to the next
    hang_up: str = ""  # "before" or "within" the answer: the connection is cut there; "reset": and not politely


def transcription(text):
    return Answer(body=json.dumps({"status": "success", "transcription": text}).encode())


NEVER = Answer(delay=math.inf)
UNKNOWN = Answer(status=404, body=b'{"status":"error"}')


class DictationServer:
    """`with DictationServer() as server: server.answers = [transcription("…")]`; the last one stays."""

    def __init__(self, tls=None):
        """`tls` is the ssl.SSLContext of a server that answers https."""
        self._tls = tls

    def __enter__(self):
        self.answers = [transcription("")]
        self.requests = []  # dictations
        self.other_requests = []
        self.other_answers = {}  # by path; what isn't there is unknown
        self._lock = threading.Lock()
        owner = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                self.do_POST()

            do_PATCH = do_DELETE = do_GET

            def do_POST(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                request = Request(self.path, dict(self.headers), body)
                if not self.path.startswith("/desktop/dictate"):
                    owner.other_requests.append(request)
                    self._answer(owner.other_answers.get(self.path, UNKNOWN))
                    return
                self._answer(owner.take(request))

            def _answer(self, answer):
                if answer.delay and self._client_leaves_within(answer.delay):
                    self.close_connection = True
                    return
                if answer.hang_up == "reset":
                    # Closed with nothing left to linger for, a connection ends by a reset.
                    self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
                    socket.close(self.connection.detach())
                    self.close_connection = True
                    return
                if answer.hang_up == "before":
                    self._hang_up()
                    return
                self.send_response(answer.status)
                self.send_header("Content-Type", answer.content_type)
                self.send_header("Content-Length", str(len(answer.body)))
                self.end_headers()
                if answer.hang_up == "within":
                    self.wfile.write(answer.body[:len(answer.body) // 2])
                    self._hang_up()
                    return
                if answer.trickle:
                    self._trickle(answer)
                else:
                    self.wfile.write(answer.body)

            def _trickle(self, answer):
                for index in range(len(answer.body)):
                    self.wfile.write(answer.body[index:index + 1])
                    if self._client_leaves_within(answer.trickle):
                        self.close_connection = True
                        return

            def _client_leaves_within(self, seconds):
                limit = None if seconds == math.inf else seconds
                return bool(select.select([self.connection], [], [], limit)[0])

            def _hang_up(self):
                self.close_connection = True
                self.connection.shutdown(socket.SHUT_RDWR)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self._server.handle_error = lambda *_: None
        if self._tls:
            self._server.socket = self._tls.wrap_socket(self._server.socket, server_side=True,
                                                        do_handshake_on_connect=False)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        scheme, host = ("https", "localhost") if self._tls else ("http", "127.0.0.1")
        self.address = f"{scheme}://{host}:{self._server.server_port}/"
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()

    def deafen(self):
        """From now on connections are neither taken nor refused."""
        self._server.shutdown()

    def take(self, request):
        """The answer to a dictation's request; called on a thread of the request's connection."""
        with self._lock:
            self.requests.append(request)
            return self.answers.pop(0) if len(self.answers) > 1 else self.answers[0]


@dataclasses.dataclass
class Exchange:
    path: str
    request: bytes
    status: int
    answer: bytes
    milliseconds: float  # what the service took


class RecordingProxy:
    """Stands between Vemo and a service, and remembers what went to and fro."""

    def __init__(self, address):
        host, _, port = address.removeprefix("http://").rstrip("/").partition(":")
        self._target = (host, int(port))

    def __enter__(self):
        self.exchanges = []  # in the order of the answers
        owner = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                self._pass_on()

            def do_POST(self):
                self._pass_on()

            def _pass_on(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
                begin = time.monotonic()
                connection = http.client.HTTPConnection(*owner._target, timeout=300)
                connection.request(self.command, self.path, body, dict(self.headers))
                response = connection.getresponse()
                answer = response.read()
                owner.exchanges.append(Exchange(self.path, body, response.status, answer,
                                                (time.monotonic() - begin) * 1000))
                connection.close()
                self.send_response(response.status)
                for name, value in response.getheaders():
                    if name.lower() not in ("connection", "transfer-encoding", "content-length", "date", "server"):
                        self.send_header(name, value)
                self.send_header("Content-Length", str(len(answer)))
                self.end_headers()
                self.wfile.write(answer)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self._server.handle_error = lambda *_: None
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.address = f"http://127.0.0.1:{self._server.server_port}/"
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()
