#include "platform/core/Periods.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "shared/CodeTables.h"

namespace orvane::detail {
namespace {

constexpr std::pair<const char*, int64> kSuffixes[] = {
    {"ms", 1},     {"s", kSecondMs}, {"m", kMinuteMs}, {"min", kMinuteMs}, {"h", kHourMs},
    {"d", kDayMs}, {"w", kWeekMs},   {"M", kMonthMs},  {"mon", kMonthMs},  {"y", kYearMs},
};

constexpr std::pair<int64, ITimeType> kUnits[] = {
    {kYearMs, ITimeType::Year},     {kMonthMs, ITimeType::Month}, {kWeekMs, ITimeType::Week},
    {kDayMs, ITimeType::Day},       {kHourMs, ITimeType::Hour},   {kMinuteMs, ITimeType::Minute},
    {kSecondMs, ITimeType::Second}, {500, ITimeType::HalfSecond},
};

constexpr std::size_t kMostDigits = 6;

}  // namespace

ResultStatus statusWith(int code, const std::string& detail) {
  return {code, std::string(statusMessage(code)) + " " + detail};
}

ResultStatus parseFrequency(const std::string& text, int64& term, bool& extraFlag) {
  if (text == "tick") {
    term = 0;
    extraFlag = true;
    return {};
  }
  std::size_t digits = 0;
  int64 count = 0;
  while (digits < text.size() && digits <= kMostDigits && text[digits] >= '0' &&
         text[digits] <= '9')
    count = count * 10 + (text[digits++] - '0');
  const std::string suffix = text.substr(digits);
  const auto* unit = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                  [&](const auto& entry) { return suffix == entry.first; });
  // Half seconds are the finest unit that a request can carry.
  if (digits == 0 || digits > kMostDigits || count == 0 || unit == std::end(kSuffixes) ||
      count * unit->second % 500 != 0)
    return statusWith(17, text);
  term = count * unit->second;
  extraFlag = false;
  return {};
}

ITimeType timeTypeOfTerm(int64 term) {
  for (const auto& [ms, type] : kUnits)
    if (term % ms == 0) return type;
  return ITimeType::Day;
}

int64 unitMs(ITimeType type) {
  for (const auto& [ms, unit] : kUnits)
    if (unit == type) return ms;
  return 0;
}

IMDQuery queryOfRange(const OVDataRange& range) {
  IMDQuery query;
  query.code = range.code;
  query.flags = static_cast<std::int32_t>(range.flags);
  query.beginTime = range.beginTime;
  query.count = kNoLimit;
  query.endTime = range.mode == 2 || range.endTime <= 0 ? kUnsetTime : range.endTime;
  if (range.mode == 1) {
    query.count = static_cast<std::int32_t>(
        std::clamp<int64>(range.beginTime, 1, std::numeric_limits<std::int32_t>::max()));
    query.beginTime = kUnsetTime;
  }
  return query;
}

}  // namespace orvane::detail
