#include "platform/secretservice/SecretServiceBackend.h"

#include <libsecret/secret.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vemo {

namespace {

struct Unreference {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unreference>;

using Attributes = std::unique_ptr<GHashTable, decltype(&g_hash_table_unref)>;
using SharedCancellable = std::shared_ptr<GCancellable>;

/// A GError slot that frees itself.
class Error {
 public:
  Error() = default;
  ~Error() { g_clear_error(&m_error); }
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;

  GError** slot() { return &m_error; }

  SecretError secretError() const {
    const auto isDBus = [this](int code) { return g_error_matches(m_error, G_DBUS_ERROR, code); };
    const bool isNobodyThere = isDBus(G_DBUS_ERROR_SERVICE_UNKNOWN) ||
                               isDBus(G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
                               isDBus(G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND);
    return isNobodyThere ? SecretError::Unavailable : SecretError::Failed;
  }

 private:
  GError* m_error = nullptr;
};

const SecretSchema& schema() {
  static const SecretSchema instance = [] {
    SecretSchema schema{};
    schema.name = "brelmox.Vemo";
    schema.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
    schema.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
    schema.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
    return schema;
  }();
  return instance;
}

Attributes attributesOf(const QByteArray& service, const QByteArray& account) {
  return {secret_attributes_build(&schema(), "service", service.constData(), "account",
                                  account.constData(), nullptr),
          &g_hash_table_unref};
}

/// A connection to the keyring, and what can be asked of it. Lives on one thread, for one call: the
/// library's shared instance would outlive a keyring that restarts.
class Keyring {
 public:
  static std::expected<Keyring, SecretError> open(SharedCancellable cancellable) {
    const Reference<GDBusConnection> bus(
        g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable.get(), nullptr));
    if (!bus) return std::unexpected(SecretError::Unavailable);
    // By default GLib ends the process when the session bus goes away.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    Error error;
    Reference<SecretService> service(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr,
                                                              SECRET_SERVICE_OPEN_SESSION,
                                                              cancellable.get(), error.slot()));
    if (!service) return std::unexpected(error.secretError());
    return Keyring(std::move(service), std::move(cancellable));
  }

  std::expected<QByteArray, SecretError> find(GHashTable* attributes) {
    const auto items = search(attributes, SECRET_SEARCH_LOAD_SECRETS);
    if (!items) return std::unexpected(items.error());
    if (items->empty()) return std::unexpected(SecretError::NotFound);
    // Items of other programs can carry the same attributes beside more: the newest one counts.
    const auto newest = std::ranges::max_element(
        *items, {}, [](const auto& item) { return secret_item_get_modified(item.get()); });
    SecretValue* value = secret_item_get_secret(newest->get());
    if (!value) return std::unexpected(SecretError::Failed);
    gsize length = 0;
    const gchar* bytes = secret_value_get(value, &length);
    QByteArray secret(bytes, static_cast<qsizetype>(length));
    secret_value_unref(value);
    return secret;
  }

  std::expected<void, SecretError> add(GHashTable* attributes, const QByteArray& secret) {
    Error error;
    const Reference<SecretCollection> collection(secret_collection_for_alias_sync(
        m_service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, m_cancellable.get(),
        error.slot()));
    if (!collection || secret_collection_get_locked(collection.get()))
      return std::unexpected(error.secretError());
    SecretValue* value = secret_value_new(secret.constData(), secret.size(), "text/plain");
    const Reference<SecretItem> item(
        secret_item_create_sync(collection.get(), &schema(), attributes, "Vemo", value,
                                SECRET_ITEM_CREATE_REPLACE, m_cancellable.get(), error.slot()));
    secret_value_unref(value);
    if (!item) return std::unexpected(error.secretError());
    return {};
  }

  std::expected<void, SecretError> remove(GHashTable* attributes) {
    const auto items = search(attributes, SECRET_SEARCH_NONE);
    if (!items) return std::unexpected(items.error());
    if (items->empty()) return std::unexpected(SecretError::NotFound);
    std::expected<void, SecretError> result;
    for (const auto& item : *items) {
      if (const auto removed = removeItem(item.get()); !removed) result = removed;
    }
    return result;
  }

