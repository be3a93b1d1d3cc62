// The longest that hostile texts and lists hold up the main thread. Limit: 250 ms. A stage that
// would take longer leaves the text as it found it. Exit status 1 when the limit is missed.
#include <cstdio>
#include <functional>
#include <map>

#include "BenchedShaping.h"

using namespace vemo;

namespace {

struct Case {
  QString text;
  QByteArray dictionary;
  QByteArray shortcuts;
};

using Numbered = std::function<QString(qsizetype)>;

QByteArray dictionary(qsizetype count, const Numbered& phrase, const Numbered& replacement) {
  return entryList(count, u"phrase"_s, u"replacement"_s, phrase, replacement);
}

QByteArray shortcuts(qsizetype count, const Numbered& trigger, const Numbered& snippet) {
  return entryList(count, u"trigger"_s, u"snippet"_s, trigger, snippet);
}

Numbered always(const QString& text) {
  return [text](qsizetype) { return text; };
}

Numbered word(qsizetype offset) {
  return [offset](qsizetype i) { return u"w%1"_s.arg(i + offset); };
}

QString allWords(qsizetype count) {
  QString text;
  for (qsizetype i = 0; i < count; ++i) text += u"w%1 "_s.arg(i % 10'000);
  return text;
}

std::map<QByteArray, Case> cases() {
  const Numbered doubled = [](qsizetype i) { return u"w%1 w%1"_s.arg(i + 1); };
  return {
      {"each entry feeds the next",
       {u"w0 "_s.repeated(500), dictionary(10'000, word(0), word(1)), {}}},
      {"each entry doubles the text", {u"w0"_s, dictionary(60, word(0), doubled), {}}},
      {"each snippet doubles the text",
       {u"w1000000 x"_s,
        {},
        shortcuts(60, word(1'000'000),
                  [](qsizetype i) { return u"w%1 w%1"_s.arg(i + 1'000'001); })}},
      {"10,000 entries, all in 20,000 words",
       {allWords(20'000), dictionary(10'000, word(0), always(u"x"_s)), {}}},
      {"10,000 entries for one word, 64,000 times",
       {u"foo "_s.repeated(64'000), dictionary(10'000, always(u"foo"_s), always(u"foo"_s)), {}}},
      {"a megabyte for each word",
       {u"foo "_s.repeated(1'000),
        dictionary(1, always(u"foo"_s), always(QString(1 << 20, u'x'))),
        {}}},
      {"lists of two megabytes",
       {u"foo bar"_s, dictionary(170, word(0), always(QString(11'000, u'x'))),
        shortcuts(
            100, [](qsizetype i) { return QString(10'000, u'é') + QString::number(i); },
            always(u"x"_s))}},
      {"lists of 18,000 entries",
       {u"foo bar"_s, dictionary(18'000, word(0), always(u"x"_s)),
        shortcuts(18'000, word(0), always(u"x"_s))}},
      {"64,000 blanks",
       {u"send open x"_s + QString(64'000, u' ') + u"y dot swift to @me"_s, {}, {}}},
      {"blanks before every file name",
       {(u"open x"_s + QString(3'000, u' ') + u"y dot swift "_s).repeated(20), {}, {}}},
      {"blanks in a message that is sent",
       {u"send "_s + (QString(2'000, u' ') + u"to "_s).repeated(30) + u"x to @me"_s, {}, {}}},
      {"a name of 200,000 parts", {u"open "_s + u"a-"_s.repeated(200'000) + u" dot ts"_s, {}, {}}},
      {"200,000 dots", {u"open dot "_s.repeated(100'000) + u"ts"_s, {}, {}}},
      {"200,000 endings", {u"dot ts "_s.repeated(200'000), {}, {}}},
      {"200,000 tags", {u"tag a and mention a "_s.repeated(50'000), {}, {}}},
      {"ask a and tag b", {u"ask a and tag b "_s.repeated(50'000), {}, {}}},
      {"a megabyte of at signs", {QString(1'000'000, u'@'), {}, {}}},
      {"a megabyte of marks", {u"a"_s + QString(1'000'000, u'\u0301'), {}, {}}},
      {"a megabyte of one word", {QString(1'000'000, u'a'), {}, {}}},
      {"a megabyte of Hindi", {u"हम कल मिलेंगे "_s.repeated(70'000), {}, {}}},
  };
}

}  // namespace

int main() {
  bool isWithin = true;
  for (const auto& [name, hostile] : cases()) {
    double longest = 0;
    for (int round = 0; round < 3; ++round) {
      BenchedShaping shaping({u"AppState.swift"_s}, {}, {});
      if (!hostile.dictionary.isEmpty())
        shaping.settings.set(keys::customDictionaryEntries, hostile.dictionary);
      if (!hostile.shortcuts.isEmpty())
        shaping.settings.set(keys::customShortcutEntries, hostile.shortcuts);
      shaping.settings.waitUntilWritten();
      // The shortest of three: what other programs take of the machine doesn't count.
      const double time = millisecondsFor([&] { shaping.processor.process(hostile.text); });
      longest = round == 0 ? time : std::min(longest, time);
    }
    const bool isSlow = longest > 250;
    isWithin = isWithin && !isSlow;
    std::fprintf(stderr, "%-44s %7.1f ms%s\n", name.constData(), longest, isSlow ? "  MISSED" : "");
  }
  return isWithin ? 0 : 1;
}
