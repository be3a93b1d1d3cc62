#include "platform/qt/QtInstallLocation.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

/// The disks that a system knows, in the layout that it tells of them: a folder a disk, the
/// partitions in it, and a link to each.
class QtInstallLocationTest : public testing::Test {
 protected:
  void addDisk(const QString& name, const QByteArray& removable) {
    const QString disk = m_folder.filePath(u"devices/"_s + name);
    for (const QString& device : {name, name + u'1'}) {
      const QString place = device == name ? disk : disk + u'/' + device;
      QDir().mkpath(place);
      QFile::link(place, blockDevices() + u'/' + device);
    }
    QFile file(disk + u"/removable"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(removable);
  }

  QString blockDevices() {
    QDir().mkpath(m_folder.filePath(u"class"_s));
    return m_folder.filePath(u"class"_s);
  }

  bool isRemovable(const QString& root, const QString& device) {
    return isRemovableMedium(root, device, blockDevices());
  }

 private:
  QTemporaryDir m_folder;
};

TEST_F(QtInstallLocationTest, APartitionIsAsRemovableAsItsDisk) {
  addDisk(u"sda"_s, "0\n");
  addDisk(u"sdb"_s, "1\n");
  EXPECT_FALSE(isRemovable(u"/"_s, u"/dev/sda1"_s));
  EXPECT_TRUE(isRemovable(u"/opt"_s, u"/dev/sdb1"_s));
}

TEST_F(QtInstallLocationTest, ADiskWithoutPartitionsTellsForItself) {
  addDisk(u"sdb"_s, "1\n");
  addDisk(u"sdc"_s, "0\n");
  EXPECT_TRUE(isRemovable(u"/opt"_s, u"/dev/sdb"_s));
  EXPECT_FALSE(isRemovable(u"/opt"_s, u"/dev/sdc"_s));
}

TEST_F(QtInstallLocationTest, WhereDesktopsMountWhatIsPluggedInEverythingIsRemovable) {
  addDisk(u"sdc"_s, "0\n");
  EXPECT_TRUE(isRemovable(u"/media/me/stick"_s, u"/dev/sdc1"_s));
  EXPECT_TRUE(isRemovable(u"/run/media/me/stick"_s, u"/dev/mapper/luks"_s));
  EXPECT_FALSE(isRemovable(u"/mediathek"_s, u"/dev/sdc1"_s));
  EXPECT_FALSE(isRemovable(u"/media"_s, u"/dev/sdc1"_s)) << "a disk of the machine's own";
}

TEST_F(QtInstallLocationTest, WhatTheSystemDoesntKnowAsADiskIsPermanent) {
  EXPECT_FALSE(isRemovable(u"/"_s, u"/dev/sdz1"_s));
  EXPECT_FALSE(isRemovable(u"/"_s, u"overlay"_s));
  EXPECT_FALSE(isRemovable(u"/"_s, u"server:/exported"_s));
  EXPECT_FALSE(isRemovable(QString(), QString()));
}

TEST_F(QtInstallLocationTest, AProgramOfThisSystemIsPermanentAndKeepsItsPath) {
  const auto location = readInstallLocation(u"/usr/bin/env"_s);
  EXPECT_EQ(location.path, u"/usr/bin/env"_s);
  EXPECT_FALSE(location.isOnRemovableMedium);
}

TEST_F(QtInstallLocationTest, AProgramThatIsGoneIsNoReasonToRefuse) {
  EXPECT_FALSE(readInstallLocation(u"/nowhere/at/all/vemo"_s).isOnRemovableMedium);
}

}  // namespace
}  // namespace vemo
