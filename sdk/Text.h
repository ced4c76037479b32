#pragma once

#include <QJsonValue>
#include <QString>
#include <charconv>
#include <chrono>
#include <cstdio>
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
  char text[40];
  std::snprintf(
      text, sizeof(text), "%04d-%02u-%02u %02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

/// A number as the shortest decimal text that reads back as the same double, such as "5230.2".
inline std::string numberText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  return std::string(text, end);
}

}  // namespace orvane
