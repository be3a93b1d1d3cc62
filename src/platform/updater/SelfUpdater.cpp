#include "platform/updater/SelfUpdater.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "base/RunElsewhere.h"
#include "platform/updater/UpdateDownload.h"
#include "platform/updater/UpdateFeed.h"
#include "platform/updater/UpdateSignatures.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto checkInterval = 24h;
constexpr auto lookInterval = 1h;
/// A desktop that starts Vemo at login shows notes only a little later.
constexpr auto returnNoteDelay = 15s;

QDateTime dateTimeFrom(Clock::WallTime time) {
  const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count());
}

qint64 unpackedSize(const AppcastItem& item) {
  qint64 size = 0;
  for (const AppcastFile& file : item.files) size += file.size;
  return size;
}

}  // namespace

SelfUpdater::SelfUpdater(With with, UpdaterDelegate& delegate, UpdateUserDriverDelegate& userDriver)
    : m_with(std::move(with)),
      m_delegate(delegate),
      m_userDriver(userDriver),
      m_builtInKey(publicKeyFrom(m_with.publicKey).value_or(QByteArray())),
      m_memory(UpdateMemory::read(m_with.memoryFile, m_builtInKey)),
      m_tasks(m_with.mainThread) {
  if (m_builtInKey.isEmpty()) m_with.log(u"updates: the key in vemo.conf isn't an Ed25519 key"_s);
  if (m_with.copy) {
    if (const quint64 refused = m_with.copy->refusedBuild(); refused > m_with.copy->currentBuild())
      m_with.log(u"updates: build %1 didn't start well here"_s.arg(refused));
    m_tasks.start([this](std::stop_token stop) { return tellOfReturn(std::move(stop)); });
  }
  m_tasks.start([this](std::stop_token stop) { return checkDaily(std::move(stop)); });
}

SelfUpdater::~SelfUpdater() {
  m_preparation.request_stop();
}

/// Once: the version that was put in place has given way to this one.
Task<> SelfUpdater::tellOfReturn(std::stop_token stop) {
  const quint64 installed = m_memory.installedBuild;
  if (installed <= m_with.copy->currentBuild() || installed != m_with.copy->refusedBuild())
    co_return;
  if (co_await m_with.clock.sleep(returnNoteDelay, stop) != SleepEnd::Elapsed) co_return;
  recall();
  if (m_memory.installedBuild != installed) co_return;
  m_with.announce(noteOfReturn(m_with.system.applicationVersion), {});
  m_memory.installedBuild = 0;
  remember();
}

void SelfUpdater::setAutomaticallyChecksForUpdates(bool isOn) {
  recall();
  m_memory.automaticallyChecks = isOn;
  remember();
}

void SelfUpdater::setAutomaticallyDownloadsUpdates(bool isOn) {
  recall();
  m_memory.automaticallyDownloads = isOn;
  remember();
}

/// Another session of the user may have seen a newer feed or key. What couldn't be written holds.
void SelfUpdater::recall() {
  if (m_isRemembered) m_memory = UpdateMemory::read(m_with.memoryFile, m_builtInKey);
}

void SelfUpdater::remember() {
  m_isRemembered = m_memory.write(m_with.memoryFile, m_builtInKey);
  changed.notify();
}

/// By the calendar's clock: the one that sleeps go by stands still while the machine does.
Task<> SelfUpdater::checkDaily(std::stop_token stop) {
  while (co_await m_with.clock.sleep(lookInterval, stop) == SleepEnd::Elapsed) {
    recall();
    if (m_memory.automaticallyChecks && isCheckDue()) begin(UpdateCheck::Scheduled);
  }
}

/// A day after this session has tried, and after any has succeeded; what is ready here, nobody else
/// looks after.
bool SelfUpdater::isCheckDue() const {
  const auto isADayAgo = [now = dateTimeFrom(m_with.clock.wallTime())](const auto& time) {
    return !time || *time > now || *time + checkInterval <= now;
  };
  return isADayAgo(m_lastTry) && (m_ready || isADayAgo(m_memory.lastCheck));
}

