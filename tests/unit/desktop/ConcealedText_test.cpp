#include "desktop/ConcealedText.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

QStringList typesOf(const ClipboardContents& contents) {
  QStringList types;
  for (const auto& item : contents) {
    for (const auto& entry : item.contents) types.append(entry.type);
  }
  return types;
}

TEST(ConcealedTextTest, ATextForThePasteIsMarkedConcealedAndTransient) {
  const auto contents = concealedText(u"grüße \U0001F600"_s, ClipboardStay::ForThePasteOnly);
  ASSERT_EQ(contents.size(), 1u);
  EXPECT_EQ(contents[0].contents,
            (std::vector<ClipboardEntry>{{u"org.nspasteboard.ConcealedType"_s, ""},
                                         {u"org.nspasteboard.TransientType"_s, ""},
                                         {u"x-kde-passwordManagerHint"_s, "secret"},
                                         {u"text/plain;charset=utf-8"_s, "grüße \U0001F600"}}));
}

TEST(ConcealedTextTest, ACopyThatStaysIsNotTransient) {
  const auto contents = concealedText(u"a"_s, ClipboardStay::UntilReplaced);
  EXPECT_EQ(typesOf(contents),
            (QStringList{u"org.nspasteboard.ConcealedType"_s, u"x-kde-passwordManagerHint"_s,
                         u"text/plain;charset=utf-8"_s}));
}

}  // namespace
}  // namespace vemo
