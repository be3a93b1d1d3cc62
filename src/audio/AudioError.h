// Why a recording doesn't start, in words for the user.
#pragma once

#include <QString>
#include <optional>

namespace vemo {

/// The recorder's own reasons. FormatUnavailable is for a build whose target format has to be made
/// at run time; the speech format is a constant here.
enum class AudioError { NoInputDevice, FormatUnavailable, ConverterUnavailable, FormatMismatch };

QString errorDescription(AudioError error);

struct AudioStartError {
  std::optional<AudioError> reason;  ///< absent when the sound system itself refused
  QString errorDescription;          ///< what the user reads

  static AudioStartError of(AudioError error) { return {error, vemo::errorDescription(error)}; }
};

}  // namespace vemo
