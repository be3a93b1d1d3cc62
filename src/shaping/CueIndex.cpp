#include "shaping/CueIndex.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <bit>

namespace vemo {

namespace {

constexpr std::uint64_t startOfHash = 0xcbf29ce484222325;
constexpr std::uint64_t stemSalt = 0x9e3779b97f4a7c15;

std::uint64_t extended(std::uint64_t hash, char16_t unit) {
  return (hash ^ unit) * 0x100000001b3;
}

bool isBlank(char16_t unit) {
  return unit < 0x80 ? unit == u' ' || (unit >= 9 && unit <= 13) : u_isUWhiteSpace(unit);
}

bool isPlainWordUnit(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
         (unit >= u'0' && unit <= u'9') || unit == u'_';
}

/// Whether no word boundary can lie before `position`.
bool isInsidePlainWord(QStringView text, qsizetype position) {
  return position > 0 && isPlainWordUnit(text[position].unicode()) &&
         isPlainWordUnit(text[position - 1].unicode());
}

/// Whether folding leaves the unit alone, told without a look into ICU's tables: true of ASCII but
/// its capitals, and of the blocks from Hebrew to Myanmar, CJK and Hangul.
bool isWithoutCase(char16_t unit) {
  if (unit < 0x80) return unit < u'A' || unit > u'Z';
  return (unit >= 0x0590 && unit < 0x10A0) || (unit >= 0x2E80 && unit < 0xA640) ||
         (unit >= 0xAC00 && unit < 0xD7FC);
}

/// A text folded unit by unit, with white space as single blanks.
struct FoldedText {
  std::vector<char16_t> units;
  /// For each unit the place in the text from which it comes, or -1 where no phrase can begin.
  std::vector<qsizetype> starts;

  void append(char16_t unit, qsizetype start) {
    units.push_back(unit);
    starts.push_back(start);
  }

  /// Folds the character at `position`; returns the position after it.
  qsizetype fold(QStringView text, qsizetype position) {
    const char16_t unit = text[position].unicode();
    const qsizetype start = isInsidePlainWord(text, position) ? -1 : position;
    if (isBlank(unit)) {
      if (units.empty() || units.back() != u' ') append(u' ', start);
      return position + 1;
    }
    if (unit < 0x80 || isWithoutCase(unit)) {
      append(isWithoutCase(unit) ? unit : unit + (u'a' - u'A'), start);
      return position + 1;
    }
    const bool isPair = text[position].isHighSurrogate() && position + 1 < text.size() &&
                        text[position + 1].isLowSurrogate();
    const int32_t length = isPair ? 2 : 1;
    std::array<char16_t, 8> folded;  // no character folds to more than three
    UErrorCode status = U_ZERO_ERROR;
    const int32_t foldedLength =
        u_strFoldCase(folded.data(), folded.size(), text.utf16() + position, length,
                      U_FOLD_CASE_DEFAULT, &status);
    for (int32_t i = 0; i < foldedLength; ++i) append(folded[i], i == 0 ? start : -1);
    return position + length;
  }
};

}  // namespace

CueIndex::Cue CueIndex::add(QStringView phrase) {
  FoldedText folded;
  for (qsizetype i = 0; i < phrase.size() && folded.units.size() < maxLength;)
    i = folded.fold(phrase, i);
  const std::size_t length = std::min(folded.units.size(), maxLength);
  Hash hash = startOfHash;
  Hash stem = 0;
  for (std::size_t i = 0; i < length; ++i) {
    hash = extended(hash, folded.units[i]);
    if (i + 1 == stemLength) stem = hash ^ stemSalt;
  }
  const auto [entry, isNew] = m_cues.try_emplace(hash, static_cast<Cue>(m_cues.size()));
  if (!isNew) return entry->second;
  m_lengths |= std::uint32_t{1} << length;
  if (length > stemLength) m_stems.push_back(stem);
  if (m_bits.size() * 64 < m_cues.size() * 16) grow();
  setBit(hash);
  if (length > stemLength) setBit(stem);
  return entry->second;
}

void CueIndex::grow() {
  m_bits.assign(std::bit_ceil(m_cues.size() + 64), 0);
  for (const auto& [hash, cue] : m_cues) setBit(hash);
  for (const Hash stem : m_stems) setBit(stem);
}

void CueIndex::setBit(Hash hash) {
  const Hash place = (hash * stemSalt) >> 32;
  m_bits[(place / 64) % m_bits.size()] |= std::uint64_t{1} << (place % 64);
}

bool CueIndex::hasBit(Hash hash) const {
  const Hash place = (hash * stemSalt) >> 32;
  return m_bits[(place / 64) & (m_bits.size() - 1)] >> (place % 64) & 1;
}

std::vector<CueIndex::Place> CueIndex::placesIn(QStringView text, qsizetype from,
                                                qsizetype to) const {
  std::vector<Place> places;
  to = std::min(to, text.size());
  if (m_cues.empty() || from >= text.size() || from > to) return places;
  if (from > 0 && text[from].isLowSurrogate() && text[from - 1].isHighSurrogate()) --from;

  FoldedText folded;
  folded.units.reserve(static_cast<std::size_t>(to - from) + maxLength);
  folded.starts.reserve(folded.units.capacity());
  qsizetype position = from;
  while (position < text.size() && position <= to) position = folded.fold(text, position);
  const std::size_t startCount = folded.units.size();
  while (position < text.size() && folded.units.size() < startCount + maxLength)
    position = folded.fold(text, position);

  for (std::size_t i = 0; i < startCount; ++i) {
    if (folded.starts[i] < 0) continue;
    const std::size_t longest = std::min(maxLength, folded.units.size() - i);
    Hash hash = startOfHash;
    for (std::size_t length = 1; length <= longest; ++length) {
      hash = extended(hash, folded.units[i + length - 1]);
      if (m_lengths >> length & 1 && hasBit(hash)) {
        if (const auto cue = m_cues.find(hash); cue != m_cues.end())
          places.push_back({folded.starts[i], cue->second});
      }
      if (length == stemLength && !hasBit(hash ^ stemSalt)) break;
    }
  }
  return places;
}

qsizetype CueIndex::reachBefore(QStringView text, qsizetype position) {
  std::size_t length = 0;
  while (position > 0 && length < maxLength) {
    const bool isInBlanks = isBlank(text[position - 1].unicode());
    --position;
    while (isInBlanks && position > 0 && isBlank(text[position - 1].unicode())) --position;
    ++length;
  }
  return position;
}

}  // namespace vemo
