// The members and channels of one Slack workspace, as lists and as the names that people say.
//
// A value: made from two lists and never changed. The lists decide by their order, so that a lookup
// gives what a walk from first to last would give; the names are lower-cased once, when the
// directory is made.
#pragma once

#include <QHash>
#include <QString>
#include <optional>

#include "integrations/FirstByPrefix.h"
#include "integrations/MentionLookup.h"
#include "integrations/SlackRecords.h"

namespace vemo {

class SlackDirectory final : public MentionLookup {
 public:
  SlackDirectory() = default;
  SlackDirectory(SlackUsers users, SlackChannels channels);

  const SlackUsers& users() const { return m_users; }
  const SlackChannels& channels() const { return m_channels; }

  std::optional<QString> resolveChannelMention(const QString& spoken) const override;
  std::optional<QString> resolveUserMention(const QString& spoken) const override;

 private:
  using FirstByName = QHash<QString, std::size_t>;

  std::optional<std::size_t> findUser(const QString& target) const;

  SlackUsers m_users;
  SlackChannels m_channels;
  FirstByName m_channelByName;
  FirstByName m_channelByBlankedName;  ///< with each "-" as a blank
  FirstByName m_userByHandle;
  FirstByName m_userByDisplayName;
  FirstByPrefix m_userByBeginning;  ///< of the real name or the handle
};

}  // namespace vemo
