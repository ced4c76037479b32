#pragma once

#include <string>

#include "host/RunSession.h"

namespace orvane {

/// Every fill of every runner: "trades.csv".
std::string tradesCsv(const RunOutcome& outcome);

/// Every point of every runner's equity curve: "equity.csv".
std::string equityCsv(const RunOutcome& outcome);

}  // namespace orvane
