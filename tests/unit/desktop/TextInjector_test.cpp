#include "desktop/TextInjector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "fakes/FakeClipboard.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeKeyPoster.h"
#include "fakes/FakeSecureInput.h"
#include "fakes/FakeSystemPermissions.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

const ClipboardContents twoItems = {
    ClipboardItem{{{u"image/png"_s, QByteArray("\x89PNG\0\1", 6)}, {u"text/html"_s, "<b>a</b>"}}},
    ClipboardItem{{{u"text/uri-list"_s, "file:///a\r\n"}, {u"x-unreadable"_s, ""}}},
};

class TextInjectorTest : public testing::Test {
 protected:
  /// Starts a paste and lets the first steps run, without letting time pass.
  void inject(const QString& text) {
    task = scope.start([&](std::stop_token stop) { return injectAndKeep(text, std::move(stop)); });
    mainThread.drain();
  }

  Task<> injectAndKeep(QString text, std::stop_token stop) {
    result = co_await injector->inject(std::move(text), std::move(stop));
  }

  /// Lets a paste without held modifiers come to its end.
  void finishPaste() { clock.advance(20ms); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeClipboard clipboard{clock};
  FakeKeyPoster keyPoster{clock};
  FakeSecureInput secureInput;
  FakeSystemPermissions permissions;
  std::unique_ptr<TextInjector> injector = std::make_unique<TextInjector>(
      clipboard, keyPoster, secureInput, permissions, clock, mainThread, storage.debugLog);
  TaskScope scope{mainThread};
  StartedTask task;
  std::optional<std::optional<QString>> result;  ///< filled when inject() has returned
};

TEST_F(TextInjectorTest, AnEmptyTextIsASuccessThatTouchesNothing) {
  inject(u""_s);
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, std::nullopt);
  EXPECT_EQ(clipboard.snapshotCount(), 0);
  EXPECT_THAT(keyPoster.events(), IsEmpty());
  EXPECT_THAT(storage.logMessages(), ElementsAre(u"inject: called with empty text — skipping"_s));
}

TEST_F(TextInjectorTest, InSecureInputNothingTouchesTheClipboardAndTheCallerGetsTheMessage) {
  secureInput.setActive(true);
  inject(u"hello"_s);
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, u"Can't paste here (secure input active)"_s);
  EXPECT_EQ(clipboard.snapshotCount(), 0);
  EXPECT_THAT(clipboard.writes(), IsEmpty());
  EXPECT_THAT(keyPoster.events(), IsEmpty());
  EXPECT_THAT(storage.logMessages(), ElementsAre(u"inject: blocked — secure input is active"_s));
}

TEST_F(TextInjectorTest, WithNoModifierHeldThereIsNoSleepBeforeThePaste) {
  const auto start = clock.monotonicTime();
  inject(u"hello"_s);
  EXPECT_THAT(keyPoster.events(),
              ElementsAre(FakeKeyPoster::Event{FakeKeyPoster::Step::Press, start}));
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"hello"_s);
  EXPECT_EQ(keyPoster.modifierReads(), 1);
  finishPaste();
  EXPECT_THAT(keyPoster.events(),
              ElementsAre(FakeKeyPoster::Event{FakeKeyPoster::Step::Press, start},
                          FakeKeyPoster::Event{FakeKeyPoster::Step::Release, start + 20ms}));
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, std::nullopt);
  EXPECT_THAT(storage.logMessages(),
              ElementsAre(u"inject: starting"_s, u"inject: pasteboard set, changeCount=1"_s,
                          u"inject: modifiers cleared cleanly=true"_s,
                          u"inject: postPaste posted=true axTrusted=true"_s));
}

TEST_F(TextInjectorTest, ModifiersThatAreNotInTheMaskAreNotWaitedFor) {
  keyPoster.holdModifiers(0x800000);
  inject(u"hello"_s);
  EXPECT_EQ(keyPoster.events().size(), 1u);
}

