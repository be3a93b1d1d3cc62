// The lookups as plain walks over the records, lower-casing each name at each comparison. They are
// what the indexes are held against, by tests and benchmarks alike.
#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "integrations/SlackRecords.h"
#include "integrations/WorkspaceFile.h"

namespace vemo::plain {

using namespace Qt::Literals::StringLiterals;

inline std::optional<std::size_t> findFile(const std::vector<WorkspaceFile>& files,
                                           const QString& spokenName,
                                           const QString& spokenExtension) {
  const QString name = lowerCased(trimmed(spokenName));
  const QString ext = lowerCased(trimmed(spokenExtension));
  const QString fileName = name + u'.' + ext;
  for (std::size_t place = 0; place < files.size(); ++place) {
    const WorkspaceFile& file = files[place];
    if (lowerCased(file.fileName) == fileName) return place;
    if (lowerCased(file.baseName) == name && (file.ext == ext || ext.isEmpty())) return place;
  }
  const QString joined = QString(name).remove(u' ');
  const QString dashed = QString(name).replace(u' ', u'-');
  const QString underscored = QString(name).replace(u' ', u'_');
  for (std::size_t place = 0; place < files.size(); ++place) {
    if (!ext.isEmpty() && files[place].ext != ext) continue;
    const QString base = lowerCased(files[place].baseName);
    if (base == joined || base == dashed || base == underscored || base.contains(joined))
      return place;
  }
  return std::nullopt;
}

inline std::optional<QString> resolveChannel(const SlackChannels& channels, const QString& spoken) {
  const QString dashed = lowerCased(trimmed(spoken)).replace(u' ', u'-');
  if (dashed.isEmpty()) return std::nullopt;
  for (const auto& channel : channels) {
    const QString name = lowerCased(channel.name);
    if (name == dashed || QString(name).replace(u'-', u' ') == lowerCased(spoken))
      return u'#' + channel.name;
  }
  return std::nullopt;
}

/// For names that aren't in the table of aliases.
inline std::optional<QString> resolveUser(const SlackUsers& users, const QString& spoken) {
  const QString target = lowerCased(trimmed(spoken));
  if (target.isEmpty()) return std::nullopt;
  const auto mention = [](const SlackUser& user) {
    return u'@' + (!user.displayName.isEmpty() ? user.displayName
                   : !user.name.isEmpty()      ? user.name
                                               : user.realName);
  };
  for (const auto& user : users) {
    if (lowerCased(user.name) == target) return mention(user);
  }
  for (const auto& user : users) {
    if (lowerCased(user.displayName) == target || lowerCased(user.realName).startsWith(target) ||
        lowerCased(user.name).startsWith(target))
      return mention(user);
  }
  return std::nullopt;
}

}  // namespace vemo::plain
