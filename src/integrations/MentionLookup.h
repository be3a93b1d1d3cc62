// Who and what the user may mean by a spoken name in Slack.
//
// Main thread only. A lookup reads memory alone, changes nothing and never fails.
#pragma once

#include <QString>
#include <optional>

namespace vemo {

class MentionLookup {
 public:
  virtual ~MentionLookup() = default;

  /// "#" and the channel's name, or nothing when no channel is called so.
  virtual std::optional<QString> resolveChannelMention(const QString& spoken) const = 0;

  /// "@" and the person's mention name, or nothing when nobody is called so.
  virtual std::optional<QString> resolveUserMention(const QString& spoken) const = 0;
};

}  // namespace vemo
