#include "host/FileHash.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

#include "host/Digest.h"

namespace orvane {
namespace {

constexpr std::size_t kBlockBytes = 1 << 20;

std::optional<FileHash> hashOf(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::vector<char> block(kBlockBytes);
  FileHash result{path, 0, {}};
  Digest digest;
  while (file) {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    const auto count = static_cast<std::size_t>(file.gcount());
    digest.putBytes(block.data(), count);
    result.bytes += count;
  }
  if (!file.eof()) return std::nullopt;
  result.xxh3 = digest.text();
  return result;
}

}  // namespace

std::vector<FileHash> hashesOf(const std::vector<std::string>& files) {
  std::vector<FileHash> result;
  for (const std::string& path : files) {
    const bool isThere = std::ranges::find(result, path, &FileHash::file) != result.end();
    if (isThere) continue;
    if (auto hash = hashOf(path)) result.push_back(std::move(*hash));
  }
  return result;
}

std::vector<FileHash> hashesIn(const std::vector<FileHash>& hashes, const std::string& names) {
  constexpr std::string_view kBetween = ", ";
  std::vector<FileHash> result;
  std::string_view rest = names;
  while (!rest.empty()) {
    // A name may itself have what separates names: the longest one that fits is meant.
    const FileHash* found = nullptr;
    for (const FileHash& hash : hashes) {
      const bool fits =
          rest.starts_with(hash.file) &&
          (rest.size() == hash.file.size() || rest.substr(hash.file.size()).starts_with(kBetween));
      if (fits && (found == nullptr || hash.file.size() > found->file.size())) found = &hash;
    }
    if (found != nullptr) result.push_back(*found);
    const std::size_t end =
        found != nullptr ? found->file.size() : std::min(rest.find(kBetween), rest.size());
    rest.remove_prefix(std::min(end + kBetween.size(), rest.size()));
  }
  return result;
}

}  // namespace orvane
