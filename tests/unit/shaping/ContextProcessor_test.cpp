#include "shaping/ContextProcessor.h"

#include "ShapingFixture.h"
#include "shaping/CustomEntries.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

using ContextProcessorTest = ShapingFixture;

TEST_F(ContextProcessorTest, EmptyInputYieldsEmptyOutputAndUnchangedInTheLog) {
  EXPECT_EQ(shaped(u""_s), u""_s);
  EXPECT_THAT(storage.logMessages(), ElementsAre(u"context: frontmost [], 0 chars in"_s,
                                                 u"context: 0 chars out, changed=false"_s));
}

TEST_F(ContextProcessorTest, TheLogNamesTheApplicationAndCountsCharactersOnly) {
  applications.setFrontmost(RunningApplication{.identifier = u"org.xfce.mousepad"_s, .name = {}});
  shaped(u"one  \U0001F468\u200D\U0001F469\u200D\U0001F467"_s);
  EXPECT_THAT(storage.logMessages(),
              ElementsAre(u"context: frontmost [org.xfce.mousepad], 6 chars in"_s,
                          u"context: 5 chars out, changed=true"_s));
}

TEST_F(ContextProcessorTest, AnApplicationWithoutIdentifierOrNameIsNoDeveloperTool) {
  applications.setFrontmost(RunningApplication{});
  EXPECT_EQ(shaped(u"an api"_s), u"an api"_s);
  applications.setFrontmost(std::nullopt);
  EXPECT_EQ(shaped(u"an api"_s), u"an api"_s);
}

TEST_F(ContextProcessorTest, AnEditorWithCodeInItsIdentifierIsADeveloperTool) {
  inFront(u"com.microsoft.VSCode"_s, u"Editor"_s);
  EXPECT_EQ(shaped(u"an api"_s), u"an API"_s);
}

TEST_F(ContextProcessorTest, ABarcodeScannerCountsAsADeveloperTool) {
  inFront(u"org.example.scan"_s, u"Barcode Scanner"_s);
  EXPECT_EQ(shaped(u"an api"_s), u"an API"_s);
}

TEST_F(ContextProcessorTest, EveryDeveloperToolWordCountsInTheIdentifierInAnyCase) {
  for (const auto* word : {u"code", u"cursor", u"antigravity", u"windsurf", u"xcode", u"jetbrains",
                           u"zed", u"terminal", u"warp", u"iterm"}) {
    const QString identifier = u"org."_s + QString::fromUtf16(word).toUpper() + u".app"_s;
    inFront(identifier, u"Editor"_s);
    EXPECT_EQ(shaped(u"an api"_s), u"an API"_s) << identifier.toStdString();
  }
}

TEST_F(ContextProcessorTest, EveryDeveloperToolWordButTwoCountsInTheName) {
  for (const auto* word : {u"code", u"cursor", u"antigravity", u"windsurf", u"xcode", u"terminal",
                           u"warp", u"iterm"}) {
    const QString name = u"My "_s + QString::fromUtf16(word).toUpper() + u" 2"_s;
    inFront(u"org.example"_s, name);
    EXPECT_EQ(shaped(u"an api"_s), u"an API"_s) << name.toStdString();
  }
  for (const auto& name : {u"JetBrains"_s, u"Zed"_s, u"Mail"_s}) {
    inFront(u"org.example"_s, name);
    EXPECT_EQ(shaped(u"an api"_s), u"an api"_s) << name.toStdString();
  }
}

TEST_F(ContextProcessorTest, OnlyDictionarySnippetsAndBlanksChangeATextWithBothSwitchesOff) {
  switchIntegrationsOff();
  inFront(u"org.example.mail"_s, u"Mail"_s);
  setDictionary({{u"foo"_s, u"bar"_s}});
  setShortcuts({{u"my sign"_s, u"Yours, M."_s}});
  EXPECT_EQ(shaped(u"foo   my sign, open app state dot swift, tag Maria, api, fire"_s),
            u"bar Yours, M., open app state dot swift, tag Maria, api, fire"_s);
}

