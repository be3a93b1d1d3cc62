#include "session/DictationItem.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

const QUuid uuid(u"12345678-9ABC-4DEF-8123-456789ABCDEF"_s);

TEST(DictationItemTest, TheDateIsStoredInSecondsSince2001AndTheIdAsUpperCaseText) {
  const Clock::WallTime time = std::chrono::sys_days{std::chrono::year{2001} / 1 / 2} + 500ms;
  EXPECT_EQ(encodeDictations({{uuid, u"hi"_s, time}}),
            R"([{"id":"12345678-9ABC-4DEF-8123-456789ABCDEF","text":"hi","timestamp":86400.5}])");
}

TEST(DictationItemTest, AListComesBackAsItWas) {
  const std::vector<DictationItem> items{
      {uuid, u"one \U0001F600 \"quoted\"\n\u05D0"_s, Clock::WallTime{1'773'480'413s + 250ms}},
      {QUuid::createUuid(), u"two\0three"_s, Clock::WallTime{0s}},
  };
  EXPECT_EQ(decodeDictations(encodeDictations(items)), items);
  EXPECT_EQ(decodeDictations(encodeDictations({})), std::vector<DictationItem>());
}

TEST(DictationItemTest, DataOfAnyOtherFormDoesNotDecode) {
  for (const char* bad : {
           "",
           "{}",
           "[1]",
           "[{}]",
           "[",
           R"([{"id":"no uuid","text":"a","timestamp":1}])",
           R"([{"id":"12345678-9ABC-4DEF-8123-456789ABCDEF","text":1,"timestamp":1}])",
           R"([{"id":"12345678-9ABC-4DEF-8123-456789ABCDEF","text":"a","timestamp":"1"}])",
           R"([{"id":"12345678-9ABC-4DEF-8123-456789ABCDEF","text":"a","timestamp":1e300}])",
           R"([{"id":"12345678-9ABC-4DEF-8123-456789ABCDEF","text":"a"}])",
       }) {
    EXPECT_EQ(decodeDictations(bad), std::nullopt) << bad;
  }
}

}  // namespace
}  // namespace vemo
