#pragma once

#include <cstdint>
#include <string>

#include "host/sweep/FigureList.h"

namespace orvane {

/// What a combination was run on.
enum class SweepSample : std::int32_t {
  Whole,        ///< All that is played, where there is no walk.
  InSample,     ///< What the parameters of a window are chosen by.
  OutOfSample,  ///< What the chosen ones are tried on.
};

/// As outputs name it.
const char* sampleName(SweepSample sample);

/// Which run of a sweep it is.
struct SweepKey {
  std::int32_t window = 0;  ///< From 1; 0 where there is no walk.
  SweepSample sample = SweepSample::Whole;
  std::uint64_t number = 0;  ///< Of the combination; outputs count from 1.
  friend auto operator<=>(const SweepKey&, const SweepKey&) = default;
};

/// The status of a run that ended the process in which it was. There are no figures of one.
inline constexpr char kCrashed[] = "Crashed";

/// What became of one combination. Texts are UTF-8.
struct SweepRow {
  SweepKey key;
  std::string status;  ///< As in a report, or `kCrashed`.
  std::string message;
  FigureValues figures;
  std::string digest;  ///< Empty where none was asked for.
  /// Whether it ended as an error before anything was played. Known of those that this call ran.
  bool isRefused = false;

  /// Whether its run ended as it should; others have no place in a ranking.
  bool isGood() const { return status == "Stopped" || status == "Finished"; }
  bool isCrashed() const { return status == kCrashed; }
};

}  // namespace orvane
