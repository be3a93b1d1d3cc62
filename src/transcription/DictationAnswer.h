// Reads the bodies that the dictation endpoints answer with.
//
// Bodies come from outside: anything that isn't exactly the expected JSON is an absent value. Any
// thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace vemo {

/// The text in the body of a success, `{"status": …, "transcription": …}`.
std::optional<QString> transcriptionIn(const QByteArray& body);

/// The message for the user in the body of a failure, `{"status": …, "error": …}`.
std::optional<QString> errorMessageIn(const QByteArray& body);

}  // namespace vemo
