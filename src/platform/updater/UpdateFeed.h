// Fetching the feed, and the key that it has to be signed with.
#pragma once

#include <QByteArray>
#include <QUrl>
#include <expected>
#include <stop_token>

#include "base/Task.h"
#include "platform/updater/Appcast.h"
#include "platform/updater/UpdateTrouble.h"
#include "ports/HttpSession.h"

namespace vemo {

struct UpdateFeed {
  QByteArray key;  ///< in force, also where no feed has come
  std::expected<Appcast, UpdateRefusal> content;
};

/// What the feed says where it is signed with the key in force: `trusted`, or one that has followed
/// it. Whether it is new enough is for the caller to say. Main thread.
Task<UpdateFeed> fetchUpdateFeed(HttpSession& session, QUrl feed, QByteArray trusted,
                                 std::stop_token stop);

}  // namespace vemo
