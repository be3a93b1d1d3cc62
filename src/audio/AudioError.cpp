#include "audio/AudioError.h"

#include <QCoreApplication>
#include <utility>

namespace vemo {

QString errorDescription(AudioError error) {
  switch (error) {
    case AudioError::NoInputDevice:
      return QCoreApplication::translate("Dictation", "No microphone available");
    case AudioError::FormatUnavailable:
      return QCoreApplication::translate("Dictation", "Could not create the target audio format.");
    case AudioError::ConverterUnavailable:
      return QCoreApplication::translate("Dictation", "Could not create the audio converter.");
    case AudioError::FormatMismatch:
      return QCoreApplication::translate("Dictation", "Microphone changed — try again");
  }
  std::unreachable();
}

}  // namespace vemo
