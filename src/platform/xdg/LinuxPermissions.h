// What stands for the two permissions on a Linux desktop.
//
// The microphone is what the sound server says of it; accessibility is a window server that lets
// keys be heard and posted. Neither has a prompt: requestMicrophone() answers with what is, and the
// user is sent to the desktop's own settings. Main thread only.
#pragma once

#include <functional>

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/SystemPermissions.h"

namespace vemo {

class LinuxPermissions : public SystemPermissions {
 public:
  using MicrophoneProbe = std::function<MicrophoneAuthorization()>;
  using AccessibilityProbe = std::function<bool()>;

  LinuxPermissions(MicrophoneProbe microphone, AccessibilityProbe accessibility, Clock& clock,
                   MainThread& mainThread);

  MicrophoneAuthorization microphone() const override;
  void requestMicrophone(std::function<void(bool granted)> answer) override;
  bool isAccessibilityTrusted() const override;
  bool promptAccessibility() override;
  void openSettings(const QUrl& pane) override;

 private:
  Task<> answerWhenDetermined(std::function<void(bool granted)> answer);

  const MicrophoneProbe m_microphone;
  const AccessibilityProbe m_accessibility;
  Clock& m_clock;
  TaskScope m_answers;
};

}  // namespace vemo
