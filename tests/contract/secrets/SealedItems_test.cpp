#include "platform/sealed/SealedItems.h"

#include <gtest/gtest.h>

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

const SealingKey someKey = deriveSealingKey(QByteArray(32, 'k'), "machine").value();

TEST(SealedItemsTest, WhatIsSealedIsUnsealedByTheSameKeyAlone) {
  const SealedItems items{{{u"service"_s, u"one"_s}, "first"},
                          {{u"service"_s, u"कुंजी"_s}, QByteArray("a\0b", 3)},
                          {{u"other"_s, u"one"_s}, ""}};
  const QByteArray sealed = seal(items, someKey);
  EXPECT_EQ(unseal(sealed, someKey), items);
  EXPECT_EQ(unseal(sealed, deriveSealingKey(QByteArray(32, 'l'), "machine").value()), std::nullopt);
  EXPECT_EQ(unseal(sealed, deriveSealingKey(QByteArray(32, 'k'), "other").value()), std::nullopt);
}

TEST(SealedItemsTest, NoItemsAreItemsToo) {
  EXPECT_EQ(unseal(seal({}, someKey), someKey), SealedItems());
}

TEST(SealedItemsTest, AKeyIsMadeOf32BytesAndOfNothingElse) {
  EXPECT_EQ(makeRandomKey().size(), 32);
  EXPECT_NE(makeRandomKey(), makeRandomKey());
  EXPECT_FALSE(deriveSealingKey(QByteArray(31, 'k'), "machine"));
  EXPECT_FALSE(deriveSealingKey(QByteArray(33, 'k'), "machine"));
}

TEST(SealedItemsTest, OnlyAMapOfMapsOfBytesHoldsItems) {
  const auto decodes = [](const QCborValue& value) {
    return decodeItems(value.toCbor()).has_value();
  };
  EXPECT_TRUE(decodes(QCborMap{{u"s"_s, QCborMap{{u"a"_s, QByteArray("x")}}}}));
  EXPECT_FALSE(decodes(QCborArray{1, 2}));
  EXPECT_FALSE(decodes(QCborMap{{1, QCborMap()}}));
  EXPECT_FALSE(decodes(QCborMap{{u"s"_s, u"text"_s}}));
  EXPECT_FALSE(decodes(QCborMap{{u"s"_s, QCborMap{{u"a"_s, u"text"_s}}}}));
  EXPECT_FALSE(decodes(QCborMap{{u"s"_s, QCborMap{{2, QByteArray("x")}}}}));
  EXPECT_FALSE(decodeItems(QCborValue(QCborMap()).toCbor() + "more"));
  EXPECT_FALSE(decodeItems(""));
}

}  // namespace
}  // namespace vemo
