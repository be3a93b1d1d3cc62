// A live transcription connection: audio goes out while the user speaks, the text comes back over
// it.
//
// One object per dictation, made over a connection that is open already and owned by the session
// controller. Main thread only, but for append(). It ends once, and the first outcome stands:
// either the final text is known, or the session is unusable and its caller falls back to the
// recording. Who calls finish() keeps the session until that has returned; whoever feeds append()
// stops before the session goes.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

#include "base/Clock.h"
#include "base/Completion.h"
#include "base/TaskScope.h"
#include "ports/WebSocket.h"

namespace vemo {

class DebugLog;

class StreamingDictationSession {
 public:
  /// 100 ms of audio, the most that one message carries.
  static constexpr qsizetype messageSize = 3200;

  /// Clock, queue and log outlive the session.
  StreamingDictationSession(std::unique_ptr<WebSocket> task, Clock& clock, MainThread& mainThread,
                            DebugLog& debugLog);
  ~StreamingDictationSession();
  StreamingDictationSession(const StreamingDictationSession&) = delete;
  StreamingDictationSession& operator=(const StreamingDictationSession&) = delete;

  /// Audio in the recorder's format, to be sent with the next flush. Any thread; returns at once.
  void append(std::span<const std::byte> pcm);

  /// From now on sends what is buffered, in whole messages, once per interval.
  void startTimer(Clock::Duration interval);

  /// Ends the audio and waits for the final text. Nothing means that streaming failed and that the
  /// caller has to fall back to the recording; so does a requested stop.
  Task<std::optional<QString>> finish(Clock::Duration timeout, std::stop_token stop);

  /// Gives the session up; whoever waits in finish() gets nothing.
  void cancel();

  // What the far end has said, told by whoever reads its messages.
  void takePartial(const QString& text);
  void takeFinal(const QString& text);
  void takeDone(const QString& text);

  /// Receives the live text: what is final so far, and the current partial text.
  std::function<void(const QString& text)> onText;
  /// Told once, when the session gives up by itself. May destroy the session.
  std::function<void(const QString& reason)> onUnusable;

 private:
  enum class Amount { WholeMessages, Everything };

  QByteArray takeFromBuffer(Amount amount);
  void closeBuffer();
  void pump(Amount amount);
  void watch(const WebSocket::Sending& sending, const QString& reason);
  Task<> watchSending(WebSocket::Sending sending, QString reason);
  Task<> flushPeriodically(Clock::Duration interval, std::stop_token stop);
  Task<> giveUpAfter(Clock::Duration timeout, std::stop_token stop);
  void markUnusable(const QString& reason);
  void tellUnusable(const QString& reason);
  void end(const std::optional<QString>& outcome);
  void tellText();

  const std::unique_ptr<WebSocket> m_task;
  Clock& m_clock;
  MainThread& m_mainThread;
  DebugLog& m_debugLog;

  std::mutex m_bufferLock;  ///< guards the two below; held only while bytes are moved
  QByteArray m_buffer;
  bool m_isBufferClosed = false;  ///< nobody will send what comes now

  StartedTask m_timer;
  std::vector<StartedTask> m_timeouts;
  QStringList m_finals;
  QString m_partial;
  bool m_unusable = false;
  std::optional<QString> m_doneText;
  std::vector<Completion<std::optional<QString>>> m_waiters;

  std::shared_ptr<StreamingDictationSession*> m_self;  ///< lets posted work see that it has gone
  TaskScope m_scope;
};

}  // namespace vemo
