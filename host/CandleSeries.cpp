#include "host/CandleSeries.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"

namespace orvane {
namespace {

constexpr int64 kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;
constexpr int64 kWeek = 7 * kDay;

/// Each fits whole into the next, so that what was put together never has to be taken apart.
constexpr std::array kWidths = {kSecond,     5 * kSecond,  15 * kSecond, kMinute,
                                5 * kMinute, 15 * kMinute, 30 * kMinute, kHour,
                                4 * kHour,   kDay,         kWeek};

int64 widthAfter(int64 widthMs) {
  const auto* const next = std::ranges::upper_bound(kWidths, widthMs);
  return next != kWidths.end() ? *next : 2 * widthMs;
}

void merge(Candle& into, const Candle& next) {
  into.high = std::max(into.high, next.high);
  into.low = std::min(into.low, next.low);
  into.close = next.close;
  into.volume += next.volume;
}

double volumeOrNone(double volume) { return std::isfinite(volume) && volume > 0 ? volume : 0; }

/// The price of a tick; not a number where it has none.
double priceOf(const QuoteView& tick, bool showsTrades) {
  if (tick.hasTrade()) return tick.lastPrice();
  if (showsTrades || !tick.hasBid() || !tick.hasAsk()) return std::nan("");
  return (tick.bidPrice() + tick.askPrice()) / 2;
}

}  // namespace

CandleSeries::CandleSeries(std::size_t most, std::shared_ptr<const ZoneOffsets> zone)
    : most_(std::max<std::size_t>(most, 2)), zone_(std::move(zone)) {}

int64 CandleSeries::bucketOf(int64 utcMs) const {
  // The first of January 1970 was a Thursday.
  const int64 local = zone_->toLocal(utcMs) + (widthMs_ >= kWeek ? 3 * kDay : 0);
  return local >= 0 ? local / widthMs_ : (local - widthMs_ + 1) / widthMs_;
}

void CandleSeries::addBar(const IKLine& bar) {
  const KLineView view(bar);
  const Candle candle{view.beginTime(), view.open(),  view.high(),
                      view.low(),       view.close(), view.isQuoteBar() ? 0 : view.volume()};
  const bool isNew = lastTime_ == kUnsetTime || view.endTime() > lastTime_;
  const bool hasPrices = std::isfinite(candle.open) && std::isfinite(candle.high) &&
                         std::isfinite(candle.low) && std::isfinite(candle.close);
  if (!isNew || !hasPrices) {
    ++passedOver_;
    return;
  }
  lastTime_ = view.endTime();
  add(candle);
}

void CandleSeries::addTick(const IDepthMarketData& tick) {
  const QuoteView view(tick);
  showsTrades_ = showsTrades_ || view.hasTrade();
  const double price = priceOf(view, showsTrades_);
  const bool isLate = lastTime_ != kUnsetTime && view.time() < lastTime_;
  if (isLate || !std::isfinite(price)) {
    ++passedOver_;
    return;
  }
  // Several ticks may have one time, and a chart has but one candle for it.
  if (widthMs_ == 0) widthMs_ = kWidths.front();
  lastTime_ = view.time();
  add({view.time(), price, price, price, price, view.volume()});
}

void CandleSeries::add(const Candle& candle) {
  ++records_;
  const int64 bucket = widthMs_ == 0 ? 0 : bucketOf(candle.time);
  const bool isSame = !candles_.empty() && (candle.time <= candles_.back().time ||
                                            (widthMs_ != 0 && bucket == lastBucket_));
  lastBucket_ = bucket;
  Candle added = candle;
  added.volume = volumeOrNone(candle.volume);
  if (isSame) {
    merge(candles_.back(), added);
    return;
  }
  candles_.push_back(added);
  if (candles_.size() > most_) widen();
}

void CandleSeries::widen() {
  while (candles_.size() > most_) {
    widthMs_ = widthAfter(widthMs_);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < candles_.size(); ++i) {
      const int64 bucket = bucketOf(candles_[i].time);
      if (i != 0 && bucket == lastBucket_)
        merge(candles_[kept - 1], candles_[i]);
      else
        candles_[kept++] = candles_[i];
      lastBucket_ = bucket;
    }
    candles_.resize(kept);
  }
}

}  // namespace orvane
