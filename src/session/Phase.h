// Where a dictation stands: the one state that decides what each event may do.
#pragma once

#include <QString>

namespace vemo {

struct Phase {
  enum class Kind { Idle, Recording, Transcribing, Injecting, Error };

  Kind kind = Kind::Idle;
  QString message;  ///< of Error alone: what the user is shown

  static Phase idle() { return {}; }
  static Phase recording() { return {Kind::Recording, {}}; }
  static Phase transcribing() { return {Kind::Transcribing, {}}; }
  static Phase injecting() { return {Kind::Injecting, {}}; }
  static Phase error(QString message) { return {Kind::Error, std::move(message)}; }

  /// "idle", "recording", …: the name alone, fit for the log.
  QString name() const;

  friend bool operator==(const Phase&, const Phase&) = default;
};

}  // namespace vemo
