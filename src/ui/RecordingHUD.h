// The pill as it looks at a moment: follows the model and the setting of its colour, and moves what
// changes along the animations of each field. Draws nothing itself.
//
// Main thread only; owned by the controller, whose model and whose screen settings outlive it.
#pragma once

#include <vector>

#include "storage/Settings.h"
#include "ui/PillLayout.h"
#include "ui/VemoWaveform.h"

namespace vemo {

/// What to draw, in points from the panel's top left corner.
struct PillPicture {
  /// What stands in the pill, placed for the pill as it is at this moment.
  struct Content {
    double opacity = 1;
    PillLayout layout;
    WaveformDrawing waveform;  ///< in layout.waveform
    QString liveText;
    double liveTextOpacity = 1;
    QString message;

    friend bool operator==(const Content&, const Content&) = default;
  };

  ScreenRect pill;  ///< before its transition; without area nothing is shown
  double cornerRadius = 0;
  double scale = 1;    ///< of the pill with all that it holds, anchored at the middle of its top
  double offset = 0;   ///< downwards
  double opacity = 1;  ///< of the whole
  bool isLeaving = false;
  PillColors colors;
  std::vector<Content> contents;  ///< those that fade away first

  bool isEmpty() const { return !(pill.width > 0 && pill.height > 0); }
  friend bool operator==(const PillPicture&, const PillPicture&) = default;
};

class RecordingHUD {
 public:
  RecordingHUD(HUDModel& model, Settings& settings, Clock& clock, const PillTextMetrics& metrics);

  /// The pill at that moment, which no change has come before.
  PillPicture picture(Clock::MonotonicTime moment) const;
  /// Whether there's nothing to be seen of the pill.
  bool isGone() const { return !isVisible(m_clock.monotonicTime()); }
  /// Whether the pill looks different at the next frame.
  bool needsFrames() const;

  /// What is to be seen has changed, or begins to move.
  Notifier<> changed;

 private:
  struct Shown {
    HUDModel::State state;
    MovingValue opacity;
  };

  void followModel(const std::optional<Motion>& motion);
  void followPresence(const std::optional<Motion>& motion, Clock::MonotonicTime now);
  void followContent(Clock::MonotonicTime now);
  void followSize(const Motion& motion, Clock::MonotonicTime now);
  void followColor();
  bool isVisible(Clock::MonotonicTime moment) const;
  PillPicture::Content contentOf(const Shown& shown, const ScreenRect& pill,
                                 Clock::MonotonicTime moment) const;
  PillColors colorsAt(Clock::MonotonicTime moment) const;

  HUDModel& m_model;
  Settings& m_settings;
  Clock& m_clock;
  const PillTextMetrics& m_metrics;

  MovingValue m_presence;       ///< 0 gone, 1 there
  PillTransition m_transition;  ///< of the insertion or removal under way
  MovingValue m_width;
  MovingValue m_height;
  MovingValue m_cornerRadius;
  Shown m_current;
  std::vector<Shown> m_leaving;  ///< contents that fade away, the oldest first
  QString m_liveText;
  QString m_lastLiveText;  ///< still shown while it fades away
  MovingValue m_liveTextOpacity;
  QString m_pillColor;
  PillColors m_formerColors;
  MovingValue m_colorChange;

  Observation m_modelObservation;
  Observation m_settingsObservation;
};

}  // namespace vemo
