// Each row of each table by what it does, and what it leaves alone.
#include "ShapingFixture.h"

namespace vemo {
namespace {

struct Example {
  const char16_t* said;
  const char16_t* written;
};

class RuleTablesTest : public ShapingFixture {
 protected:
  void expect(const Example& example) {
    const QString said = QString::fromUtf16(example.said);
    EXPECT_EQ(shaped(said), QString::fromUtf16(example.written)) << said.toStdString();
  }

  template <std::size_t N>
  void expectAll(const Example (&examples)[N]) {
    for (const auto& example : examples) expect(example);
  }
};

TEST_F(RuleTablesTest, MemoBecomesVemoInEveryApplicationWhateverTheDictionarySays) {
  switchIntegrationsOff();
  setDictionary({{u"memo"_s, u"notice"_s}});
  inFront(u"org.example.mail"_s, u"Mail"_s);
  EXPECT_EQ(shaped(u"a memo"_s), u"a vemo"_s);
  inDeveloperTool();
  EXPECT_EQ(shaped(u"a memo"_s), u"a vemo"_s);
}

TEST_F(RuleTablesTest, TheProductNameIsWrittenInTheCaseThatWasHeard) {
  switchIntegrationsOff();
  expectAll({{u"memo app", u"VemoApp"},
             {u"Memo  App!", u"VemoApp!"},
             {u"memo\napp", u"VemoApp"},
             {u"demo app", u"VemoApp"},
             {u"DEMOAPP", u"VemoApp"},
             {u"memoapp", u"VemoApp"},
             {u"the file memo app", u"VemoApp"},
             {u"The  File\tDemo app is", u"VemoApp is"},
             {u"the filememo app", u"the filememo app"},
             {u"other file memo app", u"other file VemoApp"},
             {u"Memo", u"Vemo"},
             {u"memo", u"vemo"},
             {u"Demo", u"Vemo"},
             {u"demo", u"vemo"},
             {u"MEMO", u"VEMO"},
             {u"DEMO", u"DEMO"},
             {u"mEmo", u"mEmo"},
             {u"MEMo dEMO", u"MEMo dEMO"},
             {u"memos demos", u"memos demos"},
             {u"amemo ademo", u"amemo ademo"},
             {u"memo-demo", u"vemo-vemo"},
             {u"memo apple", u"vemo apple"}});
}

TEST_F(RuleTablesTest, VocabularyIsWrittenAsDevelopersWriteIt) {
  switchIntegrationsOff();
  inDeveloperTool();
  constexpr Example rows[] = {{u"api", u"API"},     {u"apis", u"APIs"},
                              {u"pr", u"PR"},       {u"prs", u"PRs"},
                              {u"ui", u"UI"},       {u"uy", u"UI"},
                              {u"ux", u"UX"},       {u"addictionary", u"add dictionary"},
                              {u"jwt", u"JWT"},     {u"sdk", u"SDK"},
                              {u"sdks", u"SDKs"},   {u"sql", u"SQL"},
                              {u"nosql", u"NoSQL"}, {u"db", u"DB"},
                              {u"oauth", u"OAuth"}, {u"cli", u"CLI"},
                              {u"stt", u"STT"},     {u"json", u"JSON"},
                              {u"http", u"HTTP"},   {u"https", u"HTTPS"},
                              {u"url", u"URL"},     {u"urls", u"URLs"},
                              {u"dto", u"DTO"},     {u"dtos", u"DTOs"},
                              {u"orm", u"ORM"},     {u"ide", u"IDE"},
                              {u"mcp", u"MCP"}};
  for (const auto& [said, written] : rows) {
    const QString word = QString::fromUtf16(said);
    const QString result = QString::fromUtf16(written);
    EXPECT_EQ(shaped(word), result);
    EXPECT_EQ(shaped(u"an "_s + word.toUpper() + u", "_s + word),
              u"an "_s + result + u", "_s + result);
    EXPECT_EQ(shaped(u"q"_s + word), u"q"_s + word);
    EXPECT_EQ(shaped(word + u"q"_s), word + u"q"_s);
  }
}

TEST_F(RuleTablesTest, ApiInAnyCaseBecomesApiAndApiaryStays) {
  inDeveloperTool();
  expectAll({{u"Api", u"API"}, {u"API", u"API"}, {u"apiary", u"apiary"}});
}

TEST_F(RuleTablesTest, SpokenOperatorsAreWrittenAsCode) {
  switchIntegrationsOff();
  inDeveloperTool();
  expectAll({{u"console dot log", u"console.log"},
             {u"Console.Log", u"console.log"},
             {u"consoledotlog", u"console.log"},
             {u"console . log it", u"console.log it"},
             {u"console dot logs", u"console dot logs"},
             {u"a console dot error", u"a console.error"},
             {u"CONSOLE\tdot\nerror", u"console.error"},
             {u"console dot errors", u"console dot errors"},
             {u"console dot warn", u"console.warn"},
             {u"console.warn", u"console.warn"},
             {u"console dot warning", u"console dot warning"},
             {u"console log", u"console log"},
             {u"myconsole dot log", u"myconsole dot log"},
             {u"a triple equals b", u"a === b"},
             {u"a Triple  Equals b", u"a === b"},
             {u"tripleequals", u"tripleequals"},
             {u"a strictly equals b", u"a === b"},
             {u"a STRICTLY equals b", u"a === b"},
             {u"a double equals b", u"a == b"},
             {u"a Double equals b", u"a == b"},
             {u"a not equals b", u"a != b"},
             {u"a not equal b", u"a != b"},
             {u"a Not Equal to b", u"a != to b"},
             {u"a not equality", u"a not equality"},
             {u"fat arrow", u"=>"},
             {u"Fat Arrow x", u"=> x"},
             {u"fat arrows", u"fat arrows"},
             {u"an arrow function", u"an =>"},
             {u"an ARROW function", u"an =>"},
             {u"fat arrow function", u"=> function"},
             {u"arrow functions", u"arrow functions"},
             {u"a greater than or equal b", u"a >= b"},
             {u"a Greater than or equal to b", u"a >= b"},
             {u"a greater than or equals b", u"a greater than or equals b"},
             {u"a greater than or equal tom", u"a >= tom"},
             {u"a less than or equal b", u"a <= b"},
             {u"a Less than or equal to b", u"a <= b"},
             {u"a less than or equal two", u"a <= two"},
             {u"a less than b", u"a less than b"},
             {u"a logical and b", u"a && b"},
             {u"a Logical And b", u"a && b"},
             {u"a logical android", u"a logical android"},
             {u"a logical or b", u"a || b"},
             {u"a Logical Or b", u"a || b"},
             {u"a logical order", u"a logical order"},
             {u"illogical or", u"illogical or"},
             {u"git commit dash m", u"git commit -m"},
             {u"Git Commit Dash M fix", u"git commit -m fix"},
             {u"git commit dash me", u"git commit dash me"},
             {u"digit commit dash m", u"digit commit dash m"}});
}

TEST_F(RuleTablesTest, ConsoleDotLogInAMailProgramIsLeftAlone) {
  switchIntegrationsOff();
  inFront(u"org.example.mail"_s, u"Mail"_s);
  expect({u"console dot log", u"console dot log"});
}

TEST_F(RuleTablesTest, EveryoneIsMentionedByTheirBroadcast) {
  expectAll({{u"tag everyone in the meeting", u"@everyone in the meeting"},
             {u"Mention  Everyone", u"@everyone"},
             {u"tag here", u"@here"},
             {u"mention here now", u"@here now"},
             {u"Tag Channel", u"@channel"},
             {u"mention channel", u"@channel"},
             {u"tag everyones", u"@Everyones"},
             {u"tag hereby", u"@Hereby"},
             {u"retag everyone", u"retag everyone"},
             {u"tags here", u"tags here"}});
}

TEST_F(RuleTablesTest, EmojiAreWrittenByTheirNames) {
  expectAll({{u"thumbs up", u":thumbsup:"},
             {u"Thumbs  Up!", u":thumbsup:!"},
             {u"thumbsup", u":thumbsup:"},
             {u"thumbsups", u"thumbsups"},
             {u"plus one", u":+1:"},
             {u"PLUS ONE", u":+1:"},
             {u"plus ones", u"plus ones"},
             {u"surplus one", u"surplus one"},
             {u"fire emoji", u":fire:"},
             {u"Fire", u":fire:"},
             {u"fire emojis", u":fire: emojis"},
             {u"the fire alarm", u"the :fire: alarm"},
             {u"fired", u"fired"},
             {u"a rocket", u"a :rocket:"},
             {u"Rocket emoji", u":rocket:"},
             {u"rockets", u"rockets"},
             {u"eyes emoji", u":eyes:"},
             {u"my Eyes", u"my :eyes:"},
             {u"keyes", u"keyes"},
             {u"check mark", u":white_check_mark:"},
             {u"Checkmark", u":white_check_mark:"},
             {u"checkmarks", u"checkmarks"},
             {u"party emoji", u":tada:"},
             {u"Tada", u":tada:"},
             {u"party", u"party"},
             {u"tadah", u"tadah"},
             {u"heart emoji", u":heart:"},
             {u"Heart Emoji", u":heart:"},
             {u"my heart", u"my heart"},
             {u"sweetheart emoji", u"sweetheart emoji"},
             {u"thank you emoji", u":pray:"},
             {u"Thank you", u"Thank you"},
             {u"Pray", u":pray:"},
             {u"prayer", u"prayer"}});
}

TEST_F(RuleTablesTest, TheFireAlarmBecomesAnEmojiInAMailToo) {
  inFront(u"org.example.mail"_s, u"Mail"_s);
  expect({u"the fire alarm", u"the :fire: alarm"});
}

TEST_F(RuleTablesTest, RulesFeedTheRulesAfterThemAndNoneBefore) {
  inDeveloperTool();
  switchIntegrationsOff();
  expectAll({// What "addictionary" leaves is no word of an earlier row.
             {u"double equals not equals", u"== !="},
             {u"triple equals equals", u"=== equals"}});
  setDictionary({{u"plus"_s, u"api sql"_s}});
  expect({u"plus", u"API SQL"});
}

}  // namespace
}  // namespace vemo
