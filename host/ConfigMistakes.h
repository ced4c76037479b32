#pragma once

#include <string>

namespace orvane {

/// Refuses what was given as the configuration of a run, but is seen to be something else: a
/// strategy or a file of market data, for which there are options. Throws `InputError` that says
/// which.
void refuseWhatIsNoConfig(const std::string& path);

}  // namespace orvane
