// What the recording pill shows. Written by HUDWindowController alone. Main thread only.
#pragma once

#include <QString>

#include "base/Notifier.h"

namespace vemo {

struct HUDModel {
  struct State {
    enum class Kind { Error, Idle, Recording, Transcribing };
    Kind kind = Kind::Idle;
    QString message;  ///< of Error alone

    friend bool operator==(const State&, const State&) = default;
  };

  State state;
  bool isPresented = false;
  float level = 0;  ///< last microphone level, 0 to 1

  Notifier<> changed;
};

}  // namespace vemo
