// What the operator has set, checked.
//
// A plain value, read once at the start. An absent file or key means the value given here; a value
// that doesn't parse and a key that nobody knows are errors of one line each.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>

#include "provider/ProviderSettings.h"
#include "setup/AccountSettings.h"
#include "speech/PocketsphinxEngine.h"

namespace vemo::service {

struct Limits {
  std::size_t bodyBytes = 16 * 1024 * 1024;
  std::uint32_t headerBytes = 8 * 1024;
  std::size_t connections = 1024;
  std::chrono::milliseconds headerTime{10'000};  ///< for a whole request head
  std::chrono::milliseconds bodyTime{60'000};    ///< for a whole body
  std::chrono::milliseconds answerTime{30'000};  ///< for the client to take its answer
  std::chrono::milliseconds idleTime{60'000};    ///< between two requests of a connection
  std::chrono::milliseconds refusedTime{
      10'000};                                   ///< for a refused client to send its body and read
  std::chrono::milliseconds repeatTime{60'000};  ///< for which an answer serves equal requests
  std::size_t repeatAnswers = 256;               ///< answers that are remembered for that
  std::chrono::milliseconds shutdownTime{10'000};  ///< for requests under way at a SIGTERM
};

struct OpenAiSettings {
  std::string address =
      {};  ///< "https://host[:port][/prefix]"; "/v1/audio/transcriptions" is appended
  std::string model = "whisper-1";
  std::filesystem::path keyFile = {};                 ///< empty: no key is sent
  std::filesystem::path certificateAuthorities = {};  ///< PEM file; empty: the system's
  std::chrono::milliseconds timeout{45'000};
};

struct Configuration {
  enum class EngineName { Pocketsphinx, OpenAi };

  std::string address = "127.0.0.1";
  std::uint16_t port = 8750;  ///< 0: any free one
  /// Then clients are told apart by the last address that a proxy has written.
  bool behindProxy = false;
  std::filesystem::path tokensFile = {};
  EngineName engine = EngineName::Pocketsphinx;
  std::size_t workers = 0;  ///< 0: as many as suit the engine
  std::size_t waiting = 64;
  PocketsphinxModel pocketsphinx = {};
  OpenAiSettings openAi = {};
  AccountSettings accounts = {};
  TelemetrySettings telemetry = {};
  ProviderSettings localProvider = {};
  std::filesystem::path updatesFolder = {};  ///< empty: no updates are served
  Limits limits = {};

  std::size_t effectiveWorkers() const;

  /// XDG_CONFIG_HOME/vemo-service, where the files are looked for by default.
  static std::filesystem::path defaultFolder();
  /// XDG_DATA_HOME/vemo-service, where the service keeps what it stores.
  static std::filesystem::path dataFolder();
  /// `path` may be absent only when it is the default file.
  static std::expected<Configuration, std::string> read(const std::filesystem::path& path);
};

}  // namespace vemo::service
