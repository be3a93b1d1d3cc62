// The plain reading of the lookups: walks from first to last that lower-case each name they meet.
//
// For tests and benchmarks.
#pragma once

#include <QString>
#include <QStringList>
#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "integrations/FileTagLookup.h"
#include "integrations/MentionLookup.h"
#include "integrations/SlackRecords.h"

namespace vemo {

class PlainFileTags final : public FileTagLookup {
 public:
  explicit PlainFileTags(QStringList fileNames = {}) : m_fileNames(std::move(fileNames)) {}

  void refreshActiveWorkspace() override { ++m_refreshCount; }
  int refreshCount() const { return m_refreshCount; }

  std::optional<QString> resolveFileTag(const QString& spokenName,
                                        const QString& spokenExtension) const override {
    const QString name = lowerCased(trimmed(spokenName));
    const QString ext = lowerCased(trimmed(spokenExtension));
    for (const QString& fileName : m_fileNames) {
      const auto [base, extension] = parts(fileName);
      if (lowerCased(fileName) == name + u'.' + ext ||
          (lowerCased(base) == name && (extension == ext || ext.isEmpty())))
        return u'@' + fileName;
    }
    const QString joined = QString(name).remove(u' ');
    const QString dashed = QString(name).replace(u' ', u'-');
    const QString underscored = QString(name).replace(u' ', u'_');
    for (const QString& fileName : m_fileNames) {
      const auto [base, extension] = parts(fileName);
      if (!ext.isEmpty() && extension != ext) continue;
      const QString lower = lowerCased(base);
      if (lower == joined || lower == dashed || lower == underscored || lower.contains(joined))
        return u'@' + fileName;
    }
    return std::nullopt;
  }

 private:
  static std::pair<QString, QString> parts(const QString& fileName) {
    const qsizetype point = fileName.lastIndexOf(u'.');
    if (point <= 0) return {fileName, {}};
    return {fileName.left(point), lowerCased(fileName.mid(point + 1))};
  }

  QStringList m_fileNames;
  int m_refreshCount = 0;
};

class PlainMentions final : public MentionLookup {
 public:
  PlainMentions() = default;
  PlainMentions(SlackUsers users, SlackChannels channels)
      : m_users(std::move(users)), m_channels(std::move(channels)) {}

  std::optional<QString> resolveChannelMention(const QString& spoken) const override {
    const QString key = lowerCased(trimmed(spoken)).replace(u' ', u'-');
    if (key.isEmpty()) return std::nullopt;
    for (const auto& channel : m_channels) {
      const QString name = lowerCased(channel.name);
      if (name == key || QString(name).replace(u'-', u' ') == lowerCased(spoken))
        return u'#' + channel.name;
    }
    return std::nullopt;
  }

  /// Without aliases: none of the names that tests say is one.
  std::optional<QString> resolveUserMention(const QString& spoken) const override {
    const QString key = lowerCased(trimmed(spoken));
    if (key.isEmpty()) return std::nullopt;
    for (const auto& user : m_users) {
      if (lowerCased(user.name) == key) return mentionOf(user);
    }
    for (const auto& user : m_users) {
      if (lowerCased(user.displayName) == key || lowerCased(user.realName).startsWith(key) ||
          lowerCased(user.name).startsWith(key))
        return mentionOf(user);
    }
    return std::nullopt;
  }

 private:
  static QString mentionOf(const SlackUser& user) {
    if (!user.displayName.isEmpty()) return u'@' + user.displayName;
    return u'@' + (user.name.isEmpty() ? user.realName : user.name);
  }

  SlackUsers m_users;
  SlackChannels m_channels;
};

}  // namespace vemo
