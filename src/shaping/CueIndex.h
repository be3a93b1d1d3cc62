// Tells where in a text any of many phrases may begin, in one walk over the text.
//
// Phrases and text are compared without regard to case (full case folding, as ICU's patterns do),
// with any white space as one blank, up to the phrase's first 24 units, and by hash. So an answer
// may be wrong in one way only: a place may be named where the phrase doesn't stand. A place that
// can't be the beginning of a word, between two ASCII letters or digits, is passed over: every
// pattern that is looked for this way starts with a word boundary.
//
// Filled by one thread; any may search it afterwards.
#pragma once

#include <QStringView>
#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vemo {

class CueIndex {
 public:
  using Cue = std::uint32_t;

  /// A cue and where it may begin, in UTF-16 units.
  struct Place {
    qsizetype start;
    Cue cue;

    friend bool operator==(const Place&, const Place&) = default;
  };

  /// The number of the cue for a phrase; phrases that can't be told apart have the same.
  Cue add(QStringView phrase);

  std::size_t cueCount() const { return m_cues.size(); }

  /// All places from `from` up to and including `to`, in their order.
  std::vector<Place> placesIn(QStringView text, qsizetype from, qsizetype to) const;

  /// From where on a cue may begin that reaches up to `position`.
  static qsizetype reachBefore(QStringView text, qsizetype position);

 private:
  using Hash = std::uint64_t;
  static constexpr std::size_t maxLength = 24;
  static constexpr std::size_t stemLength = 4;

  void setBit(Hash hash);
  bool hasBit(Hash hash) const;
  void grow();

  std::unordered_map<Hash, Cue> m_cues;
  std::vector<Hash> m_stems;
  std::uint32_t m_lengths = 0;        ///< bit n: some cue has n units
  std::vector<std::uint64_t> m_bits;  ///< a filter before the map: hashes of cues and of stems
};

}  // namespace vemo
