// vemo-release: signs releases, makes the feed of updates and checks it.
//
// Keys are files in base64 that only their owner can read. A feed and its archives stand in one
// folder, which the service serves as it is.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSysInfo>
#include <QTextStream>
#include <algorithm>
#include <functional>

#include "platform/updater/Appcast.h"
#include "platform/updater/UpdateArchive.h"
#include "platform/updater/UpdateSignatures.h"
#include "platform/updater/VersionCheck.h"

namespace {

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

using Outcome = std::expected<void, QString>;
using Arguments = QStringList;

constexpr int usualDays = 30;

constexpr auto usage = R"(usage:
  vemo-release new-key KEYFILE
      makes a key, and prints the public one for updateFeedPublicKey
  vemo-release add KEYFILE FEEDFOLDER VERSIONFOLDER VERSION BUILD [OPTION]...
      packs a version and puts it into the feed
      --channel NAME  --minimum-system VERSION  --architecture NAME  --notes FILE
      --critical  --days N (until the feed expires; 30)
  vemo-release withdraw KEYFILE FEEDFOLDER BUILD [--days N]
      takes a version out of the feed; whoever has it keeps it
  vemo-release renew KEYFILE FEEDFOLDER [--days N]
      signs the feed anew, with the next serial number and a new date of expiry
  vemo-release rotate OLDKEYFILE NEWKEYFILE FEEDFOLDER [--days N]
      makes the new key the successor of the old one, and signs the feed with it
  vemo-release check PUBLICKEY FEEDFOLDER
      checks the feed, its archives and every file in them
)";

std::unexpected<QString> failure(const QString& what) {
  return std::unexpected(what);
}

std::expected<QByteArray, QString> readFile(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return failure(path + u": "_s + file.errorString());
  return file.readAll();
}

Outcome writeFile(const QString& path, const QByteArray& content,
                  QFile::Permissions permissions = {}) {
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return failure(path + u": "_s + file.errorString());
  if (permissions) file.setPermissions(permissions);
  if (file.write(content) != content.size() || !file.commit())
    return failure(path + u": "_s + file.errorString());
  return {};
}

std::expected<QByteArray, QString> readKey(const QString& path) {
  const auto text = readFile(path);
  if (!text) return failure(text.error());
  if (QFileInfo(path).permissions() & (QFile::ReadGroup | QFile::ReadOther))
    return failure(path + u": other users can read it"_s);
  QByteArray key = QByteArray::fromBase64(text->trimmed());
  if (key.size() != 64) return failure(path + u": isn't a key"_s);
  return key;
}

/// The second half of an Ed25519 secret key is its public key.
QByteArray publicPart(const QByteArray& secretKey) {
  return secretKey.last(32);
}

QString feedIn(const QString& folder) {
  return folder + u"/appcast.xml"_s;
}

/// The feed as it is, under whichever key; an empty one where there is none.
std::expected<Appcast, QString> openFeed(const QString& folder, const QByteArray& publicKey) {
  if (!QFile::exists(feedIn(folder))) return Appcast{};
  const auto feed = readFile(feedIn(folder));
  if (!feed) return failure(feed.error());
  const auto xml = verifiedFeed(*feed, publicKey);
  if (!xml) return failure(feedIn(folder) + u": isn't signed by this key"_s);
  return Appcast::read(*xml);
}

Outcome publish(Appcast feed, const QString& folder, const QByteArray& key, int days) {
  ++feed.serial;
  feed.expires = QDateTime::currentDateTimeUtc().addDays(days);
  return writeFile(feedIn(folder), signedFeed(feed.write(), key));
}

/// Takes "--name value" out of the arguments.
QString takeOption(Arguments& arguments, const QString& name, const QString& absent = {}) {
  const qsizetype at = arguments.indexOf(name);
  if (at < 0 || at + 1 >= arguments.size()) return absent;
  const QString value = arguments.at(at + 1);
  arguments.remove(at, 2);
  return value;
}

int takeDays(Arguments& arguments) {
  return takeOption(arguments, u"--days"_s, QString::number(usualDays)).toInt();
}

