#pragma once

#include <QJsonObject>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/market/files/ColumnNames.h"
#include "platform/market/files/MomentText.h"
#include "platform/market/files/NumberParser.h"

namespace orvane::detail {

/// How the digits of a time column are to be read; `Auto` finds out.
enum class TimeFormat : std::uint8_t {
  Auto,
  Text,  ///< A time with colons, a date with marks, ISO 8601, 8, 12, 14 or 17 digits.
  EpochSeconds,
  EpochMillis,
  EpochMicros,
  EpochNanos,
  MsOfDay,
  SecondsOfDay,
  HourMinute,              ///< HHMM
  HourMinuteSecond,        ///< HHMMSS
  HourMinuteSecondMillis,  ///< HHMMSSmmm
};

enum class RowOrder : std::uint8_t { Auto, Ascending, Descending };
enum class QuoteSide : std::uint8_t { Bid, Ask, Mid };

/// A description of data files, checked and taken apart. docs/formats.md tells its keys.
struct Description {
  std::string kind;  ///< "bars", "ticks" or empty.
  std::vector<NamedRole> columnList;
  /// Columns named one by one: by header name, or by position from 1.
  struct Named {
    NamedRole role;
    std::string header;
    int position = 0;
  };
  std::vector<Named> columnMap;
  std::optional<bool> header;
  char delimiter = 0;
  int skipLines = 0;
  std::string encoding;
  NumberFormat numbers;
  std::string timeZone;
  TimeFormat timeFormat = TimeFormat::Auto;
  DateOrder dateOrder = DateOrder::Unknown;
  std::optional<std::int64_t> date;  ///< Days since 1970.
  std::optional<bool> stampIsEnd;
  std::int64_t periodMs = 0;
  int priceShift = 0;
  int volumeShift = 0;
  int turnoverShift = 0;
  DecimalStep priceTick;
  std::optional<QuoteSide> side;  ///< The bid's where nobody says so.
  std::string code;
  std::string market;
  RowOrder order = RowOrder::Auto;
  bool skipEmpty = false;
  bool tolerant = false;
};

/// Throws `DataFileError` for an unknown key, naming the nearest known one, and for a value that
/// the key does not take.
Description readDescription(const QJsonObject& json);

/// Reads a period such as "5min", "30s", "1h", "day", "m5" or "D1"; 0 if it is none.
std::int64_t parsePeriod(std::string_view text);

}  // namespace orvane::detail
