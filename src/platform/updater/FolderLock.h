// Holds a folder against everybody else who takes such a lock, in this process and in others, for
// as long as the object lives, and until the process ends, however it ends.
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

  /// Nothing where somebody holds the folder against that, or where it can't be opened.
  static std::shared_ptr<FolderLock> take(const QString& folder, Kind kind);
  /// Waits for whoever holds it.
  static std::shared_ptr<FolderLock> await(const QString& folder);

  /// Lets others hold it, too.
  void share();

  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  explicit FolderLock(int descriptor) : m_descriptor(descriptor) {}
  static std::shared_ptr<FolderLock> lock(const QString& folder, int operation);

  const int m_descriptor;
};

}  // namespace vemo
