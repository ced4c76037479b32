#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/market/files/DecimalShape.h"
#include "platform/market/files/NumberParser.h"
#include "platform/market/files/TimeParser.h"

namespace orvane::detail {

class Table;

/// Takes rows of the plainest kind, as nearly all rows of nearly all files are: short numbers and a
/// moment of the day that the row before had, with nothing quoted, blank or left out. It reads each
/// character once and takes what it is sure of; every other row, good or bad, is left to those who
/// know all kinds. Not thread-safe.
class PlainRows {
 public:
  /// No row is plain.
  PlainRows() = default;
  /// The rows of a table, and which of its columns are read with which parser; a column below 0 is
  /// none. No row is plain if two parsers want one column, if it takes more than numbers and a
  /// moment to tell what a row means, or if the delimiter is none of the usual ones.
  PlainRows(const Table& table,
            std::initializer_list<std::pair<int, const NumberParser*>> numberColumns);

  /// Whether it is worth a try. Where most rows turned out not to be plain, it is not.
  bool canBe() const { return !columns_.empty() && missed_ <= taken_ + kMostMissed; }

  /// Reads the row that a text begins with. Answers its length with the end of its line; 0 if it is
  /// not plain, `time` and the numbers are of no use then. A date that `times` has read in a row
  /// before is the only one that it takes.
  std::size_t take(std::string_view text, TimeParser& times, std::int64_t notBefore, RowTime& time);

  /// Of the row that was taken; 0 for a column that is none.
  double number(int column) const {
    return column < 0 ? 0 : numbers_[static_cast<std::size_t>(column)];
  }

 private:
  enum class Kind : std::uint8_t { Other, Moment, Number, ShapedNumber };
  struct Column {
    Kind kind = Kind::Other;
    NumberParser parser;
    DecimalShape shape;  ///< Of the numbers above.
    std::size_t newShapes = 0;
  };

  static constexpr std::size_t kMostMissed = 64;

  const char* takeNewShape(Column& column, const char* at, const char* end, double& value) const;
  std::size_t look(std::string_view text, TimeParser& times, std::int64_t notBefore, RowTime& time);

  char delimiter_ = ',';
  std::vector<Column> columns_;
  std::vector<double> numbers_;  ///< By column.
  std::size_t taken_ = 0, missed_ = 0;
};

}  // namespace orvane::detail
