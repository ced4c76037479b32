#include "platform/core/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace orvane::detail {
namespace {

using FileKey = std::pair<dev_t, ino_t>;

/// The files that this process holds.
struct HeldFiles {
  std::mutex mutex;
  std::set<FileKey> files;
};

HeldFiles& held() {
  static HeldFiles* const list = new HeldFiles;  // Locks may be let go while the process ends.
  return *list;
}

[[noreturn]] void refuse(bool isFolder) {
  throw std::runtime_error(std::string("it is in use by another run; take another ") +
                           (isFolder ? "folder" : "file") + ", or wait for its end");
}

}  // namespace

FileLock::FileLock(const std::string& path) {
  HeldFiles& list = held();
  const std::lock_guard lock(list.mutex);
  struct stat its {};
  // Only to open and to close such a file would take away the locks that SQLite holds on it.
  const bool isThere = stat(path.c_str(), &its) == 0;
  const bool isFolder = isThere && S_ISDIR(its.st_mode);
  if (isThere && list.files.contains({its.st_dev, its.st_ino})) refuse(isFolder);
  const int flags = isFolder ? O_RDONLY | O_DIRECTORY : O_RDWR | O_CREAT | O_NONBLOCK;
  const int opened = open(path.c_str(), flags | O_CLOEXEC, 0644);
  if (opened < 0) return;
  if (flock(opened, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    close(opened);
    refuse(isFolder);
  }
  descriptor_ = opened;
  if (fstat(opened, &its) == 0) file_ = {its.st_dev, its.st_ino};
  list.files.insert(file_);
}

void FileLock::leaveToParent() {
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
}

FileLock::~FileLock() {
  if (descriptor_ < 0) return;
  HeldFiles& list = held();
  const std::lock_guard lock(list.mutex);
  list.files.erase(file_);
  close(descriptor_);
}

}  // namespace orvane::detail
