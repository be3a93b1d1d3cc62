#include "shaping/SpokenFileName.h"

#include <QStringList>
#include <algorithm>
#include <iterator>

#include "base/Text.h"
#include "shaping/SpokenExtensions.h"
#include "shaping/SpokenFileStems.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QString normalizeExtension(const QString& spoken) {
  const QString form = trimmed(lowerCased(spoken));
  const auto* row = std::ranges::find(spokenExtensions, form, &SpokenExtension::spoken);
  return row == std::end(spokenExtensions) ? form : row->extension.toString();
}

QString spokenToFileName(const QString& spoken) {
  const QString name = trimmed(spoken);
  const auto* row = std::ranges::find(spokenFileStems, lowerCased(name), &SpokenFileStem::spoken);
  if (row != std::end(spokenFileStems)) return row->stem.toString();
  QString stem;
  for (const QString& piece : name.split(u' ')) stem += capitalized(piece);
  return stem;
}

QString capitalized(const QString& text) {
  const QString first = firstCharacters(text, 1);
  return first.toUpper() + text.sliced(first.size());
}

QString withSpokenExtensions(QStringView pattern) {
  QStringList forms;
  for (const auto& row : spokenExtensions) forms.append(row.spoken.toString());
  return pattern.toString().replace(u"EXT"_s, forms.join(u'|'));
}

}  // namespace vemo
