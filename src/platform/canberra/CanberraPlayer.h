// The thread on which libcanberra plays.
//
// play() returns at once, from any thread. Only the newest play of each sound is kept waiting, so a
// server that hangs gathers no backlog. The thread keeps its player alive while it is inside
// libcanberra, which allows end() to leave it there when the sound server doesn't answer.
#pragma once

#include <canberra.h>

#include <QByteArray>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace vemo {

/// One property of libcanberra's that says what to play, and its value.
struct CanberraSource {
  const char* property;
  QByteArray value;
};

class CanberraPlayer : public std::enable_shared_from_this<CanberraPlayer> {
 public:
  CanberraPlayer(QByteArray applicationName, QByteArray applicationId);
  ~CanberraPlayer() = default;
  CanberraPlayer(const CanberraPlayer&) = delete;
  CanberraPlayer& operator=(const CanberraPlayer&) = delete;

  std::uint32_t newSoundId();

  /// Stops the sound of that id, if it plays, and plays it from the start.
  void play(std::uint32_t soundId, CanberraSource source);

  /// Nothing is played from now on. Waits half a second at most for the thread to leave.
  void end();

 private:
  void run();
  bool openContext();
  void closeContext();
  void playNow(std::uint32_t soundId, const CanberraSource& source);

  const QByteArray m_applicationName;
  const QByteArray m_applicationId;
  ca_context* m_context = nullptr;  ///< the player thread's

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::map<std::uint32_t, CanberraSource> m_waiting;
  std::uint32_t m_lastSoundId = 0;
  bool m_isRunning = false;
  bool m_isEnding = false;
};

}  // namespace vemo
