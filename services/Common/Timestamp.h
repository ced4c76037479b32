#pragma once

#include <string>

#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/Types.h"

namespace orvane {

/// A point in time, to the millisecond, with the zone that its calendar fields are read in.
/// A value type.
class ORVANE_API Timestamp {
 public:
  /// The epoch, in the platform's zone.
  Timestamp() = default;
  Timestamp(int64 utcMs, OVTimeZone zone) : utcMs_(utcMs), zone_(zone) {}
  Timestamp(int64 utcMs, int zone) : Timestamp(utcMs, static_cast<OVTimeZone>(zone)) {}

  /// The present by the platform's clock: the simulated time in playback.
  static Timestamp now(OVTimeZone zone);
  static Timestamp now(int zone) { return now(static_cast<OVTimeZone>(zone)); }

  /// The present by the wall clock, always.
  static Timestamp sysNow(OVTimeZone zone);
  static Timestamp sysNow(int zone) { return sysNow(static_cast<OVTimeZone>(zone)); }

  /// "YYYY-MM-DD HH:MM:SS.mmm" in the stamp's zone.
  std::string toDateTimeString() const;

  /// Milliseconds since 1970-01-01 UTC. The two names are one operation.
  int64 toUTCMilisecsinceEponch() const { return utcMs_; }
  int64 toUtcMsEponch() const { return utcMs_; }

  /// Sets the time of day in the stamp's zone to this many milliseconds after midnight and keeps
  /// the date.
  void setTicksSinceMidnight(int64 ms);

  /// YYYYMMDD in the stamp's zone.
  int date() const;

  /// HHMMSSmmm in the stamp's zone: a division by 1000 leaves HHMMSS.
  int time() const;

  /// The difference in milliseconds.
  friend int64 operator-(const Timestamp& a, const Timestamp& b) { return a.utcMs_ - b.utcMs_; }

 private:
  int64 utcMs_ = 0;
  OVTimeZone zone_ = OVTimeZone::Platform;
};

/// Whether log lines begin with the date and time; the installed platform says so.
ORVANE_API bool isTimeEnabled();

}  // namespace orvane
