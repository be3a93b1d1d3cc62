// Forwards a recording to a server that speaks "/v1/audio/transcriptions".
//
// Returns that server's text as it is. Follows the rules of Engine; the call blocks its worker for
// at most the configured time, name look-up included, and a stop request ends it at once. HTTPS is
// verified against the system's authorities, or those of the configuration, always. The server's
// own error texts are not passed on: they may quote the key or the speech.
#pragma once

#include <memory>

#include "setup/Configuration.h"
#include "speech/Engine.h"

namespace vemo::service {

class OpenAiEngine : public Engine {
 public:
  explicit OpenAiEngine(OpenAiSettings settings);
  ~OpenAiEngine() override;

  std::expected<void, std::string> load() override;
  std::expected<std::string, EngineError> transcribe(const Recording& recording,
                                                     const TranscriptionOptions& options,
                                                     std::stop_token stop) override;

 private:
  struct Server;

  OpenAiSettings m_settings;
  std::unique_ptr<Server> m_server;
};

}  // namespace vemo::service
