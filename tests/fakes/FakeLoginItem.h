// A desktop that remembers whether the program starts at login, and refuses when a test says so.
#pragma once

#include <optional>

#include "ports/LoginItem.h"

namespace vemo {

class FakeLoginItem : public LoginItem {
 public:
  std::expected<void, QString> registerItem() override { return change(true); }
  std::expected<void, QString> unregisterItem() override { return change(false); }

  bool isRegistered() const override { return m_isRegistered; }

  /// From now on every change fails with this error.
  void fail(QString error) { m_error = std::move(error); }

  /// What a settings program of the desktop does, which asks nobody.
  void changeFromOutside(bool isRegistered) { m_isRegistered = isRegistered; }

  int changeCount() const { return m_changeCount; }

 private:
  std::expected<void, QString> change(bool isRegistered) {
    ++m_changeCount;
    if (m_error) return std::unexpected(*m_error);
    m_isRegistered = isRegistered;
    return {};
  }

  std::optional<QString> m_error;
  bool m_isRegistered = false;
  int m_changeCount = 0;
};

}  // namespace vemo
