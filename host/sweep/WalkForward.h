#pragma once

#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane {

/// A stretch of time, UTC milliseconds; its end is not part of it.
struct TimeSpan {
  int64 begin = 0, end = 0;
  friend bool operator==(const TimeSpan&, const TimeSpan&) = default;
};

/// One step of a walk: parameters are chosen by the first span and tried on the second, which
/// begins where the first one ends.
struct WalkWindow {
  TimeSpan inSample, outOfSample;
};

/// How a walk goes through the data.
struct WalkForward {
  int64 inSampleMs = 0, outOfSampleMs = 0, stepMs = 0;

  /// Reads "IN:OUT" or "IN:OUT:STEP", each such as 90d, 12h or 2w; a day has 24 hours. Without a
  /// step it is OUT, so that what is tried lies end to end; a shorter one would try some of it
  /// twice and is refused. Throws `InputError` that begins with
  /// `option`.
  static WalkForward parse(const std::string& given, const std::string& option);

  /// The windows of the data within `whole`, in order. The last one may be tried on less than the
  /// others. Throws `InputError` that begins with `option` if there is none, or more than
  /// 100,000.
  std::vector<WalkWindow> windows(const TimeSpan& whole, const std::string& option) const;
};

}  // namespace orvane