void SelfUpdater::begin(UpdateCheck check) {
  if (m_isReplaced) return;
  if (m_isBusy) {
    if (m_next != UpdateCheck::UserInitiated) m_next = check;
    return;
  }
  m_isBusy = true;
  changed.notify();
  m_tasks.start([this, check](std::stop_token stop) { return runSession(check, std::move(stop)); });
}

Task<> SelfUpdater::runSession(UpdateCheck check, std::stop_token stop) {
  recall();
  m_lastTry = dateTimeFrom(m_with.clock.wallTime());
  const bool wasReady = m_ready.has_value();
  const Outcome outcome = co_await findAndFetch(check, stop);
  if (!outcome) {
    if (outcome.error() == UpdateTrouble::NoUpdate) {
      tell(check, noteOfNoUpdate(m_with.system.applicationVersion));
    } else {
      tell(check, noteOfUpdateTrouble());
    }
    m_delegate.didAbort(
        {QString::fromUtf16(updaterErrorDomain), static_cast<int>(outcome.error())});
  }
  if (wasReady && !m_ready) co_await tidyUp(0);
  if (m_with.copy && !m_ready) m_with.copy->letGo();
  m_userDriver.willFinishUpdateSession();
  m_isBusy = false;
  changed.notify();
  if (const auto next = std::exchange(m_next, {})) begin(*next);
}

/// Nothing older is taken than what runs, what is to start next and what is ready; of itself, the
/// updater doesn't try again what didn't start here.
quint64 SelfUpdater::newestBuild(UpdateCheck check) const {
  quint64 newest = m_with.system.applicationBuild.toULongLong();
  if (m_ready) newest = std::max(newest, m_ready->build);
  if (!m_with.copy) return newest;
  newest = std::max(newest, m_with.copy->currentBuild());
  return check == UpdateCheck::Scheduled ? std::max(newest, m_with.copy->refusedBuild()) : newest;
}

/// Not what was taken back, what a key signed that is replaced, or what the user no longer wants.
bool SelfUpdater::isStillOffered(const AppcastItem& ready, const Appcast& feed) const {
  const QStringList channels = m_delegate.allowedChannels();
  return std::ranges::any_of(feed.items, [&](const AppcastItem& item) {
    return item.build == ready.build && item.archiveSignature == ready.archiveSignature &&
           (item.channel.isEmpty() || channels.contains(item.channel));
  });
}

bool SelfUpdater::isSkipped(const AppcastItem& item, UpdateCheck check) const {
  return check == UpdateCheck::Scheduled && item.build <= m_memory.skippedBuild &&
         !item.shown.isCritical;
}

Task<SelfUpdater::Outcome> SelfUpdater::findAndFetch(UpdateCheck check, std::stop_token stop) {
  const auto feed = co_await readFeed(stop);
  if (!feed) co_return std::unexpected(feed.error());
  if (m_ready && !isStillOffered(*m_ready, *feed)) m_ready.reset();
  const auto item = chooseUpdate(*feed, {.newerThan = newestBuild(check),
                                         .channels = m_delegate.allowedChannels(),
                                         .systemVersion = m_with.system.systemVersion,
                                         .architecture = m_with.system.processorArchitecture});
  if (m_quiet && (!item || item->shown != *m_quiet))
    m_userDriver.didReceiveUserAttention(*std::exchange(m_quiet, {}));
  if (!item && m_ready) {
    tell(check, noteOfReadyUpdate(m_ready->shown));
    co_return Outcome();
  }
  if (!item || isSkipped(*item, check)) co_return std::unexpected(UpdateTrouble::NoUpdate);
  const bool isUsers = check == UpdateCheck::UserInitiated;
  const bool isFetched = m_with.copy && (isUsers || m_memory.automaticallyDownloads);
  if (isFetched && !m_with.copy->claim()) {
    m_with.log(u"updates: another session of this user updates this copy"_s);
    tell(check, noteOfAnotherSession());
    co_return Outcome();
  }
  m_delegate.didFindValidUpdate(item->shown);
  const bool isShown =
      (!isFetched || isUsers) && show(item->shown, check) == UpdateShownBy::Updater;
  if (isUsers) m_userDriver.didReceiveUserAttention(item->shown);
  if (!isFetched && (isShown || !m_with.copy || item->shown.isCritical)) ask(*item);
  if (!isFetched) co_return Outcome();
  co_return co_await fetchAndPrepare(*item, stop);
}

