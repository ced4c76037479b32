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

/// A decimal text of at most 19 characters taken apart: digits with at most one point among them,
/// perhaps behind a minus. Nearly every number of a file is one.
struct ShortDecimal {
  std::uint64_t mantissa = 0;
  std::int8_t decimals = 0;  ///< Digits behind the point.
  std::int8_t digits = 0;    ///< All of them, with zeros in front; 0: the text is something else.
  bool isNegative = false;
};

/// Turns the decimal text of one kind of column into the nearest double. Immutable; any thread.
///
/// Scaling shifts the decimal point of the text, so that no division adds an error of its own.
class NumberParser {
 public:
  NumberParser() = default;

  /// `shift` is added to the decimal exponent: -4 reads "1816300" as 181.63.
  NumberParser(NumberFormat format, int shift, DecimalStep step)
      : format_(format),
        isPlain_(format.decimalPoint == '.' && format.thousands == 0),
        isPlainest_(isPlain_ && shift == 0 && step.mantissa == 0),
        shift_(shift),
        step_(step) {}

  /// The same, but every digit counts: what binary arithmetic may have left is not taken off.
  NumberParser exact() const {
    NumberParser parser = *this;
    parser.keepsAll_ = true;
    return parser;
  }

  /// Whether a short decimal is what its digits and its point say, with nothing to be shifted or
  /// cleaned.
  bool isPlainest() const { return isPlainest_; }
  /// 1 and so many zeros, up to 22.
  static double powerOfTen(unsigned zeros) { return kPowersOfTen[zeros]; }

  /// False if the text is no plain decimal number, or is too large for a double. Hexadecimal
  /// digits, "nan" and "inf" are no numbers.
  bool parse(std::string_view text, double& out) const;

  /// The same of a text that has been taken apart; false also where only the text will do.
  bool parse(const ShortDecimal& number, double& out) const {
    if (!isPlainest_ || number.digits > kTrueDigits || number.digits == 0)
      return isPlain_ && number.digits != 0 && exactly(number, out);
    // What `exactly` comes to where nothing is shifted and nothing is to be cleaned.
    const double value = static_cast<double>(static_cast<std::int64_t>(number.mantissa)) /
                         kPowersOfTen[number.decimals];
    out = number.mantissa == 0 || !number.isNegative ? value : -value;
    return true;
  }

 private:
  static constexpr std::uint64_t kExactLimit = std::uint64_t{1} << 53;
  static constexpr int kLargestPower = 22;
  static constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                            1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  static constexpr int kTrueDigits = 15;  ///< Those that a double keeps in any case.

  bool exactly(const ShortDecimal& number, double& out) const {
    const int exponent = shift_ - number.decimals;
    if (number.mantissa > kExactLimit || exponent < -kLargestPower || exponent > kLargestPower)
      return false;
    // One operation on exact numbers gives the double nearest to the decimal.
    const auto whole = static_cast<double>(static_cast<std::int64_t>(number.mantissa));
    const double value =
        exponent < 0 ? whole / kPowersOfTen[-exponent] : whole * kPowersOfTen[exponent];
    const double signedValue = number.mantissa == 0 || !number.isNegative ? value : -value;
    if (number.digits > kTrueDigits)
      out = cleanedLong(signedValue, number.mantissa);
    else
      out = step_.mantissa == 0 ? signedValue : cleaned(signedValue, number.digits);
    return true;
  }

  bool parsePlain(std::string_view text, double& out) const;
  double cleaned(double value, int digits) const;
  /// The same where zeros may stand in front of the digits, or at their end.
  double cleanedLong(double value, std::uint64_t mantissa) const;

  NumberFormat format_;
  bool isPlain_ = true;
  bool isPlainest_ = true;  ///< And neither shifts nor has a step.
  bool keepsAll_ = false;
  int shift_ = 0;
  DecimalStep step_;
};

/// Whether a text is a plain decimal number.
bool isNumber(std::string_view text);

/// The decimal text of a double with the fewest digits; it reads as the same double.
std::string decimalText(double value);

}  // namespace orvane::detail
