// Random bytes that count up, so that a test knows them.
#pragma once

#include <optional>

#include "ports/SecureRandom.h"

namespace vemo {

class FakeSecureRandom : public SecureRandom {
 public:
  bool isBroken = false;

  std::optional<QByteArray> bytes(qsizetype count) override {
    if (isBroken) return std::nullopt;
    QByteArray bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(m_next++);
    return bytes;
  }

 private:
  unsigned char m_next = 0;
};

}  // namespace vemo
