#pragma once

#include <QJsonObject>
#include <cstdint>
#include <string>
#include <vector>

#include "host/sweep/ParameterRange.h"

namespace orvane {

/// All combinations of some ranges, numbered from 0: the values of the last range change fastest.
class ParameterSpace {
 public:
  /// Reads one text for each range. Throws `InputError` that begins with `option` if one is wrong,
  /// a name stands twice, or there are more combinations than a number can count.
  ParameterSpace(const std::vector<std::string>& ranges, const std::string& option);

  const std::vector<ParameterRange>& ranges() const { return ranges_; }
  std::uint64_t size() const { return size_; }

  /// Where the values of a combination stand in their ranges, and back.
  std::vector<std::uint64_t> placesOf(std::uint64_t number) const;
  std::uint64_t numberOf(const std::vector<std::uint64_t>& places) const;

  /// `base` with the values of a combination.
  QJsonObject paramsOf(const QJsonObject& base, std::uint64_t number) const;
  /// The values as texts, in the order of the ranges.
  std::vector<std::string> textsOf(std::uint64_t number) const;

 private:
  std::vector<ParameterRange> ranges_;
  std::uint64_t size_ = 1;
};

}  // namespace orvane
