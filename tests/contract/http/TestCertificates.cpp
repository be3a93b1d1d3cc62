#include "TestCertificates.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& content) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(content);
}

QStringList newKey(const QString& path) {
  return {u"-newkey"_s, u"ec"_s,      u"-pkeyopt"_s, u"ec_paramgen_curve:prime256v1"_s,
          u"-nodes"_s,  u"-keyout"_s, path};
}

}  // namespace

TestCertificates::TestCertificates() {
  EXPECT_TRUE(m_folder.isValid());
  makeAuthority(u"trusted"_s);
  makeAuthority(u"unknown"_s);
}

void TestCertificates::makeAuthority(const QString& name) {
  openssl(QStringList{u"req"_s, u"-x509"_s, u"-days"_s, u"1000"_s, u"-subj"_s,
                      u"/CN=%1 test authority"_s.arg(name), u"-out"_s, path(name + u".pem"_s)} +
          newKey(path(name + u".key"_s)));
}

QSslConfiguration TestCertificates::server(const QString& authority, const QString& hostName,
                                           const QString& validFrom, const QString& validUntil) {
  const QString name = u"server%1"_s.arg(++m_lastSerial);
  write(path(u"index"_s), {});
  // Hexadecimal, with an even number of digits.
  write(path(u"serial"_s), QByteArray::number(m_lastSerial, 16).rightJustified(4, '0') + "\n");
  write(path(u"ca.conf"_s),
        u"[ca]\ndefault_ca=here\n[here]\ndatabase=%1\nserial=%2\nnew_certs_dir=%3\n"
        "default_md=sha256\npolicy=any\nx509_extensions=names\n"
        "[any]\ncommonName=supplied\n[names]\nsubjectAltName=%4\n"_s
            .arg(path(u"index"_s), path(u"serial"_s), m_folder.path(), u"DNS:%1"_s.arg(hostName))
            .toUtf8());
  openssl(QStringList{u"req"_s, u"-new"_s, u"-subj"_s, u"/CN=%1"_s.arg(hostName), u"-out"_s,
                      path(u"request"_s)} +
          newKey(path(name + u".key"_s)));
  openssl({u"ca"_s, u"-batch"_s, u"-config"_s, path(u"ca.conf"_s), u"-cert"_s,
           path(authority + u".pem"_s), u"-keyfile"_s, path(authority + u".key"_s), u"-in"_s,
           path(u"request"_s), u"-out"_s, path(name + u".pem"_s), u"-notext"_s, u"-startdate"_s,
           validFrom, u"-enddate"_s, validUntil});
  return configuration(name);
}

QSslConfiguration TestCertificates::selfSignedServer() {
  openssl(QStringList{u"req"_s, u"-x509"_s, u"-days"_s, u"1000"_s, u"-subj"_s, u"/CN=localhost"_s,
                      u"-addext"_s, u"subjectAltName=DNS:localhost"_s, u"-out"_s,
                      path(u"self.pem"_s)} +
          newKey(path(u"self.key"_s)));
  return configuration(u"self"_s);
}

void TestCertificates::trustTheTrustedOne() {
  auto configuration = QSslConfiguration::defaultConfiguration();
  configuration.addCaCertificates(path(u"trusted.pem"_s));
  QSslConfiguration::setDefaultConfiguration(configuration);
}

void TestCertificates::openssl(const QStringList& arguments) {
  QProcess process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(u"openssl"_s, arguments);
  ASSERT_TRUE(process.waitForFinished()) << "openssl can't be run";
  ASSERT_EQ(process.exitCode(), 0) << process.readAll().toStdString();
}

QSslConfiguration TestCertificates::configuration(const QString& name) const {
  QFile key(path(name + u".key"_s));
  EXPECT_TRUE(key.open(QIODevice::ReadOnly));
  auto configuration = QSslConfiguration::defaultConfiguration();
  configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
  configuration.setLocalCertificateChain(
      QSslCertificate::fromPath(path(name + u".pem"_s), QSsl::Pem));
  configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
  return configuration;
}

}  // namespace vemo
