#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

#include "shared/Export.h"

namespace orvane::detail {

/// Keeps a file, or a folder, for one owner while it lives: a second lock of the same one, in this
/// process or another, is refused. It binds those who take it and nobody else, so any tool can
/// still read the file. It goes with the process, however that ends, and leaves nothing behind.
///
/// Make it before anything opens the file, and let it go after everything has closed it: closing
/// the lock's own descriptor would take away the locks that SQLite holds in this process.
class ORVANE_API FileLock {
 public:
  /// `path` is UTF-8. A file that is not there is made; where it cannot be opened nothing is held,
  /// and whoever opens it next will say why. Throws `std::runtime_error`, which does not name the
  /// path, if another owner has it.
  explicit FileLock(const std::string& path);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// In a process that was forked from the owner's: lets go of its share of the lock, or it would
  /// keep the file for an owner that is no more. The owner still has it. Close nothing of the file
  /// afterwards, and do not destroy the lock.
  void leaveToParent();

 private:
  int descriptor_ = -1;
  std::pair<dev_t, ino_t> file_;  ///< What stands in the list of this process.
};

}  // namespace orvane::detail
