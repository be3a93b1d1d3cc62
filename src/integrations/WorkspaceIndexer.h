// Decides which project the user is working in, and knows its files.
//
// The project is the folder that the user chose, or else the one that the editor in front has open.
// There is one indexer, made in the composition root. Observable: `changed` tells that a field may
// read differently. Main thread only: disks are read on `diskReader`, and what was read comes back
// as work of the main queue. Refreshes and scans take effect one after the other, in the order of
// the calls, each on the outcome of the one before. The destructor cuts a scan short.
//
// No operation fails: what can't be found or read leaves the files as they are.
#pragma once

#include <QString>
#include <QStringList>
#include <deque>
#include <memory>
#include <optional>
#include <stop_token>
#include <variant>

#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "integrations/FileTagLookup.h"
#include "integrations/WorkspaceFiles.h"
#include "storage/StandardOutput.h"

namespace vemo {

class FocusedApplication;
class FolderChooser;
class ScriptRunner;
class SerialQueue;
class Settings;

class WorkspaceIndexer final : public FileTagLookup {
 public:
  /// Where projects stand that no editor tells of: the usual roots of development containers.
  static const QStringList builtInFallbackRoots;

  /// What it works with; all of it outlives the indexer.
  struct Neighbours {
    MainThread& mainThread;
    SerialQueue& diskReader;
    Settings& settings;
    const FocusedApplication& focusedApplication;
    FolderChooser* folderChooser = nullptr;  ///< none: folders can't be chosen
    ScriptRunner* scriptRunner = nullptr;    ///< none: no application can be asked
    QString configFolder;                    ///< XDG_CONFIG_HOME, where the editors keep theirs
    QStringList fallbackRoots = builtInFallbackRoots;
  };

  explicit WorkspaceIndexer(Neighbours neighbours);
  ~WorkspaceIndexer() override;

  const QString& activeWorkspacePath() const { return m_activeWorkspacePath; }
  const QString& activeWorkspaceName() const { return m_activeWorkspaceName; }
  const WorkspaceFiles& indexedFiles() const { return *m_indexedFiles; }
  bool isScanning() const { return m_isScanning; }
  bool isManualWorkspace() const { return m_isManualWorkspace; }

  Notifier<> changed;

  void refreshActiveWorkspace() override;
  std::optional<QString> resolveFileTag(const QString& spokenName,
                                        const QString& spokenExtension) const override;

  /// Lets the user choose the project's folder.
  void chooseCustomWorkspace();

  /// Takes the folder as the project until further notice, and reads it anew even when it is the
  /// same. A path that doesn't exist changes nothing.
  void setCustomWorkspace(const QString& path);

  /// Goes back to finding the project by itself.
  void clearCustomWorkspace();

 private:
  enum class Need { WhenStale, Always };
  struct Detection {
    QString bundleIdentifier;
    QString appName;
  };
  struct Scan {
    QString path;
    Need need;
  };
  using Request = std::variant<Detection, Scan>;

  std::optional<QString> validCustomWorkspace() const;
  void setManualWorkspace(bool isManual);
  void enqueue(Request request);
  Task<> serveRequests();
  Task<> serve(Request request);
  Task<std::optional<QString>> detectActiveWorkspace(Detection detection);
  std::optional<QString> askXcode(const Detection& detection) const;
  Task<> scanIfNeeded(QString path);
  Task<> scanDirectory(QString path);
  Task<> askForFolder(std::stop_token stop);

  Neighbours m_with;
  const StandardOutput m_standardOutput;
  QString m_activeWorkspacePath;
  QString m_activeWorkspaceName;
  std::shared_ptr<const WorkspaceFiles> m_indexedFiles = std::make_shared<WorkspaceFiles>();
  bool m_isScanning = false;
  bool m_isManualWorkspace = false;
  QString m_lastScannedDirectory;
  std::deque<Request> m_requests;
  bool m_isServing = false;
  std::stop_source m_scanStop;
  TaskScope m_tasks;
};

}  // namespace vemo
