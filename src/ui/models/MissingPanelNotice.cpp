#include "ui/models/MissingPanelNotice.h"

#include <utility>

#include "ports/Scenes.h"
#include "ports/StatusItem.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

MissingPanelNotice::MissingPanelNotice(With with)
    : m_with(std::move(with)), m_tasks(m_with.mainThread) {}

void MissingPanelNotice::hostKnown() {
  m_waiting.cancel();
  if (m_with.item.hasHost()) {
    // Who wasn't told yet is to have the grace time when this panel goes, too.
    if (std::exchange(m_isToBeTold, false)) m_isKnownMissing = false;
    return;
  }
  if (m_isKnownMissing) return;
  m_waiting = m_tasks.start([this](std::stop_token stop) { return waitForPanel(std::move(stop)); });
}

Task<> MissingPanelNotice::waitForPanel(std::stop_token stop) {
  co_await m_with.clock.sleep(graceTime, stop);
  if (stop.stop_requested()) co_return;
  m_isKnownMissing = true;
  m_isToBeTold = true;
  m_with.log(u"tray: no panel shows status items here; the menu is in the main window"_s);
  tell();
}

void MissingPanelNotice::tell() {
  if (!m_isToBeTold || m_with.item.hasHost() || !m_with.scenes.isOpen(Scene::Main)) return;
  m_isToBeTold = false;
  m_with.showToast(tr("Your panel doesn't show Vemo's icon. Its menu is in this window."));
}

}  // namespace vemo
