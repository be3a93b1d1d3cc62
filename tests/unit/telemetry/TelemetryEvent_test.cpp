// The table of events, held to the names, properties and classes that the server knows.
#include "telemetry/TelemetryEvent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Json.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

/// "name {props}", with a "!" before an essential event.
std::string text(const TelemetryEvent& event) {
  return (event.eventClass() == EventClass::Essential ? "!" : "") + event.name().toStdString() +
         ' ' + compactJson(event.props()).toStdString();
}

CompletedDictation dictationOf(double seconds) {
  return {.seconds = seconds,
          .words = 7,
          .language = u"hi"_s,
          .model = u"a model"_s,
          .outputMode = u"translit"_s,
          .isChunked = true,
          .isStreamed = false,
          .latencyMs = 480};
}

TEST(TelemetryEventTest, EventsOfTheProgram) {
  EXPECT_EQ(text(TelemetryEvent::appLaunched(false)), R"(app_launched {"launchedAtLogin":false})");
  EXPECT_EQ(text(TelemetryEvent::sessionEnded(90)), R"(session_ended {"seconds":90})");
  EXPECT_EQ(text(TelemetryEvent::updateInstalled(u"1.2.0 (34)"_s, 34)),
            R"-(!update_installed {"build":34,"version":"1.2.0 (34)"})-");
  EXPECT_EQ(text(TelemetryEvent::appCrashed({.applicationBuildVersion = u"34"_s,
                                             .exceptionType = {},
                                             .exceptionCode = {},
                                             .signal = 6,
                                             .terminationReason = {}})),
            R"(!app_crashed {"appVersion":"34","signal":6})");
}

TEST(TelemetryEventTest, EventsOfADictation) {
  EXPECT_EQ(text(TelemetryEvent::dictationStarted(u"hold"_s, u"rightOption"_s)),
            R"(dictation_started {"mode":"hold","shortcut":"rightOption"})");
  EXPECT_EQ(text(TelemetryEvent::dictationCompleted(dictationOf(9.5))),
            R"(dictation_completed {"chunked":true,"language":"hi","latencyMs":480,)"
            R"("lengthBucket":"lt10s","model":"a model","outputMode":"translit","seconds":9.5,)"
            R"("streamed":false,"words":7})");
  EXPECT_EQ(text(TelemetryEvent::firstDictation(5)),
            R"(first_dictation {"secondsSinceFirstLaunch":5})");
  EXPECT_EQ(text(TelemetryEvent::dictationTooShort(0.25, false)),
            R"(dictation_cancelled {"chunked":false,"reason":"too_short","seconds":0.25})");
  EXPECT_EQ(text(TelemetryEvent::dictationDisabled({})),
            R"(dictation_cancelled {"reason":"disabled"})");
  EXPECT_EQ(text(TelemetryEvent::dictationDisabled(1.5)),
            R"(dictation_cancelled {"reason":"disabled","seconds":1.5})");
  EXPECT_EQ(text(TelemetryEvent::dictationFailed(u"recorder_start", {})),
            R"(!dictation_failed {"reason":"recorder_start"})");
  EXPECT_EQ(text(TelemetryEvent::dictationFailed(u"server", true)),
            R"(!dictation_failed {"chunked":true,"reason":"server"})");
  EXPECT_EQ(text(TelemetryEvent::dictationStreamFallback(u"after_stop")),
            R"(!dictation_stream_fallback {"reason":"after_stop"})");
  EXPECT_EQ(text(TelemetryEvent::textInsertionFailed(u"secure_input")),
            R"(!text_insertion_failed {"reason":"secure_input"})");
  EXPECT_EQ(text(TelemetryEvent::transcriptCopied()), "transcript_copied {}");
}

TEST(TelemetryEventTest, ALengthFallsIntoItsBucketOnBothSidesOfEachBound) {
  const auto bucket = [](double seconds) {
    return TelemetryEvent::dictationCompleted(dictationOf(seconds))
        .props()
        .value(u"lengthBucket")
        .toString();
  };
  EXPECT_EQ(bucket(9.99), u"lt10s"_s);
  EXPECT_EQ(bucket(10), u"10to60s"_s);
  EXPECT_EQ(bucket(59.99), u"10to60s"_s);
  EXPECT_EQ(bucket(60), u"1to5m"_s);
  EXPECT_EQ(bucket(299.99), u"1to5m"_s);
  EXPECT_EQ(bucket(300), u"gt5m"_s);
}

TEST(TelemetryEventTest, EventsOfRequests) {
  EXPECT_EQ(text(TelemetryEvent::requestFailed(u"dictate"_s, 12, 503)),
            R"(!request_failed {"endpoint":"dictate","ms":12,"status":503})");
  EXPECT_EQ(text(TelemetryEvent::requestBroken(u"auth/google"_s, 12, -1005)),
            R"(!request_failed {"endpoint":"auth/google","error":"url_-1005","ms":12})");
  EXPECT_EQ(text(TelemetryEvent::requestBroken(u"auth/google"_s, 12, {})),
            R"(!request_failed {"endpoint":"auth/google","error":"error","ms":12})");
  EXPECT_EQ(text(TelemetryEvent::requestSlow(u"dictate/chunk"_s, 5001)),
            R"(!request_slow {"endpoint":"dictate/chunk","ms":5001})");
}

