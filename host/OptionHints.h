#pragma once

#include <string>

namespace orvane {

/// What the reader of data files says of keys of a description, with the option that gives each on
/// the command line beside it: `"timeZone" in a description (--timezone) tells another zone`.
std::string withOptions(std::string message);

}  // namespace orvane
