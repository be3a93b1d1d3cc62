"""What a test of telemetry asks of the server: that it takes reports and events, and which came."""

import json

from dictation_server import Answer, DictationServer
from virtual_desktop import wait_until

EVENTS = "/desktop/events"
INSTALL = "/telemetry/install"
DEVICE = "/desktop/device"
PROFILE = "/desktop/auth/profile"


class TelemetryServer(DictationServer):
    """`with TelemetryServer() as server: … server.events()`"""

    def __enter__(self):
        super().__enter__()
        self.other_answers = {EVENTS: Answer(status=202), INSTALL: Answer(status=204), DEVICE: Answer(status=204)}
        return self

    def requests_to(self, path):
        return [request for request in list(self.other_requests) if request.path == path]

    def await_requests_to(self, path, count):
        wait_until(lambda: len(self.requests_to(path)) >= count, f"request {count} to {path}")

    def await_session(self, number=1):
        """For the number-th time, Vemo knows who is signed in; before that it has nothing to tell at its end."""
        self.await_requests_to(PROFILE, number)

    def events(self):
        """Those of all batches, in the order of the batches."""
        return [event for request in self.requests_to(EVENTS) for event in json.loads(request.body)["events"]]

    def event_names(self):
        return [event["name"] for event in self.events()]

    def properties_of(self, name):
        """One dictionary for each event of the name."""
        return [event["props"] for event in self.events() if event["name"] == name]
