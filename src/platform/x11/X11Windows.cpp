#include "platform/x11/X11Windows.h"

#include <QSysInfo>

namespace vemo {

namespace {

constexpr qsizetype maximumTextBytes = 4096;
constexpr qsizetype maximumListBytes = 64 * 1024;
constexpr int maximumDepth = 32;

/// Old properties are Latin-1 by definition, and programs put UTF-8 into them all the same.
QString decoded(QByteArrayView bytes) {
  return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

}  // namespace

std::vector<uint32_t> X11Windows::numbers(xcb_window_t window, const QByteArray& property,
                                          xcb_atom_t type) {
  const auto value = m_connection.property(window, m_connection.atom(property),
                                           X11Connection::AfterRead::Keep, maximumListBytes);
  return value && value->type == type ? value->numbers() : std::vector<uint32_t>();
}

xcb_window_t X11Windows::active() {
  const auto named = numbers(m_connection.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
  if (!named.empty()) return named.front();
  return focusedTopLevel();
}

xcb_window_t X11Windows::focusedTopLevel() {
  const auto focus = m_connection.reply<xcb_get_input_focus_reply_t>(
      xcb_get_input_focus(m_connection.xcb()).sequence);
  if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT) return XCB_WINDOW_NONE;
  xcb_window_t window = focus->focus;
  for (int depth = 0; depth < maximumDepth && !windowClass(window); ++depth) {
    const auto tree = m_connection.reply<xcb_query_tree_reply_t>(
        xcb_query_tree(m_connection.xcb(), window).sequence);
    if (!tree || tree->parent == m_connection.root() || tree->parent == XCB_WINDOW_NONE) break;
    window = tree->parent;
  }
  return window;
}

std::vector<xcb_window_t> X11Windows::clients() {
  return numbers(m_connection.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
}

std::optional<X11WindowClass> X11Windows::windowClass(xcb_window_t window) {
  const auto value = m_connection.property(window, XCB_ATOM_WM_CLASS,
                                           X11Connection::AfterRead::Keep, maximumTextBytes);
  if (!value || value->format != 8) return std::nullopt;
  const QList<QByteArray> parts = value->data.split('\0');
  X11WindowClass result{decoded(parts.value(0)), decoded(parts.value(1))};
  if (result.instanceName.isEmpty() && result.className.isEmpty()) return std::nullopt;
  return result;
}

std::optional<QString> X11Windows::text(xcb_window_t window, const QByteArray& property) {
  const auto value = m_connection.property(window, m_connection.atom(property),
                                           X11Connection::AfterRead::Keep, maximumTextBytes);
  if (!value || value->format != 8) return std::nullopt;
  const QString result = decoded(value->data.split('\0').constFirst());
  return result.isEmpty() ? std::nullopt : std::optional(result);
}

std::vector<xcb_atom_t> X11Windows::atoms(xcb_window_t window, const QByteArray& property) {
  return numbers(window, property, XCB_ATOM_ATOM);
}

std::optional<qint64> X11Windows::localProcess(xcb_window_t window) {
  const auto process = numbers(window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
  if (process.empty()) return std::nullopt;
  const auto machine = text(window, "WM_CLIENT_MACHINE");
  if (machine && *machine != QSysInfo::machineHostName()) return std::nullopt;
  return process.front();
}

}  // namespace vemo
