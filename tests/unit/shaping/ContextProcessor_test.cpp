#include "shaping/ContextProcessor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using testing::ElementsAre;

class ContextProcessorTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeFocusedApplication applications;
  ContextProcessor processor{applications, storage.debugLog};
};

TEST_F(ContextProcessorTest, EmptyInputYieldsEmptyOutputAndUnchangedInTheLog) {
  applications.setFrontmost(std::nullopt);
  EXPECT_EQ(processor.process(u""_s), u""_s);
  EXPECT_THAT(storage.logMessages(), ElementsAre(u"context: frontmost [], 0 chars in"_s,
                                                 u"context: 0 chars out, changed=false"_s));
}

TEST_F(ContextProcessorTest, TheLogNamesTheApplicationAndCountsCharactersOnly) {
  applications.setFrontmost(RunningApplication{.identifier = u"org.xfce.mousepad"_s, .name = {}});
  processor.process(u"one  \U0001F468\u200D\U0001F469\u200D\U0001F467"_s);
  EXPECT_THAT(storage.logMessages(),
              ElementsAre(u"context: frontmost [org.xfce.mousepad], 6 chars in"_s,
                          u"context: 5 chars out, changed=true"_s));
}

TEST_F(ContextProcessorTest, RunsOfBlanksCollapseAndASingleTabStays) {
  applications.setFrontmost(std::nullopt);
  EXPECT_EQ(processor.process(u"a   b"_s), u"a b"_s);
  EXPECT_EQ(processor.process(u"a\tb"_s), u"a\tb"_s);
  EXPECT_EQ(processor.process(u"a\t\tb"_s), u"a b"_s);
  EXPECT_EQ(processor.process(u"a\n\nb"_s), u"a\n\nb"_s);
}

TEST_F(ContextProcessorTest, AMegabyteOfAnythingPassesThrough) {
  applications.setFrontmost(std::nullopt);
  const QString text = QString(500'000, u'ä') + QChar(0xD800) + QString(500'000, u'ж');
  EXPECT_EQ(processor.process(text), text);
}

}  // namespace
}  // namespace vemo
