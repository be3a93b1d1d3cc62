// Keeps a panel's pixels as the pill looks: a frame at a time while something moves, none
// otherwise.
//
// Main thread only; owned by the controller beside the panel, which outlives it.
#pragma once

#include "ports/FloatingPanel.h"
#include "ui/PillPainter.h"
#include "ui/PillText.h"
#include "ui/SpokenPill.h"

namespace vemo {

class HUDView {
 public:
  HUDView(FloatingPanel& panel, HUDModel& model, Settings& settings, Clock& clock);

  const SpokenPill& spoken() const { return m_spoken; }

 private:
  void drawFrame();
  /// The pixels in which the picture differs from the last one.
  QRect changedSince(const PillPicture& picture, double scale) const;

  FloatingPanel& m_panel;
  Clock& m_clock;
  PillText m_text;
  RecordingHUD m_hud;
  PillPainter m_painter{m_text};
  SpokenPill m_spoken;
  PillPicture m_last;
  std::optional<QSize> m_drawnSize;  ///< absent when all has to be drawn
  Observation m_observation;
  Observation m_textObservation;
};

}  // namespace vemo
