#pragma once

#include "host/JsonInput.h"
#include "host/RunPlan.h"

namespace orvane {

/// Reads the keys "accounts", "capital", "trade" and "store" of a run's configuration. Throws
/// `InputError`.
void readTrade(JsonReader& reader, const std::string& configPath, RunPlan& plan);

/// Reads the object "limits" of a runner. Throws `InputError`.
RiskLimits readLimits(JsonReader& runner);

/// Gives each runner its account and order source where the plan names none, and makes the
/// accounts that are missing. Throws `InputError` where a runner or the connection script names an
/// account that is not there; `place` begins the message.
void completeTrade(RunPlan& plan, const std::string& place);

/// The options of the exchange for a plan; times are read in `timeZone`. Throws `InputError`.
TradeOptions tradeOptions(const RunPlan& plan, const std::string& timeZone);

}  // namespace orvane
