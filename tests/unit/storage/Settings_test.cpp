#include "storage/Settings.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <array>
#include <random>

#include "StorageTest.h"
#include "base/Json.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class SettingsTest : public StorageTest {
 protected:
  const QString file = path(u"config/vemo/settings.json"_s);

  void makeFolder() { ASSERT_TRUE(QDir().mkpath(path(u"config/vemo"_s))); }

  void writeFile(const QByteArray& content) {
    makeFolder();
    write(file, content);
  }

  QStringList folderContent() const {
    return QDir(path(u"config/vemo"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
  }
};

TEST_F(SettingsTest, AValueOfEachTypeIsThereAfterARestart) {
  const QDateTime date(QDate(2026, 3, 14), QTime(9, 26, 53, 589), Qt::UTC);
  {
    Settings settings(file, debugLog);
    settings.set(keys::isEnabled, false);
    settings.set(keys::dictationLanguage, u"hi \u0000 \U0001F44D \"\\\n"_s);
    settings.set(keys::recentDictations, QByteArray("[\"नमस्ते\"]"));
    settings.set(keys::telemetryFirstLaunchAt, date);
  }
  const Settings settings(file, debugLog);
  EXPECT_EQ(settings.get(keys::isEnabled), false);
  EXPECT_EQ(settings.get(keys::dictationLanguage), u"hi \u0000 \U0001F44D \"\\\n"_s);
  EXPECT_EQ(settings.get(keys::recentDictations), QByteArray("[\"नमस्ते\"]"));
  EXPECT_EQ(settings.get(keys::telemetryFirstLaunchAt), date);
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(SettingsTest, TheFileCanBeReadByAPerson) {
  {
    Settings settings(file, debugLog);
    settings.set(keys::isEnabled, true);
    settings.set(keys::dictationLanguage, u"hi"_s);
    settings.set(keys::recentDictations, QByteArray("[]"));
    settings.set(keys::slackCachedUsers, QByteArray("\xff\x00", 2));
    settings.set(keys::telemetryFirstLaunchAt,
                 QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53), Qt::UTC));
  }
  EXPECT_EQ(contentOf(file),
            "{\n"
            "    \"dictationLanguage\": \"hi\",\n"
            "    \"isEnabled\": true,\n"
            "    \"recentDictations\": {\n"
            "        \"data\": \"[]\"\n"
            "    },\n"
            "    \"slackCachedUsers\": {\n"
            "        \"base64\": \"/wA=\"\n"
            "    },\n"
            "    \"telemetryFirstLaunchAt\": {\n"
            "        \"date\": \"2026-03-14T09:26:53.000Z\"\n"
            "    }\n"
            "}\n");
}

TEST_F(SettingsTest, AnyBytesSurviveARestart) {
  const std::array<QByteArray, 6> values{
      QByteArray(),           QByteArray("\xef\xbb\xbf[]"), QByteArray("\xed\xa0\x80"),
      QByteArray("\0a\0", 3), QByteArray("\xc0\x80"),       QByteArray("\xef\xbf\xbd")};
  for (const QByteArray& value : values) {
    Settings(file, debugLog).set(keys::slackCachedUsers, value);
    EXPECT_EQ(Settings(file, debugLog).get(keys::slackCachedUsers), value) << value.toHex().data();
  }
}

TEST_F(SettingsTest, ADateOfAnotherZoneIsTheSameMoment) {
  const QDateTime date(QDate(2026, 3, 14), QTime(9, 0), Qt::OffsetFromUTC, 19800);
  Settings(file, debugLog).set(keys::telemetryFirstLaunchAt, date);
  EXPECT_EQ(Settings(file, debugLog).get(keys::telemetryFirstLaunchAt)->toMSecsSinceEpoch(),
            date.toMSecsSinceEpoch());
}

TEST_F(SettingsTest, ADateThatCanNotBeWrittenInUtcIsAbsentAndStaysInTheFile) {
  writeFile(R"({"telemetryFirstLaunchAt":{"date":"9999-12-31T23:59:59.999-14:00"}})");
  Settings settings(file, debugLog);
  EXPECT_EQ(settings.get(keys::telemetryFirstLaunchAt), std::nullopt);
  settings.set(keys::isEnabled, true);
  settings.waitUntilWritten();
  EXPECT_TRUE(contentOf(file).contains("9999-12-31T23:59:59.999-14:00"));
}

