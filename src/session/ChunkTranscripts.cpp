#include "session/ChunkTranscripts.h"

#include <QStringList>

#include "base/Text.h"

namespace vemo {

QString ChunkTranscripts::stitched() const {
  QStringList parts;
  for (const auto& [index, text] : m_texts) {
    if (const QString part = trimmed(text); !part.isEmpty()) parts.append(part);
  }
  return parts.join(u' ');
}

}  // namespace vemo
