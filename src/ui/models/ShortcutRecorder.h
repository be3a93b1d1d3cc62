// The sheet of the settings window that records a shortcut from the keyboard for one of the two
// triggers.
//
// While it is open, the keys that are struck in the window go to the capture and the hotkeys are
// silent; closing it in any way ends both. A recorded shortcut is saved when the user confirms it,
// by button or by holding it for holdToConfirm: with every key recordable, none is left to confirm
// with. A preset and the default are saved at once.
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
  QVariantList quickPresets() const;

  Q_SIGNAL void changed();

 private:
  HotkeyTrigger trigger() const;
  std::optional<CustomKeyShortcut> recorded() const;
  LocalKeyMonitor::Handling handle(const KeyEvent& event);
  void setHeld(bool isHeld);
  Task<> confirmAfterHold(std::stop_token stop);
  void apply(const CustomKeyShortcut& shortcut);
  void close();

  With m_with;
  ShortcutTarget m_target = ShortcutTarget::PushToTalk;
  std::optional<ShortcutCapture> m_capture;  ///< there while the sheet is open
  bool m_isHeld = false;
  StartedTask m_holdTask;
  TaskScope m_tasks;
};

}  // namespace vemo
