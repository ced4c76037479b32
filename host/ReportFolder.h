#pragma once

#include <string>

#include "platform/core/FileLock.h"

namespace orvane {

/// The folder of a run's report, kept from other runs while it lives: the files of two would be
/// mixed.
class ReportFolder {
 public:
  /// Makes the folder if need be. Throws `InputError` if it cannot be made or another run has it.
  explicit ReportFolder(const std::string& path);

 private:
  detail::FileLock lock_;
};

}  // namespace orvane
