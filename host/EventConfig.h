#pragma once

#include <string>
#include <vector>

#include "host/JsonInput.h"
#include "host/RunPlan.h"

namespace orvane {

/// Reads the key "events" of a configuration: the name of a script's file, or the script itself.
/// Throws `InputError`.
void readEvents(JsonReader& reader, const std::string& configPath, RunPlan& plan);

/// The events of a script's file, a JSON array. Throws `InputError`.
std::vector<EventPlan> eventsOfFile(const std::string& path);

/// What a platform is told of them. Times without an offset are read in `timeZone`. Throws
/// `InputError`.
EventOptions eventOptions(const RunPlan& plan, const std::string& timeZone);

}  // namespace orvane
