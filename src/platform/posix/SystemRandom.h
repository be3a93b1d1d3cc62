// The kernel's random bytes.
#pragma once

#include "ports/SecureRandom.h"

namespace vemo {

class SystemRandom : public SecureRandom {
 public:
  /// At most 256 bytes at once.
  std::optional<QByteArray> bytes(qsizetype count) override;
};

}  // namespace vemo
