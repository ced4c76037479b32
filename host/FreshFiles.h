#pragma once

#include <string>
#include <vector>

namespace orvane {

/// Takes databases away again that a run made before it was refused, and folders that are empty
/// then. Make it before they are opened, so that it goes after they were closed.
class FreshFiles {
 public:
  /// Paths are UTF-8; empty ones count for nothing. Of `folder` and those above it, what is not
  /// there yet.
  explicit FreshFiles(const std::vector<std::string>& paths, const std::string& folder = {});
  ~FreshFiles();
  FreshFiles(const FreshFiles&) = delete;
  FreshFiles& operator=(const FreshFiles&) = delete;

  /// The run has begun: everything stays, however it ends.
  void keep() { isKept_ = true; }
  /// It came out only then that the run is refused: everything goes after all.
  void takeAway() { isKept_ = false; }

 private:
  bool isKept_ = false;
  std::vector<std::string> paths_;    ///< Those that were not there.
  std::vector<std::string> folders_;  ///< The same, the innermost first.
};

}  // namespace orvane
