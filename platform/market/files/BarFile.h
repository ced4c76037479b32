#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/market/Rows.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/StampDistances.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {

/// The bars of one code in one file, ascending. Until `finishBars` a bar's begin time is its stamp
/// (UTC milliseconds), its end time is the day of its date as it was written (days since 1970),
/// and its trading day is 0 unless a column gives it.
struct BarPart {
  std::string code;  ///< Empty: the file has no column for it.
  std::string path;
  Rows<IKLine> bars;
  StampDistances distances;        ///< Of `bars`.
  std::int64_t hintMs = 0;         ///< The period that the file's name tells.
  std::optional<bool> stampIsEnd;  ///< If the header tells.
  bool datesOnly = true;           ///< No row has a time of day.
  bool midnights = true;           ///< No row has a time of day but 0.
  /// Of a file whose rows say it themselves: a bar's end time is then the true one.
  std::string timeZone;
  std::int64_t periodMs = 0;
};

/// Reads all bars of an open file.
std::vector<BarPart> readBars(Table& table, const Description& description,
                              const DecimalStep& priceTick, const ReadPace& pace,
                              const std::function<void(double)>& progress,
                              const FaultTaker& onFault);

/// Makes one series of the parts of one code, whose rows tell their ends, periods and zone.
Rows<IKLine> finishWholeBars(std::vector<BarPart>& parts, const ZoneClock& zone,
                             std::int64_t& periodMs);

/// Makes one series of the parts of one code, which are in time order: finds the period, and sets
/// the times and trading days, on up to `threads` threads.
Rows<IKLine> finishBars(std::vector<BarPart>& parts, const Description& description,
                        const ZoneClock& zone, int threads, std::int64_t& periodMs,
                        std::vector<std::string>& notes);

}  // namespace orvane::detail
