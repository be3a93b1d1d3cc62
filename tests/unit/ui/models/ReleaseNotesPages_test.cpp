#include "ui/models/ReleaseNotesPages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QVariantMap>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class ReleaseNotesPagesTest : public testing::Test {
 protected:
  QVariantList rowsOf(int page) const {
    return pages.index(page).data(ReleaseNotesPages::Rows).toList();
  }
  QVariantMap row(int number) const { return rowsOf(0).value(number).toMap(); }
  int countOf(int page) const {
    return pages.index(page).data(ReleaseNotesPages::RowCount).toInt();
  }
  bool hasLinks(int page) const {
    return pages.index(page).data(ReleaseNotesPages::HasLinks).toBool();
  }

  ReleaseNotesPages pages;
};

TEST_F(ReleaseNotesPagesTest, ARowHasItsKindItsMarkupAndItsLinks) {
  pages.setMarkdown(u"# New\n- *this* and [that](https://vemo.example/that)\nThanks"_s);
  ASSERT_EQ(pages.rowCount(), 1);
  ASSERT_EQ(rowsOf(0).size(), 3);
  EXPECT_EQ(row(0)[u"kind"_s], u"heading"_s);
  EXPECT_EQ(row(1)[u"kind"_s], u"bullet"_s);
  EXPECT_EQ(row(2)[u"kind"_s], u"paragraph"_s);
  EXPECT_TRUE(row(1)[u"markup"_s].toString().contains(u"<i>this</i>"_s));
  EXPECT_TRUE(row(0)[u"links"_s].toList().isEmpty());
  const QVariantList links = row(1)[u"links"_s].toList();
  ASSERT_EQ(links.size(), 1);
  EXPECT_EQ(links[0].toMap()[u"words"_s], u"that"_s);
  EXPECT_EQ(links[0].toMap()[u"address"_s], u"https://vemo.example/that"_s);
}

TEST_F(ReleaseNotesPagesTest, FortyRowsAreAPageAndTheNextBeginsAnother) {
  pages.setMarkdown(QString());
  EXPECT_EQ(pages.rowCount(), 0);
  pages.setMarkdown(u"a\n"_s.repeated(40));
  EXPECT_EQ(pages.rowCount(), 1);
  EXPECT_EQ(countOf(0), 40);
  pages.setMarkdown(u"a\n"_s.repeated(40) + u"# b"_s);
  EXPECT_EQ(pages.rowCount(), 2);
  EXPECT_EQ(countOf(1), 1);
  ASSERT_EQ(rowsOf(1).size(), 1);
  EXPECT_EQ(rowsOf(1)[0].toMap()[u"kind"_s], u"heading"_s);
}

TEST_F(ReleaseNotesPagesTest, APageKnowsWhetherItHasLinks) {
  pages.setMarkdown(u"a [b] (c) <d>\n"_s.repeated(40) + u"b\n"_s.repeated(39) +
                    u"[a](https://vemo.example)"_s);
  EXPECT_FALSE(hasLinks(0));
  EXPECT_TRUE(hasLinks(1));
}

TEST_F(ReleaseNotesPagesTest, OnlyOtherNotesAreAChange) {
  int resets = 0;
  QObject::connect(&pages, &QAbstractItemModel::modelReset, [&] { ++resets; });
  pages.setMarkdown(u"a"_s);
  pages.setMarkdown(u"a"_s);
  EXPECT_EQ(resets, 1);
  pages.setMarkdown(u"b"_s);
  EXPECT_EQ(resets, 2);
}

TEST_F(ReleaseNotesPagesTest, APageThatIsNotThereHasNothing) {
  pages.setMarkdown(u"a"_s);
  EXPECT_FALSE(pages.data(pages.index(1), ReleaseNotesPages::Rows).isValid());
  EXPECT_FALSE(pages.data(pages.index(0), Qt::DisplayRole).isValid());
  EXPECT_EQ(pages.rowCount(pages.index(0)), 0);
}

}  // namespace
}  // namespace vemo
