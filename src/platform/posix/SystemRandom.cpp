#include "platform/posix/SystemRandom.h"

#include <unistd.h>

namespace vemo {

std::optional<QByteArray> SystemRandom::bytes(qsizetype count) {
  QByteArray bytes(count, '\0');
  if (getentropy(bytes.data(), static_cast<std::size_t>(count)) != 0) return std::nullopt;
  return bytes;
}

}  // namespace vemo