/// Of what was fetched, only what is ready stays, and that build.
Task<> SelfUpdater::tidyUp(quint64 wanted) {
  co_await runElsewhere(
      m_worker, m_with.mainThread,
      [&copy = std::as_const(*m_with.copy), kept = QList{wanted, m_ready ? m_ready->build : 0}] {
        copy.keepOnly(kept);
      });
}

Task<SelfUpdater::Outcome> SelfUpdater::fetchAndPrepare(AppcastItem item, std::stop_token stop) {
  co_await tidyUp(item.build);
  const QString file = m_with.copy->downloadFile(item.build);
  const qint64 wanted = item.archiveSize - QFileInfo(file).size() + unpackedSize(item);
  const qint64 free = m_with.freeSpace(m_with.copy->root());
  if (free >= 0 && free < wanted)
    co_return refuse({UpdateTrouble::DownloadFailed, u"there isn't enough space for the update"_s});
  const bool hadSome = QFileInfo::exists(file);
  Outcome prepared = co_await fetchAndCheck(item, file, stop);
  // What an earlier session had fetched may have been another archive of this build.
  if (hadSome && prepared == std::unexpected(UpdateTrouble::NotSigned))
    prepared = co_await fetchAndCheck(item, file, stop);
  if (prepared) offer(item);
  if (prepared == std::unexpected(UpdateTrouble::InstallationFailed))
    m_with.copy->refuse(item.build);
  co_return prepared;
}

Task<SelfUpdater::Outcome> SelfUpdater::fetchAndCheck(AppcastItem item, QString file,
                                                      std::stop_token stop) {
  const UpdateDownload wholeFile{address(item.archive), item.archiveSize, file};
  if (const auto downloaded = co_await download(m_with.session, wholeFile, stop); !downloaded)
    co_return refuse({UpdateTrouble::DownloadFailed, downloaded.error()});
  const Outcome prepared = co_await prepare(item, file);
  // A version that this machine was too busy to ask is asked again at the next check.
  if (!prepared && prepared.error() != UpdateTrouble::NoAnswer) QFile::remove(file);
  co_return prepared;
}

Task<std::expected<Appcast, UpdateTrouble>> SelfUpdater::readFeed(std::stop_token stop) {
  const QByteArray trusted = m_memory.key;
  auto [key, feed] =
      co_await fetchUpdateFeed(m_with.session, QUrl(m_delegate.feedUrl()), trusted, stop);
  recall();
  if (m_memory.key != trusted)
    co_return refuse({UpdateTrouble::FeedRefused, u"another session has learnt of a newer key"_s});
  if (key != trusted) {
    m_memory.key = key;
    m_memory.serial = 0;  // whoever had the old key could have counted it up
    m_ready.reset();      // and have signed this
    remember();
  }
  const auto now = dateTimeFrom(m_with.clock.wallTime());
  if (feed || feed.error().trouble != UpdateTrouble::DownloadFailed) {
    m_memory.lastCheck = now;
    remember();
  }
  if (!feed) co_return refuse(feed.error());
  if (feed->serial < m_memory.serial)
    co_return refuse({UpdateTrouble::FeedRefused, u"the feed is older than one seen before"_s});
  if (feed->expires < now)
    co_return refuse({UpdateTrouble::FeedRefused, u"the feed has expired"_s});
  if (std::exchange(m_memory.serial, feed->serial) != feed->serial) remember();
  co_return *std::move(feed);
}

