// The one owner of the floating panel: what the recording pill shows, where, and for how long.
//
// Main thread only; owned by the composition root. The panel is made at the first show and then
// only hidden and shown, so that the pill comes up without delay. Nothing fails: where there's no
// screen or no panel, the model goes its way unseen. What the controller waits for ends with it.
#pragma once

#include <functional>
#include <memory>

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/FloatingPanel.h"
#include "ports/RecordingIndicator.h"
#include "ports/Screens.h"
#include "ui/HUDModel.h"
#include "ui/HUDView.h"

namespace vemo {

class HUDWindowController : public RecordingIndicator {
 public:
  struct With {
    Clock& clock;
    MainThread& mainThread;
    Settings& settings;
    Screens& screens;
    /// Null when there's no place for a panel.
    std::function<std::unique_ptr<FloatingPanel>()> makePanel;
  };

  explicit HUDWindowController(With with);

  void showRecording() override;
  void showTranscribing() override;
  void showError(const QString& message) override;
  void hide() override;
  void hideNow() override;
  void setLevel(float level) override;

  HUDModel& model() { return m_model; }

 private:
  void makeSureOfPanel();
  void place();
  void orderFront();
  void orderOut();
  void setPresented(bool isPresented, std::optional<Motion> motion);
  void startDismissal(Clock::Duration delay);
  Task<> dismiss(Clock::Duration delay, std::stop_token stop);
  Task<> placeAgain();

  With m_with;
  HUDModel m_model;
  std::unique_ptr<FloatingPanel> m_panel;
  std::unique_ptr<HUDView> m_view;
  Observation m_screenObserver;
  StartedTask m_dismissTask;
  TaskScope m_tasks;
};

}  // namespace vemo
