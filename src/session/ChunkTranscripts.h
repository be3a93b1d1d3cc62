// The texts of a long dictation's chunks, which come back in any order. Main thread only.
#pragma once

#include <QString>
#include <map>

namespace vemo {

class ChunkTranscripts {
 public:
  void store(int index, QString text) { m_texts.insert_or_assign(index, std::move(text)); }
  void clear() { m_texts.clear(); }

  /// The texts in the order of their indices, trimmed, those that are empty left out, joined by one
  /// blank. A chunk that never came back is a hole and no more.
  QString stitched() const;

 private:
  std::map<int, QString> m_texts;
};

}  // namespace vemo
