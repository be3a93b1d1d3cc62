#include "shaping/FileTagging.h"

#include "ShapingFixture.h"
#include "shaping/FileTagPatterns.h"

namespace vemo {
namespace {

class FileTaggingTest : public ShapingFixture {
 protected:
  FileTaggingTest() { switchOff(keys::integrationSlack); }
};

TEST_F(FileTaggingTest, OpenAppStateDotSwiftTagsTheIndexedFile) {
  setFiles({u"Main.swift"_s, u"AppState.swift"_s});
  EXPECT_EQ(shaped(u"open app state dot swift"_s), u"open @AppState.swift"_s);
}

TEST_F(FileTaggingTest, ShiftIsAHeardFormOfSwift) {
  setFiles({u"AppState.swift"_s});
  EXPECT_EQ(shaped(u"open app state dot shift"_s), u"open @AppState.swift"_s);
}

TEST_F(FileTaggingTest, AnUnknownFileIsTaggedByItsWords) {
  EXPECT_EQ(shaped(u"open the new thing dot py"_s), u"open @TheNewThing.py"_s);
}

TEST_F(FileTaggingTest, TheFileMainWindowViewKeepsItsLead) {
  EXPECT_EQ(shaped(u"the file main window view dot swift"_s), u"the file @MainWindowView.swift"_s);
}

TEST_F(FileTaggingTest, ConfigDotJsonNeedsNoLead) {
  EXPECT_EQ(shaped(u"config dot json"_s), u"@Config.json"_s);
}

TEST_F(FileTaggingTest, LookAtLoginViewFindsAFileThatHasItInItsName) {
  setFiles({u"LoginViewModel.ts"_s});
  EXPECT_EQ(shaped(u"look at login view dot ts"_s), u"look at @LoginViewModel.ts"_s);
}

TEST_F(FileTaggingTest, ATextWithoutDotOrPointOnlyLosesDoubledAtSigns) {
  EXPECT_EQ(shaped(u"open the file, look at it in python"_s),
            u"open the file, look at it in python"_s);
  EXPECT_EQ(shaped(u"mail me@@home, a@@@b, c@@@@d, e@f"_s), u"mail me@home, a@@b, c@@d, e@f"_s);
}

TEST_F(FileTaggingTest, EveryVerbLeadsAFileName) {
  for (const auto* verb :
       {u"open",    u"edit",     u"modify", u"check",   u"inspect", u"read",     u"view",
        u"look at", u"Look  At", u"scan",   u"in",      u"at",      u"see",      u"update",
        u"fix",     u"refactor", u"TEST",   u"analyze", u"file",    u"the file", u"The  File"}) {
    const QString lead = QString::fromUtf16(verb);
    EXPECT_EQ(shaped(lead + u" my notes.md"_s), lead.simplified() + u" @MyNotes.md"_s)
        << lead.toStdString();
    if (lead.contains(u' ')) continue;  // its second word is a lead of its own
    EXPECT_EQ(shaped(u"x"_s + lead + u" my notes.md"_s), u"x"_s + lead + u" my notes.md"_s)
        << lead.toStdString();
  }
}

TEST_F(FileTaggingTest, OtherWordsLeadNoFileName) {
  EXPECT_EQ(shaped(u"close my notes.md"_s), u"close my notes.md"_s);
  EXPECT_EQ(shaped(u"close my notes dot md"_s), u"close my @Notes.md"_s);
}

TEST_F(FileTaggingTest, TheSeparatorIsDotOrAPointWithAnyWhiteSpace) {
  EXPECT_EQ(shaped(u"open notes.md"_s), u"open @Notes.md"_s);
  EXPECT_EQ(shaped(u"open notes .\nmd"_s), u"open @Notes.md"_s);
  EXPECT_EQ(shaped(u"open notes\u2003DOT\tMD"_s), u"open @Notes.md"_s);
  EXPECT_EQ(shaped(u"open notesdotmd"_s), u"open @Notes.md"_s);
  EXPECT_EQ(shaped(u"open notes dash md"_s), u"open notes dash md"_s);
}

TEST_F(FileTaggingTest, ABareNameNeedsTheWordDotBetweenBlanks) {
  EXPECT_EQ(shaped(u"notes dot md"_s), u"@Notes.md"_s);
  EXPECT_EQ(shaped(u"my-notes_2  Dot\nmd"_s), u"@My-notes_2.md"_s);
  EXPECT_EQ(shaped(u"notes.md notes .md notesdotmd"_s), u"notes.md notes .md notesdotmd"_s);
  EXPECT_EQ(shaped(u"notes dot mdx"_s), u"notes dot mdx"_s);
  EXPECT_EQ(shaped(u"dot md"_s), u"dot md"_s);
}

TEST_F(FileTaggingTest, AnExtensionEndsAtAWordBoundary) {
  EXPECT_EQ(shaped(u"open notes dot mdx"_s), u"open notes dot mdx"_s);
  EXPECT_EQ(shaped(u"open notes dot md."_s), u"open @Notes.md."_s);
  EXPECT_EQ(shaped(u"open notes dot m, now"_s), u"open @Notes.m, now"_s);
}

TEST_F(FileTaggingTest, ANameReachesFromItsLeadToTheNearestEnding) {
  EXPECT_EQ(shaped(u"open a dot ts and b dot js"_s), u"open @A.ts and @B.js"_s);
  EXPECT_EQ(shaped(u"in the end open a dot ts"_s), u"in @TheEndOpenA.ts"_s);
  EXPECT_EQ(shaped(u"in the end, open a dot ts"_s), u"in the end, open @A.ts"_s);
  EXPECT_EQ(shaped(u"file dot swift foo dot ts"_s), u"file @DotSwiftFoo.ts"_s);
}

TEST_F(FileTaggingTest, ASecondBlankMayStandForTheName) {
  EXPECT_EQ(shaped(u"file  dot md"_s), u"file @.md"_s);
}

TEST_F(FileTaggingTest, ATaggedNameMayBeTaggedAgainAndKeepsOneAtSign) {
  // "the file" makes the tag, and "in" finds the point in it.
  EXPECT_EQ(shaped(u"in the file notes dot md"_s), u"in the file @Notes.md"_s);
  setFiles({u"@odd.md"_s});
  EXPECT_EQ(shaped(u"open odd dot md"_s), u"open @odd.md"_s);
}

TEST_F(FileTaggingTest, AnIndexedFileOfTheBareRuleIsTaggedAlone) {
  setFiles({u"notes.md"_s});
  EXPECT_EQ(shaped(u"write notes dot markdown today"_s), u"write @notes.md today"_s);
}

TEST_F(FileTaggingTest, ALeadMayBeWrittenWithALigature) {
  EXPECT_EQ(shaped(u"the \uFB01le main dot go"_s), u"the \uFB01le @Main.go"_s);
  EXPECT_EQ(shaped(u"the  \uFB01le main, the \uFB01le b.go"_s),
            u"the \uFB01le main, the \uFB01le @B.go"_s);
}

TEST_F(FileTaggingTest, AWildcardInAnExtensionTakesAnyCharacter) {
  EXPECT_EQ(shaped(u"open main dot t-s"_s), u"open @Main.t-s"_s);
  EXPECT_EQ(shaped(u"open main dot t s"_s), u"open @Main.t s"_s);
}

TEST_F(FileTaggingTest, ThePatternsCarryTheSpokenFormsInTheirLastGroup) {
  EXPECT_EQ(fileAfterNounPattern,
            u"(?i)\\b(the\\s+file|file)\\s+([a-zA-Z0-9_\\-\\s]+?)\\s*(?:dot|\\.)\\s*(EXT)\\b");
  EXPECT_EQ(fileAfterVerbPattern,
            u"(?i)\\b(open|edit|modify|check|inspect|read|view|look\\s+at|scan|in|at|see|update|"
            u"fix|refactor|test|analyze)\\s+([a-zA-Z0-9_\\-\\s]+?)\\s*(?:dot|\\.)\\s*(EXT)\\b");
  EXPECT_EQ(bareFilePattern, u"(?i)\\b([a-zA-Z0-9_\\-]+)\\s+dot\\s+(EXT)\\b");
}

TEST_F(FileTaggingTest, LongTextsFullOfLeadsAndWithoutFileNamesPassThrough) {
  const QString text =
      QString(u"open the file and look at it in dot view edit test "_s).repeated(2000);
  EXPECT_EQ(shaped(text), text);
}

}  // namespace
}  // namespace vemo
