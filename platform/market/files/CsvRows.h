#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::detail {

/// Walks over the rows of a delimited text without copying them. Blank lines and lines that begin
/// with "#" are no rows. Not thread-safe.
class CsvRows {
 public:
  /// `file` names the file in errors; it and `text` outlive this object. The delimiter " " stands
  /// for any run of blanks and tabs.
  CsvRows(const std::string& file, std::string_view text, char delimiter);

  /// Goes to the next row; false at the end. Throws `DataFileError` for a quote that is not
  /// closed on its line.
  bool next();

  /// The fields of the row, without quotes and surrounding blanks. Good until `next`.
  const std::vector<std::string_view>& fields() const { return fields_; }

  std::size_t line() const { return line_; }      ///< Of the row, from 1.
  std::size_t offset() const { return offset_; }  ///< Bytes of the text that are behind us.

  /// Passes over `count` lines of whatever kind.
  void skipLines(int count);

  /// The last comment before the row that `next` went to, without its "#", if it was the line
  /// right before; else empty.
  std::string_view commentBefore() const { return comment_; }

 private:
  bool takeLine(std::string_view& line);
  void split(std::string_view line);
  void splitBlanks(std::string_view line);
  std::size_t takeQuoted(std::string_view line, std::size_t at);

  const std::string& file_;
  std::string_view text_;
  char delimiter_;
  std::size_t offset_ = 0;
  std::size_t line_ = 0;
  std::string_view comment_;
  std::vector<std::string_view> fields_;
  std::deque<std::string> unquoted_;  ///< Fields of the row that had doubled quotes.
};

/// The delimiter that the first lines of a text have in common: one of , ; tab | or, if there is
/// none of them, a blank.
char detectDelimiter(std::string_view text);

std::string_view trimmed(std::string_view text);

}  // namespace orvane::detail
