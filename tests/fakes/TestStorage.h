// A debug log and settings on a temporary disk, for tests of what writes to them.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include "base/Clock.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

class TestStorage {
 public:
  explicit TestStorage(const Clock& clock)
      : debugLog(clock, m_folder.path()),
        settings(m_folder.filePath(u"settings.json"_s), debugLog) {
    EXPECT_TRUE(m_folder.isValid());
  }

  /// The messages of all lines so far, without their times.
  QStringList logMessages() {
    debugLog.waitUntilWritten();
    QFile file(m_folder.filePath(u"debug.log"_s));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QStringList messages;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts))
      messages.append(line.section(u"[Vemo] "_s, 1));
    return messages;
  }

  bool hasLogged(const QString& message) { return logMessages().contains(message); }

 private:
  QTemporaryDir m_folder;

 public:
  DebugLog debugLog;
  Settings settings;
};

}  // namespace vemo
