#include "host/sweep/ParameterRange.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <set>

#include "host/InputError.h"

namespace orvane {
namespace {

constexpr std::size_t kMostDigits = 15;
constexpr std::uint64_t kMostValues = 1'000'000;

/// The one value of a JSON text; undefined if it is none. No number overflows to an infinite one.
QJsonValue jsonOf(const std::string& text) {
  QJsonParseError error;
  const auto document =
      QJsonDocument::fromJson(QByteArray::fromStdString("[" + text + "]"), &error);
  if (error.error != QJsonParseError::NoError || document.array().size() != 1)
    return QJsonValue(QJsonValue::Undefined);
  return document.array().first();
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end - begin));
  }
  return parts;
}

/// "5:50" is meant as a row; a time such as "09:30" is so rare among parameters that it can be put
/// in quotes.
bool isRowWithoutStep(const std::string& text) {
  return std::ranges::count(text, ':') == 1 &&
         text.find_first_not_of("0123456789.:-") == std::string::npos;
}

std::int64_t powerOfTen(int exponent) {
  std::int64_t power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

std::string decimalText(std::int64_t units, int decimals) {
  std::string digits = std::to_string(units < 0 ? -units : units);
  if (decimals > 0) {
    const auto places = static_cast<std::size_t>(decimals);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.')) digits.pop_back();
  }
  return (units < 0 ? "-" : "") + digits;
}

}  // namespace

ParameterRange::Decimal ParameterRange::decimalOf(const std::string& text,
                                                  const std::string& place) {
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string digits =
      text.substr(first, point - first) + (point < text.size() ? text.substr(point + 1) : "");
  const bool isNumber = point > first && point + 1 != text.size() && !digits.empty() &&
                        std::ranges::all_of(digits, isDigit);
  if (!isNumber)
    throw InputError(fmt::format(
        "{}: \"{}\" is not a decimal number; write FROM:TO:STEP such as 5:50:5, or 5,10,50", place,
        text));
  if (digits.size() > kMostDigits)
    throw InputError(fmt::format("{}: \"{}\" has more than {} digits", place, text, kMostDigits));
  Decimal result{std::stoll(digits),
                 static_cast<int>(text.size() - std::min(point + 1, text.size()))};
  if (first == 1) result.units = -result.units;
  return result;
}

ParameterRange ParameterRange::parse(const std::string& given, const std::string& option) {
  const std::size_t equals = given.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == given.size())
    throw InputError(
        fmt::format("{}: \"{}\" is not NAME=FROM:TO:STEP or NAME=value,value,...", option, given));
  ParameterRange result;
  result.name_ = given.substr(0, equals);
  const std::string rest = given.substr(equals + 1);
  const std::string place = fmt::format("{} {}", option, result.name_);
  if (isRowWithoutStep(rest))
    throw InputError(
        fmt::format("{}: \"{}\" has no step; write {}:1 or another step, or put a text in quotes",
                    place, rest, rest));
  if (std::ranges::count(rest, ':') == 2 && rest.find_first_of(",\"") == std::string::npos)
    result.readRow(rest, place);
  else
    result.readList(rest, place);
  return result;
}

void ParameterRange::readRow(const std::string& given, const std::string& place) {
  const std::vector<std::string> parts = split(given, ':');
  const Decimal from = decimalOf(parts[0], place), to = decimalOf(parts[1], place),
                step = decimalOf(parts[2], place);
  decimals_ = std::max({from.decimals, to.decimals, step.decimals});
  const auto scaled = [&](const Decimal& number, const std::string& text) {
    constexpr std::int64_t kMost = 1'000'000'000'000'000;
    std::int64_t units = 0;
    if (__builtin_mul_overflow(number.units, powerOfTen(decimals_ - number.decimals), &units) ||
        units >= kMost || units <= -kMost)
      throw InputError(
          fmt::format("{}: \"{}\" has more than {} digits with the {} decimals of the "
                      "others",
                      place, text, kMostDigits, decimals_));
    return units;
  };
  isRow_ = true;
  from_ = scaled(from, parts[0]);
  step_ = scaled(step, parts[2]);
  const std::int64_t last = scaled(to, parts[1]);
  if (step_ <= 0)
    throw InputError(fmt::format(
        "{}: the step \"{}\" is not above 0; write FROM:TO:STEP with the smaller end first", place,
        parts[2]));
  if (last < from_)
    throw InputError(
        fmt::format("{}: \"{}\" lies above \"{}\", so there is no value; write {}:{}:{}", place,
                    parts[0], parts[1], parts[1], parts[0], parts[2]));
  count_ = static_cast<std::uint64_t>((last - from_) / step_) + 1;
  if (count_ > kMostValues)
    throw InputError(
        fmt::format("{}: \"{}\" has {} values; at most {} are possible. Take a "
                    "larger step",
                    place, given, count_, kMostValues));
}

void ParameterRange::readList(const std::string& given, const std::string& place) {
  // A text in quotes may hold a comma: JSON finds its end.
  for (std::size_t begin = 0; begin <= given.size();) {
    std::size_t end = std::min(given.find(',', begin), given.size());
    QJsonValue value(QJsonValue::Undefined);
    if (given[begin] == '"') {
      while (true) {
        value = jsonOf(given.substr(begin, end - begin));
        if (value.isString() || end == given.size()) break;
        end = std::min(given.find(',', end + 1), given.size());
      }
      if (!value.isString())
        throw InputError(
            fmt::format("{}: \"{}\" holds a text whose quotes do not close; the shell "
                        "may have taken some away, so put single ones around it all",
                        place, given));
    }
    const std::string part = given.substr(begin, end - begin);
    if (part.empty())
      throw InputError(
          fmt::format("{}: \"{}\" has an empty value; write \"\" for an empty text, or "
                      "leave the comma out",
                      place, given));
    if (value.isUndefined()) {
      value = jsonOf(part);
      if (!value.isDouble() && !value.isBool()) value = QJsonValue(QString::fromStdString(part));
    }
    texts_.push_back(value.isString() ? value.toString().toStdString() : part);
    values_.push_back(std::move(value));
    begin = end + 1;
  }
  std::set<std::string> seen;
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const std::string json =
        QJsonDocument(QJsonArray{values_[i]}).toJson(QJsonDocument::Compact).toStdString();
    if (!seen.insert(json).second)
      throw InputError(
          fmt::format("{}: \"{}\" stands there twice; leave one out", place, texts_[i]));
  }
}

QJsonValue ParameterRange::value(std::uint64_t at) const {
  return isRow_ ? jsonOf(text(at)) : values_.at(at);
}

std::string ParameterRange::text(std::uint64_t at) const {
  if (!isRow_) return texts_.at(at);
  return decimalText(from_ + static_cast<std::int64_t>(at) * step_, decimals_);
}

}  // namespace orvane
