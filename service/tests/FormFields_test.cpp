#include "provider/FormFields.h"

#include <gtest/gtest.h>

namespace vemo::service {
namespace {

TEST(FormFieldsTest, FieldsAreDecodedAsFormsAreWritten) {
  const auto fields = FormFields::read("a=one+two&b=%C3%A9%26%3D%2B&c=&d");
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->value("a"), "one two");
  EXPECT_EQ(fields->value("b"), "é&=+");
  EXPECT_EQ(fields->find("c"), "");
  EXPECT_EQ(fields->find("d"), "");
  EXPECT_EQ(fields->find("e"), std::nullopt);
  EXPECT_EQ(fields->count(), 4U);
}

TEST(FormFieldsTest, AnEmptyTextHasNoFields) {
  const auto fields = FormFields::read("");
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->count(), 0U);
}

TEST(FormFieldsTest, AFieldThatComesTwiceIsNotRead) {
  EXPECT_FALSE(FormFields::read("state=1&state=2"));
  EXPECT_FALSE(FormFields::read("state=1&st%61te=1"));
}

TEST(FormFieldsTest, WhatIsNotPercentEncodedIsNotRead) {
  for (const auto* text : {"a=%", "a=%4", "a=%zz", "a=\"", "a=\x80", "a=b c", "a=b\nc", "a=%00"})
    EXPECT_FALSE(FormFields::read(text)) << text;
  EXPECT_FALSE(FormFields::read(std::string_view("a=\0", 3)));
}

TEST(FormFieldsTest, TheLongestTextIsReadAndALongerOneIsNot) {
  const auto longest = "a=" + std::string(FormFields::largest - 2, 'x');
  EXPECT_TRUE(FormFields::read(longest));
  EXPECT_FALSE(FormFields::read(longest + "x"));
}

}  // namespace
}  // namespace vemo::service
