#include "platform/market/BarBuilder.h"

#include <algorithm>

#include "platform/core/Periods.h"

namespace orvane::detail {

void BarBuilder::addBar(const IKLine& bar, std::vector<IKLine>& out) {
  const KLineView view(bar);
  enter(view.beginTime(), view.tradingDay(), out);
  const int flags = view.flags();
  const bool quoteBar = (flags & kline::kQuoteBar) != 0;
  const bool askPrices = quoteBar && (flags & kline::kBidMissing) != 0;
  if (!priced_) {
    flags_ = flags;
    fromAsk_ = askPrices;
  } else {
    // A side is missing in the whole only if it is in every part.
    constexpr int kMissing = kline::kBidMissing | kline::kAskMissing;
    flags_ = ((flags_ | flags) & ~kMissing) | (flags_ & flags & kMissing);
  }
  if (fromAsk_ && !askPrices) {
    priced_ = false;  // The first bid: the ask's prices only stood in for it.
    fromAsk_ = false;
  }
  if (askPrices == fromAsk_) addPrices(view.open(), view.high(), view.low(), view.close());
  if (quoteBar) {
    if ((flags & kline::kBidMissing) == 0) bidSize_ = view.bidSize();
    if ((flags & kline::kAskMissing) == 0) {
      askSize_ = view.askSize();
      askClose_ = view.askClose();
    }
  } else {
    volume_.add(view.volume());
    turnover_.add(view.turnover());
  }
  openInterest_ = view.openInterest();
  if (view.endTime() >= end_) close(out);
}

void BarBuilder::addTrade(const Trade& trade, std::vector<IKLine>& out) {
  closeAt(trade.time, out);
  if (trade.price == 0) {
    if (open_ && trade.openInterest != 0) openInterest_ = trade.openInterest;
    return;
  }
  enter(trade.time, trade.tradingDay, out);
  addPrices(trade.price, trade.price, trade.price, trade.price);
  volume_.add(trade.volume);
  turnover_.add(trade.turnover);
  openInterest_ = trade.openInterest;
}

void BarBuilder::closeAt(int64 time, std::vector<IKLine>& out) {
  if (open_ && end_ <= time) close(out);
}

void BarBuilder::enter(int64 begin, int tradingDay, std::vector<IKLine>& out) {
  if (open_) {
    const bool same = rule_.byTradingDay()
                          ? tradingDay == tradingDay_ || rule_.keyOf(begin, tradingDay) == key_
                          : begin < end_;
    if (same) {
      tradingDay_ = tradingDay;
      return;
    }
    // A night session opens the next trading day before midnight: the old one ends there.
    end_ = std::max(begin_ + 1, std::min(end_, begin));
    close(out);
  }
  const BucketRule::Bucket bucket = rule_.bucketOf(begin, tradingDay);
  open_ = true;
  key_ = bucket.key;
  tradingDay_ = tradingDay;
  begin_ = std::max(lastEnd_, std::min(bucket.begin, begin));
  end_ = bucket.end;
  // Records after their trading day's own midnight.
  if (end_ <= begin) end_ = rule_.bucketOf(begin, 0).end;
  priced_ = fromAsk_ = false;
  flags_ = 0;
  openInterest_ = bidSize_ = askSize_ = askClose_ = 0;
  volume_.clear();
  turnover_.clear();
}

void BarBuilder::close(std::vector<IKLine>& out) {
  IKLine& bar = out.emplace_back();
  KLineWriter writer(bar);
  writer.setTimes(begin_, end_);
  writer.set(kline::Open, openPrice_);
  writer.set(kline::High, high_);
  writer.set(kline::Low, low_);
  writer.set(kline::Close, closePrice_);
  const bool quoteBar = (flags_ & kline::kQuoteBar) != 0;
  writer.set(kline::Volume, quoteBar ? bidSize_ : volume_.value());
  writer.set(kline::Turnover, quoteBar ? askSize_ : turnover_.value());
  writer.set(kline::OpenInterest, openInterest_);
  writer.set(kline::AskClose, askClose_);
  writer.setDayAndFlags(tradingDay_, flags_);
  lastEnd_ = end_;
  open_ = false;
}

void BarBuilder::addPrices(double open, double high, double low, double close) {
  if (!priced_) {
    openPrice_ = open;
    high_ = high;
    low_ = low;
    priced_ = true;
  } else {
    high_ = std::max(high_, high);
    low_ = std::min(low_, low);
  }
  closePrice_ = close;
}

}  // namespace orvane::detail
