#include "audio/AudioError.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace vemo {

QString errorDescription(AudioError error) {
  switch (error) {
    case AudioError::NoInputDevice:
      return u"No microphone available"_s;
    case AudioError::FormatUnavailable:
      return u"Could not create the target audio format."_s;
    case AudioError::ConverterUnavailable:
      return u"Could not create the audio converter."_s;
    case AudioError::FormatMismatch:
      return u"Microphone changed — try again"_s;
  }
  std::unreachable();
}

}  // namespace vemo
