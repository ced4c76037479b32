#include "platform/market/Series.h"

#include <algorithm>

namespace orvane {
namespace {

/// Where a column that is no ladder column stands in `block1`.
quote::Block1 positionOf(TickColumn column) {
  switch (column) {
    case TickColumn::LastPrice:
      return quote::LastPrice;
    case TickColumn::Open:
      return quote::Open;
    case TickColumn::High:
      return quote::High;
    case TickColumn::Low:
      return quote::Low;
    case TickColumn::PreClose:
      return quote::PreClose;
    case TickColumn::PreSettle:
      return quote::PreSettle;
    case TickColumn::Settle:
      return quote::Settle;
    case TickColumn::UpperLimit:
      return quote::UpperLimit;
    case TickColumn::LowerLimit:
      return quote::LowerLimit;
    case TickColumn::TotalVolume:
      return quote::TotalVolume;
    case TickColumn::Volume:
      return quote::Volume;
    case TickColumn::TotalTurnover:
      return quote::TotalTurnover;
    case TickColumn::Turnover:
      return quote::Turnover;
    default:
      return quote::OpenInterest;
  }
}

/// One side of the ladder while a row is read.
struct Side {
  std::array<double, 10> prices{};
  std::array<double, 10> sizes{};

  int levels() const {
    return static_cast<int>(
        std::count_if(prices.begin(), prices.end(), [](double p) { return p != 0; }));
  }
};

}  // namespace

void TickSeries::fill(std::size_t row, IDepthMarketData& quote) const {
  quote.code = code;
  quote.block1.fill(0);
  quote.block2.fill(0);
  quote.block3 = IDepthMarketData{}.block3;
  quote.levels.fill({});
  quote.extras.clear();

  QuoteWriter writer(quote);
  writer.setTime(times[row]);
  Side bid;
  Side ask;
  const double* cell = cells.data() + row * columns.size();
  int flags = 0;
  for (const TickColumnId& id : columns) {
    const double value = *cell++;
    switch (id.column) {
      case TickColumn::BidPrice:
        bid.prices[id.level] = value;
        break;
      case TickColumn::BidSize:
        bid.sizes[id.level] = value;
        break;
      case TickColumn::AskPrice:
        ask.prices[id.level] = value;
        break;
      case TickColumn::AskSize:
        ask.sizes[id.level] = value;
        break;
      case TickColumn::LastPrice:
        if (value != 0) flags |= quote::kHasTrade;
        [[fallthrough]];
      default:
        writer.set(positionOf(id.column), value);
    }
  }
  for (std::size_t level = 0; level < 10; ++level) {
    if (bid.prices[level] != 0) writer.setBid(level, bid.prices[level], bid.sizes[level]);
    if (ask.prices[level] != 0) writer.setAsk(level, ask.prices[level], ask.sizes[level]);
  }
  const int bidLevels = bid.levels();
  const int askLevels = ask.levels();
  if (bidLevels > 0) flags |= quote::kHasBid;
  if (askLevels > 0) flags |= quote::kHasAsk;
  writer.set(quote::TradingDay, tradingDays[row]);
  writer.set(quote::BidLevels, bidLevels);
  writer.set(quote::AskLevels, askLevels);
  writer.set(quote::Flags, flags);
}

}  // namespace orvane
