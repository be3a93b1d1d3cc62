#include "platform/updater/Appcast.h"

#include <gtest/gtest.h>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

Appcast feed() {
  return {.serial = 3,
          .expires = QDateTime(QDate(2026, 3, 20), QTime(1, 2, 3), Qt::UTC),
          .days = 90,
          .items = {{.shown = {.displayVersion = u"1.4.0"_s,
                               .buildVersion = u"57"_s,
                               .isCritical = true,
                               .notes = u"# <New> & \"good\"\n- it"_s},
                     .build = 57,
                     .channel = u"beta"_s,
                     .minimumSystemVersion = u"12.8"_s,
                     .architecture = u"x86_64"_s,
                     .archive = u"vemo-57.tar.xz"_s,
                     .archiveSize = 10,
                     .archiveSignature = QByteArray(64, 's'),
                     .files = {{u"bin/vemo"_s, 5, QByteArray(32, 'h'), true},
                               {u"lib/libQt6Core.so.6"_s, 7, QByteArray(32, 'i'), false}}}}};
}

bool isRead(const QByteArray& xml) {
  return Appcast::read(xml).has_value();
}

QByteArray changed(const QByteArray& from, const QByteArray& to) {
  QByteArray xml = feed().write();
  EXPECT_TRUE(xml.contains(from)) << from.constData();
  return xml.replace(from, to);
}

}  // namespace

TEST(AppcastTest, IsReadAsItWasWritten) {
  const auto read = Appcast::read(feed().write());
  ASSERT_TRUE(read) << qPrintable(read.error());
  EXPECT_EQ(*read, feed());
}

TEST(AppcastTest, AFeedThatDoesNotSayForHowLongWasForAMonth) {
  const auto read = Appcast::read(changed("<days>90</days>", ""));
  ASSERT_TRUE(read) << qPrintable(read.error());
  EXPECT_EQ(read->days, 30U);
}

TEST(AppcastTest, DocumentTypesAndEntitiesAreRefused) {
  EXPECT_FALSE(isRead(changed("<rss", "<!DOCTYPE rss [<!ENTITY a \"b\">]><rss")));
  EXPECT_FALSE(isRead(changed("1.4.0", "&a;")));
}

TEST(AppcastTest, WhatIsMissingIsAnError) {
  EXPECT_FALSE(isRead({}));
  EXPECT_FALSE(isRead("<rss/>"));
  EXPECT_FALSE(isRead(feed().write().chopped(20)));
  EXPECT_FALSE(isRead(changed("<serial>3</serial>", "")));
  EXPECT_FALSE(isRead(changed("<expires>2026-03-20T01:02:03Z</expires>", "")));
  EXPECT_FALSE(isRead(changed("<build>57</build>", "")));
  EXPECT_FALSE(isRead(changed("bin/vemo", "bin/other")));
}

TEST(AppcastTest, PathsOutOfTheFolderAreRefused) {
  for (const char* path : {"../x", "/x", "a//b", "a/./b", ".hidden", "a\\b", "a/", "ä"})
    EXPECT_FALSE(isRead(changed("lib/libQt6Core.so.6", path))) << path;
  EXPECT_FALSE(isRead(changed("vemo-57.tar.xz", "a/vemo.tar.xz")));
  EXPECT_FALSE(isRead(changed("vemo-57.tar.xz", "https://e.com")));
  EXPECT_FALSE(isRead(changed("lib/libQt6Core.so.6", "bin/vemo"))) << "a file named twice";
}

TEST(AppcastTest, SizesAreHeldToTheirLimits) {
  const QByteArray largest = QByteArray::number(Appcast::largestArchive);
  const QByteArray more = QByteArray::number(Appcast::largestArchive + 1);
  EXPECT_TRUE(isRead(changed("length=\"10\"", "length=\"" + largest + '"')));
  EXPECT_FALSE(isRead(changed("length=\"10\"", "length=\"" + more + '"')));
  EXPECT_FALSE(isRead(changed("length=\"10\"", "length=\"0\"")));
  EXPECT_FALSE(isRead(changed("length=\"10\"", "length=\"-1\"")));
  EXPECT_FALSE(isRead(changed("size=\"5\"", "size=\"18446744073709551615\"")));
  EXPECT_FALSE(isRead(QByteArray(Appcast::largestFeed + 1, ' ')));
}

