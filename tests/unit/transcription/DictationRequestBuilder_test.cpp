#include "transcription/DictationRequestBuilder.h"

#include <QRegularExpression>
#include <QUrlQuery>
#include <cmath>
#include <limits>

#include "TranscriptionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;

class DictationRequestBuilderTest : public TranscriptionFixture {
 protected:
  const DictationRequestBuilder builder{sources};
  const QString installId = storage.settings.get(keys::telemetryInstallId, QString());

  DictationRequest dictate() const { return builder.dictate(u"t0ken"_s, wav).value(); }

  DictationRequest chunk(const DictationRequestBuilder::Chunk& chunk) const {
    return builder.chunk(u"t0ken"_s, chunk).value();
  }

  static DictationRequestBuilder::Transcript transcriptOf(double totalDuration) {
    return {.sessionId = u"S-1"_s,
            .rawText = QString::fromUtf8("a \"b\" 👩‍👧"),
            .language = u"hi"_s,
            .model = u"saaras:v4"_s,
            .formatMode = u"smart"_s,
            .totalDuration = totalDuration};
  }

  static std::vector<QByteArray> headerNames(const HttpRequest& request) {
    std::vector<QByteArray> names;
    for (const auto& [name, value] : request.headers) names.push_back(name);
    return names;
  }

  static QString queryItem(const HttpRequest& request, const QString& name) {
    return QUrlQuery(request.url).queryItemValue(name, QUrl::FullyDecoded);
  }

  static QByteArray queryOf(const HttpRequest& request) {
    return request.url.query(QUrl::FullyEncoded).toLatin1();
  }
};

TEST_F(DictationRequestBuilderTest, ADictationIsAPostOfTheWavAsItIs) {
  const auto request = dictate().http;
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.url.adjusted(QUrl::RemoveQuery),
            QUrl(u"https://api.example.org/v1/desktop/dictate"_s));
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.body, wav);
}

TEST_F(DictationRequestBuilderTest, TheBodyIsSharedAndNotCopied) {
  EXPECT_EQ(dictate().http.body.constData(), wav.constData());
}

TEST_F(DictationRequestBuilderTest, TheQueryItemsOfADictationStandInOrder) {
  EXPECT_EQ(queryOf(dictate().http),
            "mode=transcribe&timestamps=false&format_mode=smart&language=en&model=saaras:v4");
}

TEST_F(DictationRequestBuilderTest, LanguageAndModeAreReadAnewForEachRequest) {
  storage.settings.set(keys::dictateOutputMode, u"codemix"_s);
  storage.settings.set(keys::dictationLanguage, u"hinglish"_s);
  EXPECT_EQ(queryOf(dictate().http),
            "mode=codemix&timestamps=false&format_mode=smart&language=en&model=saaras:v3");
  storage.settings.set(keys::dictationLanguage, u"multi"_s);
  EXPECT_EQ(queryItem(dictate().http, u"language"_s), u"multi"_s);
  storage.settings.set(keys::dictationLanguage, u"xx"_s);
  EXPECT_EQ(queryItem(dictate().http, u"language"_s), u"en"_s);
}

TEST_F(DictationRequestBuilderTest, NoValueCanEndItsQueryItem) {
  const QString mode = QString::fromUtf8("a&b=c#d%41+é ?");
  storage.settings.set(keys::dictateOutputMode, mode);
  const auto request = dictate().http;
  EXPECT_EQ(queryItem(request, u"mode"_s), mode);
  EXPECT_EQ(queryItem(request, u"model"_s), u"saaras:v4"_s);
  EXPECT_TRUE(request.url.fragment().isEmpty());
  EXPECT_TRUE(queryOf(request).contains("%2B")) << "a plus would be read as a blank";
}

