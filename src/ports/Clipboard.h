// The desktop's clipboard: typed items, and a counter that tells whether somebody else wrote since.
//
// Main thread only. Types are MIME types or whatever names the desktop uses; they come back as they
// were read, in the order in which the owner offered them.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

#include "base/Task.h"

namespace vemo {

/// One representation of an item. Data that couldn't be read is empty.
struct ClipboardEntry {
  QString type;
  QByteArray data;

  friend bool operator==(const ClipboardEntry&, const ClipboardEntry&) = default;
};

/// One item in all its representations. (X11 and Wayland have one item at the most.)
struct ClipboardItem {
  std::vector<ClipboardEntry> contents;

  friend bool operator==(const ClipboardItem&, const ClipboardItem&) = default;
};

/// All that the clipboard holds; empty for an empty clipboard.
using ClipboardContents = std::vector<ClipboardItem>;

/// The type under which plain text is written, in UTF-8. An adapter offers it under every name by
/// which applications of its desktop ask for text.
inline constexpr auto clipboardTextType = u"text/plain;charset=utf-8";

class Clipboard {
 public:
  virtual ~Clipboard() = default;

  /// Reads everything, byte for byte. An owner that doesn't answer costs a bounded wait; what it
  /// didn't hand over is left empty.
  virtual Task<ClipboardContents> snapshot() = 0;

  /// Makes `contents` the clipboard's content; empty contents empty it. Returns after the change
  /// has taken effect and has been counted; false when the desktop didn't let it.
  [[nodiscard]] virtual bool replace(ClipboardContents contents) = 0;

  /// Goes up with each change of the content, by whomever, replace() included.
  virtual std::uint64_t changeCount() const = 0;
};

}  // namespace vemo
