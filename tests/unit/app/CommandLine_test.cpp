#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(CommandLineTest, WithoutAWordTheProgramRuns) {
  const auto commandLine = parseCommandLine({});
  ASSERT_TRUE(commandLine);
  EXPECT_TRUE(std::holds_alternative<RunCommand>(*commandLine));
}

TEST(CommandLineTest, StartedAtLoginTheProgramRunsToo) {
  const auto commandLine = parseCommandLine({u"--launched-at-login"_s});
  ASSERT_TRUE(commandLine);
  EXPECT_TRUE(std::holds_alternative<RunCommand>(*commandLine));
  EXPECT_FALSE(parseCommandLine({u"--launched-at-login"_s, u"twice"_s}));
}

TEST(CommandLineTest, EachRemoteCommandIsTakenAsItStands) {
  for (const auto& name : {u"toggle"_s, u"start"_s, u"stop"_s, u"status"_s, u"quit"_s}) {
    const auto commandLine = parseCommandLine({name});
    ASSERT_TRUE(commandLine) << name.toStdString();
    EXPECT_EQ(std::get<RemoteCommand>(*commandLine).name, name);
  }
}

TEST(CommandLineTest, WordsWithAHyphenAreOneOperation) {
  EXPECT_EQ(std::get<RemoteCommand>(*parseCommandLine({u"sign-in"_s})).name, u"signIn"_s);
  EXPECT_EQ(std::get<RemoteCommand>(*parseCommandLine({u"sign-out"_s})).name, u"signOut"_s);
  EXPECT_EQ(std::get<RemoteCommand>(*parseCommandLine({u"cancel-sign-in"_s})).name,
            u"cancelSignIn"_s);
}

TEST(CommandLineTest, AnAddressIsOpenedByTheProgramWhetherItRunsOrNot) {
  const auto command = std::get<RunCommand>(*parseCommandLine({u"open"_s, u"vemo://a b"_s}));
  EXPECT_EQ(command.address, u"vemo://a b"_s);
  EXPECT_EQ(std::get<RunCommand>(*parseCommandLine({})).address, QString());
}

TEST(CommandLineTest, OpeningNoOrSeveralAddressesIsRefused) {
  EXPECT_FALSE(parseCommandLine({u"open"_s}));
  EXPECT_FALSE(parseCommandLine({u"open"_s, u"vemo://a"_s, u"vemo://b"_s}));
}

TEST(CommandLineTest, HelpNamesEveryCommandAndTheVersionHasItsBuild) {
  const QString help = std::get<PrintCommand>(*parseCommandLine({u"--help"_s})).text;
  for (const auto& name : {u"toggle"_s, u"start"_s, u"stop"_s, u"status"_s, u"quit"_s})
    EXPECT_TRUE(help.contains(name)) << name.toStdString();
  const QString version = std::get<PrintCommand>(*parseCommandLine({u"--version"_s})).text;
  EXPECT_TRUE(version.startsWith(u"Vemo "_s));
  EXPECT_TRUE(version.endsWith(u")\n"_s));
}

TEST(CommandLineTest, ACheckTellsTheVersionAsItIsShown) {
  EXPECT_EQ(std::get<CheckCommand>(*parseCommandLine({u"--check"_s})).text,
            std::get<PrintCommand>(*parseCommandLine({u"--version"_s})).text);
}

TEST(CommandLineTest, AnythingElseIsRefusedWithWhatWasSaid) {
  for (const QStringList& arguments :
       {QStringList{u"dance"_s}, {u"start"_s, u"now"_s}, {u""_s}, {u"--verbose"_s}}) {
    const auto commandLine = parseCommandLine(arguments);
    ASSERT_FALSE(commandLine);
    EXPECT_TRUE(commandLine.error().contains(arguments.join(u' ')));
    EXPECT_FALSE(commandLine.error().contains(u'\n'));
  }
}

}  // namespace
}  // namespace vemo
