// A pill that remembers what it was told to show.
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "ports/RecordingIndicator.h"

namespace vemo {

class FakeRecordingIndicator : public RecordingIndicator {
 public:
  void showRecording() override { calls.emplace_back("showRecording"); }
  void showTranscribing() override { calls.emplace_back("showTranscribing"); }
  void showError(const QString& message) override {
    calls.push_back("showError(" + message.toStdString() + ")");
  }
  void hide() override { calls.emplace_back("hide"); }
  void hideNow() override { calls.emplace_back("hideNow"); }
  void setLevel(float level) override { levels.push_back(level); }

  /// The calls since the last time that this was asked.
  std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

  std::vector<std::string> calls;
  std::vector<float> levels;
};

}  // namespace vemo
