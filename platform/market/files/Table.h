#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/market/files/ColumnMap.h"
#include "platform/market/files/CsvRows.h"
#include "platform/market/files/Description.h"
#include "platform/market/files/FileNames.h"
#include "platform/market/files/FileText.h"
#include "platform/market/files/TimeParser.h"

namespace orvane::detail {

/// One data file, opened and understood: its rows come one by one, with their time read. Not
/// thread-safe.
class Table {
 public:
  /// Throws `DataFileError` if the file cannot be read or understood.
  Table(const std::string& path, const Description& description, bool bars);
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  /// Goes to the next data row; false at the end. Throws for a row that is too short or too long.
  bool next();

  std::string_view field(int column) const {
    return rows_->fields()[static_cast<std::size_t>(column)];
  }

  /// The time of the row. Throws if it cannot be read.
  RowTime time(std::int64_t notBefore);

  /// A number of the row, 0 if its field is empty. Throws if it is none.
  double number(const NumberParser& parser, int column);

  /// The row's code: "CODE.MARKET" from its columns; empty if the file has no such column.
  std::string code() const;

  /// Throws `DataFileError` that names file, line, column and value.
  [[noreturn]] void fail(int column, const std::string& what) const;

  const std::string& path() const { return path_; }
  std::string place() const;  ///< File and line of the row.
  std::size_t line() const { return rows_->line(); }
  double share() const;  ///< Of the text that is behind us.
  /// About how many rows are still to come, by the length of the first ones.
  std::size_t rowsLeft() const;
  const ColumnMap& map() const { return map_; }
  ZoneClock& zone() { return times_->zone(); }
  const FileNameFacts& nameFacts() const { return facts_; }
  bool newestFirst() const { return newestFirst_; }
  std::vector<std::string>& notes() { return notes_; }

 private:
  void sample();
  void understand(bool bars);
  void findHeader();
  std::vector<NamedRole> roles(bool bars);
  void applyColumnMap(std::vector<NamedRole>& roles) const;
  void findOrder();
  [[noreturn]] void cannotRecognise(bool bars) const;

  std::string path_;
  const Description& description_;
  FileText text_;
  FileNameFacts facts_;
  char delimiter_ = ',';
  std::unique_ptr<CsvRows> rows_;
  bool pending_ = false;  ///< The first data row has been read ahead.
  bool hasHeader_ = false;
  std::size_t headerLine_ = 1;
  std::size_t firstLine_ = 1;
  std::vector<std::string> header_;
  std::vector<std::string> names_;
  std::size_t width_ = 0;
  SampleRows samples_;
  std::size_t rowBytes_ = 1;  ///< Of a sampled row, on average.
  std::vector<std::string> firstRow_;
  ColumnMap map_;
  std::unique_ptr<TimeParser> times_;
  bool newestFirst_ = false;
  std::vector<std::string> notes_;
};

}  // namespace orvane::detail
