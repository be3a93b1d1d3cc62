#include "plain/PlainContextProcessor.h"

#include <algorithm>
#include <functional>
#include <span>

#include "base/Regex.h"
#include "base/Text.h"
#include "integrations/FileTagLookup.h"
#include "integrations/MentionLookup.h"
#include "shaping/BroadcastRules.h"
#include "shaping/CustomEntries.h"
#include "shaping/DeveloperTools.h"
#include "shaping/EmojiRules.h"
#include "shaping/FileTagPatterns.h"
#include "shaping/MentionPatterns.h"
#include "shaping/OperatorRules.h"
#include "shaping/ProductNameRules.h"
#include "shaping/ShortcutStage.h"
#include "shaping/SpokenFileName.h"
#include "shaping/VocabularyRules.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

const Regex* PlainPatterns::compiled(QStringView pattern, CaseMatching caseMatching) {
  if (m_keeping == Keeping::Nothing) m_kept.clear();
  auto& regex = m_kept
                    .try_emplace({pattern.toString(), caseMatching},
                                 std::unexpected(RegexError::InvalidPattern))
                    .first->second;
  if (!regex) regex = Regex::compile(pattern, caseMatching);
  return regex ? &*regex : nullptr;
}

namespace {

QString replaced(PlainPatterns& patterns, const QString& text, QStringView pattern,
                 const QString& replacement, CaseMatching caseMatching = CaseMatching::Sensitive) {
  const auto* regex = patterns.compiled(pattern, caseMatching);
  return regex ? patterns.finished(regex->replaced(text, replacement)).value_or(text) : text;
}

QString replacedByTable(PlainPatterns& patterns, QString text, std::span<const RewriteRule> table,
                        CaseMatching caseMatching) {
  for (const auto& row : table)
    text = replaced(patterns, text, row.pattern, row.replacement.toString(), caseMatching);
  return text;
}

using Groups = std::vector<QString>;

/// Replaces match by match, from the last to the first; nothing leaves a match as it is.
QString replacedOneByOne(PlainPatterns& patterns, const QString& text, QStringView pattern,
                         const std::function<std::optional<QString>(const Groups&)>& rewrite) {
  const auto* regex = patterns.compiled(pattern);
  if (!regex) return text;
  const auto matches = patterns.finished(regex->matches(text));
  if (!matches) return text;
  QString result = text;
  for (auto match = matches->rbegin(); match != matches->rend(); ++match) {
    Groups groups;
    for (const auto& [start, length] : *match) groups.push_back(text.mid(start, length));
    if (const auto replacement = rewrite(groups))
      result.replace(match->front().start, match->front().length, *replacement);
  }
  return result;
}

QString applyDictionary(PlainPatterns& patterns, QString text,
                        const std::optional<QByteArray>& stored) {
  text = replacedByTable(patterns, text, productNameRules, CaseMatching::Sensitive);
  const auto entries = stored ? decodeDictionary(*stored) : std::nullopt;
  if (!entries) return text;
  for (const auto& entry : *entries) {
    const QString phrase = trimmed(entry.phrase);
    const QString replacement = trimmed(entry.replacement);
    if (phrase.isEmpty() || replacement.isEmpty()) continue;
    if (const auto* regex = patterns.compiled(phrasePattern(phrase)))
      text = patterns.finished(regex->replaced(text, Regex::escapedTemplate(replacement)))
                 .value_or(text);
    else
      text.replace(phrase, replacement, Qt::CaseInsensitive);
  }
  return text;
}

QString applyShortcuts(PlainPatterns& patterns, QString text,
                       const std::optional<QByteArray>& stored) {
  auto entries = stored ? decodeShortcuts(*stored) : std::nullopt;
  if (!entries) return text;
  const QString form = spokenForm(text);
  for (const auto& entry : *entries) {
    if (spokenForm(entry.trigger) == form) return entry.snippet;
  }
  // Stable: entries of equal length keep their order.
  std::vector<CustomShortcutEntry> sorted;
  for (auto& entry : *entries) {
    const auto isShorter = [&](const CustomShortcutEntry& other) {
      return characterCount(other.trigger) < characterCount(entry.trigger);
    };
    sorted.insert(std::ranges::find_if(sorted, isShorter), entry);
  }
  for (const auto& entry : sorted) {
    const QString trigger = trimmed(entry.trigger);
    const QString snippet = trimmed(entry.snippet);
    if (trigger.isEmpty() || snippet.isEmpty()) continue;
    text = replaced(patterns, text, phrasePattern(trigger), Regex::escapedTemplate(snippet));
  }
  return text;
}

QString applyCodeRules(PlainPatterns& patterns, const QString& text) {
  return replacedByTable(
      patterns, replacedByTable(patterns, text, vocabularyRules, CaseMatching::Insensitive),
      operatorRules, CaseMatching::Sensitive);
}

}  // namespace

