// Plays a story of faults with a session of its own, and holds what comes of it to the rules. The
// network is for derived classes to bring: in virtual time, or over sockets.
#pragma once

#include <algorithm>
#include <cstdio>
#include <memory>

#include "session/FaultModel.h"
#include "session/FaultNetwork.h"
#include "session/SessionFixture.h"

namespace vemo {

/// The first seed of a run: the fixed one, or what VEMO_FAULT_SEED asks for (a number or "random").
inline std::uint64_t firstFaultSeed() {
  const QByteArray asked = qgetenv("VEMO_FAULT_SEED");
  if (asked.isEmpty()) return 20'000;
  const std::uint64_t seed = asked == "random" ? std::random_device()() : asked.toULongLong();
  std::printf("VEMO_FAULT_SEED=%llu\n", static_cast<unsigned long long>(seed));
  return seed;
}

class FaultStoryRun : public SessionFixture {
 public:
  FaultStoryRun(std::uint64_t seed, Wire wire) : m_story(seed, wire) {}

  void TestBody() override {
    startUp();
    const std::size_t sleepersAtRest = clock.sleeperCount();
    dictate(m_story.first, m_story.interruption);
    if (m_story.second) {
      passTo(m_story.secondStart);
      check(0, m_story.firstExpected);
      dictate(*m_story.second, {});
      pass(10min);
      check(1, m_story.second->expected());
    } else {
      pass(10min);
      check(0, m_story.firstExpected);
    }
    checkSends(0, m_story.firstExpected);
    EXPECT_EQ(network.openCount(), 0);
    EXPECT_EQ(clock.sleeperCount(), sleepersAtRest);
    EXPECT_TRUE(mainThread.isEmpty());
    EXPECT_FALSE(recorder.isRecording());
  }

 protected:
  /// Lets time pass, and the network do all that it does in that time.
  virtual void pass(Clock::Duration duration) { clock.advance(duration); }

  FaultNetwork network{clock};

 private:
  void passTo(Clock::Duration sinceStart) { pass(m_start + sinceStart - clock.monotonicTime()); }

  void dictate(const DictationFaults& faults, const Interruption& interruption) {
    m_start = clock.monotonicTime();
    m_wallStart = clock.wallTime();
    network.begin(faults);
    startRecording();
    pass(0s);
    EXPECT_EQ(network.openCount(), 0) << "uploads of the last dictation go on";
    bool isInterrupted = interruption.kind == Interruption::Kind::None;
    for (int tenth = 0; tenth <= faults.tenths; ++tenth) {
      if (!isInterrupted && interruption.time < tenth * 100ms) {
        interrupt(interruption);
        isInterrupted = true;
        if (interruption.kind == Interruption::Kind::Disable) return;
      }
      passTo(tenth * 100ms);
      if (tenth < faults.tenths) audioInput.deliver(block(faults.amplitude(tenth / 150)));
    }
    stopRecording();
    if (!isInterrupted) interrupt(interruption);
  }

  static std::vector<std::int16_t> block(std::int16_t amplitude) {
    std::vector<std::int16_t> samples(1'600, amplitude);
    for (std::size_t i = 1; i < samples.size(); i += 2)
      samples[i] = static_cast<std::int16_t>(-amplitude);
    return samples;
  }

  void interrupt(const Interruption& interruption) {
    passTo(interruption.time);
    noteFailures();
    if (interruption.kind == Interruption::Kind::SignOut) {
      appState->clearLocalUserData();
      return;
    }
    appState->setEnabled(false);
    EXPECT_EQ(appState->phase(), Phase::idle());
    pass(0s);
    EXPECT_EQ(network.openCount(), 0) << "requests outlive the disabling";
    appState->setEnabled(true);
  }

  /// Before the events are looked at, and before a sign-out drops them.
  void noteFailures() {
    for (const auto& [event, time] : telemetry.queue()) {
      if (event.name() == u"dictation_failed"_s && time >= m_wallStart)
        m_failures += compactJson(event.props()).toStdString();
    }
  }

  void check(std::size_t dictation, const DictationFaults::Expected& expected) {
    EXPECT_EQ(appState->phase(), Phase::idle());
    const QStringList pasted = pastedTexts().sliced(m_pastesChecked);
    m_pastesChecked += pasted.size();
    const QStringList wanted =
        expected.pasted.isEmpty() ? QStringList() : QStringList{expected.pasted};
    EXPECT_EQ(pasted.join(u'|').toStdString(), wanted.join(u'|').toStdString());
    EXPECT_EQ(keyPoster.makePasteCount(), m_pastesChecked);
    noteFailures();
    const std::string failures = std::exchange(m_failures, {});
    if (expected.reason.empty())
      EXPECT_EQ(failures, "");
    else
      EXPECT_THAT(failures, testing::HasSubstr("\"reason\":\"" + expected.reason + '"'));
    checkSends(dictation, expected);
  }

  void checkSends(std::size_t dictation, const DictationFaults::Expected& expected) {
    auto& records = network.recordsOf(dictation);
    EXPECT_EQ(records.size(), expected.sends.size());
    for (const auto& [name, sends] : expected.sends) {
      SCOPED_TRACE(name);
      const auto& record = records[name];
      EXPECT_EQ(record.sends, sends) << "copies and their moments";
      EXPECT_LE(record.sends.size(), 6u);
      for (std::size_t i = 0; i < record.sends.size(); ++i) {
        EXPECT_EQ(record.bodies[i], record.bodies[0]);
        if (record.sends[i].copy == 0) continue;
        ASSERT_GT(i, 0u);
        EXPECT_GE(record.sends[i].time - record.sends[i - 1].time, Milliseconds(5'000));
      }
    }
    if (!records.contains("finalize")) return;
    const auto body = QJsonDocument::fromJson(records["finalize"].bodies[0]).object();
    EXPECT_EQ(body[u"rawTranscript"_s].toString(), expected.rawTranscript);
  }

  const FaultStory m_story;
  Clock::MonotonicTime m_start;
  Clock::WallTime m_wallStart;
  std::string m_failures;
  qsizetype m_pastesChecked = 0;
};

}  // namespace vemo
