#include "ui/models/ShortcutRecorder.h"

#include <QVariantMap>
#include <utility>

#include "desktop/HotkeyManager.h"
#include "desktop/ShortcutNames.h"
#include "desktop/VirtualKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

struct QuickPreset {
  const char16_t* choice;
  const char* label;
};

constexpr QuickPreset quickPresetRows[] = {
    {u"fnGlobe", QT_TRANSLATE_NOOP("vemo::ShortcutRecorder", "Fn / Globe")},
    {u"eitherOption", QT_TRANSLATE_NOOP("vemo::ShortcutRecorder", "Either Option")},
    {u"rightOption", QT_TRANSLATE_NOOP("vemo::ShortcutRecorder", "Right Option")},
    {u"controlSpace", QT_TRANSLATE_NOOP("vemo::ShortcutRecorder", "Control + Space")},
    {u"optionSpace", QT_TRANSLATE_NOOP("vemo::ShortcutRecorder", "Option + Space")},
};

bool isPress(const KeyEvent& event) {
  if (event.type != KeyEvent::Type::FlagsChanged) return event.type == KeyEvent::Type::KeyDown;
  const ModifierFlags own = event.keyCode == kFnKey ? FnFlag : ownFlag(event.keyCode);
  return event.flags & own;
}

/// What a window does with its buttons by keyboard: Tab, Shift+Tab, and the keys that press one.
bool isForButtons(const KeyEvent& event) {
  const ModifierFlags flags = event.flags & allModifierFlags;
  switch (event.keyCode) {
    case kLeftShift:
    case kRightShift:
      return event.type == KeyEvent::Type::FlagsChanged;
    case kTab:
      return !(flags & ~ModifierFlags{ShiftFlag});
    case kSpace:
    case kReturn:
    case kKeypadEnter:
      return !flags;
    default:
      return false;
  }
}

}  // namespace

ShortcutRecorder::ShortcutRecorder(With with)
    : m_with(std::move(with)), m_tasks(m_with.mainThread) {}

ShortcutRecorder::~ShortcutRecorder() {
  if (!isOpen()) return;
  m_with.keys.stop();
  m_with.hotkey.setSilent(false);
}

void ShortcutRecorder::open(ShortcutTarget target) {
  setHeld(false);
  m_target = target;
  m_capture.emplace();
  m_with.hotkey.setSilent(true);
  m_with.keys.start([this](const KeyEvent& event) { return handle(event); });
  Q_EMIT changed();
}

LocalKeyMonitor::Handling ShortcutRecorder::handle(const KeyEvent& event) {
  if (m_isAtButtons && (event.type == KeyEvent::Type::KeyUp || isForButtons(event)))
    return LocalKeyMonitor::Handling::PassOn;
  m_isAtButtons = leadsToButtons(event);
  const auto handling = m_capture->handle(event);
  if (!m_capture->isActive()) {
    close();
    return handling;
  }
  setHeld(isPress(event) && hasRecorded());
  Q_EMIT changed();
  return handling;
}

bool ShortcutRecorder::leadsToButtons(const KeyEvent& event) const {
  const CustomKeyShortcut tab{.keyCode = kTab};
  return event.type == KeyEvent::Type::KeyUp && event.keyCode == kTab && m_isHeld &&
         recorded() == tab;
}

void ShortcutRecorder::leaveButtons() {
  if (!m_isAtButtons) return;
  m_isAtButtons = false;
  Q_EMIT changed();
}

void ShortcutRecorder::setHeld(bool isHeld) {
  std::exchange(m_holdTask, {}).cancel();
  m_isHeld = isHeld;
  if (!isHeld) return;
  m_holdTask =
      m_tasks.start([this](std::stop_token stop) { return confirmAfterHold(std::move(stop)); });
}

Task<> ShortcutRecorder::confirmAfterHold(std::stop_token stop) {
  if (co_await m_with.clock.sleep(holdToConfirm, stop) == SleepEnd::Cancelled) co_return;
  if (!stop.stop_requested()) confirm();
}

void ShortcutRecorder::confirm() {
  if (const auto shortcut = recorded()) apply(*shortcut);
}

void ShortcutRecorder::cancel() {
  if (isOpen()) close();
}

void ShortcutRecorder::resetToDefault() {
  if (isOpen()) apply(defaultPreset(trigger()).shortcut);
}

void ShortcutRecorder::applyPreset(const QString& choice) {
  const auto* const preset = shortcutPreset(choice);
  if (isOpen() && preset) apply(preset->shortcut);
}

void ShortcutRecorder::apply(const CustomKeyShortcut& shortcut) {
  const QString confirmation = saveShortcut(m_with.settings, trigger(), shortcut);
  close();
  m_with.showToast(confirmation);
}

void ShortcutRecorder::close() {
  m_with.keys.stop();
  m_with.hotkey.setSilent(false);
  setHeld(false);
  m_isAtButtons = false;
  m_capture.reset();
  Q_EMIT changed();
}

HotkeyTrigger ShortcutRecorder::trigger() const {
  return m_target == ShortcutTarget::Toggle ? HotkeyTrigger::Toggle : HotkeyTrigger::PushToTalk;
}

std::optional<CustomKeyShortcut> ShortcutRecorder::recorded() const {
  return m_capture ? m_capture->pending() : std::nullopt;
}

QString ShortcutRecorder::title() const {
  return m_target == ShortcutTarget::Toggle ? tr("Record Start / Stop Shortcut")
                                            : tr("Record Push-to-Talk Shortcut");
}

QString ShortcutRecorder::instruction() const {
  return captureHint(trigger());
}

QString ShortcutRecorder::recordedName() const {
  const auto shortcut = recorded();
  return shortcut ? displayName(*shortcut) : QString();
}

QString ShortcutRecorder::recordedShortName() const {
  const auto shortcut = recorded();
  return shortcut ? shortDisplayName(*shortcut) : QString();
}

QVariantList ShortcutRecorder::quickPresets() const {
  QVariantList rows;
  for (const auto& row : quickPresetRows) {
    rows.append(
        QVariantMap{{u"choice"_s, QString::fromUtf16(row.choice)}, {u"label"_s, tr(row.label)}});
  }
  return rows;
}

}  // namespace vemo
