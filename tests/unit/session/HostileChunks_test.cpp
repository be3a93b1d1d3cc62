// Chunk answers that come late, for nobody, empty, enormous, or in an unusual form of Unicode.

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HostileChunksTest : public SessionFixture {
 protected:
  HostileChunksTest() { startUp(); }

  /// A recording of one chunk for each text, and a tail too short to be sent.
  void dictateChunks(const QStringList& texts, const QString& final) {
    for (const auto& text : texts) http.answer(chunkPath, 200, success(text));
    http.answer(finalizePath, 200, success(final));
    startRecording();
    hear(15.0 * static_cast<double>(texts.size()) + 0.1);
    stopRecording();
    finishPaste();
  }

  /// A silent recording fails at its stop, while its chunk is still under way.
  void failWithAChunkUnderWay() {
    startRecording();
    hear(15.5, 0);
    stopRecording();
    ASSERT_EQ(appState->phase().kind, Phase::Kind::Error);
    ASSERT_EQ(http.openCount(), 1);
    clock.advance(2s);
    ASSERT_EQ(appState->phase(), Phase::idle());
  }
};

TEST_F(HostileChunksTest, AChunkAnswerThatArrivesAfterTheNextStartIsThrownAway) {
  http.answer(chunkPath, 200, success(u"of the first"_s), 4s);
  failWithAChunkUnderWay();
  http.answer(finalizePath, 200, success(u"Of the second."_s));
  http.answer(chunkPath, 200, success(u"of the second"_s));
  startRecording();
  hear(15.0);
  stopRecording();
  finishPaste();
  EXPECT_EQ(bodyOfFinalize(), u"of the second"_s);
  EXPECT_THAT(pastedTexts(), ElementsAre(u"Of the second."_s));
}

TEST_F(HostileChunksTest, AnAbandonedSessionsUploadsEndAtTheNextStart) {
  http.neverAnswer(chunkPath);
  failWithAChunkUnderWay();
  startRecording();
  EXPECT_EQ(http.openCount(), 0);
  clock.advance(10min);
  EXPECT_EQ(requestCount(chunkPath), 1) << "neither an attempt nor a copy more";
  EXPECT_THAT(hedgeHttp.requests(), IsEmpty());
}

TEST_F(HostileChunksTest, AnAbandonedSessionsUploadComesToItsEndWithoutANextStart) {
  for (int attempt = 0; attempt < 3; ++attempt) {
    http.neverAnswer(chunkPath);
    hedgeHttp.neverAnswer(chunkPath);
  }
  const std::size_t sleepersAtRest = clock.sleeperCount();
  failWithAChunkUnderWay();
  clock.advance(10min);
  EXPECT_EQ(requestCount(chunkPath), 3);
  EXPECT_EQ(http.openCount() + hedgeHttp.openCount(), 0);
  EXPECT_EQ(clock.sleeperCount(), sleepersAtRest);
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(HostileChunksTest, EmptyChunkTextsAreLeftOutOfTheTranscript) {
  dictateChunks({u""_s, u"one"_s, u" \n\t\u00a0"_s, u" two "_s}, u"One two."_s);
  EXPECT_EQ(bodyOfFinalize(), u"one two"_s);
  EXPECT_THAT(pastedTexts(), ElementsAre(u"One two."_s));
}

TEST_F(HostileChunksTest, WithNothingButEmptyChunkTextsNoFinalizeIsSentAndNothingIsPasted) {
  http.answer(chunkPath, 200, success(u""_s));
  http.answer(chunkPath, 200, success(u" \n"_s));
  startRecording();
  hear(30.0);
  takeEvents();
  stopRecording();
  EXPECT_EQ(requestCount(finalizePath), 0);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_failed {"chunked":true,"reason":"empty_transcript"})"));
  EXPECT_THAT(pastedTexts(), IsEmpty());
}

TEST_F(HostileChunksTest, EnormousChunkTextsArriveWholeAndInOrder) {
  const QString first(4'000'000, u'a');
  const QString second(4'000'000, u'b');
  dictateChunks({first, second}, second + first);
  EXPECT_EQ(bodyOfFinalize(), first + u' ' + second);
  ASSERT_EQ(pastedTexts().size(), 1);
  EXPECT_EQ(pastedTexts().first(), second + first);
}

TEST_F(HostileChunksTest, TextsInEveryNormalFormPassUnchanged) {
  const QString composed = u"\u00e9\uac00"_s;
  const QString decomposed = u"e\u0301\u1100\u1161"_s;
  const QString compatibility = u"\ufb01\u2126\uff21"_s;
  const QString misordered = u"a\u0301\u0323"_s;
  const QString stitched = QStringList{composed, decomposed, compatibility, misordered}.join(u' ');
  dictateChunks({composed, decomposed, compatibility, misordered}, stitched);
  EXPECT_EQ(bodyOfFinalize(), stitched);
  EXPECT_THAT(pastedTexts(), ElementsAre(stitched));
}

}  // namespace
}  // namespace vemo