TEST_F(ContextProcessorTest, EachSwitchRulesItsOwnStage) {
  const QString text = u"open notes dot md and tag Maria"_s;
  EXPECT_EQ(shaped(text), u"open @Notes.md and @Maria"_s);
  switchOff(keys::integrationVSCode);
  EXPECT_EQ(shaped(text), u"open notes dot md and @Maria"_s);
  switchOff(keys::integrationSlack);
  EXPECT_EQ(shaped(text), text);
  storage.settings.remove(keys::integrationVSCode);
  EXPECT_EQ(shaped(text), u"open @Notes.md and tag Maria"_s);
}

TEST_F(ContextProcessorTest, ASwitchOfAnotherTypeIsOn) {
  storage.settings.set(keys::String{u"integrationVSCode"}, u"false"_s);
  storage.settings.set(keys::String{u"integrationSlack"}, u"false"_s);
  EXPECT_EQ(shaped(u"open notes dot md and tag Maria"_s), u"open @Notes.md and @Maria"_s);
}

TEST_F(ContextProcessorTest, MentionsAreMadeInEveryApplication) {
  inFront(u"org.example.mail"_s, u"Mail"_s);
  EXPECT_EQ(shaped(u"tag Maria"_s), u"@Maria"_s);
}

TEST_F(ContextProcessorTest, TheStagesRunInTheirOrder) {
  inDeveloperTool();
  setDictionary({{u"sigg"_s, u"sig"_s}});
  setShortcuts({{u"sig"_s, u"open the api dot ts"_s}});
  // A correction is a trigger, the snippet has vocabulary and a file name, which Slack sees tagged.
  EXPECT_EQ(shaped(u"send sigg to @Maria"_s), u"@Maria open @TheAPI.ts"_s);
}

TEST_F(ContextProcessorTest, RunsOfBlanksCollapseAndASingleTabStays) {
  EXPECT_EQ(shaped(u"a   b"_s), u"a b"_s);
  EXPECT_EQ(shaped(u"a\tb"_s), u"a\tb"_s);
  EXPECT_EQ(shaped(u"a\t\tb"_s), u"a b"_s);
  EXPECT_EQ(shaped(u"a \tb"_s), u"a b"_s);
  EXPECT_EQ(shaped(u"a b"_s), u"a b"_s);
  EXPECT_EQ(shaped(u"a\n\nb"_s), u"a\n\nb"_s);
  EXPECT_EQ(shaped(u"a\u00A0\u00A0b"_s), u"a\u00A0\u00A0b"_s);
  EXPECT_EQ(shaped(u"  a  "_s), u" a "_s);
}

TEST_F(ContextProcessorTest, TheActiveWorkspaceIsRefreshedOnceForEachTextThatIsTagged) {
  shaped(u"nothing to tag"_s);
  EXPECT_EQ(files.refreshCount(), 1);
  switchOff(keys::integrationVSCode);
  shaped(u"nothing to tag"_s);
  EXPECT_EQ(files.refreshCount(), 1);
}

TEST_F(ContextProcessorTest, AMegabyteOfAnythingPassesThrough) {
  const QString text = QString(500'000, u'ä') + QChar(0xD800) + QString(500'000, u'ж');
  EXPECT_EQ(shaped(text), text);
}

TEST_F(ContextProcessorTest, EmojiCombiningMarksAndUnpairedSurrogatesAreNeverCut) {
  inDeveloperTool();
  setDictionary({{u"foo"_s, u"bar"_s}});
  const QString lone = QChar(0xDC00);
  EXPECT_EQ(shaped(u"\U0001F600foo\U0001F600 fo\u0301o foo"_s + lone),
            u"\U0001F600bar\U0001F600 fo\u0301o bar"_s + lone);
  EXPECT_EQ(shaped(lone + u" api "_s + QChar(0xD83D)), lone + u" API "_s + QChar(0xD83D));
  // A mark belongs to the letter before it, so no word ends between them.
  EXPECT_EQ(shaped(u"foo\u0301"_s), u"foo\u0301"_s);
}

