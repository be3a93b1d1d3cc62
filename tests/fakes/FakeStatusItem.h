// An item whose panel comes and goes when a test says so.
#pragma once

#include <utility>

#include "ports/StatusItem.h"

namespace vemo {

class FakeStatusItem : public StatusItem {
 public:
  void setMenu(std::vector<MenuItem> items) override { m_menu = std::move(items); }
  void setImage(const QString& name) override { m_image = name; }
  bool hasHost() const override { return m_hasHost; }

  /// The first answer is told whatever it is, and then each that is another.
  void setHost(bool hasHost) {
    if (std::exchange(m_isHostKnown, true) && hasHost == m_hasHost) return;
    m_hasHost = hasHost;
    if (onHostKnown) onHostKnown();
  }

  const std::vector<MenuItem>& menu() const { return m_menu; }
  const QString& image() const { return m_image; }

 private:
  std::vector<MenuItem> m_menu;
  QString m_image;
  bool m_hasHost = false;
  bool m_isHostKnown = false;
};

}  // namespace vemo
