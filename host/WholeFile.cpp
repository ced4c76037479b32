#include "host/WholeFile.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "host/InputError.h"
#include "host/OutputFile.h"
#include "host/WriteError.h"

namespace orvane {

namespace fs = std::filesystem;

std::string whyNoFile(const std::string& path) {
  std::error_code error;
  switch (fs::status(path, error).type()) {
    case fs::file_type::regular:
      return {};
    case fs::file_type::directory:
      return "is a folder";
    case fs::file_type::not_found:
    case fs::file_type::none:  // Links that go round, or what may not be looked at.
      return fs::is_symlink(path, error) ? "is a link that leads nowhere" : "";
    default:
      return "is no ordinary file";
  }
}

std::string behindLinks(const std::string& path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  const fs::path target = fs::weakly_canonical(path, error);
  return error ? path : target.string();
}

std::string writeWholeFile(const std::string& path, const QByteArray& text) {
  try {
    OutputFile file(path);
    file.write({text.data(), static_cast<std::size_t>(text.size())});
    file.finish();
    file.keep();
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

void checkFolder(const std::string& folder, const std::string& option) {
  std::error_code error;
  fs::path there = fs::absolute(folder, error).lexically_normal();
  if (fs::exists(there, error) && !fs::is_directory(there, error))
    throw InputError(fmt::format("{}: \"{}\" is not a folder", option, folder));
  while (!fs::exists(there, error) && there.has_relative_path()) there = there.parent_path();
  if (fs::is_directory(there, error) && access(there.c_str(), W_OK | X_OK) == 0) return;
  const int reason = fs::is_directory(there, error) ? errno : ENOTDIR;
  throw InputError(
      fmt::format("{}: the folder \"{}\" cannot be written: {}", option, folder, reasonOf(reason)));
}

void makeFolder(const std::string& folder, const std::string& option) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error || std::filesystem::is_directory(folder)) return;
  failToWrite(
      fmt::format("{}: the folder \"{}\" cannot be made: {}", option, folder, error.message()),
      error.value());
}

}  // namespace orvane
