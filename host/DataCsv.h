#pragma once

#include <string>

#include "host/DataSet.h"

namespace orvane {

/// Writes a data set of one series as CSV whose rows tell everything, so that it is read as the
/// same records again without a word on how: times in UTC, trading day, code, period and zone,
/// numbers with as many digits as they need. It is read again before it gets its name. The file
/// appears whole or not at all. Throws `InputError`, also for what does not come back the same.
void writeCsv(const std::string& path, const DataSet& data);

}  // namespace orvane
