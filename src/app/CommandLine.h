// What the program is asked to do on its command line.
#pragma once

#include <QString>
#include <QStringList>
#include <expected>
#include <variant>

namespace vemo {

/// Run as the resident program, or reach the one that runs.
struct RunCommand {
  QString address;  ///< to open there; empty for none
};

/// Reach the running program with an operation of RemoteControl.
struct RemoteCommand {
  QString name;
  QStringList arguments;
};

/// Print a text and end.
struct PrintCommand {
  QString text;
};

/// See whether this version runs here, without running it: how it is told from the command line
/// and by the version that would install it. Prints the text where it does.
struct CheckCommand {
  QString text;
};

using CommandLine = std::variant<RunCommand, RemoteCommand, PrintCommand, CheckCommand>;

/// The error is what to tell the person at the terminal.
std::expected<CommandLine, QString> parseCommandLine(const QStringList& arguments);

}  // namespace vemo
