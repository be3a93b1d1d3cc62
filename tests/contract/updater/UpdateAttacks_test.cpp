// What an attacker may do who holds the server, the network or an old key: each ends the session
// with an error, and the version that ran before is what starts.
#include <archive.h>
#include <archive_entry.h>

#include "UpdaterFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct Entry {
  QByteArray path;
  QByteArray content;
  mode_t type = AE_IFREG;
  bool isHardLink = false;
};

}  // namespace

class UpdateAttacksTest : public UpdaterFixture {
 protected:
  ~UpdateAttacksTest() override {
    if (delegate.installNow) return;
    EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  }

  /// An archive that holds those entries, validly signed.
  AppcastItem releaseOf(const std::vector<Entry>& entries) {
    AppcastItem item = release(2, "1.1.0");
    const QString path = folder.filePath(u"made.tar"_s);
    archive* writer = archive_write_new();
    archive_write_set_format_pax(writer);
    archive_write_open_filename(writer, QFile::encodeName(path).constData());
    for (const Entry& entry : entries) {
      archive_entry* header = archive_entry_new();
      archive_entry_set_pathname(header, entry.path.constData());
      archive_entry_set_filetype(header, entry.type);
      archive_entry_set_perm(header, 0755);
      if (entry.isHardLink) {
        archive_entry_set_hardlink(header, entry.content.constData());
      } else if (entry.type == AE_IFLNK) {
        archive_entry_set_symlink(header, entry.content.constData());
      } else {
        archive_entry_set_size(header, entry.content.size());
      }
      archive_write_header(writer, header);
      if (entry.type == AE_IFREG && !entry.isHardLink)
        archive_write_data(writer, entry.content.constData(),
                           static_cast<std::size_t>(entry.content.size()));
      archive_entry_free(header);
    }
    archive_write_free(writer);
    putArchive(item, path);
    return item;
  }

  /// That the last session ended with.
  std::string reason() const { return log.isEmpty() ? "" : log.back().toStdString(); }

  static inline const Entry program{"bin/vemo", programTelling("1.1.0", 2)};
  static inline const Entry ballast{"lib/ballast", "1.1.0"};
};

TEST_F(UpdateAttacksTest, ArbitrarySoftwareWithoutASignatureIsRefused) {
  publish({release(2, "1.1.0")});
  server.files["vemo-2.tar.xz"][100] = static_cast<char>(server.files["vemo-2.tar.xz"][100] ^ 1);
  EXPECT_THAT(check(), ElementsAre(3001));
}

TEST_F(UpdateAttacksTest, AFeedSignedByAnybodyElseIsRefused) {
  publish({release(2, "1.1.0")}, 1, SigningKeys::generate().secretKey);
  EXPECT_THAT(check(), ElementsAre(3001));
}

TEST_F(UpdateAttacksTest, AFeedChangedInOneByteOrWithoutItsSignatureIsRefused) {
  publish({release(2, "1.1.0")});
  const QByteArray feed = server.files["appcast.xml"];
  server.files["appcast.xml"].replace("1.1.0", "9.1.0");
  EXPECT_THAT(check(), ElementsAre(3001));
  server.files["appcast.xml"] = feed.first(feed.lastIndexOf("<!--"));
  EXPECT_THAT(check(), ElementsAre(3001));
  server.files["appcast.xml"] = feed + "<!-- more -->\n";
  EXPECT_THAT(check(), ElementsAre(3001));
}

TEST_F(UpdateAttacksTest, AnArchivesSignatureDoesNotSignAFeed) {
  QFile file(folder.filePath(u"feed"_s));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  file.write(
      Appcast{.serial = 1, .expires = QDateTime(QDate(2026, 3, 20), {}, Qt::UTC), .items = {}}
          .write());
  file.seek(0);
  const QByteArray signature = archiveSignature(file, keys.secretKey);
  file.seek(0);
  server.files["appcast.xml"] =
      file.readAll() + "<!-- vemo-signature: " + signature.toBase64() + " -->\n";
  EXPECT_THAT(check(), ElementsAre(3001));
}

TEST_F(UpdateAttacksTest, EndlessDataForAFeedEndsAtALimit) {
  server.manners["appcast.xml"] = ReleaseServer::Manner::Endless;
  EXPECT_THAT(check(), ElementsAre(1000));
  EXPECT_THAT(reason(), HasSubstr("is too large"));
}

TEST_F(UpdateAttacksTest, EndlessDataForAnArchiveEndsAtALimit) {
  publish({release(2, "1.1.0")});
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::Endless;
  EXPECT_THAT(check(), ElementsAre(2001));
}

