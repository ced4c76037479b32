#pragma once

#include "shared/Types.h"

namespace orvane::detail {

/// A sum of volumes or amounts that stand for decimals, exact where adding doubles would gather
/// rounding noise: each is taken as the decimal of at most 15 digits that it is nearest to, in
/// units of 1e-8.
class DecimalSum {
 public:
  void clear() { units_ = 0; }
  void add(double value);
  /// The double nearest to the sum.
  double value() const;

 private:
  __extension__ typedef __int128 Units;
  Units units_ = 0;
};

}  // namespace orvane::detail
