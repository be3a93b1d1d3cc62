// Makes up worlds (the user's lists, files, people) and transcripts in them that mix all that the
// rules look for with what they must leave alone. The same number gives the same world.
//
// For tests, benchmarks and fuzzers.
#pragma once

#include <QString>
#include <QStringList>
#include <random>

#include "integrations/SlackRecords.h"
#include "plain/PlainContextProcessor.h"

namespace vemo {

struct ShapingWorld {
  PlainSettings settings;
  QStringList fileNames;
  SlackUsers users;
  SlackChannels channels;
  QString bundleId;
};

class Transcripts {
 public:
  explicit Transcripts(std::uint32_t seed);

  ShapingWorld world();
  QString transcript();

 private:
  QString word();
  QString phrase();
  QString replacement();
  QString gap();
  QString pick(const QStringList& from) { return from[number(from.size())]; }
  qsizetype number(qsizetype below);
  QByteArray list(const QString& heardKey, const QString& writtenKey);
  QString inOtherCase(const QString& text);

  std::mt19937 m_random;
  QStringList m_phrases;  ///< of the world's lists
};

}  // namespace vemo
