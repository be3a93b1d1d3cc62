// A whole session on fakes, in a time that the test moves.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <cmath>
#include <string>
#include <vector>

#include "base/Json.h"
#include "fakes/FakeClock.h"
#include "session/DictationRemoteControl.h"
#include "session/SessionOnFakes.h"

namespace vemo {

using namespace std::chrono_literals;

inline const QString dictatePath = u"/desktop/dictate"_s;
inline const QString chunkPath = u"/desktop/dictate/chunk"_s;
inline const QString finalizePath = u"/desktop/dictate/finalize"_s;

inline QByteArray success(const QString& text) {
  return compactJson(QJsonObject{{u"status"_s, u"success"_s}, {u"transcription"_s, text}});
}

/// A base, so that it is there before the session.
struct FakeTime {
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
};

class SessionFixture : public testing::Test, protected FakeTime, protected SessionOnFakes {
 protected:
  SessionFixture() : SessionOnFakes(FakeTime::mainThread, FakeTime::clock) {}

  /// Makes the session; what a test sets up before counts as there at the start.
  void startUp() {
    SessionOnFakes::startUp();
    mainThread.drain();
    hud.takeCalls();
    takeEvents();
  }

  void startRecording() {
    appState->handleToggleTrigger();
    mainThread.drain();
    ASSERT_EQ(appState->phase(), Phase::recording());
  }

  void stopRecording() {
    appState->handleToggleTrigger();
    mainThread.drain();
  }

  /// Lets the microphone hear a tone (or silence) while the time that it lasts passes.
  void hear(double seconds, std::int16_t amplitude = 8000) {
    constexpr std::size_t blockSize = 1600;  // 0.1 s
    auto left = static_cast<std::size_t>(std::llround(seconds * 16000));
    while (left > 0) {
      std::vector<std::int16_t> samples(std::min(blockSize, left));
      for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 2 ? amplitude : -amplitude;
      audioInput.deliver(samples);
      clock.advance(std::chrono::microseconds(samples.size() * 1'000'000 / 16000));
      left -= samples.size();
    }
  }

  /// Records and stops, with the answer at hand.
  void dictate(const QString& answer, double seconds = 1.0) {
    http.answer(dictatePath, 200, success(answer));
    startRecording();
    hear(seconds);
    stopRecording();
  }

  /// Lets a paste come to its end and the clipboard come back.
  void finishPaste() { clock.advance(1s); }

  /// Everything that has ever been written to the clipboard as text.
  QStringList pastedTexts() const {
    QStringList texts;
    for (const auto& write : clipboard.writes()) {
      if (const QString text = plainTextOf(write); !text.isEmpty()) texts.append(text);
    }
    return texts;
  }

  int requestCount(const QString& path) const {
    int count = 0;
    for (const auto& request : http.requests()) count += request.url.path() == path;
    return count;
  }

  /// The stitched text of the first finalize that was sent.
  QString bodyOfFinalize() const {
    for (const auto& request : http.requests()) {
      if (request.url.path() == finalizePath)
        return parseJsonObject(request.body)->value(u"rawTranscript").toString();
    }
    return {};
  }

  /// The events since the last time that this was asked, as "name {props}".
  std::vector<std::string> takeEvents() {
    std::vector<std::string> events;
    for (; m_seenEvents < telemetry.queue().size(); ++m_seenEvents) {
      const auto& event = telemetry.queue()[m_seenEvents].event;
      events.push_back(event.name().toStdString() + ' ' + compactJson(event.props()).toStdString());
    }
    return events;
  }

 private:
  std::size_t m_seenEvents = 0;
};

}  // namespace vemo
