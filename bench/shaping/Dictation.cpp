// What shaping one dictation costs, against the plain reading of the same rules.
//
// A transcript of 200 words in a developer tool, with 500 snippets, an index of 100,000 files, 500
// people and 500 channels, and a dictionary of 2,000 and of 10,000 entries. One word in ten is the
// dictionary's; three files are named, two colleagues and a channel. Limits: 5 ms and 50 times
// faster than the plain reading, and 10 ms. Exit status 1 when one is missed.
#include <unistd.h>

#include <cstdio>
#include <random>

#include "BenchedShaping.h"
#include "plain/PlainContextProcessor.h"

using namespace vemo;

namespace {

constexpr qsizetype wordCount = 200;
constexpr qsizetype snippetCount = 500;
constexpr qsizetype fileCount = 100'000;
constexpr qsizetype peopleCount = 500;

/// A word of a made-up language: a number in syllables.
QString madeUpWord(qsizetype number) {
  static const QStringList syllables =
      u"ba,ce,di,fo,gu,ha,je,ki,lo,mu,na,pe,qui,ro,su,ta,ve,wi,xo,zu"_s.split(u',');
  QString word;
  for (number += 20; number > 0; number /= syllables.size())
    word += syllables[number % syllables.size()];
  return word;
}

QString dictionaryPhrase(qsizetype number) {
  return number % 3 == 0 ? madeUpWord(number) + u' ' + madeUpWord(number + 7) : madeUpWord(number);
}

QString transcriptFor(qsizetype dictionarySize) {
  std::mt19937 random(7);
  const QStringList common =
      u"the,of,and,we,should,then,have,what,time,people,when,can,more,this,which,about,into"_s
          .split(u',');
  QStringList words;
  while (words.size() < wordCount) {
    if (words.size() % 10 == 0)
      words += dictionaryPhrase(static_cast<qsizetype>(random()) % dictionarySize).split(u' ');
    else
      words += common[static_cast<qsizetype>(random()) % common.size()];
  }
  words[20] = u"open ba model 77 dot swift"_s;
  words[60] = u"and the file login view 4321 dot ts,"_s;
  words[100] = u"ask person12 and tag person12"_s;
  words[130] = u"look at something new dot py."_s;
  words[150] = u"in channel team-44 mention person480"_s;
  words[170] = u"console dot log of the api"_s;
  return words.join(u' ');
}

SlackUsers people() {
  SlackUsers users;
  for (qsizetype i = 0; i < peopleCount; ++i)
    users.push_back({.id = u"U%1"_s.arg(i),
                     .name = u"handle%1"_s.arg(i),
                     .realName = u"Person%1 Surname"_s.arg(i),
                     .displayName = u"nick%1"_s.arg(i)});
  return users;
}

SlackChannels channels() {
  SlackChannels list;
  for (qsizetype i = 0; i < peopleCount; ++i)
    list.push_back({.id = u"C%1"_s.arg(i), .name = u"Team-%1"_s.arg(i)});
  return list;
}

QStringList fileNames() {
  const QStringList kinds =
      u"Model.swift,View.ts,-helper.py,Controller.swift,_test.go"_s.split(u',');
  QStringList names;
  for (qsizetype i = 0; i < fileCount; ++i)
    names.append(madeUpWord(i) + QString(kinds[i % kinds.size()]).replace(u"."_s, u"%1."_s.arg(i)));
  return names;
}

bool measure(qsizetype dictionarySize, double limit, BenchedShaping& shaping,
             PlainContextProcessor& plain) {
  const QString text = transcriptFor(dictionarySize);
  const PlainSettings settings{
      .dictionary = entryList(dictionarySize, u"phrase"_s, u"replacement"_s, dictionaryPhrase,
                              [](qsizetype i) { return u"Term%1"_s.arg(i); }),
      .shortcuts = entryList(
          snippetCount, u"trigger"_s, u"snippet"_s,
          [](qsizetype i) { return u"insert "_s + madeUpWord(i); },
          [](qsizetype i) { return u"A saved text\nof number %1"_s.arg(i); })};
  shaping.settings.set(keys::customDictionaryEntries, *settings.dictionary);
  shaping.settings.set(keys::customShortcutEntries, *settings.shortcuts);

  QString result;
  QString expected;
  const double first = millisecondsFor([&] { result = shaping.processor.process(text); });
  const double fast = bestOf(200, [&] { result = shaping.processor.process(text); });
  const double slow = bestOf(
      5, [&] { expected = plain.process(text, u"com.example.code"_s, u"Code"_s, settings); });
  const bool isWithin = fast <= limit && slow >= 50 * fast && result == expected && result != text;
  std::fprintf(stderr,
               "200 words, %5lld entries: %6.3f ms (limit %2.0f), after a change of the lists "
               "%6.2f ms, plain reading %7.1f ms, ratio %5.0f%s\n",
               static_cast<long long>(dictionarySize), fast, limit, first, slow, slow / fast,
               isWithin ? "" : "  MISSED");
  return isWithin;
}

}  // namespace

int main() {
  const QStringList names = fileNames();
  BenchedShaping shaping(names, people(), channels());
  PlainFileTags plainFiles(names);
  const PlainMentions plainMentions(people(), channels());
  PlainContextProcessor plain(plainFiles, plainMentions);
  const bool isUsualWithin = measure(2'000, 5, shaping, plain);
  const bool isLargeWithin = measure(10'000, 10, shaping, plain);
  return isUsualWithin && isLargeWithin ? 0 : 1;
}
