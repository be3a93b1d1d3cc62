#include "desktop/TextInjector.h"

#include <QCoreApplication>

#include "base/Text.h"
#include "desktop/ConcealedText.h"
#include "ports/KeyPoster.h"
#include "ports/SecureInput.h"
#include "ports/SystemPermissions.h"
#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto modifierPollInterval = 5ms;
constexpr int mostModifierPolls = 60;
/// What the target gets to read the clipboard after the keystroke.
constexpr auto restoreDelay = 900ms;

constexpr auto secureInputActive =
    QT_TRANSLATE_NOOP("Dictation", "Can't paste here (secure input active)");
constexpr auto notSent = QT_TRANSLATE_NOOP("Dictation", "Couldn't send the paste command");

}  // namespace

TextInjector::TextInjector(Clipboard& clipboard, KeyPoster& keyPoster,
                           const SecureInput& secureInput, const SystemPermissions& permissions,
                           Clock& clock, MainThread& mainThread, DebugLog& debugLog)
    : m_clipboard(clipboard),
      m_keyPoster(keyPoster),
      m_secureInput(secureInput),
      m_permissions(permissions),
      m_clock(clock),
      m_debugLog(debugLog),
      m_restores(mainThread) {}

TextInjector::~TextInjector() {
  if (m_newestRestore) restore(*std::move(m_newestRestore));
}

Task<std::optional<QString>> TextInjector::inject(QString text, std::stop_token stop) {
  if (text.isEmpty()) {
    m_debugLog(u"inject: called with empty text — skipping"_s);
    co_return std::nullopt;
  }
  if (m_secureInput.isActive()) {
    m_debugLog(u"inject: blocked — secure input is active"_s);
    co_return QString::fromUtf8(secureInputActive);
  }
  m_debugLog(u"inject: starting"_s);

  PendingRestore pending{.contents = co_await m_clipboard.snapshot()};
  // Reading a slow clipboard takes time, in which the dictation may have been given up.
  if (stop.stop_requested()) co_return std::nullopt;
  if (!m_clipboard.replace(concealedText(text, ClipboardStay::ForThePasteOnly))) {
    m_debugLog(u"inject: the clipboard can't be written"_s);
    co_return QString::fromUtf8(notSent);
  }
  pending.changeCount = m_clipboard.changeCount();
  m_newestRestore = pending;
  m_debugLog(u"inject: pasteboard set, changeCount=%1"_s.arg(pending.changeCount));

  const bool isClean = co_await waitForModifiers(stop);
  m_debugLog(u"inject: modifiers cleared cleanly="_s + trueOrFalse(isClean));

  const bool isPosted = co_await postPaste(stop);
  m_debugLog(u"inject: postPaste posted=%1 axTrusted=%2"_s.arg(
      trueOrFalse(isPosted), trueOrFalse(m_permissions.isAccessibilityTrusted())));
  if (!isPosted) {
    m_newestRestore.reset();
    co_return QString::fromUtf8(notSent);
  }
  m_restores.start([&](std::stop_token) { return restoreLater(std::move(pending)); });
  co_return std::nullopt;
}

Task<bool> TextInjector::waitForModifiers(std::stop_token stop) {
  if (!(m_keyPoster.heldModifiers() & allModifierFlags)) co_return true;
  for (int poll = 1; poll <= mostModifierPolls; ++poll) {
    co_await m_clock.sleep(modifierPollInterval, stop);
    if (poll < mostModifierPolls && !(m_keyPoster.heldModifiers() & allModifierFlags))
      co_return true;
  }
  co_return false;
}

Task<bool> TextInjector::postPaste(std::stop_token stop) {
  const auto keystroke = m_keyPoster.makePaste();
  if (!keystroke) {
    m_debugLog(u"postPaste: FAILED to construct CGEvents"_s);
    co_return false;
  }
  keystroke->press();
  co_await m_clock.sleep(pasteKeyGap, stop);
  keystroke->release();
  co_return true;
}

Task<> TextInjector::restoreLater(PendingRestore pending) {
  co_await m_clock.sleep(restoreDelay, {});
  if (m_newestRestore && m_newestRestore->changeCount == pending.changeCount)
    m_newestRestore.reset();
  restore(std::move(pending));
}

void TextInjector::restore(PendingRestore pending) {
  if (m_clipboard.changeCount() != pending.changeCount) {
    m_debugLog(u"inject: pasteboard changed since our write — not restoring"_s);
    return;
  }
  if (!m_clipboard.replace(std::move(pending.contents))) return;
  m_debugLog(u"inject: restored original pasteboard in background"_s);
}

}  // namespace vemo
