// A self-contained copy with build 1, and builds 2 and 3 as archives to be installed.
#pragma once

#include "UpdaterFixture.h"

namespace vemo {

class CopyFixture : public testing::Test {
 protected:
  CopyFixture() {
    makeCopy(root);
    for (const quint64 build : {2, 3}) {
      const QString made = folder.filePath(u"made-%1"_s.arg(build));
      makeVersion(made, versionOf(build), build, QByteArray(100'000, 'b'));
      for (int icon = 0; icon < 12; ++icon)
        writeTestFile(made + u"/share/vemo/icons/%1.svg"_s.arg(icon), "<svg/>", false);
      auto packed = packUpdate(made, archiveOf(build));
      EXPECT_TRUE(packed);
      m_filesOf[build] = *std::move(packed);
    }
  }

  /// "1.0.0" of build 1.
  static QByteArray versionOf(quint64 build) { return "1." + QByteArray::number(build - 1) + ".0"; }
  QString archiveOf(quint64 build) const { return folder.filePath(u"%1.tar.xz"_s.arg(build)); }
  QString versionFolder(quint64 build) const { return root + u"/versions/%1"_s.arg(build); }

  /// By whichever version is current.
  bool install(quint64 build) {
    const SelfContainedCopy copy(root);
    QDir(copy.stagingFolder(build)).removeRecursively();
    return unpackUpdate(archiveOf(build), m_filesOf[build], copy.stagingFolder(build)) &&
           copy.install(build);
  }

  QTemporaryDir folder;
  const QString root = folder.filePath(u"vemo"_s);

 private:
  QHash<quint64, std::vector<AppcastFile>> m_filesOf;
};

}  // namespace vemo
