#include "speech/PocketsphinxEngine.h"

#include <pocketsphinx.h>
#include <sphinxbase/err.h>

#include <mutex>

#include "speech/Utterances.h"

namespace vemo::service {

namespace {

void dropLogLine(void*, err_lvl_t, const char*, ...) {}

/// One engine loads at a time: the library keeps its log, and more of what it sets up, in globals.
std::mutex libraryMutex;

void silenceLibrary() {
  err_set_callback(dropLogLine, nullptr);
  err_set_logfp(nullptr);
}

bool isEnglish(std::string_view language) {
  return language.empty() || language == "multi" || language == "en" || language.starts_with("en-");
}

struct ConfigurationDeleter {
  void operator()(cmd_ln_t* configuration) const { cmd_ln_free_r(configuration); }
};

}  // namespace

void PocketsphinxEngine::DecoderDeleter::operator()(ps_decoder_s* decoder) const {
  ps_free(decoder);
}

PocketsphinxEngine::PocketsphinxEngine(PocketsphinxModel model) : m_model(std::move(model)) {}

std::expected<void, std::string> PocketsphinxEngine::load() {
  // The library ends the process over some unreadable files, so their absence is found here.
  for (const auto& path :
       {m_model.acousticModel / "mdef", m_model.languageModel, m_model.dictionary}) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
      return std::unexpected("the recogniser's model lacks " + path.string() +
                             " (Debian package pocketsphinx-en-us)");
  }
  const std::lock_guard lock(libraryMutex);
  silenceLibrary();
  const std::unique_ptr<cmd_ln_t, ConfigurationDeleter> configuration(
      cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", m_model.acousticModel.c_str(), "-lm",
                  m_model.languageModel.c_str(), "-dict", m_model.dictionary.c_str(), nullptr));
  if (!configuration) return std::unexpected("the recogniser refuses its settings");
  m_decoder.reset(ps_init(configuration.get()));
  if (!m_decoder)
    return std::unexpected("the recogniser cannot load its model from " +
                           m_model.acousticModel.parent_path().string());
  return {};
}

std::expected<std::string, EngineError> PocketsphinxEngine::transcribe(
    const Recording& recording, const TranscriptionOptions& options, std::stop_token stop) {
  if (!isEnglish(options.language))
    return std::unexpected(EngineError{EngineError::Kind::Unsupported,
                                       "The built-in recogniser understands English only."});
  std::string words;
  for (auto rest = recording.samples(); !rest.empty();) {
    if (stop.stop_requested())
      return std::unexpected(EngineError{EngineError::Kind::Cancelled, "Cancelled"});
    const auto length = utteranceLength(rest);
    const auto heard = decode(rest.first(length));
    if (!heard)
      return std::unexpected(
          EngineError{EngineError::Kind::Failed, "The recogniser failed on this recording."});
    if (!words.empty() && !heard->empty()) words += ' ';
    words += *heard;
    rest = rest.subspan(length);
  }
  return words;
}

std::optional<std::string> PocketsphinxEngine::decode(std::span<const std::int16_t> utterance) {
  // A new stream forgets the noise and level estimates of the recording before. Handing over the
  // whole utterance at once lets the decoder normalise by all of it, which spares a quarter of the
  // errors against feeding it bit by bit.
  if (ps_start_stream(m_decoder.get()) < 0 || ps_start_utt(m_decoder.get()) < 0)
    return std::nullopt;
  const bool fed = ps_process_raw(m_decoder.get(), utterance.data(), utterance.size(),
                                  /*no_search=*/FALSE, /*full_utt=*/TRUE) >= 0;
  const bool ended = ps_end_utt(m_decoder.get()) >= 0;
  if (!fed || !ended) return std::nullopt;
  std::int32_t score = 0;
  const char* words = ps_get_hyp(m_decoder.get(), &score);
  return words ? std::string(words) : std::string();
}

}  // namespace vemo::service
