// Permissions as a test sets them; remembers what was asked for.
#pragma once

#include <QUrl>
#include <vector>

#include "ports/SystemPermissions.h"

namespace vemo {

class FakeSystemPermissions : public SystemPermissions {
 public:
  MicrophoneAuthorization microphone() const override { return microphoneAuthorization; }
  void requestMicrophone(std::function<void(bool granted)> answer) override {
    microphoneRequests.push_back(std::move(answer));
  }
  bool isAccessibilityTrusted() const override { return isTrusted; }
  bool promptAccessibility() override {
    ++accessibilityPrompts;
    return isTrusted;
  }
  void openSettings(const QUrl& pane) override { openedPanes.push_back(pane); }

  MicrophoneAuthorization microphoneAuthorization = MicrophoneAuthorization::Granted;
  bool isTrusted = true;
  std::vector<std::function<void(bool)>> microphoneRequests;  ///< answered by the test
  int accessibilityPrompts = 0;
  std::vector<QUrl> openedPanes;
};

}  // namespace vemo