TEST_F(SettingsTest, AValueOfAnotherTypeReadsAsAbsentAndIsPresent) {
  Settings settings(file, debugLog);
  settings.set(keys::String{u"integrationSlack"}, u"no"_s);
  EXPECT_EQ(settings.get(keys::integrationSlack), std::nullopt);
  EXPECT_TRUE(settings.get(keys::integrationSlack, true));
  EXPECT_TRUE(settings.contains(keys::integrationSlack));
  EXPECT_FALSE(settings.contains(keys::integrationVSCode));
}

TEST_F(SettingsTest, ARemovedValueIsAbsentNowAndAfterARestart) {
  Settings(file, debugLog).set(keys::authEmail, u"a@b.example"_s);
  {
    Settings settings(file, debugLog);
    settings.remove(keys::authEmail);
    EXPECT_FALSE(settings.contains(keys::authEmail));
  }
  EXPECT_FALSE(Settings(file, debugLog).contains(keys::authEmail));
}

TEST_F(SettingsTest, ValuesOfUnknownFormSurviveARewriteUntouched) {
  const QByteArray unknown =
      R"({"aNumber":42,"big":9007199254740993,"nothing":null,"list":[1,"a",{"b":true}],)"
      R"("tagged":{"colour":"red"},"twoTags":{"data":"a","date":"b"},"badDate":{"date":"soon"},)"
      R"("badBase64":{"base64":"***"},"numericData":{"data":7},"half":0.5})";
  writeFile(unknown);
  {
    Settings settings(file, debugLog);
    EXPECT_TRUE(settings.contains(keys::Bool{u"aNumber"}));
    EXPECT_EQ(settings.get(keys::String{u"aNumber"}), std::nullopt);
    settings.set(keys::isEnabled, true);
  }
  auto expected = *parseJsonObject(unknown);
  expected.insert(u"isEnabled"_s, true);
  EXPECT_EQ(parseJsonObject(contentOf(file)), expected);
}

TEST_F(SettingsTest, OnlyTheUserCanReadTheFile) {
  const mode_t previousMask = ::umask(0);
  Settings(file, debugLog).set(keys::isEnabled, true);
  ::umask(previousMask);
  EXPECT_EQ(modeOf(file), 0600u);
  EXPECT_EQ(modeOf(path(u"config/vemo"_s)), 0700u);
  EXPECT_EQ(modeOf(path(u"config"_s)), 0700u);
}

TEST_F(SettingsTest, AFileThatOthersCouldReadBecomesPrivateWithTheNextWrite) {
  writeFile("{}");
  ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0644), 0);
  Settings(file, debugLog).set(keys::isEnabled, true);
  EXPECT_EQ(modeOf(file), 0600u);
}

TEST_F(SettingsTest, ALinkToAFileKeptElsewhereStaysALink) {
  makeFolder();
  const QString target = path(u"dotfiles.json"_s);
  write(target, R"({"isEnabled":false})");
  ASSERT_TRUE(QFile::link(target, file));
  Settings(file, debugLog).set(keys::isEnabled, true);
  EXPECT_TRUE(QFileInfo(file).isSymLink());
  EXPECT_EQ(parseJsonObject(contentOf(target))->value(u"isEnabled"), true);
}

TEST_F(SettingsTest, AnObserverHearsEveryChangeAndNothingElse) {
  Settings settings(file, debugLog);
  QStringList heard;
  auto observation =
      settings.changed.observe([&heard](const QString& name) { heard.append(name); });
  settings.set(keys::isEnabled, true);
  settings.set(keys::isEnabled, true);
  settings.remove(keys::authEmail);
  settings.set(keys::isEnabled, false);
  settings.remove(keys::isEnabled);
  EXPECT_THAT(heard, ElementsAre(u"isEnabled"_s, u"isEnabled"_s, u"isEnabled"_s));
  observation.reset();
  settings.set(keys::isEnabled, true);
  EXPECT_THAT(heard, SizeIs(3));
}

TEST_F(SettingsTest, AnObserverMayChangeSettingsAndEndItself) {
  Settings settings(file, debugLog);
  Observation observation;
  observation = settings.changed.observe([&](const QString&) {
    observation.reset();
    settings.set(keys::authEmail, u"changed inside"_s);
  });
  settings.set(keys::isEnabled, true);
  EXPECT_EQ(settings.get(keys::authEmail), u"changed inside"_s);
}

TEST_F(SettingsTest, ReadingAloneWritesNothing) {
  {
    const Settings settings(file, debugLog);
  }
  EXPECT_FALSE(QFileInfo::exists(path(u"config"_s)));
}

