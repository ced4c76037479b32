#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/market/Series.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {

/// The ticks of one code in one file, ascending.
struct TickPart {
  std::string code;  ///< Empty: the file has no column for it.
  std::string path;
  std::string timeZone;  ///< If the rows tell it.
  std::vector<TickColumnId> columns;
  Rows<int64> times;
  Rows<std::int32_t> tradingDays;
  Rows<double> cells;
};

/// Reads all ticks of an open file.
std::vector<TickPart> readTicks(Table& table, const Description& description,
                                const DecimalStep& priceTick, const ReadPace& pace,
                                const std::function<void(double)>& progress,
                                const FaultTaker& onFault);

/// Appends a later part to a series, which gains the columns that it lacked.
void appendTicks(TickSeries& series, TickPart part);

}  // namespace orvane::detail
