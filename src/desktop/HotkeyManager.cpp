#include "desktop/HotkeyManager.h"

namespace vemo {

bool HotkeyManager::installTap() {
  return m_isTapEnabled;
}

void HotkeyManager::removeTap() {
  m_isTapEnabled = false;
}

}  // namespace vemo
