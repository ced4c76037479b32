#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// One value of the two-level environment of a run. The library stores it and does not interpret
/// `kind` or `text`.
struct EnvItem {
  std::string group;
  std::string key;
  std::int32_t kind = 0;
  std::string text;
};

}  // namespace orvane
