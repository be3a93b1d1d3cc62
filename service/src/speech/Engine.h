// A speech recogniser, as the service sees it.
//
// One engine serves one worker thread: `load` is called once on that thread, then `transcribe`, one
// call at a time, all on the same thread. It may take as long as recognition takes; a stop request
// ends it early where the engine can. An engine throws nothing.
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

#include "speech/Recording.h"

namespace vemo::service {

struct TranscriptionOptions {
  std::string language;  ///< as the client names it: "en", "en-IN", "multi" …; may be empty
};

struct EngineError {
  enum class Kind {
    Unsupported,  ///< the request asks for what this engine can't do
    Failed,       ///< the engine, or the server behind it, failed
    TimedOut,
    Cancelled,
    Busy,  ///< the queue before the engines is full
  };
  Kind kind;
  std::string message;  ///< a sentence for the user; holds nothing of what was said
};

class Engine {
 public:
  virtual ~Engine() = default;

  /// Makes the engine ready for `transcribe`; the error is one line for the operator.
  virtual std::expected<void, std::string> load() = 0;

  virtual std::expected<std::string, EngineError> transcribe(const Recording& recording,
                                                             const TranscriptionOptions& options,
                                                             std::stop_token stop) = 0;
};

/// A language as the client shows and names it.
struct Language {
  std::string_view name;
  std::string_view code;
};

/// What a configuration makes of an engine: how to build one for each worker, and what it returns.
struct EngineKind {
  enum class Output {
    BareWords,   ///< lower-case words that need sentence case and points
    Punctuated,  ///< finished text, left alone
  };
  std::string name;
  Output output;
  std::function<std::unique_ptr<Engine>()> make;
  std::span<const Language> languages = {};
};

}  // namespace vemo::service
