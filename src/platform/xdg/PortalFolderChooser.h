// The desktop's own way of choosing a folder, through its portal; where there is none, another
// chooser.
//
// Main thread only. Every answer of the portal is waited for without blocking. A portal that can't
// be reached, or doesn't show folders, leaves the question to the other chooser; a choice that ends
// in any way but a folder is one against it.
#pragma once

#include "base/MainThread.h"
#include "ports/FolderChooser.h"

namespace vemo {

class PortalFolderChooser : public FolderChooser {
 public:
  /// Both outlive it.
  PortalFolderChooser(MainThread& mainThread, FolderChooser& withoutPortal)
      : m_mainThread(mainThread), m_withoutPortal(withoutPortal) {}

  Task<std::optional<QString>> chooseFolder(FolderQuestion question, std::stop_token stop) override;

 private:
  MainThread& m_mainThread;
  FolderChooser& m_withoutPortal;
};

}  // namespace vemo
