#include "host/ReportFolder.h"

#include <fmt/core.h>

#include <stdexcept>

#include "host/InputError.h"
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

}  // namespace

ReportFolder::ReportFolder(const std::string& path) : lock_(lockOf(path)) {}

}  // namespace orvane
