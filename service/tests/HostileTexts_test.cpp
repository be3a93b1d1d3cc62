// Transcripts that are empty, enormous or in an unusual form of Unicode, and dictations that nobody
// brings to an end.
#include <boost/json.hpp>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

class HostileTextsTest : public HttpServiceTest {
 protected:
  HostileTextsTest() { m_settings.output = EngineKind::Output::Punctuated; }

  /// What a finalize of that transcript comes to.
  std::string finalized(const std::string& transcript) {
    const auto body = boost::json::serialize(
        boost::json::object{{"rawTranscript", transcript}, {"format_mode", "smart"}});
    const auto answer = ask(service().post("/desktop/dictate/finalize", body));
    EXPECT_EQ(answer.status, 200);
    boost::system::error_code error;
    const auto parsed = boost::json::parse(answer.body, error);
    return error ? answer.body : std::string(parsed.at("transcription").as_string());
  }

  RawAnswer askChunk(const std::string& session, const std::string& wav) {
    return ask(service().post(
        "/desktop/dictate/chunk?language=en&chunk_index=0&session_id=" + session, wav));
  }
};

TEST_F(HostileTextsTest, AnEmptyTranscriptIsFinalizedEmpty) {
  EXPECT_EQ(finalized(""), "");
}

TEST_F(HostileTextsTest, AnEnormousTranscriptIsFinalizedWhole) {
  const std::string transcript(4'000'000, 'a');
  EXPECT_TRUE(finalized(transcript) == transcript);
}

TEST_F(HostileTextsTest, ATranscriptThatNobodyCanHaveSpokenIsRefused) {
  const std::string body = R"({"rawTranscript":")" + std::string(5'000'000, 'a') + R"("})";
  EXPECT_EQ(ask(service().post("/desktop/dictate/finalize", body)).status, 413);
}

TEST_F(HostileTextsTest, TranscriptsInEveryNormalFormAreFinalizedUnchanged) {
  for (const std::string transcript :
       {"\u00e9\uac00", "e\u0301\u1100\u1161", "\ufb01\u2126\uff21", "a\u0301\u0323"})
    EXPECT_EQ(finalized(transcript), transcript);
}

TEST_F(HostileTextsTest, AnEnormousTextOfTheEngineArrivesWhole) {
  const std::string text(8'000'000, 'b');
  m_script.answerWith(text);
  const auto answer = askChunk("a", m_wav);
  EXPECT_EQ(answer.status, 200);
  EXPECT_NE(answer.body.find(text), std::string::npos);
}

TEST_F(HostileTextsTest, OfDictationsThatAreAbandonedOnlyTheLatestAreRemembered) {
  m_settings.limits.repeatAnswers = 20;
  for (int session = 0; session < 100; ++session)
    EXPECT_EQ(askChunk(std::to_string(session), m_wav).status, 200);
  EXPECT_EQ(m_script.startedCount(), 100U);
  EXPECT_EQ(askChunk("80", m_wav).status, 200);
  EXPECT_EQ(m_script.startedCount(), 100U);
  EXPECT_EQ(askChunk("79", m_wav).status, 200);
  EXPECT_EQ(m_script.startedCount(), 101U);
}

}  // namespace
}  // namespace vemo::service
