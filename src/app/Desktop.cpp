#include "app/Desktop.h"

#include <QCoreApplication>

namespace vemo {

QString resourceFolder(const QString& name) {
  return QCoreApplication::applicationDirPath() + u"/../share/vemo/"_s + name;
}

QuickScenes::Places windowPlaces() {
  return {
      .sharedObject = QCoreApplication::applicationDirPath() + u"/../lib/vemo/vemo-windows.so"_s,
      .symbolsFolder = resourceFolder(u"icons/symbols"_s)};
}

Desktop::Desktop(std::unique_ptr<X11Clipboard> x11Clipboard,
                 std::unique_ptr<X11KeyPoster> x11KeyPoster,
                 std::unique_ptr<X11FocusedApplication> x11FocusedApplication,
                 std::unique_ptr<X11Screens> x11Screens)
    : clipboard(std::move(x11Clipboard)),
      keyPoster(std::move(x11KeyPoster)),
      focusedApplication(std::move(x11FocusedApplication)),
      screens(std::move(x11Screens)) {}

std::unique_ptr<Desktop> Desktop::create(QtMainThread& mainThread) {
  auto clipboard = X11Clipboard::create(mainThread);
  auto keyPoster = X11KeyPoster::create();
  auto focusedApplication = X11FocusedApplication::create();
  auto screens = X11Screens::create();
  if (!clipboard || !keyPoster || !focusedApplication || !screens) return nullptr;
  return std::make_unique<Desktop>(std::move(clipboard), std::move(keyPoster),
                                   std::move(focusedApplication), std::move(screens));
}

}  // namespace vemo
