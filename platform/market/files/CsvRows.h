#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "platform/market/files/NumberParser.h"

namespace orvane::detail {

/// A field of a row: its text, and what it is as a number, whose digits are read while its end is
/// looked for.
struct CsvField {
  std::string_view text;
  ShortDecimal number;
};

/// Walks over the rows of a delimited text without copying them. Blank lines and lines that begin
/// with "#" are no rows. Not thread-safe.
class CsvRows {
 public:
  /// `file` names the file in errors; it and `text` outlive this object. The delimiter " " stands
  /// for any run of blanks and tabs. A text that is part of a file has lines before it.
  CsvRows(const std::string& file, std::string_view text, char delimiter,
          std::size_t linesBefore = 0);

  /// Goes to the next row; false at the end. Throws `DataFileError` for a quote that is not
  /// closed on its line.
  bool next();

  /// The fields of the row, without quotes and surrounding blanks. Good until `next`.
  const std::vector<CsvField>& fields() const { return fields_; }

  std::size_t line() const { return line_; }      ///< Of the row, from 1.
  std::size_t offset() const { return offset_; }  ///< Bytes of the text that are behind us.

  /// Passes over `count` lines of whatever kind.
  void skipLines(int count);

  /// The last comment before the row that `next` went to, without its "#", if it was the line
  /// right before; else empty.
  std::string_view commentBefore() const { return comment_; }

 private:
  bool takeLine(std::string_view& line);
  void add(std::string_view field) { fields_.push_back({field, {}}); }
  void split(std::string_view line);
  void splitBlanks(std::string_view line);
  std::size_t takeQuoted(std::string_view line, std::size_t at);

  const std::string& file_;
  std::string_view text_;
  char delimiter_;
  bool delimitsNumbers_;  ///< The delimiter is no part of a number.
  std::size_t offset_ = 0;
  std::size_t line_;
  std::string_view comment_;
  std::vector<CsvField> fields_;
  std::deque<std::string> unquoted_;  ///< Fields of the row that had doubled quotes.
};

/// The delimiter that the first lines of a text have in common: one of , ; tab | or, if there is
/// none of them, a blank.
char detectDelimiter(std::string_view text);

std::string_view trimmed(std::string_view text);

}  // namespace orvane::detail
