#pragma once

#include <string>

namespace orvane {

/// The texts of items, joined by ",", for log lines.
template <typename Items, typename Text>
std::string joinedText(const Items& items, Text text) {
  std::string all;
  bool isFirst = true;
  for (const auto& item : items) {
    if (!isFirst) all += ',';
    isFirst = false;
    all += text(item);
  }
  return all;
}

}  // namespace orvane
