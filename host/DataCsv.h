#pragma once

#include <string>

#include "host/DataSet.h"

namespace orvane {

/// Writes a data set of one series as CSV that can be read as market data again: times in UTC,
/// numbers with as many digits as they need. The file appears whole or not at all. Throws
/// `InputError`, also for what does not fit into one table.
void writeCsv(const std::string& path, const DataSet& data);

}  // namespace orvane
