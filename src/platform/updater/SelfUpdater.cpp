#include "platform/updater/SelfUpdater.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <algorithm>

#include "platform/updater/UpdateArchive.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto checkInterval = 24h;
constexpr int programLimit = 20'000;  ///< milliseconds for `vemo --version`

HttpRequest getRequest(const QUrl& url) {
  return {.method = "GET", .url = url, .headers = {}, .body = {}, .timeout = 20s};
}

/// Whether the new version starts at all on this machine, before anything depends on it.
bool startsHere(const QString& folder, const QString& version) {
  QProcess program;
  program.start(folder + u"/bin/vemo"_s, {u"--version"_s});
  if (!program.waitForFinished(programLimit)) {
    program.kill();
    program.waitForFinished(programLimit);
    return false;
  }
  return program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0 &&
         QString::fromUtf8(program.readAllStandardOutput()).contains(version);
}

struct Prepared {
  std::optional<UpdateTrouble> trouble;
  QString why;
};

Prepared verifyAndUnpack(const AppcastItem& item, const QString& file, const QByteArray& key,
                         const QString& folder) {
  QFile archive(file);
  if (!archive.open(QIODevice::ReadOnly) || archive.size() != item.archiveSize ||
      !isArchiveSigned(archive, item.archiveSignature, key))
    return {UpdateTrouble::NotSigned, u"the archive's signature is wrong"_s};
  QDir(folder).removeRecursively();
  Prepared prepared;
  if (const auto unpacked = unpackUpdate(file, item.files, folder); !unpacked) {
    prepared = {UpdateTrouble::ArchiveRefused, unpacked.error()};
  } else if (!startsHere(folder, item.shown.displayVersion)) {
    prepared = {UpdateTrouble::InstallationFailed, u"the new version doesn't start here"_s};
  }
  if (prepared.trouble) QDir(folder).removeRecursively();
  return prepared;
}

}  // namespace

SelfUpdater::SelfUpdater(With with, UpdaterDelegate& delegate, UpdateUserDriverDelegate& userDriver)
    : m_with(std::move(with)),
      m_delegate(delegate),
      m_userDriver(userDriver),
      m_builtInKey(publicKeyFrom(m_with.publicKey).value_or(QByteArray())),
      m_memory(UpdateMemory::read(m_with.memoryFile, m_builtInKey)),
      m_tasks(m_with.mainThread) {
  m_tasks.start([this](std::stop_token stop) { return checkDaily(std::move(stop)); });
}

void SelfUpdater::setAutomaticallyChecksForUpdates(bool isOn) {
  m_memory.automaticallyChecks = isOn;
  remember();
}

void SelfUpdater::setAutomaticallyDownloadsUpdates(bool isOn) {
  m_memory.automaticallyDownloads = isOn;
  remember();
}

void SelfUpdater::remember() {
  m_memory.write(m_with.memoryFile, m_builtInKey);
  changed.notify();
}

Task<> SelfUpdater::checkDaily(std::stop_token stop) {
  while (co_await m_with.clock.sleep(checkInterval, stop) == SleepEnd::Elapsed)
    if (m_memory.automaticallyChecks) begin(UpdateCheck::Scheduled);
}

void SelfUpdater::begin(UpdateCheck check) {
  if (m_isBusy || m_isReplaced) return;
  m_isBusy = true;
  changed.notify();
  m_tasks.start([this, check](std::stop_token stop) { return runSession(check, std::move(stop)); });
}

Task<> SelfUpdater::runSession(UpdateCheck check, std::stop_token stop) {
  const Outcome outcome = co_await findAndFetch(check, stop);
  if (!outcome) {
    if (outcome.error() == UpdateTrouble::NoUpdate) {
      tell(check, QCoreApplication::translate("Updates", "Vemo is up to date"),
           QCoreApplication::translate("Updates", "Vemo %1 is the newest version.")
               .arg(m_with.system.applicationVersion));
    } else {
      tellOfTrouble(check);
    }
    m_delegate.didAbort(
        {QString::fromUtf16(updaterErrorDomain), static_cast<int>(outcome.error())});
  }
  m_userDriver.willFinishUpdateSession();
  m_isBusy = false;
  changed.notify();
}

