// The embedded recogniser: PocketSphinx with an English model, no network and no key.
//
// Returns bare lower-case words. Follows the rules of Engine. A long recording is recognised
// utterance by utterance, and a stop request ends it between two of them: a few seconds of work at
// most. The library's own log is shut off, since it prints what it heard.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "speech/Engine.h"

struct ps_decoder_s;

namespace vemo::service {

struct PocketsphinxModel {
  std::filesystem::path acousticModel = "/usr/share/pocketsphinx/model/en-us/en-us";
  std::filesystem::path languageModel = "/usr/share/pocketsphinx/model/en-us/en-us.lm.bin";
  std::filesystem::path dictionary = "/usr/share/pocketsphinx/model/en-us/cmudict-en-us.dict";
};

class PocketsphinxEngine : public Engine {
 public:
  explicit PocketsphinxEngine(PocketsphinxModel model);

  std::expected<void, std::string> load() override;
  std::expected<std::string, EngineError> transcribe(const Recording& recording,
                                                     const TranscriptionOptions& options,
                                                     std::stop_token stop) override;

 private:
  std::optional<std::string> decode(std::span<const std::int16_t> utterance);

  struct DecoderDeleter {
    void operator()(ps_decoder_s* decoder) const;
  };

  PocketsphinxModel m_model;
  std::unique_ptr<ps_decoder_s, DecoderDeleter> m_decoder;
};

}  // namespace vemo::service
