// Leaves a note of fixed size when a fatal signal ends the program, and tells it at a later start.
//
// The handler makes async-signal-safe calls alone; what the system does with the signal afterwards
// stays the system's business. A note holds the signal, the build and the time, nothing of what was
// in memory. Notes wait in a file that only the user can read, until subscribe() takes them. A file
// that isn't made of whole notes gives those that are; one that can't be made gives nothing.
//
// There is one at a time, on the main thread; the handler runs on whichever thread fails.
#pragma once

#include <QByteArray>
#include <QString>

#include "ports/CrashDiagnostics.h"

namespace vemo {

class SignalCrashRecorder : public CrashDiagnostics {
 public:
  /// `build` is kept to its first 31 bytes.
  SignalCrashRecorder(const QString& file, const QByteArray& build);
  ~SignalCrashRecorder() override;
  SignalCrashRecorder(const SignalCrashRecorder&) = delete;
  SignalCrashRecorder& operator=(const SignalCrashRecorder&) = delete;

  void subscribe(std::function<void(Payload)> receive) override;

 private:
  Payload takeNotes();

  int m_descriptor = -1;
  QByteArray m_signalStack;
};

/// The whole notes that the bytes hold, in their order; bytes that are no note are passed over.
CrashDiagnostics::Payload crashNotesIn(QByteArrayView bytes);

}  // namespace vemo
