#include "ui/models/EntrySheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

class EntrySheetTest : public testing::Test {
 protected:
  void type(const QString& spoken, const QString& written) {
    sheet.setSpoken(spoken);
    sheet.setWritten(written);
  }

  std::vector<PhraseRow> saved;
  EntrySheet sheet{[this](const PhraseRow& row) { saved.push_back(row); }};
};

TEST_F(EntrySheetTest, WhatIsTypedIsHandedOverAndTheSheetCloses) {
  sheet.open();
  EXPECT_TRUE(sheet.isOpen());
  EXPECT_FALSE(sheet.isEditing());
  type(u"btw"_s, u"by the way"_s);
  sheet.save();
  EXPECT_THAT(saved, ElementsAre(PhraseRow{{}, u"btw"_s, u"by the way"_s}));
  EXPECT_FALSE(sheet.isOpen());
}

TEST_F(EntrySheetTest, ItCanBeSavedOnceNeitherTextIsBlank) {
  sheet.open();
  EXPECT_FALSE(sheet.canSave());
  type(u"btw"_s, u" \n\t"_s);
  EXPECT_FALSE(sheet.canSave());
  sheet.save();
  EXPECT_THAT(saved, IsEmpty());
  EXPECT_TRUE(sheet.isOpen());
  type(u" "_s, u"by the way"_s);
  EXPECT_FALSE(sheet.canSave());
  type(u"b"_s, u"w"_s);
  EXPECT_TRUE(sheet.canSave());
}

TEST_F(EntrySheetTest, DismissingItDropsWhatWasTyped) {
  sheet.open();
  type(u"btw"_s, u"by the way"_s);
  sheet.dismiss();
  EXPECT_FALSE(sheet.isOpen());
  EXPECT_THAT(saved, IsEmpty());
  sheet.open();
  EXPECT_EQ(sheet.spoken(), QString());
  EXPECT_EQ(sheet.written(), QString());
}

TEST_F(EntrySheetTest, AClosedSheetSavesNothing) {
  type(u"btw"_s, u"by the way"_s);
  sheet.save();
  EXPECT_THAT(saved, IsEmpty());
}

TEST_F(EntrySheetTest, OpenedForARowItBeginsWithItsTexts) {
  sheet.openFor({u"7"_s, u"btw"_s, u"by the way"_s});
  EXPECT_TRUE(sheet.isEditing());
  EXPECT_EQ(sheet.spoken(), u"btw"_s);
  sheet.setWritten(u"By the way"_s);
  sheet.save();
  EXPECT_THAT(saved, ElementsAre(PhraseRow{u"7"_s, u"btw"_s, u"By the way"_s}));
  sheet.open();
  EXPECT_FALSE(sheet.isEditing());
}

TEST_F(EntrySheetTest, ATextThatStaysTheSameIsNoChange) {
  sheet.open();
  int changes = 0;
  QObject::connect(&sheet, &EntrySheet::changed, [&changes] { ++changes; });
  sheet.setSpoken(u"a"_s);
  sheet.setSpoken(u"a"_s);
  EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace vemo