Task<SelfUpdater::Outcome> SelfUpdater::prepare(AppcastItem item, QString file) {
  const auto prepared = co_await runElsewhere<UpdatePreparation>(
      m_worker, m_with.mainThread,
      [item, file, key = m_memory.key, folder = m_with.copy->stagingFolder(item.build),
       limit = m_with.answerLimit, stop = m_preparation.get_token()] {
        return prepareUpdate(item, file, key, folder, limit, stop);
      });
  if (!prepared) co_return refuse(prepared.error());
  co_return Outcome();
}

void SelfUpdater::offer(const AppcastItem& item) {
  m_ready = item;
  m_delegate.willInstallUpdateOnQuit(item.shown, [this] { installNow(); });
}

void SelfUpdater::installNow() {
  if (!m_ready) return begin(UpdateCheck::UserInitiated);
  if (!m_delegate.shouldPostponeRelaunch(m_ready->shown, [this] { installAndRelaunch(); }))
    installAndRelaunch();
}

void SelfUpdater::installAndRelaunch() {
  if (!m_ready) return;
  if (install()) return m_with.relaunch();
  tell(UpdateCheck::UserInitiated, noteOfUpdateTrouble());
  if (!m_ready) begin(UpdateCheck::UserInitiated);
}

void SelfUpdater::installOnQuit() {
  if (m_ready) install();
}

/// What is left unpacked when it fails can be tried again.
bool SelfUpdater::install() {
  const quint64 build = m_ready->build;
  const QString unpacked = m_with.copy->stagingFolder(build);
  const auto installed = m_with.copy->install(build);
  m_isReplaced = installed.has_value();
  if (installed || !QFileInfo::exists(unpacked)) m_ready.reset();
  if (installed) {
    QFile::remove(m_with.copy->downloadFile(build));
    recall();
    m_memory.installedBuild = build;
    remember();
    return true;
  }
  m_with.log(u"updates: "_s + installed.error());
  m_delegate.didAbort({QString::fromUtf16(updaterErrorDomain),
                       static_cast<int>(UpdateTrouble::InstallationFailed)});
  return false;
}

/// Who shows an update that isn't fetched by itself, or that the user has asked for.
UpdateShownBy SelfUpdater::show(const UpdateItem& update, UpdateCheck check) {
  const auto focus = m_with.isInFront() ? ImmediateFocus::Yes : ImmediateFocus::No;
  const bool isOurs = check == UpdateCheck::UserInitiated ||
                      m_userDriver.shouldHandleShowingScheduledUpdate(update, focus);
  const auto shownBy = isOurs ? UpdateShownBy::Updater : UpdateShownBy::Delegate;
  if (shownBy == UpdateShownBy::Delegate) m_quiet = update;
  m_userDriver.willHandleShowingUpdate(shownBy, update, check);
  return shownBy;
}

void SelfUpdater::ask(const AppcastItem& item) {
  const auto way = m_with.copy ? UpdateComesBy::Check : UpdateComesBy::PackageManager;
  m_with.announce(noteOfUpdate(item.shown, way),
                  [this, item](UpdateChoice choice) { choose(choice, item); });
}

void SelfUpdater::choose(UpdateChoice choice, const AppcastItem& item) {
  if (choice == UpdateChoice::Skip) {
    recall();
    m_memory.skippedBuild = std::max(m_memory.skippedBuild, item.build);
    remember();
  }
  m_userDriver.didReceiveUserAttention(item.shown);
  m_delegate.userDidMakeChoice(choice, item.shown);
}

void SelfUpdater::tell(UpdateCheck check, const UpdateNote& note) const {
  if (check == UpdateCheck::UserInitiated) m_with.announce(note, {});
}

std::unexpected<UpdateTrouble> SelfUpdater::refuse(const UpdateRefusal& refusal) const {
  m_with.log(u"updates: "_s + refusal.why);
  return std::unexpected(refusal.trouble);
}

QUrl SelfUpdater::address(const QString& name) const {
  return QUrl(m_delegate.feedUrl()).resolved(QUrl(name));
}

}  // namespace vemo
