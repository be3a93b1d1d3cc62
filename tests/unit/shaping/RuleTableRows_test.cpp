// The tables once more, so that no row, flag or order changes by a slip of the hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QString>
#include <span>

#include "shaping/BroadcastRules.h"
#include "shaping/DeveloperTools.h"
#include "shaping/EmojiRules.h"
#include "shaping/FileTagPatterns.h"
#include "shaping/MentionPatterns.h"
#include "shaping/OperatorRules.h"
#include "shaping/ProductNameRules.h"
#include "shaping/VocabularyRules.h"

namespace vemo {
namespace {

struct Row {
  QStringView pattern;
  QStringView replacement;
};

constexpr Row productName[] = {
    {uR"((?i)\b(?:the\s+file\s+)?(memo\s*app|demo\s*app)\b)", u"VemoApp"},
    {uR"((?i)\bmemoapp\b)", u"VemoApp"},
    {uR"(\bMemo\b)", u"Vemo"},
    {uR"(\bmemo\b)", u"vemo"},
    {uR"(\bDemo\b)", u"Vemo"},
    {uR"(\bdemo\b)", u"vemo"},
    {uR"(\bMEMO\b)", u"VEMO"},
};

constexpr Row vocabulary[] = {
    {uR"(\bapi\b)", u"API"},
    {uR"(\bapis\b)", u"APIs"},
    {uR"(\bpr\b)", u"PR"},
    {uR"(\bprs\b)", u"PRs"},
    {uR"((?i)\b(?:ui|uy)\b)", u"UI"},
    {uR"((?i)\b(?:ux)\b)", u"UX"},
    {uR"((?i)\baddictionary\b)", u"add dictionary"},
    {uR"(\bjwt\b)", u"JWT"},
    {uR"(\bsdk\b)", u"SDK"},
    {uR"(\bsdks\b)", u"SDKs"},
    {uR"(\bsql\b)", u"SQL"},
    {uR"(\bnosql\b)", u"NoSQL"},
    {uR"(\bdb\b)", u"DB"},
    {uR"(\boauth\b)", u"OAuth"},
    {uR"(\bcli\b)", u"CLI"},
    {uR"(\bstt\b)", u"STT"},
    {uR"(\bjson\b)", u"JSON"},
    {uR"(\bhttp\b)", u"HTTP"},
    {uR"(\bhttps\b)", u"HTTPS"},
    {uR"(\burl\b)", u"URL"},
    {uR"(\burls\b)", u"URLs"},
    {uR"(\bdto\b)", u"DTO"},
    {uR"(\bdtos\b)", u"DTOs"},
    {uR"(\borm\b)", u"ORM"},
    {uR"(\bide\b)", u"IDE"},
    {uR"(\bmcp\b)", u"MCP"},
};

constexpr Row operators[] = {
    {uR"((?i)\bconsole\s*(?:dot|\.)\s*log\b)", u"console.log"},
    {uR"((?i)\bconsole\s*(?:dot|\.)\s*error\b)", u"console.error"},
    {uR"((?i)\bconsole\s*(?:dot|\.)\s*warn\b)", u"console.warn"},
    {uR"((?i)\btriple\s+equals\b)", u"==="},
    {uR"((?i)\bstrictly\s+equals\b)", u"==="},
    {uR"((?i)\bdouble\s+equals\b)", u"=="},
    {uR"((?i)\bnot\s+equals?\b)", u"!="},
    {uR"((?i)\bfat\s+arrow\b)", u"=>"},
    {uR"((?i)\barrow\s+function\b)", u"=>"},
    {uR"((?i)\bgreater\s+than\s+or\s+equal(?:\s+to)?\b)", u">="},
    {uR"((?i)\bless\s+than\s+or\s+equal(?:\s+to)?\b)", u"<="},
    {uR"((?i)\blogical\s+and\b)", u"&&"},
    {uR"((?i)\blogical\s+or\b)", u"||"},
    {uR"((?i)\bgit\s+commit\s+dash\s+m\b)", u"git commit -m"},
};

constexpr Row broadcasts[] = {
    {uR"((?i)\b(?:tag|mention)\s+everyone\b)", u"@everyone"},
    {uR"((?i)\b(?:tag|mention)\s+here\b)", u"@here"},
    {uR"((?i)\b(?:tag|mention)\s+channel\b)", u"@channel"},
};

constexpr Row emoji[] = {
    {uR"((?i)\b(?:thumbs\s+up|thumbsup)\b)", u":thumbsup:"},
    {uR"((?i)\bplus\s+one\b)", u":+1:"},
    {uR"((?i)\b(?:fire\s+emoji|fire)\b)", u":fire:"},
    {uR"((?i)\b(?:rocket\s+emoji|rocket)\b)", u":rocket:"},
    {uR"((?i)\b(?:eyes\s+emoji|eyes)\b)", u":eyes:"},
    {uR"((?i)\b(?:check\s+mark|checkmark)\b)", u":white_check_mark:"},
    {uR"((?i)\b(?:party\s+emoji|tada)\b)", u":tada:"},
    {uR"((?i)\b(?:heart\s+emoji)\b)", u":heart:"},
    {uR"((?i)\b(?:thank\s+you\s+emoji|pray)\b)", u":pray:"},
};

void expectRows(std::span<const RewriteRule> table, std::span<const Row> rows) {
  ASSERT_EQ(table.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(table[i].pattern, rows[i].pattern) << "row " << i + 1;
    EXPECT_EQ(table[i].replacement, rows[i].replacement) << "row " << i + 1;
  }
}

TEST(RuleTableRowsTest, EveryTableHasItsRowsInTheirOrder) {
  expectRows(productNameRules, productName);
  expectRows(vocabularyRules, vocabulary);
  expectRows(operatorRules, operators);
  expectRows(broadcastRules, broadcasts);
  expectRows(emojiRules, emoji);
}

TEST(RuleTableRowsTest, TheLonePatternsAreThese) {
  EXPECT_EQ(channelPattern.pattern, uR"((?i)\b(?:in\s+channel|channel)\s+([a-zA-Z0-9_\-]+)\b)");
  EXPECT_EQ(repeatedMentionPattern.pattern,
            uR"((?i)\b(to|with|for|ping|ask|tell)\s+([a-zA-Z0-9_\-]+)\s+and\s+)"
            uR"((?:mention|tag)\s+\2\b)");
  EXPECT_EQ(plainMentionPattern.pattern, uR"((?i)\b(?:mention|tag)\s+([a-zA-Z0-9_\-\.]+)\b)");
  EXPECT_EQ(sendPattern, uR"((?i)^send\s+(.+?)\s+to\s+(@[a-zA-Z0-9_\-\.]+)[.?!]?$)");
}

TEST(RuleTableRowsTest, TheWordsOfDeveloperToolsAreThese) {
  EXPECT_THAT(developerToolIdentifierWords,
              testing::ElementsAre(u"code", u"cursor", u"antigravity", u"windsurf", u"xcode",
                                   u"jetbrains", u"zed", u"terminal", u"warp", u"iterm"));
  EXPECT_THAT(developerToolNameWords,
              testing::ElementsAre(u"code", u"cursor", u"antigravity", u"windsurf", u"xcode",
                                   u"terminal", u"warp", u"iterm"));
}

TEST(RuleTableRowsTest, NoReplacementHasAMeaningAsATemplate) {
  for (const auto& table :
       {std::span<const RewriteRule>(productNameRules),
        std::span<const RewriteRule>(vocabularyRules), std::span<const RewriteRule>(operatorRules),
        std::span<const RewriteRule>(broadcastRules), std::span<const RewriteRule>(emojiRules)}) {
    for (const auto& row : table)
      EXPECT_FALSE(row.replacement.contains(u'$') || row.replacement.contains(u'\\'));
  }
}

}  // namespace
}  // namespace vemo
