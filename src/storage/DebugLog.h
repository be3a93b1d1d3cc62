// The one diagnostic channel: a small text file that only the user can read, and a copy on standard
// output. One line per event, "2026-03-14T09:26:53Z [Vemo] message".
//
// Any thread may call it. A call formats the line and queues the disk write; it never blocks on the
// disk and never fails. Disk failures are ignored: logging must not harm a dictation.
//
// What the user said, a snippet, a dictionary entry, a clipboard or a token must never be logged.
// Lines about text state sizes only.
#pragma once

#include <QString>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "storage/StandardOutput.h"

namespace vemo {

class Settings;

class DebugLog {
 public:
  /// `folder` is where debug.log and debug.1.log stand. It is made on first use, for the user
  /// alone. An empty folder means that nothing goes to disk.
  DebugLog(const Clock& clock, QString folder);

  /// Writes one line. Line breaks and other control characters in the message become blanks.
  void operator()(const QString& message);

  /// Deletes, once in the life of an installation, logs of versions that wrote transcripts.
  void purgeLegacyLogIfNeeded(Settings& settings);

  /// Blocks until every line so far has reached the disk or failed to.
  void waitUntilWritten();

 private:
  // On the queue.
  void append(const QByteArray& line);
  void rotateIfNeeded() const;
  void deleteFiles() const;

  const Clock& m_clock;
  const QByteArray m_folder;  ///< as the file system spells it, like the two below
  const QByteArray m_current;
  const QByteArray m_previous;
  const StandardOutput m_standardOutput;
  bool m_hasMadeFolder = false;
  SerialQueue m_queue{"vemo.debuglog"};
};

}  // namespace vemo
