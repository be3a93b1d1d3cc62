// The whole service, with an engine of the test's, on loopback and a thread of its own.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <future>
#include <sstream>
#include <thread>

#include "accounts/AccountServices.h"
#include "http/DictationApi.h"
#include "http/HttpServer.h"
#include "support/RawClient.h"
#include "support/ScriptedEngine.h"
#include "support/TemporaryFolder.h"

namespace vemo::service {

class RunningService {
 public:
  struct Settings {
    Limits limits;
    RecognitionQueue::Size queue{.workers = 1, .waiting = 8};
    EngineKind::Output output = EngineKind::Output::BareWords;
    AccountSettings accounts = {};
    TelemetrySettings telemetry = {};
    bool behindProxy = false;
    std::filesystem::path tokensFile = {};  ///< of its own when empty
    std::vector<TrustedProvider> providers = {};
    Now now = currentMoment;
  };

  RunningService(EngineScript& script, const Settings& settings)
      : RunningService(scripted(script, settings.output), settings) {}
  RunningService(const EngineKind& engine, const Settings& settings)
      : m_configuration{.behindProxy = settings.behindProxy,
                        .accounts = settings.accounts,
                        .telemetry = settings.telemetry,
                        .limits = settings.limits},
        m_engine(engine),
        m_tokensFile(settings.tokensFile.empty() ? m_folder.path() / "tokens"
                                                 : settings.tokensFile),
        m_tokens(m_tokensFile),
        m_log(m_logText),
        m_accounts(open(settings)),
        m_queue(engine, settings.queue, [](auto) {}),
        m_dictations(m_engine, m_queue, m_accounts ? &m_accounts->usage() : nullptr,
                     m_io.get_executor(), m_configuration.limits),
        m_admission(m_tokens, m_accounts ? &m_accounts->database() : nullptr, settings.now),
        m_server(m_io, m_configuration.limits, m_router, m_admission, m_log) {
    m_dictations.addTo(m_router);
    if (m_accounts) m_accounts->addTo(m_router);
    m_token = TokenFile::add(m_tokensFile).value_or("");
    if (!m_server.listen("127.0.0.1", 0)) std::abort();
    const auto address = m_server.address();
    m_port = static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
    m_thread = std::thread([this] { m_io.run(); });
  }
  ~RunningService() { stop(); }

  std::uint16_t port() const { return m_port; }
  const std::string& token() const { return m_token; }
  RecognitionQueue& queue() { return m_queue; }

  std::string addToken() const { return TokenFile::add(m_tokensFile).value_or(""); }
  /// Requests that wait for an answer which equal ones may share.
  std::size_t waitingForAnswers() {
    std::promise<std::size_t> count;
    boost::asio::post(m_io, [&] { count.set_value(m_dictations.equalRequests().waitingCount()); });
    return count.get_future().get();
  }

  void beginToStop() {
    boost::asio::post(m_io, [this] {
      m_server.stop([this] {
        m_dictations.equalRequests().forget();
        if (m_accounts) m_accounts->stop();
      });
    });
  }
  /// The log is whole once this has returned.
  std::string stop() {
    if (m_thread.joinable()) {
      beginToStop();
      m_thread.join();
    }
    return m_logText.str();
  }

  std::string post(std::string_view target, std::string_view body, std::string_view more = "") {
    return "POST " + std::string(target) + " HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " +
           m_token + "\r\n" + std::string(more) + "Content-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + std::string(body);
  }

 private:
  std::unique_ptr<AccountServices> open(const Settings& settings) {
    if (!settings.accounts.enabled) return nullptr;
    auto opened =
        AccountServices::open(m_configuration, m_io, m_log, settings.providers, settings.now);
    if (!opened) std::abort();
    return *std::move(opened);
  }

  TemporaryFolder m_folder;
  const Configuration m_configuration;
  const EngineKind m_engine;
  const std::filesystem::path m_tokensFile;
  boost::asio::io_context m_io{1};
  TokenFile m_tokens;
  std::ostringstream m_logText;
  AccessLog m_log;
  std::unique_ptr<AccountServices> m_accounts;
  RecognitionQueue m_queue;
  DictationApi m_dictations;
  Router m_router;
  Admission m_admission;
  HttpServer m_server;
  std::string m_token;
  std::uint16_t m_port = 0;
  std::thread m_thread;
};

}  // namespace vemo::service
