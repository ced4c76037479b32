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

/// What the rows of a file say about all of them; see `ColumnMap::isWhole`.
struct OwnWords {
  std::string timeZone;       ///< As it is written; empty: the file does not tell it.
  std::string period;         ///< As it is written; empty for ticks.
  std::int64_t periodMs = 0;  ///< 0 for ticks.
};

/// One data file, opened and understood; `TableRows` walks over its rows. Once made it does not
/// change, but for its notes.
class Table {
 public:
  /// Throws `DataFileError` if the file cannot be read or understood. Up to `threads` threads read
  /// it; 0: as many as is usual.
  Table(const std::string& path, const Description& description, bool bars, int threads = 0);
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  const std::string& path() const { return path_; }
  /// The lines that hold the data rows, and how many lines stand before them.
  std::string_view data() const { return text_.text.substr(dataOffset_); }
  std::size_t linesBeforeData() const { return linesBeforeData_; }

  char delimiter() const { return delimiter_; }
  const std::vector<std::string>& names() const { return names_; }  ///< One a column.
  const ColumnMap& map() const { return map_; }
  const TimeParser& times() const { return *times_; }
  const FileNameFacts& nameFacts() const { return facts_; }
  bool newestFirst() const { return newestFirst_; }
  const OwnWords& ownWords() const { return own_; }
  /// Our name of what a column holds; empty: it is passed over.
  std::vector<std::string> meanings() const;
  std::vector<std::string>& notes() { return notes_; }

 private:
  void sample();
  void understand(bool bars);
  void refuseOtherForms() const;
  void findHeader();
  std::vector<NamedRole> roles(bool bars);
  void applyColumnMap(std::vector<NamedRole>& roles) const;
  void findOrder();
  void keepWhole(std::vector<NamedRole>& roles, bool bars) const;
  void noteIdleKeys();
  void hear();
  [[noreturn]] void refuseTicks(const std::vector<NamedRole>& roles) const;
  [[noreturn]] void cannotRecognise(bool bars) const;

  std::string path_;
  const Description& description_;
  FileText text_;
  FileNameFacts facts_;
  char delimiter_ = ',';
  std::unique_ptr<CsvRows> rows_;  ///< At the first data row.
  std::size_t dataOffset_ = 0;
  std::size_t linesBeforeData_ = 0;
  bool hasHeader_ = false;
  std::size_t headerLine_ = 1;
  std::size_t firstLine_ = 1;
  std::vector<std::string> header_;
  std::vector<std::string> names_;
  std::size_t width_ = 0;
  SampleRows samples_;
  std::vector<std::string> firstRow_;
  std::vector<NamedRole> roles_;
  ColumnMap map_;
  OwnWords own_;
  std::unique_ptr<TimeParser> times_;
  bool newestFirst_ = false;
  std::vector<std::string> notes_;
};

}  // namespace orvane::detail
