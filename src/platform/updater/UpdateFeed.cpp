#include "platform/updater/UpdateFeed.h"

#include <utility>

#include "platform/updater/UpdateSignatures.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

std::unexpected<UpdateRefusal> refusal(UpdateTrouble trouble, const QString& why) {
  return std::unexpected(UpdateRefusal{trouble, why});
}

Task<std::expected<QByteArray, UpdateRefusal>> fetch(HttpSession& session, QUrl address,
                                                     std::stop_token stop) {
  const HttpResult answer = co_await session.send(
      {.method = "GET", .url = address, .headers = {}, .body = {}, .timeout = 20s}, stop);
  if (!answer) co_return refusal(UpdateTrouble::DownloadFailed, answer.error().description);
  if (answer->status != 200)
    co_return refusal(
        UpdateTrouble::DownloadFailed,
        u"%1: status %2"_s.arg(address.fileName(), QString::number(answer->status.value_or(0))));
  co_return answer->body;
}

std::expected<Appcast, UpdateRefusal> contentOf(const QByteArray& feed, const QByteArray& key) {
  if (feed.size() > Appcast::largestFeed)
    return refusal(UpdateTrouble::FeedUnreadable, u"the feed is too large"_s);
  const auto xml = verifiedFeed(feed, key);
  if (!xml) return refusal(UpdateTrouble::NotSigned, u"the feed's signature is wrong"_s);
  auto appcast = Appcast::read(*xml);
  if (!appcast) return refusal(UpdateTrouble::FeedUnreadable, u"feed: "_s + appcast.error());
  return *std::move(appcast);
}

}  // namespace

Task<UpdateFeed> fetchUpdateFeed(HttpSession& session, QUrl feed, QByteArray trusted,
                                 std::stop_token stop) {
  // First the keys: a feed of a key that has been replaced must not count.
  const auto rotations = co_await fetch(session, feed.resolved(QUrl(u"keys.txt"_s)), stop);
  const QByteArray key =
      latestKey(rotations.value_or(QByteArray()).left(Appcast::largestFeed), trusted);
  const auto fetched = co_await fetch(session, feed, stop);
  if (!fetched) co_return UpdateFeed{key, std::unexpected(fetched.error())};
  co_return UpdateFeed{key, contentOf(*fetched, key)};
}

}  // namespace vemo
