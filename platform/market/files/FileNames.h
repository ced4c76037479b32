#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvane::detail {

/// What the name of a data file says. Its words are separated by "_", "-", blanks, "." and "@".
struct FileNameFacts {
  std::string code;                 ///< Upper case; never empty.
  std::int64_t periodMs = 0;        ///< 0: it says nothing.
  std::optional<std::int64_t> day;  ///< Of the first date of 8 digits, or written YYYY-MM-DD.
};

FileNameFacts factsOfFileName(const std::string& path);

}  // namespace orvane::detail
