#include "platform/x11/X11InputSources.h"

#include "platform/x11/X11Connection.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QStringList readX11InputSources(const QByteArray& displayName) {
  const auto connection = X11Connection::create(displayName);
  if (!connection) return {};
  constexpr qsizetype longest = 4096;
  const auto property =
      connection->property(connection->root(), connection->atom("_XKB_RULES_NAMES"_ba),
                           X11Connection::AfterRead::Keep, longest);
  if (!property) return {};

  // Rules, model, layouts, variants and options, each ended by a NUL.
  const QList<QByteArray> names = property->data.split('\0');
  constexpr qsizetype layoutField = 2;
  constexpr qsizetype variantField = 3;
  if (names.size() <= variantField) return {};
  const QStringList layouts = QString::fromLatin1(names[layoutField]).split(u',');
  const QStringList variants = QString::fromLatin1(names[variantField]).split(u',');
  QStringList sources;
  for (qsizetype index = 0; index < layouts.size(); ++index) {
    const QString variant = variants.value(index);
    if (layouts[index].isEmpty()) continue;
    sources.append(variant.isEmpty() ? layouts[index] : u"%1(%2)"_s.arg(layouts[index], variant));
  }
  return sources;
}

}  // namespace vemo
