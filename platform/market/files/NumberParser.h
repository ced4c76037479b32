#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::detail {

/// How numbers are written in a file.
struct NumberFormat {
  char decimalPoint = '.';
  char thousands = 0;  ///< 0: no separator is allowed.
};

/// A price step as an exact decimal: `mantissa / 10^decimals`.
struct DecimalStep {
  std::int64_t mantissa = 0;  ///< 0: not known.
  int decimals = 0;
};

/// Reads a step such as "0.2" or "25"; false if the text is no decimal above 0 or is too fine.
bool parseStep(std::string_view text, DecimalStep& out);

/// Turns the decimal text of one kind of column into the nearest double. Immutable; any thread.
///
/// Scaling shifts the decimal point of the text, so that no division adds an error of its own.
class NumberParser {
 public:
  NumberParser() = default;

  /// `shift` is added to the decimal exponent: -4 reads "1816300" as 181.63.
  NumberParser(NumberFormat format, int shift, DecimalStep step)
      : format_(format), shift_(shift), step_(step) {}

  /// False if the text is no plain decimal number, or is too large for a double. Hexadecimal
  /// digits, "nan" and "inf" are no numbers.
  bool parse(std::string_view text, double& out) const;

 private:
  bool parsePlain(std::string_view text, double& out) const;
  double cleaned(double value, int digits) const;

  NumberFormat format_;
  int shift_ = 0;
  DecimalStep step_;
};

/// Whether a text is a plain decimal number.
bool isNumber(std::string_view text);

/// The shortest decimal text of a double.
std::string decimalText(double value);

}  // namespace orvane::detail
