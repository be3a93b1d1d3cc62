// Folders and files on a real disk, below a path with no component that scans ignore: neither the
// usual place for temporary files nor the build folder will do.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

class TestTree {
 public:
  TestTree() { EXPECT_TRUE(m_folder.isValid()); }
  ~TestTree() {
    // Qt leaves names that aren't UTF-8 and folders too deep for a path behind.
    std::error_code error;
    std::filesystem::remove_all(QFile::encodeName(root()).toStdString(), error);
    EXPECT_FALSE(error) << error.message();
  }
  TestTree(const TestTree&) = delete;
  TestTree& operator=(const TestTree&) = delete;

  QString root() const { return m_folder.path(); }
  QString path(const QString& relative) const { return m_folder.filePath(relative); }
  QByteArray nativePath(const QByteArray& relative) const {
    return QFile::encodeName(root()) + '/' + relative;
  }

  /// Makes a file and the folders above it; the name may be any bytes.
  void write(const QByteArray& relative, const QByteArray& content = {}) const {
    const QByteArray file = nativePath(relative);
    makeFolder(relative.left(std::max<qsizetype>(relative.lastIndexOf('/'), 0)));
    const int descriptor = ::open(file.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ASSERT_NE(descriptor, -1) << file.constData();
    ASSERT_EQ(::write(descriptor, content.constData(), static_cast<std::size_t>(content.size())),
              content.size());
    ::close(descriptor);
  }

  void makeFolder(const QByteArray& relative) const {
    for (qsizetype end = 0; end != -1;) {
      end = relative.indexOf('/', end + 1);
      ::mkdir(nativePath(relative.left(end == -1 ? relative.size() : end)).constData(), 0700);
    }
  }

  void link(const QByteArray& target, const QByteArray& relative) const {
    ASSERT_EQ(::symlink(target.constData(), nativePath(relative).constData()), 0);
  }

  /// Sets when the file was written, in seconds and nanoseconds since 1970.
  void setDate(const QByteArray& relative, time_t seconds, long nanoseconds = 0) const {
    const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, nativePath(relative).constData(), times, AT_SYMLINK_NOFOLLOW),
              0);
  }

 private:
  QTemporaryDir m_folder{u"/dev/shm/vemo-XXXXXX"_s};
};

}  // namespace vemo
