#include "ui/models/LanguageRows.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fakes/FakeClock.h"
#include "fakes/TestStorage.h"
#include "storage/Config.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

class LanguageRowsTest : public testing::Test {
 protected:
  QString text(const QString& code) const {
    for (const LanguageRow& row : languageRows(storage.settings)) {
      if (row.code == code) return row.text;
    }
    return {};
  }

  auto tickedCount() const {
    return std::ranges::count_if(languageRows(storage.settings), &LanguageRow::isCurrent);
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
};

TEST_F(LanguageRowsTest, AllLanguagesAreListedInTheOrderOfTheTable) {
  const auto rows = languageRows(storage.settings);
  ASSERT_EQ(rows.size(), 25u);
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(rows[i].code, config::languages()[i].code);
}

TEST_F(LanguageRowsTest, EnglishIsTickedWhereNothingHasBeenChosen) {
  EXPECT_EQ(text(u"en"_s), u"✓ English (English (India / Global))"_s);
  EXPECT_EQ(text(u"hi"_s), u"   Hindi (हिन्दी)"_s);
  EXPECT_EQ(tickedCount(), 1);
  EXPECT_EQ(languageMenuTitle(storage.settings), u"Language: English"_s);
}

TEST_F(LanguageRowsTest, TheChosenLanguageIsTicked) {
  storage.settings.set(keys::dictationLanguage, u"hi"_s);
  EXPECT_EQ(text(u"hi"_s), u"✓ Hindi (हिन्दी)"_s);
  EXPECT_EQ(tickedCount(), 1);
  EXPECT_EQ(languageMenuTitle(storage.settings), u"Language: Hindi"_s);
}

TEST_F(LanguageRowsTest, AnUnknownLanguageTicksNoneAndShowsTheDefaultsName) {
  storage.settings.set(keys::dictationLanguage, u"xx"_s);
  EXPECT_EQ(tickedCount(), 0);
  EXPECT_EQ(languageMenuTitle(storage.settings), u"Language: English"_s);
}

}  // namespace
}  // namespace vemo
