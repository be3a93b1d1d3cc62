// The connection's events on an X server.
#include "platform/x11/X11Connection.h"

#include <gtest/gtest.h>
#include <poll.h>

#include "contract/x11/EventLoop.h"

namespace vemo {
namespace {

class X11ConnectionTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(connection);
    connection->synchronize();
    connection->processEvents();
    connection->setEventHandler([this](const xcb_generic_event_t& event) {
      if ((event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY) ++changes;
    });
  }

  void changeProperty() {
    const std::uint32_t value = 1;
    xcb_change_property(connection->xcb(), XCB_PROP_MODE_REPLACE, connection->window(),
                        XCB_ATOM_WM_HINTS, XCB_ATOM_CARDINAL, 32, 1, &value);
    connection->flush();
  }
  void awaitInput() {
    pollfd input{xcb_get_file_descriptor(connection->xcb()), POLLIN, 0};
    ASSERT_EQ(poll(&input, 1, 10'000), 1);
  }

  EventLoop eventLoop;
  std::unique_ptr<X11Connection> connection = X11Connection::create();
  int changes = 0;
};

TEST_F(X11ConnectionTest, AnEventThatAFlushHasReadIsHandledWithoutAnother) {
  changeProperty();
  awaitInput();
  xcb_no_operation(connection->xcb());
  connection->flush();
  EXPECT_TRUE(EventLoop::runUntil([&] { return changes == 1; }));
}

TEST_F(X11ConnectionTest, AnEventThatCameWithAReplyIsHandledWithoutAnother) {
  for (int round = 1; round <= 50; ++round) {
    changeProperty();
    connection->synchronize();
    EXPECT_TRUE(EventLoop::runUntil([&] { return changes == round; }));
  }
}

TEST_F(X11ConnectionTest, WhileAReplyIsWaitedForNoEventIsHandled) {
  changeProperty();
  connection->synchronize();
  EXPECT_EQ(changes, 0);
  connection->processEvents();
  EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace vemo
