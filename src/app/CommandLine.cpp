#include "app/CommandLine.h"

#include "platform/qt/QtSystemInformation.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString usage =
    u"Usage: vemo [COMMAND]\n"
    u"Without a command, Vemo starts and stays in the background.\n\n"
    u"Commands for the running Vemo:\n"
    u"  toggle   start or stop a dictation\n"
    u"  start    start a dictation\n"
    u"  stop     end the dictation and paste its text\n"
    u"  status   say how the dictation stands\n"
    u"  quit     end Vemo\n\n"
    u"Options:\n"
    u"  --help     show this text\n"
    u"  --version  show the version\n"_s;

const QStringList remoteCommands{u"toggle"_s, u"start"_s, u"stop"_s, u"status"_s, u"quit"_s};

}  // namespace

std::expected<CommandLine, QString> parseCommandLine(const QStringList& arguments) {
  if (arguments.isEmpty()) return RunCommand{};
  const QString& first = arguments.front();
  if (arguments.size() == 1) {
    if (remoteCommands.contains(first)) return RemoteCommand{first};
    if (first == u"--help" || first == u"-h") return PrintCommand{usage};
    if (first == u"--version") {
      const auto information = readSystemInformation();
      return PrintCommand{
          u"Vemo %1 (%2)\n"_s.arg(information.applicationVersion, information.applicationBuild)};
    }
  }
  return std::unexpected(
      u"vemo: '%1' is not understood; see vemo --help"_s.arg(arguments.join(u' ')));
}

}  // namespace vemo
