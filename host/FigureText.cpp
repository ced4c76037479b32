#include "host/FigureText.h"

#include <fmt/core.h>

#include <cmath>

namespace orvane {

std::string roundedText(double value, int decimals) {
  std::string text = fmt::format("{:.{}f}", value, decimals);
  if (text.starts_with('-') && text.find_first_of("123456789in") == std::string::npos)
    text.erase(0, 1);
  return text;
}

std::string percentText(double share) {
  // Between them two decimals read as nothing, and four do not.
  const bool isSmall = std::abs(share) >= 0.0000005 && std::abs(share) < 0.00005;
  return roundedText(share * 100, isSmall ? 4 : 2) + "%";
}

}  // namespace orvane
