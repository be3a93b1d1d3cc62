// What finds, fetches and installs newer versions of this program, and whom it tells.
//
// Everything is on the main thread, callbacks included. An updater works by itself from the moment
// it is made, checks on a schedule of its own, and tells its two delegates, which outlive it.
// Nothing here fails towards its caller: a session that goes wrong ends with didAbort().
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include "base/Notifier.h"

namespace vemo {

/// A version that a feed offers.
struct UpdateItem {
  QString displayVersion;        ///< "1.4.0"
  QString buildVersion;          ///< "57"
  bool isCritical = false;       ///< told also where it isn't fetched by itself
  std::optional<QString> notes;  ///< its description, in a little markdown

  friend bool operator==(const UpdateItem&, const UpdateItem&) = default;
};

enum class UpdateChoice { Skip = 0, Install = 1, Dismiss = 2 };
enum class ImmediateFocus { No, Yes };  ///< whether this program is in front already
enum class UpdateShownBy { Delegate, Updater };
enum class UpdateCheck { Scheduled, UserInitiated };

/// The domain of the updater's own errors, as events carry it.
inline constexpr auto updaterErrorDomain = u"SUSparkleErrorDomain";

struct UpdateError {
  static constexpr int noUpdate = 1001;  ///< in the updater's domain: this is the newest version

  QString domain;
  int code = 0;

  friend bool operator==(const UpdateError&, const UpdateError&) = default;
};

/// Decides how quietly an update is shown.
class UpdateUserDriverDelegate {
 public:
  virtual ~UpdateUserDriverDelegate() = default;

  /// Whether a scheduled update may be told without a window.
  virtual bool supportsGentleScheduledUpdateReminders() const = 0;
  /// Whether the updater shows its own window for an update of a scheduled check.
  virtual bool shouldHandleShowingScheduledUpdate(const UpdateItem& update,
                                                  ImmediateFocus focus) const = 0;
  virtual void willHandleShowingUpdate(UpdateShownBy shownBy, const UpdateItem& update,
                                       UpdateCheck check) = 0;
  virtual void didReceiveUserAttention(const UpdateItem& update) = 0;
  virtual void willFinishUpdateSession() = 0;
};

class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  virtual QString feedUrl() const = 0;
  /// Channels beside the default one.
  virtual QStringList allowedChannels() const = 0;
  virtual void didFindValidUpdate(const UpdateItem& update) = 0;
  virtual void userDidMakeChoice(UpdateChoice choice, const UpdateItem& update) = 0;
  virtual void didAbort(const UpdateError& error) = 0;
  /// The update has been fetched and verified, and goes in at the next quit. True: whoever answers
  /// may call `installNow` before.
  virtual bool willInstallUpdateOnQuit(const UpdateItem& update,
                                       std::function<void()> installNow) = 0;
  /// True: the updater waits for a call of `relaunch`.
  virtual bool shouldPostponeRelaunch(const UpdateItem& update, std::function<void()> relaunch) = 0;
};

class Updater {
 public:
  virtual ~Updater() = default;

  virtual bool canCheckForUpdates() const = 0;
  virtual std::optional<QDateTime> lastUpdateCheckDate() const = 0;
  virtual bool automaticallyChecksForUpdates() const = 0;
  virtual bool automaticallyDownloadsUpdates() const = 0;
  virtual void setAutomaticallyChecksForUpdates(bool isOn) = 0;
  virtual void setAutomaticallyDownloadsUpdates(bool isOn) = 0;

  /// The user's check: its outcome is shown, whatever it is.
  virtual void checkForUpdates() = 0;
  virtual void checkForUpdatesInBackground() = 0;

  Notifier<> changed;  ///< one of the four states has another value
};

using MakeUpdater = std::function<std::unique_ptr<Updater>(UpdaterDelegate& delegate,
                                                           UpdateUserDriverDelegate& userDriver)>;

}  // namespace vemo
