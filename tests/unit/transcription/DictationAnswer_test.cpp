#include "transcription/DictationAnswer.h"

#include <gtest/gtest.h>

#include "base/Json.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

QByteArray success(const QString& text) {
  return compactJson(QJsonObject{{u"status"_s, u"ok"_s}, {u"transcription"_s, text}});
}

TEST(DictationAnswerTest, TheTextOfASuccessIsTakenAsItStands) {
  const QString texts[] = {
      u""_s,
      u"  two  words\n"_s,
      u"a\0b"_s,
      QString::fromUtf8("👩‍👩‍👧‍👦 and 🏳️‍🌈"),
      QString::fromUtf8("שלום עולם \u202Eabc\u202C"),
      QString::fromUtf8("e\u0301 a\u0308\u0323 \u0600"),
  };
  for (const QString& text : texts) EXPECT_EQ(transcriptionIn(success(text)), text);
}

TEST(DictationAnswerTest, ATextOfOneMegabytePassesUnchanged) {
  const QString text = u"naïve café "_s.repeated(100'000);
  EXPECT_EQ(transcriptionIn(success(text)), text);
}

TEST(DictationAnswerTest, WhatTheStatusSaysDoesNotMatter) {
  EXPECT_EQ(transcriptionIn(R"({"status":"","transcription":"x","more":[1,2]})"), u"x"_s);
}

TEST(DictationAnswerTest, AnythingButTheExpectedJsonHoldsNoText) {
  const QByteArray bodies[] = {
      "",
      "<html><body>Bad gateway</body></html>",
      R"({"status":"ok","transcription":"cut o)",
      R"({"status":"ok"})",
      R"({"transcription":"no status"})",
      R"({"status":1,"transcription":"x"})",
      R"({"status":"ok","transcription":7})",
      R"({"status":"ok","transcription":null})",
      R"({"status":"ok","transcription":["x"]})",
      R"(["status","ok"])",
      R"("text")",
      "null",
      "{\"status\":\"ok\",\"transcription\":\"\xff\xfe\"}",
      QByteArray(R"({"status":"ok",~"transcription":"x"})").replace('~', '\0'),
      QByteArray("[").repeated(1'000'000),
  };
  for (const QByteArray& body : bodies)
    EXPECT_EQ(transcriptionIn(body), std::nullopt) << body.left(60).toStdString();
}

TEST(DictationAnswerTest, TheMessageOfAFailureIsOptional) {
  EXPECT_EQ(errorMessageIn(R"({"status":"error","error":"Too long"})"), u"Too long"_s);
  EXPECT_EQ(errorMessageIn(R"({"status":"error","error":""})"), u""_s);
  EXPECT_EQ(errorMessageIn(R"({"status":"error"})"), std::nullopt);
  EXPECT_EQ(errorMessageIn(R"({"status":"error","error":null})"), std::nullopt);
  EXPECT_EQ(errorMessageIn(R"({"status":"error","error":{"text":"x"}})"), std::nullopt);
  EXPECT_EQ(errorMessageIn(R"({"error":"no status"})"), std::nullopt);
  EXPECT_EQ(errorMessageIn("<html>"), std::nullopt);
}

}  // namespace
}  // namespace vemo
