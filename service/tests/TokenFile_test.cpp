#include "setup/TokenFile.h"

#include <gmock/gmock.h>

#include "setup/SecretFile.h"
#include "support/TemporaryFolder.h"

namespace vemo::service {
namespace {

using std::filesystem::perms;
using testing::HasSubstr;

class TokenFileTest : public testing::Test {
 protected:
  TemporaryFolder m_folder;
  std::filesystem::path m_path = m_folder.path() / "new-folder" / "tokens";
};

TEST_F(TokenFileTest, ANewTokenIsAcceptedAndNoOther) {
  const auto token = TokenFile::add(m_path);
  ASSERT_TRUE(token);
  TokenFile file(m_path);
  EXPECT_TRUE(file.accepts(*token));
  EXPECT_FALSE(file.accepts(token->substr(1)));
  EXPECT_FALSE(file.accepts(*token + "0"));
  EXPECT_FALSE(file.accepts(""));
}

TEST_F(TokenFileTest, TheFileHoldsHashesOnlyAndIsTheOwnersAlone) {
  const auto token = TokenFile::add(m_path);
  ASSERT_TRUE(token);
  const auto content = readFile(m_path);
  EXPECT_EQ(content.size(), 65U);
  EXPECT_EQ(content.find(*token), std::string::npos);
  EXPECT_EQ(std::filesystem::status(m_path).permissions(), perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(m_path.parent_path()).permissions(), perms::owner_all);
}

TEST_F(TokenFileTest, AHashIsNotAToken) {
  ASSERT_TRUE(TokenFile::add(m_path));
  EXPECT_FALSE(TokenFile(m_path).accepts(readFile(m_path).substr(0, 64)));
}

TEST_F(TokenFileTest, TokensComeAndGoWhileTheFileIsInUse) {
  TokenFile file(m_path);
  EXPECT_FALSE(file.accepts("x"));
  const auto first = TokenFile::add(m_path);
  EXPECT_TRUE(file.accepts(*first));
  const auto second = TokenFile::add(m_path);
  EXPECT_NE(*first, *second);
  EXPECT_TRUE(file.accepts(*first));
  EXPECT_TRUE(file.accepts(*second));
  const auto hashes = readFile(m_path);
  std::ofstream(m_path) << hashes.substr(65);
  EXPECT_FALSE(file.accepts(*first));
  EXPECT_TRUE(file.accepts(*second));
  std::filesystem::remove(m_path);
  EXPECT_FALSE(file.accepts(*second));
}

TEST_F(TokenFileTest, AFileThatOthersMayReadAcceptsNobody) {
  const auto token = TokenFile::add(m_path);
  TokenFile file(m_path);
  for (const auto mode : {perms::group_read, perms::others_read, perms::group_write}) {
    std::filesystem::permissions(m_path, perms::owner_read | perms::owner_write | mode);
    EXPECT_FALSE(file.accepts(*token));
    EXPECT_THAT(file.problem().value_or(""), HasSubstr("chmod 600"));
    EXPECT_FALSE(TokenFile::add(m_path));
  }
  std::filesystem::permissions(m_path, perms::owner_read | perms::owner_write);
  EXPECT_TRUE(file.accepts(*token));
  EXPECT_EQ(file.problem(), std::nullopt);
}

TEST_F(TokenFileTest, ALineThatIsNoHashIsAProblemWithItsNumber) {
  for (const auto* line : {"abc", "zz", "0123456789abcdef0123456789abcdef"}) {
    const auto path = m_folder.write("odd", std::string("# fine\n\n") + line + "\n");
    EXPECT_THAT(TokenFile(path).problem().value_or(""), HasSubstr("line 3"));
  }
  const auto path = m_folder.write("odd", std::string(63, 'a') + "g\n");
  EXPECT_TRUE(TokenFile(path).problem());
}

TEST_F(TokenFileTest, AFileWithoutALastLineEndTakesANewTokenAsALineOfItsOwn) {
  const auto first = TokenFile::add(m_path);
  const auto content = readFile(m_path);
  std::ofstream(m_path) << content.substr(0, 64);
  const auto second = TokenFile::add(m_path);
  TokenFile file(m_path);
  EXPECT_TRUE(file.accepts(*first));
  EXPECT_TRUE(file.accepts(*second));
}

TEST_F(TokenFileTest, AnAbsentFileIsNoProblemButAcceptsNobody) {
  TokenFile file(m_path);
  EXPECT_FALSE(file.exists());
  EXPECT_EQ(file.problem(), std::nullopt);
  EXPECT_FALSE(file.accepts(""));
}

TEST_F(TokenFileTest, AFolderAndALargeFileAreNoSecretFiles) {
  EXPECT_FALSE(readSecretFile(m_folder.path()));
  EXPECT_TRUE(readSecretFile(m_folder.write("limit", std::string(1024 * 1024, 'x'))));
  EXPECT_FALSE(readSecretFile(m_folder.write("above", std::string(1024 * 1024 + 1, 'x'))));
}

}  // namespace
}  // namespace vemo::service