TEST_F(SettingsTest, ManyChangesInARowEndInTheLastState) {
  Settings settings(file, debugLog);
  for (int number = 0; number < 2000; ++number)
    settings.set(keys::authEmail, QString::number(number));
  settings.waitUntilWritten();
  EXPECT_EQ(Settings(file, debugLog).get(keys::authEmail), u"1999"_s);
  EXPECT_THAT(folderContent(), ElementsAre(u"settings.json"_s));
}

class DamagedSettingsTest : public SettingsTest, public testing::WithParamInterface<const char*> {};

TEST_P(DamagedSettingsTest, ADamagedFileIsKeptAsideAndTheProgramStartsOnAbsentValues) {
  writeFile(GetParam());
  {
    Settings settings(file, debugLog);
    EXPECT_FALSE(settings.contains(keys::isEnabled));
    settings.set(keys::dictationLanguage, u"hi"_s);
  }
  EXPECT_EQ(contentOf(path(u"config/vemo/settings.damaged-1.json"_s)), GetParam());
  EXPECT_EQ(Settings(file, debugLog).get(keys::dictationLanguage), u"hi"_s);
  EXPECT_THAT(logged(), ElementsAre(u"settings: damaged file kept as settings.damaged-1.json, "
                                    "starting without settings"_s));
}

INSTANTIATE_TEST_SUITE_P(Forms, DamagedSettingsTest,
                         testing::Values("", "not JSON", "{\"isEnabled\": tr", "[true]", "\"text\"",
                                         "null", "{} trailing", "{\"a\":\"\xff\xfe\"}",
                                         "{\"isEnabled\":true}{"));

TEST_F(SettingsTest, ADamagedFileNeverReplacesAnEarlierOne) {
  for (int number = 1; number <= 3; ++number) {
    writeFile("damage " + QByteArray::number(number));
    const Settings settings(file, debugLog);
  }
  for (int number = 1; number <= 3; ++number) {
    EXPECT_EQ(contentOf(path(u"config/vemo/settings.damaged-%1.json"_s.arg(number))),
              "damage " + QByteArray::number(number));
  }
}

TEST_F(SettingsTest, AFileOfTheLargestSizeIsReadAndOneByteMoreIsDamage) {
  QByteArray largest = R"({"isEnabled":true})";
  largest += QByteArray(SettingsFile::maximumSize - largest.size(), ' ');
  writeFile(largest);
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), true);
  writeFile(largest + ' ');
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), std::nullopt);
  EXPECT_EQ(QFileInfo(path(u"config/vemo/settings.damaged-1.json"_s)).size(),
            SettingsFile::maximumSize + 1);
}

TEST_F(SettingsTest, DeeplyNestedJsonIsDamageAndNoCrash) {
  writeFile("{\"a\":" + QByteArray(1'000'000, '['));
  EXPECT_FALSE(Settings(file, debugLog).contains(keys::isEnabled));
  EXPECT_TRUE(QFileInfo::exists(path(u"config/vemo/settings.damaged-1.json"_s)));
}

TEST_F(SettingsTest, APipeOrAFolderInThePlaceOfTheFileIsMovedAside) {
  makeFolder();
  ASSERT_EQ(::mkfifo(QFile::encodeName(file).constData(), 0600), 0);
  Settings(file, debugLog).set(keys::isEnabled, true);
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), true);
  ASSERT_TRUE(QFile::remove(file));
  ASSERT_TRUE(QDir().mkpath(file + u"/inside"_s));
  Settings(file, debugLog).set(keys::isEnabled, true);
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), true);
  EXPECT_TRUE(QFileInfo(path(u"config/vemo/settings.damaged-2.json/inside"_s)).isDir());
}

