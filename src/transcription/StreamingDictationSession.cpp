#include "transcription/StreamingDictationSession.h"

#include <algorithm>
#include <utility>

#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

StreamingDictationSession::StreamingDictationSession(std::unique_ptr<WebSocket> task, Clock& clock,
                                                     MainThread& mainThread, DebugLog& debugLog)
    : m_task(std::move(task)),
      m_clock(clock),
      m_mainThread(mainThread),
      m_debugLog(debugLog),
      m_self(std::make_shared<StreamingDictationSession*>(this)),
      m_scope(mainThread) {}

StreamingDictationSession::~StreamingDictationSession() {
  *m_self = nullptr;
}

void StreamingDictationSession::append(std::span<const std::byte> pcm) {
  const std::lock_guard lock(m_bufferLock);
  if (m_isBufferClosed) return;
  m_buffer.append(reinterpret_cast<const char*>(pcm.data()), static_cast<qsizetype>(pcm.size()));
}

void StreamingDictationSession::startTimer(Clock::Duration interval) {
  if (m_unusable || m_doneText) return;
  m_timer.cancel();
  m_timer = m_scope.start([this, interval](std::stop_token stop) {
    return flushPeriodically(interval, std::move(stop));
  });
}

Task<> StreamingDictationSession::flushPeriodically(Clock::Duration interval,
                                                    std::stop_token stop) {
  while (co_await m_clock.sleep(interval, stop) == SleepEnd::Elapsed && !stop.stop_requested())
    pump(Amount::WholeMessages);
}

Task<std::optional<QString>> StreamingDictationSession::finish(Clock::Duration timeout,
                                                               std::stop_token stop) {
  if (m_doneText) co_return m_doneText;
  if (m_unusable) co_return std::nullopt;
  const Completion<std::optional<QString>> text(m_mainThread);
  m_waiters.push_back(text);
  pump(Amount::Everything);
  m_timer.cancel();
  watch(m_task->sendText(uR"({"event":"end"})"_s), u"send_end_failed"_s);
  m_timeouts.push_back(m_scope.start([this, timeout](std::stop_token timeoutStop) {
    return giveUpAfter(timeout, std::move(timeoutStop));
  }));
  const std::stop_callback onStop(stop, [&text] { text.complete(std::nullopt); });
  co_return co_await text;
}

void StreamingDictationSession::cancel() {
  if (m_unusable) return;
  m_unusable = true;
  m_task->close(normalWebSocketClosure);
  end(std::nullopt);
}

void StreamingDictationSession::takePartial(const QString& text) {
  if (m_unusable || m_doneText) return;
  m_partial = text;
  tellText();
}

void StreamingDictationSession::takeFinal(const QString& text) {
  if (m_unusable || m_doneText) return;
  m_finals.append(text);
  m_partial.clear();
  tellText();
}

void StreamingDictationSession::takeDone(const QString& text) {
  if (m_unusable || m_doneText) return;
  m_doneText = text;
  end(m_doneText);
}

QByteArray StreamingDictationSession::takeFromBuffer(Amount amount) {
  const std::lock_guard lock(m_bufferLock);
  if (amount == Amount::Everything) return std::exchange(m_buffer, {});
  const qsizetype whole = m_buffer.size() - m_buffer.size() % messageSize;
  QByteArray taken = m_buffer.first(whole);
  m_buffer.remove(0, whole);
  return taken;
}

void StreamingDictationSession::closeBuffer() {
  const std::lock_guard lock(m_bufferLock);
  m_isBufferClosed = true;
  m_buffer = {};
}

void StreamingDictationSession::pump(Amount amount) {
  if (m_unusable) return;
  const QByteArray bytes = takeFromBuffer(amount);
  for (qsizetype offset = 0; offset < bytes.size(); offset += messageSize)
    watch(m_task->sendBinary(bytes.mid(offset, messageSize)), u"send_failed"_s);
}

void StreamingDictationSession::watch(const WebSocket::Sending& sending, const QString& reason) {
  m_scope.start([&](std::stop_token) { return watchSending(sending, reason); });
}

Task<> StreamingDictationSession::watchSending(WebSocket::Sending sending, QString reason) {
  const WebSocket::SendResult result = co_await sending;
  if (!result) markUnusable(reason);
}

Task<> StreamingDictationSession::giveUpAfter(Clock::Duration timeout, std::stop_token stop) {
  if (co_await m_clock.sleep(timeout, stop) == SleepEnd::Elapsed) markUnusable(u"timeout"_s);
}

void StreamingDictationSession::markUnusable(const QString& reason) {
  if (m_unusable || m_doneText) return;
  m_unusable = true;
  m_task->close(normalWebSocketClosure);
  m_debugLog(u"streaming: not used (%1)"_s.arg(reason));
  end(std::nullopt);
  tellUnusable(reason);
}

void StreamingDictationSession::tellUnusable(const QString& reason) {
  m_mainThread.post([self = m_self, reason] {
    if (!*self) return;
    const auto callback = (*self)->onUnusable;
    if (callback) callback(reason);
  });
}

/// Both outcomes leave neither timers nor buffered audio, and nobody waiting.
void StreamingDictationSession::end(const std::optional<QString>& outcome) {
  m_timer.cancel();
  for (const auto& timeout : std::exchange(m_timeouts, {})) timeout.cancel();
  closeBuffer();
  for (const auto& waiter : std::exchange(m_waiters, {})) waiter.complete(outcome);
}

void StreamingDictationSession::tellText() {
  if (!onText) return;
  QStringList pieces = m_finals;
  if (!m_partial.isEmpty()) pieces.append(m_partial);
  onText(pieces.join(u' '));
}

}  // namespace vemo
