// Writes spoken mentions, channels and emoji as Slack understands them, and lets a mention lead the
// message that is sent to it. People and channels that nobody knows are written as they were heard.
//
// Main thread.
#pragma once

#include <QString>
#include <optional>

#include "base/Regex.h"
#include "shaping/RuleSequence.h"
#include "shaping/Shaped.h"

namespace vemo {

class MentionLookup;
struct MentionPattern;

class SlackRules {
 public:
  explicit SlackRules(const MentionLookup& directory);
  // The rules hold on to this object.
  SlackRules(const SlackRules&) = delete;
  SlackRules& operator=(const SlackRules&) = delete;

  Shaped apply(const QString& text, const TimeBudget& budget);

 private:
  void add(const MentionPattern& pattern, RuleSequence::Rewrite rewrite);
  QString channelMention(const QString& name) const;
  QString userMention(const QString& name) const;
  Shaped reordered(const QString& text, const TimeBudget& budget) const;

  const MentionLookup& m_directory;
  RuleSequence m_rules;
  std::optional<Regex> m_send;
};

}  // namespace vemo
