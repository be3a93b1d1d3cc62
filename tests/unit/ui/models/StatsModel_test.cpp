#include "ui/models/StatsModel.h"

#include "account/AccountFixture.h"

namespace vemo {
namespace {

class StatsModelTest : public AccountFixture {
 protected:
  StatsModelTest() {
    holdToken();
    startUp();
    model.emplace(StatsModel::With{
        .mainThread = mainThread, .clock = clock, .auth = *auth, .locale = QLocale(u"en_US"_s)});
  }

  void use(const QByteArray& consumption, Clock::Duration delay = {}) {
    http.answer(profilePath, 200, R"({"status":"ok","user":{"consumption":)" + consumption + "}}",
                delay);
    model->refresh();
    settle();
  }

  std::optional<StatsModel> model;
};

TEST_F(StatsModelTest, AnEmptyAccountHasAFigureOnEachCard) {
  EXPECT_EQ(model->speed(), u"0 WPM"_s);
  EXPECT_EQ(model->speedComparison(), QString());
  EXPECT_EQ(model->speedLine(),
            u"Dictate for at least 15 seconds to calculate your live Words Per Minute"_s);
  EXPECT_EQ(model->timeSaved(), u"under a min"_s);
  EXPECT_EQ(model->timeSavedDetail(),
            u"Estimated keyboard typing time eliminated across 0 words transcribed."_s);
  EXPECT_EQ(model->audio(), u"0"_s);
  EXPECT_EQ(model->audioUnit(), u"secs"_s);
  EXPECT_EQ(model->dictations(), u"0"_s);
}

TEST_F(StatsModelTest, TheUsageOfTheAccountIsOnTheCards) {
  use(R"({"totalWordsTranscribed":9000,"totalMinutesTranscribed":75,"totalUtterances":1234})");
  EXPECT_EQ(model->speed(), u"120 WPM"_s);
  EXPECT_EQ(model->speedComparison(), u"3x Faster"_s);
  EXPECT_EQ(model->speedLine(),
            u"You dictate at 120 words per minute, significantly faster than "
            u"the 40 WPM average typing speed."_s);
  EXPECT_EQ(model->timeSaved(), u"2h 30m"_s);
  EXPECT_EQ(model->timeSavedDetail(),
            u"Estimated keyboard typing time eliminated across 9,000 words transcribed."_s);
  EXPECT_EQ(model->audio(), u"75.0"_s);
  EXPECT_EQ(model->audioUnit(), u"mins"_s);
  EXPECT_EQ(model->dictations(), u"1,234"_s);
}

TEST_F(StatsModelTest, SpeechSlowerThanTypingSavesUnderAMinute) {
  use(R"({"totalWordsTranscribed":400,"totalMinutesTranscribed":20})");
  EXPECT_EQ(model->timeSaved(), u"under a min"_s);
}

TEST_F(StatsModelTest, WordsWithoutMinutesShowTheHint) {
  use(R"({"totalWordsTranscribed":100,"totalMinutesTranscribed":0})");
  EXPECT_EQ(model->speed(), u"0 WPM"_s);
  EXPECT_EQ(model->speedLine(),
            u"Dictate for at least 15 seconds to calculate your live Words Per Minute"_s);
}

TEST_F(StatsModelTest, SixtyMinutesSavedReadWithoutAPluralRule) {
  use(R"({"totalWordsTranscribed":2800,"totalMinutesTranscribed":10})");
  EXPECT_EQ(model->timeSaved(), u"1 hrs"_s);
}

TEST_F(StatsModelTest, ARefreshThatFailsKeepsTheFigures) {
  use(R"({"totalUtterances":5})");
  http.fail(profilePath, UrlError::NotConnectedToInternet);
  model->refresh();
  settle();
  EXPECT_EQ(model->dictations(), u"5"_s);
  EXPECT_FALSE(model->isRefreshing());
}

TEST_F(StatsModelTest, ARefreshShowsItsProgressOnlyAfterHalfASecond) {
  use("{}", 3s);
  EXPECT_TRUE(model->isRefreshing());
  clock.advance(499ms);
  EXPECT_FALSE(model->showsProgress());
  clock.advance(1ms);
  EXPECT_TRUE(model->showsProgress());
  clock.advance(2500ms);
  EXPECT_FALSE(model->isRefreshing());
  EXPECT_FALSE(model->showsProgress());
}

TEST_F(StatsModelTest, AQuickRefreshShowsNoProgressAtAll) {
  use("{}", 400ms);
  clock.advance(400ms);
  EXPECT_FALSE(model->isRefreshing());
  clock.advance(1s);
  EXPECT_FALSE(model->showsProgress());
}

TEST_F(StatsModelTest, ASecondRefreshWhileOneRunsAsksNothing) {
  use("{}", 3s);
  const auto before = requestCount();
  model->refresh();
  settle();
  EXPECT_EQ(requestCount(), before);
}

TEST_F(StatsModelTest, ASignOutEmptiesTheFigures) {
  use(R"({"totalUtterances":5})");
  int changes = 0;
  QObject::connect(&*model, &StatsModel::changed, [&changes] { ++changes; });
  auth->signOut();
  EXPECT_EQ(model->dictations(), u"0"_s);
  EXPECT_GT(changes, 0);
}

}  // namespace
}  // namespace vemo
