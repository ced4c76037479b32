#include "platform/market/files/NumberParser.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "platform/market/files/ShortDecimal.h"

namespace orvane::detail {
namespace {

/// A decimal text taken apart.
struct Parts {
  bool negative = false;
  std::uint64_t mantissa = 0;
  int digits = 0;    ///< Significant digits, from the first to the last that is not 0.
  int exponent = 0;  ///< Of ten, for the mantissa's last digit.
  bool fits = true;  ///< The mantissa holds all digits.
};

bool takeApart(std::string_view text, Parts& parts) {
  const char* at = text.data();
  const char* const end = at + text.size();
  if (at != end && (*at == '-' || *at == '+')) parts.negative = *at++ == '-';
  bool any = false;
  bool point = false;
  int taken = 0;  // From the first that is not 0.
  for (; at != end; ++at) {
    const unsigned digit = static_cast<unsigned char>(*at) - unsigned{'0'};
    if (digit > 9) {
      if (*at != '.' || point) break;
      point = true;
      continue;
    }
    any = true;
    if (digit != 0 || taken > 0) ++taken;
    if (digit != 0) parts.digits = taken;
    if (taken <= 19)
      parts.mantissa = parts.mantissa * 10 + digit;
    else
      parts.fits = false;
    if (point) --parts.exponent;
  }
  if (!any) return false;
  if (at == end) return true;
  if (*at != 'e' && *at != 'E') return false;
  if (++at != end && *at == '+') ++at;
  int exponent = 0;
  const auto result = std::from_chars(at, end, exponent);
  if (result.ec != std::errc() || result.ptr != end || std::abs(exponent) > 400) return false;
  parts.exponent += exponent;
  return true;
}

bool byText(std::string_view text, int shift, double& out) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (shift == 0) {
    const auto whole = std::from_chars(text.data(), text.data() + text.size(), out);
    if (whole.ec == std::errc()) return std::isfinite(out);
  }
  const std::size_t mark = text.find_first_of("eE");
  std::string shifted(text.substr(0, mark));
  int exponent = 0;
  if (mark != text.npos) {
    std::string_view tail = text.substr(mark + 1);
    if (!tail.empty() && tail.front() == '+') tail.remove_prefix(1);
    std::from_chars(tail.data(), tail.data() + tail.size(), exponent);
  }
  shifted += 'e' + std::to_string(exponent + shift);
  const char* end = shifted.data() + shifted.size();
  const auto result = std::from_chars(shifted.data(), end, out);
  if (result.ec == std::errc::result_out_of_range && std::abs(out) < 1) return true;
  return result.ec == std::errc() && result.ptr == end && std::isfinite(out);
}

/// How many digits a number has, without the zeros at its end.
int significantDigits(std::uint64_t mantissa) {
  if (mantissa == 0) return 0;
  while (mantissa % 10 == 0) mantissa /= 10;
  int digits = 0;
  for (; mantissa != 0; mantissa /= 10) ++digits;
  return digits;
}

/// Removes what binary arithmetic left behind the last true digit: a text of 16 digits or more
/// that lies next to a much shorter decimal is that decimal. The longer the decimal, the nearer it
/// must lie, since longer ones lie closer together.
double withoutNoise(double value) {
  static constexpr std::pair<int, double> kTries[] = {
      {10, 1e-13}, {12, 1e-14}, {13, 2e-15}, {14, 5e-16}};
  char buffer[64];
  for (const auto& [digits, distance] : kTries) {
    const auto made = std::to_chars(buffer, buffer + sizeof(buffer), value,
                                    std::chars_format::scientific, digits - 1);
    double shorter = 0;
    std::from_chars(buffer, made.ptr, shorter);
    if (std::abs(shorter - value) <= distance * std::abs(value)) return shorter;
  }
  return value;
}

}  // namespace

bool parseStep(std::string_view text, DecimalStep& out) {
  Parts parts;
  if (!takeApart(text, parts) || parts.negative || parts.mantissa == 0 || !parts.fits) return false;
  while (parts.mantissa % 10 == 0) {
    parts.mantissa /= 10;
    ++parts.exponent;
  }
  for (; parts.exponent > 0; --parts.exponent) {
    if (parts.mantissa > 1'000'000'000'000U) return false;
    parts.mantissa *= 10;
  }
  if (parts.mantissa > 1'000'000'000'000'000U || parts.exponent < -15) return false;
  out.mantissa = static_cast<std::int64_t>(parts.mantissa);
  out.decimals = -parts.exponent;
  return true;
}

bool NumberParser::parse(std::string_view text, double& out) const {
  if (isPlain_) return parsePlain(text, out);
  char buffer[128];
  std::size_t size = 0;
  if (text.size() > sizeof(buffer)) return false;
  for (const char c : text) {
    if (c == format_.thousands && c != 0) continue;
    if (c == '.' && format_.decimalPoint != '.') return false;
    buffer[size++] = c == format_.decimalPoint ? '.' : c;
  }
  return parsePlain({buffer, size}, out);
}

bool NumberParser::parsePlain(std::string_view text, double& out) const {
  const char* const end = text.data() + text.size();
  ShortDecimal number;
  const char* const behind = takeShortDecimal(text.data(), end, end, number);
  if (behind == end && number.digits != 0) {
    if (exactly(number, out)) return true;
    if (!byText(text, shift_, out)) return false;
    out = cleaned(out, significantDigits(number.mantissa));
    return true;
  }
  Parts parts;
  if (text.size() > 400 || !takeApart(text, parts)) return false;
  const int exponent = parts.exponent + shift_;
  if (parts.fits && parts.mantissa <= kExactLimit && std::abs(exponent) <= kLargestPower) {
    const auto whole = static_cast<double>(parts.mantissa);
    out = exponent < 0 ? whole / kPowersOfTen[-exponent] : whole * kPowersOfTen[exponent];
    if (parts.negative) out = -out;
  } else if (!byText(text, shift_, out)) {
    return false;
  }
  out = cleaned(out, parts.digits);
  return true;
}

double NumberParser::cleanedLong(double value, std::uint64_t mantissa) const {
  return cleaned(value, significantDigits(mantissa));
}

double NumberParser::cleaned(double value, int digits) const {
  if (value == 0) return 0;  // Also without the sign that "-0" has.
  if (step_.mantissa != 0) {
    const double step = static_cast<double>(step_.mantissa) / kPowersOfTen[step_.decimals];
    const double count = std::round(value / step);
    if (std::abs(count) * static_cast<double>(step_.mantissa) < 9e15) {
      // Whole numbers below 2^53, so this is the double nearest to the decimal.
      const double exact =
          count * static_cast<double>(step_.mantissa) / kPowersOfTen[step_.decimals];
      if (std::abs(exact - value) <= step * 1e-6) return exact;
    }
  }
  return digits > kTrueDigits && !keepsAll_ ? withoutNoise(value) : value;
}

bool isNumber(std::string_view text) {
  double value = 0;
  return NumberParser().parse(text, value);
}

std::string decimalText(double value) {
  char buffer[64];
  char* const end = buffer + sizeof(buffer);
  // Written out, a large number would show all the digits that it has in binary.
  constexpr double kWholeBelow = 9007199254740992;
  const auto made = std::abs(value) < kWholeBelow
                        ? std::to_chars(buffer, end, value)
                        : std::to_chars(buffer, end, value, std::chars_format::scientific);
  return {buffer, made.ptr};
}

}  // namespace orvane::detail
