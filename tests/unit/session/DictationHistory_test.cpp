#include "session/DictationHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class DictationHistoryTest : public testing::Test {
 protected:
  std::vector<QString> texts() const {
    std::vector<QString> texts;
    for (const auto& item : history.recentDictations()) texts.push_back(item.text);
    return texts;
  }

  std::vector<DictationItem> stored() const {
    return decodeDictations(storage.settings.get(keys::recentDictations, QByteArray()))
        .value_or(std::vector<DictationItem>());
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  DictationHistory history{clock, storage.settings};
};

TEST_F(DictationHistoryTest, TheSameSentenceTwiceIsOneEntryInFrontWithANewDateAndId) {
  history.recordDictation(u"same"_s);
  const auto first = history.recentDictations().front();
  history.recordDictation(u"other"_s);
  clock.advance(1min);
  history.recordDictation(u" same\n"_s);
  EXPECT_THAT(texts(), ElementsAre(u"same"_s, u"other"_s));
  EXPECT_NE(history.recentDictations().front().id, first.id);
  EXPECT_EQ(history.recentDictations().front().timestamp, first.timestamp + 1min);
}

TEST_F(DictationHistoryTest, OfSixDistinctDictationsFiveStayAlsoInTheStoredList) {
  for (const auto& text : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}) history.recordDictation(text);
  EXPECT_EQ(texts().size(), 5u);
  history.recordDictation(u"6"_s);
  EXPECT_THAT(texts(), ElementsAre(u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s));
  EXPECT_EQ(stored(), history.recentDictations());
}

TEST_F(DictationHistoryTest, ABlankTextChangesNothing) {
  history.setLastTranscript(u"from the service"_s);
  history.recordDictation(u" \n"_s);
  EXPECT_EQ(history.lastTranscript(), u"from the service"_s);
  EXPECT_THAT(history.recentDictations(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::recentDictations));
}

TEST_F(DictationHistoryTest, LoadingTakesTheStoredListAndItsFirstText) {
  history.recordDictation(u"older"_s);
  history.recordDictation(u"newer"_s);
  DictationHistory loaded(clock, storage.settings);
  loaded.load();
  EXPECT_EQ(loaded.recentDictations(), history.recentDictations());
  EXPECT_EQ(loaded.lastTranscript(), u"newer"_s);
}

TEST_F(DictationHistoryTest, ADictationBeforeTheLoadingKeepsWhatIsStored) {
  history.recordDictation(u"older"_s);
  DictationHistory unloaded(clock, storage.settings);
  unloaded.recordDictation(u"newer"_s);
  ASSERT_EQ(stored().size(), 2);
  EXPECT_EQ(stored().back().text, u"older"_s);
  EXPECT_EQ(unloaded.recentDictations(), stored());
}

TEST_F(DictationHistoryTest, DataThatDoesNotDecodeIsIgnored) {
  storage.settings.set(keys::recentDictations, QByteArray("[{\"id\":1}]"));
  history.load();
  EXPECT_FALSE(history.hasTranscripts());
  EXPECT_TRUE(storage.settings.contains(keys::recentDictations));
}

TEST_F(DictationHistoryTest, ThereAreTranscriptsAsSoonAsOneHasArrived) {
  EXPECT_FALSE(history.hasTranscripts());
  history.setLastTranscript(u"a"_s);
  EXPECT_TRUE(history.hasTranscripts());
  history.recordDictation(u"a"_s);
  history.setLastTranscript(u""_s);
  EXPECT_TRUE(history.hasTranscripts());
}

TEST_F(DictationHistoryTest, APreviewOf40CharactersHasNoEllipsisAndOneOf41Has) {
  const QString forty = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s + QString(39, u'x');
  history.setLastTranscript(forty);
  EXPECT_EQ(history.lastTranscriptPreview(), forty);
  history.setLastTranscript(forty + u'y');
  EXPECT_EQ(history.lastTranscriptPreview(), forty + u'…');
}

TEST_F(DictationHistoryTest, ACutPreviewEndsWithoutABlankBeforeTheEllipsis) {
  history.setLastTranscript(QString(39, u'x') + u" yz"_s);
  EXPECT_EQ(history.lastTranscriptPreview(), QString(39, u'x') + u'…');
}

TEST_F(DictationHistoryTest, ClearingForgetsMemoryAndStore) {
  history.recordDictation(u"a"_s);
  history.clear();
  EXPECT_FALSE(history.hasTranscripts());
  EXPECT_FALSE(storage.settings.contains(keys::recentDictations));
}

}  // namespace
}  // namespace vemo