TEST_F(DictationRequestBuilderTest, TheHeadersOfADictationStandInOrder) {
  const auto request = dictate().http;
  EXPECT_THAT(headerNames(request),
              ElementsAre("Content-Type", "Authorization", "x-platform", "x-os-version",
                          "x-app-version", "x-device-id", "x-mic-type", "x-target-app-name",
                          "x-target-bundle-id", "x-dictation-id"));
  EXPECT_EQ(header(request, "Content-Type"), "audio/wav");
  EXPECT_EQ(header(request, "Authorization"), "Bearer t0ken");
  EXPECT_EQ(header(request, "x-platform"), "macos");
  EXPECT_EQ(header(request, "x-os-version"), "12.8.0");
  EXPECT_EQ(header(request, "x-app-version"), "1.2.0");
  EXPECT_EQ(header(request, "x-device-id"), installId.toUtf8());
  EXPECT_EQ(header(request, "x-mic-type"), "usb");
  EXPECT_EQ(header(request, "x-target-app-name"), "Mousepad");
  EXPECT_EQ(header(request, "x-target-bundle-id"), "org.xfce.mousepad");
}

TEST_F(DictationRequestBuilderTest, TheDictationIdIsAFreshUuidInUpperCase) {
  const auto first = QString::fromLatin1(header(dictate().http, "x-dictation-id"));
  const auto second = QString::fromLatin1(header(dictate().http, "x-dictation-id"));
  static const QRegularExpression uuid(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
  EXPECT_TRUE(uuid.match(first).hasMatch()) << first.toStdString();
  EXPECT_NE(first, second);
}

TEST_F(DictationRequestBuilderTest, EveryTransportHasItsMicrophoneType) {
  const std::pair<InputTransport, QByteArray> rows[] = {
      {InputTransport::BuiltIn, "builtIn"}, {InputTransport::Bluetooth, "bluetooth"},
      {InputTransport::Usb, "usb"},         {InputTransport::Virtual, "virtual"},
      {InputTransport::Other, "other"},
  };
  for (const auto& [transport, value] : rows) {
    inputDevice.setTransport(transport);
    EXPECT_EQ(header(dictate().http, "x-mic-type"), value);
  }
}

TEST_F(DictationRequestBuilderTest, WithoutUsageStatisticsTheMicrophoneTypeIsAbsent) {
  storage.settings.set(keys::shareUsageStatistics, false);
  EXPECT_EQ(header(dictate().http, "x-mic-type"), "(absent)");
  EXPECT_EQ(header(dictate().http, "x-device-id"), installId.toUtf8());
  storage.settings.set(keys::shareUsageStatistics, true);
  EXPECT_EQ(header(dictate().http, "x-mic-type"), "usb");
}

TEST_F(DictationRequestBuilderTest, AMissingInstallIdIsSentAsTheEmptyText) {
  storage.settings.remove(keys::telemetryInstallId);
  EXPECT_EQ(header(dictate().http, "x-device-id"), "");
}

TEST_F(DictationRequestBuilderTest, AnUnknownVersionOfThisProgramIsSentAs1Point0) {
  system.applicationVersion.clear();
  EXPECT_EQ(header(dictate().http, "x-app-version"), "1.0");
}

TEST_F(DictationRequestBuilderTest, AnApplicationsNameCannotBeginAHeaderOfItsOwn) {
  desktop.setFrontmost(
      RunningApplication{.identifier = u"a\nb"_s, .name = QString::fromUtf8("Café\r\nx-evil: 1")});
  const auto request = dictate().http;
  EXPECT_EQ(header(request, "x-target-app-name"), "Café  x-evil: 1");
  EXPECT_EQ(header(request, "x-target-bundle-id"), "a b");
}

TEST_F(DictationRequestBuilderTest, AnAddressThatIsNoneBuildsNothing) {
  for (const QString& address : {u""_s, u"/relative"_s, u"https://"_s, u"https://bad host"_s}) {
    configuration.apiBaseURL = QUrl(address);
    EXPECT_FALSE(builder.dictate(u"t"_s, wav)) << address.toStdString();
    EXPECT_FALSE(builder.chunk(u"t"_s, {})) << address.toStdString();
    EXPECT_FALSE(builder.finalize(u"t"_s, {})) << address.toStdString();
  }
}

TEST_F(DictationRequestBuilderTest, AChunkCarriesNoFormatModeAndNoDictationId) {
  const auto request = chunk({.wavData = wav,
                              .sessionId = u"S-1"_s,
                              .language = u"hi"_s,
                              .model = u"saaras:v4"_s,
                              .mode = u"translit"_s,
                              .index = 12})
                           .http;
  EXPECT_EQ(request.url.path(), chunkPath);
  EXPECT_EQ(queryOf(request),
            "mode=translit&timestamps=false&language=hi&model=saaras:v4&chunk_index=12"
            "&session_id=S-1");
  EXPECT_THAT(headerNames(request),
              ElementsAre("Content-Type", "Authorization", "x-platform", "x-os-version",
                          "x-app-version", "x-device-id", "x-mic-type", "x-session-id",
                          "x-target-app-name", "x-target-bundle-id"));
  EXPECT_EQ(header(request, "Content-Type"), "audio/wav");
  EXPECT_EQ(header(request, "x-session-id"), "S-1");
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.body.constData(), wav.constData());
}

