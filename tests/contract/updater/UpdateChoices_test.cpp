// What the user is asked about an update that isn't fetched by itself, and what becomes of the
// answer.
#include "UpdaterFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr int noUpdate = UpdateError::noUpdate;

class UpdateChoicesTest : public UpdaterFixture {
 protected:
  UpdateChoicesTest() { isOurs = false; }

  /// Finds build 2 and answers with the choice.
  void answer(UpdateChoice choice) {
    publish({release(2, "1.1.0")});
    EXPECT_THAT(check(), IsEmpty());
    ASSERT_TRUE(choose);
    choose(choice);
    announced.clear();
  }
};

TEST_F(UpdateChoicesTest, AnUpdateForThePackageManagerCanBeSkippedOrPutOff) {
  publish({release(2, "1.1.0")});
  check();
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
  EXPECT_THAT(offered, ElementsAre(UpdateChoice::Skip, UpdateChoice::Dismiss));
  EXPECT_THAT(delegate.choices, IsEmpty());
}

TEST_F(UpdateChoicesTest, ACriticalUpdateCanOnlyBePutOff) {
  AppcastItem item = release(2, "1.1.0");
  item.shown.isCritical = true;
  publish({item});
  check();
  EXPECT_THAT(offered, ElementsAre(UpdateChoice::Dismiss));
}

TEST_F(UpdateChoicesTest, TheAnswerIsToldOnceTheUserHasLookedAtTheUpdate) {
  answer(UpdateChoice::Dismiss);
  EXPECT_EQ(delegate.attentions, 1);
  EXPECT_THAT(delegate.choices, ElementsAre(Pair(UpdateChoice::Dismiss, u"1.1.0"_s)));
  answer(UpdateChoice::Skip);
  EXPECT_THAT(delegate.choices, ElementsAre(Pair(UpdateChoice::Dismiss, u"1.1.0"_s),
                                            Pair(UpdateChoice::Skip, u"1.1.0"_s)));
}

TEST_F(UpdateChoicesTest, WhatWasPutOffComesAgain) {
  answer(UpdateChoice::Dismiss);
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
}

TEST_F(UpdateChoicesTest, WhatIsNoLongerOfferedNeedsNoAttentionAnyMore) {
  publish({release(2, "1.1.0")});
  check();
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Delegate);
  check();
  EXPECT_EQ(delegate.attentions, 0) << "it is still there";
  publish({});
  EXPECT_THAT(check(), ElementsAre(noUpdate));
  EXPECT_EQ(delegate.attentions, 1);
  EXPECT_THAT(check(), ElementsAre(noUpdate));
  EXPECT_EQ(delegate.attentions, 1);
}

TEST_F(UpdateChoicesTest, WhatWasSkippedDoesNotComeAgainByItself) {
  answer(UpdateChoice::Skip);
  EXPECT_THAT(check(), ElementsAre(noUpdate));
  start();
  EXPECT_THAT(check(), ElementsAre(noUpdate)) << "after a restart";
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(UpdateChoicesTest, WhatIsOlderThanTheSkippedDoesNotComeInItsPlace) {
  publish({release(3, "1.2.0")});
  check();
  choose(UpdateChoice::Skip);
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), ElementsAre(noUpdate));
}

TEST_F(UpdateChoicesTest, WhatWasSkippedIsThereForTheUserWhoAsks) {
  answer(UpdateChoice::Skip);
  EXPECT_THAT(check(UpdateCheck::UserInitiated), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
}

TEST_F(UpdateChoicesTest, WhatIsNewerThanTheSkippedComes) {
  answer(UpdateChoice::Skip);
  publish({release(2, "1.1.0"), release(3, "1.2.0")});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.2.0 is available"_s));
}

TEST_F(UpdateChoicesTest, WhatTurnsOutCriticalComesEvenIfItWasSkipped) {
  answer(UpdateChoice::Skip);
  AppcastItem item = release(2, "1.1.0");
  item.shown.isCritical = true;
  publish({item});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
}

TEST_F(UpdateChoicesTest, ALateAnswerAboutAnOlderUpdateDoesNotBringTheSkippedBack) {
  publish({release(2, "1.1.0")});
  check();
  const auto chooseOlder = choose;
  publish({release(3, "1.2.0")});
  check();
  choose(UpdateChoice::Skip);
  chooseOlder(UpdateChoice::Skip);
  EXPECT_THAT(check(), ElementsAre(noUpdate));
}

TEST_F(UpdateChoicesTest, WhatWasSkippedIsNotFetchedOnceDownloadsAreOnAgain) {
  isOurs = true;
  isInFront = true;
  start().setAutomaticallyDownloadsUpdates(false);
  answer(UpdateChoice::Skip);
  updater->setAutomaticallyDownloadsUpdates(true);
  EXPECT_THAT(check(), ElementsAre(noUpdate));
  EXPECT_FALSE(delegate.ready);
}

TEST_F(UpdateChoicesTest, AnUpdateThatIsNotFetchedIsShownAtOnceToWhoLooksAtAWindow) {
  isOurs = true;
  isInFront = true;
  publish({release(2, "1.1.0")});
  start().setAutomaticallyDownloadsUpdates(false);
  check();
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Updater);
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
  EXPECT_THAT(offered, ElementsAre(UpdateChoice::Skip, UpdateChoice::Dismiss));
}

TEST_F(UpdateChoicesTest, AnUpdateThatIsNotFetchedIsLeftToTheMenuWhileNobodyLooks) {
  isOurs = true;
  publish({release(2, "1.1.0")});
  start().setAutomaticallyDownloadsUpdates(false);
  check();
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Delegate);
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(UpdateChoicesTest, NothingIsAskedAboutAnUpdateThatIsFetched) {
  isOurs = true;
  isInFront = true;
  publish({release(2, "1.1.0")});
  check();
  EXPECT_TRUE(delegate.ready);
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_FALSE(delegate.shownBy);
}

}  // namespace
}  // namespace vemo