Task<SelfUpdater::Outcome> SelfUpdater::findAndFetch(UpdateCheck check, std::stop_token stop) {
  const auto feed = co_await readFeed(stop);
  if (!feed) co_return std::unexpected(feed.error());
  const quint64 running = m_with.system.applicationBuild.toULongLong();
  const auto item =
      chooseUpdate(*feed, {.newerThan = std::max(running, m_ready ? m_ready->build : 0),
                           .channels = m_delegate.allowedChannels(),
                           .systemVersion = m_with.system.systemVersion,
                           .architecture = m_with.system.processorArchitecture,
                           .refusedBuild = m_with.copy ? m_with.copy->refusedBuild() : 0});
  if (!item && m_ready) {
    tell(check, QCoreApplication::translate("Updates", "Update ready"),
         QCoreApplication::translate("Updates", "Vemo %1 is downloaded and ready to install.")
             .arg(m_ready->shown.displayVersion));
    co_return Outcome();
  }
  if (!item) co_return std::unexpected(UpdateTrouble::NoUpdate);
  m_delegate.didFindValidUpdate(item->shown);
  const bool isFetched =
      m_with.copy && (check == UpdateCheck::UserInitiated || m_memory.automaticallyDownloads);
  if (!isFetched || check == UpdateCheck::UserInitiated) {
    const bool isShown =
        check == UpdateCheck::UserInitiated ||
        m_userDriver.shouldHandleShowingScheduledUpdate(item->shown, ImmediateFocus::No);
    m_userDriver.willHandleShowingUpdate(isShown ? UpdateShownBy::Updater : UpdateShownBy::Delegate,
                                         item->shown, check);
  }
  if (check == UpdateCheck::UserInitiated) m_userDriver.didReceiveUserAttention(item->shown);
  if (m_with.copy && !isFetched && item->shown.isCritical)
    m_with.announce(
        QCoreApplication::translate("Updates", "Vemo %1 is available")
            .arg(item->shown.displayVersion),
        QCoreApplication::translate(
            "Updates", "It is an important update. Please check for updates to get it."));
  if (!m_with.copy) {
    m_with.announce(
        QCoreApplication::translate("Updates", "Vemo %1 is available")
            .arg(item->shown.displayVersion),
        QCoreApplication::translate(
            "Updates",
            "Install it the way you installed Vemo, such as with your package manager."));
    co_return Outcome();
  }
  if (!isFetched) co_return Outcome();
  m_with.copy->keepOnly({item->build, m_ready ? m_ready->build : 0});
  const QString file = m_with.copy->downloadFile(item->build);
  if (auto downloaded = co_await download(*item, file, stop); !downloaded) co_return downloaded;
  const Outcome prepared = co_await prepare(*item, file);
  QFile::remove(file);
  if (prepared) offer(*item);
  co_return prepared;
}

Task<std::expected<QByteArray, UpdateTrouble>> SelfUpdater::fetch(QString name,
                                                                  std::stop_token stop) {
  const HttpResult answer = co_await m_with.session.send(getRequest(address(name)), stop);
  if (!answer) co_return refuse(UpdateTrouble::DownloadFailed, answer.error().description);
  if (answer->status != 200)
    co_return refuse(UpdateTrouble::DownloadFailed,
                     u"%1: status %2"_s.arg(name, QString::number(answer->status.value_or(0))));
  co_return answer->body;
}

Task<std::expected<Appcast, UpdateTrouble>> SelfUpdater::readFeed(std::stop_token stop) {
  // First the keys: a feed of a key that has been replaced must not count.
  if (const auto rotations = co_await fetch(u"keys.txt"_s, stop)) {
    const TrustedKey latest =
        latestKey(rotations->first(std::min<qsizetype>(rotations->size(), Appcast::largestFeed)),
                  m_memory.key);
    if (latest != m_memory.key) {
      m_memory.key = latest;
      m_memory.serial = 0;  // whoever had the old key could have counted it up
    }
  }
  const auto feed = co_await fetch(u"appcast.xml"_s, stop);
  if (!feed) co_return std::unexpected(feed.error());
  m_memory.lastCheck =
      QDateTime::fromMSecsSinceEpoch(std::chrono::duration_cast<std::chrono::milliseconds>(
                                         m_with.clock.wallTime().time_since_epoch())
                                         .count());
  remember();
  if (feed->size() > Appcast::largestFeed)
    co_return refuse(UpdateTrouble::FeedUnreadable, u"the feed is too large"_s);
  const auto xml = verifiedFeed(*feed, m_memory.key.key);
  if (!xml) co_return refuse(UpdateTrouble::NotSigned, u"the feed's signature is wrong"_s);
  auto appcast = Appcast::read(*xml);
  if (!appcast) co_return refuse(UpdateTrouble::FeedUnreadable, u"feed: "_s + appcast.error());
  if (appcast->serial < m_memory.serial)
    co_return refuse(UpdateTrouble::FeedRefused, u"the feed is older than one seen before"_s);
  if (appcast->expires < *m_memory.lastCheck)
    co_return refuse(UpdateTrouble::FeedRefused, u"the feed has expired"_s);
  m_memory.serial = appcast->serial;
  remember();
  co_return *std::move(appcast);
}