TEST_F(TextInjectorTest, AModifierLetGoInTimeCountsAsClean) {
  keyPoster.holdModifiers(OptionFlag);
  inject(u"hello"_s);
  clock.advance(5ms);
  EXPECT_THAT(keyPoster.events(), IsEmpty());
  keyPoster.holdModifiers(0);
  clock.advance(5ms);
  EXPECT_EQ(keyPoster.events().size(), 1u);
  EXPECT_TRUE(storage.hasLogged(u"inject: modifiers cleared cleanly=true"_s));
}

TEST_F(TextInjectorTest, AModifierHeldForMoreThan300msDoesNotStopThePaste) {
  keyPoster.holdModifiers(OptionFlag);
  inject(u"hello"_s);
  clock.advance(300ms - 1ns);
  EXPECT_THAT(keyPoster.events(), IsEmpty());
  clock.advance(1ns);
  EXPECT_EQ(keyPoster.events().size(), 1u);
  EXPECT_EQ(keyPoster.modifierReads(), 60) << "no further test after the 60th sleep";
  EXPECT_TRUE(storage.hasLogged(u"inject: modifiers cleared cleanly=false"_s));
}

TEST_F(TextInjectorTest, AModifierLetGoInTheLastSleepDoesNotCountAsClean) {
  keyPoster.holdModifiers(ShiftFlag);
  inject(u"hello"_s);
  clock.advance(297ms);
  keyPoster.holdModifiers(0);
  clock.advance(3ms);
  EXPECT_TRUE(storage.hasLogged(u"inject: modifiers cleared cleanly=false"_s));
}

TEST_F(TextInjectorTest, ACancelledPasteCountsItsSleepsAndStillGoesOut) {
  keyPoster.holdModifiers(ControlFlag);
  inject(u"hello"_s);
  const auto start = clock.monotonicTime();
  task.cancel();
  mainThread.drain();
  EXPECT_EQ(clock.monotonicTime(), start);
  EXPECT_THAT(keyPoster.events(),
              ElementsAre(FakeKeyPoster::Event{FakeKeyPoster::Step::Press, start},
                          FakeKeyPoster::Event{FakeKeyPoster::Step::Release, start}));
  EXPECT_TRUE(storage.hasLogged(u"inject: modifiers cleared cleanly=false"_s));
}

TEST_F(TextInjectorTest, EventsThatCannotBeMadeLeaveTheTextOnTheClipboard) {
  keyPoster.letMakePasteFail();
  permissions.isTrusted = false;
  inject(u"hello"_s);
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, u"Couldn't send the paste command"_s);
  clock.advance(2s);
  injector.reset();
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"hello"_s);
  EXPECT_TRUE(storage.hasLogged(u"postPaste: FAILED to construct CGEvents"_s));
  EXPECT_TRUE(storage.hasLogged(u"inject: postPaste posted=false axTrusted=false"_s));
}

TEST_F(TextInjectorTest, ItemsComeBackWithAllTheirTypesAndInOrder) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"hello"_s);
  finishPaste();
  clock.advance(900ms - 1ns);
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"hello"_s);
  clock.advance(1ns);
  EXPECT_EQ(clipboard.contents(), twoItems);
  EXPECT_TRUE(storage.hasLogged(u"inject: restored original pasteboard in background"_s));
}

TEST_F(TextInjectorTest, AnEmptyClipboardIsEmptyAgainAfterwards) {
  inject(u"hello"_s);
  finishPaste();
  clock.advance(900ms);
  EXPECT_THAT(clipboard.contents(), IsEmpty());
  EXPECT_EQ(clipboard.writes().size(), 2u);
}

TEST_F(TextInjectorTest, ACopyMadeWithinTheDelaySurvives) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"hello"_s);
  finishPaste();
  clock.advance(899ms);
  clipboard.writeAsAnotherApplication(plainTextContents(u"the user's own"_s));
  clock.advance(1s);
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"the user's own"_s);
  EXPECT_TRUE(storage.hasLogged(u"inject: pasteboard changed since our write — not restoring"_s));
}

