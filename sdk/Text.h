#pragma once

#include <QJsonValue>
#include <QString>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "shared/TextCodec.h"
#include "shared/Types.h"

namespace orvane {

/// All text that a context takes and gives is GBK; source files, parameters and terminals are
/// UTF-8. These two go between them. Plain ASCII text is the same in both.
inline std::string gbk(std::string_view utf8) { return utf8ToGbk(utf8); }
inline std::string utf8(std::string_view gbkText) { return gbkToUtf8(gbkText); }

// A literal would fit both a view and a QString.
inline std::string gbk(const char* text) { return utf8ToGbk(text); }
inline std::string gbk(const QString& text) { return utf8ToGbk(text.toStdString()); }

/// A UTC time in milliseconds as "2021-01-04 01:30:00.500Z"; "-" for one that is not set.
inline std::string utcText(int64 utcMs) {
  if (utcMs == kUnsetTime) return "-";
  using namespace std::chrono;
  const sys_time<milliseconds> time{milliseconds{utcMs}};
  const auto day = floor<days>(time);
  const year_month_day date{day};
  const hh_mm_ss clock{time - day};
  // Strategies put times into many of their lines; a format string would be read each time.
  std::string text;
  text.reserve(28);
  const auto add = [&text](std::int64_t number, std::size_t width, char end) {
    if (number < 0) text.push_back('-'), number = -number, --width;
    char digits[20];
    const auto last = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    const auto count = static_cast<std::size_t>(last - digits);
    if (count < width) text.append(width - count, '0');
    text.append(digits, count).push_back(end);
  };
  add(static_cast<int>(date.year()), 4, '-');
  add(static_cast<unsigned>(date.month()), 2, '-');
  add(static_cast<unsigned>(date.day()), 2, ' ');
  add(clock.hours().count(), 2, ':');
  add(clock.minutes().count(), 2, ':');
  add(clock.seconds().count(), 2, '.');
  add(clock.subseconds().count(), 3, 'Z');
  return text;
}

/// A number as the shortest decimal text that reads back as the same double, such as "5230.2".
inline std::string numberText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  return std::string(text, end);
}

}  // namespace orvane
