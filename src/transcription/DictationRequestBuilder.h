// Builds the three requests of a dictation: address, query, headers and body.
//
// Settings, the application in front and the microphone are read at the moment of building. Main
// thread only. Nothing is built, and the result is empty, when the configured address is no
// address.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "ports/HttpSession.h"
#include "transcription/TargetApplication.h"

namespace vemo {

class FocusedApplication;
class InputDevice;
class SecureTokenStore;
class Settings;
struct DeploymentConfiguration;
struct SystemInformation;

/// A request, and what the log says about it.
struct DictationRequest {
  HttpRequest http;
  QString language;
  QString model;
  QString mode;
  TargetApplication target;
};

class DictationRequestBuilder {
 public:
  /// Where the requests' contents come from.
  struct Sources {
    const Settings& settings;
    SecureTokenStore& tokens;
    const DeploymentConfiguration& configuration;
    const FocusedApplication& focusedApplication;
    const InputDevice& inputDevice;
    const SystemInformation& system;
  };

  struct Chunk {
    QByteArray wavData;
    QString sessionId;
    QString language;
    QString model;
    QString mode;
    int index = 0;
  };

  struct Transcript {
    QString sessionId;
    QString rawText;
    QString language;
    QString model;
    QString formatMode;
    double totalDuration = 0;  ///< seconds
  };

  explicit DictationRequestBuilder(Sources sources) : m_sources(sources) {}

  /// The session token; absent when nobody is signed in.
  std::optional<QString> token() const;

  std::optional<DictationRequest> dictate(const QString& token, const QByteArray& wavData) const;
  std::optional<DictationRequest> chunk(const QString& token, const Chunk& chunk) const;
  std::optional<DictationRequest> finalize(const QString& token,
                                           const Transcript& transcript) const;

 private:
  std::optional<HttpRequest> post(const QString& path, const QByteArray& contentType,
                                  const QString& token) const;

  const Sources m_sources;
};

}  // namespace vemo
