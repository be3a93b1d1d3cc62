// How the cost of shaping grows with the transcript: with and without punctuation, with every lead
// word of the file rules and no file name, and with a file name in every tenth word.
//
// Limits: a text of twice the length costs at most 2.3 times as much, from 1,000 to 64,000 words,
// and one of 20,000 words at most 100 ms. Exit status 1 when one is missed.
#include <cstdio>
#include <vector>

#include "BenchedShaping.h"

using namespace vemo;

namespace {

struct Kind {
  const char* name;
  QString mark;  ///< after every twelfth word
  QString more;  ///< after every tenth
};

QString text(const Kind& kind, qsizetype wordCount) {
  static const QStringList words =
      u"the file is there and we open it to edit what I modify then check inspect read view look "
      u"at scan in at see update fix refactor test analyze console api json to tell with people "
      u"dot memo for tag later"_s.split(u' ');
  QString result;
  for (qsizetype i = 0; i < wordCount; ++i) {
    if (i > 0) result += u' ';
    result += words[i % words.size()];
    if (i % 12 == 11) result += kind.mark;
    if (i % 10 == 9) result += kind.more;
  }
  return result;
}

constexpr double growthLimit = 2.3;
constexpr double timeLimit = 100;

double timeFor(BenchedShaping& shaping, const QString& words) {
  const int rounds = words.size() > 100'000 ? 5 : 20;
  return bestOf(rounds, [&] { shaping.processor.process(words); });
}

bool measure(BenchedShaping& shaping, const Kind& kind) {
  std::fprintf(stderr, "%s\n", kind.name);
  bool isWithin = true;
  QString half = text(kind, 1'000);
  double halfTime = timeFor(shaping, half);
  for (qsizetype wordCount = 2'000; wordCount <= 64'000; wordCount *= 2) {
    const QString words = text(kind, wordCount);
    double time = timeFor(shaping, words);
    // A machine that is busy for a moment slows one of the two down: both have another try.
    for (int again = 0; again < 4 && time > growthLimit * halfTime; ++again) {
      halfTime = std::min(halfTime, timeFor(shaping, half));
      time = std::min(time, timeFor(shaping, words));
    }
    const bool isSlow = time > growthLimit * halfTime;
    isWithin = isWithin && !isSlow;
    std::fprintf(stderr, "  %6lld words %8.2f ms, %4.2f times the half%s\n",
                 static_cast<long long>(wordCount), time, time / halfTime,
                 isSlow ? "  MISSED" : "");
    half = words;
    halfTime = time;
  }
  const double time = timeFor(shaping, text(kind, 20'000));
  std::fprintf(stderr, "   20000 words %8.2f ms (limit %.0f)%s\n", time, timeLimit,
               time > timeLimit ? "  MISSED" : "");
  return isWithin && time <= timeLimit;
}

}  // namespace

int main() {
  BenchedShaping shaping({u"AppState.swift"_s, u"notes.md"_s}, {}, {});
  const std::vector<Kind> kinds = {
      {"lead words, punctuation", u"."_s, u""_s},
      {"lead words, no punctuation", u""_s, u""_s},
      {"a file in ten words, punctuation", u"."_s, u" in app state dot swift"_s},
      {"a file in ten words, no punctuation", u""_s, u" in app state dot swift"_s},
      {"several scripts", u"।"_s, u" हम कल मिलेंगे и потом посмотрим"_s},
  };
  bool isWithin = true;
  for (const auto& kind : kinds) isWithin = measure(shaping, kind) && isWithin;
  return isWithin ? 0 : 1;
}
