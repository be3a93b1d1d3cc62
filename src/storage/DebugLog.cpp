#include "storage/DebugLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QFile>
#include <algorithm>
#include <cstdio>

#include "storage/PrivateFolder.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr off_t largestFileThatGrows = 1'000'000;

bool breaksTheLine(QChar unit) {
  const auto category = unit.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph;
}

QString onOneLine(QString message) {
  std::replace_if(message.begin(), message.end(), breaksTheLine, u' ');
  return message;
}

QString timestamp(Clock::WallTime time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch());
  return QDateTime::fromSecsSinceEpoch(seconds.count(), Qt::UTC).toString(Qt::ISODate);
}

}  // namespace

DebugLog::DebugLog(const Clock& clock, QString folder)
    : m_clock(clock),
      m_folder(QFile::encodeName(folder)),
      m_current(m_folder + "/debug.log"),
      m_previous(m_folder + "/debug.1.log") {}

void DebugLog::operator()(const QString& message) {
  const QString line = timestamp(m_clock.wallTime()) + u" [Vemo] "_s + onOneLine(message) + u'\n';
  const QByteArray bytes = line.toUtf8();
  m_standardOutput.write(bytes);
  m_queue.post([this, bytes] { append(bytes); });
}

void DebugLog::purgeLegacyLogIfNeeded(Settings& settings) {
  if (settings.get(keys::debugLogTranscriptPurgeDone, false)) return;
  settings.set(keys::debugLogTranscriptPurgeDone, true);
  m_queue.post([this] { deleteFiles(); });
  (*this)(u"debuglog: purged pre-fix log that may have contained transcripts"_s);
}

void DebugLog::waitUntilWritten() {
  m_queue.waitUntilIdle();
}

void DebugLog::append(const QByteArray& line) {
  if (m_folder.isEmpty()) return;
  if (!m_hasMadeFolder) m_hasMadeFolder = makePrivateFolder(QFile::decodeName(m_folder));
  rotateIfNeeded();
  // A planted symbolic link must not redirect the lines, nor a planted pipe hold up the queue.
  const int file =
      ::open(m_current.constData(),
             O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
  if (file == -1) return;
  [[maybe_unused]] const ssize_t written =
      ::write(file, line.constData(), static_cast<std::size_t>(line.size()));
  ::close(file);
}

void DebugLog::rotateIfNeeded() const {
  struct stat current{};
  if (::lstat(m_current.constData(), &current) != 0) return;
  if (current.st_size <= largestFileThatGrows) return;
  ::unlink(m_previous.constData());
  ::rename(m_current.constData(), m_previous.constData());
}

void DebugLog::deleteFiles() const {
  if (m_folder.isEmpty()) return;
  ::unlink(m_current.constData());
  ::unlink(m_previous.constData());
}

}  // namespace vemo
