// The members and channels of one Slack workspace, as lists and as the names that people say.
//
// A value of two halves, each made from a list and never changed, but replaced in one piece. The
// lists decide by their order, so that a lookup gives what a walk from first to last would give;
// the names are lower-cased once, when a half is made, which any thread may do.
#pragma once

#include <QHash>
#include <QString>
#include <optional>
#include <utility>

#include "integrations/FirstByPrefix.h"
#include "integrations/MentionLookup.h"
#include "integrations/SlackRecords.h"

namespace vemo {

class SlackDirectory final : public MentionLookup {
 public:
  using FirstByName = QHash<QString, std::size_t>;

  struct People {
    People() = default;
    explicit People(SlackUsers users);

    SlackUsers list;
    FirstByName byHandle;
    FirstByName byDisplayName;
    FirstByPrefix byBeginning;  ///< of the real name or the handle
  };

  struct Rooms {
    Rooms() = default;
    explicit Rooms(SlackChannels channels);

    SlackChannels list;
    FirstByName byName;
    FirstByName byBlankedName;  ///< with each "-" as a blank
  };

  SlackDirectory() = default;
  SlackDirectory(SlackUsers users, SlackChannels channels)
      : m_people(std::move(users)), m_rooms(std::move(channels)) {}

  void replace(People people) { m_people = std::move(people); }
  void replace(Rooms rooms) { m_rooms = std::move(rooms); }

  const SlackUsers& users() const { return m_people.list; }
  const SlackChannels& channels() const { return m_rooms.list; }

  std::optional<QString> resolveChannelMention(const QString& spoken) const override;
  std::optional<QString> resolveUserMention(const QString& spoken) const override;

 private:
  std::optional<std::size_t> findUser(const QString& target) const;

  People m_people;
  Rooms m_rooms;
};

}  // namespace vemo
