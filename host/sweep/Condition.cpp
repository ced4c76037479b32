#include "host/sweep/Condition.h"

#include <fmt/core.h>

#include <algorithm>
#include <type_traits>
#include <utility>

#include "host/InputError.h"

namespace orvane {
namespace {

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Whether it is, or was meant as, FROM:TO:STEP.
bool isRow(const std::string& text) {
  return text.find(':') != std::string::npos &&
         text.find_first_not_of("0123456789.:-") == std::string::npos;
}

template <typename Value>
bool fulfils(Condition::Operator kind, const Value& left, const Value& right) {
  if (kind == Condition::Operator::Equal) return left == right;
  if (kind == Condition::Operator::NotEqual) return left != right;
  if constexpr (std::is_same_v<Value, double>) {
    if (kind == Condition::Operator::Less) return left < right;
    if (kind == Condition::Operator::LessEqual) return left <= right;
    if (kind == Condition::Operator::Greater) return left > right;
    return left >= right;
  }
  return false;
}

}  // namespace

Condition::Condition(const std::string& given, const ParameterSpace& space,
                     const std::string& option)
    : given_(given), option_(option) {
  // Longer ones first: "<=" begins with "<".
  constexpr std::pair<const char*, Operator> kOperators[] = {
      {"<=", Operator::LessEqual}, {">=", Operator::GreaterEqual}, {"==", Operator::Equal},
      {"!=", Operator::NotEqual},  {"<", Operator::Less},          {">", Operator::Greater}};
  for (const auto& [sign, kind] : kOperators) {
    const std::string text = sign;
    const std::size_t at = given.find(text);
    if (at == std::string::npos) continue;
    operator_ = kind;
    left_ = sideOf(trimmed(given.substr(0, at)), space);
    right_ = sideOf(trimmed(given.substr(at + text.size())), space);
    refuseUnknownName(space);
    if (!left_.range && !right_.range)
      throw InputError(fmt::format("{}: \"{}\" names no parameter of --grid", option, given));
    const bool isOrdered = kind != Operator::Equal && kind != Operator::NotEqual;
    if (isOrdered && (!left_.isNumber() || !right_.isNumber()))
      throw InputError(fmt::format("{}: \"{}\" compares what is no number", option, given));
    return;
  }
  throw InputError(fmt::format(
      "{}: \"{}\" is not a comparison such as \"fast<slow\"; it has none of < <= > >= == !=",
      option, given));
}

/// A word that is like no value of the other side is a name that is misspelt.
void Condition::refuseUnknownName(const ParameterSpace& space) const {
  for (const auto& [side, other] : {std::pair{&left_, &right_}, {&right_, &left_}}) {
    if (side->range || !other->range || side->isNumber()) continue;
    const bool isValue =
        std::ranges::find(other->values, side->values.front()) != other->values.end();
    if (isValue || !side->values.front().isString() || !other->isNumber()) continue;
    std::string names;
    for (const ParameterRange& range : space.ranges())
      names += (names.empty() ? "" : ", ") + range.name();
    throw InputError(fmt::format("{}: \"{}\": \"{}\" is no --grid parameter; there is {}", option_,
                                 given_, side->values.front().toString().toStdString(), names));
  }
}

Condition::Side Condition::sideOf(const std::string& text, const ParameterSpace& space) const {
  if (text.empty())
    throw InputError(fmt::format("{}: \"{}\" has nothing on one side", option_, given_));
  Side side;
  for (std::size_t i = 0; i < space.ranges().size(); ++i)
    if (space.ranges()[i].name() == text) side.range = i;
  const auto refuse = [&](const char* what) {
    throw InputError(
        fmt::format("{}: \"{}\" compares with {}, \"{}\"; give one value, or a text in quotes",
                    option_, given_, what, text));
  };
  if (!side.range && isRow(text)) refuse("a row of values");
  // A value reads as in a list.
  const ParameterRange range =
      side.range ? space.ranges()[*side.range] : ParameterRange::parse("x=" + text, option_);
  if (!side.range && range.size() != 1) refuse("a list of values");
  for (std::uint64_t i = 0; i < range.size(); ++i) side.values.push_back(range.value(i));
  if (std::ranges::all_of(side.values, &QJsonValue::isDouble))
    for (const QJsonValue& value : side.values) side.numbers.push_back(value.toDouble());
  return side;
}

bool Condition::holds(const std::vector<std::uint64_t>& places) const {
  const std::uint64_t left = left_.placeIn(places), right = right_.placeIn(places);
  if (left_.isNumber() && right_.isNumber())
    return fulfils(operator_, left_.numbers[left], right_.numbers[right]);
  return fulfils(operator_, left_.values[left], right_.values[right]);
}

}  // namespace orvane
