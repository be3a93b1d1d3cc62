// How people say that a channel or a colleague is meant. What a match becomes depends on who is
// there: SlackRules tells. The cues are those of RewriteRule.
#pragma once

#include <QStringView>

namespace vemo {

struct MentionPattern {
  QStringView pattern;
  QStringView cues;
};

/// Group 1 is the channel's name.
inline constexpr MentionPattern channelPattern{
    u"(?i)\\b(?:in\\s+channel|channel)\\s+([a-zA-Z0-9_\\-]+)\\b", u"in channel|channel "};

/// Group 1 is the word that stays, group 2 the name that is said twice.
inline constexpr MentionPattern repeatedMentionPattern{
    u"(?i)\\b(to|with|for|ping|ask|tell)\\s+([a-zA-Z0-9_\\-]+)\\s+and\\s+(?:mention|tag)\\s+\\2\\b",
    u"to |with |for |ping |ask |tell "};

/// Group 1 is the name.
inline constexpr MentionPattern plainMentionPattern{
    u"(?i)\\b(?:mention|tag)\\s+([a-zA-Z0-9_\\-\\.]+)\\b", u"mention |tag "};

/// Not names of people, in lower case.
inline constexpr QStringView broadcastNames[] = {u"everyone", u"here", u"channel"};

/// Group 1 is what is sent, group 2 the mention.
inline constexpr QStringView sendPattern =
    u"(?i)^send\\s+(.+?)\\s+to\\s+(@[a-zA-Z0-9_\\-\\.]+)[.?!]?$";

}  // namespace vemo
