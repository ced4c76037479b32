#pragma once

#include <string>

#include "host/JsonInput.h"
#include "host/RunPlan.h"

namespace orvane {

/// Reads the key "grids" of a run's configuration into the options of the exchange. Throws
/// `InputError`.
void readGrids(JsonReader& reader, RunPlan& plan);

/// Gives each grid its account where the plan names none: that of the only runner. Throws
/// `InputError` that begins with `place` where a grid's account is not there.
void completeGrids(RunPlan& plan, const std::string& place);

}  // namespace orvane
