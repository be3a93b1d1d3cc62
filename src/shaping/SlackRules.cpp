#include "shaping/SlackRules.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "integrations/MentionLookup.h"
#include "shaping/BroadcastRules.h"
#include "shaping/EmojiRules.h"
#include "shaping/MentionPatterns.h"
#include "shaping/SpokenFileName.h"
#include "shaping/TimeBudget.h"

namespace vemo {

namespace {

QString group(const QString& text, const RegexMatch& match, std::size_t number) {
  return text.sliced(match[number].start, match[number].length);
}

bool isBroadcastName(const QString& name) {
  return std::ranges::find(broadcastNames, lowerCased(name)) != std::end(broadcastNames);
}

/// Whether the text ends as "send … to @name" does: a look at its last word spares most texts the
/// pattern, which has to try every word.
bool mayEndInMention(const QString& text) {
  qsizetype end = text.size();
  while (end > 0 && text[end - 1].isSpace()) --end;
  qsizetype start = end;
  while (start > 0 && !text[start - 1].isSpace()) --start;
  return start < end && text[start] == u'@';
}

/// Group 2 of the send pattern. A name may have points in it, so the group takes a closing one too;
/// it goes as every other closing mark does.
QString recipient(const QString& text, const RegexMatch& match) {
  QString name = trimmed(group(text, match, 2));
  const bool isMarkTaken = match[2].start + match[2].length < match[0].start + match[0].length;
  if (!isMarkTaken && name.endsWith(u'.') && name.size() > 2) name.chop(1);
  return name;
}

}  // namespace

SlackRules::SlackRules(const MentionLookup& directory) : m_directory(directory) {
  m_rules.add(broadcastRules, CaseMatching::Sensitive);
  add(channelPattern, [this](const QString& text, const RegexMatch& match) {
    return channelMention(group(text, match, 1));
  });
  add(repeatedMentionPattern, [this](const QString& text, const RegexMatch& match) {
    return group(text, match, 1) + u' ' + userMention(group(text, match, 2));
  });
  add(plainMentionPattern,
      [this](const QString& text, const RegexMatch& match) -> std::optional<QString> {
        const QString name = group(text, match, 1);
        if (isBroadcastName(name)) return std::nullopt;
        return userMention(name);
      });
  m_rules.add(emojiRules, CaseMatching::Sensitive);
  if (auto send = Regex::compile(sendPattern)) m_send = *std::move(send);
}

void SlackRules::add(const MentionPattern& pattern, RuleSequence::Rewrite rewrite) {
  m_rules.add({.pattern = pattern.pattern.toString(), .rewrite = std::move(rewrite)},
              pattern.cues.split(u'|'));
}

Shaped SlackRules::apply(const QString& text, const TimeBudget& budget) {
  const auto mentioned = m_rules.apply(text, budget);
  return mentioned ? reordered(*mentioned, budget) : mentioned;
}

QString SlackRules::channelMention(const QString& name) const {
  const auto known = m_directory.resolveChannelMention(name);
  return known ? *known : u'#' + lowerCased(name);
}

QString SlackRules::userMention(const QString& name) const {
  const auto known = m_directory.resolveUserMention(name);
  return known ? *known : u'@' + capitalized(name);
}

Shaped SlackRules::reordered(const QString& text, const TimeBudget& budget) const {
  if (!m_send || !mayEndInMention(text)) return text;
  const auto matches = m_send->matchesAt(text, std::to_array<qsizetype>({0}),
                                         [&budget] { return budget.isSpent(); });
  if (!matches) return std::unexpected(ShapingFailure::OutOfTime);
  if (matches->empty()) return text;
  const auto& match = matches->front();
  return recipient(text, match) + u' ' + trimmed(group(text, match, 1));
}

}  // namespace vemo
