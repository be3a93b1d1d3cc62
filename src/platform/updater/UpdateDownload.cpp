#include "platform/updater/UpdateDownload.h"

#include <QFile>
#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

HttpRequest requestFor(const QUrl& address, qint64 first, qint64 count) {
  HttpRequest request{.method = "GET", .url = address, .headers = {}, .body = {}, .timeout = 20s};
  request.setHeader(
      "Range", "bytes=" + QByteArray::number(first) + '-' + QByteArray::number(first + count - 1));
  return request;
}

}  // namespace

Task<std::expected<void, QString>> download(HttpSession& session, UpdateDownload wanted,
                                            std::stop_token stop) {
  QFile partial(wanted.file);
  if (!partial.open(QIODevice::ReadWrite)) co_return std::unexpected(partial.errorString());
  if (partial.size() > wanted.size) partial.resize(0);
  partial.seek(partial.size());
  for (qint64 have = partial.size(); have < wanted.size; have = partial.size()) {
    const qint64 count = std::min(UpdateDownload::pieceSize, wanted.size - have);
    const HttpResult answer = co_await session.send(requestFor(wanted.address, have, count), stop);
    if (!answer) co_return std::unexpected(answer.error().description);
    const bool isWhole = answer->status == 200 && have == 0 && count == wanted.size;
    if ((answer->status != 206 && !isWhole) || answer->body.size() != count)
      co_return std::unexpected(u"the server sent something else than was asked for"_s);
    if (partial.write(answer->body) != count || !partial.flush())
      co_return std::unexpected(partial.errorString());
  }
  co_return std::expected<void, QString>();
}

}  // namespace vemo
