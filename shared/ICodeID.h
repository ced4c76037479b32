#pragma once

#include <compare>
#include <string>

#include "shared/Types.h"

namespace orvane {

/// One instrument. A value type whose whole identity is `id`: ordering and equality look at
/// nothing else, so two records with one `id` and different texts are one code.
struct ICodeID {
  int64 id = 0;
  std::int32_t kind = -1;    ///< Carried.
  std::int32_t market = -1;  ///< Key of the market names of `gBaseInformationMap`.
  std::string code;          ///< The instrument's text, GBK.

  friend bool operator==(const ICodeID& a, const ICodeID& b) { return a.id == b.id; }
  friend std::strong_ordering operator<=>(const ICodeID& a, const ICodeID& b) {
    return a.id <=> b.id;
  }
};

/// One category of codes, as `CodePropertyUtils::getCategoryID` fills it.
struct ICategoryID {
  std::int32_t first = -1;
  std::string second;
  std::string third;
};

}  // namespace orvane
