#include "platform/trade/SessionRule.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>

#include "platform/core/Periods.h"

namespace orvane::detail {
namespace {

/// "HH:MM" as milliseconds since midnight; -1 if it is none.
int64 timeOfDay(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return -1;
  int hour = -1;
  int minute = -1;
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const auto hours = std::from_chars(begin, begin + colon, hour);
  const auto minutes = std::from_chars(begin + colon + 1, end, minute);
  const bool isWhole = hours.ec == std::errc() && hours.ptr == begin + colon &&
                       minutes.ec == std::errc() && minutes.ptr == end;
  if (!isWhole || hour < 0 || hour > 24 || minute < 0 || minute > 59) return -1;
  return hour * 60 * kMinuteMs + minute * kMinuteMs;
}

std::string_view withoutBlanks(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

}  // namespace

SessionRule::SessionRule(const std::string& sessions, const std::string& timeZone)
    : zone_(ZoneRules::find(timeZone.empty() ? "UTC" : timeZone)) {
  if (zone_ == nullptr)
    throw std::invalid_argument("timeZone: \"" + timeZone + "\" is not a time zone");
  std::string_view rest = withoutBlanks(sessions);
  while (!rest.empty()) {
    const auto comma = rest.find(',');
    const std::string_view one = withoutBlanks(rest.substr(0, comma));
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    const auto dash = one.find('-');
    const int64 begin =
        dash == std::string_view::npos ? -1 : timeOfDay(withoutBlanks(one.substr(0, dash)));
    const int64 end =
        dash == std::string_view::npos ? -1 : timeOfDay(withoutBlanks(one.substr(dash + 1)));
    if (begin < 0 || end < 0)
      throw std::invalid_argument("sessions: \"" + sessions +
                                  "\" is not a list such as 09:30-11:30,13:00-15:00");
    sessions_.push_back({begin % kDayMs, end});
  }
}

bool SessionRule::contains(int64 utcMs) const {
  if (sessions_.empty()) return true;
  const int64 local = zone_->toLocal(utcMs);
  const int64 time = ((local % kDayMs) + kDayMs) % kDayMs;
  return std::ranges::any_of(sessions_, [time](const Session& session) {
    if (session.begin < session.end) return session.begin <= time && time < session.end;
    return session.begin <= time || time < session.end;
  });
}

}  // namespace orvane::detail
