#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace orvane::bench {

/// A random walk of minute bars as text, the same each time, made once and gone with the process.
class WalkFile {
 public:
  static constexpr std::size_t kRows = 1'000'000;

  static const std::string& path();
  /// Where its binary twin belongs, which goes with it.
  static std::string cachePath() { return path() + ".ovb"; }

 private:
  WalkFile();
  ~WalkFile();

  std::filesystem::path folder_;
  std::string path_;
};

}  // namespace orvane::bench
