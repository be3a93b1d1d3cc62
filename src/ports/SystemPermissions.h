// What the desktop lets this program do: hear the microphone, hear and post keys.
//
// Main thread only; every call returns at once.
#pragma once

#include <QUrl>
#include <functional>

namespace vemo {

enum class MicrophoneAuthorization { NotDetermined, Denied, Granted, Unknown };

class SystemPermissions {
 public:
  virtual ~SystemPermissions() = default;

  virtual MicrophoneAuthorization microphone() const = 0;

  /// Asks for the microphone where the desktop has something to ask; answers on the main thread.
  virtual void requestMicrophone(std::function<void(bool granted)> answer) = 0;

  /// Whether global keys can be heard and the paste shortcut posted.
  virtual bool isAccessibilityTrusted() const = 0;

  /// Shows the desktop's own prompt, where it has one. Returns isAccessibilityTrusted().
  virtual bool promptAccessibility() = 0;

  /// Opens the settings pane that the address names, or the desktop's nearest to it.
  virtual void openSettings(const QUrl& pane) = 0;
};

}  // namespace vemo
