// Reading that would hold up the main thread, done on another one and awaited.
#pragma once

#include <utility>

#include "base/Completion.h"
#include "base/SerialQueue.h"

namespace vemo {

/// What `work` gives on the reader's thread. The work keeps nothing that its caller might take
/// away.
template <typename Result, typename Work>
Completion<Result> readElsewhere(SerialQueue& reader, MainThread& mainThread, Work work) {
  const Completion<Result> completion(mainThread);
  reader.post([completion, &mainThread, work = std::move(work)] {
    mainThread.post(
        [completion, result = work()]() mutable { completion.complete(std::move(result)); });
  });
  return completion;
}

}  // namespace vemo
