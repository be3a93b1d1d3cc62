// What every key poster promises.
#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include "contract/x11/EventLoop.h"
#include "contract/x11/TestWindow.h"
#include "contract/x11/VirtualUser.h"
#include "fakes/FakeKeyPoster.h"
#include "platform/x11/X11KeyPoster.h"

namespace vemo {
namespace {

class Desk {
 public:
  virtual ~Desk() = default;
  virtual KeyPoster& poster() = 0;
  virtual void hold(ModifierFlags flags) = 0;
  /// Whether a target has come to see so many key-downs and key-ups of the paste.
  virtual bool comesToSee(int presses, int releases) = 0;
};

class FakeDesk : public Desk {
 public:
  KeyPoster& poster() override { return m_poster; }
  void hold(ModifierFlags flags) override { m_poster.holdModifiers(flags); }
  bool comesToSee(int presses, int releases) override {
    const auto countOf = [&](FakeKeyPoster::Step step) {
      return std::ranges::count(m_poster.events(), step, &FakeKeyPoster::Event::step);
    };
    return countOf(FakeKeyPoster::Step::Press) == presses &&
           countOf(FakeKeyPoster::Step::Release) == releases;
  }

 private:
  FakeKeyPoster m_poster;
};

class X11Desk : public Desk {
 public:
  X11Desk() {
    EventLoop::runUntil([this] { return m_target.hasFocus(); });
  }
  KeyPoster& poster() override { return *m_poster; }
  void hold(ModifierFlags flags) override {
    for (const auto& [flag, key] : m_keys) {
      if ((flags & flag) && !(m_held & flag)) m_user.press(key);
      if (!(flags & flag) && (m_held & flag)) m_user.release(key);
    }
    m_held = flags;
  }
  bool comesToSee(int presses, int releases) override {
    const auto countOf = [&](bool isPress) {
      return std::ranges::count_if(m_target.keyEvents(), [&](const auto& event) {
        return event.symbol == XKB_KEY_v && event.isPress == isPress;
      });
    };
    return EventLoop::runUntil(
        [&] { return countOf(true) >= presses && countOf(false) >= releases; });
  }

 private:
  EventLoop m_loop;
  VirtualUser m_user;
  TestWindow m_target;
  std::unique_ptr<X11KeyPoster> m_poster = X11KeyPoster::create();
  ModifierFlags m_held = 0;
  const std::vector<std::pair<ModifierFlags, xkb_keysym_t>> m_keys{{ShiftFlag, XKB_KEY_Shift_R},
                                                                   {ControlFlag, XKB_KEY_Control_R},
                                                                   {OptionFlag, XKB_KEY_Alt_L},
                                                                   {CommandFlag, XKB_KEY_Super_L}};
};

using MakeDesk = std::unique_ptr<Desk> (*)();

class KeyPosterContract : public testing::TestWithParam<MakeDesk> {
 protected:
  std::unique_ptr<Desk> desk = GetParam()();
  KeyPoster& poster = desk->poster();
};

TEST_P(KeyPosterContract, NoModifierIsHeldUntilOneIs) {
  EXPECT_EQ(poster.heldModifiers(), 0U);
  desk->hold(ShiftFlag);
  EXPECT_EQ(poster.heldModifiers(), ShiftFlag);
  desk->hold(0);
  EXPECT_EQ(poster.heldModifiers(), 0U);
}

TEST_P(KeyPosterContract, EveryModifierHasItsFlag) {
  for (const ModifierFlags flag : {ShiftFlag, ControlFlag, OptionFlag, CommandFlag}) {
    desk->hold(flag);
    EXPECT_EQ(poster.heldModifiers(), flag);
  }
  desk->hold(allModifierFlags);
  EXPECT_EQ(poster.heldModifiers(), allModifierFlags);
}

TEST_P(KeyPosterContract, APasteThatIsNotPressedPostsNothing) {
  {
    const auto first = poster.makePaste();
    ASSERT_TRUE(first);
  }
  const auto second = poster.makePaste();
  second->press();
  second->release();
  EXPECT_TRUE(desk->comesToSee(1, 1));
}

TEST_P(KeyPosterContract, ReleasingTwiceReleasesOnce) {
  const auto paste = poster.makePaste();
  ASSERT_TRUE(paste);
  paste->press();
  paste->release();
  paste->release();
  EXPECT_TRUE(desk->comesToSee(1, 1));
}

TEST_P(KeyPosterContract, APasteThatIsDestroyedIsReleased) {
  auto paste = poster.makePaste();
  ASSERT_TRUE(paste);
  paste->press();
  EXPECT_TRUE(desk->comesToSee(1, 0));
  paste.reset();
  EXPECT_TRUE(desk->comesToSee(1, 1));
}

TEST_P(KeyPosterContract, AfterAPasteTheHeldModifiersAreHeldAgain) {
  desk->hold(OptionFlag | CommandFlag);
  const auto paste = poster.makePaste();
  ASSERT_TRUE(paste);
  paste->press();
  paste->release();
  EXPECT_EQ(poster.heldModifiers(), OptionFlag | CommandFlag);
  desk->hold(0);
  EXPECT_EQ(poster.heldModifiers(), 0U);
}

TEST_P(KeyPosterContract, KeysCanBePosted) {
  EXPECT_TRUE(poster.canPost());
}

INSTANTIATE_TEST_SUITE_P(
    Adapters, KeyPosterContract,
    testing::Values(MakeDesk([] { return std::unique_ptr<Desk>(new FakeDesk); }),
                    MakeDesk([] { return std::unique_ptr<Desk>(new X11Desk); })),
    [](const auto& parameter) { return parameter.index == 0 ? "FakeKeyPoster" : "X11KeyPoster"; });

}  // namespace
}  // namespace vemo