Task<SelfUpdater::Outcome> SelfUpdater::download(AppcastItem item, QString file,
                                                 std::stop_token stop) {
  QFile partial(file);
  if (!partial.open(QIODevice::ReadWrite))
    co_return refuse(UpdateTrouble::DownloadFailed, partial.errorString());
  if (partial.size() > item.archiveSize) partial.resize(0);
  partial.seek(partial.size());
  for (qint64 have = partial.size(); have < item.archiveSize; have = partial.size()) {
    const qint64 wanted = std::min(pieceSize, item.archiveSize - have);
    HttpRequest request = getRequest(address(item.archive));
    request.setHeader(
        "Range", "bytes=" + QByteArray::number(have) + '-' + QByteArray::number(have + wanted - 1));
    const HttpResult answer = co_await m_with.session.send(std::move(request), stop);
    if (!answer) co_return refuse(UpdateTrouble::DownloadFailed, answer.error().description);
    const bool isWhole = answer->status == 200 && have == 0 && wanted == item.archiveSize;
    if ((answer->status != 206 && !isWhole) || answer->body.size() != wanted)
      co_return refuse(UpdateTrouble::DownloadFailed,
                       u"the server sent something else than was asked for"_s);
    if (partial.write(answer->body) != wanted || !partial.flush())
      co_return refuse(UpdateTrouble::DownloadFailed, partial.errorString());
  }
  co_return Outcome();
}

Task<SelfUpdater::Outcome> SelfUpdater::prepare(AppcastItem item, QString file) {
  const Completion<Prepared> completion(m_with.mainThread);
  MainThread& mainThread = m_with.mainThread;
  m_worker.post([completion, &mainThread, item, file, key = m_memory.key.key,
                 folder = m_with.copy->stagingFolder(item.build)] {
    mainThread.post([completion, done = verifyAndUnpack(item, file, key, folder)] {
      completion.complete(done);
    });
  });
  const Prepared prepared = co_await completion;
  if (prepared.trouble) co_return refuse(*prepared.trouble, prepared.why);
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
  tellOfTrouble(UpdateCheck::UserInitiated);
  if (!m_ready) begin(UpdateCheck::UserInitiated);
}

void SelfUpdater::installOnQuit() {
  if (m_ready) install();
}

/// What is left unpacked when it fails can be tried again.
bool SelfUpdater::install() {
  const QString unpacked = m_with.copy->stagingFolder(m_ready->build);
  const auto installed = m_with.copy->install(m_ready->build);
  m_isReplaced = installed.has_value();
  if (installed || !QFileInfo::exists(unpacked)) m_ready.reset();
  if (installed) return true;
  m_with.log(u"updates: "_s + installed.error());
  m_delegate.didAbort({QString::fromUtf16(updaterErrorDomain),
                       static_cast<int>(UpdateTrouble::InstallationFailed)});
  return false;
}

void SelfUpdater::tell(UpdateCheck check, const QString& title, const QString& text) const {
  if (check == UpdateCheck::UserInitiated) m_with.announce(title, text);
}

void SelfUpdater::tellOfTrouble(UpdateCheck check) const {
  tell(check, QCoreApplication::translate("Updates", "The update didn't work"),
       QCoreApplication::translate("Updates", "Please try again later."));
}

std::unexpected<UpdateTrouble> SelfUpdater::refuse(UpdateTrouble trouble,
                                                   const QString& why) const {
  m_with.log(u"updates: "_s + why);
  return std::unexpected(trouble);
}

QUrl SelfUpdater::address(const QString& name) const {
  return QUrl(m_delegate.feedUrl()).resolved(QUrl(name));
}

}  // namespace vemo
