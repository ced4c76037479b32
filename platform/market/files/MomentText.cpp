#include "platform/market/files/MomentText.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>

#include "platform/market/files/CsvRows.h"

namespace orvane::detail {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool allDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// At most nine digits.
int number(std::string_view digits) {
  int value = 0;
  for (const char c : digits) value = value * 10 + (c - '0');
  return value;
}

bool civil(int year, int month, int day, std::int64_t& out) {
  using namespace std::chrono;
  if (year < 1800 || year > 2200 || month < 1 || day < 1) return false;
  const year_month_day date{std::chrono::year(year),
                            std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) return false;
  out = sys_days(date).time_since_epoch().count();
  return true;
}

/// 1 to 12, or 0.
int monthOfName(std::string_view name) {
  static constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
  static constexpr std::string_view kFull[] = {"january",   "february", "march",    "april",
                                               "may",       "june",     "july",     "august",
                                               "september", "october",  "november", "december"};
  if (name.size() < 3 || name.size() > 9) return 0;
  char text[9];
  std::transform(name.begin(), name.end(), text, lower);
  const std::string_view small(text, name.size());
  for (int month = 1; month <= 12; ++month) {
    const std::string_view full = kFull[month - 1];
    if (small == kMonths.substr(static_cast<std::size_t>(month - 1) * 3, 3) || small == full ||
        (small == "sept" && month == 9))
      return month;
  }
  return 0;
}

int fullYear(std::string_view digits) {
  const int value = number(digits);
  if (digits.size() == 2) return value < 70 ? 2000 + value : 1900 + value;
  return digits.size() == 4 ? value : 0;
}

/// The words of a date: runs of digits or of letters. Chinese marks of year, month and day
/// separate like punctuation.
int takeWords(std::string_view text, std::string_view (&words)[3]) {
  int count = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t begin = at;
    if (isDigit(text[at])) {
      while (at < text.size() && isDigit(text[at])) ++at;
    } else if (isLetter(text[at])) {
      while (at < text.size() && isLetter(text[at])) ++at;
    } else {
      const std::string_view mark = text.substr(at, 3);
      const bool chinese = mark == "年" || mark == "月" || mark == "日";
      if (!chinese && std::string_view("-/., ").find(text[at]) == std::string_view::npos) return -1;
      at += chinese ? 3 : 1;
      continue;
    }
    if (count == 3 || at - begin > 9) return -1;
    words[count++] = text.substr(begin, at - begin);
  }
  return count;
}

DateResult good(bool isGood) { return isGood ? DateResult::Good : DateResult::Bad; }

}  // namespace

bool wholeNumber(std::string_view text, std::int64_t& out) {
  if (text.empty() || text.size() > 18 || !allDigits(text)) {
    if (text.size() != 19 || !allDigits(text) || text.front() > '8') return false;
  }
  std::int64_t value = 0;
  for (const char c : text) value = value * 10 + (c - '0');
  out = value;
  return true;
}

bool dayOfNumber(std::int64_t yyyymmdd, std::int64_t& day) {
  if (yyyymmdd < 18'000'101 || yyyymmdd > 22'001'231) return false;
  const int value = static_cast<int>(yyyymmdd);
  return civil(value / 10000, value / 100 % 100, value % 100, day);
}

std::int32_t numberOfDay(std::int64_t day) {
  using namespace std::chrono;
  const year_month_day date{sys_days(days(day))};
  return int(date.year()) * 10000 + static_cast<int>(unsigned(date.month())) * 100 +
         static_cast<int>(unsigned(date.day()));
}

DateResult parseDate(std::string_view text, DateOrder order, std::int64_t& day) {
  if (text.size() == 8 && allDigits(text)) return good(dayOfNumber(number(text), day));
  std::string_view words[3];
  if (text.size() > 40 || takeWords(text, words) != 3) return DateResult::Bad;
  const auto& [first, second, third] = words;
  if (isLetter(first.front())) {  // Jan 6, 2013
    if (!allDigits(second) || !allDigits(third)) return DateResult::Bad;
    return good(civil(fullYear(third), monthOfName(first), number(second), day));
  }
  if (!isDigit(third.front())) return DateResult::Bad;
  if (isLetter(second.front())) {  // 6-Jan-2013, 2013-Jan-06
    const int month = monthOfName(second);
    if (first.size() == 4) return good(civil(number(first), month, number(third), day));
    return good(civil(fullYear(third), month, number(first), day));
  }
  if (second.size() > 2) return DateResult::Bad;
  if (first.size() == 4 && third.size() <= 2)
    return good(civil(number(first), number(second), number(third), day));
  const int year = fullYear(third);
  if (first.size() > 2 || year == 0) return DateResult::Bad;
  const int a = number(first);
  const int b = number(second);
  if (order == DateOrder::DayFirst) return good(civil(year, b, a, day));
  if (order == DateOrder::MonthFirst) return good(civil(year, a, b, day));
  std::int64_t ignored = 0;
  const bool either = civil(year, b, a, ignored) || civil(year, a, b, ignored);
  return either ? DateResult::Ambiguous : DateResult::Bad;
}

