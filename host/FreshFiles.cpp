#include "host/FreshFiles.h"

#include <filesystem>

namespace orvane {

namespace fs = std::filesystem;

FreshFiles::FreshFiles(const std::vector<std::string>& paths) {
  std::error_code error;
  for (const std::string& path : paths)
    if (!path.empty() && fs::symlink_status(path, error).type() == fs::file_type::not_found)
      paths_.push_back(path);
}

FreshFiles::~FreshFiles() {
  std::error_code error;
  // A database may have left files of its own beside itself.
  for (const std::string& path : paths_)
    for (const char* tail : {"", "-journal", "-wal", "-shm"}) fs::remove(path + tail, error);
}

}  // namespace orvane
