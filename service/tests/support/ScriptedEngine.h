// An engine that does what the test says: answers, fails, or holds every recording back until it is
// let go. The script is shared by all engines made from it and outlives them.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

#include "speech/Languages.h"

namespace vemo::service {

class EngineScript {
 public:
  using Result = std::expected<std::string, EngineError>;

  /// What each following recording is answered with.
  void answerWith(Result result) {
    const std::lock_guard lock(m_mutex);
    m_result = std::move(result);
  }
  void hold() {
    const std::lock_guard lock(m_mutex);
    m_held = true;
  }
  void letGo() {
    const std::lock_guard lock(m_mutex);
    m_held = false;
    m_changed.notify_all();
  }
  void failToLoad(std::string error) { m_loadError = std::move(error); }
  void holdLoading() { m_loadingHeld = true; }
  void letLoadingGo() {
    const std::lock_guard lock(m_mutex);
    m_loadingHeld = false;
    m_changed.notify_all();
  }

  std::size_t runningCount() const {
    const std::lock_guard lock(m_mutex);
    return m_running;
  }
  std::size_t startedCount() const {
    const std::lock_guard lock(m_mutex);
    return m_languages.size();
  }
  std::deque<std::string> languages() const {
    const std::lock_guard lock(m_mutex);
    return m_languages;
  }

  std::expected<void, std::string> load() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_loadingHeld; });
    if (!m_loadError.empty()) return std::unexpected(m_loadError);
    return {};
  }
  Result transcribe(const TranscriptionOptions& options, std::stop_token stop) {
    std::unique_lock lock(m_mutex);
    m_languages.push_back(options.language);
    ++m_running;
    m_changed.wait(lock, stop, [this] { return !m_held; });
    --m_running;
    if (stop.stop_requested())
      return std::unexpected(EngineError{EngineError::Kind::Cancelled, "Cancelled"});
    return m_result;
  }

 private:
  mutable std::mutex m_mutex;
  std::condition_variable_any m_changed;
  Result m_result = "hello world";
  std::deque<std::string> m_languages;
  std::size_t m_running = 0;
  bool m_held = false;
  bool m_loadingHeld = false;
  std::string m_loadError;
};

class ScriptedEngine : public Engine {
 public:
  explicit ScriptedEngine(EngineScript& script) : m_script(script) {}

  std::expected<void, std::string> load() override { return m_script.load(); }
  std::expected<std::string, EngineError> transcribe(const Recording&,
                                                     const TranscriptionOptions& options,
                                                     std::stop_token stop) override {
    return m_script.transcribe(options, std::move(stop));
  }

 private:
  EngineScript& m_script;
};

inline EngineKind scripted(EngineScript& script,
                           EngineKind::Output output = EngineKind::Output::BareWords) {
  return {.name = "scripted",
          .output = output,
          .make = [&script] { return std::make_unique<ScriptedEngine>(script); },
          .languages = englishOnly};
}

}  // namespace vemo::service
