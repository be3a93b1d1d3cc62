#include "integrations/WorkspaceFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStringList>
#include <random>
#include <set>

#include "PlainLookups.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

WorkspaceFiles filesNamed(const QStringList& names) {
  WorkspaceFiles files(u"/project"_s);
  const auto folder = files.addFolder("/project");
  for (const QString& name : names) files.addFile(folder, name.toStdString());
  files.finish();
  return files;
}

std::vector<WorkspaceFile> recordsOf(const WorkspaceFiles& files) {
  std::vector<WorkspaceFile> records;
  for (std::size_t place = 0; place < files.size(); ++place) records.push_back(files[place]);
  return records;
}

QString found(const WorkspaceFiles& files, const QString& name, const QString& ext) {
  const auto place = files.find(name, ext);
  return place ? files.fileName(*place) : u"(nothing)"_s;
}

TEST(WorkspaceFilesTest, ARecordHoldsAFilesNameInItsParts) {
  WorkspaceFiles files(u"/home/u/My Project"_s);
  const auto folder = files.addFolder("/home/u/My Project/Sources");
  files.addFile(folder, "AppState.Swift");
  files.finish();
  const WorkspaceFile file = files[0];
  EXPECT_EQ(file.fileName, u"AppState.Swift"_s);
  EXPECT_EQ(file.baseName, u"AppState"_s);
  EXPECT_EQ(file.ext, u"swift"_s);
  EXPECT_EQ(file.fullPath, u"/home/u/My Project/Sources/AppState.Swift"_s);
  EXPECT_EQ(file.relativePath, u"Sources/AppState.Swift"_s);
  EXPECT_FALSE(file.id.isNull());
}

TEST(WorkspaceFilesTest, EveryOccurrenceOfTheRootGoesFromTheRelativePath) {
  WorkspaceFiles files(u"/a"_s);
  files.addFile(files.addFolder("/a/x/a"), "b.c");
  files.finish();
  EXPECT_EQ(files[0].relativePath, u"xb.c"_s);

  WorkspaceFiles slashed(u"/a/"_s);
  slashed.addFile(slashed.addFolder("/a"), "b.c");
  slashed.finish();
  EXPECT_EQ(slashed[0].relativePath, u"/a/b.c"_s) << "no path has the root plus a slash in it";
}

TEST(WorkspaceFilesTest, IdsDifferByFileAndByScanAndStayForOneScan) {
  const auto one = filesNamed({u"a.c"_s, u"a.c"_s});
  const auto other = filesNamed({u"a.c"_s, u"a.c"_s});
  EXPECT_EQ(one[0].id, one[0].id);
  EXPECT_EQ((std::set{one[0].id, one[1].id, other[0].id, other[1].id}).size(), 4U);
  EXPECT_EQ(one[0].id.variant(), QUuid::DCE);
}

TEST(WorkspaceFilesTest, ANameWithTwoDotsKeepsTheFirstInItsBaseName) {
  const auto files = filesNamed({u"app.config.TS"_s});
  EXPECT_EQ(files[0].baseName, u"app.config"_s);
  EXPECT_EQ(files[0].ext, u"ts"_s);
  EXPECT_EQ(found(files, u"app.config"_s, u"ts"_s), u"app.config.TS"_s);
  EXPECT_EQ(found(files, u"app"_s, u"config.ts"_s), u"app.config.TS"_s)
      << "the whole name is what is compared first";
}

TEST(WorkspaceFilesTest, ANameWithoutExtensionIsAllBaseName) {
  const auto files = filesNamed({u"Makefile"_s, u"odd."_s});
  EXPECT_EQ(files[0].baseName, u"Makefile"_s);
  EXPECT_EQ(files[0].ext, u""_s);
  EXPECT_EQ(files[1].baseName, u"odd."_s);
  EXPECT_EQ(found(files, u"makefile"_s, u""_s), u"Makefile"_s);
  EXPECT_EQ(found(files, u"makefile"_s, u"mk"_s), u"(nothing)"_s);
  EXPECT_EQ(found(files, u"odd"_s, u""_s), u"odd."_s);
}

