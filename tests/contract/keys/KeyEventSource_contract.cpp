// What every key event source promises.
#include <xkbcommon/xkbcommon-keysyms.h>

#include "KeyListener.h"
#include "contract/x11/VirtualUser.h"
#include "fakes/FakeKeyEventSource.h"
#include "platform/x11/X11KeyEventSource.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Key {
  std::int64_t code;
  ModifierFlags flag;
  xkb_keysym_t symbol;
};
constexpr Key letterA{0, 0, XKB_KEY_a};
constexpr Key space{49, 0, XKB_KEY_space};
constexpr Key leftShift{56, ShiftFlag, XKB_KEY_Shift_L};
constexpr Key leftOption{58, OptionFlag, XKB_KEY_Alt_L};
constexpr Key rightOption{61, OptionFlag, XKB_KEY_Alt_R};
constexpr Key rightControl{62, ControlFlag, XKB_KEY_Control_R};
constexpr Key leftCommand{55, CommandFlag, XKB_KEY_Super_L};
constexpr Key fnKey{63, FnFlag, XKB_KEY_Scroll_Lock};

class Desk {
 public:
  virtual ~Desk() = default;
  virtual KeyEventSource& source() = 0;
  virtual void press(const Key& key) = 0;
  virtual void release(const Key& key) = 0;
};

class FakeDesk : public Desk {
 public:
  KeyEventSource& source() override { return m_source; }
  void press(const Key& key) override { change(key, m_flags | key.flag, KeyEvent::Type::KeyDown); }
  void release(const Key& key) override { change(key, m_flags & ~key.flag, KeyEvent::Type::KeyUp); }

 private:
  void change(const Key& key, ModifierFlags flags, KeyEvent::Type plainType) {
    m_flags = flags;
    m_source.send({key.flag ? KeyEvent::Type::FlagsChanged : plainType, key.code, flags});
  }

  FakeKeyEventSource m_source;
  ModifierFlags m_flags = 0;
};

class X11Desk : public Desk {
 public:
  KeyEventSource& source() override { return m_source; }
  void press(const Key& key) override { m_user.press(key.symbol); }
  void release(const Key& key) override { m_user.release(key.symbol); }

 private:
  EventLoop m_loop;
  VirtualUser m_user;
  X11KeyEventSource m_source;
};

using MakeDesk = std::unique_ptr<Desk> (*)();

class KeyEventSourceContract : public testing::TestWithParam<MakeDesk> {
 protected:
  void tap(const Key& key) {
    desk->press(key);
    desk->release(key);
  }

  std::unique_ptr<Desk> desk = GetParam()();
  KeyEventSource& source = desk->source();
  KeyListener listener{source};
};

TEST_P(KeyEventSourceContract, NothingIsHeardBeforeTheStart) {
  tap(letterA);
  ASSERT_TRUE(source.start());
  tap(space);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(49), keyUp(49)));
}

TEST_P(KeyEventSourceContract, NothingIsHeardAfterTheStop) {
  ASSERT_TRUE(source.start());
  tap(letterA);
  source.stop();
  listener.events.clear();
  tap(letterA);
  ASSERT_TRUE(source.start());
  tap(space);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(49), keyUp(49)));
}

TEST_P(KeyEventSourceContract, StoppingWithoutAStartAndTwiceIsHarmless) {
  source.stop();
  ASSERT_TRUE(source.start());
  source.stop();
  source.stop();
}

TEST_P(KeyEventSourceContract, ASecondStartChangesNothing) {
  ASSERT_TRUE(source.start());
  desk->press(leftShift);
  EXPECT_TRUE(source.start());
  tap(letterA);
  desk->release(leftShift);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(flagsChanged(56, ShiftFlag), keyDown(0, ShiftFlag),
                                                 keyUp(0, ShiftFlag), flagsChanged(56, 0)));
}

