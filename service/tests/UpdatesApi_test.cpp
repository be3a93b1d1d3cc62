#include "updates/UpdatesApi.h"

#include <gmock/gmock.h>

#include <fstream>

#include "support/TemporaryFolder.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;

class UpdatesApiTest : public testing::Test {
 protected:
  UpdatesApiTest() {
    write("appcast.xml", "<rss/>");
    write("vemo-57.tar.xz", std::string(UpdatesApi::largestPart + 1, 'v'));
    UpdatesApi(m_folder.path()).addTo(m_router);
  }

  void write(const std::string& name, const std::string& content) {
    std::ofstream(m_folder.path() / name, std::ios::binary) << content;
  }

  Answer get(const std::string& target, const std::string& range = {}) {
    auto match = m_router.find(boost::beast::http::verb::get, target);
    if (!match) return std::move(match.error());
    EXPECT_EQ(match->route->access, Access::Everybody);
    Request request{.target = match->target, .item = match->item};
    if (!range.empty()) request.headers.set("Range", range);
    std::optional<Answer> answer;
    match->route->handler(std::move(request), {}, [&](Answer a) { answer = std::move(a); });
    return answer.value_or(Answer{});
  }

  TemporaryFolder m_folder;
  Router m_router;
};

TEST_F(UpdatesApiTest, ServesTheFeedAsItIs) {
  const auto answer = get("/desktop/updates/appcast.xml");
  EXPECT_EQ(answer.status, 200U);
  EXPECT_EQ(answer.body, "<rss/>");
  EXPECT_EQ(answer.contentType, "application/xml");
}

TEST_F(UpdatesApiTest, ServesTheAskedPartOfAFile) {
  const auto answer = get("/desktop/updates/appcast.xml", "bytes=1-3");
  EXPECT_EQ(answer.status, 206U);
  EXPECT_EQ(answer.body, "rss");
  EXPECT_EQ(answer.contentRange, "bytes 1-3/6");
  EXPECT_EQ(get("/desktop/updates/appcast.xml", "bytes=4-99").body, "/>");
  EXPECT_EQ(get("/desktop/updates/appcast.xml", "bytes=5-5").status, 206U);
  EXPECT_EQ(get("/desktop/updates/appcast.xml", "bytes=6-6").status, 416U);
}

TEST_F(UpdatesApiTest, ALargeFileComesInPartsOfALimitedSize) {
  EXPECT_EQ(get("/desktop/updates/vemo-57.tar.xz").status, 400U);
  EXPECT_EQ(get("/desktop/updates/vemo-57.tar.xz", "bytes=0-99999999").body.size(),
            UpdatesApi::largestPart);
}

TEST_F(UpdatesApiTest, ARangeThatCannotBeReadCountsAsNone) {
  for (const char* range : {"bytes=", "bytes=-5", "bytes=3-1", "bytes=1-2,4-5", "lines=1-2",
                            "bytes=0-18446744073709551615", "bytes=a-b"})
    EXPECT_FALSE(FilePart::parse(range)) << range;
}

TEST_F(UpdatesApiTest, NothingOutsideTheFolderIsServed) {
  write(".hidden", "secret");
  std::filesystem::create_symlink("/etc/passwd", m_folder.path() / "link");
  std::filesystem::create_directory(m_folder.path() / "folder");
  for (const char* name : {"..", ".hidden", "link", "folder", "%2e%2e%2fpasswd", "..%2fpasswd",
                           "nothing", "a%00b", "%2fetc%2fpasswd"})
    EXPECT_EQ(get(std::string("/desktop/updates/") + name).status, 404U) << name;
}

}  // namespace
}  // namespace vemo::service