TEST(WorkspaceFilesTest, FooBarFindsAllFourSpellingsWhicheverStandsFirst) {
  const QStringList names{u"foo-bar.ts"_s, u"foo_bar.ts"_s, u"foobar.ts"_s, u"myfoobar.ts"_s};
  for (const QString& first : names) {
    QStringList order{first};
    for (const QString& name : names)
      if (name != first) order.append(name);
    EXPECT_EQ(found(filesNamed(order), u"foo bar"_s, u"ts"_s), first);
    EXPECT_EQ(found(filesNamed({first}), u"Foo Bar"_s, u"TS"_s), first);
  }
}

TEST(WorkspaceFilesTest, AnExactHitLaterInTheListBeatsALooseHitEarlierInIt) {
  EXPECT_EQ(found(filesNamed({u"UserList.ts"_s, u"user.tsx"_s, u"User.ts"_s}), u"user"_s, u"ts"_s),
            u"User.ts"_s);
}

TEST(WorkspaceFilesTest, ALooseHitNeedsTheExtensionWhenThereIsOne) {
  const auto files = filesNamed({u"LoginView.swift"_s, u"LoginViewModel.ts"_s});
  EXPECT_EQ(found(files, u"login view"_s, u"ts"_s), u"LoginViewModel.ts"_s);
  EXPECT_EQ(found(files, u"login view"_s, u""_s), u"LoginView.swift"_s);
  EXPECT_EQ(found(files, u"login view"_s, u"py"_s), u"(nothing)"_s);
}

TEST(WorkspaceFilesTest, BothArgumentsAreTrimmedAndLowerCased) {
  EXPECT_EQ(found(filesNamed({u"ÄRGER.TS"_s}), u"\n ärger\t"_s, u" Ts "_s), u"ÄRGER.TS"_s);
}

TEST(WorkspaceFilesTest, AnEmptyIndexFindsNothing) {
  EXPECT_EQ(WorkspaceFiles().find(u"a"_s, u"ts"_s), std::nullopt);
  EXPECT_EQ(filesNamed({}).find(u""_s, u""_s), std::nullopt);
}

TEST(WorkspaceFilesTest, HalfACharacterFindsNothing) {
  const auto files = filesNamed({u"a?.ts"_s, u"\uFFFD.ts"_s});
  EXPECT_EQ(files.find(QString(QChar(0xD83D)), u"ts"_s), std::nullopt);
  EXPECT_EQ(files.find(u"a"_s, QString(QChar(0xDC00))), std::nullopt);
}

