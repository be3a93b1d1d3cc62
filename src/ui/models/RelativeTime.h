// How old a transcription is, in a word or two. Any thread.
#pragma once

#include <QString>

#include "base/Clock.h"

namespace vemo {

/// "Just now", "5m ago", "3h ago", "2d ago"; what lies in the future is just now.
QString relativeTime(Clock::Duration age);

/// How long until something of this age reads differently.
Clock::Duration untilRelativeTimeChanges(Clock::Duration age);

}  // namespace vemo
