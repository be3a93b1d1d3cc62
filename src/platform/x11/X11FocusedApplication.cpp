#include "platform/x11/X11FocusedApplication.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

std::unique_ptr<X11FocusedApplication> X11FocusedApplication::create(
    const QByteArray& displayName, QStringList desktopEntryFolders) {
  auto connection = X11Connection::create(displayName);
  if (!connection) return nullptr;
  return std::unique_ptr<X11FocusedApplication>(
      new X11FocusedApplication(std::move(connection), std::move(desktopEntryFolders)));
}

X11FocusedApplication::X11FocusedApplication(std::unique_ptr<X11Connection> connection,
                                             QStringList folders)
    : m_connection(std::move(connection)),
      m_windows(*m_connection),
      m_entries(std::move(folders)) {}

std::optional<RunningApplication> X11FocusedApplication::frontmost() const {
  const xcb_window_t active = m_windows.active();
  if (active == XCB_WINDOW_NONE) return std::nullopt;
  auto application = applicationOf(active);
  if (application) application->isActive = true;
  return application;
}

std::vector<RunningApplication> X11FocusedApplication::running() const {
  const xcb_window_t active = m_windows.active();
  std::vector<RunningApplication> applications;
  for (const xcb_window_t window : m_windows.clients()) {
    auto application = applicationOf(window);
    if (!application) continue;
    application->isActive = window == active;
    const auto known = std::ranges::find_if(applications, [&](const RunningApplication& other) {
      return other.identifier == application->identifier && other.isSelf == application->isSelf;
    });
    if (known == applications.end()) {
      applications.push_back(std::move(*application));
    } else {
      known->isActive |= application->isActive;
      known->isRegular |= application->isRegular;
    }
  }
  return applications;
}

std::optional<RunningApplication> X11FocusedApplication::applicationOf(xcb_window_t window) const {
  const auto windowClass = m_windows.windowClass(window);
  const auto process = m_windows.localProcess(window);
  const auto entry = entryOf(window, windowClass);
  if (!windowClass && !process && !entry) return std::nullopt;

  RunningApplication application;
  if (entry) {
    application.identifier = entry->identifier;
    if (!entry->name.isEmpty()) application.name = entry->name;
  } else if (windowClass) {
    application.identifier =
        windowClass->className.isEmpty() ? windowClass->instanceName : windowClass->className;
  }
  if (!application.name && windowClass) {
    application.name =
        windowClass->className.isEmpty() ? windowClass->instanceName : windowClass->className;
  }
  application.isRegular = isRegular(window);
  application.isSelf = process == QCoreApplication::applicationPid();
  return application;
}

std::optional<DesktopEntry> X11FocusedApplication::entryOf(
    xcb_window_t window, const std::optional<X11WindowClass>& windowClass) const {
  for (const char* hint : {"_KDE_NET_WM_DESKTOP_FILE", "_GTK_APPLICATION_ID"}) {
    const auto identifier = m_windows.text(window, hint);
    if (!identifier) continue;
    if (auto entry = m_entries.find(*identifier)) return entry;
  }
  if (!windowClass) return std::nullopt;
  return m_entries.findForWindow(windowClass->className, windowClass->instanceName);
}

bool X11FocusedApplication::isRegular(xcb_window_t window) const {
  const auto types = m_windows.atoms(window, "_NET_WM_WINDOW_TYPE");
  if (types.empty()) return true;
  // The first type that is known here decides; programs put special ones before the common ones.
  static constexpr std::array<std::pair<const char*, bool>, 14> knownTypes{{
      {"_NET_WM_WINDOW_TYPE_NORMAL", true},
      {"_NET_WM_WINDOW_TYPE_DIALOG", true},
      {"_NET_WM_WINDOW_TYPE_UTILITY", true},
      {"_NET_WM_WINDOW_TYPE_DESKTOP", false},
      {"_NET_WM_WINDOW_TYPE_DOCK", false},
      {"_NET_WM_WINDOW_TYPE_TOOLBAR", false},
      {"_NET_WM_WINDOW_TYPE_MENU", false},
      {"_NET_WM_WINDOW_TYPE_SPLASH", false},
      {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", false},
      {"_NET_WM_WINDOW_TYPE_POPUP_MENU", false},
      {"_NET_WM_WINDOW_TYPE_TOOLTIP", false},
      {"_NET_WM_WINDOW_TYPE_NOTIFICATION", false},
      {"_NET_WM_WINDOW_TYPE_COMBO", false},
      {"_NET_WM_WINDOW_TYPE_DND", false},
  }};
  for (const xcb_atom_t type : types) {
    const auto known = std::ranges::find_if(knownTypes, [&](const auto& candidate) {
      return m_connection->atom(candidate.first) == type;
    });
    if (known != knownTypes.end()) return known->second;
  }
  return true;
}

}  // namespace vemo
