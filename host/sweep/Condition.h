#pragma once

#include <QJsonValue>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/ParameterSpace.h"

namespace orvane {

/// A comparison that a combination must fulfil, such as "fast<slow" or "stop>=0.5".
class Condition {
 public:
  /// Reads "A OP B", where OP is one of <, <=, >, >=, ==, != and each side the name of a range or
  /// one value as in a list of `--grid`. Throws `InputError` that begins with `option` if it is
  /// none, if a side has several values, or if a side that is ordered is no number.
  Condition(const std::string& given, const ParameterSpace& space, const std::string& option);

  /// Whether the combination with these places fulfils it. Numbers are compared as doubles, which
  /// tell any two decimals of at most 15 digits apart.
  bool holds(const std::vector<std::uint64_t>& places) const;

  enum class Operator { Less, LessEqual, Greater, GreaterEqual, Equal, NotEqual };

 private:
  /// A range, by its place, or a value.
  struct Side {
    std::optional<std::size_t> range;
    std::vector<QJsonValue> values;  ///< Of the range, or the one.
    std::vector<double> numbers;     ///< The same, where all of them are numbers.

    bool isNumber() const { return !numbers.empty(); }
    std::uint64_t placeIn(const std::vector<std::uint64_t>& places) const {
      return range ? places[*range] : 0;
    }
  };

  Side sideOf(const std::string& text, const ParameterSpace& space) const;
  void refuseUnknownName(const ParameterSpace& space) const;

  std::string given_, option_;
  Operator operator_ = Operator::Less;
  Side left_, right_;
};

}  // namespace orvane
