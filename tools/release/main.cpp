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
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
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

constexpr quint64 mostDays = 366;

constexpr auto usage = R"(usage:
  vemo-release new-key KEYFILE
      makes a key, and prints the public one for updateFeedPublicKey
  vemo-release add KEYFILE FEEDFOLDER VERSIONFOLDER VERSION BUILD [OPTION]... [--days N]
      packs a version and puts it into the feed
      --channel NAME  --minimum-system VERSION  --architecture NAME  --notes FILE  --critical
  vemo-release withdraw KEYFILE FEEDFOLDER BUILD [--days N]
      takes a version out of the feed; whoever has it keeps it
  vemo-release renew KEYFILE FEEDFOLDER [--days N]
      signs the feed anew, with the next serial number and a new date of expiry
  vemo-release rotate OLDKEYFILE NEWKEYFILE FEEDFOLDER [--days N]
      makes the new key the successor of the old one, and signs the feed with it
  vemo-release check PUBLICKEY FEEDFOLDER
      checks the feed, its archives and every file in them
--days: until the feed expires, 1 to 366; without it as many as there were before, at first 30
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

/// The next feed as it is published. What clients wouldn't take must not be.
std::expected<QByteArray, QString> signedAnew(Appcast feed, const QByteArray& key,
                                              std::optional<quint64> days) {
  ++feed.serial;
  feed.days = days.value_or(feed.days);
  feed.expires = QDateTime::currentDateTimeUtc().addDays(static_cast<qint64>(feed.days));
  const QByteArray xml = feed.write();
  QByteArray next = signedFeed(xml, key);
  if (next.size() > Appcast::largestFeed)
    return failure(u"the feed would be too large for clients: withdraw old versions first"_s);
  if (const auto read = Appcast::read(xml); !read)
    return failure(u"clients wouldn't take the feed: "_s + read.error());
  return next;
}

Outcome replace(const QString& from, const QString& to) {
  if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
    return {};
  return failure(to + u": "_s + QString::fromLocal8Bit(std::strerror(errno)));
}

/// Takes "--name value" out of the arguments.
QString takeOption(Arguments& arguments, const QString& name, const QString& absent = {}) {
  const qsizetype at = arguments.indexOf(name);
  if (at < 0 || at + 1 >= arguments.size()) return absent;
  const QString value = arguments.at(at + 1);
  arguments.remove(at, 2);
  return value;
}

/// Nothing where the feed is to hold as long as before.
std::expected<std::optional<quint64>, QString> takeDays(Arguments& arguments) {
  if (!arguments.contains(u"--days"_s)) return std::nullopt;
  const quint64 days = takeOption(arguments, u"--days"_s).toULongLong();
  if (days < 1 || days > mostDays) return failure(u"--days takes 1 to %1"_s.arg(mostDays));
  return days;
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
  const auto days = takeDays(arguments);
  if (!days) return failure(days.error());
  AppcastItem item;
  item.channel = takeOption(arguments, u"--channel"_s);
  item.minimumSystemVersion = takeOption(arguments, u"--minimum-system"_s);
  item.architecture = takeOption(arguments, u"--architecture"_s);
  const QString notes = takeOption(arguments, u"--notes"_s);
  item.shown.isCritical = arguments.removeAll(u"--critical"_s) > 0;
  if (arguments.size() != 5) return failure(QString::fromLatin1(usage));
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
  // Beside the feed, so that it takes its place at once; an archive of that name may be there.
  const QTemporaryDir workshop(folder + u"/.vemo-release-XXXXXX"_s);
  if (!workshop.isValid()) return failure(folder + u": "_s + workshop.errorString());
  QFile archive(workshop.filePath(u"archive"_s));
  auto files = packUpdate(arguments[2], archive.fileName());
  if (!files) return failure(files.error());
  item.files = *std::move(files);
  if (!archive.open(QIODevice::ReadOnly)) return failure(archive.errorString());
  item.archiveSize = archive.size();
  item.archiveSignature = archiveSignature(archive, *key);
  feed->items.push_back(item);
  const auto next = signedAnew(*std::move(feed), *key, *days);
  if (!next) return failure(next.error());
  if (auto placed = replace(archive.fileName(), folder + u'/' + item.archive); !placed)
    return placed;
  return writeFile(feedIn(folder), *next);
}

/// Changes a feed that is there, and signs it anew.
Outcome change(const QString& keyFile, const QString& folder, std::optional<quint64> days,
               const std::function<Outcome(Appcast&)>& how) {
  const auto key = readKey(keyFile);
  if (!key) return failure(key.error());
  auto feed = openFeed(folder, publicPart(*key));
  if (!feed) return failure(feed.error());
  if (auto changed = how(*feed); !changed) return changed;
  const auto next = signedAnew(*std::move(feed), *key, days);
  if (!next) return failure(next.error());
  return writeFile(feedIn(folder), *next);
}

Outcome withdraw(Arguments arguments) {
  const auto days = takeDays(arguments);
  if (!days) return failure(days.error());
  if (arguments.size() != 3) return failure(QString::fromLatin1(usage));
  const quint64 build = arguments[2].toULongLong();
  return change(arguments[0], arguments[1], *days, [&](Appcast& feed) -> Outcome {
    const auto isMeant = [build](const AppcastItem& item) { return item.build == build; };
    if (std::erase_if(feed.items, isMeant) > 0) return {};
    return failure(u"build %1 isn't in the feed"_s.arg(arguments[2]));
  });
}

Outcome renew(Arguments arguments) {
  const auto days = takeDays(arguments);
  if (!days) return failure(days.error());
  if (arguments.size() != 2) return failure(QString::fromLatin1(usage));
  return change(arguments[0], arguments[1], *days, [](Appcast&) { return Outcome(); });
}

Outcome rotate(Arguments arguments) {
  const auto days = takeDays(arguments);
  if (!days) return failure(days.error());
  if (arguments.size() != 3) return failure(QString::fromLatin1(usage));
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
  const auto signedByNext = signedAnew(*std::move(feed), *next, *days);
  if (!signedByNext) return failure(signedByNext.error());
  if (auto written = writeFile(path, lines); !written) return written;
  return writeFile(feedIn(folder), *signedByNext);
}

Outcome check(Arguments arguments) {
  if (arguments.size() != 2) return failure(QString::fromLatin1(usage));
  const auto builtIn = publicKeyFrom(arguments[0].toLatin1());
  if (!builtIn) return failure(u"that isn't a public key"_s);
  const QString& folder = arguments[1];
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
    const QTemporaryDir temporary;
    if (!temporary.isValid()) return failure(QDir::tempPath() + u": "_s + temporary.errorString());
    const auto outcome =
        unpackUpdate(archive.fileName(), item.files, temporary.filePath(u"version"_s));
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
