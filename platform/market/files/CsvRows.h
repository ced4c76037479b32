#pragma once

#include <cstdint>
#include <deque>
#include <span>
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
  std::span<const CsvField> fields() const { return {slots_.data(), count_}; }

  std::size_t line() const { return line_; }      ///< Of the row, from 1.
  std::size_t offset() const { return offset_; }  ///< Bytes of the text that are behind us.

  /// What is not read yet.
  std::string_view rest() const { return text_.substr(offset_); }
  /// Passes over a row that `rest` begins with, `length` bytes with the end of its line. Its fields
  /// are not to be asked for.
  void pass(std::size_t length) {
    offset_ += length;
    ++line_;
    comment_ = {};
  }

  /// Passes over `count` lines of whatever kind.
  void skipLines(int count);

  /// The last comment before the row that `next` went to, without its "#", if it was the line
  /// right before; else empty.
  std::string_view commentBefore() const { return comment_; }

 private:
  bool takeLine(std::string_view& line);
  void add(std::string_view field) {
    if (count_ == slots_.size()) slots_.emplace_back();
    slots_[count_++] = {field, {}};
  }
  const char* takeNumbers(const char* at, const char* end);
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
  std::vector<CsvField> slots_;  ///< Fields of this row, and room that others took.
  std::size_t count_ = 0;        ///< Of this row's.
  /// Columns, of the first 64, of which a row told that their numbers are parts of other texts, as
  /// the year of a date.
  std::uint64_t hasTexts_ = 0;
  std::deque<std::string> unquoted_;  ///< Fields of the row that had doubled quotes.
};

/// The delimiter that the first lines of a text have in common: one of , ; tab | or, if there is
/// none of them, a blank.
char detectDelimiter(std::string_view text);

std::string_view trimmed(std::string_view text);

}  // namespace orvane::detail
