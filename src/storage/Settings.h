// The user's settings: a flat store of typed values by key, in one human-readable file.
//
// The file is replaced as a whole, so that a kill at any moment leaves the old one or the new one;
// only the user can read it. Changes are in force at once and reach the disk soon after, on a
// thread of the store's own; the destructor waits for that. A file that can't be read as settings
// is kept beside the new one under another name, the log says so, and every key reads as absent. A
// file that can't be written is logged; the values live on in memory and the next change tries
// again. Writes that follow each other fast are one write of the last state.
//
// Main thread only. No reader fails: a value of another type than asked for reads as absent.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "base/Notifier.h"
#include "base/SerialQueue.h"
#include "storage/SettingValue.h"
#include "storage/SettingsFile.h"

namespace vemo {

class DebugLog;

/// A setting's name, and the type it is stored in: bool, QString, QByteArray or QDateTime.
template <typename T>
struct SettingKey {
  const char16_t* name;
};

class Settings {
 public:
  /// Reads `file`; its folder is made when something is first written.
  Settings(QString file, DebugLog& debugLog);
  ~Settings();
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  template <typename T>
  std::optional<T> get(const SettingKey<T>& key) const {
    const auto* value = find(QString::fromUtf16(key.name));
    const T* typed = value ? std::get_if<T>(value) : nullptr;
    return typed ? std::optional<T>(*typed) : std::nullopt;
  }

  /// The stored value, or `absent` when there is none of this type.
  template <typename T>
  T get(const SettingKey<T>& key, const T& absent) const {
    return get(key).value_or(absent);
  }

  template <typename T>
  void set(const SettingKey<T>& key, const T& value) {
    store(QString::fromUtf16(key.name), value);
  }

  template <typename T>
  void remove(const SettingKey<T>& key) {
    erase(QString::fromUtf16(key.name));
  }

  /// Whether anything is stored under the key, of whatever type.
  template <typename T>
  bool contains(const SettingKey<T>& key) const {
    return find(QString::fromUtf16(key.name)) != nullptr;
  }

  /// The value under a name, of whatever type; null when there is none.
  const SettingValue* find(const QString& name) const;

  /// Tells the name after each change of a stored value, inside set() or remove(). Writing the
  /// value that is already there is no change.
  Notifier<QString> changed;

  /// Blocks until every change so far has reached the disk or failed to.
  void waitUntilWritten();

 private:
  void store(const QString& name, SettingValue value);
  void erase(const QString& name);
  void save();
  void writeLatest();  ///< on the writer's thread

  SettingsFile m_file;
  SettingValues m_values;

  std::mutex m_unwrittenMutex;
  std::optional<SettingValues> m_unwritten;  ///< what the queued write takes
  SerialQueue m_writer{"vemo.settings"};     ///< ends first: it uses all of the above
};

}  // namespace vemo
