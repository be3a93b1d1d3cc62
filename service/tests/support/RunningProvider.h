// The local identity provider on loopback, on a thread of its own, with a database and a clock of
// the test's; and what a client of it does.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/url.hpp>
#include <sstream>
#include <thread>

#include "accounts/Secrets.h"
#include "database/DatabasePreparation.h"
#include "provider/ProviderServer.h"
#include "support/DatabaseTest.h"
#include "support/Eventually.h"
#include "support/IdTokens.h"
#include "support/RawClient.h"

namespace vemo::service {

using Parameters = std::map<std::string, std::string>;

inline std::string formOf(const Parameters& parameters) {
  std::string text;
  for (const auto& [name, value] : parameters)
    text += (text.empty() ? "" : "&") + name + "=" +
            boost::urls::encode(value, boost::urls::unreserved_chars);
  return text;
}

/// What stands between two marks.
inline std::string between(const std::string& text, std::string_view before,
                           std::string_view after) {
  const auto begin = text.find(before);
  if (begin == std::string::npos) return {};
  const auto end = text.find(after, begin + before.size());
  return text.substr(begin + before.size(), end - begin - before.size());
}

class RunningProvider {
 public:
  RunningProvider() {
    if (!prepareDatabase(m_address)) std::abort();
    m_workers = std::make_unique<DatabaseWorkers>(
        m_address, DatabaseWorkers::Size{.workers = 1, .waiting = 8}, [](auto) {});
    if (!m_server.listen("127.0.0.1", 0)) std::abort();
    m_settings.name = "Ada <Lovelace>";
    m_settings.email = "ada@localhost";
    m_settings.port = m_server.port();
    m_provider.emplace(m_settings, providerKey(), *m_workers, [this] { return m_now.load(); });
    m_server.serve(*m_provider);
    m_thread = std::jthread([this] { m_io.run(); });
  }
  ~RunningProvider() { stop(); }

  std::uint16_t port() const { return m_settings.port; }
  const ProviderSettings& settings() const { return m_settings; }
  std::string host() const { return "127.0.0.1:" + std::to_string(port()); }
  void advance(std::chrono::seconds time) { m_now = m_now.load() + time; }

  /// The log is whole once this has returned.
  std::string stop() {
    if (m_thread.joinable()) {
      boost::asio::post(m_io, [this] { m_server.stop(); });
      m_thread.join();
    }
    return m_logText.str();
  }

  RawAnswer send(const std::string& request) const {
    return RawClient(port()).exchange(request).value_or(RawAnswer{});
  }
  RawAnswer get(const std::string& target, const std::string& headers = "") const {
    return send("GET " + target + " HTTP/1.1\r\nHost: " + host() + "\r\n" + headers + "\r\n");
  }
  RawAnswer post(const std::string& path, const std::string& body, const std::string& headers = "",
                 const std::string& type = "application/x-www-form-urlencoded") const {
    return send("POST " + path + " HTTP/1.1\r\nHost: " + host() + "\r\nContent-Type: " + type +
                "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers + "\r\n" +
                body);
  }

 private:
  TemporaryFolder m_folder;
  DatabaseAddress m_address = DatabaseAddress::sqlite(m_folder.path() / "accounts.db");
  std::atomic<Moment> m_now = noon;
  std::ostringstream m_logText;
  AccessLog m_log{m_logText};
  boost::asio::io_context m_io{1};
  ProviderSettings m_settings;
  std::unique_ptr<DatabaseWorkers> m_workers;
  std::optional<LocalProvider> m_provider;
  ProviderServer m_server{m_io, m_log};
  std::jthread m_thread;
};

}  // namespace vemo::service
