#include "app/CommandLine.h"

#include <map>

#include "platform/qt/QtSystemInformation.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString usage =
    u"Usage: vemo [COMMAND]\n"
    u"Without a command, Vemo starts, or shows its window where it runs already.\n\n"
    u"Commands for the running Vemo:\n"
    u"  toggle          start or stop a dictation\n"
    u"  start           start a dictation\n"
    u"  stop            end the dictation and paste its text\n"
    u"  status          say how the dictation stands\n"
    u"  quit            end Vemo\n"
    u"  sign-in         open the page on which you sign in\n"
    u"  cancel-sign-in  wait for that page no longer\n"
    u"  sign-out        forget the account on this machine\n\n"
    u"Options:\n"
    u"  --help     show this text\n"
    u"  --version  show the version\n"
    u"  --check    show the version where it can run here, without starting it\n"_s;

/// What is typed, and the operation of RemoteControl that it means.
const std::map<QString, QString> remoteCommands{{u"toggle"_s, u"toggle"_s},
                                                {u"start"_s, u"start"_s},
                                                {u"stop"_s, u"stop"_s},
                                                {u"status"_s, u"status"_s},
                                                {u"quit"_s, u"quit"_s},
                                                {u"sign-in"_s, u"signIn"_s},
                                                {u"cancel-sign-in"_s, u"cancelSignIn"_s},
                                                {u"sign-out"_s, u"signOut"_s}};

QString versionLine() {
  const auto information = readSystemInformation();
  return u"Vemo %1 (%2)\n"_s.arg(information.applicationVersion, information.applicationBuild);
}

}  // namespace

std::expected<CommandLine, QString> parseCommandLine(const QStringList& arguments) {
  if (arguments.isEmpty() || arguments == QStringList{u"--launched-at-login"_s})
    return RunCommand{};
  const QString& first = arguments.front();
  if (arguments.size() == 1) {
    if (const auto command = remoteCommands.find(first); command != remoteCommands.end())
      return RemoteCommand{command->second, {}};
    if (first == u"--help" || first == u"-h") return PrintCommand{usage};
    if (first == u"--version") return PrintCommand{versionLine()};
    if (first == u"--check") return CheckCommand{versionLine()};
  }
  // For the desktop, which starts it with the address that a browser was sent to.
  if (arguments.size() == 2 && first == u"open") return RunCommand{.address = arguments[1]};
  return std::unexpected(
      u"vemo: '%1' is not understood; see vemo --help"_s.arg(arguments.join(u' ')));
}

}  // namespace vemo
