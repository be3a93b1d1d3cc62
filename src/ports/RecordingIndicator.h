// The small pill that tells the user how the dictation stands. Main thread only; never takes focus.
#pragma once

#include <QString>

namespace vemo {

class RecordingIndicator {
 public:
  virtual ~RecordingIndicator() = default;

  virtual void showRecording() = 0;
  virtual void showTranscribing() = 0;
  /// Shows one line, which goes away by itself.
  virtual void showError(const QString& message) = 0;
  /// Goes away with its animation.
  virtual void hide() = 0;
  /// Goes away at once.
  virtual void hideNow() = 0;

  /// The microphone's level, 0 to 1, about 20 times a second while recording.
  virtual void setLevel(float level) = 0;
};

}  // namespace vemo
