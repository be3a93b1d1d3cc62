// What the recording pill shows. Written by HUDWindowController alone, read by RecordingHUD. Main
// thread only.
#pragma once

#include <QString>
#include <optional>

#include "base/Notifier.h"
#include "ui/Motion.h"

namespace vemo {

struct HUDModel {
  struct State {
    enum class Kind { Error, Idle, Recording, Transcribing };
    Kind kind = Kind::Idle;
    QString message;  ///< of Error alone

    friend bool operator==(const State&, const State&) = default;
  };

  State state;
  bool isPresented = false;  ///< the pill comes and goes with its transition
  double topInset = 34;      ///< points at the top of the screen that the pill must clear
  bool hasNotch = false;     ///< the screen has a camera housing
  float level = 0;           ///< last microphone level, 0 to 1
  QString liveText;          ///< running text under the bars

  /// After each change of a field. Tells the animation that the change was asked to run under; a
  /// change without one moves as the view has it for that field.
  Notifier<std::optional<Motion>> changed;
};

}  // namespace vemo
