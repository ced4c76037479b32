#include "platform/market/Series.h"

#include <algorithm>

namespace orvane {
namespace {

constexpr quote::Block1 kPositions[] = {
    quote::LastPrice,  quote::Open,        quote::High,   quote::Low,
    quote::PreClose,   quote::PreSettle,   quote::Settle, quote::UpperLimit,
    quote::LowerLimit, quote::TotalVolume, quote::Volume, quote::TotalTurnover,
    quote::Turnover,   quote::OpenInterest};

void clearCarried(IDepthMarketData& record) {
  record.block1.fill(0);
  record.block2.fill(0);
  record.block3.fill(0);
  record.block3[7] = std::bit_cast<Word>(1.0);
  record.levels.fill(DepthLevel{});
  if (!record.extras.empty()) record.extras.clear();
}

}  // namespace

void TickSeries::fill(std::size_t row, IDepthMarketData& record) const {
  clearCarried(record);
  // The texts of a code are only copied when the record was another code's.
  if (record.code.id != code.id || record.code.code != code.code) record.code = code;
  QuoteWriter writer(record);
  writer.setTime(times[row]);
  writer.set(quote::TradingDay, tradingDays[row]);
  const double* cell = cells.data() + row * columns.size();
  bool traded = false;
  int bids = 0, asks = 0;  // Up to the last level with a price.
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const TickColumnId id = columns[i];
    const double value = cell[i];
    DepthLevel& level = record.levels[id.level];
    switch (id.column) {
      case TickColumn::BidPrice:
        level.value1 = std::bit_cast<Word>(value);
        if (value != 0) bids = std::max(bids, id.level + 1);
        break;
      case TickColumn::BidSize:
        level.value3 = value;
        break;
      case TickColumn::AskPrice:
        level.value2 = std::bit_cast<Word>(value);
        if (value != 0) asks = std::max(asks, id.level + 1);
        break;
      case TickColumn::AskSize:
        (id.level < 7 ? record.block3[id.level] : record.block1[quote::AskSize8 + id.level - 7]) =
            std::bit_cast<Word>(value);
        break;
      case TickColumn::LastPrice:
        traded = value != 0;
        [[fallthrough]];
      default:
        writer.set(kPositions[static_cast<std::size_t>(id.column)], value);
    }
  }
  const QuoteView view(record);
  writer.set(quote::BidLevels, bids);
  writer.set(quote::AskLevels, asks);
  writer.set(quote::Flags, (traded ? quote::kHasTrade : 0) |
                               (view.bidPrice() != 0 ? quote::kHasBid : 0) |
                               (view.askPrice() != 0 ? quote::kHasAsk : 0));
}

}  // namespace orvane
