// What a key event costs in HotkeyManager while somebody types, for presets and for recorded
// shortcuts. Both shortcuts are read from the settings at every event; the baseline is those two
// reads with nothing made of them.
#include <cstdio>

#include "Stopwatch.h"
#include "desktop/HotkeyManager.h"
#include "desktop/VirtualKeys.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeKeyEventSource.h"
#include "fakes/FakeLoneModifier.h"
#include "fakes/FakeMainThread.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int eventsPerRound = 20'000;
constexpr int rounds = 50;

/// A capital letter and three small ones, as events.
const KeyEvent typing[] = {
    {KeyEvent::Type::FlagsChanged, kLeftShift, ShiftFlag},
    {KeyEvent::Type::KeyDown, 0, ShiftFlag},
    {KeyEvent::Type::KeyUp, 0, ShiftFlag},
    {KeyEvent::Type::FlagsChanged, kLeftShift, 0},
    {KeyEvent::Type::KeyDown, 1, 0},
    {KeyEvent::Type::KeyUp, 1, 0},
    {KeyEvent::Type::KeyDown, 2, 0},
    {KeyEvent::Type::KeyUp, 2, 0},
    {KeyEvent::Type::KeyDown, 3, 0},
    {KeyEvent::Type::KeyUp, 3, 0},
};

template <typename Work>
double nanosecondsPerEvent(Work&& work) {
  Rounds times;
  for (int round = 0; round < rounds; ++round) {
    times.add(millisecondsFor([&] {
      for (int i = 0; i < eventsPerRound; ++i) work(typing[i % std::size(typing)]);
    }));
  }
  return times.median() * 1e6 / eventsPerRound;
}

void choose(Settings& settings, const QString& pushToTalk, const QString& toggle) {
  settings.set(keys::pushToTalkHotkeyChoice, pushToTalk);
  settings.set(keys::toggleHotkeyChoice, toggle);
}

}  // namespace

int main() {
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  TestStorage storage(clock);
  Settings& settings = storage.settings;
  FakeKeyEventSource source;
  FakeLoneModifier loneModifier;
  HotkeyManager hotkey(source, loneModifier, clock, mainThread, settings, storage.debugLog);
  hotkey.installTap();
  settings.set(keys::customPushToTalkShortcutData,
               encodeShortcut({.keyCode = 96, .modifierFlagsRaw = ControlFlag}));
  settings.set(keys::customToggleShortcutData, encodeShortcut({.keyCode = 97}));

  choose(settings, u"rightOption"_s, u"controlSpace"_s);
  std::size_t length = 0;
  const double reads = nanosecondsPerEvent([&](const KeyEvent&) {
    length += settings.get(keys::pushToTalkHotkeyChoice, QString()).size() +
              settings.get(keys::toggleHotkeyChoice, QString()).size();
  });

  struct Case {
    const char* what;
    QString pushToTalk;
    QString toggle;
  };
  const Case cases[] = {
      {"bare modifiers", u"eitherOption"_s, u"fnGlobe"_s},
      {"a modifier and a chord", u"rightOption"_s, u"controlSpace"_s},
      {"two recorded shortcuts", u"custom"_s, u"custom"_s},
      {"two choices of a later version", u"unknown"_s, u"unknown"_s},
  };
  std::printf("%-32s %8.0f ns\n", "two reads of the settings", reads);
  for (const Case& row : cases) {
    choose(settings, row.pushToTalk, row.toggle);
    const double each = nanosecondsPerEvent([&](const KeyEvent& event) { source.send(event); });
    std::printf("%-32s %8.0f ns an event, %5.1f times the reads\n", row.what, each, each / reads);
  }
  return length > 0 ? 0 : 1;
}
