#pragma once

#include <string>
#include <string_view>

#include "platform/market/files/CsvRows.h"
#include "platform/market/files/NumberParser.h"
#include "platform/market/files/PlainRows.h"
#include "platform/market/files/TimeParser.h"

namespace orvane::detail {

class Table;

/// Walks over the data rows of a table, or over a part of them, with their time read. Not
/// thread-safe; but each thread may have one of its own over the same table.
class TableRows {
 public:
  /// The rows in `text`, whole lines of the table's, of which `linesBefore` stand before it. The
  /// table outlives this object.
  TableRows(const Table& table, std::string_view text, std::size_t linesBefore);
  TableRows(const TableRows&) = delete;
  TableRows& operator=(const TableRows&) = delete;

  /// Goes to the next data row; false at the end. Throws for a row that is too short or too long.
  bool next();

  /// The next row if it is plain: its length for `pass`, or 0. It is not gone to by that.
  std::size_t lookPlain(PlainRows& plain, std::int64_t notBefore, RowTime& time) {
    return plain.take(rows_.rest(), times_, notBefore, time);
  }
  void pass(std::size_t length) { rows_.pass(length); }

  std::string_view field(int column) const {
    return rows_.fields()[static_cast<std::size_t>(column)].text;
  }

  /// The time of the row. Throws if it cannot be read.
  RowTime time(std::int64_t notBefore);

  /// A number of the row, 0 if its field is empty. Throws if it is none.
  double number(const NumberParser& parser, int column) const {
    double value = 0;
    if (isShortNumber(parser, column, value)) return value;
    return numberOfText(parser, column);
  }

  /// Whether a field is a number that was read when the row was split, as nearly all are; `value`
  /// is it then.
  bool isShortNumber(const NumberParser& parser, int column, double& value) const {
    return parser.parse(rows_.fields()[static_cast<std::size_t>(column)].number, value);
  }

  /// Throws if the row says another zone or period than the first one did.
  void checkOwnWords() const;

  /// The row's code: "CODE.MARKET" from its columns; empty if the file has no such column.
  std::string code() const;

  /// Throws `DataFileError` that names file, line, column and value.
  [[noreturn]] void fail(int column, const std::string& what) const;

  const Table& table() const { return table_; }
  std::string place() const;                         ///< File and line of the row.
  std::size_t line() const { return rows_.line(); }  ///< Of the row; at the end that of the last.
  ZoneClock& zone() { return times_.zone(); }

 private:
  double numberOfText(const NumberParser& parser, int column) const;

  const Table& table_;
  CsvRows rows_;
  TimeParser times_;
};

}  // namespace orvane::detail
