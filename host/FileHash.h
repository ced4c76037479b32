#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// A file that a run read, as it was then.
struct FileHash {
  std::string file;  ///< As the user wrote it, UTF-8.
  std::uint64_t bytes = 0;
  std::string xxh3;  ///< XXH3-128 of its bytes as 32 hexadecimal digits.
};

/// Reads the files whole and hashes them, each once and in this order. What is no ordinary file,
/// such as a pipe that was read to its end already, or cannot be read is left out.
std::vector<FileHash> hashesOf(const std::vector<std::string>& files);

/// Those of the files that a list of names, separated by commas and blanks, has.
std::vector<FileHash> hashesIn(const std::vector<FileHash>& hashes, const std::string& names);

}  // namespace orvane
