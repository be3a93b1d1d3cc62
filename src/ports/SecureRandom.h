// Random bytes that nobody can guess. Any thread.
#pragma once

#include <QByteArray>
#include <optional>

namespace vemo {

class SecureRandom {
 public:
  virtual ~SecureRandom() = default;

  /// `count` bytes from the system's generator for secrets; nothing when it fails.
  virtual std::optional<QByteArray> bytes(qsizetype count) = 0;
};

}  // namespace vemo
