// The keyring adapter while the keyring is locked.
#include <gtest/gtest.h>

#include <QProcess>

#include "platform/secretservice/SecretServiceBackend.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

void lockKeyring() {
  const QStringList call{u"--session"_s,
                         u"--dest=org.freedesktop.secrets"_s,
                         u"--print-reply"_s,
                         u"/org/freedesktop/secrets"_s,
                         u"org.freedesktop.Secret.Service.Lock"_s,
                         u"array:objpath:/org/freedesktop/secrets/aliases/default"_s};
  ASSERT_EQ(QProcess::execute(u"dbus-send"_s, call), 0);
}

/// Long enough that a prompt, which nobody would answer here, would show as a test that hangs.
constexpr std::chrono::seconds generousLimit{100};

TEST(SecretServiceLockedTest, ALockedKeyringFailsAtOnceAndNobodyIsAsked) {
  const QString service = u"brelmox.Vemo"_s;
  const QString account = u"authToken"_s;
  SecretServiceBackend backend(generousLimit);
  ASSERT_TRUE(backend.add(service, account, "secret"));
  lockKeyring();

  const auto found = backend.find(service, account);
  ASSERT_FALSE(found);
  EXPECT_EQ(found.error(), SecretError::Failed);
  const auto added = backend.add(service, account, "other");
  ASSERT_FALSE(added);
  EXPECT_EQ(added.error(), SecretError::Failed);
  const auto removed = backend.remove(service, account);
  ASSERT_FALSE(removed);
  EXPECT_EQ(removed.error(), SecretError::Failed);
}

}  // namespace
}  // namespace vemo
