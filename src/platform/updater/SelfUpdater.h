// The updater of this platform: reads a signed feed, fetches what it offers, and puts it beside the
// version that runs.
//
// Only a copy in a folder of the user's own is replaced; elsewhere the user is told that there is a
// new version. A feed or an archive that isn't signed by the key in force, a feed older than one
// that was seen or past its date, and an archive that isn't what the feed says are refused, and end
// the session with an error. Downloads are resumed where they stopped, at the next check, and stay
// until they are installed. What was offered can be installed until it has been, or is offered no
// more: where that fails, it is tried or fetched once more. A build that doesn't start on this
// machine, or that the user has skipped, is tried again only when the user asks. Where a user has
// several sessions, the first of them that fetches an update installs it.
//
// Main thread only; archives are checked and unpacked on a thread of their own. Destroying it ends
// what is under way.
#pragma once

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/TaskScope.h"
#include "platform/updater/Appcast.h"
#include "platform/updater/SelfContainedCopy.h"
#include "platform/updater/UpdateMemory.h"
#include "platform/updater/UpdateNote.h"
#include "platform/updater/UpdatePreparation.h"
#include "platform/updater/VersionCheck.h"
#include "ports/HttpSession.h"
#include "ports/SystemInformation.h"
#include "ports/Updater.h"

namespace vemo {

class SelfUpdater : public Updater {
 public:
  struct With {
    MainThread& mainThread;
    Clock& clock;
    /// Its limit for a whole transfer is what bounds a slow server: each piece of an archive has to
    /// come in that time.
    HttpSession& session;
    QByteArray publicKey;  ///< in base64
    SystemInformation system;
    std::optional<SelfContainedCopy> copy;
    QString memoryFile;
    std::chrono::milliseconds answerLimit = versionCheckLimit;
    std::function<qint64(const QString& folder)> freeSpace;  ///< in bytes; negative where unknown
    std::function<void(const QString& line)> log;
    /// Tells the user; `choose` is called at most once, and only where there is something to
    /// choose.
    std::function<void(const UpdateNote& note, std::function<void(UpdateChoice)> choose)> announce;
    std::function<bool()> isInFront;  ///< whether the user looks at one of the program's windows
    std::function<void()> relaunch;   ///< ends this program and starts the current version
  };

  SelfUpdater(With with, UpdaterDelegate& delegate, UpdateUserDriverDelegate& userDriver);
  ~SelfUpdater() override;

  bool canCheckForUpdates() const override { return !m_isBusy && !m_isReplaced; }
  std::optional<QDateTime> lastUpdateCheckDate() const override { return m_memory.lastCheck; }
  bool automaticallyChecksForUpdates() const override { return m_memory.automaticallyChecks; }
  bool automaticallyDownloadsUpdates() const override { return m_memory.automaticallyDownloads; }
  void setAutomaticallyChecksForUpdates(bool isOn) override;
  void setAutomaticallyDownloadsUpdates(bool isOn) override;
  void checkForUpdates() override { begin(UpdateCheck::UserInitiated); }
  void checkForUpdatesInBackground() override { begin(UpdateCheck::Scheduled); }

  /// At the program's end: what is ready becomes the version that starts next.
  void installOnQuit();

 private:
  using Outcome = std::expected<void, UpdateTrouble>;

  Task<> tellOfReturn(std::stop_token stop);
  void begin(UpdateCheck check);
  void recall();
  void remember();
  Task<> checkDaily(std::stop_token stop);
  bool isCheckDue() const;
  Task<> runSession(UpdateCheck check, std::stop_token stop);
  Task<Outcome> findAndFetch(UpdateCheck check, std::stop_token stop);
  quint64 newestBuild(UpdateCheck check) const;
  bool isStillOffered(const AppcastItem& ready, const Appcast& feed) const;
  Task<> tidyUp(quint64 wanted);
  Task<Outcome> fetchAndPrepare(AppcastItem item, std::stop_token stop);
  Task<std::expected<Appcast, UpdateTrouble>> readFeed(std::stop_token stop);
  Task<Outcome> fetchAndCheck(AppcastItem item, QString file, std::stop_token stop);
  Task<Outcome> prepare(AppcastItem item, QString file);
  void offer(const AppcastItem& item);
  void installNow();
  void installAndRelaunch();
  bool install();
  bool isSkipped(const AppcastItem& item, UpdateCheck check) const;
  UpdateShownBy show(const UpdateItem& update, UpdateCheck check);
  void ask(const AppcastItem& item);
  void choose(UpdateChoice choice, const AppcastItem& item);
  void tell(UpdateCheck check, const UpdateNote& note) const;
  std::unexpected<UpdateTrouble> refuse(const UpdateRefusal& refusal) const;
  QUrl address(const QString& name) const;

  With m_with;
  UpdaterDelegate& m_delegate;
  UpdateUserDriverDelegate& m_userDriver;
  const QByteArray m_builtInKey;
  UpdateMemory m_memory;
  bool m_isRemembered = true;  ///< the file holds it
  bool m_isBusy = false;
  std::optional<UpdateCheck> m_next;  ///< asked for during a session
  bool m_isReplaced = false;          ///< another version starts next: there is nothing left to do
  std::optional<QDateTime> m_lastTry;
  std::optional<UpdateItem> m_quiet;  ///< left to the delegate to show
  std::optional<AppcastItem> m_ready;
  std::stop_source m_preparation;
  SerialQueue m_worker{"vemo.updater"};
  TaskScope m_tasks;
};

}  // namespace vemo