Outcome newKey(Arguments arguments) {
  if (arguments.size() != 1) return failure(QString::fromLatin1(usage));
  if (QFile::exists(arguments[0])) return failure(arguments[0] + u": is there already"_s);
  const SigningKeys keys = SigningKeys::generate();
  if (auto written = writeFile(arguments[0], keys.secretKey.toBase64() + '\n',
                               QFile::ReadOwner | QFile::WriteOwner);
      !written)
    return written;
  QTextStream(stdout) << keys.publicKey.toBase64() << '\n';
  return {};
}

/// What calls itself by another build would be refused by everybody. A version for another kind of
/// machine can't be asked.
Outcome checkHere(const QString& folder, const AppcastItem& item) {
  if (!item.architecture.isEmpty() && item.architecture != QSysInfo::currentCpuArchitecture())
    return {};
  const auto checked = checkVersion(folder, item.shown.displayVersion, item.build);
  if (!checked) return failure(folder + u": "_s + checked.error().why);
  return {};
}

Outcome add(Arguments arguments) {
  const int days = takeDays(arguments);
  AppcastItem item;
  item.channel = takeOption(arguments, u"--channel"_s);
  item.minimumSystemVersion = takeOption(arguments, u"--minimum-system"_s);
  item.architecture = takeOption(arguments, u"--architecture"_s);
  const QString notes = takeOption(arguments, u"--notes"_s);
  item.shown.isCritical = arguments.removeAll(u"--critical"_s) > 0;
  if (arguments.size() != 5 || days <= 0) return failure(QString::fromLatin1(usage));
  if (item.architecture == u"aarch64") item.architecture = u"arm64"_s;  // as Qt calls it
  const QString folder = arguments[1];
  item.shown.displayVersion = arguments[3];
  item.shown.buildVersion = arguments[4];
  item.build = arguments[4].toULongLong();
  const auto key = readKey(arguments[0]);
  if (!key) return failure(key.error());
  auto feed = openFeed(folder, publicPart(*key));
  if (!feed) return failure(feed.error());
  for (const AppcastItem& other : feed->items)
    if (other.build == item.build && other.architecture == item.architecture)
      return failure(u"build %1 is in the feed already"_s.arg(item.build));
  if (!notes.isEmpty()) {
    const auto text = readFile(notes);
    if (!text) return failure(text.error());
    item.shown.notes = QString::fromUtf8(*text);
  }
  if (const auto checked = checkHere(arguments[2], item); !checked) return checked;
  item.archive = u"vemo-%1%2.tar.xz"_s.arg(
      arguments[4], item.architecture.isEmpty() ? QString() : u'-' + item.architecture);
  auto files = packUpdate(arguments[2], folder + u'/' + item.archive);
  if (!files) return failure(files.error());
  item.files = *std::move(files);
  QFile archive(folder + u'/' + item.archive);
  if (!archive.open(QIODevice::ReadOnly)) return failure(archive.errorString());
  item.archiveSize = archive.size();
  item.archiveSignature = archiveSignature(archive, *key);
  feed->items.push_back(item);
  // What clients wouldn't read mustn't be published.
  Appcast tried = *feed;
  tried.serial = 1;
  tried.expires = QDateTime::currentDateTimeUtc();
  if (const auto read = Appcast::read(tried.write()); !read) return failure(read.error());
  return publish(*std::move(feed), folder, *key, days);
}

/// Changes a feed that is there, and signs it anew.
Outcome change(const QString& keyFile, const QString& folder, int days,
               const std::function<Outcome(Appcast&)>& how) {
  const auto key = readKey(keyFile);
  if (!key) return failure(key.error());
  auto feed = openFeed(folder, publicPart(*key));
  if (!feed) return failure(feed.error());
  if (auto changed = how(*feed); !changed) return changed;
  return publish(*std::move(feed), folder, *key, days);
}

