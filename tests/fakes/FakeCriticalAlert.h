// Keeps what was shown, until the test closes it.
#pragma once

#include <optional>
#include <utility>

#include "ports/CriticalAlert.h"

namespace vemo {

class FakeCriticalAlert : public CriticalAlert {
 public:
  void show(const AlertText& text, std::function<void()> onClosed) override {
    m_text = text;
    m_onClosed = std::move(onClosed);
  }

  const std::optional<AlertText>& text() const { return m_text; }
  void close() {
    m_text.reset();
    std::exchange(m_onClosed, {})();
  }

 private:
  std::optional<AlertText> m_text;
  std::function<void()> m_onClosed;
};

}  // namespace vemo