namespace {

/// "09:30:00", all of it in one step.
bool parseEightClock(std::string_view text, std::int64_t& msOfDay) {
  std::uint64_t bytes;
  std::memcpy(&bytes, text.data(), 8);
  bytes ^= 0x30303A30303A3030U;  // The digits from 0 to 9, and 0 for the colons.
  const std::uint64_t others = (bytes | (bytes + 0x7676767676767676U)) & 0x8080808080808080U;
  if ((others | (bytes & 0x0000FF0000FF0000U)) != 0) return false;
  const std::uint64_t pairs = bytes * 10 + (bytes >> 8);
  const std::uint64_t hour = pairs & 0xFF, minute = pairs >> 24 & 0xFF, second = pairs >> 48 & 0xFF;
  if (hour > 23 || minute > 59 || second > 59) return false;
  msOfDay = static_cast<std::int64_t>((hour * 60 + minute) * 60 + second) * 1000;
  return true;
}

}  // namespace

bool parsePlainClock(std::string_view text, std::int64_t& msOfDay) {
  if (std::endian::native == std::endian::little && text.size() == 8)
    return parseEightClock(text, msOfDay);
  if ((text.size() != 8 && text.size() != 5) || text[2] != ':') return false;
  const auto twoDigits = [text](std::size_t at) {
    const unsigned tens = static_cast<unsigned char>(text[at]) - unsigned{'0'};
    const unsigned ones = static_cast<unsigned char>(text[at + 1]) - unsigned{'0'};
    return tens > 9 || ones > 9 ? 100U : tens * 10 + ones;
  };
  const unsigned hour = twoDigits(0);
  const unsigned minute = twoDigits(3);
  const bool hasSeconds = text.size() == 8;
  const unsigned second = hasSeconds ? twoDigits(6) : 0;
  if (hour > 23 || minute > 59 || second > 59 || (hasSeconds && text[5] != ':')) return false;
  msOfDay = ((hour * 60 + minute) * std::int64_t{60} + second) * 1000;
  return true;
}

bool parseClockTime(std::string_view text, std::int64_t& msOfDay) {
  if (parsePlainClock(text, msOfDay)) return true;
  std::size_t at = 0;
  const auto upTo2 = [&](int& value) {
    const std::size_t begin = at;
    value = 0;
    while (at < text.size() && isDigit(text[at]) && at - begin < 2)
      value = value * 10 + text[at++] - '0';
    return at > begin;
  };
  int hour = 0;
  int minute = 0;
  int second = 0;
  int ms = 0;
  if (!upTo2(hour) || at >= text.size() || text[at++] != ':' || !upTo2(minute)) return false;
  if (at < text.size() && text[at] == ':') {
    ++at;
    if (!upTo2(second)) return false;
    if (at < text.size() && (text[at] == '.' || text[at] == ',' || text[at] == ':')) {
      const std::size_t begin = ++at;
      for (int unit = 100; at < text.size() && isDigit(text[at]); ++at, unit /= 10)
        ms += (text[at] - '0') * unit;
      if (at == begin || at - begin > 9) return false;
    }
  }
  std::string_view rest = trimmed(text.substr(at));
  if (rest.size() == 2 && lower(rest[1]) == 'm' &&
      (lower(rest[0]) == 'a' || lower(rest[0]) == 'p')) {
    if (hour < 1 || hour > 12) return false;
    hour = hour % 12 + (lower(rest[0]) == 'p' ? 12 : 0);
    rest = {};
  }
  if (!rest.empty() || minute > 59 || second > 59) return false;
  if (hour > 23 && (hour > 24 || minute + second + ms > 0)) return false;
  msOfDay = ((hour * 60 + minute) * std::int64_t{60} + second) * 1000 + ms;
  return true;
}

