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
  const double percent = share * 100;
  const bool isSmall = std::abs(percent) >= 0.00005 && std::abs(percent) < 0.005;
  return roundedText(percent, isSmall ? 4 : 2) + "%";
}

}  // namespace orvane