TEST(AppcastTest, CountsAndTextsAreHeldToTheirLimits) {
  const auto isReadWith = [](int items, int files, int letters) {
    Appcast appcast = feed();
    AppcastItem& item = appcast.items.front();
    item.shown.notes = QString(letters, u'n');
    while (static_cast<int>(item.files.size()) < files)
      item.files.push_back({u"lib/%1"_s.arg(item.files.size()), 1, QByteArray(32, 'h'), false});
    const AppcastItem each = item;
    appcast.items.resize(static_cast<std::size_t>(items), each);
    return isRead(appcast.write());
  };
  EXPECT_TRUE(isReadWith(100, 2, 10));
  EXPECT_FALSE(isReadWith(101, 2, 10));
  EXPECT_TRUE(isReadWith(1, 10'000, 10));
  EXPECT_FALSE(isReadWith(1, 10'001, 10));
  EXPECT_TRUE(isReadWith(1, 2, 64 * 1024));
  EXPECT_FALSE(isReadWith(1, 2, 64 * 1024 + 1));
}

TEST(AppcastTest, AFeedOfTheLargestSizeIsReadAndOneByteMoreIsNot) {
  QByteArray xml = feed().write();
  xml.append(QByteArray(Appcast::largestFeed - xml.size(), '\n'));
  EXPECT_TRUE(isRead(xml));
  EXPECT_FALSE(isRead(xml + '\n'));
}

TEST(AppcastTest, TheFilesOfAVersionTogetherAreHeldToALimit) {
  const QByteArray rest = QByteArray::number(Appcast::largestVersion - 5);
  const QByteArray more = QByteArray::number(Appcast::largestVersion - 4);
  EXPECT_TRUE(isRead(changed("size=\"7\"", "size=\"" + rest + '"')));
  EXPECT_FALSE(isRead(changed("size=\"7\"", "size=\"" + more + '"')));
}

TEST(AppcastTest, ANumberThatIsNoneIsAnError) {
  EXPECT_FALSE(isRead(changed("<serial>3", "<serial>-3")));
  EXPECT_FALSE(isRead(changed("<serial>3", "<serial>18446744073709551616")));
  EXPECT_TRUE(isRead(changed("<serial>3", "<serial>18446744073709551615")));
  EXPECT_FALSE(isRead(changed("<build>57", "<build>1.4")));
}

TEST(AppcastTest, AnUpdateThatPassesOverACriticalOneIsCriticalToWhomItFits) {
  Appcast appcast = feed();
  AppcastItem newer = appcast.items.front();
  newer.build = 58;
  newer.shown.isCritical = false;
  appcast.items.push_back(newer);
  const auto chosenBy = [&appcast](quint64 build) {
    return chooseUpdate(appcast, {.newerThan = build,
                                  .channels = {u"beta"_s},
                                  .systemVersion = u"12.8"_s,
                                  .architecture = u"x86_64"_s});
  };
  ASSERT_TRUE(chosenBy(56));
  EXPECT_EQ(chosenBy(56)->build, 58U);
  EXPECT_TRUE(chosenBy(56)->shown.isCritical);
  EXPECT_FALSE(chosenBy(57)->shown.isCritical);
  EXPECT_FALSE(chosenBy(58));
}

TEST(AppcastTest, ElementsThatNobodyKnowsArePassedOverToADepthOfSixteen) {
  const auto nested = [](int depth) {
    return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
  };
  // Below rss and channel.
  EXPECT_TRUE(isRead(changed("<serial>", nested(14) + "<serial>")));
  EXPECT_FALSE(isRead(changed("<serial>", nested(15) + "<serial>")));
  EXPECT_TRUE(isRead(changed("<serial>", nested(14).repeated(3) + "<serial>")));
  EXPECT_FALSE(isRead(changed("</rss>", nested(16) + "</rss>")));
  EXPECT_FALSE(isRead(nested(17)));
}

TEST(AppcastTest, ASystemThatDoesNotTellItsVersionTakesWhatItIsOffered) {
  const auto isOffered = [](const QString& system) {
    return chooseUpdate(feed(), {.newerThan = 1,
                                 .channels = {u"beta"_s},
                                 .systemVersion = system,
                                 .architecture = u"x86_64"_s})
        .has_value();
  };
  EXPECT_TRUE(isOffered(u"0.0.0"_s));
  EXPECT_TRUE(isOffered(u"12.8.0"_s));
  EXPECT_FALSE(isOffered(u"12.7.9"_s));
}

}  // namespace vemo