Outcome withdraw(Arguments arguments) {
  const int days = takeDays(arguments);
  if (arguments.size() != 3 || days <= 0) return failure(QString::fromLatin1(usage));
  const quint64 build = arguments[2].toULongLong();
  return change(arguments[0], arguments[1], days, [&](Appcast& feed) -> Outcome {
    const auto isMeant = [build](const AppcastItem& item) { return item.build == build; };
    if (std::erase_if(feed.items, isMeant) > 0) return {};
    return failure(u"build %1 isn't in the feed"_s.arg(arguments[2]));
  });
}

Outcome renew(Arguments arguments) {
  const int days = takeDays(arguments);
  if (arguments.size() != 2 || days <= 0) return failure(QString::fromLatin1(usage));
  return change(arguments[0], arguments[1], days, [](Appcast&) { return Outcome(); });
}

Outcome rotate(Arguments arguments) {
  const int days = takeDays(arguments);
  if (arguments.size() != 3 || days <= 0) return failure(QString::fromLatin1(usage));
  const auto old = readKey(arguments[0]);
  const auto next = readKey(arguments[1]);
  if (!old || !next) return failure(old ? next.error() : old.error());
  const QString folder = arguments[2];
  auto feed = openFeed(folder, publicPart(*old));
  if (!feed) return failure(feed.error());
  const QString path = folder + u"/keys.txt"_s;
  const auto before = QFile::exists(path) ? readFile(path) : QByteArray();
  if (!before) return failure(before.error());
  const QByteArray lines = *before + rotationLine(publicPart(*next), *old);
  for (AppcastItem& item : feed->items) {
    QFile archive(folder + u'/' + item.archive);
    if (!archive.open(QIODevice::ReadOnly)) return failure(archive.errorString());
    item.archiveSignature = archiveSignature(archive, *next);
  }
  if (auto written = writeFile(path, lines); !written) return written;
  return publish(*std::move(feed), folder, *next, days);
}

Outcome check(Arguments arguments) {
  if (arguments.size() != 2) return failure(QString::fromLatin1(usage));
  const auto builtIn = publicKeyFrom(arguments[0].toLatin1());
  if (!builtIn) return failure(u"that isn't a public key"_s);
  const QString folder = arguments[1];
  const QByteArray rotations = readFile(folder + u"/keys.txt"_s).value_or(QByteArray());
  const QByteArray trusted = latestKey(rotations, *builtIn);
  const auto feed = openFeed(folder, trusted);
  if (!feed) return failure(feed.error());
  if (feed->serial == 0) return failure(u"there is no feed"_s);
  if (feed->expires < QDateTime::currentDateTimeUtc()) return failure(u"the feed has expired"_s);
  for (const AppcastItem& item : feed->items) {
    QFile archive(folder + u'/' + item.archive);
    if (!archive.open(QIODevice::ReadOnly) || archive.size() != item.archiveSize ||
        !isArchiveSigned(archive, item.archiveSignature, trusted))
      return failure(item.archive + u": isn't what the feed says"_s);
    const QString unpacked = folder + u"/.checked"_s;
    QDir(unpacked).removeRecursively();
    const auto outcome = unpackUpdate(folder + u'/' + item.archive, item.files, unpacked);
    QDir(unpacked).removeRecursively();
    if (!outcome) return failure(item.archive + u": "_s + outcome.error());
  }
  QTextStream(stdout) << "good: " << feed->items.size() << " versions, serial " << feed->serial
                      << ", until " << feed->expires.toString(Qt::ISODate) << '\n';
  return {};
}

Outcome run(const QString& command, const Arguments& arguments) {
  if (command == u"new-key") return newKey(arguments);
  if (command == u"add") return add(arguments);
  if (command == u"withdraw") return withdraw(arguments);
  if (command == u"renew") return renew(arguments);
  if (command == u"rotate") return rotate(arguments);
  if (command == u"check") return check(arguments);
  return failure(QString::fromLatin1(usage));
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const Arguments arguments = QCoreApplication::arguments();
  const auto outcome = run(arguments.value(1), arguments.mid(2));
  if (outcome) return 0;
  QTextStream(stderr) << "vemo-release: " << outcome.error() << '\n';
  return 1;
}
