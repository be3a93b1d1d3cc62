#include "platform/gio/GioBus.h"

#include <utility>

#include "platform/gio/GioThread.h"

namespace vemo {

namespace {

std::string addressOf(GBusType type) {
  gchar* const address = g_dbus_address_get_for_bus_sync(type, nullptr, nullptr);
  std::string result = address ? address : "";
  g_free(address);
  return result;
}

const char* orAny(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

}  // namespace

/// What GLib carries until it answers. The bus may be gone by then.
struct GioBus::Request {
  GioThread& thread;
  std::weak_ptr<GioBus*> bus;
  Answer answer = {};

  static Request* begin(GioBus& bus, Answer answer = {}) {
    bus.m_thread.beginRequest();
    return new Request{bus.m_thread, bus.m_self, std::move(answer)};
  }
  static std::unique_ptr<Request> end(gpointer data) {
    std::unique_ptr<Request> request(static_cast<Request*>(data));
    request->thread.endRequest();
    return request;
  }
};

std::string GioBus::sessionAddress() {
  return addressOf(G_BUS_TYPE_SESSION);
}

std::string GioBus::systemAddress() {
  return addressOf(G_BUS_TYPE_SYSTEM);
}

GioBus::GioBus(GioThread& thread, const std::string& address, Handlers handlers)
    : m_thread(thread), m_handlers(std::move(handlers)), m_cancellable(g_cancellable_new()) {
  constexpr auto flags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  g_dbus_connection_new_for_address(
      address.c_str(), flags, nullptr, m_cancellable,
      [](GObject*, GAsyncResult* result, gpointer data) {
        const auto request = Request::end(data);
        GDBusConnection* connection = g_dbus_connection_new_for_address_finish(result, nullptr);
        if (const auto bus = request->bus.lock())
          (*bus)->takeConnection(connection);
        else
          g_clear_object(&connection);
      },
      Request::begin(*this));
}

GioBus::~GioBus() {
  g_cancellable_cancel(m_cancellable);
  g_object_unref(m_cancellable);
  releaseConnection();
}

void GioBus::takeConnection(GDBusConnection* connection) {
  m_connection = connection;
  if (!connection) {
    close();
    return;
  }
  // The handler runs on the thread that made the connection, which is this one.
  m_closedSignal = g_signal_connect_data(
      connection, "closed", G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer self) {
        if (const auto bus = static_cast<std::weak_ptr<GioBus*>*>(self)->lock()) (*bus)->close();
      }),
      new std::weak_ptr<GioBus*>(m_self),
      [](gpointer self, GClosure*) { delete static_cast<std::weak_ptr<GioBus*>*>(self); },
      GConnectFlags{});
  if (g_dbus_connection_is_closed(connection))
    close();
  else if (m_handlers.opened)
    m_handlers.opened();
}

void GioBus::close() {
  // The handler may destroy this object, and itself with it.
  if (const auto closed = std::exchange(m_handlers.closed, nullptr)) closed();
}

void GioBus::releaseConnection() {
  if (!m_connection) return;
  g_signal_handler_disconnect(m_connection, m_closedSignal);
  for (const guint subscription : m_subscriptions)
    g_dbus_connection_signal_unsubscribe(m_connection, subscription);
  g_dbus_connection_close(m_connection, nullptr, nullptr, nullptr);
  g_clear_object(&m_connection);
}

void GioBus::call(const GioTarget& target, const char* method, GVariant* arguments,
                  const char* answerType, std::chrono::milliseconds limit, Answer answer) {
  g_dbus_connection_call(
      m_connection, target.busName.c_str(), target.path.c_str(), target.interface, method,
      arguments, G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE,
      static_cast<int>(limit.count()), m_cancellable,
      [](GObject* connection, GAsyncResult* result, gpointer data) {
        const auto request = Request::end(data);
        GVariant* const body =
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
        if (!request->bus.expired()) request->answer(body);
        if (body) g_variant_unref(body);
      },
      Request::begin(*this, std::move(answer)));
}

void GioBus::subscribe(const GioSignal& signal, SignalHandler handler) {
  m_subscriptions.push_back(g_dbus_connection_signal_subscribe(
      m_connection, orAny(signal.sender), orAny(signal.interface), orAny(signal.member), nullptr,
      orAny(signal.firstArgument), G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const gchar* sender, const gchar* path, const gchar*, const gchar*,
         GVariant* body,
         gpointer data) { (*static_cast<SignalHandler*>(data))(sender, path, body); },
      new SignalHandler(std::move(handler)),
      [](gpointer data) { delete static_cast<SignalHandler*>(data); }));
}

}  // namespace vemo
