#include "platform/trade/TradeFeed.h"

#include <algorithm>

#include "platform/trade/BarMatcher.h"

namespace orvane::detail {
namespace {

bool tellsPrices(const MarketStream& stream) {
  if (!stream.isTicks()) return true;
  return stream.column(TickColumn::LastPrice) >= 0 || stream.column(TickColumn::BidPrice) >= 0 ||
         stream.column(TickColumn::AskPrice) >= 0;
}

/// Whether a row of a stream that files feed tells a price to reckon with.
bool hasMark(const MarketStream& stream, std::size_t row) {
  if (!stream.isTicks()) return closeOf(stream.bars().bars[row]).has_value();
  const TickSeries& ticks = stream.ticks();
  constexpr TickColumn kPrices[] = {TickColumn::LastPrice, TickColumn::BidPrice,
                                    TickColumn::AskPrice};
  return std::ranges::any_of(kPrices, [&](TickColumn column) {
    const int at = stream.column(column);
    return at >= 0 && ticks.cells[row * ticks.columns.size() + static_cast<std::size_t>(at)] > 0;
  });
}

}  // namespace

void TradeFeed::lookAtStreams() {
  if (store_.streamCount() == lines_.size()) return;
  const std::vector<MarketStream*> streams = store_.streams();
  lines_.resize(streams.size());
  byCode_.clear();
  for (const MarketStream* stream : streams) {
    lines_[stream->order()].stream = stream;
    lines_[stream->order()].isQuiet = false;  // Another one may be fed from now on.
    if (!tellsPrices(*stream)) continue;
    const auto [at, isNew] = byCode_.try_emplace(stream->code().id, stream->order());
    // Ticks have the period 0. Of what runners publish the first series stays: it may be fed now.
    if (!isNew && stream->published() == nullptr &&
        stream->periodMs() < lines_[at->second].stream->periodMs())
      at->second = stream->order();
  }
  adoptStreams();
}

void TradeFeed::adoptStreams() {
  std::erase_if(unfed_, [this](int64 codeId) {
    const auto at = byCode_.find(codeId);
    if (at == byCode_.end()) return false;
    lines_[at->second].isActive = true;
    return true;
  });
}

void TradeFeed::begin(int64 codeId, PaperExchange& exchange) {
  // Where no order waits any more the last record known harms nobody, and tells the price.
  if (!exchange.isBusy(codeId)) unfed_.erase(codeId);
  lookAtStreams();
  const auto at = byCode_.find(codeId);
  if (at == byCode_.end()) {
    unfed_.insert(codeId);
    return;
  }
  Line& line = lines_[at->second];
  line.isQuiet = false;
  if (line.isActive) return;
  line.isActive = true;
  const std::size_t known = line.stream->known.load();
  if (known <= line.fed) return;
  const auto feedAt = [&](std::size_t row) {
    feed(*line.stream, row, exchange, shown(line.stream->timeAt(row)));
  };
  // The price is the last one that was told, whoever traded in the code meanwhile.
  if (line.stream->published() == nullptr && !hasMark(*line.stream, known - 1)) {
    std::size_t row = known - 1;
    while (row > line.fed && !hasMark(*line.stream, row)) --row;
    if (row < known - 1) feedAt(row);
  }
  feedAt(known - 1);
  line.fed = known;
}

void TradeFeed::feedNext(const MarketStream& stream, PaperExchange& exchange, int64 now) {
  const std::size_t row = stream.known.load(std::memory_order_relaxed);
  feed(stream, row, exchange, now);
  lines_[stream.order()].fed = row + 1;
}

void TradeFeed::noteQuiet(const MarketStream& stream, bool isQuiet) {
  Line& line = lines_[stream.order()];
  // Ticks tell limits and days of their own; what is published may be taken away again.
  line.isQuiet = isQuiet && !stream.isTicks() && stream.published() == nullptr;
  if (line.isQuiet) line.day = KLineView(stream.bars().bars[line.fed - 1]).tradingDay();
}

void TradeFeed::feed(const MarketStream& stream, std::size_t row, PaperExchange& exchange,
                     int64 now) {
  if (stream.isTicks()) {
    stream.fillTick(row, tick_);
    shift_.show(tick_);
    exchange.onTick(stream.code().id, tick_, now);
    return;
  }
  const Rows<IKLine>& bars = stream.bars().bars;
  const int64 previousEnd =
      row == 0 ? KLineView(bars[row]).beginTime() : KLineView(bars[row - 1]).endTime();
  IKLine bar = bars[row];
  shift_.show(bar);
  exchange.onBar(stream.code().id, bar, shown(previousEnd), now);
}

}  // namespace orvane::detail
