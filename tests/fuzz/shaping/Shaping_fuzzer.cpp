// Any transcript in any world comes through the stages, and as the plain reading of the rules has
// it.
//
// The input is UTF-8 in lines that end with U+0001: the transcript, then an entry a line, which is
// a dictionary's, or a snippet's when it starts with "+". U+0002 parts what is heard from what is
// written.
#include <QJsonArray>
#include <QJsonObject>

#include "Fuzzing.h"
#include "base/Json.h"
#include "fakes/FakeClock.h"
#include "integrations/SlackDirectory.h"
#include "plain/PlainContextProcessor.h"
#include "plain/PlainLookups.h"
#include "shaping/CodeRules.h"
#include "shaping/ContextProcessor.h"
#include "shaping/TimeBudget.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

PlainSettings settingsFrom(const QStringList& lines) {
  QJsonArray dictionary;
  QJsonArray shortcuts;
  for (const QString& line : lines.sliced(1)) {
    const QString heard = line.section(u'\u0002', 0, 0);
    const QString written = line.section(u'\u0002', 1);
    if (heard.startsWith(u'+'))
      shortcuts.append(
          QJsonObject{{u"id"_s, u"1"_s}, {u"trigger"_s, heard.sliced(1)}, {u"snippet"_s, written}});
    else
      dictionary.append(
          QJsonObject{{u"id"_s, u"1"_s}, {u"phrase"_s, heard}, {u"replacement"_s, written}});
  }
  return {.dictionary = compactJson(dictionary), .shortcuts = compactJson(shortcuts)};
}

Shaped throughAllStages(const QString& text, const PlainSettings& settings, FileTagLookup& files,
                        const MentionLookup& directory) {
  FakeMainThread mainThread;
  const FakeClock clock{mainThread};
  const TimeBudget budget(clock, std::chrono::seconds(1));
  DictionaryStage dictionary;
  ShortcutStage shortcuts;
  CodeRules codeRules;
  const FileTagging fileTagging(files);
  SlackRules slackRules(directory);
  auto shaped = dictionary.apply(text, settings.dictionary, budget);
  if (shaped) shaped = shortcuts.apply(*shaped, settings.shortcuts, budget);
  if (shaped) shaped = codeRules.apply(*shaped, budget);
  if (shaped) shaped = fileTagging.apply(*shaped, budget);
  if (shaped) shaped = slackRules.apply(*shaped, budget);
  return shaped ? withSingleBlanks(*shaped) : shaped;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QStringList lines = QString::fromUtf8(bytesOf(data, size)).split(u'\u0001');
  const auto settings = settingsFrom(lines);
  PlainFileTags files({u"AppState.swift"_s, u"foo-bar.ts"_s, u"README.md"_s});
  const SlackUsers users = {{u"U"_s, u"maria"_s, u"Maria Gomez"_s, u"mg"_s, false}};
  const SlackChannels channels = {{u"C"_s, u"General"_s, false}};
  const SlackDirectory directory(users, channels);

  const auto shaped = throughAllStages(lines.first(), settings, files, directory);
  PlainContextProcessor plain(files, directory);
  const QString expected = plain.process(lines.first(), u"code"_s, u""_s, settings);
  require(!shaped || plain.isCutShort() || *shaped == expected);
  return 0;
}
