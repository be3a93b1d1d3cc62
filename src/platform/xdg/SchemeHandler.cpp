#include "platform/xdg/SchemeHandler.h"

#undef signals  // gio names a field so
#include <gio/gdesktopappinfo.h>

#include <QStandardPaths>
#include <memory>

#include "platform/xdg/DesktopEntryFile.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString entryName = u"brelmox.Vemo.sign-in.desktop"_s;

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

QByteArray entryFor(const QString& scheme, const QString& program) {
  return u"[Desktop Entry]\n"
         u"Type=Application\n"
         u"Name=Vemo\n"
         u"Comment=Takes you back to Vemo after signing in\n"
         u"Exec=%1 open %u\n"
         u"NoDisplay=true\n"
         u"MimeType=x-scheme-handler/%2;\n"_s.arg(quotedExecArgument(program), scheme)
             .toUtf8();
}

bool isDefaultFor(const QByteArray& mimeType) {
  const std::unique_ptr<GAppInfo, Unref> current(
      g_app_info_get_default_for_type(mimeType.constData(), FALSE));
  return current && entryName == QString::fromUtf8(g_app_info_get_id(current.get()));
}

}  // namespace

bool claimScheme(const QString& scheme, const QString& program) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation);
  if (folder.isEmpty()) return false;
  if (!writeDesktopEntry(folder + u'/' + entryName, entryFor(scheme, program))) return false;

  const QByteArray mimeType = "x-scheme-handler/" + scheme.toUtf8();
  if (isDefaultFor(mimeType)) return true;
  const std::unique_ptr<GDesktopAppInfo, Unref> entry(
      g_desktop_app_info_new(entryName.toUtf8().constData()));
  return entry &&
         g_app_info_set_as_default_for_type(G_APP_INFO(entry.get()), mimeType.constData(), nullptr);
}

}  // namespace vemo
