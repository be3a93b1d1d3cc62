#include "platform/xdg/LinuxPermissions.h"

#include "platform/xdg/SettingsPanels.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A sound server that is there answers within a few milliseconds.
constexpr auto probeInterval = 10ms;
constexpr auto longestUndetermined = 2000ms;

}  // namespace

LinuxPermissions::LinuxPermissions(MicrophoneProbe microphone, AccessibilityProbe accessibility,
                                   Clock& clock, MainThread& mainThread)
    : m_microphone(std::move(microphone)),
      m_accessibility(std::move(accessibility)),
      m_clock(clock),
      m_answers(mainThread) {}

MicrophoneAuthorization LinuxPermissions::microphone() const {
  return m_microphone();
}

void LinuxPermissions::requestMicrophone(std::function<void(bool granted)> answer) {
  m_answers.start([&](std::stop_token) { return answerWhenDetermined(std::move(answer)); });
}

Task<> LinuxPermissions::answerWhenDetermined(std::function<void(bool granted)> answer) {
  for (auto waited = 0ms; waited < longestUndetermined; waited += probeInterval) {
    if (m_microphone() != MicrophoneAuthorization::NotDetermined) break;
    co_await m_clock.sleep(probeInterval, {});
  }
  answer(m_microphone() == MicrophoneAuthorization::Granted);
}

bool LinuxPermissions::isAccessibilityTrusted() const {
  return m_accessibility();
}

bool LinuxPermissions::promptAccessibility() {
  return isAccessibilityTrusted();
}

void LinuxPermissions::openSettings(const QUrl& pane) {
  if (pane.query() == u"Privacy_Microphone") openSettingsPanel(SettingsPanel::Sound);
  if (pane.query() == u"Privacy_Accessibility") openSettingsPanel(SettingsPanel::Accessibility);
}

}  // namespace vemo
