// Lines on standard output that can neither stop nor hold up the program.
//
// A reader that has gone, a full pipe and a stopped terminal cost the line, nothing else. Any
// thread; lines of up to 4,096 bytes don't mix.
#pragma once

#include <QByteArray>

namespace vemo {

class StandardOutput {
 public:
  /// Stays silent for good when standard output is closed by now: the descriptor may come to belong
  /// to some other file later.
  StandardOutput();

  /// Writes the bytes as far as that is possible without waiting.
  void write(const QByteArray& bytes) const;

 private:
  const bool m_isOpen;
};

}  // namespace vemo
