#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/market/Series.h"
#include "platform/market/files/ColumnNames.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/TimeParser.h"

namespace orvane::detail {

/// Which column of a file holds what. Positions count from 0; -1: there is none.
struct ColumnMap {
  TimeColumns time;
  std::optional<bool> stampIsEnd;  ///< If the header's name of the time column tells.
  int code = -1;
  int market = -1;
  /// The rows say themselves what else would have to be found out or told: the zone, and of bars
  /// the period and the end of each. `orvane data convert` writes such files.
  bool isWhole = false;
  int period = -1;
  int timeZone = -1;

  // Bars. In a quote bar the four prices are the bid's.
  bool quoteBar = false;
  int open = -1;
  int high = -1;
  int low = -1;
  int close = -1;
  int askOpen = -1;
  int askHigh = -1;
  int askLow = -1;
  int askClose = -1;
  int volume = -1;    ///< The bid's size in a quote bar.
  int turnover = -1;  ///< The ask's size in a quote bar.
  int openInterest = -1;

  // Ticks: column and meaning.
  std::vector<std::pair<int, TickColumnId>> ticks;
};

/// The roles of a file's columns by its header, which must not be empty.
std::vector<NamedRole> rolesOfHeader(const std::vector<std::string>& header);

/// The roles of a file's columns by their number and contents; empty if they are of no known
/// shape. What was assumed is added to `notes`.
std::vector<NamedRole> rolesOfContents(const SampleRows& samples, bool bars,
                                       const NumberFormat& numbers,
                                       std::vector<std::string>& notes);

/// Whether the names of columns are those of ticks.
enum class TickLook {
  No,
  IfTimed,  ///< If the rows have times of day; bars of days may have such columns, too.
  Yes
};
TickLook looksLikeTicks(const std::vector<NamedRole>& roles);

/// Whether the columns of a file without a header hold ticks, and no bars that have some faults.
bool contentsAreTicks(const SampleRows& samples, const NumberFormat& numbers);

/// The first column whose fields are all moments with a date, or counted from 1970; -1: none is.
int momentColumn(const SampleRows& samples);

/// Turns roles into positions. Throws `DataFileError`, begun with `place`, if something needed is
/// missing.
ColumnMap bindBars(const std::string& place, const std::vector<NamedRole>& roles,
                   const std::vector<std::string>& names);
ColumnMap bindTicks(const std::string& place, const std::vector<NamedRole>& roles,
                    const std::vector<std::string>& names);

}  // namespace orvane::detail
