#pragma once

#include "platform/trade/Amounts.h"
#include "platform/trade/PositionSide.h"

namespace orvane::detail {

/// What an account is worth at one price of a code after the other, while nothing else of it
/// changes: it holds one side of the code, from one create source. Good as long as the account's
/// book stays as it is. For one thread at a time.
class PriceRun {
 public:
  struct Start {
    const PositionSide* side = nullptr;
    Multiplier multiplier;
    Price price;   ///< The last one.
    Money value;   ///< Of the side, at that price.
    Money most;    ///< What it may be worth; see `Ledger::mark`.
    Money others;  ///< What the account is worth without the side's floating profit.
  };

  PriceRun() = default;  ///< Of no side: of no use.
  explicit PriceRun(const Start& start);

  /// Takes the next price, the close of a bar that `hasPrices`, as `Ledger::mark` would.
  void take(double price) {
    const auto hundredths = ofFewDecimals<2>(price);
    if (!hundredths || *hundredths > mostHundredths_) return takeAny(price);
    // An integer up to 2^53 and a power of ten: the quotient is the nearest double.
    equity_ = static_cast<double>(base_ + step_ * *hundredths) / kPartsOfMoney;
    exposure_ = volume_ * price * multiplier_;
    price_ = {*hundredths * kHundredth.units};
  }

  /// The last price that was taken.
  Price price() const { return price_; }
  /// `Ledger::equity` and `Ledger::exposureOf` of the code as numbers, once it has the same price.
  double equity() const { return equity_; }
  double exposure() const { return exposure_; }

 private:
  static constexpr Price kHundredth{100'000'000};
  static constexpr double kPartsOfMoney = 1e8;

  void takeAny(double price);
  void findSteps();

  Start start_;
  double volume_ = 0, multiplier_ = 0;
  Price price_;
  double equity_ = 0, exposure_ = 0;
  /// At a price of `h` hundredths the account is worth `base_ + step_ * h` parts, up to so many of
  /// them; none where these are no integers that a double tells.
  int64 base_ = 0, step_ = 0, mostHundredths_ = 0;
};

}  // namespace orvane::detail
