#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::detail {

/// A key that an object of JSON has twice: of the values the parser takes the last, silently.
struct KeyGivenTwice {
  std::string key;         ///< As it stands in the text.
  std::size_t offset = 0;  ///< Of the second.
};

/// The end of the string that begins at `at`, which is its quotation mark: one past the other one.
inline std::size_t endOfJsonString(std::string_view json, std::size_t at) {
  for (++at; at < json.size() && json[at] != '"'; ++at)
    if (json[at] == '\\') ++at;
  return at + 1;
}

/// The first such key of a text that the parser has found to be JSON.
inline std::optional<KeyGivenTwice> keyGivenTwice(std::string_view json) {
  // The keys of each object that is open; a list has a place, too, and never a key.
  std::vector<std::set<std::string_view>> open;
  for (std::size_t at = 0; at < json.size();) {
    const char sign = json[at];
    if (sign == '{' || sign == '[') open.emplace_back();
    if ((sign == '}' || sign == ']') && !open.empty()) open.pop_back();
    if (sign != '"') {
      ++at;
      continue;
    }
    const std::size_t end = endOfJsonString(json, at);
    const std::size_t next = json.find_first_not_of(" \t\r\n", end);
    if (next != json.npos && json[next] == ':' && !open.empty()) {
      const std::string_view key = json.substr(at + 1, end - at - 2);
      if (!open.back().insert(key).second) return KeyGivenTwice{std::string(key), at};
    }
    at = end;
  }
  return std::nullopt;
}

}  // namespace orvane::detail