TEST_F(UpdateAttacksTest, EndlessDataForTheKeysEndsAtALimitAndTheFeedIsStillRead) {
  publish({});
  server.manners["keys.txt"] = ReleaseServer::Manner::Endless;
  EXPECT_THAT(check(), ElementsAre(1001));
}

TEST_F(UpdateAttacksTest, SlowRetrievalEndsAtTheTransfersLimit) {
  QtHttpSession impatient(mainThread, {.requestTimeout = 20s, .resourceTimeout = 300ms});
  publish({release(2, "1.1.0")});
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::Drips;
  usedSession = &impatient;
  start();
  EXPECT_THAT(check(), ElementsAre(2001));
  updater.reset();
}

TEST_F(UpdateAttacksTest, RollbackToAnOlderFeedIsRefusedAlsoAfterARestart) {
  publish({}, 7);
  EXPECT_THAT(check(), ElementsAre(1001));
  publish({release(2, "1.1.0")}, 6);
  EXPECT_THAT(check(), ElementsAre(1002));
  start();
  EXPECT_THAT(check(), ElementsAre(1002));
  publish({release(2, "1.1.0")}, 7);
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(UpdateAttacksTest, RollbackToAnOlderOrTheSameBuildIsNoUpdate) {
  publish({release(1, "0.9.0")});
  EXPECT_THAT(check(), ElementsAre(1001));
}

TEST_F(UpdateAttacksTest, AnIndefiniteFreezeEndsWhenTheFeedExpires) {
  publish({});
  clock.setWallTime(std::chrono::sys_days{std::chrono::year{2026} / 3 / 20});
  EXPECT_THAT(check(), ElementsAre(1001)) << "until its very last moment";
  clock.setWallTime(std::chrono::sys_days{std::chrono::year{2026} / 3 / 20} + 1s);
  EXPECT_THAT(check(), ElementsAre(1002));
}

TEST_F(UpdateAttacksTest, AFastForwardByAStolenKeyIsUndoneByTheKeysRotation) {
  publish({}, 18'000'000'000'000'000'000ULL);
  check();
  const SigningKeys next = SigningKeys::generate();
  server.files["keys.txt"] = rotationLine(next.publicKey, keys.secretKey);
  keys = next;
  publish({release(2, "1.1.0")}, 2);
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(UpdateAttacksTest, WhatAStolenKeySignedIsNotInstalledOnceTheKeyIsReplaced) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  ASSERT_TRUE(delegate.ready);
  const SigningKeys next = SigningKeys::generate();
  server.files["keys.txt"] = rotationLine(next.publicKey, keys.secretKey);
  server.files.remove("appcast.xml");
  EXPECT_THAT(check(), ElementsAre(2001));
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
}

TEST_F(UpdateAttacksTest, MixAndMatchOfAFeedWithAnotherReleasesArchiveIsRefused) {
  const AppcastItem two = release(2, "1.1.0");
  const AppcastItem three = release(3, "1.2.0", "other");
  publish({three});
  server.files["vemo-3.tar.xz"] = server.files["vemo-2.tar.xz"];
  EXPECT_THAT(check(), ElementsAre(2001)) << "it isn't as long as the feed says";
  // Also where the sizes agree and the signature is another release's own.
  AppcastItem mixed = three;
  mixed.archive = two.archive;
  mixed.archiveSize = two.archiveSize;
  mixed.archiveSignature = two.archiveSignature;
  publish({mixed});
  EXPECT_THAT(check(), ElementsAre(3000));
}

TEST_F(UpdateAttacksTest, ExtraneousFilesAreRefused) {
  publish({releaseOf({program, ballast, {"lib/plugin.so", "x"}})});
  EXPECT_THAT(check(), ElementsAre(3000));
}

TEST_F(UpdateAttacksTest, AMissingOrRepeatedFileIsRefused) {
  publish({releaseOf({program})});
  EXPECT_THAT(check(), ElementsAre(3000));
  publish({releaseOf({program, ballast, program})});
  EXPECT_THAT(check(), ElementsAre(3000));
}

TEST_F(UpdateAttacksTest, PathsAndLinksOutOfTheArchiveAreRefused) {
  for (const QByteArray& path : {"../../current", "/tmp/vemo-was-here", "bin/../../x"}) {
    publish({releaseOf({{path, "x"}, program, ballast})});
    EXPECT_THAT(check(), ElementsAre(3000)) << path.constData();
    EXPECT_THAT(reason(), HasSubstr("isn't named in the feed"));
  }
  publish({releaseOf({{"lib/ballast", "/etc/passwd", AE_IFLNK}, program})});
  EXPECT_THAT(check(), ElementsAre(3000));
  EXPECT_THAT(reason(), HasSubstr("isn't a plain file"));
  EXPECT_FALSE(QFile::exists(u"/tmp/vemo-was-here"_s));
}

TEST_F(UpdateAttacksTest, HardLinksFoldersAndDevicesInTheArchiveAreRefused) {
  publish({releaseOf({program, {"lib/ballast", "/etc/passwd", AE_IFREG, true}})});
  EXPECT_THAT(check(), ElementsAre(3000));
  EXPECT_THAT(reason(), HasSubstr("isn't a plain file"));
  for (const mode_t type : {AE_IFDIR, AE_IFIFO, AE_IFCHR}) {
    publish({releaseOf({program, {"lib/ballast", "", type}})});
    EXPECT_THAT(check(), ElementsAre(3000)) << type;
    EXPECT_THAT(reason(), HasSubstr("isn't a plain file")) << type;
  }
}

TEST_F(UpdateAttacksTest, AFileThatIsChangedButOfTheSameSizeIsRefused) {
  publish({releaseOf({program, {"lib/ballast", "1.1.1"}})});
  EXPECT_THAT(check(), ElementsAre(3000));
}

TEST_F(UpdateAttacksTest, AnArchiveThatUnpacksToMoreThanTheFeedSaysIsRefused) {
  publish({releaseOf({program, {"lib/ballast", QByteArray(50'000'000, '0')}})});
  EXPECT_THAT(check(), ElementsAre(3000));
  EXPECT_THAT(reason(), HasSubstr("is larger than the feed says"));
}

TEST_F(UpdateAttacksTest, AMaliciousMirrorThatServesNothingStopsNothingElse) {
  EXPECT_THAT(check(), ElementsAre(2001));
  server.files["appcast.xml"] = "<html>Please log in</html>";
  server.files["keys.txt"] = "<html>Please log in</html>";
  EXPECT_THAT(check(), ElementsAre(3001));
  server.files.remove("keys.txt");
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(UpdateAttacksTest, AKeyIsReplacedByALineSignedWithTheOldOneAndTheOldNoLongerCounts) {
  const SigningKeys old = keys;
  const SigningKeys next = SigningKeys::generate();
  const SigningKeys last = SigningKeys::generate();
  server.files["keys.txt"] =
      rotationLine(next.publicKey, old.secretKey) + rotationLine(last.publicKey, next.secretKey);
  start();
  publish({release(2, "1.1.0")}, 1, old.secretKey);
  EXPECT_THAT(check(), ElementsAre(3001));
  // The mirror hides the rotation: what was seen once still holds.
  server.files.remove("keys.txt");
  EXPECT_THAT(check(), ElementsAre(3001));
  start();
  EXPECT_THAT(check(), ElementsAre(3001)) << "also after a restart";
  keys = last;
  publish({release(2, "1.1.0")});
  keys = old;
  start();  // as it was built
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(UpdateAttacksTest, AReplacedKeyIsForgottenAlsoWhereNoFeedComesWithTheNewOne) {
  server.files["keys.txt"] = rotationLine(SigningKeys::generate().publicKey, keys.secretKey);
  EXPECT_THAT(check(), ElementsAre(2001));
  server.files.remove("keys.txt");
  publish({release(2, "1.1.0")});
  start();
  EXPECT_THAT(check(), ElementsAre(3001));
}

TEST_F(UpdateAttacksTest, WhoBeginsWithALaterKeyFollowsTheChainFromThere) {
  const SigningKeys first = SigningKeys::generate();
  const SigningKeys last = SigningKeys::generate();
  server.files["keys.txt"] =
      rotationLine(keys.publicKey, first.secretKey) + rotationLine(last.publicKey, keys.secretKey);
  publish({}, 1, last.secretKey);
  EXPECT_THAT(check(), ElementsAre(1001));
}

TEST_F(UpdateAttacksTest, AKeyThatAnybodyElseOffersIsNotTaken) {
  const SigningKeys stranger = SigningKeys::generate();
  server.files["keys.txt"] = rotationLine(stranger.publicKey, stranger.secretKey) +
                             rotationLine(keys.publicKey, keys.secretKey)
                                 .replace(keys.publicKey.toBase64(), stranger.publicKey.toBase64());
  publish({release(2, "1.1.0")}, 1, stranger.secretKey);
  EXPECT_THAT(check(), ElementsAre(3001));
}

}  // namespace vemo
