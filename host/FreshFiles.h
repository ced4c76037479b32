#pragma once

#include <string>
#include <vector>

namespace orvane {

/// Takes databases away again that a run made before it was refused. Make it before they are
/// opened, so that it goes after they were closed.
class FreshFiles {
 public:
  /// Paths are UTF-8; empty ones count for nothing.
  explicit FreshFiles(const std::vector<std::string>& paths);
  ~FreshFiles();
  FreshFiles(const FreshFiles&) = delete;
  FreshFiles& operator=(const FreshFiles&) = delete;

  /// The run is not refused any more: everything stays.
  void keep() { paths_.clear(); }

 private:
  std::vector<std::string> paths_;  ///< Those that were not there.
};

}  // namespace orvane