TEST(WorkspaceFilesTest, LongNamesAndQueriesDoNoHarm) {
  const auto files = filesNamed({QString(255, u'a') + u".ts"_s, QString(100'000, u'b')});
  EXPECT_EQ(files.size(), 1U) << "no file system has the second";
  EXPECT_EQ(files.find(QString(10'000, u'a'), u"ts"_s), std::nullopt);
  EXPECT_EQ(files.find(QString(200, u'a'), u"ts"_s), 0U);
  EXPECT_EQ(files.find(u"a"_s, QString(10'000, u'.')), std::nullopt);
}

TEST(WorkspaceFilesTest, AFinalSigmaIsLowerCasedInItsPlaceInTheWholeNameAndInTheBaseName) {
  const auto files = filesNamed({u"ΟΔΟΣ.ts"_s, u"ΟΔΟΣx.ts"_s});
  const auto records = recordsOf(files);
  for (const auto& name : {u"οδος"_s, u"οδοσ"_s, u"ΟΔΟΣ"_s})
    EXPECT_EQ(files.find(name, u"ts"_s), plain::findFile(records, name, u"ts"_s));
}

TEST(WorkspaceFilesTest, OfAFinalSigmaAndAnotherTheFirstInTheListIsFound) {
  EXPECT_EQ(filesNamed({u"ΟΔΟΣ.ts"_s, u"οδοσ.ts"_s}).find(u"οδοσ"_s, u"ts"_s), 0U);
  EXPECT_EQ(filesNamed({u"οδοσ.ts"_s, u"ΟΔΟΣ.ts"_s}).find(u"οδοσ"_s, u"ts"_s), 0U);
  EXPECT_EQ(filesNamed({u"a-ΟΔΟΣ.ts"_s, u"a_οδος.ts"_s}).find(u"a οδος"_s, u"ts"_s), 0U);
  EXPECT_EQ(filesNamed({u"a_οδος.ts"_s, u"a-ΟΔΟΣ.ts"_s}).find(u"a οδος"_s, u"ts"_s), 0U);
}

class WorkspaceFilesProperty : public testing::Test {
 protected:
  QString anyOf(const QStringList& parts, int longest) {
    QString text;
    for (auto length = 1 + random() % static_cast<unsigned>(longest); length > 0; --length)
      text += parts[static_cast<qsizetype>(random() % static_cast<unsigned>(parts.size()))];
    return text;
  }

  std::mt19937 random{8201};
};

TEST_F(WorkspaceFilesProperty, LookupsGiveWhatAPlainWalkGives) {
  const QStringList nameParts{u"a"_s, u"B"_s, u"foo"_s, u"Bar"_s, u"-"_s, u"_"_s,
                              u"."_s, u" "_s, u"Σ"_s,   u"É"_s,   u"İ"_s, u"ts"_s};
  const QStringList extensions{u"ts"_s, u"TS"_s, u"swift"_s, u"ΣΣ"_s, u""_s, u"d.ts"_s};
  const QStringList spokenParts{u"a"_s, u"b"_s, u"foo"_s, u"bar"_s, u" "_s, u"-"_s,
                                u"."_s, u"Σ"_s, u"σ"_s,   u"ς"_s,   u"é"_s, u"i̇"_s};
  int hits = 0;
  for (int round = 0; round < 300; ++round) {
    QStringList names;
    for (auto count = random() % 200; count > 0; --count) {
      const QString ext = anyOf(extensions, 1);
      names.append(anyOf(nameParts, 4) + (ext.isEmpty() ? u""_s : u'.' + ext));
    }
    const auto files = filesNamed(names);
    const auto records = recordsOf(files);
    for (int query = 0; query < 200; ++query) {
      const QString name = random() % 20 == 0 ? u""_s : anyOf(spokenParts, 4);
      const QString ext = anyOf(extensions, 1);
      const auto place = files.find(name, ext);
      const auto expected = plain::findFile(records, name, ext);
      ASSERT_EQ(place.has_value(), expected.has_value())
          << name.toStdString() << " . " << ext.toStdString();
      if (place) {
        ASSERT_EQ(*place, *expected) << name.toStdString() << " . " << ext.toStdString();
        ++hits;
      }
    }
  }
  EXPECT_GT(hits, 15'000);
  EXPECT_LT(hits, 58'000);
}

TEST_F(WorkspaceFilesProperty, AnIndexOfManyBlocksGivesWhatAPlainWalkGives) {
  QStringList names;
  for (int i = 0; i < 5000; ++i) {
    QString name;
    for (auto length = 3 + random() % 10; length > 0; --length)
      name += QChar(static_cast<char16_t>(u'a' + random() % 26));
    names.append(name + (i % 3 ? u".ts"_s : u".py"_s));
  }
  const auto files = filesNamed(names);
  const auto records = recordsOf(files);
  int hits = 0;
  for (int query = 0; query < 300; ++query) {
    const QString& name = names[static_cast<qsizetype>(random() % 5000)];
    const auto part =
        name.mid(static_cast<qsizetype>(random() % 3), static_cast<qsizetype>(1 + random() % 5));
    const auto place = files.find(part, u"ts"_s);
    const auto expected = plain::findFile(records, part, u"ts"_s);
    ASSERT_EQ(place.has_value(), expected.has_value()) << part.toStdString();
    if (!place) continue;
    ASSERT_EQ(*place, *expected) << part.toStdString();
    ++hits;
  }
  EXPECT_GT(hits, 100);
}

}  // namespace
}  // namespace vemo