TEST_F(ContextProcessorTest, StoredListsThatAreNoArraysDoNothing) {
  for (const auto& bytes : {"", "{}", "null", "17", "[", "[1]", "[{}]", "\xff", "[[]]", "\"a\""}) {
    storage.settings.set(keys::customDictionaryEntries, QByteArray(bytes));
    storage.settings.set(keys::customShortcutEntries, QByteArray(bytes));
    EXPECT_EQ(shaped(u"call Memo foo"_s), u"call Vemo foo"_s) << bytes;
  }
}

TEST_F(ContextProcessorTest, AnEntryThatLacksAFieldMakesItsListUnreadable) {
  const QByteArray entries[] = {
      R"([{"id":"1","phrase":"foo","replacement":"bar"},{"id":"2","phrase":"b"}])",
      R"([{"id":"1","phrase":"foo","replacement":"bar"},{"phrase":"b","replacement":"c"}])",
      R"([{"id":"1","phrase":"foo","replacement":"bar"},{"id":"2","replacement":"c"}])",
      R"([{"id":"1","phrase":"foo","replacement":"bar"},{"id":2,"phrase":"b","replacement":"c"}])"};
  for (const auto& bytes : entries) {
    storage.settings.set(keys::customDictionaryEntries, bytes);
    EXPECT_EQ(shaped(u"foo memo"_s), u"foo vemo"_s) << bytes.toStdString();
  }
  storage.settings.set(keys::customDictionaryEntries,
                       QByteArray(R"([{"id":"1","phrase":"foo","replacement":"bar","more":[1]}])"));
  EXPECT_EQ(shaped(u"foo"_s), u"bar"_s);
}

TEST_F(ContextProcessorTest, APhraseOfTenThousandCharactersIsReplaced) {
  const QString phrase = QString(5'000, u'a') + u' ' + QString(4'999, u'b');
  setDictionary({{phrase, u"short"_s}});
  EXPECT_EQ(shaped(u"say "_s + QString(phrase).replace(u" "_s, u"\n "_s) + u" now"_s),
            u"say short now"_s);
  EXPECT_EQ(shaped(u"say "_s + phrase + u"b"_s), u"say "_s + phrase + u"b"_s);
}

TEST_F(ContextProcessorTest, AReplacementOfAMegabyteIsWritten) {
  const QString replacement(1024 * 1024, u'x');
  setDictionary({{u"foo"_s, replacement}});
  EXPECT_EQ(shaped(u"a foo b"_s), u"a "_s + replacement + u" b"_s);
}

TEST_F(ContextProcessorTest, ATextThatGrowsBeyondReasonIsLeftAsTheStageFoundIt) {
  setDictionary({{u"foo"_s, QString(1024 * 1024, u'x')}});
  setShortcuts({{u"sig"_s, u"Yours"_s}});
  const QString text = QString(u"foo "_s).repeated(8) + u"memo sig"_s;
  EXPECT_EQ(shaped(text), QString(u"foo "_s).repeated(8) + u"memo Yours"_s);
  EXPECT_TRUE(
      storage.hasLogged(u"context: dictionary left 40 chars as found: made the text too long"_s));
}

TEST_F(ContextProcessorTest, ASnippetThatContainsItsOwnTriggerIsExpandedOnce) {
  setShortcuts({{u"sig"_s, u"my sig and sig"_s}});
  EXPECT_EQ(shaped(u"the sig here"_s), u"the my sig and sig here"_s);
}

TEST_F(ContextProcessorTest, ADictionaryInWhichEveryEntryFeedsTheNextIsRunToItsEnd) {
  Pairs entries;
  for (int i = 0; i < 500; ++i) entries.emplace_back(u"word%1"_s.arg(i), u"word%1"_s.arg(i + 1));
  setDictionary(entries);
  EXPECT_EQ(shaped(u"so word0 it is"_s), u"so word500 it is"_s);
}

TEST_F(ContextProcessorTest, ADictionaryThatDoublesTheTextWithEachEntryIsGivenUp) {
  const QString longWord(998, u'w');
  Pairs entries;
  for (int i = 10; i < 70; ++i)
    entries.emplace_back(longWord + u"%1"_s.arg(i),
                         longWord + u"%1 "_s.arg(i + 1) + longWord + u"%1"_s.arg(i + 1));
  setDictionary(entries);
  EXPECT_EQ(shaped(longWord + u"10"_s), longWord + u"10"_s);
  EXPECT_TRUE(
      storage.hasLogged(u"context: dictionary left 1000 chars as found: made the text too long"_s));
}

