// Holds a folder against other processes of this program for as long as the object lives, and until
// the process ends, however it ends.
//
// Advisory, by flock(2). Where the file system knows no such locks the folder counts as held, and
// nobody is kept out. Any thread.
#pragma once

#include <QString>
#include <memory>

namespace vemo {

class FolderLock {
 public:
  enum class Kind { Shared, Exclusive };

  /// Nothing where another process holds the folder against that, or where there is no such folder.
  static std::shared_ptr<FolderLock> take(const QString& folder, Kind kind);

  /// Lets others hold it, too.
  void share();

  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  explicit FolderLock(int descriptor) : m_descriptor(descriptor) {}

  const int m_descriptor;
};

}  // namespace vemo