TEST_P(KeyEventSourceContract, EveryModifierTellsItsFlagWhileItIsHeld) {
  ASSERT_TRUE(source.start());
  for (const Key& key : {leftShift, leftOption, rightOption, rightControl, leftCommand, fnKey}) {
    tap(key);
    EXPECT_THAT(listener.takeEvents(),
                ElementsAre(flagsChanged(key.code, key.flag), flagsChanged(key.code, 0)));
  }
}

TEST_P(KeyEventSourceContract, FlagsAreWhatIsHeldOnceTheEventHasHappened) {
  ASSERT_TRUE(source.start());
  desk->press(rightControl);
  desk->press(leftShift);
  desk->press(space);
  desk->release(rightControl);
  desk->release(space);
  desk->release(leftShift);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(62, ControlFlag), flagsChanged(56, ControlFlag | ShiftFlag),
                          keyDown(49, ControlFlag | ShiftFlag), flagsChanged(62, ShiftFlag),
                          keyUp(49, ShiftFlag), flagsChanged(56, 0)));
}

TEST_P(KeyEventSourceContract, TheLiveFlagsFollowTheKeysAtOnce) {
  ASSERT_TRUE(source.start());
  EXPECT_EQ(source.modifierFlags(), 0U);
  desk->press(leftOption);
  EXPECT_EQ(source.modifierFlags(), OptionFlag);
  desk->press(leftCommand);
  EXPECT_EQ(source.modifierFlags(), OptionFlag | CommandFlag);
  desk->release(leftOption);
  desk->release(leftCommand);
  EXPECT_EQ(source.modifierFlags(), 0U);
}

TEST_P(KeyEventSourceContract, WhatIsHeldAtTheStartIsInTheFlags) {
  desk->press(leftShift);
  ASSERT_TRUE(source.start());
  EXPECT_EQ(source.modifierFlags(), ShiftFlag);
  desk->press(letterA);
  desk->release(letterA);
  desk->release(leftShift);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(keyDown(0, ShiftFlag), keyUp(0, ShiftFlag), flagsChanged(56, 0)));
}

TEST_P(KeyEventSourceContract, AListenerMayStopTheSourceFromItsCallback) {
  ASSERT_TRUE(source.start());
  int heard = 0;
  source.onEvent = [&](const KeyEvent&) {
    ++heard;
    source.stop();
  };
  tap(letterA);
  listener.catchUp();
  EXPECT_TRUE(EventLoop::runUntil([&] { return heard > 0; }));
  listener.catchUp();
  EXPECT_EQ(heard, 1);
}

TEST_P(KeyEventSourceContract, AListenerMayAskForTheFlagsFromItsCallback) {
  ASSERT_TRUE(source.start());
  std::vector<std::pair<std::int64_t, ModifierFlags>> seen;
  source.onEvent = [&](const KeyEvent& event) {
    seen.emplace_back(event.keyCode, source.modifierFlags());
  };
  desk->press(leftOption);
  tap(letterA);
  desk->release(leftOption);
  ASSERT_TRUE(EventLoop::runUntil([&] { return seen.size() == 4; }));
  EXPECT_EQ(seen.front().first, 58);
  EXPECT_EQ(seen.back(), std::pair(std::int64_t{58}, ModifierFlags{0}));
}

TEST_P(KeyEventSourceContract, NoInterruptionIsToldWhileKeysComeAndGo) {
  ASSERT_TRUE(source.start());
  for (const Key& key : {leftOption, space, letterA}) tap(key);
  listener.catchUp();
  EXPECT_EQ(listener.interruptions, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Adapters, KeyEventSourceContract,
    testing::Values(MakeDesk([] { return std::unique_ptr<Desk>(new FakeDesk); }),
                    MakeDesk([] { return std::unique_ptr<Desk>(new X11Desk); })),
    [](const auto& parameter) {
      return parameter.index == 0 ? "FakeKeyEventSource" : "X11KeyEventSource";
    });

}  // namespace
}  // namespace vemo
