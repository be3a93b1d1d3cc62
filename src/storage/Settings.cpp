#include "storage/Settings.h"

#include <algorithm>
#include <utility>

namespace vemo {

Settings::Settings(QString file, DebugLog& debugLog)
    : m_file(std::move(file), debugLog), m_values(m_file.read()) {}

Settings::~Settings() = default;

const SettingValue* Settings::find(const QString& name) const {
  const auto found = m_values.find(name);
  return found == m_values.end() ? nullptr : &found->second;
}

void Settings::waitUntilWritten() {
  m_writer.waitUntilIdle();
}

void Settings::store(const QString& name, SettingValue value) {
  const auto [stored, isNew] = m_values.try_emplace(name, value);
  if (!isNew && stored->second == value) return;
  stored->second = std::move(value);
  save();
  changed.notify(name);
}

void Settings::erase(const QString& name) {
  if (m_values.erase(name) == 0) return;
  save();
  changed.notify(name);
}

void Settings::save() {
  const std::lock_guard lock(m_unwrittenMutex);
  const bool isWriteQueued = m_unwritten.has_value();
  m_unwritten = m_values;
  if (!isWriteQueued) m_writer.post([this] { writeLatest(); });
}

void Settings::writeLatest() {
  std::unique_lock lock(m_unwrittenMutex);
  const SettingValues latest = *std::exchange(m_unwritten, std::nullopt);
  lock.unlock();
  m_file.write(latest);
}

}  // namespace vemo
