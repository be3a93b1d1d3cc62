// What the tests of this folder share: a folder that goes away, a log in it, and trouble with
// disks.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "fakes/FakeClock.h"
#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

class StorageTest : public testing::Test {
 protected:
  /// Open to be passed through, so that another user fails at what is inside.
  StorageTest() { ::chmod(QFile::encodeName(m_folder.path()).constData(), 0711); }

  QString path(const QString& name) const { return m_folder.filePath(name); }

  static QByteArray contentOf(const QString& file) {
    QFile reader(file);
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
  }

  static void write(const QString& file, const QByteArray& content) {
    QFile writer(file);
    ASSERT_TRUE(writer.open(QIODevice::WriteOnly));
    ASSERT_EQ(writer.write(content), content.size());
  }

  static mode_t modeOf(const QString& file) {
    struct stat status{};
    EXPECT_EQ(::lstat(QFile::encodeName(file).constData(), &status), 0);
    return status.st_mode & 07777;
  }

  /// The messages logged so far, without what stands before them.
  QStringList logged() {
    debugLog.waitUntilWritten();
    QStringList messages = QString::fromUtf8(contentOf(path(u"log/debug.log"_s))).split(u'\n');
    messages.removeAll(QString());
    for (QString& line : messages) line = line.section(u" [Vemo] "_s, 1);
    return messages;
  }

 private:
  QTemporaryDir m_folder;

 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  DebugLog debugLog{clock, path(u"log"_s)};
};

/// While it lives, no file of this process can grow beyond the size: the disk looks full.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) {
    m_previousHandler = ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &m_previousLimit);
    const rlimit limit{size, m_previousLimit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &m_previousLimit);
    ::signal(SIGXFSZ, m_previousHandler);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit m_previousLimit{};
  sighandler_t m_previousHandler;
};

/// While it lives, nothing can be made, renamed or removed in the folder, not even by root.
class ReadOnlyFolder {
 public:
  explicit ReadOnlyFolder(const QString& path) : m_path(QFile::encodeName(path)) {
    EXPECT_EQ(::chmod(m_path.constData(), 0555), 0);
    if (m_isRoot) EXPECT_EQ(::seteuid(nobody), 0);
  }
  ~ReadOnlyFolder() {
    if (m_isRoot) EXPECT_EQ(::seteuid(0), 0);
    ::chmod(m_path.constData(), 0700);
  }
  ReadOnlyFolder(const ReadOnlyFolder&) = delete;
  ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

 private:
  static constexpr uid_t nobody = 65534;
  const QByteArray m_path;
  const bool m_isRoot = ::geteuid() == 0;
};

}  // namespace vemo
