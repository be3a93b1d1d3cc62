// Decides what the recording pill shows, and for how long. Main thread only.
#pragma once

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/RecordingIndicator.h"
#include "ui/HUDModel.h"

namespace vemo {

class HUDWindowController : public RecordingIndicator {
 public:
  HUDWindowController(Clock& clock, MainThread& mainThread);

  void showRecording() override;
  void showTranscribing() override;
  void showError(const QString& message) override;
  void hide() override;
  void hideNow() override;
  void setLevel(float level) override;

  HUDModel& model() { return m_model; }

 private:
  void present(HUDModel::State state);
  Task<> dismiss(Clock::Duration delay, std::stop_token stop);

  Clock& m_clock;
  HUDModel m_model;
  StartedTask m_dismissTask;
  TaskScope m_tasks;
};

}  // namespace vemo
