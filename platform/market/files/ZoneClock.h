#pragma once

#include <QTimeZone>
#include <cstdint>
#include <string>

namespace orvane::detail {

/// Turns local times of one zone into UTC and back, fast for times that lie close together. Not
/// thread-safe.
class ZoneClock {
 public:
  /// An IANA name, or an offset such as "+08:00" or "UTC-05:00". `ok()` tells if there is such a
  /// zone.
  explicit ZoneClock(const std::string& name);

  bool ok() const { return ok_; }

  /// The name as a `QTimeZone` takes it.
  const std::string& name() const { return name_; }

  /// UTC milliseconds of a local time. A local time that the clocks skipped counts on from before
  /// the change. One that occurs twice is the first, unless that lies before `notBefore` and the
  /// second does not.
  std::int64_t toUtc(std::int64_t localMs, std::int64_t notBefore = INT64_MIN);

  /// Whether the last local time given to `toUtc` occurs twice, so that `notBefore` chose.
  bool wasTwice() const { return wasTwice_; }

  /// Local milliseconds of a UTC time.
  std::int64_t toLocal(std::int64_t utcMs);

 private:
  std::int64_t offsetAt(std::int64_t utcMs) const;

  std::string name_;
  QTimeZone zone_;
  bool fixed_ = false;
  bool ok_ = true;
  bool wasTwice_ = false;
  std::int64_t fixedOffset_ = 0;
  // The last day asked for, local and UTC, and its offset if that holds all day long.
  std::int64_t localDay_ = INT64_MIN;
  bool localUniform_ = false;
  std::int64_t localOffset_ = 0;
  std::int64_t utcDay_ = INT64_MIN;
  bool utcUniform_ = false;
  std::int64_t utcOffset_ = 0;
};

}  // namespace orvane::detail
