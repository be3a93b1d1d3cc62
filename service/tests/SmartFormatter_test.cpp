#include "formatting/SmartFormatter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "formatting/SpokenMarks.h"

namespace vemo::service {
namespace {

struct Example {
  std::string_view spoken;
  std::string_view written;
};

class SmartFormatterExamplesTest : public testing::TestWithParam<Example> {};

TEST_P(SmartFormatterExamplesTest, SpokenBecomesWritten) {
  EXPECT_EQ(formatSmart(GetParam().spoken), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    Marks, SmartFormatterExamplesTest,
    testing::Values(
        Example{"go forward ten meters", "Go forward ten meters."},
        Example{"hello comma world period", "Hello, world."},
        Example{"stop full stop go on", "Stop. Go on."},
        Example{"is it done question mark yes", "Is it done? Yes."},
        Example{"watch out exclamation mark", "Watch out!"},
        Example{"watch out exclamation point", "Watch out!"},
        Example{"note colon bring water", "Note: bring water."},
        Example{"first semicolon second", "First; second."},
        Example{"first semi colon second", "First; second."}, Example{"wait ellipsis", "Wait..."},
        Example{"well hyphen known", "Well-known."}, Example{"yes dash no", "Yes - no."},
        Example{"he said open quote hello close quote", "He said \"hello\"."},
        Example{"open quotes hello period close quotes", "\"Hello.\""},
        Example{"see open parenthesis below close parenthesis", "See (below)."},
        Example{"see open bracket one close bracket comma please", "See [one], please."},
        Example{"dear john comma new line thank you", "Dear john,\nThank you."},
        Example{"one period new paragraph two", "One.\n\nTwo."},
        Example{"one newline two", "One\nTwo."}));

INSTANTIATE_TEST_SUITE_P(
    Words, SmartFormatterExamplesTest,
    testing::Values(Example{"", ""}, Example{"  \t\n ", ""},
                    Example{"  spread \t out\nwords ", "Spread out words."},
                    Example{"i think i'm right and i'll say i've won if i'd play",
                            "I think I'm right and I'll say I've won if I'd play."},
                    Example{"it is in iowa", "It is in iowa."},
                    Example{"for a period of time", "For a period of time."},
                    Example{"put a comma there", "Put a comma there."},
                    Example{"the new line of shoes", "The new line of shoes."},
                    Example{"full of joy", "Full of joy."}, Example{"new", "New."},
                    Example{"full", "Full."}, Example{"open", "Open."},
                    Example{"\xC3\xA9t\xC3\xA9 comma soleil", "\xC3\xA9t\xC3\xA9, soleil."},
                    Example{"COMMA Hello", ", Hello."}));

INSTANTIATE_TEST_SUITE_P(
    Ends, SmartFormatterExamplesTest,
    testing::Values(Example{"done period", "Done."}, Example{"done question mark", "Done?"},
                    Example{"and then comma", "And then,"},
                    Example{"as follows colon", "As follows:"},
                    Example{"hello new line", "Hello\n"}, Example{"open quote", "\""},
                    Example{"open quote really question mark close quote", "\"Really?\""},
                    Example{"period", "."}, Example{"done period period", "Done.."}));

TEST(SmartFormatterTest, EveryRowOfTheTableWritesItsMark) {
  for (const auto& row : spokenMarks) {
    const auto text = formatSmart("one " + std::string(row.words) + " two");
    EXPECT_NE(text.find(row.mark), std::string::npos) << row.words;
    EXPECT_EQ(text.find(row.words), std::string::npos) << row.words;
    EXPECT_EQ(text.contains(row.following == Following::NewSentence ? "Two" : "two"), true)
        << row.words;
  }
}

TEST(SmartFormatterTest, EveryDeterminerKeepsTheRowAsWords) {
  for (const auto determiner : determiners) {
    const auto text = formatSmart("x " + std::string(determiner) + " colon");
    EXPECT_TRUE(text.ends_with("colon.")) << text;
  }
}

TEST(SmartFormatterTest, AMegabyteOfMarksIsNoHardship) {
  std::string spoken;
  while (spoken.size() < 1'000'000) spoken += "open quote semi colon new ";
  EXPECT_LE(formatSmart(spoken).size(), spoken.size());
}

TEST(SmartFormatterTest, ZeroBytesAndBrokenTextPassThrough) {
  const std::string text("a\0b \xFF\xFE", 6);
  EXPECT_EQ(formatSmart(text), std::string("A\0b \xFF\xFE.", 7));
}

}  // namespace
}  // namespace vemo::service
