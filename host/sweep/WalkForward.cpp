#include "host/sweep/WalkForward.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>

#include "host/InputError.h"
#include "host/TimeArgument.h"

namespace orvane {
namespace {

constexpr std::size_t kMostWindows = 100'000;
constexpr int64 kMostMs = int64{100} * 366 * 86'400'000;

/// 0 if it is none.
int64 durationOf(const std::string& text) {
  int64 number = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  if (parsed.ec != std::errc() || end - parsed.ptr != 1 || number <= 0) return 0;
  int64 unit = 0;
  switch (*parsed.ptr) {
    case 's':
      unit = 1'000;
      break;
    case 'm':
      unit = 60'000;
      break;
    case 'h':
      unit = 3'600'000;
      break;
    case 'd':
      unit = 86'400'000;
      break;
    case 'w':
      unit = 7 * 86'400'000;
      break;
    default:
      return 0;
  }
  return number > kMostMs / unit ? 0 : number * unit;
}

}  // namespace

WalkForward WalkForward::parse(const std::string& given, const std::string& option) {
  std::vector<int64> parts;
  for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
    end = given.find(':', begin);
    const std::string part = given.substr(begin, end - begin);
    parts.push_back(durationOf(part));
    if (parts.back() == 0)
      throw InputError(
          fmt::format("{}: \"{}\" in \"{}\" is not a duration such as 90d, 12h or 30m "
                      "of at most 100 years; the units are s, m for minutes, h, d and w",
                      option, part, given));
  }
  if (parts.size() != 2 && parts.size() != 3)
    throw InputError(
        fmt::format("{}: \"{}\" is not IN:OUT or IN:OUT:STEP, such as 90d:30d", option, given));
  if (parts.size() == 3 && parts[2] < parts[1])
    throw InputError(fmt::format(
        "{}: the step in \"{}\" is shorter than the out-of-sample span, so that windows "
        "would be tried on the same data; make it at least as long",
        option, given));
  return {parts[0], parts[1], parts.size() == 3 ? parts[2] : parts[1]};
}

std::vector<WalkWindow> WalkForward::windows(const TimeSpan& whole,
                                             const std::string& option) const {
  std::vector<WalkWindow> result;
  // What happens at the last instant alone, such as the end of the last bar, is no window.
  const int64 last = whole.end - 1;
  for (int64 begin = whole.begin; begin + inSampleMs < last; begin += stepMs) {
    const int64 middle = begin + inSampleMs, end = middle + outOfSampleMs;
    result.push_back({{begin, middle}, {middle, end >= last ? whole.end : end}});
    if (result.size() > kMostWindows)
      throw InputError(
          fmt::format("{}: there are more than {} windows from {} to {}; give longer spans, and "
                      "months in days, "
                      "since m stands for minutes",
                      option, kMostWindows, isoTime(whole.begin), isoTime(whole.end)));
    if (result.back().outOfSample.end == whole.end) break;
  }
  if (result.empty())
    throw InputError(
        fmt::format("{}: what is to be played, {} to {}, has no room for the first "
                    "in-sample window and anything after it; give shorter windows or more data",
                    option, isoTime(whole.begin), isoTime(whole.end)));
  return result;
}

}  // namespace orvane
