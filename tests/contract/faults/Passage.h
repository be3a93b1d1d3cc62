// What becomes of one request on its way from the client to the service and back.
//
// It stalls once: when so much of a stage's bytes has gone through, for so long, and then goes on
// or ends. A plain value.
#pragma once

#include <QByteArray>
#include <optional>
#include <ostream>

#include "base/Clock.h"

namespace vemo {

struct Passage {
  enum class Stage {
    Handshake,  ///< accepted, and nothing read; with TLS, before the server's first word
    Request,
    Answer,
  };
  enum class End {
    GoesOn,
    GoesOnAndCloses,  ///< delivers the answer and closes
    Resets,
    Closes,
  };

  Stage stage = Stage::Answer;
  double share = 0;                                           ///< of the stage's bytes; below 1
  std::optional<Clock::Duration> stall = Clock::Duration(0);  ///< absent: for ever
  End end = End::GoesOn;
  std::optional<QByteArray> answer = {};  ///< all its bytes, instead of the service's

  /// For a failure's message.
  friend std::ostream& operator<<(std::ostream& stream, const Passage& passage) {
    static constexpr const char* stages[] = {"handshake", "request", "answer"};
    static constexpr const char* ends[] = {"goes on", "goes on and closes", "resets", "closes"};
    stream << "stalls after " << passage.share << " of the "
           << stages[static_cast<int>(passage.stage)];
    if (passage.stall)
      stream << " for " << std::chrono::duration<double>(*passage.stall).count() << " s, then "
             << ends[static_cast<int>(passage.end)];
    if (passage.answer) stream << ", with an answer of " << passage.answer->size() << " bytes";
    return stream;
  }
};

}  // namespace vemo
