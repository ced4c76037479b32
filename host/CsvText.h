#pragma once

#include <string>

namespace orvane {

/// The shortest decimal text that reads back as the same double.
std::string csvNumber(double value);

/// A field of a CSV file, in quotes where it has to be.
std::string csvField(const std::string& text);

}  // namespace orvane
