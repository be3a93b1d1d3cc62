#include "transcription/TranscriptionError.h"

#include <gtest/gtest.h>

#include <utility>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TranscriptionError network(UrlError code) {
  return TranscriptionError::network({code, u"https://example.org/?secret"_s});
}

TEST(TranscriptionErrorTest, TheUserReadsTheServersOwnMessageUnchanged) {
  const QString message = u"  Zu laut — bitte leiser  "_s;
  EXPECT_EQ(TranscriptionError::server(message).errorDescription(), message);
}

TEST(TranscriptionErrorTest, EveryNetworkErrorHasItsSentence) {
  const std::pair<UrlError, QString> rows[] = {
      {UrlError::NotConnectedToInternet, u"No internet connection"_s},
      {UrlError::TimedOut, u"Server took too long — try again"_s},
      {UrlError::CannotFindHost, u"Can't find the server"_s},
      {UrlError::DnsLookupFailed, u"Can't find the server"_s},
      {UrlError::NetworkConnectionLost, u"Connection lost — try again"_s},
      {UrlError::CannotConnectToHost, u"Can't reach the server"_s},
      {UrlError::ServerCertificateUntrusted, u"Can't reach the server"_s},
      {UrlError::Unknown, u"Can't reach the server"_s},
  };
  for (const auto& [code, text] : rows) EXPECT_EQ(network(code).errorDescription(), text);
}

TEST(TranscriptionErrorTest, TheOtherCasesHaveTheirSentences) {
  EXPECT_EQ(TranscriptionError::notConfigured().errorDescription(),
            u"Sign in to start dictating"_s);
  EXPECT_EQ(TranscriptionError::unauthorized().errorDescription(),
            u"Sign-in expired — sign in again"_s);
  EXPECT_EQ(TranscriptionError::badResponse().errorDescription(), u"Unexpected server response"_s);
  EXPECT_EQ(TranscriptionError::cancelled().errorDescription(), u"Cancelled"_s);
}

TEST(TranscriptionErrorTest, TheDiagnosticTextNamesTheCaseAndNeverTheMessage) {
  EXPECT_EQ(TranscriptionError::server(u"secret words"_s).diagnosticText(), u"server"_s);
  EXPECT_EQ(TranscriptionError::notConfigured().diagnosticText(), u"notConfigured"_s);
  EXPECT_EQ(TranscriptionError::unauthorized().diagnosticText(), u"unauthorized"_s);
  EXPECT_EQ(TranscriptionError::badResponse().diagnosticText(), u"badResponse"_s);
  EXPECT_EQ(TranscriptionError::cancelled().diagnosticText(), u"cancelled"_s);
}

TEST(TranscriptionErrorTest, TheDiagnosticTextOfANetworkErrorIsItsCode) {
  EXPECT_EQ(network(UrlError::TimedOut).diagnosticText(), u"network(URLError -1001)"_s);
  EXPECT_EQ(network(UrlError::Unknown).diagnosticText(), u"network(URLError -1)"_s);
}

}  // namespace
}  // namespace vemo
