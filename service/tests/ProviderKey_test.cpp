#include "provider/ProviderKey.h"

#include <gmock/gmock.h>

#include <thread>

#include "support/TemporaryFolder.h"

namespace vemo::service {
namespace {

using std::filesystem::perms;
using testing::HasSubstr;

class ProviderKeyTest : public testing::Test {
 protected:
  TemporaryFolder m_folder;
  std::filesystem::path m_path = m_folder.path() / "new-folder" / "sign-in-key.json";
};

TEST_F(ProviderKeyTest, TheFirstUseMakesAKeyForItsOwnerAloneAndLaterOnesReadIt) {
  const auto made = providerKey(m_path);
  ASSERT_TRUE(made);
  EXPECT_EQ(std::filesystem::status(m_path).permissions(), perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(m_path.parent_path()).permissions(), perms::owner_all);
  const auto again = providerKey(m_path);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->privateJson(), made->privateJson());
  const auto names = std::distance(std::filesystem::directory_iterator(m_path.parent_path()), {});
  EXPECT_EQ(names, 1) << "nothing of the making is left";
}

TEST_F(ProviderKeyTest, TheKeySignsWhatItsPublicHalfVerifies) {
  const auto key = providerKey(m_path);
  ASSERT_TRUE(key);
  const auto token = SignedToken::read(key->sign("payload"));
  ASSERT_TRUE(token);
  EXPECT_EQ(token->keyIdentifier(), key->identifier());
  EXPECT_EQ(token->payload(*JsonWebKey::read(key->publicJson())), "payload");
  EXPECT_EQ(key->publicJson().find("\"d\""), std::string::npos);
}

TEST_F(ProviderKeyTest, TwoThatMakeAKeyAtOnceGoOnWithTheSame) {
  std::string first;
  std::string second;
  {
    const std::jthread other([&] { first = providerKey(m_path).value().privateJson(); });
    second = providerKey(m_path).value().privateJson();
  }
  EXPECT_EQ(first, second);
}

TEST_F(ProviderKeyTest, AFileThatOthersMayReadIsRefused) {
  ASSERT_TRUE(providerKey(m_path));
  std::filesystem::permissions(m_path, perms::group_read, std::filesystem::perm_options::add);
  EXPECT_THAT(providerKey(m_path).error(), HasSubstr("others may read it"));
}

TEST_F(ProviderKeyTest, WhatIsNoPrivateKeyIsRefusedAndLeftAlone) {
  const auto publicHalf = providerKey(m_path).value().publicJson();
  for (const auto& content : {publicHalf, std::string("{}"), std::string("[]"), std::string()}) {
    const auto path = m_folder.write("key", content);
    EXPECT_THAT(providerKey(path).error(), HasSubstr("is not a key that this program has made"));
    EXPECT_EQ(readFile(path), content);
  }
}

TEST_F(ProviderKeyTest, AFolderThatCannotBeMadeIsToldInALine) {
  const auto file = m_folder.write("file", "");
  EXPECT_THAT(providerKey(file / "below" / "key").error(), HasSubstr((file / "below").string()));
}

}  // namespace
}  // namespace vemo::service