QString PlainContextProcessor::process(const QString& text, const QString& bundleId,
                                       const QString& appName, const PlainSettings& settings) {
  QString shaped = applyDictionary(m_patterns, text, settings.dictionary);
  shaped = applyShortcuts(m_patterns, shaped, settings.shortcuts);
  if (isDeveloperTool(bundleId, appName)) shaped = applyCodeRules(m_patterns, shaped);
  if (settings.tagsFiles) shaped = applyFileTagging(shaped);
  if (settings.mentionsPeople) shaped = applySlackRules(shaped);
  return replaced(m_patterns, shaped, u"[ \\t]{2,}", u" "_s);
}

QString PlainContextProcessor::applyFileTagging(const QString& text) {
  m_files.refreshActiveWorkspace();
  const auto leadAndTag = [this](const Groups& groups) {
    return groups[1] + u' ' + fileTag(groups[2], groups[3]);
  };
  QString tagged =
      replacedOneByOne(m_patterns, text, withSpokenExtensions(fileAfterNounPattern), leadAndTag);
  tagged =
      replacedOneByOne(m_patterns, tagged, withSpokenExtensions(fileAfterVerbPattern), leadAndTag);
  tagged = replacedOneByOne(m_patterns, tagged, withSpokenExtensions(bareFilePattern),
                            [this](const Groups& groups) { return fileTag(groups[1], groups[2]); });
  return tagged.replace(u"@@"_s, u"@"_s);
}

QString PlainContextProcessor::fileTag(const QString& name, const QString& spokenExtension) {
  const QString extension = normalizeExtension(spokenExtension);
  return m_files.resolveFileTag(name, extension)
      .value_or(u'@' + spokenToFileName(name) + u'.' + extension);
}

QString PlainContextProcessor::applySlackRules(const QString& text) {
  QString marked = replacedByTable(m_patterns, text, broadcastRules, CaseMatching::Sensitive);
  marked =
      replacedOneByOne(m_patterns, marked, channelPattern.pattern, [this](const Groups& groups) {
        return m_directory.resolveChannelMention(groups[1]).value_or(u'#' + lowerCased(groups[1]));
      });
  marked = replacedOneByOne(
      m_patterns, marked, repeatedMentionPattern.pattern,
      [this](const Groups& groups) { return groups[1] + u' ' + userMention(groups[2]); });
  marked = replacedOneByOne(m_patterns, marked, plainMentionPattern.pattern,
                            [this](const Groups& groups) -> std::optional<QString> {
                              const QString name = lowerCased(groups[1]);
                              if (name == u"everyone" || name == u"here" || name == u"channel")
                                return std::nullopt;
                              return userMention(groups[1]);
                            });
  marked = replacedByTable(m_patterns, marked, emojiRules, CaseMatching::Sensitive);
  const auto send = m_patterns.finished(m_patterns.compiled(sendPattern)->matches(marked));
  if (!send || send->empty()) return marked;
  const auto& match = send->front();
  QString recipient = marked.mid(match[2].start, match[2].length);
  // The name's own class takes a closing point, which goes all the same.
  if (marked.mid(match[0].start, match[0].length).endsWith(recipient) && recipient.endsWith(u'.') &&
      recipient != u"@.")
    recipient.chop(1);
  return recipient + u' ' + trimmed(marked.mid(match[1].start, match[1].length));
}

QString PlainContextProcessor::userMention(const QString& name) {
  return m_directory.resolveUserMention(name).value_or(u'@' + capitalized(name));
}

}  // namespace vemo
