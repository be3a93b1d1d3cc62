// Writes settings without end, for a test that kills it: settings_writer FILE.
//
// Each state is one number, many times over, so that a mixture of two states shows. A byte on
// standard output tells of every change.
#include <unistd.h>

#include "fakes/FakeClock.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  vemo::FakeMainThread mainThread;
  vemo::FakeClock clock(mainThread);
  vemo::DebugLog debugLog(clock, QString());
  vemo::Settings settings(QString::fromLocal8Bit(argv[1]), debugLog);
  for (int number = 0;; ++number) {
    settings.set(vemo::keys::recentDictations, (QByteArray::number(number) + ' ').repeated(5000));
    if (number % 3 == 0) settings.waitUntilWritten();
    if (::write(STDOUT_FILENO, ".", 1) != 1) return 1;
  }
}
