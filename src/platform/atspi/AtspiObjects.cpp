#include "platform/atspi/AtspiObjects.h"

#include <atspi/atspi-constants.h>
#include <gio/gio.h>

#include "platform/gio/GioBus.h"

namespace vemo {

namespace {

GioTarget accessible(const AtspiObject& object) {
  return {object.program, object.path, ATSPI_DBUS_INTERFACE_ACCESSIBLE};
}

}  // namespace

AtspiObject AtspiObjects::root() {
  return {ATSPI_DBUS_NAME_REGISTRY, ATSPI_DBUS_PATH_ROOT};
}

void AtspiObjects::askRole(const AtspiObject& object,
                           std::function<void(std::optional<unsigned>)> answer) {
  m_bus.call(accessible(object), "GetRole", nullptr, "(u)", m_limit,
             [answer = std::move(answer)](GVariant* body) {
               if (!body) return answer(std::nullopt);
               guint32 role = 0;
               g_variant_get(body, "(u)", &role);
               answer(role);
             });
}

void AtspiObjects::askState(const AtspiObject& object,
                            std::function<void(std::optional<AtspiState>)> answer) {
  m_bus.call(accessible(object), "GetState", nullptr, "(au)", m_limit,
             [answer = std::move(answer)](GVariant* body) {
               if (!body) return answer(std::nullopt);
               GVariant* const words = g_variant_get_child_value(body, 0);
               guint32 bits = 0;
               if (g_variant_n_children(words) > 0) g_variant_get_child(words, 0, "u", &bits);
               g_variant_unref(words);
               answer(AtspiState{.isFocused = (bits & (1U << ATSPI_STATE_FOCUSED)) != 0,
                                 .isActive = (bits & (1U << ATSPI_STATE_ACTIVE)) != 0});
             });
}

void AtspiObjects::askParent(const AtspiObject& object,
                             std::function<void(std::optional<AtspiObject>)> answer) {
  m_bus.call({object.program, object.path, "org.freedesktop.DBus.Properties"}, "Get",
             g_variant_new("(ss)", ATSPI_DBUS_INTERFACE_ACCESSIBLE, "Parent"), "(v)", m_limit,
             [answer = std::move(answer)](GVariant* body) {
               if (!body) return answer(std::nullopt);
               GVariant* parent = nullptr;
               g_variant_get(body, "(v)", &parent);
               std::optional<AtspiObject> result;
               if (g_variant_is_of_type(parent, G_VARIANT_TYPE("(so)"))) {
                 const char* name = nullptr;
                 const char* path = nullptr;
                 g_variant_get(parent, "(&s&o)", &name, &path);
                 if (g_dbus_is_name(name)) result = AtspiObject{name, path};
               }
               g_variant_unref(parent);
               answer(std::move(result));
             });
}

void AtspiObjects::askChildren(const AtspiObject& object,
                               std::function<void(std::vector<AtspiObject>)> answer) {
  m_bus.call(accessible(object), "GetChildren", nullptr, "(a(so))", m_limit,
             [answer = std::move(answer)](GVariant* body) {
               std::vector<AtspiObject> children;
               if (body) {
                 GVariantIter* iterator = nullptr;
                 const char* program = nullptr;
                 const char* path = nullptr;
                 g_variant_get(body, "(a(so))", &iterator);
                 while (g_variant_iter_next(iterator, "(&s&o)", &program, &path)) {
                   if (g_dbus_is_name(program)) children.push_back({program, path});
                 }
                 g_variant_iter_free(iterator);
               }
               answer(std::move(children));
             });
}

}  // namespace vemo
