// The chunked operations of TranscriptionClient, where they differ from the single shot.
#include <QUrlQuery>

#include "TranscriptionFixture.h"

namespace vemo {
namespace {

class TranscriptionChunksTest : public TranscriptionFixture {};

TEST_F(TranscriptionChunksTest, WithoutAStoredTokenNeitherOperationSendsAnything) {
  tokens.remove(QString::fromUtf16(authTokenAccount));
  startChunk(0);
  EXPECT_EQ(failure(), Kind::NotConfigured);
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(failure(), Kind::NotConfigured);
  EXPECT_EQ(session.requests().size(), 0u);
}

TEST_F(TranscriptionChunksTest, AnAddressThatIsNoneIsABadResponseOfBothOperations) {
  configuration.apiBaseURL = QUrl();
  startChunk(0);
  EXPECT_EQ(failure(), Kind::BadResponse);
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(failure(), Kind::BadResponse);
}

TEST_F(TranscriptionChunksTest, AChunksTextIsReturnedAsItStands) {
  session.answer(chunkPath, 200, successBody(u"  raw text "_s));
  startChunk(3);
  EXPECT_EQ(text(), u"  raw text "_s);
  const auto& request = session.requests().at(0);
  EXPECT_EQ(request.body, wav);
  EXPECT_EQ(QUrlQuery(request.url).queryItemValue(u"chunk_index"_s), u"3"_s);
  EXPECT_EQ(header(request, "x-dictation-id"), "(absent)");
  EXPECT_FALSE(QUrlQuery(request.url).hasQueryItem(u"format_mode"_s));
}

TEST_F(TranscriptionChunksTest, TheTimestampsItemIsFalseOnChunksAndAbsentOnFinalize) {
  session.answer(chunkPath, 200, successBody(u"x"_s));
  session.answer(finalizePath, 200, successBody(u"x"_s));
  startChunk(0);
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(QUrlQuery(session.requests().at(0).url).queryItemValue(u"timestamps"_s), u"false"_s);
  EXPECT_FALSE(session.requests().at(1).url.hasQuery());
}

TEST_F(TranscriptionChunksTest, TheSessionIdIsTheSameEverywhere) {
  session.answer(chunkPath, 200, successBody(u"x"_s));
  session.answer(finalizePath, 200, successBody(u"x"_s));
  startChunk(0);
  startFinalize(u"x"_s, 1);
  const auto& chunk = session.requests().at(0);
  const auto& finalize = session.requests().at(1);
  EXPECT_EQ(QUrlQuery(chunk.url).queryItemValue(u"session_id"_s), u"S-1"_s);
  EXPECT_EQ(header(chunk, "x-session-id"), "S-1");
  EXPECT_EQ(header(finalize, "x-session-id"), "S-1");
  EXPECT_EQ(parseJsonObject(finalize.body)->value(u"sessionId"_s), u"S-1"_s);
}

TEST_F(TranscriptionChunksTest, AnEmptyRawTranscriptIsStillSent) {
  session.answer(finalizePath, 200, successBody(u""_s));
  startFinalize(u""_s, 30.5);
  EXPECT_EQ(text(), u""_s);
  EXPECT_EQ(parseJsonObject(session.requests().at(0).body)->value(u"rawTranscript"_s), u""_s);
}

TEST_F(TranscriptionChunksTest, TheApplicationInFrontIsDeterminedForEachRequest) {
  session.answer(chunkPath, 200, successBody(u"x"_s));
  session.answer(finalizePath, 200, successBody(u"x"_s));
  startChunk(0);
  desktop.setFrontmost(RunningApplication{.identifier = u"xterm"_s, .name = u"XTerm"_s});
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(header(session.requests().at(0), "x-target-app-name"), "Mousepad");
  EXPECT_EQ(header(session.requests().at(1), "x-target-app-name"), "XTerm");
  EXPECT_EQ(parseJsonObject(session.requests().at(1).body)->value(u"bundleId"_s), u"xterm"_s);
}

TEST_F(TranscriptionChunksTest, RefusalsAreWordedByTheOperation) {
  session.answer(chunkPath, 404);
  startChunk(0);
  EXPECT_EQ(failureDescription(), u"Chunk request failed (HTTP 404)"_s);
  session.answer(finalizePath, 413);
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(failureDescription(), u"Finalize request failed (HTTP 413)"_s);
}

TEST_F(TranscriptionChunksTest, AMessageOfTheServerGoesBeforeTheOperationsWords) {
  session.answer(chunkPath, 400, failureBody(u"Chunk is empty"_s));
  startChunk(0);
  EXPECT_EQ(failureDescription(), u"Chunk is empty"_s);
}

TEST_F(TranscriptionChunksTest, AServerErrorReadsTheSameInBothOperationsAfterThreeAttempts) {
  for (int i = 0; i < 3; ++i) {
    session.answer(chunkPath, 502);
    session.answer(finalizePath, 502);
  }
  startChunk(0);
  clock.advance(3s);
  EXPECT_EQ(failureDescription(), u"Server error (HTTP 502)"_s);
  startFinalize(u"x"_s, 1);
  clock.advance(3s);
  EXPECT_EQ(failureDescription(), u"Server error (HTTP 502)"_s);
  EXPECT_EQ(session.requests().size(), 6u);
}

TEST_F(TranscriptionChunksTest, A401IsUnauthorizedInBothOperations) {
  session.answer(chunkPath, 401);
  startChunk(0);
  EXPECT_EQ(failure(), Kind::Unauthorized);
  session.answer(finalizePath, 401);
  startFinalize(u"x"_s, 1);
  EXPECT_EQ(failure(), Kind::Unauthorized);
}

TEST_F(TranscriptionChunksTest, OneChunkReachesTheServerAtMostSixTimesUnderOneIndex) {
  for (int i = 0; i < 3; ++i) {
    session.neverAnswer(chunkPath);
    hedgeSession.neverAnswer(chunkPath);
  }
  startChunk(7);
  clock.advance(10min);
  EXPECT_EQ(failure(), Kind::Network);
  EXPECT_EQ(session.requests().size() + hedgeSession.requests().size(), 6u);
  for (const auto& request : hedgeSession.requests())
    EXPECT_EQ(QUrlQuery(request.url).queryItemValue(u"chunk_index"_s), u"7"_s);
}

TEST_F(TranscriptionChunksTest, ConcurrentChunksHaveTheirOwnLoopsAndTimers) {
  session.neverAnswer(chunkPath);
  session.answer(chunkPath, 200, successBody(u"chunk 1"_s), 4500ms);
  hedgeSession.answer(chunkPath, 200, successBody(u"chunk 0"_s), 2s);
  std::optional<Result> first;
  const auto keep = [](Task<Result> operation, std::optional<Result>& result) -> Task<> {
    result = co_await std::move(operation);
  };
  scope.start([this, keep, &first](std::stop_token stop) {
    return keep(client.transcribeChunk(wav, u"S"_s, u"en"_s, u"m"_s, u"t"_s, 0, stop), first);
  });
  clock.advance(1s);
  startChunk(1);
  clock.advance(4500ms);
  EXPECT_EQ(text(), u"chunk 1"_s);
  EXPECT_FALSE(first);
  clock.advance(1500ms);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->value(), u"chunk 0"_s);
  EXPECT_EQ(hedgeSession.requests().size(), 1u);
}

}  // namespace
}  // namespace vemo
