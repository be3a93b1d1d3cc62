// An identity provider's published keys, on loopback; what it answers can change.
#pragma once

#include <boost/asio.hpp>
#include <mutex>
#include <string>
#include <thread>

namespace vemo::service {

class KeySetServer {
 public:
  explicit KeySetServer(std::string keys) : m_keys(std::move(keys)) {
    m_thread = std::jthread([this] { serve(); });
  }
  ~KeySetServer() {
    m_stopping = true;
    boost::asio::ip::tcp::socket waker(m_io);
    boost::system::error_code ignored;
    waker.connect(m_acceptor.local_endpoint(), ignored);
  }
  KeySetServer(const KeySetServer&) = delete;
  KeySetServer& operator=(const KeySetServer&) = delete;

  std::string address() const {
    return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port()) + "/jwks";
  }
  void answerWith(std::string keys, std::string headers = "", std::string status = "200") {
    const std::lock_guard lock(m_mutex);
    m_keys = std::move(keys);
    m_headers = std::move(headers);
    m_status = std::move(status);
  }
  int asked() const { return m_asked; }

 private:
  using Tcp = boost::asio::ip::tcp;

  void serve() {
    while (true) {
      Tcp::socket socket(m_io);
      boost::system::error_code error;
      m_acceptor.accept(socket, error);
      if (m_stopping || error) return;
      std::string input;
      boost::asio::read_until(socket, boost::asio::dynamic_buffer(input), "\r\n\r\n", error);
      ++m_asked;
      boost::asio::write(socket, boost::asio::buffer(answer()), error);
    }
  }
  std::string answer() const {
    const std::lock_guard lock(m_mutex);
    return "HTTP/1.1 " + m_status + " X\r\n" + m_headers +
           "Content-Length: " + std::to_string(m_keys.size()) + "\r\n\r\n" + m_keys;
  }

  mutable std::mutex m_mutex;
  std::string m_keys;
  std::string m_headers;
  std::string m_status = "200";
  std::atomic<int> m_asked = 0;
  std::atomic<bool> m_stopping = false;
  boost::asio::io_context m_io;
  Tcp::acceptor m_acceptor{m_io, Tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
  std::jthread m_thread;
};

}  // namespace vemo::service
