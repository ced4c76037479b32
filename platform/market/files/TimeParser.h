#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/market/files/CsvRows.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/ZoneClock.h"

namespace orvane::detail {

/// Some rows of a file, its first and its last ones, for finding out how it is written.
using SampleRows = std::vector<std::vector<std::string>>;

/// The columns that make a row's time; -1: there is none.
struct TimeColumns {
  int moment = -1;  ///< Date and time in one, or the only one there is.
  int date = -1;
  int time = -1;
  int millis = -1;
  int tradingDay = -1;
  int until = -1;                  ///< A second moment: that a bar ends at.
  bool momentIsTimeOfDay = false;  ///< The header calls `moment` a time of day.
};

/// The time of one row.
struct RowTime {
  std::int64_t utcMs = 0;
  std::int64_t day = 0;         ///< Of the date as it was written, in days since 1970.
  bool dateOnly = false;        ///< A date without a time of day.
  bool midnight = false;        ///< The time of day is 0, or there is none.
  bool twice = false;           ///< The local time occurs twice: `notBefore` chose.
  std::int32_t tradingDay = 0;  ///< YYYYMMDD from a column of its own, else 0.
  std::int64_t untilMs = 0;     ///< UTC, from a column of its own, else 0.
};

/// Reads the time of each row of one file, whatever columns and forms it is spread over. Not
/// thread-safe.
class TimeParser {
 public:
  /// Finds the forms out from `samples`. Throws `DataFileError` if no date can be had or if the
  /// order of day and month is open. `names` are those of the columns, for messages.
  TimeParser(const std::string& file, TimeColumns columns, const Description& description,
             std::optional<std::int64_t> fileDay, const SampleRows& samples,
             const std::vector<std::string>& names, std::vector<std::string>& notes);

  /// False if the row's time cannot be read; `errorColumn` and `errorText` then tell why. Of a
  /// local time that occurs twice the one not before `notBefore` is taken.
  bool parse(std::span<const CsvField> fields, std::int64_t notBefore, RowTime& out);

  /// The column that tells all of a row's time, as texts; -1: there is none.
  int plainColumn() const;
  /// Takes a moment from the front of a text if it is the date of the row before and "09:30" or
  /// "09:30:00", and `delimiter`, one of , ; | and tab, or the end of the line stands behind it.
  /// Answers where it ends; null for every other.
  const char* takePlain(const char* at, const char* end, char delimiter, std::int64_t notBefore,
                        RowTime& out);

  int errorColumn() const { return errorColumn_; }
  const char* errorText() const { return errorText_; }

  ZoneClock& zone() { return zone_; }

 private:
  struct Cached {
    std::string prefix;
    std::int64_t day = 0;
    bool hasDate = false;
    bool endsInDigit = false;  ///< More digits behind it would be of the date.
    bool isPlain = false;      ///< No delimiter in it, and no digit at its end.
  };

  TimeFormat formatOf(int column, bool timeOfDay, const SampleRows& samples) const;
  void findOrder(int column, const SampleRows& samples, const std::vector<std::string>& names,
                 std::vector<std::string>& notes);
  void settleColumns(const SampleRows& samples);
  bool fail(int column, const char* text);
  bool parseText(int column, std::string_view text, Cached& cache, MomentText& out);
  bool parseDigits(int column, TimeFormat format, std::string_view text, MomentText& out,
                   bool& epoch);
  bool parseColumn(int column, TimeFormat format, std::string_view text, Cached& cache,
                   MomentText& out, bool& epoch);
  bool parseTradingDay(std::string_view text, RowTime& out);
  bool parseUntil(std::string_view text, RowTime& out);
  bool addMillis(std::span<const CsvField> fields, std::int64_t& ms);

  std::string file_;
  TimeColumns columns_;
  ZoneClock zone_;
  DateOrder order_;
  std::optional<std::int64_t> day_;  ///< For rows without a date.
  TimeFormat wanted_;
  TimeFormat momentFormat_ = TimeFormat::Text;
  TimeFormat timeFormat_ = TimeFormat::Text;
  TimeFormat dateFormat_ = TimeFormat::Text;
  Cached momentCache_;
  Cached dateCache_;
  Cached timeCache_;
  Cached tradingDayCache_;
  Cached untilCache_;
  int errorColumn_ = -1;
  const char* errorText_ = "";
};

}  // namespace orvane::detail
