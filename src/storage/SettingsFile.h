// The file that holds the settings: read once, then replaced as a whole by every write.
//
// A kill at any moment leaves the old file or the new one, and never a third that holds what was
// said. Only the user can read it. One thread at a time. Failures go to the log: a file that isn't
// settings is kept beside as settings.damaged-N.json, a write that fails is told once until one
// succeeds.
#pragma once

#include <QString>

#include "storage/SettingValue.h"

namespace vemo {

class DebugLog;

class SettingsFile {
 public:
  /// A larger file isn't settings, and isn't written either.
  static constexpr qint64 maximumSize = 64 * 1024 * 1024;

  SettingsFile(QString path, DebugLog& debugLog);

  /// What the file holds; nothing when there is none or it is damaged.
  SettingValues read();

  void write(const SettingValues& values);

 private:
  std::optional<SettingValues> readWhole() const;
  bool moveDamagedFileAside() const;
  /// The reason why it failed, or nothing.
  std::optional<QString> replaceWith(const QByteArray& content) const;
  void removeLeftovers() const;

  const QString m_path;
  DebugLog& m_debugLog;
  bool m_holdsDamagedFile = false;
  bool m_lastWriteFailed = false;
};

}  // namespace vemo
