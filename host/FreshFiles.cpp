#include "host/FreshFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

namespace orvane {

namespace fs = std::filesystem;

namespace {

/// Whether another run made the file its own meanwhile; it then stays.
bool isInUse(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return false;
  const bool isHeld = flock(file, LOCK_EX | LOCK_NB) != 0;
  close(file);
  return isHeld;
}

}  // namespace

FreshFiles::FreshFiles(const std::vector<std::string>& paths, const std::string& folder) {
  std::error_code error;
  for (const std::string& path : paths)
    if (!path.empty() && fs::symlink_status(path, error).type() == fs::file_type::not_found)
      paths_.push_back(path);
  if (folder.empty()) return;
  fs::path inner = fs::absolute(folder, error).lexically_normal();
  if (!inner.has_filename()) inner = inner.parent_path();
  // A link that leads nowhere is somebody's.
  const auto isThere = [&] {
    return fs::symlink_status(inner, error).type() != fs::file_type::not_found;
  };
  for (; inner.has_relative_path() && !isThere(); inner = inner.parent_path())
    folders_.push_back(inner.string());
}

FreshFiles::~FreshFiles() {
  if (isKept_) return;
  std::error_code error;
  // A database may have left files of its own beside itself.
  std::erase_if(paths_, isInUse);
  for (const std::string& path : paths_)
    for (const char* tail : {"", "-journal", "-wal", "-shm"}) fs::remove(path + tail, error);
  for (const std::string& folder : folders_)
    if (!fs::remove(folder, error)) return;  // Somebody has put something into it.
}

}  // namespace orvane
