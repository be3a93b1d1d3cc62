// A clipboard in memory. A test writes to it as another application does, and can make snapshots
// slow.
#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <utility>
#include <vector>

#include "base/Clock.h"
#include "ports/Clipboard.h"

namespace vemo {

/// An item that holds one plain text, as most copies are.
inline ClipboardContents plainTextContents(const QString& text) {
  return {ClipboardItem{{ClipboardEntry{QString::fromUtf16(clipboardTextType), text.toUtf8()}}}};
}

/// The plain text in the contents, empty when there is none.
inline QString plainTextOf(const ClipboardContents& contents) {
  for (const ClipboardItem& item : contents) {
    for (const ClipboardEntry& entry : item.contents) {
      if (entry.type == QString::fromUtf16(clipboardTextType)) return QString::fromUtf8(entry.data);
    }
  }
  return {};
}

class FakeClipboard : public Clipboard {
 public:
  FakeClipboard() = default;
  /// The clock lets snapshots take time.
  explicit FakeClipboard(Clock& clock) : m_clock(&clock) {}

  Task<ClipboardContents> snapshot() override {
    ++m_snapshotCount;
    ClipboardContents contents = m_contents;
    if (m_snapshotDuration > Clock::Duration::zero())
      co_await m_clock->sleep(m_snapshotDuration, std::stop_token());
    co_return contents;
  }

  bool replace(ClipboardContents contents) override {
    if (m_refusesWrites) return false;
    m_writes.push_back(contents);
    m_contents = std::move(contents);
    ++m_changeCount;
    return true;
  }

  std::uint64_t changeCount() const override { return m_changeCount; }

  /// Another application takes the clipboard.
  void writeAsAnotherApplication(ClipboardContents contents) {
    m_contents = std::move(contents);
    ++m_changeCount;
  }

  /// From now on replace() fails and changes nothing.
  void refuseWrites() { m_refusesWrites = true; }

  /// From now on a snapshot takes this long, and holds what the clipboard held at its start. Needs
  /// the constructor with a clock.
  void makeSnapshotsTake(Clock::Duration duration) {
    if (!m_clock) qFatal("FakeClipboard: slow snapshots need a clock");
    m_snapshotDuration = duration;
  }

  const ClipboardContents& contents() const { return m_contents; }
  /// What replace() was called with, in order.
  const std::vector<ClipboardContents>& writes() const { return m_writes; }
  int snapshotCount() const { return m_snapshotCount; }

 private:
  Clock* m_clock = nullptr;
  Clock::Duration m_snapshotDuration{};
  ClipboardContents m_contents;
  std::vector<ClipboardContents> m_writes;
  std::uint64_t m_changeCount = 0;
  int m_snapshotCount = 0;
  bool m_refusesWrites = false;
};

}  // namespace vemo
