#include "platform/xdg/PortalFolderChooser.h"

#include <QFileInfo>
#include <QStringList>
#include <QUrl>

#include "platform/xdg/PortalRequest.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<QString> chosenFolder(const PortalRequest::Results& results) {
  const QStringList addresses = results.value(u"uris"_s).toStringList();
  if (addresses.isEmpty()) return std::nullopt;
  const QString path = QUrl(addresses.front()).toLocalFile();
  return QFileInfo(path).isDir() ? std::optional(path) : std::nullopt;
}

}  // namespace

Task<std::optional<QString>> PortalFolderChooser::chooseFolder(FolderQuestion question,
                                                               std::stop_token stop) {
  {
    PortalRequest request(m_mainThread);
    request.ask(u"org.freedesktop.portal.FileChooser"_s, u"OpenFile"_s, question.message,
                {{u"accept_label"_s, question.prompt},
                 {u"modal"_s, true},
                 {u"multiple"_s, false},
                 {u"directory"_s, true}});
    const std::stop_callback onStop(stop, [&request] { request.takeBack(); });
    const auto answer = co_await request.answer();
    if (answer) co_return chosenFolder(*answer);
  }
  auto path = co_await m_withoutPortal.chooseFolder(std::move(question), std::move(stop));
  co_return path;
}

}  // namespace vemo
