// A server for one connection after the other that keeps what it was sent and answers with the
// bytes that the test wants, plain or over TLS. Blocking, on a thread of its own.
#pragma once

#include <atomic>
#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace vemo::service {

class LocalServer {
 public:
  enum class Behaviour {
    Answer,        ///< reads the whole request, then answers
    AnswerAtOnce,  ///< answers and closes without reading
    Silence,       ///< reads the whole request and says nothing
    CloseAtOnce,
  };
  struct Certificate {
    std::string chainFile;
    std::string keyFile;
  };

  explicit LocalServer(std::string answer, Behaviour behaviour = Behaviour::Answer,
                       std::optional<Certificate> certificate = std::nullopt)
      : m_answer(std::move(answer)), m_behaviour(behaviour) {
    if (certificate) {
      m_tls.emplace(boost::asio::ssl::context::tls_server);
      m_tls->use_certificate_chain_file(certificate->chainFile);
      m_tls->use_private_key_file(certificate->keyFile, boost::asio::ssl::context::pem);
    }
    m_thread = std::jthread([this] { serve(); });
  }
  ~LocalServer() {
    m_stopping = true;
    // A connection of its own wakes the accept.
    boost::asio::ip::tcp::socket waker(m_io);
    boost::system::error_code ignored;
    waker.connect(m_acceptor.local_endpoint(), ignored);
  }
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  std::string port() const { return std::to_string(m_acceptor.local_endpoint().port()); }
  /// From the next request on.
  void answerWith(std::string answer) {
    const std::lock_guard lock(m_mutex);
    m_answer = std::move(answer);
  }
  /// How many requests have been read.
  int requestCount() const { return m_requestCount; }
  std::string received() const {
    const std::lock_guard lock(m_mutex);
    return m_received;
  }

  static std::string json(int status, const std::string& body) {
    return "HTTP/1.1 " + std::to_string(status) + " X\r\nContent-Type: application/json\r\n" +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  }

 private:
  using Tcp = boost::asio::ip::tcp;

  void serve() {
    while (true) {
      Tcp::socket socket(m_io);
      boost::system::error_code error;
      m_acceptor.accept(socket, error);
      if (m_stopping || error) return;
      if (m_behaviour == Behaviour::CloseAtOnce) continue;
      if (!m_tls) {
        exchange(socket);
        continue;
      }
      boost::asio::ssl::stream<Tcp::socket> stream(std::move(socket), *m_tls);
      stream.handshake(boost::asio::ssl::stream_base::server, error);
      if (!error) exchange(stream);
    }
  }

  template <typename Stream>
  void exchange(Stream& stream) {
    boost::system::error_code error;
    if (m_behaviour == Behaviour::AnswerAtOnce) {
      boost::asio::write(stream, boost::asio::buffer(answer()), error);
      return;
    }
    std::string input;
    const auto head =
        boost::asio::read_until(stream, boost::asio::dynamic_buffer(input), "\r\n\r\n", error);
    const auto field = input.find("Content-Length: ");
    const auto length = field == std::string::npos ? 0 : std::stoul(input.substr(field + 16));
    if (input.size() < head + length)
      boost::asio::read(stream, boost::asio::dynamic_buffer(input),
                        boost::asio::transfer_exactly(head + length - input.size()), error);
    {
      const std::lock_guard lock(m_mutex);
      m_received = input;
    }
    ++m_requestCount;
    if (m_behaviour != Behaviour::Silence)
      boost::asio::write(stream, boost::asio::buffer(answer()), error);
    // Whatever the client does next, the connection stays until it has ended it.
    std::string rest;
    boost::asio::read(stream, boost::asio::dynamic_buffer(rest), error);
  }

  std::string answer() const {
    const std::lock_guard lock(m_mutex);
    return m_answer;
  }

  std::string m_answer;
  const Behaviour m_behaviour;
  boost::asio::io_context m_io;
  Tcp::acceptor m_acceptor{m_io, Tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  std::optional<boost::asio::ssl::context> m_tls;
  mutable std::mutex m_mutex;
  std::string m_received;
  std::atomic<int> m_requestCount = 0;
  std::atomic<bool> m_stopping = false;
  std::jthread m_thread;
};

}  // namespace vemo::service
