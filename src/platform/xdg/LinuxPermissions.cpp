#include "platform/xdg/LinuxPermissions.h"

#include <signal.h>
#include <sys/resource.h>

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A sound server that is there answers within a few milliseconds.
constexpr auto probeInterval = 10ms;
constexpr auto longestUndetermined = 2000ms;

/// A desktop's panel for what a settings pane is about; the first that is installed is opened.
struct Panel {
  QStringView pane;
  QStringView program;
  QStringView argument;
};

constexpr Panel panels[] = {
    {u"Privacy_Microphone", u"gnome-control-center", u"sound"},
    {u"Privacy_Microphone", u"systemsettings", u"kcm_pulseaudio"},
    {u"Privacy_Microphone", u"pavucontrol", u"--tab=4"},
    {u"Privacy_Microphone", u"mate-volume-control", u"--page=input"},
    {u"Privacy_Accessibility", u"gnome-control-center", u"universal-access"},
    {u"Privacy_Accessibility", u"systemsettings", u"kcm_access"},
    {u"Privacy_Accessibility", u"xfce4-accessibility-settings", u""},
    {u"Privacy_Accessibility", u"mate-at-properties", u""},
};

/// This program keeps signals waiting and forbids cores; a program that it starts is not to inherit
/// that. Runs between fork and exec.
void becomeOrdinaryProcess() {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  rlimit cores{};
  if (getrlimit(RLIMIT_CORE, &cores) == 0) {
    cores.rlim_cur = cores.rlim_max;
    setrlimit(RLIMIT_CORE, &cores);
  }
}

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
  for (const auto& panel : panels) {
    if (pane.query() != panel.pane) continue;
    const QString program = QStandardPaths::findExecutable(panel.program.toString());
    if (program.isEmpty()) continue;
    QProcess process;
    process.setProgram(program);
    if (!panel.argument.isEmpty()) process.setArguments({panel.argument.toString()});
    process.setChildProcessModifier(becomeOrdinaryProcess);
    process.startDetached();
    return;
  }
}

}  // namespace vemo
