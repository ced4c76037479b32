#include "platform/market/PublishedSeries.h"

#include <algorithm>

namespace orvane::detail {

PublishedSeries::PublishedSeries(const ICodeID& code, int64 periodMs, const std::string& timeZone) {
  const auto describe = [&](auto& series) {
    series.code = code;
    series.timeZone = timeZone;
    series.origin = "a publication";
  };
  if (periodMs > 0) {
    bars_ = std::make_shared<BarSeries>();
    bars_->periodMs = periodMs;
    describe(*bars_);
    return;
  }
  ticks_ = std::make_shared<TickSeries>();
  ticks_->columns = {{TickColumn::LastPrice},    {TickColumn::Volume},   {TickColumn::Turnover},
                     {TickColumn::OpenInterest}, {TickColumn::BidPrice}, {TickColumn::AskPrice}};
  describe(*ticks_);
}

void PublishedSeries::append(const IKLine& bar) {
  bars_->bars.push_back(bar);
  lastTime_.store(KLineView(bar).endTime(), std::memory_order_release);
}

void PublishedSeries::append(const IDepthMarketData& tick) {
  const QuoteView view(tick);
  double volume = view.volume();
  // A publisher may tell the day's total alone.
  if (volume == 0 && !ticks_->times.empty() && ticks_->tradingDays.back() == view.tradingDay())
    volume = std::max(0.0, view.totalVolume() - lastTotal_);
  lastTotal_ = view.totalVolume();
  ticks_->times.push_back(view.time());
  ticks_->tradingDays.push_back(view.tradingDay());
  for (const double cell : {view.lastPrice(), volume, view.turnover(), view.openInterest(),
                            view.bidPrice(), view.askPrice()})
    ticks_->cells.push_back(cell);
  {
    const std::lock_guard lock(mutex_);
    records_.push_back(tick);
  }
  lastTime_.store(view.time(), std::memory_order_release);
}

void PublishedSeries::clear() {
  lastTime_.store(kNoTime, std::memory_order_release);
  if (bars_ != nullptr) bars_->bars.clear();
  if (ticks_ == nullptr) return;
  ticks_->times.clear();
  ticks_->tradingDays.clear();
  ticks_->cells.clear();
  const std::lock_guard lock(mutex_);
  records_.clear();
}

bool PublishedSeries::fillTick(std::size_t row, IDepthMarketData& tick) const {
  const std::lock_guard lock(mutex_);
  if (row >= records_.size()) return false;
  tick = records_[row];
  return true;
}

}  // namespace orvane::detail