TEST(TelemetryEventTest, EventsOfAccountAndPermissions) {
  EXPECT_EQ(text(TelemetryEvent::signInStarted()), "sign_in_started {}");
  EXPECT_EQ(text(TelemetryEvent::signInCompleted()), "sign_in_completed {}");
  EXPECT_EQ(text(TelemetryEvent::signInFailed(u"cancelled")),
            R"(sign_in_failed {"reason":"cancelled"})");
  EXPECT_EQ(text(TelemetryEvent::signInRefused(403)), R"(sign_in_failed {"reason":"http_403"})");
  EXPECT_EQ(text(TelemetryEvent::permissionPrompted(Permission::Microphone)),
            R"(permission_prompted {"permission":"microphone"})");
  EXPECT_EQ(text(TelemetryEvent::permissionGranted(Permission::Accessibility)),
            R"(permission_granted {"permission":"accessibility"})");
  EXPECT_EQ(text(TelemetryEvent::microphoneDenied()),
            R"(permission_denied {"permission":"microphone"})");
}

TEST(TelemetryEventTest, EventsOfWindowsAndSettings) {
  EXPECT_EQ(text(TelemetryEvent::tabOpened(u"settings_general"_s)),
            R"(tab_opened {"tab":"settings_general"})");
  EXPECT_EQ(text(TelemetryEvent::languageChanged(u"en"_s, u"hi"_s)),
            R"(language_changed {"from":"en","to":"hi"})");
  EXPECT_EQ(text(TelemetryEvent::outputModeChanged(u"a"_s, u"b"_s)),
            R"(output_mode_changed {"from":"a","to":"b"})");
  EXPECT_EQ(text(TelemetryEvent::shortcutChanged(u"toggle", u"fnGlobe"_s)),
            R"(shortcut_changed {"action":"toggle","shortcut":"fnGlobe"})");
  EXPECT_EQ(text(TelemetryEvent::settingChanged(u"showInDock"_s)),
            R"(setting_changed {"setting":"showInDock"})");
  EXPECT_EQ(text(TelemetryEvent::dictionaryWordAdded()), "dictionary_word_added {}");
  EXPECT_EQ(text(TelemetryEvent::dictionaryWordRemoved()), "dictionary_word_removed {}");
}

TEST(TelemetryEventTest, EventsOfUpdatesAreSanitised) {
  EXPECT_EQ(text(TelemetryEvent::updateCheckManual()), "!update_check_manual {}");
  EXPECT_EQ(text(TelemetryEvent::updateOffered(u"1.3 <b>"_s, 40, true)),
            R"(!update_offered {"build":40,"critical":true,"version":"1.3__b_"})");
  EXPECT_EQ(text(TelemetryEvent::updateDownloaded(u"1.3"_s)),
            R"(!update_downloaded {"version":"1.3"})");
  EXPECT_EQ(text(TelemetryEvent::updateSkipped(u"1.3"_s)), R"(!update_skipped {"version":"1.3"})");
  EXPECT_EQ(text(TelemetryEvent::updatePostponed(u"1.3"_s)),
            R"(!update_postponed {"version":"1.3"})");
  EXPECT_EQ(text(TelemetryEvent::updateRestartClicked(u"1.3"_s)),
            R"(!update_restart_clicked {"version":"1.3"})");
  EXPECT_EQ(text(TelemetryEvent::updateFailed(u"a domain"_s, -3)),
            R"(!update_failed {"code":-3,"error":"a_domain"})");
}

TEST(TelemetryEventTest, SanitisedTextKeepsLettersMarksNumbersAndSevenSigns) {
  EXPECT_EQ(sanitisedText(u"aZ9._:+,-/"_s), u"aZ9._:+,-/"_s);
  EXPECT_EQ(sanitisedText(u"é中٣Ⅻहिं"_s), u"é中٣Ⅻहिं"_s);
  EXPECT_EQ(sanitisedText(u"a b\n\"\\;()<>@=é😀"_s), u"a_b__________é_"_s);
  EXPECT_EQ(sanitisedText(QString(QChar(0xD800)) + u'x'), u"_x"_s) << "an unpaired surrogate";
}

TEST(TelemetryEventTest, SanitisedTextIsCutToItsFirst64Characters) {
  EXPECT_EQ(sanitisedText(QString(64, u'x')).size(), 64);
  EXPECT_EQ(sanitisedText(QString(65, u'x')).size(), 64);
  EXPECT_EQ(sanitisedText(u"𝐀"_s.repeated(65)), u"𝐀"_s.repeated(64));
}

}  // namespace
}  // namespace vemo
