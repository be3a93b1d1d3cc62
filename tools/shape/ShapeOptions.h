// What vemo-shape is told on its command line, files read and checked.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <expected>
#include <map>
#include <optional>

#include "integrations/SlackRecords.h"

namespace vemo {

struct ShapeOptions {
  bool isHelpWanted = false;
  bool isJsonLines = false;
  std::optional<QString> bundleId;
  std::optional<QString> appName;
  std::optional<QByteArray> dictionary;  ///< the file's bytes, known to be a dictionary
  std::optional<QByteArray> snippets;
  SlackUsers users;
  SlackChannels channels;
  std::optional<QString> workspace;  ///< the absolute path of a folder
  std::map<QString, bool> switches;
};

inline constexpr auto shapeUsage =
    "usage: vemo-shape [OPTIONS] <TRANSCRIPT >TEXT\n"
    "Shapes a transcript as Vemo does before it pastes.\n"
    "\n"
    "  --bundle-id ID      identifier of the application in front\n"
    "  --app-name NAME     its name\n"
    "  --dictionary FILE   JSON array of objects with id, phrase and replacement\n"
    "  --snippets FILE     JSON array of objects with id, trigger and snippet\n"
    "  --slack FILE        JSON object with the arrays users (id, name, realName, displayName,\n"
    "                      isBot) and channels (id, name, isPrivate)\n"
    "  --workspace DIR     the project whose files can be tagged\n"
    "  --set KEY=VALUE     integrationVSCode or integrationSlack: true or false\n"
    "  --jsonl             each line of input and of output is a JSON string\n"
    "  --help              this text\n";

/// `arguments` without the program's name. The error is a line for standard error.
std::expected<ShapeOptions, QString> parseShapeOptions(const QStringList& arguments);

}  // namespace vemo
