// From a text to the application in front, and what is kept of it.

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AppStateDeliveryTest : public SessionFixture {
 protected:
  std::vector<QString> history() const {
    std::vector<QString> texts;
    for (const auto& item : appState->history().recentDictations()) texts.push_back(item.text);
    return texts;
  }
};

TEST_F(AppStateDeliveryTest, ADeliveredTextIsPastedRecordedHeardAndReported) {
  startUp();
  dictate(u" hello   world\n"_s, 2.0);
  EXPECT_EQ(appState->history().lastTranscript(), u" hello   world\n"_s)
      << "until the paste, the text as it came";
  takeEvents();
  hud.takeCalls();
  clock.advance(20ms);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(pastedTexts(), ElementsAre(u"hello world"_s));
  EXPECT_THAT(history(), ElementsAre(u"hello world"_s));
  EXPECT_EQ(appState->history().lastTranscript(), u"hello world"_s);
  EXPECT_THAT(hud.takeCalls(), ElementsAre("hideNow"));
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s, u"vemo_stop"_s));
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_completed {"chunked":false,"language":"en","latencyMs":20,)"
                          R"("lengthBucket":"lt10s","model":"saaras:v4","outputMode":"transcribe",)"
                          R"("seconds":2,"streamed":false,"words":2})",
                          R"(first_dictation {"secondsSinceFirstLaunch":2})"));
  EXPECT_TRUE(storage.hasLogged(u"transcript OK: 15 chars"_s));
}

TEST_F(AppStateDeliveryTest, ThePropertiesFollowTheSettings) {
  storage.settings.set(keys::dictationLanguage, u"hinglish"_s);
  storage.settings.set(keys::dictateOutputMode, u"codemix"_s);
  startUp();
  dictate(u"hi"_s, 10.0);
  takeEvents();
  clock.advance(20ms);
  EXPECT_THAT(takeEvents().front(),
              R"(dictation_completed {"chunked":false,"language":"hinglish","latencyMs":20,)"
              R"("lengthBucket":"10to60s","model":"saaras:v3","outputMode":"codemix",)"
              R"("seconds":10,"streamed":false,"words":1})");
}

TEST_F(AppStateDeliveryTest, LengthsFallIntoTheirBucketsOnBothSidesOfEachBorder) {
  startUp();
  for (const auto& [seconds, bucket] :
       std::vector<std::pair<double, std::string>>{{9.9, "lt10s"},
                                                   {10.0, "10to60s"},
                                                   {59.9, "10to60s"},
                                                   {60.0, "1to5m"},
                                                   {299.9, "1to5m"},
                                                   {300.0, "gt5m"}}) {
    for (int chunk = 0; chunk < 21; ++chunk) http.answer(chunkPath, 200, success(u"a"_s));
    http.answer(dictatePath, 200, success(u"b"_s));
    http.answer(finalizePath, 200, success(u"b"_s));
    startRecording();
    hear(seconds);
    stopRecording();
    takeEvents();
    clock.advance(20ms);
    EXPECT_THAT(takeEvents().front(), testing::HasSubstr("\"lengthBucket\":\"" + bucket + "\""))
        << seconds;
    clock.advance(1s);
  }
}

TEST_F(AppStateDeliveryTest, InSecureInputTheFailureIsToldAndTheServersTextStaysForCopying) {
  startUp();
  secureInput.setActive(true);
  dictate(u"  unshaped  text "_s);
  const QString message = u"Can't paste here (secure input active) — use Copy Last Transcript"_s;
  EXPECT_EQ(appState->phase(), Phase::error(message));
  EXPECT_EQ(hud.takeCalls().back(), "showError(" + message.toStdString() + ")");
  EXPECT_EQ(takeEvents().back(), R"(text_insertion_failed {"reason":"secure_input"})");
  EXPECT_THAT(history(), IsEmpty());
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s));
  appState->copyTranscript(appState->history().lastTranscript());
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"  unshaped  text "_s);
}

