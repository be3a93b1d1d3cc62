// Puts a text at the cursor of whatever application is in front: by way of the clipboard and the
// paste shortcut, without any cooperation from that application. Afterwards the clipboard gets back
// what it held, unless somebody has copied something meanwhile.
//
// Main thread. A stop request that comes before the clipboard is touched prevents the paste; a
// later one shortens the waits. The return of the clipboard happens in the background and outlives
// the dictation; when the injector is destroyed before that, it happens there and then.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <stop_token>

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/Clipboard.h"

namespace vemo {

class DebugLog;
class KeyPoster;
class SecureInput;
class SystemPermissions;

class TextInjector {
 public:
  TextInjector(Clipboard& clipboard, KeyPoster& keyPoster, const SecureInput& secureInput,
               const SystemPermissions& permissions, Clock& clock, MainThread& mainThread,
               DebugLog& debugLog);
  ~TextInjector();

  /// Pastes the text. Nothing means success, otherwise the sentence to show the user, to be
  /// translated in the context "Dictation". Success means that the shortcut was posted: whether the
  /// target took it can't be seen.
  Task<std::optional<QString>> inject(QString text, std::stop_token stop);

  /// Whether the clipboard still has to get back what it held.
  bool isRestorePending() const { return m_newestRestore.has_value(); }

  /// Posts the paste shortcut; false when it could not be made.
  Task<bool> postPaste(std::stop_token stop);

 private:
  /// What the clipboard held, and its change count right after our own text went there.
  struct PendingRestore {
    ClipboardContents contents;
    std::uint64_t changeCount = 0;
  };

  Task<bool> waitForModifiers(std::stop_token stop);
  Task<> restoreLater(PendingRestore pending);
  void restore(PendingRestore pending);

  Clipboard& m_clipboard;
  KeyPoster& m_keyPoster;
  const SecureInput& m_secureInput;
  const SystemPermissions& m_permissions;
  Clock& m_clock;
  DebugLog& m_debugLog;
  std::optional<PendingRestore> m_newestRestore;
  TaskScope m_restores;
};

}  // namespace vemo
