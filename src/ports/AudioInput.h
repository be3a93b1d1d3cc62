// The default microphone, as a source of frames in its own format.
//
// prepare(), start() and stop() are called on the main thread, and each returns within two seconds
// whatever the sound server does. Blocks arrive on a thread of the adapter's own.
#pragma once

#include <QString>
#include <cstddef>
#include <expected>
#include <functional>
#include <span>

namespace vemo {

enum class SampleType { Int16, Float32 };

/// Frames are interleaved, in the machine's byte order.
struct AudioFormat {
  double sampleRate = 0;  ///< frames per second
  int channels = 0;
  SampleType sampleType = SampleType::Float32;

  friend bool operator==(const AudioFormat&, const AudioFormat&) = default;
};

constexpr std::size_t bytesPerFrame(const AudioFormat& format) {
  const std::size_t sampleSize = format.sampleType == SampleType::Int16 ? 2 : 4;
  return sampleSize * static_cast<std::size_t>(format.channels);
}

/// A stretch of captured sound, of about 4096 frames or less. Valid during the handler's call
/// alone.
struct AudioBlock {
  AudioFormat format;
  std::span<const std::byte> frames;  ///< a whole number of frames
};

/// Why capture can't be prepared or started, in words for the user.
struct AudioInputError {
  QString message;
};

class AudioInput {
 public:
  using BlockHandler = std::function<void(const AudioBlock&)>;

  /// The format in which blocks will come, and the format that the device runs at now. With no
  /// usable microphone both have rate 0 and no channels.
  struct Formats {
    AudioFormat node;
    AudioFormat hardware;
  };

  virtual ~AudioInput() = default;

  /// Looks up the default microphone of this moment. Ends any capture under way.
  virtual std::expected<Formats, AudioInputError> prepare() = 0;

  /// Starts capture from the prepared device; the handler runs on the capture thread.
  virtual std::expected<void, AudioInputError> start(BlockHandler handler) = 0;

  /// Ends capture. No handler runs after this has returned. Harmless when nothing is captured.
  virtual void stop() = 0;
};

}  // namespace vemo
