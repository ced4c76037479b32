#pragma once

#include <string>

namespace orvane {

/// A number for people, with so many decimals. What rounds to zero has no sign.
std::string roundedText(double value, int decimals);

/// A share for people, such as "12.35%". What two decimals would show as nothing has four:
/// "0.0044%".
std::string percentText(double share);

}  // namespace orvane
