// Certificate authorities and server certificates, made by the openssl command for one test
// program.
#pragma once

#include <QSslConfiguration>
#include <QString>
#include <QTemporaryDir>

namespace vemo {

class TestCertificates {
 public:
  TestCertificates();

  /// What a server needs to show a certificate for `hostName` that `authority` has signed. The
  /// dates are openssl's, "YYYYMMDDHHMMSSZ".
  QSslConfiguration server(const QString& authority, const QString& hostName,
                           const QString& validFrom = QStringLiteral("20200101000000Z"),
                           const QString& validUntil = QStringLiteral("20990101000000Z"));

  /// A certificate for localhost that is signed by nobody but itself.
  QSslConfiguration selfSignedServer();

  /// Makes this process trust the authority "trusted", and no other of these.
  void trustTheTrustedOne();

 private:
  void makeAuthority(const QString& name);
  void openssl(const QStringList& arguments);
  QString path(const QString& name) const { return m_folder.filePath(name); }
  QSslConfiguration configuration(const QString& name) const;

  QTemporaryDir m_folder;
  int m_lastSerial = 0;
};

}  // namespace vemo