TEST_F(DictationRequestBuilderTest, AFinalizeCarriesNoQueryItems) {
  const auto request = builder.finalize(u"t0ken"_s, transcriptOf(30))->http;
  EXPECT_EQ(request.url.path(), finalizePath);
  EXPECT_FALSE(request.url.hasQuery());
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_THAT(headerNames(request),
              ElementsAre("Content-Type", "Authorization", "x-platform", "x-os-version",
                          "x-app-version", "x-device-id", "x-mic-type", "x-session-id",
                          "x-target-app-name", "x-target-bundle-id"));
  EXPECT_EQ(header(request, "Content-Type"), "application/json");
}

TEST_F(DictationRequestBuilderTest, TheBodyOfAFinalizeHasExactlyItsEightKeys) {
  const auto request = builder.finalize(u"t0ken"_s, transcriptOf(31.25));
  const QJsonObject expected{{u"sessionId"_s, u"S-1"_s},
                             {u"rawTranscript"_s, QString::fromUtf8("a \"b\" 👩‍👧")},
                             {u"format_mode"_s, u"smart"_s},
                             {u"language"_s, u"hi"_s},
                             {u"model"_s, u"saaras:v4"_s},
                             {u"totalDuration"_s, 31.25},
                             {u"appName"_s, u"Mousepad"_s},
                             {u"bundleId"_s, u"org.xfce.mousepad"_s}};
  EXPECT_EQ(parseJsonObject(request->http.body), expected);
}

TEST_F(DictationRequestBuilderTest, TheTotalDurationIsAJsonNumber) {
  const auto request = builder.finalize(u"t0ken"_s, transcriptOf(30));
  EXPECT_TRUE(parseJsonObject(request->http.body)->value(u"totalDuration"_s).isDouble());
}

TEST_F(DictationRequestBuilderTest, ADurationThatJsonCannotHoldLeavesTheFinalizeWithoutBody) {
  for (const double duration : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    const auto request = builder.finalize(u"t0ken"_s, transcriptOf(duration));
    ASSERT_TRUE(request);
    EXPECT_TRUE(request->http.body.isEmpty());
  }
}

TEST_F(DictationRequestBuilderTest, AnEmptyTokenCountsAsNone) {
  EXPECT_EQ(builder.token(), u"t0ken"_s);
  tokens.remove(QString::fromUtf16(authTokenAccount));
  EXPECT_EQ(builder.token(), std::nullopt);
  tokens.write(u""_s, QString::fromUtf16(authTokenAccount));
  EXPECT_EQ(builder.token(), std::nullopt);
}

}  // namespace
}  // namespace vemo