bool parseOffset(std::string_view text, std::int64_t& offsetMs) {
  offsetMs = 0;
  if (text == "Z" || text == "z") return true;
  if (text.size() >= 3) {
    const char head[] = {lower(text[0]), lower(text[1]), lower(text[2])};
    const std::string_view name(head, 3);
    if (name == "utc" || name == "gmt") {
      text.remove_prefix(3);
      if (text.empty()) return true;
    }
  }
  if (text.size() < 2 || (text[0] != '+' && text[0] != '-')) return false;
  const bool west = text[0] == '-';
  text.remove_prefix(1);
  const std::size_t colon = text.find(':');
  std::string_view hours = text.substr(0, colon);
  std::string_view minutes = colon == text.npos ? std::string_view() : text.substr(colon + 1);
  if (colon == text.npos && text.size() == 4) {
    minutes = text.substr(2);
    hours = text.substr(0, 2);
  } else if (colon != text.npos && minutes.size() != 2) {
    return false;
  }
  if (!allDigits(hours) || hours.size() > 2 || (!minutes.empty() && !allDigits(minutes)))
    return false;
  if (number(hours) > 14 || number(minutes) > 59) return false;
  offsetMs = (number(hours) * 60 + number(minutes)) * std::int64_t{60'000} * (west ? -1 : 1);
  return true;
}

namespace {

/// 12, 14 or 17 digits.
DateResult parseDigits(std::string_view text, MomentText& out) {
  if (!dayOfNumber(number(text.substr(0, 8)), out.day)) return DateResult::Bad;
  const std::string_view clock = text.substr(8);
  const int hour = number(clock.substr(0, 2));
  const int minute = number(clock.substr(2, 2));
  const int second = clock.size() >= 6 ? number(clock.substr(4, 2)) : 0;
  const int ms = clock.size() == 9 ? number(clock.substr(6)) : 0;
  if (hour > 23 || minute > 59 || second > 59) return DateResult::Bad;
  out.msOfDay = ((hour * 60 + minute) * std::int64_t{60} + second) * 1000 + ms;
  out.hasDate = out.hasTime = true;
  out.datePart = 8;
  return DateResult::Good;
}

/// Splits the zone off a time such as "09:30:00.5+08:00", "09:30:00Z" or "09:30:00 UTC".
bool takeOffset(std::string_view& clock, MomentText& out) {
  const std::size_t end = clock.find_first_not_of("0123456789:.,");
  if (end == clock.npos) return true;
  const std::string_view rest = trimmed(clock.substr(end));
  if (rest.size() == 2 && lower(rest[1]) == 'm') return true;
  if (!parseOffset(rest, out.offsetMs)) return false;
  out.hasOffset = true;
  clock = trimmed(clock.substr(0, end));
  return true;
}

}  // namespace

DateResult parseMoment(std::string_view text, DateOrder order, MomentText& out) {
  out = {};
  if (text.empty() || text.size() > kMostMomentBytes) return DateResult::Bad;
  if (allDigits(text) && (text.size() == 12 || text.size() == 14 || text.size() == 17))
    return parseDigits(text, out);
  const std::size_t colon = text.find(':');
  std::size_t begin = text.size();
  if (colon != text.npos) {
    begin = colon;
    while (begin > 0 && isDigit(text[begin - 1])) --begin;
    std::string_view clock = text.substr(begin);
    if (!takeOffset(clock, out) || !parseClockTime(clock, out.msOfDay)) return DateResult::Bad;
    out.hasTime = true;
    if (begin == 0) return DateResult::Good;
  }
  out.datePart = begin;
  std::string_view date = text.substr(0, begin);
  while (!date.empty() && std::string_view("Tt -_,").find(date.back()) != std::string_view::npos)
    date.remove_suffix(1);
  out.hasDate = true;
  const DateResult result = parseDate(date, order, out.day);
  if (result != DateResult::Bad || out.hasTime) return result;

  // A date and a time of digits: "20131206 093000", "2013-12-06T0930".
  const std::size_t gap = text.find_last_of(" Tt_");
  if (gap == text.npos) return DateResult::Bad;
  const std::string_view clock = text.substr(gap + 1);
  if (!allDigits(clock) || (clock.size() != 4 && clock.size() != 6 && clock.size() != 9))
    return DateResult::Bad;
  const DateResult dated = parseDate(trimmed(text.substr(0, gap)), order, out.day);
  if (dated != DateResult::Good) return dated;
  MomentText time;
  char digits[17] = {'2', '0', '0', '0', '0', '1', '0', '1'};
  std::copy(clock.begin(), clock.end(), digits + 8);
  if (parseDigits({digits, 8 + clock.size()}, time) != DateResult::Good) return DateResult::Bad;
  out.hasTime = true;
  out.msOfDay = time.msOfDay;
  out.datePart = gap + 1;
  return DateResult::Good;
}

}  // namespace orvane::detail
