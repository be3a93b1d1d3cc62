#!/usr/bin/python3
"""The figures that the pages tell people are those of the sources."""

import collections
import re
import unittest

from pages import SOURCE

Figure = collections.namedtuple("Figure", "page told source said")

FIGURES = [Figure(*row) for row in [
    ("README.md", "comes back 0.9 s after the paste", "src/desktop/TextInjector.cpp", "restoreDelay = 900ms"),
    ("README.md", "the last five dictations", "src/session/DictationHistory.cpp", "mostDictations = 5;"),
    ("docs/keys.md", "and so do two hours", "src/session/AppStateRecording.cpp", "maxRecordingDuration = 7200s"),
    ("docs/keys.md", "Of less than 0.3 s nothing comes", "src/session/AppStateRecording.cpp", "minAudioSeconds = 0.3;"),
    ("docs/keys.md", "within 0.35 s are one", "src/desktop/HotkeyManager.h", "toggleDebounceThreshold{350}"),
    ("docs/privacy.md", "the last five dictations", "src/session/DictationHistory.cpp", "mostDictations = 5;"),
    ("docs/privacy.md", "in memory, 200 at most", "src/telemetry/Telemetry.cpp", "queueLimit = 200;"),
    ("docs/privacy.md", "leave every minute", "src/telemetry/Telemetry.cpp", "flushInterval = 60s;"),
    ("docs/privacy.md", "when there are 20 of them", "src/telemetry/Telemetry.cpp", "flushThreshold = 20;"),
    ("docs/privacy.md", "waits two seconds for that at most", "src/telemetry/Telemetry.cpp",
     "lastRequestLimit = 2000ms"),
    ("docs/privacy.md", "once a day, unless", "src/platform/updater/SelfUpdater.cpp", "checkInterval = 24h"),
    ("docs/releasing.md", "a day after the last one", "src/platform/updater/SelfUpdater.cpp", "checkInterval = 24h"),
    ("docs/releasing.md", "It takes 100 versions", "src/platform/updater/Appcast.cpp", "mostItems = 100;"),
    ("docs/releasing.md", "and 4 MiB", "src/platform/updater/Appcast.h", "largestFeed = 4 * 1024 * 1024;"),
    ("docs/releasing.md", "366 days at most", "tools/release/main.cpp", "mostDays = 366;"),
    ("docs/releasing.md", "at first 30,", "src/platform/updater/Appcast.h", "days = 30;"),
    ("docs/secrets.md", "given up after 200 ms", "src/platform/secretservice/SecretServiceBackend.h",
     "timeLimit = Milliseconds(200)"),
    ("docs/self-hosting.md", "it has 5,000 entries", "service/src/accounts/Dictionary.h", "entriesAnAccount = 5000;"),
    ("docs/self-hosting.md", "after 180 days without use", "service/src/accounts/BearerTokens.h", "unusedDays = 180;"),
    ("docs/self-hosting.md", "when its account has 50 newer ones", "service/src/accounts/BearerTokens.h",
     "tokensAnAccount = 50;"),
    ("docs/self-hosting.md", "60 reports a minute", "service/src/telemetry/TelemetryApi.h", "reportsAMinute = 60;"),
    ("docs/self-hosting.md", "at most 200 events and 64 KiB", "service/src/telemetry/TelemetryBodies.h",
     "mostEvents = 200;"),
    ("docs/self-hosting.md", "the last 4 MiB of answers", "service/src/http/EqualRequests.h",
     "rememberedBytes = 4 * 1024 * 1024;"),
    ("docs/self-hosting.md", "above 4 MiB only in parts", "service/src/updates/UpdatesApi.h",
     "largestPart = 4 * 1024 * 1024;"),
    ("docs/self-hosting.md", "good once and for 60 seconds", "service/src/provider/SignInCodes.h", "codeLifetime{60};"),
    ("docs/self-hosting.md", "Recordings above 20 s", "service/src/speech/Utterances.cpp",
     "longest = 20 * sampleRate;"),
]]


class FiguresTest(unittest.TestCase):
    def test_each_stands_on_its_page_and_in_its_source(self):
        for figure in FIGURES:
            with self.subTest(figure.told):
                page = re.sub(r"\s+", " ", (SOURCE / figure.page).read_text())
                self.assertIn(figure.told, page)
                self.assertIn(figure.said, (SOURCE / figure.source).read_text())


if __name__ == "__main__":
    unittest.main()
