#include "ShapeOptions.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>

#include "base/Json.h"
#include "shaping/CustomEntries.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Failure = std::unexpected<QString>;

std::expected<QByteArray, QString> contentsOf(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return Failure(u"%1 can't be read: %2"_s.arg(path, file.errorString()));
  const QByteArray contents = file.readAll();
  if (file.error() != QFileDevice::NoError)
    return Failure(u"%1 can't be read: %2"_s.arg(path, file.errorString()));
  return contents;
}

/// The bytes of a file that `decode` can make a list of.
template <typename Decode>
std::expected<QByteArray, QString> listIn(const QString& path, Decode decode,
                                          const QString& fields) {
  auto contents = contentsOf(path);
  if (!contents) return contents;
  if (contents->size() > maxStoredBytes)
    return Failure(u"%1 is longer than %2 bytes"_s.arg(path).arg(maxStoredBytes));
  if (!decode(*contents))
    return Failure(u"%1 isn't a JSON array of objects with the strings %2"_s.arg(path, fields));
  return contents;
}

std::expected<void, QString> readSlack(const QString& path, ShapeOptions& options) {
  const auto contents = contentsOf(path);
  if (!contents) return Failure(contents.error());
  const auto object = parseJsonObject(*contents);
  if (!object) return Failure(u"%1 isn't a JSON object"_s.arg(path));
  const QJsonValue users = object->value(u"users");
  const QJsonValue channels = object->value(u"channels");
  auto decodedUsers = decodeSlackUsers(compactJson(users.toArray()));
  auto decodedChannels = decodeSlackChannels(compactJson(channels.toArray()));
  if (!users.isArray() || !decodedUsers)
    return Failure(
        u"%1: users isn't an array of objects with id, name, realName, displayName and isBot"_s.arg(
            path));
  if (!channels.isArray() || !decodedChannels)
    return Failure(
        u"%1: channels isn't an array of objects with id, name and isPrivate"_s.arg(path));
  options.users = *std::move(decodedUsers);
  options.channels = *std::move(decodedChannels);
  return {};
}

std::expected<void, QString> readSwitch(const QString& assignment, ShapeOptions& options) {
  const QString key = assignment.section(u'=', 0, 0);
  const QString value = assignment.section(u'=', 1);
  if (key != u"integrationVSCode" && key != u"integrationSlack")
    return Failure(u"--set %1: the keys are integrationVSCode and integrationSlack"_s.arg(key));
  if (value != u"true" && value != u"false")
    return Failure(u"--set %1: the value is true or false"_s.arg(key));
  options.switches[key] = value == u"true";
  return {};
}

}  // namespace

std::expected<ShapeOptions, QString> parseShapeOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  for (const auto& name : {u"bundle-id"_s, u"app-name"_s, u"dictionary"_s, u"snippets"_s,
                           u"slack"_s, u"workspace"_s, u"set"_s})
    parser.addOption({name, QString(), u"value"_s});
  parser.addOption(QCommandLineOption(u"jsonl"_s));
  parser.addOption(QCommandLineOption(u"help"_s));
  if (!parser.parse(QStringList(u"vemo-shape"_s) + arguments)) return Failure(parser.errorText());
  if (!parser.positionalArguments().isEmpty())
    return Failure(u"%1: the transcript is read from standard input"_s.arg(
        parser.positionalArguments().first()));

  ShapeOptions options;
  options.isHelpWanted = parser.isSet(u"help"_s);
  options.isJsonLines = parser.isSet(u"jsonl"_s);
  const auto valueOf = [&parser](const QString& name) {
    return parser.isSet(name) ? std::optional(parser.value(name)) : std::nullopt;
  };
  options.bundleId = valueOf(u"bundle-id"_s);
  options.appName = valueOf(u"app-name"_s);
  if (const auto path = valueOf(u"dictionary"_s)) {
    auto list = listIn(*path, decodeDictionary, u"id, phrase and replacement"_s);
    if (!list) return Failure(list.error());
    options.dictionary = *std::move(list);
  }
  if (const auto path = valueOf(u"snippets"_s)) {
    auto list = listIn(*path, decodeShortcuts, u"id, trigger and snippet"_s);
    if (!list) return Failure(list.error());
    options.snippets = *std::move(list);
  }
  if (const auto path = valueOf(u"slack"_s)) {
    if (auto read = readSlack(*path, options); !read) return Failure(read.error());
  }
  if (const auto path = valueOf(u"workspace"_s)) {
    if (!QFileInfo(*path).isDir()) return Failure(u"%1 is not a folder"_s.arg(*path));
    options.workspace = QFileInfo(*path).absoluteFilePath();
  }
  for (const QString& assignment : parser.values(u"set"_s)) {
    if (auto read = readSwitch(assignment, options); !read) return Failure(read.error());
  }
  return options;
}

}  // namespace vemo
