#pragma once

#include <memory>
#include <string>
#include <vector>

#include "shared/Types.h"

namespace orvane::detail {

/// Which edition of the zone database is installed, such as "2024a"; empty if it does not say.
std::string zoneDatabaseVersion();

/// The offsets of one time zone, as a table of its transitions from 1900 to 2100. Immutable; any
/// thread may read it.
class ZoneRules {
 public:
  /// The rules of an IANA name such as "Asia/Shanghai", or of a fixed offset such as
  /// "UTC-05:00". Null if there is no such zone. Made once for each name and kept for ever.
  static std::shared_ptr<const ZoneRules> find(const std::string& name);

  /// Milliseconds to add to a UTC time for the zone's calendar.
  int64 offsetMs(int64 utcMs) const;

  /// The local time of a UTC time, as milliseconds since 1970-01-01 00:00 local.
  int64 toLocal(int64 utcMs) const { return utcMs + offsetMs(utcMs); }

  /// The UTC time of a local one. A local time that a change of the clock skips gives the instant
  /// of the change, and one that comes twice gives the first.
  int64 toUtc(int64 localMs) const;

 private:
  struct Span {
    int64 begin;   ///< UTC.
    int64 offset;  ///< From `begin` to the next span's.
  };
  explicit ZoneRules(const std::string& name);

  std::vector<Span> spans_;  ///< At least one; the first begins at the lowest time.
};

}  // namespace orvane::detail
