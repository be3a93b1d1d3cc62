// A text as this program puts it on the clipboard: with the marks by which clipboard managers know
// to leave it unrecorded.
#pragma once

#include <QString>

#include "ports/Clipboard.h"

namespace vemo {

enum class ClipboardStay {
  ForThePasteOnly,  ///< replaced again in a moment, and marked so
  UntilReplaced,    ///< the user asked for this copy
};

/// The marks are the published types of nspasteboard.org, and beside them the hint that Linux
/// clipboard managers look for.
ClipboardContents concealedText(const QString& text, ClipboardStay stay);

}  // namespace vemo
