#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/RunPlan.h"
#include "platform/market/Series.h"
#include "platform/market/files/DataFiles.h"

namespace orvane {

/// What a report says of one loaded series. Texts are UTF-8.
struct SeriesSummary {
  std::string code;
  bool isTicks = false;
  int64 periodMs = 0;     ///< Of bars.
  std::string frequency;  ///< Of bars, such as "5m".
  std::uint64_t records = 0;
  int64 firstTime = 0, lastTime = 0;  ///< UTC ms; of bars the begin of the first, end of the last.
  std::string timeZone;
  std::string origin;  ///< The files.
  std::vector<std::string> notes;
};

/// All market data of a run, read from its files.
struct DataSet {
  std::vector<LoadedBars> bars;
  std::vector<LoadedTicks> ticks;

  std::vector<SeriesSummary> summaries() const;
  /// The zone that all series have; "UTC" where they differ.
  std::string timeZone() const;
  /// The rows of all series: bars and ticks.
  std::uint64_t records() const;
  /// The same series over the same rows, without a copy of them. Nobody may write to them as long
  /// as somebody else reads them.
  DataSet shared() const;
};

/// Reads all inputs of a plan. Files that reduce to one code (and, for bars, one period) make one
/// series in time order. `progress` is told the file being read and the share of it.
/// Throws `DataFileError` or `InputError`.
DataSet loadDataSet(const RunPlan& plan,
                    const std::function<void(const std::string&, double)>& progress);

/// Reads files with `read`. A fault of a description is thrown again as `DataFileError` that begins
/// with the place where the user gave the key.
void withPlaces(const DescriptionPlaces& places, const std::function<void()>& read);

/// Whether an instrument of the plan tells the price tick of a code text (UTF-8).
bool hasPriceTick(const RunPlan& plan, const std::string& code);

}  // namespace orvane
