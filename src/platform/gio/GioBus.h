// A connection of this program's own to a message bus, on which nothing ever waits.
//
// Made, used and destroyed on the GioThread, and every callback comes there; none comes after the
// destruction, which may happen inside a callback. `opened` comes once or never, `closed` once at
// most: when the connection couldn't be made, or has been lost. Owns no bus name.
#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vemo {

class GioThread;

/// Where a method is called: a bus name, an object on it, an interface.
struct GioTarget {
  std::string busName;
  std::string path;
  const char* interface = "";
};

/// The signals that are asked for; an empty string stands for any.
struct GioSignal {
  std::string sender;
  std::string interface;
  std::string member;
  std::string firstArgument;
};

class GioBus {
 public:
  /// The body of the answer, which lives as long as the callback; null when there was none.
  using Answer = std::function<void(GVariant* body)>;
  using SignalHandler = std::function<void(const char* sender, const char* path, GVariant* body)>;

  struct Handlers {
    std::function<void()> opened;
    std::function<void()> closed;
  };

  GioBus(GioThread& thread, const std::string& address, Handlers handlers);
  ~GioBus();
  GioBus(const GioBus&) = delete;
  GioBus& operator=(const GioBus&) = delete;

  /// The addresses that programs of this session and of this machine use; empty when unknown.
  static std::string sessionAddress();
  static std::string systemAddress();

  /// Calls a method once `opened` has come. `arguments` is null for none, otherwise floating; an
  /// answer of another type than `answerType` counts as none.
  void call(const GioTarget& target, const char* method, GVariant* arguments,
            const char* answerType, std::chrono::milliseconds limit, Answer answer);

  /// Hears of signals from now on. Once `opened` has come.
  void subscribe(const GioSignal& signal, SignalHandler handler);

 private:
  struct Request;

  void takeConnection(GDBusConnection* connection);
  void close();
  void releaseConnection();

  GioThread& m_thread;
  Handlers m_handlers;
  GCancellable* const m_cancellable;
  GDBusConnection* m_connection = nullptr;
  gulong m_closedSignal = 0;
  std::vector<guint> m_subscriptions;
  const std::shared_ptr<GioBus*> m_self = std::make_shared<GioBus*>(this);
};

}  // namespace vemo
