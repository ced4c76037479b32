#include "platform/trade/PositionSide.h"

#include <algorithm>

namespace orvane::detail {

Volume PositionSide::closable(bool ofToday) const {
  const Volume whole = volume_ - frozen_;
  // What is held back of the whole may need today's part once yesterday's is used up.
  return ofToday ? std::min(whole, today_ - frozenToday_) : whole;
}

void PositionSide::freeze(Volume volume, bool ofToday) {
  frozen_ += volume;
  if (ofToday) frozenToday_ += volume;
}

void PositionSide::unfreeze(Volume volume, bool ofToday) {
  frozen_ -= volume;
  if (ofToday) frozenToday_ -= volume;
}

PositionSide::Lot PositionSide::lotOf(const ContractTerms& terms, Price price, Volume volume,
                                      bool isToday) const {
  // Whoever opens made sure that these are in range; a part of a lot is smaller still.
  const Money turnover = turnoverOf(price, volume, terms.multiplier).value_or(Money{});
  const Money margin = shareOf(turnover, terms.marginRate).value_or(Money{});
  return {price, volume, turnover, margin, isToday};
}

void PositionSide::take(const Lot& lot) {
  volume_ += lot.volume;
  if (lot.isToday) today_ += lot.volume;
  openTurnover_ += lot.turnover;
  margin_ += lot.margin;
}

void PositionSide::drop(const Lot& lot) {
  volume_ -= lot.volume;
  if (lot.isToday) today_ -= lot.volume;
  openTurnover_ -= lot.turnover;
  margin_ -= lot.margin;
}

void PositionSide::open(const ContractTerms& terms, Price price, Volume volume) {
  lots_.push_back(lotOf(terms, price, volume, true));
  take(lots_.back());
}

Money PositionSide::close(const ContractTerms& terms, Volume volume, bool ofToday) {
  const Money before = openTurnover_;
  auto lot = lots_.begin();
  if (ofToday) lot = std::ranges::find_if(lots_, [](const Lot& each) { return each.isToday; });
  while (volume.isPositive() && lot != lots_.end()) {
    drop(*lot);
    if (lot->volume <= volume) {
      volume -= lot->volume;
      lot = lots_.erase(lot);
    } else {
      *lot = lotOf(terms, lot->price, lot->volume - volume, lot->isToday);
      take(*lot);
      volume = {};
    }
  }
  return before - openTurnover_;
}

void PositionSide::beginDay() {
  for (Lot& lot : lots_) lot.isToday = false;
  today_ = {};
}

Money PositionSide::settle(const ContractTerms& terms, Price price) {
  if (lots_.empty()) return {};
  const Money profit = floating(terms, price);
  const Volume whole = volume_;
  const Volume ofToday = today_;
  lots_.clear();
  volume_ = today_ = {};
  openTurnover_ = margin_ = {};
  for (const bool isToday : {false, true}) {
    const Volume part = isToday ? ofToday : whole - ofToday;
    if (!part.isPositive()) continue;
    lots_.push_back(lotOf(terms, price, part, isToday));
    take(lots_.back());
  }
  return profit;
}

Money PositionSide::floating(const ContractTerms& terms, Price price) const {
  if (lots_.empty()) return {};
  const auto value = turnoverOf(price, volume_, terms.multiplier);
  return value ? floatingAt(*value) : Money{};
}

}  // namespace orvane::detail