TEST_F(SettingsTest, AFullDiskIsLoggedOnceAndTheNextChangeTriesAgain) {
  Settings settings(file, debugLog);
  settings.set(keys::authEmail, u"before"_s);
  settings.waitUntilWritten();
  {
    const FullDisk disk(8192);
    settings.set(keys::recentDictations, QByteArray(100'000, 'x'));
    settings.waitUntilWritten();
    settings.set(keys::authEmail, u"during"_s);
    settings.waitUntilWritten();
  }
  EXPECT_EQ(settings.get(keys::recentDictations)->size(), 100'000);
  EXPECT_EQ(Settings(file, debugLog).get(keys::authEmail), u"before"_s);
  EXPECT_THAT(folderContent(), ElementsAre(u"settings.json"_s));
  EXPECT_THAT(logged(),
              ElementsAre(testing::ResultOf([](const QString& line) { return line.toStdString(); },
                                            testing::StartsWith("settings: write failed ("))));

  settings.set(keys::authEmail, u"after"_s);
  settings.waitUntilWritten();
  const Settings reopened(file, debugLog);
  EXPECT_EQ(reopened.get(keys::authEmail), u"after"_s);
  EXPECT_EQ(reopened.get(keys::recentDictations)->size(), 100'000);
  EXPECT_EQ(logged().last(), u"settings: writing works again"_s);
}

TEST_F(SettingsTest, InAReadOnlyFolderTheValuesLiveOnInMemory) {
  writeFile(R"({"isEnabled":true})");
  Settings settings(file, debugLog);
  debugLog(u"log folder made"_s);
  debugLog.waitUntilWritten();
  {
    const ReadOnlyFolder folder(path(u"config/vemo"_s));
    settings.set(keys::isEnabled, false);
    settings.waitUntilWritten();
    settings.set(keys::authEmail, u"kept"_s);
    settings.waitUntilWritten();
    EXPECT_EQ(settings.get(keys::authEmail), u"kept"_s);
  }
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), true);
  settings.set(keys::dictationLanguage, u"hi"_s);
  settings.waitUntilWritten();
  EXPECT_EQ(Settings(file, debugLog).get(keys::authEmail), u"kept"_s);
}

TEST_F(SettingsTest, ADamagedFileThatCanNotBeMovedIsNotOverwritten) {
  writeFile("damaged");
  std::optional<Settings> settings;
  {
    const ReadOnlyFolder folder(path(u"config/vemo"_s));
    settings.emplace(file, debugLog);
  }
  EXPECT_EQ(contentOf(file), "damaged");
  settings->set(keys::isEnabled, true);
  settings->waitUntilWritten();
  EXPECT_EQ(contentOf(path(u"config/vemo/settings.damaged-1.json"_s)), "damaged");
  EXPECT_EQ(Settings(file, debugLog).get(keys::isEnabled), true);
}

TEST_F(SettingsTest, WithoutAPlaceForTheFileSettingsLiveInMemory) {
  Settings settings(QString(), debugLog);
  settings.set(keys::isEnabled, true);
  settings.waitUntilWritten();
  EXPECT_EQ(settings.get(keys::isEnabled), true);
  EXPECT_THAT(logged(), ElementsAre(u"settings: write failed (there is no place for the file), "
                                    "the next change tries again"_s));
}

TEST_F(SettingsTest, WhatAKillLeftUnfinishedIsRemovedAndFilesOfTheUserStay) {
  writeFile("{}");
  write(file + u".unfinished-aBcDeF"_s, "half");
  write(file + u".backup"_s, "of the user");
  {
    const Settings settings(file, debugLog);
  }
  EXPECT_THAT(folderContent(), ElementsAre(u"settings.json"_s, u"settings.json.backup"_s));
}

/// Starts settings_writer on the file and ends it by SIGKILL after it has told of `changes`
/// changes.
void writeAndKill(const QString& file, int changes) {
  std::array<int, 2> output{};
  ASSERT_EQ(::pipe2(output.data(), O_CLOEXEC), 0);
  const QByteArray argument = QFile::encodeName(file);
  const pid_t child = ::fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    ::dup2(output[1], STDOUT_FILENO);
    ::execl(SETTINGS_WRITER, SETTINGS_WRITER, argument.constData(), nullptr);
    ::_exit(127);
  }
  ::close(output[1]);
  char byte = 0;
  for (int change = 0; change < changes; ++change) ASSERT_EQ(::read(output[0], &byte, 1), 1);
  ::kill(child, SIGKILL);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  ::close(output[0]);
}

TEST_F(SettingsTest, AKillAtAnyMomentLeavesTheOldFileOrTheNew) {
  std::mt19937 random(20260314);
  std::uniform_int_distribution<int> changes(1, 25);
  Settings(file, debugLog).set(keys::recentDictations, QByteArray("-1 ").repeated(5000));
  for (int round = 0; round < 60; ++round) {
    writeAndKill(file, changes(random));
    const auto state = Settings(file, debugLog).get(keys::recentDictations);
    ASSERT_TRUE(state);
    const QByteArray number = state->left(state->indexOf(' ') + 1);
    ASSERT_EQ(*state, number.repeated(5000));
  }
  EXPECT_THAT(folderContent(), ElementsAre(u"settings.json"_s));
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
}  // namespace vemo
