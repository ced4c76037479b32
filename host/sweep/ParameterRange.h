#pragma once

#include <QJsonValue>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// The values that a sweep gives to one parameter: an arithmetic row of exact decimals, or a list.
/// Each value is the one that its text would be in the JSON of `--params`, so a run by hand meets
/// the same. Immutable.
class ParameterRange {
 public:
  /// Reads "NAME=FROM:TO:STEP", both ends inclusive, or "NAME=a,b,c". In a list, "true" and
  /// "false" are truth values, what JSON takes for a number is one, and all else is a text; a text
  /// in quotes is always one. Numbers of a row have at most 15 digits, so that no two meet in one
  /// double. Throws `InputError` that begins with `option`.
  static ParameterRange parse(const std::string& given, const std::string& option);

  const std::string& name() const { return name_; }  ///< UTF-8.
  std::uint64_t size() const { return isRow_ ? count_ : values_.size(); }
  /// The value at a place below `size`.
  QJsonValue value(std::uint64_t at) const;
  /// The same as the user would write it, UTF-8: shortest decimals, texts without quotes.
  std::string text(std::uint64_t at) const;

 private:
  /// A whole number of 10^-`decimals`.
  struct Decimal {
    std::int64_t units = 0;
    int decimals = 0;
  };

  void readRow(const std::string& given, const std::string& place);
  void readList(const std::string& given, const std::string& place);
  static Decimal decimalOf(const std::string& text, const std::string& place);

  std::string name_;
  bool isRow_ = false;
  std::int64_t from_ = 0, step_ = 0;  ///< In units of 10^-`decimals_`.
  int decimals_ = 0;
  std::uint64_t count_ = 0;
  std::vector<QJsonValue> values_;
  std::vector<std::string> texts_;
};

}  // namespace orvane
