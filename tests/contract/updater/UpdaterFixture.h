// A self-contained copy of a program, its releases on a real server, and the updater between them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <set>

#include "ReleaseServer.h"
#include "base/Completion.h"
#include "fakes/FakeClock.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"
#include "platform/updater/SelfUpdater.h"
#include "platform/updater/UpdateArchive.h"
#include "platform/updater/UpdateDownload.h"
#include "platform/updater/UpdateSignatures.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

inline void writeTestFile(const QString& path, const QByteArray& content, bool isExecutable) {
  QDir().mkpath(QFileInfo(path).path());
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
  file.write(content);
  if (isExecutable) file.setPermissions(file.permissions() | QFile::ExeOwner);
}

/// A program that does nothing but tell its version.
inline QByteArray programTelling(const QByteArray& version, quint64 build) {
  return "#!/bin/sh\necho \"Vemo " + version + " (" + QByteArray::number(build) + ")\"\n";
}

inline void makeVersion(const QString& folder, const QByteArray& version, quint64 build,
                        const QByteArray& ballast = {}) {
  writeTestFile(folder + u"/bin/vemo"_s, programTelling(version, build), true);
  writeTestFile(folder + u"/lib/ballast"_s, ballast + version, false);
}

/// A copy with build 1, as `current`.
inline QString makeCopy(const QString& root) {
  makeVersion(root + u"/versions/1"_s, "1.0.0", 1);
  QFile::link(u"versions/1"_s, root + u"/current"_s);
  return root + u"/versions/1/bin/vemo"_s;
}

