#include "ui/models/FolderChooserModel.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

namespace vemo {

Task<std::optional<QString>> FolderChooserModel::chooseFolder(FolderQuestion question,
                                                              std::stop_token stop) {
  if (isOpen() || stop.stop_requested()) co_return std::nullopt;
  m_question = std::move(question);
  m_problem.clear();
  const Completion<std::optional<QString>> end(m_mainThread);
  m_end = end;
  Q_EMIT changed();
  const std::stop_callback onStop(stop, [this] { reject(); });
  auto path = co_await end;
  co_return path;
}

void FolderChooserModel::acceptPath(const QString& path) {
  QString folder = path.trimmed();
  if (folder == u"~" || folder.startsWith(u"~/")) folder.replace(0, 1, QDir::homePath());
  const QFileInfo found(folder);
  if (found.isAbsolute() && found.isDir()) return finish(QDir::cleanPath(folder));
  m_problem = tr("There is no such folder.");
  Q_EMIT changed();
}

void FolderChooserModel::reject() {
  finish(std::nullopt);
}

void FolderChooserModel::finish(const std::optional<QString>& path) {
  const auto end = std::exchange(m_end, std::nullopt);
  if (!end) return;
  end->complete(path);
  Q_EMIT changed();
}

}  // namespace vemo