TEST_F(TextInjectorTest, ASecondPasteWithinTheDelayMakesTheFirstRestoreGiveUp) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"first"_s);
  finishPaste();
  inject(u"second"_s);
  finishPaste();
  clock.advance(2s);
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"first"_s)
      << "the second snapshot was of the first text";
  EXPECT_EQ(clipboard.writes().size(), 3u);
}

TEST_F(TextInjectorTest, TheRestoreOutlivesTheCancelledDictation) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"hello"_s);
  finishPaste();
  task.cancel();
  clock.advance(900ms);
  EXPECT_EQ(clipboard.contents(), twoItems);
}

TEST_F(TextInjectorTest, EndingTheProgramBeforeTheRestoreRestoresAtOnce) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"hello"_s);
  finishPaste();
  injector.reset();
  EXPECT_EQ(clipboard.contents(), twoItems);
}

TEST_F(TextInjectorTest, EndingTheProgramWhileModifiersAreWaitedForRestores) {
  clipboard.writeAsAnotherApplication(twoItems);
  keyPoster.holdModifiers(OptionFlag);
  inject(u"hello"_s);
  ASSERT_EQ(plainTextOf(clipboard.contents()), u"hello"_s);
  injector.reset();
  EXPECT_EQ(clipboard.contents(), twoItems);
}

TEST_F(TextInjectorTest, EndingTheProgramBetweenKeyDownAndKeyUpRestores) {
  clipboard.writeAsAnotherApplication(twoItems);
  inject(u"hello"_s);
  ASSERT_EQ(keyPoster.events().size(), 1u);
  EXPECT_TRUE(injector->isRestorePending());
  injector.reset();
  EXPECT_EQ(clipboard.contents(), twoItems);
}

TEST_F(TextInjectorTest, ADictationGivenUpWhileTheClipboardIsReadTouchesNothing) {
  clipboard.writeAsAnotherApplication(twoItems);
  clipboard.makeSnapshotsTake(400ms);
  inject(u"hello"_s);
  task.cancel();
  clock.advance(2s);
  EXPECT_THAT(clipboard.writes(), IsEmpty());
  EXPECT_THAT(keyPoster.events(), IsEmpty());
}

TEST_F(TextInjectorTest, AClipboardThatCannotBeWrittenIsAFailureAndNothingIsPasted) {
  clipboard.refuseWrites();
  inject(u"hello"_s);
  ASSERT_TRUE(result);
  EXPECT_EQ(*result, u"Couldn't send the paste command"_s);
  EXPECT_THAT(keyPoster.events(), IsEmpty());
}

TEST_F(TextInjectorTest, EndingTheProgramLaterTouchesNothing) {
  inject(u"hello"_s);
  finishPaste();
  clock.advance(900ms);
  const auto writes = clipboard.writes().size();
  injector.reset();
  EXPECT_EQ(clipboard.writes().size(), writes);
}

TEST_F(TextInjectorTest, ASlowClipboardDelaysThePasteAndLosesNothing) {
  clipboard.writeAsAnotherApplication(twoItems);
  clipboard.makeSnapshotsTake(400ms);
  inject(u"hello"_s);
  EXPECT_THAT(keyPoster.events(), IsEmpty());
  clock.advance(400ms);
  EXPECT_EQ(keyPoster.events().size(), 1u);
  clock.advance(1s);
  EXPECT_EQ(clipboard.contents(), twoItems);
}

TEST_F(TextInjectorTest, EveryKindOfTextReachesTheClipboardUnchanged) {
  const QString text = u"a\0b"_s + u"\U0001F468\u200D\U0001F469\u200D\U0001F467 עברית é"_s +
                       QString(1'000'000, u'x');
  inject(text);
  EXPECT_EQ(plainTextOf(clipboard.contents()), text);
}

}  // namespace
}  // namespace vemo