TEST_F(AppStateDeliveryTest, APasteThatCannotBeMadeIsToldAndReported) {
  startUp();
  keyPoster.letMakePasteFail();
  dictate(u"hello"_s);
  EXPECT_EQ(appState->phase(),
            Phase::error(u"Couldn't send the paste command — use Copy Last Transcript"_s));
  EXPECT_EQ(takeEvents().back(), R"(text_insertion_failed {"reason":"paste_failed"})");
  clock.advance(2s);
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(AppStateDeliveryTest, DisablingDuringThePasteSkipsSuccessThoughThePasteMayGoOut) {
  startUp();
  dictate(u"hello"_s);
  ASSERT_EQ(appState->phase(), Phase::injecting());
  takeEvents();
  appState->setEnabled(false);
  finishPaste();
  EXPECT_THAT(keyPoster.events(), SizeIs(2));
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_THAT(history(), IsEmpty());
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(AppStateDeliveryTest, CopyingATranscriptMarksItConcealedAndNotTransient) {
  startUp();
  appState->copyTranscript(u"kept"_s);
  ASSERT_THAT(clipboard.writes(), SizeIs(1));
  std::vector<QString> types;
  for (const auto& entry : clipboard.contents()[0].contents) types.push_back(entry.type);
  EXPECT_THAT(types, ElementsAre(u"org.nspasteboard.ConcealedType"_s,
                                 u"x-kde-passwordManagerHint"_s, u"text/plain;charset=utf-8"_s));
  EXPECT_THAT(takeEvents(), ElementsAre("transcript_copied {}"));
  clock.advance(10s);
  EXPECT_EQ(plainTextOf(clipboard.contents()), u"kept"_s);
}

TEST_F(AppStateDeliveryTest, CopyingAnEmptyTranscriptDoesNothing) {
  startUp();
  appState->copyTranscript(u""_s);
  EXPECT_THAT(clipboard.writes(), IsEmpty());
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(AppStateDeliveryTest, HistorySurvivesARestartOfASignedInUser) {
  startUp();
  dictate(u"kept"_s);
  finishPaste();
  appState.reset();
  startUp();
  EXPECT_THAT(history(), ElementsAre(u"kept"_s));
  EXPECT_EQ(appState->history().lastTranscript(), u"kept"_s);
}

TEST_F(AppStateDeliveryTest, ALaunchWhileSignedOutLeavesHistoryEmptyThoughTheStoreHoldsSome) {
  startUp();
  dictate(u"older"_s);
  finishPaste();
  appState.reset();
  secrets.remove(u"brelmox.Vemo"_s, u"authToken"_s);
  startUp();
  EXPECT_THAT(history(), IsEmpty());
  EXPECT_TRUE(storage.settings.contains(keys::recentDictations));
}

TEST_F(AppStateDeliveryTest, TheExplicitSignOutClearsTheUsersWordsAndKeepsTheSettings) {
  secrets.add(u"brelmox.Vemo"_s, u"slackApiToken"_s, "slack");
  storage.settings.set(keys::customDictionaryEntries, QByteArray("[]"));
  storage.settings.set(keys::customShortcutEntries, QByteArray("[]"));
  storage.settings.set(keys::streamingDictationEnabled, true);
  storage.settings.set(keys::streamingDictationMaxSessionSec, u"60"_s);
  storage.settings.set(keys::streamingDictationFetchedAt, QDateTime::currentDateTimeUtc());
  storage.settings.set(keys::slackCachedUsers, QByteArray("[]"));
  storage.settings.set(keys::slackCachedChannels, QByteArray("[]"));
  storage.settings.set(keys::slackCachedWorkspace, u"team"_s);
  storage.settings.set(keys::slackApiToken, u"legacy"_s);
  storage.settings.set(keys::authEmail, u"a@b.example"_s);
  storage.settings.set(keys::dictationLanguage, u"hi"_s);
  startUp();
  dictate(u"words"_s);
  finishPaste();
  appState->clearLocalUserData();
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_FALSE(appState->history().hasTranscripts());
  EXPECT_FALSE(storage.settings.contains(keys::recentDictations));
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
  EXPECT_FALSE(storage.settings.contains(keys::customShortcutEntries));
  EXPECT_FALSE(storage.settings.contains(keys::streamingDictationEnabled));
  EXPECT_FALSE(storage.settings.contains(keys::streamingDictationMaxSessionSec));
  EXPECT_FALSE(storage.settings.contains(keys::streamingDictationFetchedAt));
  EXPECT_FALSE(storage.settings.contains(keys::slackCachedUsers));
  EXPECT_FALSE(storage.settings.contains(keys::slackCachedChannels));
  EXPECT_FALSE(storage.settings.contains(keys::slackCachedWorkspace));
  EXPECT_FALSE(storage.settings.contains(keys::slackApiToken));
  EXPECT_FALSE(storage.settings.contains(keys::authEmail));
  EXPECT_FALSE(secrets.find(u"brelmox.Vemo"_s, u"authToken"_s));
  EXPECT_FALSE(secrets.find(u"brelmox.Vemo"_s, u"slackApiToken"_s));
  EXPECT_EQ(storage.settings.get(keys::dictationLanguage), u"hi"_s);
  EXPECT_TRUE(storage.hasLogged(
      u"auth: signed out — cleared local transcripts, dictionary, shortcuts, and Slack state"_s));
}

TEST_F(AppStateDeliveryTest, AShapedTextThatComesOutEmptyIsASuccessThatKeepsTheServersText) {
  storage.settings.set(keys::customShortcutEntries,
                       QByteArray(R"([{"id":"1","trigger":"drop me","snippet":""}])"));
  startUp();
  dictate(u"drop me"_s);
  finishPaste();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s, u"vemo_stop"_s));
  EXPECT_THAT(clipboard.writes(), IsEmpty());
  EXPECT_THAT(history(), IsEmpty());
  EXPECT_EQ(appState->history().lastTranscript(), u"drop me"_s);
}

TEST_F(AppStateDeliveryTest, TextOfEveryKindArrivesUnchangedAndAMegabyteToo) {
  startUp();
  const QString text = u"a\0b \u202B\u05E9\u05DC\u05D5\u05DD\u202C e\u0301 "_s +
                       u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s + QString(1'000'000, u'x');
  dictate(text);
  finishPaste();
  EXPECT_THAT(pastedTexts(), ElementsAre(text));
  EXPECT_EQ(appState->history().lastTranscript(), text);
}

}  // namespace
}  // namespace vemo
