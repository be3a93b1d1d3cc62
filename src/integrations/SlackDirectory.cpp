#include "integrations/SlackDirectory.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

#include "base/Text.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

struct MentionAlias {
  QStringView spoken;
  QStringView firstName;
};

/// What speech recognition makes of the names of some colleagues.
constexpr std::array mentionAliases{
    MentionAlias{u"saoirse brennan", u"saoirse"}, MentionAlias{u"seer sha", u"saoirse"},
    MentionAlias{u"sur shah", u"saoirse"},        MentionAlias{u"saoirse", u"saoirse"},
    MentionAlias{u"joaquin", u"joaquin"},         MentionAlias{u"niamh", u"niamh"},
};

std::optional<QString> aliasOf(const QString& key) {
  const auto alias = std::ranges::find(mentionAliases, QStringView(key), &MentionAlias::spoken);
  if (alias == mentionAliases.end()) return std::nullopt;
  return alias->firstName.toString();
}

QString mentionNameOf(const SlackUser& user) {
  if (!user.displayName.isEmpty()) return user.displayName;
  return user.name.isEmpty() ? user.realName : user.name;
}

QString replaced(QString text, QChar before, QChar after) {
  return text.replace(before, after);
}

/// Keeps the place of a name that has none yet.
void addFirst(QHash<QString, std::size_t>& places, const QString& name, std::size_t place) {
  if (!places.contains(name)) places.insert(name, place);
}

std::optional<std::size_t> findIn(const QHash<QString, std::size_t>& places, const QString& name) {
  const auto found = places.constFind(name);
  return found == places.cend() ? std::nullopt : std::optional(*found);
}

/// The lower of two places, either of which may be missing.
std::optional<std::size_t> firstOf(std::optional<std::size_t> one,
                                   std::optional<std::size_t> other) {
  if (!one || !other) return one ? one : other;
  return std::min(*one, *other);
}

}  // namespace

SlackDirectory::People::People(SlackUsers users) : list(std::move(users)) {
  std::vector<FirstByPrefix::Entry> beginnings;
  beginnings.reserve(2 * list.size());
  for (std::size_t place = 0; place < list.size(); ++place) {
    const SlackUser& user = list[place];
    const QString handle = lowerCased(user.name);
    addFirst(byHandle, handle, place);
    addFirst(byDisplayName, lowerCased(user.displayName), place);
    beginnings.emplace_back(lowerCased(user.realName), place);
    beginnings.emplace_back(handle, place);
  }
  byBeginning = FirstByPrefix(std::move(beginnings));
}

SlackDirectory::Rooms::Rooms(SlackChannels channels) : list(std::move(channels)) {
  for (std::size_t place = 0; place < list.size(); ++place) {
    const QString name = lowerCased(list[place].name);
    addFirst(byName, name, place);
    addFirst(byBlankedName, replaced(name, u'-', u' '), place);
  }
}

std::optional<QString> SlackDirectory::resolveChannelMention(const QString& spoken) const {
  const QString dashed = replaced(lowerCased(trimmed(spoken)), u' ', u'-');
  if (dashed.isEmpty()) return std::nullopt;
  const auto place =
      firstOf(findIn(m_rooms.byName, dashed), findIn(m_rooms.byBlankedName, lowerCased(spoken)));
  if (!place) return std::nullopt;
  return u'#' + m_rooms.list[*place].name;
}

std::optional<QString> SlackDirectory::resolveUserMention(const QString& spoken) const {
  const QString key = lowerCased(trimmed(spoken));
  if (key.isEmpty()) return std::nullopt;
  const auto alias = aliasOf(key);
  if (const auto place = findUser(alias.value_or(key)))
    return u'@' + mentionNameOf(m_people.list[*place]);
  // A known colleague gets a tag from an empty directory too.
  if (alias) return u'@' + alias->first(1).toUpper() + alias->sliced(1);
  return std::nullopt;
}

std::optional<std::size_t> SlackDirectory::findUser(const QString& target) const {
  if (const auto place = findIn(m_people.byHandle, target)) return place;
  return firstOf(findIn(m_people.byDisplayName, target), m_people.byBeginning.find(target));
}

}  // namespace vemo