TEST_F(ContextProcessorTest, AListBeyondTwoMegabytesIsNotRead) {
  const auto sized = [](const QByteArray& list, qsizetype size) {
    return list.chopped(1) + QByteArray(size - list.size(), ' ') + ']';
  };
  const QByteArray dictionary = storedDictionary({{u"foo"_s, u"bar"_s}});
  const QByteArray shortcuts = storedShortcuts({{u"foo"_s, u"sig"_s}});
  storage.settings.set(keys::customShortcutEntries, sized(shortcuts, maxStoredBytes));
  EXPECT_EQ(shaped(u"foo"_s), u"sig"_s);
  storage.settings.remove(keys::customShortcutEntries);
  storage.settings.set(keys::customDictionaryEntries, sized(dictionary, maxStoredBytes));
  EXPECT_EQ(shaped(u"foo"_s), u"bar"_s);
  storage.settings.set(keys::customDictionaryEntries, sized(dictionary, maxStoredBytes + 1));
  EXPECT_EQ(shaped(u"foo"_s), u"foo"_s);
  EXPECT_TRUE(
      storage.hasLogged(u"context: dictionary left 3 chars as found: has too long a list"_s));
  storage.settings.set(keys::customShortcutEntries, sized(shortcuts, maxStoredBytes + 1));
  EXPECT_EQ(shaped(u"foo"_s), u"foo"_s);
  EXPECT_TRUE(storage.hasLogged(u"context: snippets left 3 chars as found: has too long a list"_s));
}

TEST_F(ContextProcessorTest, AStageThatIsOutOfTimeLeavesTheTextAndTheLogSaysWhich) {
  inDeveloperTool();
  setDictionary({{u"foo"_s, u"bar"_s}});
  setShortcuts({{u"sig"_s, u"Yours"_s}});
  clock.step = std::chrono::milliseconds(250);
  const QString text = u"foo   sig api memo open notes dot md tag Maria"_s;
  EXPECT_EQ(shaped(text), u"foo sig api memo open notes dot md tag Maria"_s);
  for (const auto& stage :
       {u"dictionary"_s, u"snippets"_s, u"code rules"_s, u"file tags"_s, u"Slack rules"_s})
    EXPECT_TRUE(
        storage.hasLogged(u"context: %1 left 46 chars as found: took too long"_s.arg(stage)))
        << stage.toStdString();
  for (const auto& line : storage.logMessages()) EXPECT_FALSE(line.contains(u"Maria"_s));
}

TEST_F(ContextProcessorTest, AStageMayUseHalfOfTheTimeThatIsLeft) {
  // Of 240 ms the dictionary has 120, and each of its entries looks at the clock.
  const auto isCutShort = [this](int entryCount) {
    Pairs entries;
    for (int i = 0; i < entryCount; ++i) entries.emplace_back(u"w%1"_s.arg(i), u"w%1"_s.arg(i + 1));
    setDictionary(entries);
    return shaped(u"w0"_s) != u"w%1"_s.arg(entryCount);
  };
  clock.step = std::chrono::milliseconds(10);
  EXPECT_FALSE(isCutShort(5));
  EXPECT_TRUE(isCutShort(12));
}

TEST_F(ContextProcessorTest, AFreshListTakesEffectWithTheNextText) {
  setDictionary({{u"foo"_s, u"bar"_s}});
  setShortcuts({{u"sig"_s, u"Yours"_s}});
  EXPECT_EQ(shaped(u"foo sig x"_s), u"bar Yours x"_s);
  setDictionary({{u"foo"_s, u"baz"_s}});
  setShortcuts({{u"sig"_s, u"Mine"_s}});
  EXPECT_EQ(shaped(u"foo sig x"_s), u"baz Mine x"_s);
  storage.settings.remove(keys::customDictionaryEntries);
  storage.settings.remove(keys::customShortcutEntries);
  EXPECT_EQ(shaped(u"foo sig x"_s), u"foo sig x"_s);
}

}  // namespace
}  // namespace vemo