/// "Vemo 1.0.0", of the version that starts.
inline QByteArray startedVersion(const QString& root) {
  QProcess program;
  program.start(root + u"/current/bin/vemo"_s, {u"--version"_s});
  program.waitForFinished(20'000);
  const QByteArray told = program.readAllStandardOutput();
  return told.first(std::max<qsizetype>(told.indexOf(" ("), 0));
}

/// Notes what the updater tells.
class NotingDelegate : public UpdaterDelegate, public UpdateUserDriverDelegate {
 public:
  QString feedUrl() const override { return m_feedUrl; }
  QStringList allowedChannels() const override { return channels; }
  void didFindValidUpdate(const UpdateItem& update) override { found = update; }
  void userDidMakeChoice(UpdateChoice choice, const UpdateItem& update) override {
    choices.emplace_back(choice, update.displayVersion);
  }
  void didAbort(const UpdateError& error) override { errors.push_back(error.code); }
  bool willInstallUpdateOnQuit(const UpdateItem& update, std::function<void()> now) override {
    ready = update;
    installNow = std::move(now);
    return true;
  }
  bool shouldPostponeRelaunch(const UpdateItem&, std::function<void()> relaunch) override {
    if (postpone) postpone(std::move(relaunch));
    return static_cast<bool>(postpone);
  }
  bool supportsGentleScheduledUpdateReminders() const override { return true; }
  bool shouldHandleShowingScheduledUpdate(const UpdateItem&, ImmediateFocus focus) const override {
    return focus == ImmediateFocus::Yes;
  }
  void willHandleShowingUpdate(UpdateShownBy by, const UpdateItem&, UpdateCheck) override {
    shownBy = by;
  }
  void didReceiveUserAttention(const UpdateItem&) override { ++attentions; }
  void willFinishUpdateSession() override { ++finished; }

  QString m_feedUrl;
  QStringList channels;
  std::optional<UpdateItem> found;
  std::optional<UpdateItem> ready;
  std::function<void()> installNow;
  std::optional<UpdateShownBy> shownBy;
  std::vector<std::pair<UpdateChoice, QString>> choices;
  std::vector<int> errors;
  int finished = 0;
  int attentions = 0;
  std::function<void(std::function<void()> relaunch)> postpone;  ///< absent: nothing is put off
};

class UpdaterFixture : public testing::Test {
 protected:
  UpdaterFixture() {
    EXPECT_TRUE(folder.isValid());
    m_program = makeCopy(root);
    delegate.m_feedUrl = server.feedUrl();
  }

  SelfUpdater::With with() {
    return {.mainThread = mainThread,
            .clock = clock,
            .session = *usedSession,
            .publicKey = keys.publicKey.toBase64(),
            .system = {.systemVersion = u"12.8.0"_s,
                       .applicationVersion = u"1.0.0"_s,
                       .applicationBuild = u"1"_s,
                       .processorArchitecture = u"x86_64"_s},
            .copy = isOurs ? SelfContainedCopy::around(m_program) : std::nullopt,
            .memoryFile = folder.filePath(u"updates.json"_s),
            .answerLimit = answerLimit,
            .freeSpace = [this](const QString&) { return freeSpace; },
            .log = [this](const QString& line) { log.append(line); },
            .announce =
                [this](const UpdateNote& note, std::function<void(UpdateChoice)> choice) {
                  announced.append(note.title);
                  offered = note.choices;
                  choose = std::move(choice);
                },
            .isInFront = [this] { return isInFront; },
            .relaunch = [this] { ++relaunches; }};
  }

  SelfUpdater& start() {
    updater.reset();
    updater.emplace(with(), delegate, delegate);
    EXPECT_TRUE(loop.runUntil([this] { return clock.sleeperCount() > 0; })) << "its daily check";
    return *updater;
  }

  /// Of downloads and of versions that aren't installed.
  QStringList leftovers() const {
    return QDir(root + u"/versions"_s)
        .entryList({u".*"_s}, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }

  /// One check from beginning to end; its errors.
  std::vector<int> check(UpdateCheck kind = UpdateCheck::Scheduled) {
    if (!updater) start();
    delegate.errors.clear();
    const int finished = delegate.finished;
    if (kind == UpdateCheck::Scheduled) {
      updater->checkForUpdatesInBackground();
    } else {
      updater->checkForUpdates();
    }
    EXPECT_TRUE(loop.runUntil([&] { return delegate.finished > finished; }));
    return delegate.errors;
  }

  /// Packs a version for the feed, and puts its archive on the server.
  AppcastItem release(quint64 build, const QByteArray& version, const QByteArray& ballast = {}) {
    const QString made = folder.filePath(u"made-%1"_s.arg(build));
    makeVersion(made, version, build, ballast);
    return packed(made, build, version);
  }

  AppcastItem packed(const QString& made, quint64 build, const QByteArray& version) {
    const QString archive = folder.filePath(u"vemo-%1.tar.xz"_s.arg(build));
    auto files = packUpdate(made, archive);
    EXPECT_TRUE(files) << (files ? "" : qPrintable(files.error()));
    AppcastItem item{.shown = {.displayVersion = QString::fromLatin1(version),
                               .buildVersion = QString::number(build),
                               .isCritical = false,
                               .notes = u"# New"_s},
                     .build = build,
                     .channel = {},
                     .minimumSystemVersion = {},
                     .architecture = {},
                     .archive = QFileInfo(archive).fileName(),
                     .archiveSize = 0,
                     .archiveSignature = {},
                     .files = *files};
    putArchive(item, archive);
    return item;
  }

  /// Signs whatever the file holds.
  void putArchive(AppcastItem& item, const QString& archive) {
    QFile file(archive);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    item.archiveSize = file.size();
    item.archiveSignature = archiveSignature(file, keys.secretKey);
    file.seek(0);
    server.files[item.archive.toLatin1()] = file.readAll();
  }

  void publish(std::vector<AppcastItem> items, quint64 serial = 1,
               const QByteArray& secretKey = {}) {
    const Appcast appcast{.serial = serial,
                          .expires = QDateTime(QDate(2026, 3, 20), {}, Qt::UTC),
                          .items = std::move(items)};
    server.files["appcast.xml"] =
        signedFeed(appcast.write(), secretKey.isEmpty() ? keys.secretKey : secretKey);
  }

  QtTestLoop loop;
  QtMainThread mainThread;
  FakeMainThread clockThread;
  FakeClock clock{clockThread};
  QtHttpSession session{mainThread, {.requestTimeout = 20s, .resourceTimeout = 20s}};
  QtHttpSession* usedSession = &session;
  QTemporaryDir folder;
  const QString root = folder.filePath(u"vemo"_s);
  SigningKeys keys = SigningKeys::generate();
  ReleaseServer server;
  NotingDelegate delegate;
  std::optional<SelfUpdater> updater;
  bool isOurs = true;
  std::chrono::milliseconds answerLimit = versionCheckLimit;
  qint64 freeSpace = -1;
  int relaunches = 0;
  QStringList log;
  QStringList announced;
  std::vector<UpdateChoice> offered;  ///< with the last of them
  std::function<void(UpdateChoice)> choose;
  bool isInFront = false;

 private:
  QString m_program;
};

}  // namespace vemo
