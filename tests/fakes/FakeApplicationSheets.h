// Sheets that a test opens and closes.
#pragma once

#include "ports/ApplicationSheets.h"

namespace vemo {

class FakeApplicationSheets : public ApplicationSheets {
 public:
  void attach() { m_isAttached = true; }
  void close() { m_isAttached = false; }

  bool isAnyAttached() const override {
    ++m_pollCount;
    return m_isAttached;
  }
  void endAttached() override {
    ++m_endCount;
    m_isAttached = false;
  }

  int pollCount() const { return m_pollCount; }
  int endCount() const { return m_endCount; }

 private:
  bool m_isAttached = false;
  mutable int m_pollCount = 0;
  int m_endCount = 0;
};

}  // namespace vemo
