// Work that would hold up the main thread, done on another one and awaited.
#pragma once

#include <type_traits>
#include <utility>
#include <variant>

#include "base/Completion.h"
#include "base/SerialQueue.h"

namespace vemo {

/// What `work` gives on the queue's thread. The work keeps nothing that its caller might take away.
template <typename Result = std::monostate, typename Work>
Completion<Result> runElsewhere(SerialQueue& queue, MainThread& mainThread, Work work) {
  const Completion<Result> completion(mainThread);
  queue.post([completion, &mainThread, work = std::move(work)] {
    if constexpr (std::is_void_v<std::invoke_result_t<const Work&>>) {
      work();
      mainThread.post([completion] { completion.complete(); });
    } else {
      mainThread.post(
          [completion, result = work()]() mutable { completion.complete(std::move(result)); });
    }
  });
  return completion;
}

}  // namespace vemo
