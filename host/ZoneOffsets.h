#pragma once

#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane {

/// How far the clock of a time zone is ahead of UTC, as a table from 1900 to 2100. Immutable; any
/// thread may read it.
class ZoneOffsets {
 public:
  struct Span {
    int64 begin;     ///< UTC milliseconds. The first span's is the lowest time that there is.
    int64 offsetMs;  ///< From `begin` to the next span's.
  };

  /// The offsets of an IANA name such as "Asia/Shanghai", or of "UTC-05:00". What is no zone is
  /// taken for UTC.
  explicit ZoneOffsets(const std::string& name);

  /// A UTC time on the zone's clock, as milliseconds since 1970-01-01 00:00 there.
  int64 toLocal(int64 utcMs) const { return utcMs + spans_[spanOf(utcMs)].offsetMs; }

  /// The spans that a stretch of time lies in, at least one.
  std::vector<Span> spansOf(int64 fromUtcMs, int64 toUtcMs) const;

 private:
  std::size_t spanOf(int64 utcMs) const;

  std::vector<Span> spans_;  ///< Ascending.
};

}  // namespace orvane
