#include "platform/trade/PriceRun.h"

#include <cstdlib>
#include <optional>

namespace orvane::detail {

PriceRun::PriceRun(const Start& start)
    : start_(start),
      volume_(toDouble(start.side->volume())),
      multiplier_(toDouble(start.multiplier)),
      price_(start.price),
      equity_(toDouble(start.others + start.side->floatingAt(start.value))),
      exposure_(volume_ * toDouble(start.price) * multiplier_) {
  findSteps();
}

void PriceRun::findSteps() {
  constexpr int64 kPart = 100'000'000'000'000;  // Of money: a part of `kPartsOfMoney`.
  constexpr int64 kExact = int64{1} << 53;
  const auto step = turnoverOf(kHundredth, start_.side->volume(), start_.multiplier);
  const Money base = start_.others + start_.side->floatingAt(Money{});
  constexpr Int128 kLimit = Int128{kExact} * kPart;
  if (!step || !step->isPositive() || step->units >= kLimit) return;
  if (base.units >= kLimit || base.units <= -kLimit) return;
  const auto baseParts = static_cast<int64>(base.units / kPart);
  const auto stepParts = static_cast<int64>(step->units / kPart);
  if (Int128{baseParts} * kPart != base.units || Int128{stepParts} * kPart != step->units) return;
  const int64 most = (kExact - std::abs(baseParts)) / stepParts;
  // What the account refuses is not for the short way either.
  if (step->units * Int128{most} > start_.most.units) return;
  const bool isLong = start_.side->floatingAt(*step) > start_.side->floatingAt(Money{});
  base_ = baseParts;
  step_ = isLong ? stepParts : -stepParts;
  mostHundredths_ = most;
}

/// Any number that is a price.
void PriceRun::takeAny(double number) {
  const auto price = priceOf(number);
  if (!price) return;
  const auto value = turnoverOf(*price, start_.side->volume(), start_.multiplier);
  if (!value || *value > start_.most) return;
  price_ = *price;
  equity_ = toDouble(start_.others + start_.side->floatingAt(*value));
  exposure_ = volume_ * toDouble(*price) * multiplier_;
}

}  // namespace orvane::detail
