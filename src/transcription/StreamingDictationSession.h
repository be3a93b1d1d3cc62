// A live transcription connection: audio goes out while the user speaks, the text comes back over
// it.
//
// One object per dictation, owned by the session controller. Main thread only.
#pragma once

#include <QString>
#include <optional>
#include <stop_token>

#include "base/Clock.h"
#include "base/Task.h"

namespace vemo {

class StreamingDictationSession {
 public:
  virtual ~StreamingDictationSession() = default;

  /// Ends the audio and waits for the final text. Nothing means that streaming failed and that the
  /// caller has to fall back to the recording.
  virtual Task<std::optional<QString>> finish(Clock::Duration timeout, std::stop_token stop) = 0;

  /// Gives the session up; whoever waits in finish() gets nothing.
  virtual void cancel() = 0;
};

}  // namespace vemo
