// Lets go of pages that the system can read again from the files that they came from. Main thread
// only.
#pragma once

namespace vemo {

/// Of every shared object in memory, what was never written to: code and constants. What is used
/// again comes back by itself. Where the system doesn't tell what it holds, nothing happens.
void letGoOfCleanPages();

}  // namespace vemo