 private:
  using Items = std::vector<Reference<SecretItem>>;

  Keyring(Reference<SecretService> service, SharedCancellable cancellable)
      : m_service(std::move(service)), m_cancellable(std::move(cancellable)) {}

  std::expected<Items, SecretError> search(GHashTable* attributes, SecretSearchFlags what) {
    Error error;
    const auto flags = static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | what);
    GError** slot = error.slot();
    GList* found = secret_service_search_sync(m_service.get(), &schema(), attributes, flags,
                                              m_cancellable.get(), slot);
    Items items;
    for (GList* entry = found; entry; entry = entry->next)
      items.emplace_back(static_cast<SecretItem*>(entry->data));
    g_list_free(found);
    if (*slot) return std::unexpected(error.secretError());
    return items;
  }

  std::expected<void, SecretError> removeItem(SecretItem* item) {
    if (secret_item_get_locked(item)) return std::unexpected(SecretError::Failed);
    Error error;
    if (!secret_item_delete_sync(item, m_cancellable.get(), error.slot()))
      return std::unexpected(error.secretError());
    return {};
  }

  Reference<SecretService> m_service;
  SharedCancellable m_cancellable;
};

/// An answer that a thread gives and another waits for, though not for long.
template <typename T>
struct Call {
  using Answer = std::expected<T, SecretError>;

  std::mutex mutex;
  std::condition_variable_any answered;
  std::optional<Answer> answer;

  void complete(Answer value) {
    const std::lock_guard lock(mutex);
    answer = std::move(value);
    answered.notify_all();
  }

  std::optional<Answer> wait(std::chrono::milliseconds limit, const std::stop_token& giveUp) {
    std::unique_lock lock(mutex);
    answered.wait_for(lock, giveUp, limit, [this] { return answer.has_value(); });
    return answer;
  }
};

constexpr std::chrono::seconds restAfterSilence{1};

}  // namespace

SecretServiceBackend::SecretServiceBackend(Milliseconds timeLimit, std::stop_token giveUp)
    : m_timeLimit(timeLimit), m_giveUp(std::move(giveUp)) {}

/// Opens the keyring and uses it, on a thread that isn't waited for longer than the limit.
template <typename T, typename Use>
std::expected<T, SecretError> SecretServiceBackend::call(Use use) {
  if (std::chrono::steady_clock::now() < m_silentUntil.load())
    return std::unexpected(SecretError::Failed);
  const SharedCancellable cancellable(g_cancellable_new(), Unreference{});
  const auto call = std::make_shared<Call<T>>();
  try {
    std::thread([call, cancellable, use = std::move(use)] {
      auto keyring = Keyring::open(cancellable);
      call->complete(keyring ? use(*keyring) : std::unexpected(keyring.error()));
    }).detach();
  } catch (const std::system_error&) {
    return std::unexpected(SecretError::Failed);
  }
  if (auto answer = call->wait(m_timeLimit, m_giveUp)) return *std::move(answer);
  g_cancellable_cancel(cancellable.get());
  m_silentUntil = std::chrono::steady_clock::now() + restAfterSilence;
  return std::unexpected(SecretError::Failed);
}

std::expected<QByteArray, SecretError> SecretServiceBackend::find(const QString& service,
                                                                  const QString& account) {
  return call<QByteArray>(
      [service = service.toUtf8(), account = account.toUtf8()](Keyring& keyring) {
        return keyring.find(attributesOf(service, account).get());
      });
}

std::expected<void, SecretError> SecretServiceBackend::add(const QString& service,
                                                           const QString& account,
                                                           const QByteArray& secret) {
  return call<void>(
      [service = service.toUtf8(), account = account.toUtf8(), secret](Keyring& keyring) {
        return keyring.add(attributesOf(service, account).get(), secret);
      });
}

std::expected<void, SecretError> SecretServiceBackend::remove(const QString& service,
                                                              const QString& account) {
  return call<void>([service = service.toUtf8(), account = account.toUtf8()](Keyring& keyring) {
    return keyring.remove(attributesOf(service, account).get());
  });
}

}  // namespace vemo
