// Says what the test says about password fields, and counts how often it was asked.
#pragma once

#include "ports/SecureInput.h"

namespace vemo {

class FakeSecureInput : public SecureInput {
 public:
  bool isActive() const override {
    ++m_reads;
    return m_isActive;
  }

  void setActive(bool isActive) { m_isActive = isActive; }
  int reads() const { return m_reads; }

 private:
  bool m_isActive = false;
  mutable int m_reads = 0;
};

}  // namespace vemo
