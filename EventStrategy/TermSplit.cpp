#include "EventStrategy/TermSplit.h"

#include <utility>

namespace orvane {

TermPair termToTimeType(int64 term) {
  static constexpr std::pair<int64, ITimeType> kUnits[] = {
      {31536000000, ITimeType::Year}, {2592000000, ITimeType::Month}, {604800000, ITimeType::Week},
      {86400000, ITimeType::Day},     {3600000, ITimeType::Hour},     {60000, ITimeType::Minute},
      {1000, ITimeType::Second},      {500, ITimeType::HalfSecond}};
  for (const auto& [unitMs, type] : kUnits)
    if (term % unitMs == 0)
      return {static_cast<std::int32_t>(type), static_cast<std::int32_t>(term / unitMs)};
  return {};
}

}  // namespace orvane
