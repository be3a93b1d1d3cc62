#include "shaping/CueIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QString>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

class CueIndexTest : public testing::Test {
 protected:
  std::vector<qsizetype> starts(const QString& text, qsizetype from, qsizetype to) const {
    std::vector<qsizetype> found;
    for (const auto& place : index.placesIn(text, from, to)) found.push_back(place.start);
    return found;
  }
  std::vector<qsizetype> starts(const QString& text) const { return starts(text, 0, text.size()); }

  CueIndex index;
};

TEST_F(CueIndexTest, ACueIsFoundWhereItBeginsAWord) {
  index.add(u"new york");
  EXPECT_THAT(starts(u"in New  \t York and NEW YORKER"_s), ElementsAre(3, 19));
  EXPECT_THAT(starts(u"anew york new-york"_s), IsEmpty());
}

TEST_F(CueIndexTest, PlacesAreThoseOfTheTextAsItStands) {
  index.add(u"b");
  EXPECT_THAT(starts(u"\U0001F600  b \uFB01 b"_s), ElementsAre(4, 8));
}

TEST_F(CueIndexTest, CaseIsFoldedInFull) {
  index.add(u"Straße");
  index.add(u"\uFB01ne");
  EXPECT_THAT(starts(u"STRASSE fine FINE \u1E9E"_s), ElementsAre(0, 8, 13));
}

TEST_F(CueIndexTest, EveryCharacterIsFoundByItsFoldedForm) {
  for (char32_t unit = 1; unit < 0x20000; ++unit) {
    const QString character = QString::fromUcs4(&unit, 1);
    const QString folded = character.toCaseFolded();
    if (folded != character) {
      EXPECT_EQ(index.add(character), index.add(folded)) << std::uint32_t{unit};
    }
  }
}

TEST_F(CueIndexTest, PhrasesThatCantBeToldApartShareACue) {
  EXPECT_EQ(index.add(u"new york"), index.add(u"NEW\n York"));
  EXPECT_NE(index.add(u"new"), index.add(u"york"));
  const QString long1 = QString(24, u'a');
  EXPECT_EQ(index.add(long1), index.add(QString(long1 + u'b')));
  EXPECT_NE(index.add(long1), index.add(QString(23, u'a')));
  EXPECT_EQ(index.cueCount(), 5u);
}

TEST_F(CueIndexTest, APlaceIsLookedForWithinItsBoundsAndReadBeyondThem) {
  index.add(u"one two");
  const QString text = u"one two one two one two"_s;
  EXPECT_THAT(starts(text, 0, 7), ElementsAre(0));
  EXPECT_THAT(starts(text, 0, 8), ElementsAre(0, 8));
  EXPECT_THAT(starts(text, 8, 8), ElementsAre(8));
  EXPECT_THAT(starts(text, 9, 15), IsEmpty());
  EXPECT_THAT(starts(text, 16, 100), ElementsAre(16));
  EXPECT_THAT(starts(text, 23, 23), IsEmpty());
}

TEST_F(CueIndexTest, ReachGoesBackOverTheLongestCue) {
  EXPECT_EQ(CueIndex::reachBefore(u"short", 5), 0);
  EXPECT_EQ(CueIndex::reachBefore(QString(100, u'a'), 60), 36);
  // A run of white space counts as one unit, as it does in a cue.
  EXPECT_EQ(CueIndex::reachBefore(QString(30, u'a') + QString(50, u' ') + u'b', 81), 8);
}

TEST_F(CueIndexTest, NothingIsFoundInNothing) {
  EXPECT_THAT(starts(u"text"_s), IsEmpty());
  index.add(u"a");
  EXPECT_THAT(starts(u""_s), IsEmpty());
}

TEST_F(CueIndexTest, ThousandsOfCuesKeepTheirNumbers) {
  std::vector<CueIndex::Cue> cues;
  for (int i = 0; i < 5000; ++i) cues.push_back(index.add(u"word%1 tail"_s.arg(i)));
  for (int i = 0; i < 5000; i += 97) {
    const QString text = u"so Word%1  tail"_s.arg(i);
    EXPECT_THAT(index.placesIn(text, 0, text.size()),
                ElementsAre(CueIndex::Place{3, cues[static_cast<std::size_t>(i)]}));
  }
}

}  // namespace
}  // namespace vemo
