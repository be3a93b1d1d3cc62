// The sheet of the settings window that records a shortcut from the keyboard for one of the two
// triggers.
//
// While it is open, the keys that are struck in the window go to the capture and the hotkeys are
// silent; closing it in any way ends both. A recorded shortcut is saved when the user confirms it,
// by button or by holding it for holdToConfirm: with every key recordable, none is left to confirm
// with. A preset and the default are saved at once.
//
// Tab is recorded like any key; let go before it is saved, it leads to the buttons as well. There
// the keys that move among buttons and press them go to the window, and any other is recorded.
//
// Main thread only; owned by the settings window's model. Nothing here fails.
#pragma once

#include <QObject>
#include <QVariantList>
#include <chrono>
#include <functional>
#include <optional>

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "desktop/HotkeyChoices.h"
#include "desktop/ShortcutCapture.h"
#include "ports/LocalKeyMonitor.h"

namespace vemo {

class HotkeyManager;

enum class ShortcutTarget { PushToTalk, Toggle };

class ShortcutRecorder : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString instruction READ instruction NOTIFY changed)
  Q_PROPERTY(bool hasRecorded READ hasRecorded NOTIFY changed)
  Q_PROPERTY(QString recordedName READ recordedName NOTIFY changed)
  Q_PROPERTY(QString recordedShortName READ recordedShortName NOTIFY changed)
  Q_PROPERTY(bool isHeld READ isHeld NOTIFY changed)
  Q_PROPERTY(int holdDuration READ holdDuration CONSTANT)
  Q_PROPERTY(bool isAtButtons READ isAtButtons NOTIFY changed)
  /// Rows of `choice` and `label`.
  Q_PROPERTY(QVariantList quickPresets READ quickPresets CONSTANT)

 public:
  static constexpr std::chrono::milliseconds holdToConfirm{2000};

  struct With {
    MainThread& mainThread;
    Clock& clock;
    Settings& settings;
    HotkeyManager& hotkey;
    LocalKeyMonitor& keys;
    std::function<void(const QString&)> showToast;
  };

  explicit ShortcutRecorder(With with);
  ~ShortcutRecorder() override;

  void open(ShortcutTarget target);
  Q_INVOKABLE void openForPushToTalk() { open(ShortcutTarget::PushToTalk); }
  Q_INVOKABLE void openForToggle() { open(ShortcutTarget::Toggle); }

  Q_INVOKABLE void confirm();
  Q_INVOKABLE void cancel();
  Q_INVOKABLE void resetToDefault();
  Q_INVOKABLE void applyPreset(const QString& choice);
  /// The window has given the keyboard back to the recording.
  Q_INVOKABLE void leaveButtons();

  bool isOpen() const { return m_capture.has_value(); }
  ShortcutTarget target() const { return m_target; }
  QString title() const;
  QString instruction() const;
  bool hasRecorded() const { return recorded().has_value(); }
  QString recordedName() const;
  QString recordedShortName() const;
  /// The shortcut is being held, and saved when that has lasted holdDuration() milliseconds.
  bool isHeld() const { return m_isHeld; }
  int holdDuration() const { return holdToConfirm.count(); }
  /// The keyboard belongs to the buttons rather than to the recording.
  bool isAtButtons() const { return m_isAtButtons; }
  QVariantList quickPresets() const;

  Q_SIGNAL void changed();

 private:
  HotkeyTrigger trigger() const;
  std::optional<CustomKeyShortcut> recorded() const;
  LocalKeyMonitor::Handling handle(const KeyEvent& event);
  bool leadsToButtons(const KeyEvent& event) const;
  void setHeld(bool isHeld);
  Task<> confirmAfterHold(std::stop_token stop);
  void apply(const CustomKeyShortcut& shortcut);
  void close();

  With m_with;
  ShortcutTarget m_target = ShortcutTarget::PushToTalk;
  std::optional<ShortcutCapture> m_capture;  ///< there while the sheet is open
  bool m_isHeld = false;
  bool m_isAtButtons = false;
  StartedTask m_holdTask;
  TaskScope m_tasks;
};

}  // namespace vemo
