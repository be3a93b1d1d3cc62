#include "shaping/SpokenFileName.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <map>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(SpokenFileNameTest, EverySpokenFormLeadsToItsExtension) {
  const std::map<QString, QStringList> forms = {
      {u"swift"_s, {u"shift"_s, u"swif"_s, u"swiff"_s, u"sweep"_s, u"swift"_s}},
      {u"ts"_s, {u"ts"_s, u"typescript"_s, u"tee ess"_s, u"t.s"_s}},
      {u"js"_s, {u"js"_s, u"javascript"_s, u"jay ess"_s, u"j.s"_s}},
      {u"tsx"_s, {u"tsx"_s}},
      {u"jsx"_s, {u"jsx"_s}},
      {u"py"_s, {u"py"_s, u"pie"_s, u"pi"_s, u"python"_s}},
      {u"json"_s, {u"json"_s, u"jason"_s, u"j son"_s}},
      {u"md"_s, {u"md"_s, u"markdown"_s}},
      {u"html"_s, {u"html"_s}},
      {u"css"_s, {u"css"_s}},
      {u"scss"_s, {u"scss"_s}},
      {u"rs"_s, {u"rs"_s, u"rust"_s}},
      {u"go"_s, {u"go"_s}},
      {u"kt"_s, {u"kt"_s, u"kotlin"_s}},
      {u"java"_s, {u"java"_s}},
      {u"c"_s, {u"c"_s}},
      {u"cpp"_s, {u"cpp"_s}},
      {u"h"_s, {u"h"_s}},
      {u"m"_s, {u"m"_s}},
      {u"sh"_s, {u"sh"_s}},
      {u"yaml"_s, {u"yaml"_s, u"yml"_s, u"yamel"_s}},
      {u"toml"_s, {u"toml"_s}},
      {u"sql"_s, {u"sql"_s, u"sequel"_s}},
      {u"graphql"_s, {u"graphql"_s}},
      {u"env"_s, {u"env"_s}},
      {u"vue"_s, {u"vue"_s}},
      {u"svelte"_s, {u"svelte"_s}},
  };
  qsizetype count = 0;
  for (const auto& [extension, spokenForms] : forms) {
    for (const QString& form : spokenForms) {
      EXPECT_EQ(normalizeExtension(form), extension) << form.toStdString();
      EXPECT_EQ(normalizeExtension(u" \n"_s + form.toUpper() + u"\t"_s), extension);
      const QString pattern = u"|"_s + withSpokenExtensions(u"EXT") + u"|"_s;
      EXPECT_TRUE(pattern.contains(u"|"_s + form + u"|"_s)) << form.toStdString();
    }
    count += spokenForms.size();
  }
  EXPECT_EQ(count, 48);
  EXPECT_EQ(withSpokenExtensions(u"EXT").count(u'|'), 47);
}

TEST(SpokenFileNameTest, AnUnknownExtensionComesBackInItsNormalShape) {
  EXPECT_EQ(normalizeExtension(u" T S\n"_s), u"t s"_s);
  EXPECT_EQ(normalizeExtension(u"Txt"_s), u"txt"_s);
}

TEST(SpokenFileNameTest, TheWordTableKnowsThisProgramsOwnFiles) {
  const std::map<QString, QStringList> stems = {
      {u"VemoApp"_s,
       {u"memo app"_s, u"memoapp"_s, u"demo app"_s, u"demoapp"_s, u"vemo app"_s, u"vemoapp"_s}},
      {u"Vemo"_s, {u"memo"_s, u"demo"_s}},
      {u"MainWindowView"_s, {u"main window view"_s, u"mainwindowview"_s}},
      {u"AppState"_s, {u"app state"_s, u"appstate"_s}},
      {u"Config"_s, {u"config"_s}},
      {u"RecordingHUD"_s, {u"recording hud"_s, u"recordinghud"_s}},
      {u"TextInjector"_s, {u"text injector"_s, u"textinjector"_s}},
      {u"AuthManager"_s, {u"auth manager"_s, u"authmanager"_s}},
      {u"HotkeyManager"_s, {u"hotkey manager"_s, u"hotkeymanager"_s}},
      {u"PermissionsManager"_s, {u"permissions manager"_s, u"permissionsmanager"_s}},
      {u"ContextProcessor"_s, {u"context processor"_s, u"contextprocessor"_s}},
  };
  for (const auto& [stem, spokenForms] : stems) {
    for (const QString& form : spokenForms) {
      EXPECT_EQ(spokenToFileName(form), stem) << form.toStdString();
      EXPECT_EQ(spokenToFileName(u"\n "_s + form.toUpper() + u" "_s), stem);
    }
  }
}

TEST(SpokenFileNameTest, OtherWordsArePutTogetherEachWithACapital) {
  EXPECT_EQ(spokenToFileName(u"login view"_s), u"LoginView"_s);
  EXPECT_EQ(spokenToFileName(u" the  new thing "_s), u"TheNewThing"_s);
  EXPECT_EQ(spokenToFileName(u"loginView"_s), u"LoginView"_s);
  EXPECT_EQ(spokenToFileName(u"some-file_x iOS"_s), u"Some-file_xIOS"_s);
  EXPECT_EQ(spokenToFileName(u"app  state"_s), u"AppState"_s);
  EXPECT_EQ(spokenToFileName(u"two\nlines here"_s), u"Two\nlinesHere"_s);
  EXPECT_EQ(spokenToFileName(u" "_s), u""_s);
}

TEST(SpokenFileNameTest, ACapitalIsMadeOfTheFirstCharacterAlone) {
  EXPECT_EQ(capitalized(u"john.doe"_s), u"John.doe"_s);
  EXPECT_EQ(capitalized(u"éA"_s), u"ÉA"_s);
  EXPECT_EQ(capitalized(u"\u017Fx"_s), u"Sx"_s);
  EXPECT_EQ(capitalized(u"1a"_s), u"1a"_s);
  EXPECT_EQ(capitalized(u""_s), u""_s);
}

}  // namespace
}  // namespace vemo
