#include "ui/models/LanguageRows.h"

#include <QCoreApplication>

#include "storage/Config.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QString languageMenuTitle(const Settings& settings) {
  return QCoreApplication::translate("LanguageRows", "Language: %1")
      .arg(config::currentLanguage(settings).name);
}

std::vector<LanguageRow> languageRows(const Settings& settings) {
  const QString code = settings.get(keys::dictationLanguage, u"en"_s);
  std::vector<LanguageRow> rows;
  for (const auto& language : config::languages()) {
    const bool isCurrent = language.code == code;
    rows.push_back(
        {language.code,
         u"%1%2 (%3)"_s.arg(isCurrent ? u"✓ "_s : u"   "_s, language.name, language.nativeName),
         isCurrent});
  }
  return rows;
}

}  // namespace vemo
