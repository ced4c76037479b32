#include "services/Common/Timestamp.h"

#include <chrono>

#include "services/Common/StringHelper.h"
#include "services/IPlatform.h"

namespace orvane {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::milliseconds;
using std::chrono::sys_time;

sys_time<milliseconds> localTime(int64 utcMs, OVTimeZone zone) {
  const int64 offset = zone == OVTimeZone::Utc ? 0 : installedPlatform().zoneOffsetMs(zone, utcMs);
  return sys_time<milliseconds>(milliseconds(utcMs + offset));
}

std::chrono::year_month_day dateOf(sys_time<milliseconds> local) {
  return std::chrono::year_month_day(floor<days>(local));
}

std::chrono::hh_mm_ss<milliseconds> timeOf(sys_time<milliseconds> local) {
  return std::chrono::hh_mm_ss<milliseconds>(local - floor<days>(local));
}

}  // namespace

Timestamp Timestamp::now(OVTimeZone zone) { return {installedPlatform().nowUtcMs(), zone}; }

Timestamp Timestamp::sysNow(OVTimeZone zone) { return {installedPlatform().sysNowUtcMs(), zone}; }

std::string Timestamp::toDateTimeString() const {
  const auto local = localTime(utcMs_, zone_);
  const auto date = dateOf(local);
  const auto time = timeOf(local);
  return StringHelper::FormatString(
      "%04d-%02u-%02u %02d:%02d:%02d.%03d", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
}

void Timestamp::setTicksSinceMidnight(int64 ms) {
  const auto midnight = floor<days>(localTime(utcMs_, zone_));
  const int64 wanted = sys_time<milliseconds>(midnight).time_since_epoch().count() + ms;
  // The offset that holds at the wanted time may differ from the present one where the zone's
  // clock is set forward or back on that day.
  const int64 guess = wanted - (localTime(utcMs_, zone_).time_since_epoch().count() - utcMs_);
  utcMs_ = wanted - (localTime(guess, zone_).time_since_epoch().count() - guess);
}

int Timestamp::date() const {
  const auto date = dateOf(localTime(utcMs_, zone_));
  return static_cast<int>(date.year()) * 10000 +
         static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
         static_cast<int>(static_cast<unsigned>(date.day()));
}

int Timestamp::time() const {
  const auto time = timeOf(localTime(utcMs_, zone_));
  return static_cast<int>(
      ((time.hours().count() * 100 + time.minutes().count()) * 100 + time.seconds().count()) *
          1000 +
      time.subseconds().count());
}

bool isTimeEnabled() { return installedPlatform().isTimeEnabled(); }

}  // namespace orvane
