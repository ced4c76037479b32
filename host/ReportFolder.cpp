#include "host/ReportFolder.h"

#include <fmt/core.h>

#include <filesystem>
#include <stdexcept>
#include <vector>

#include "host/InputError.h"
#include "host/Report.h"
#include "host/WholeFile.h"

namespace orvane {
namespace {

detail::FileLock lockOf(const std::string& path) {
  makeFolder(path, "--report");
  try {
    return detail::FileLock(path);
  } catch (const std::runtime_error& error) {
    throw InputError(fmt::format("--report: \"{}\": {}", path, error.what()));
  }
}

/// What a run that was killed while it wrote left there; nobody else is at it.
void removeLeftOvers(const std::string& folder) {
  namespace fs = std::filesystem;
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
    for (const char* name : kReportFiles)
      if (at->path().filename().string().starts_with(std::string(name) + ".new-"))
        found.push_back(at->path());
  for (const fs::path& path : found) fs::remove(path, error);
}

}  // namespace

ReportFolder::ReportFolder(const std::string& path) : lock_(lockOf(path)) { removeLeftOvers(path); }

}  // namespace orvane
