// The languages of dictation as menus list them. Main thread, like the settings.
#pragma once

#include <QString>
#include <vector>

namespace vemo {

class Settings;

struct LanguageRow {
  QString code;
  QString text;  ///< with a check mark, or blanks of its width
  bool isCurrent = false;
};

/// "Language: " and the name of the language in force.
QString languageMenuTitle(const Settings& settings);

/// One row a language, in the table's order; none is ticked for a code that the table doesn't have.
std::vector<LanguageRow> languageRows(const Settings& settings);

}  // namespace vemo
