#include "host/FileRoles.h"

#include <fmt/core.h>

#include <filesystem>

#include "host/InputError.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

bool isDevice(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error) && !fs::is_regular_file(path, error);
}

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code error;
  if (fs::equivalent(one, other, error) && !error) return true;
  const fs::path first = fs::weakly_canonical(fs::absolute(one, error), error);
  const fs::path second = fs::weakly_canonical(fs::absolute(other, error), error);
  return !error && first == second;
}

void checkPair(const FileRole& written, const FileRole& other) {
  if (written.path.empty() || other.path.empty() || isDevice(written.path)) return;
  if (!isSameFile(written.path, other.path)) return;
  throw InputError(fmt::format("{}: \"{}\" is the file of {} too; each needs one of its own",
                               written.role, written.path, other.role));
}

}  // namespace

void checkFileRoles(const std::vector<FileRole>& written, const std::vector<FileRole>& read) {
  for (std::size_t i = 0; i < written.size(); ++i) {
    for (std::size_t k = i + 1; k < written.size(); ++k) checkPair(written[i], written[k]);
    for (const FileRole& other : read) checkPair(written[i], other);
  }
}

}  // namespace orvane
