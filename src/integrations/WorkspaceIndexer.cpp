#include "integrations/WorkspaceIndexer.h"

#include <QFileInfo>
#include <utility>

#include "base/RunElsewhere.h"
#include "integrations/EditorProjects.h"
#include "integrations/WorkspaceScanner.h"
#include "ports/FocusedApplication.h"
#include "ports/FolderChooser.h"
#include "ports/ScriptRunner.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString activeDocumentScript =
    u"tell application \"Xcode\" to get path of active workspace document"_s;

/// What comes before the last component of a path, and that component.
struct SplitPath {
  QString folder;
  QString name;
};

SplitPath split(QString path) {
  while (path.size() > 1 && path.endsWith(u'/')) path.chop(1);
  if (path == u"/") return {path, path};
  const auto slash = path.lastIndexOf(u'/');
  return {slash == 0 ? u"/"_s : path.left(slash), path.sliced(slash + 1)};
}

}  // namespace

const QStringList WorkspaceIndexer::builtInFallbackRoots{
    u"/workspace"_s, u"/workspaces"_s, u"/code"_s, u"/project"_s, u"/usr/src/app"_s};

WorkspaceIndexer::WorkspaceIndexer(Neighbours neighbours)
    : m_with(std::move(neighbours)), m_tasks(m_with.mainThread) {
  m_isManualWorkspace = validCustomWorkspace().has_value();
  refreshActiveWorkspace();
}

WorkspaceIndexer::~WorkspaceIndexer() {
  m_scanStop.request_stop();
}

void WorkspaceIndexer::refreshActiveWorkspace() {
  if (const auto path = validCustomWorkspace()) {
    setManualWorkspace(true);
    enqueue(Scan{*path, Need::WhenStale});
    return;
  }
  setManualWorkspace(false);
  const auto application = m_with.focusedApplication.frontmost().value_or(RunningApplication());
  enqueue(
      Detection{application.identifier.value_or(QString()), application.name.value_or(QString())});
}

std::optional<QString> WorkspaceIndexer::resolveFileTag(const QString& spokenName,
                                                        const QString& spokenExtension) const {
  return m_indexedFiles->tagFor(spokenName, spokenExtension);
}

void WorkspaceIndexer::chooseCustomWorkspace() {
  if (!m_with.folderChooser) return;
  m_tasks.start([this](std::stop_token stop) { return askForFolder(std::move(stop)); });
}

Task<> WorkspaceIndexer::askForFolder(std::stop_token stop) {
  const FolderQuestion question{
      .message = u"Choose the root folder of your project for @file tagging"_s,
      .prompt = u"Select Codebase"_s};
  if (const auto path = co_await m_with.folderChooser->chooseFolder(question, std::move(stop)))
    setCustomWorkspace(*path);
}

void WorkspaceIndexer::setCustomWorkspace(const QString& path) {
  if (!QFileInfo::exists(path)) return;
  m_with.settings.set(keys::customWorkspacePath, path);
  setManualWorkspace(true);
  enqueue(Scan{path, Need::Always});
}

void WorkspaceIndexer::clearCustomWorkspace() {
  m_with.settings.remove(keys::customWorkspacePath);
  setManualWorkspace(false);
  m_lastScannedDirectory.clear();
  refreshActiveWorkspace();
}

std::optional<QString> WorkspaceIndexer::validCustomWorkspace() const {
  auto path = m_with.settings.get(keys::customWorkspacePath);
  return path && !path->isEmpty() && QFileInfo::exists(*path) ? path : std::nullopt;
}

void WorkspaceIndexer::setManualWorkspace(bool isManual) {
  if (m_isManualWorkspace == isManual) return;
  m_isManualWorkspace = isManual;
  changed.notify();
}

void WorkspaceIndexer::enqueue(Request request) {
  m_requests.push_back(std::move(request));
  if (m_isServing) return;
  m_isServing = true;
  m_tasks.start([this](std::stop_token) { return serveRequests(); });
}

Task<> WorkspaceIndexer::serveRequests() {
  while (!m_requests.empty()) {
    Request request = std::move(m_requests.front());
    m_requests.pop_front();
    co_await serve(std::move(request));
  }
  m_isServing = false;
}

Task<> WorkspaceIndexer::serve(Request request) {
  if (const auto* scan = std::get_if<Scan>(&request)) {
    co_await (scan->need == Need::Always ? scanDirectory(scan->path) : scanIfNeeded(scan->path));
    co_return;
  }
  const auto path = co_await detectActiveWorkspace(std::get<Detection>(std::move(request)));
  if (path && !path->isEmpty()) co_await scanIfNeeded(*path);
}

Task<std::optional<QString>> WorkspaceIndexer::detectActiveWorkspace(Detection detection) {
  if (auto folder = askXcode(detection)) co_return folder;
  const auto storageFolders =
      editorStorageFolders(m_with.configFolder, detection.bundleIdentifier, detection.appName);
  const auto detected = runElsewhere<std::optional<QString>>(
      m_with.diskReader, m_with.mainThread,
      [storageFolders, fallbackRoots = m_with.fallbackRoots]() -> std::optional<QString> {
        const auto project = lastOpenedProject(storageFolders);
        if (project && QFileInfo::exists(*project)) return project;
        for (const QString& root : fallbackRoots) {
          if (QFileInfo::exists(root)) return root;
        }
        return std::nullopt;
      });
  auto path = co_await detected;
  co_return path;
}

/// The folder of the document that is open in Xcode, if that is in front and can be asked.
std::optional<QString> WorkspaceIndexer::askXcode(const Detection& detection) const {
  const bool isXcode = detection.bundleIdentifier.contains(u"xcode", Qt::CaseInsensitive) ||
                       detection.appName.contains(u"xcode", Qt::CaseInsensitive);
  if (!isXcode || !m_with.scriptRunner) return std::nullopt;
  const auto document = m_with.scriptRunner->run(activeDocumentScript);
  if (!document || document->isEmpty()) return std::nullopt;
  return split(*document).folder;
}

Task<> WorkspaceIndexer::scanIfNeeded(QString path) {
  if (path == m_lastScannedDirectory && !m_indexedFiles->isEmpty()) co_return;
  co_await scanDirectory(std::move(path));
}

Task<> WorkspaceIndexer::scanDirectory(QString path) {
  m_isScanning = true;
  m_lastScannedDirectory = path;
  m_activeWorkspacePath = path;
  m_activeWorkspaceName = split(path).name;
  changed.notify();

  const auto scanned = runElsewhere<std::shared_ptr<const WorkspaceFiles>>(
      m_with.diskReader, m_with.mainThread, [path, stop = m_scanStop.get_token()] {
        return std::make_shared<const WorkspaceFiles>(scanWorkspace(path, stop));
      });
  m_indexedFiles = co_await scanned;
  m_standardOutput.write(u"[Vemo Workspace] 📂 Indexed %1 files in workspace '%2'\n"_s
                             .arg(QString::number(m_indexedFiles->size()), m_activeWorkspaceName)
                             .toUtf8());
  m_isScanning = false;
  changed.notify();
}

}  // namespace vemo
