#include "identity/RemoteKeys.h"

#include <algorithm>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <charconv>

namespace vemo::service {

namespace {

namespace net = boost::asio;
namespace http = boost::beast::http;
using Response = http::response<http::string_body>;

constexpr std::chrono::seconds shortestLife{60};
constexpr std::chrono::seconds usualLife{3600};

template <typename Stream>
net::awaitable<Response> get(Stream& stream, const WebServer& server) {
  http::request<http::empty_body> request(http::verb::get,
                                          server.path().empty() ? "/" : server.path(), 11);
  request.set(http::field::host, server.hostHeader());
  request.set(http::field::user_agent, "vemo-service");
  request.set(http::field::accept, "application/json");
  request.keep_alive(false);
  co_await http::async_write(stream, request, net::use_awaitable);
  boost::beast::flat_buffer buffer;
  http::response_parser<http::string_body> parser;
  parser.body_limit(RemoteKeys::largestKeySet);
  co_await http::async_read(stream, buffer, parser, net::use_awaitable);
  co_return parser.release();
}

/// What "max-age=" in the answer says, within bounds.
std::chrono::seconds lifetimeOf(const Response& response) {
  const std::string control(response[http::field::cache_control]);
  constexpr std::string_view name = "max-age=";
  const auto place = control.find(name);
  if (place == std::string::npos) return usualLife;
  long seconds = 0;
  std::from_chars(control.data() + place + name.size(), control.data() + control.size(), seconds);
  return std::clamp(std::chrono::seconds(seconds), shortestLife,
                    std::chrono::seconds(RemoteKeys::keptAtMost));
}

}  // namespace

RemoteKeys::RemoteKeys(std::unique_ptr<WebServer> server, std::function<Clock::time_point()> now)
    : m_server(std::move(server)), m_now(std::move(now)) {}

std::optional<std::vector<JsonWebKey>> RemoteKeys::find(const std::string& identifier) {
  const std::lock_guard lock(m_mutex);
  const auto now = m_now();
  const bool mayAsk = !m_asked || now >= *m_asked + retryPause;
  if (mayAsk && (now >= m_fresh || known(identifier).empty())) fetch(now);
  if (now >= m_usable) return std::nullopt;
  return known(identifier);
}

std::vector<JsonWebKey> RemoteKeys::known(const std::string& identifier) const {
  if (identifier.empty()) return m_keys;
  std::vector<JsonWebKey> found;
  std::ranges::copy_if(m_keys, std::back_inserter(found), [&identifier](const JsonWebKey& key) {
    return key.identifier() == identifier;
  });
  return found;
}

void RemoteKeys::fetch(Clock::time_point now) {
  m_asked = now;
  auto answer = ask();
  if (!answer) return;
  m_keys = std::move(answer->keys);
  m_fresh = now + answer->lifetime;
  m_usable = now + keptAtMost;
}

std::optional<RemoteKeys::KeySet> RemoteKeys::ask() {
  std::optional<Response> response;
  net::io_context io;
  const auto exchange = [this](auto& stream) { return get(stream, *m_server); };
  net::co_spawn(io, m_server->connected(exchange),
                [&response](const std::exception_ptr& failure, Response answer) {
                  if (!failure) response = std::move(answer);
                });
  io.run_for(fetchTime);
  if (!response || response->result() != http::status::ok) return std::nullopt;
  auto keys = readKeySet(response->body());
  if (!keys || keys->empty()) return std::nullopt;
  return KeySet{.keys = *std::move(keys), .lifetime = lifetimeOf(*response)};
}

}  // namespace vemo::service
