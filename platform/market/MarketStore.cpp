#include "platform/market/MarketStore.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace orvane::detail {

DerivedSeries::DerivedSeries(MarketStream& base, const TermPair& term,
                             std::shared_ptr<const ZoneRules> zone)
    : base_(base), term_(term), builder_(BucketRule(term, std::move(zone))) {}

void DerivedSeries::catchUp(int64 closedThrough) {
  for (const std::size_t known = base_.known.load(); rows_ < known; ++rows_) {
    // As in the feed: what ended before a record's time was closed before the record came.
    builder_.closeAt(base_.timeAt(rows_) - 1, bars_);
    addRow(rows_);
  }
  builder_.closeAt(closedThrough, bars_);
}

void DerivedSeries::skipSent(int64 closedThrough) {
  sent = bars_.size();
  if (!base_.isTicks()) return;
  while (sent > 0 && KLineView(bars_[sent - 1]).endTime() > closedThrough) --sent;
}

void DerivedSeries::addRow(std::size_t row) {
  // What was published late changes no bar that is complete.
  if (base_.published() != nullptr) {
    const int64 time = base_.timeAt(row);
    if (base_.isTicks() ? time < builder_.lastEnd() : time <= builder_.lastEnd()) return;
  }
  if (base_.isTicks())
    addTick(row);
  else
    builder_.addBar(base_.bars().bars[row], bars_);
}

void DerivedSeries::addTick(std::size_t row) {
  const TickSeries& ticks = base_.ticks();
  const auto cell = [&](TickColumn column, std::size_t at) {
    const int position = base_.column(column);
    return position < 0 ? 0.0 : ticks.cells[at * ticks.columns.size() + position];
  };
  const bool sameDay = row > 0 && ticks.tradingDays[row - 1] == ticks.tradingDays[row];
  // What came with this tick: the column itself, or the growth of the day's total.
  const auto grown = [&](TickColumn single, TickColumn total) {
    if (base_.column(single) >= 0) return cell(single, row);
    const double now = cell(total, row);
    const double before = sameDay ? cell(total, row - 1) : 0;
    return now >= before ? now - before : now;
  };
  // Whoever publishes a price means it, also without a volume.
  const bool hasVolume =
      base_.published() == nullptr &&
      (base_.column(TickColumn::Volume) >= 0 || base_.column(TickColumn::TotalVolume) >= 0);
  BarBuilder::Trade trade;
  trade.time = ticks.times[row];
  trade.tradingDay = ticks.tradingDays[row];
  trade.volume = grown(TickColumn::Volume, TickColumn::TotalVolume);
  trade.turnover = grown(TickColumn::Turnover, TickColumn::TotalTurnover);
  trade.openInterest = cell(TickColumn::OpenInterest, row);
  const double last = cell(TickColumn::LastPrice, row);
  trade.price = last > 0 && (!hasVolume || trade.volume > 0) ? last : 0;
  builder_.addTrade(trade, bars_);
}

MarketStream::MarketStream(std::shared_ptr<const BarSeries> bars, std::size_t order)
    : bars_(std::move(bars)), order_(order) {}

MarketStream::MarketStream(std::shared_ptr<const TickSeries> ticks, std::size_t order)
    : ticks_(std::move(ticks)), order_(order) {
  columns_.fill(-1);
  for (std::size_t i = 0; i < ticks_->columns.size(); ++i)
    if (ticks_->columns[i].level == 0)
      columns_[static_cast<std::size_t>(ticks_->columns[i].column)] = static_cast<int>(i);
}

MarketStream::MarketStream(std::shared_ptr<PublishedSeries> published, std::size_t order)
    : bars_(published->bars()),
      ticks_(published->ticks()),
      published_(std::move(published)),
      order_(order) {
  columns_.fill(-1);
  if (ticks_ == nullptr) return;
  for (std::size_t i = 0; i < ticks_->columns.size(); ++i)
    columns_[static_cast<std::size_t>(ticks_->columns[i].column)] = static_cast<int>(i);
}

std::size_t MarketStream::lowerBound(int64 time) const {
  std::size_t low = 0;
  for (std::size_t high = rows(); low < high;) {
    const std::size_t middle = low + (high - low) / 2;
    if (timeAt(middle) < time)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

MarketStore::MarketStore(int64 from, int64 to, std::shared_ptr<const ZoneRules> platformZone)
    : from_(from), to_(to), platformZone_(std::move(platformZone)) {}

void MarketStore::add(std::shared_ptr<const BarSeries> bars) {
  if (bars->periodMs <= 0)
    throw std::invalid_argument(bars->origin + ": the period is not above 0");
  const std::lock_guard lock(mutex_);
  refusePublished(bars->code.id, bars->origin);
  for (const MarketStream* known : byCode_[bars->code.id])
    if (known->periodMs() == bars->periodMs)
      throw std::invalid_argument(bars->origin + ": bars of this code and period were given by " +
                                  known->bars().origin);
  addStream(std::make_unique<MarketStream>(std::move(bars), streams_.size()));
}

void MarketStore::add(std::shared_ptr<const TickSeries> ticks) {
  const std::size_t rows = ticks->times.size();
  if (ticks->tradingDays.size() != rows || ticks->cells.size() != rows * ticks->columns.size())
    throw std::invalid_argument(ticks->origin + ": the columns differ in length");
  const std::lock_guard lock(mutex_);
  refusePublished(ticks->code.id, ticks->origin);
  for (const MarketStream* known : byCode_[ticks->code.id])
    if (known->isTicks())
      throw std::invalid_argument(ticks->origin + ": ticks of this code were given by " +
                                  known->ticks().origin);
  addStream(std::make_unique<MarketStream>(std::move(ticks), streams_.size()));
}

void MarketStore::refusePublished(int64 codeId, const std::string& origin) const {
  const auto at = byCode_.find(codeId);
  if (at == byCode_.end()) return;
  for (const MarketStream* known : at->second)
    if (known->published() != nullptr)
      throw std::invalid_argument(origin + ": this code is fed by publications");
}

MarketStream& MarketStore::addStream(std::unique_ptr<MarketStream> stream) {
  const bool strict = !stream->isTicks();
  const bool isOrdered = strict ? stream->bars().isOrdered : stream->ticks().isOrdered;
  // Looking through a mapped series would bring all of it into memory.
  for (std::size_t row = 1; !isOrdered && row < stream->rows(); ++row)
    if (stream->timeAt(row) < stream->timeAt(row - 1) + (strict ? 1 : 0))
      throw std::invalid_argument((strict ? stream->bars().origin : stream->ticks().origin) +
                                  ": row " + std::to_string(row) + " runs backwards in time");
  if (from_ != kUnsetTime) stream->known.store(stream->lowerBound(from_));
  byCode_[stream->code().id].push_back(stream.get());
  streams_.push_back(std::move(stream));
  return *streams_.back();
}

MarketStream* MarketStore::ticksOf(int64 codeId) const {
  const std::lock_guard lock(mutex_);
  const auto at = byCode_.find(codeId);
  if (at == byCode_.end()) return nullptr;
  for (MarketStream* stream : at->second)
    if (stream->isTicks()) return stream;
  return nullptr;
}

MarketStream* MarketStore::sourceOf(int64 codeId, const TermPair& term) const {
  const std::lock_guard lock(mutex_);
  const auto at = byCode_.find(codeId);
  if (at == byCode_.end() || term.count <= 0) return nullptr;
  MarketStream* best = nullptr;
  for (MarketStream* stream : at->second) {
    if (!stream->hasPrices()) continue;
    if (stream->periodMs() == periodMsOf(term)) return stream;
    const bool fits = stream->isTicks() || periodDivides(stream->periodMs(), term);
    if (fits && (best == nullptr || stream->periodMs() > best->periodMs())) best = stream;
  }
  return best;
}

int64 MarketStore::beginTime() const {
  if (from_ != kUnsetTime) return from_;
  const std::lock_guard lock(mutex_);
  int64 first = kUnsetTime;
  for (const auto& stream : streams_)
    if (stream->published() == nullptr && stream->rows() > 0)
      first = std::min(first, stream->timeAt(0));
  return first == kUnsetTime ? 0 : first;
}

bool MarketStore::hasRecords() const {
  const std::lock_guard lock(mutex_);
  return std::any_of(streams_.begin(), streams_.end(), [](const auto& stream) {
    return stream->published() == nullptr && stream->rows() > 0;
  });
}

MarketStream* MarketStore::exactOf(int64 codeId, int64 periodMs) const {
  const std::lock_guard lock(mutex_);
  const auto at = byCode_.find(codeId);
  if (at == byCode_.end()) return nullptr;
  for (MarketStream* stream : at->second)
    if (stream->periodMs() == periodMs) return stream;
  return nullptr;
}

bool MarketStore::hasFileOf(int64 codeId) const {
  const std::lock_guard lock(mutex_);
  const auto at = byCode_.find(codeId);
  return at != byCode_.end() &&
         std::any_of(at->second.begin(), at->second.end(),
                     [](const MarketStream* stream) { return stream->published() == nullptr; });
}

MarketStream& MarketStore::publishedOf(const ICodeID& code, int64 periodMs,
                                       const std::string& timeZone) {
  if (MarketStream* known = exactOf(code.id, periodMs)) return *known;
  const std::lock_guard lock(mutex_);
  return addStream(std::make_unique<MarketStream>(
      std::make_shared<PublishedSeries>(code, periodMs, timeZone), streams_.size()));
}

std::vector<MarketStream*> MarketStore::streams() const {
  const std::lock_guard lock(mutex_);
  std::vector<MarketStream*> all;
  for (const auto& stream : streams_) all.push_back(stream.get());
  return all;
}

std::size_t MarketStore::streamCount() const {
  const std::lock_guard lock(mutex_);
  return streams_.size();
}

DerivedSeries& MarketStore::derive(MarketStream& base, const TermPair& term, int64 closedThrough) {
  DerivedSeries* found = nullptr;
  for (DerivedSeries* series : base.derived)
    if (series->term() == term) found = series;
  if (found == nullptr) {
    derived_.push_back(std::make_unique<DerivedSeries>(base, term, zoneOf(base)));
    found = derived_.back().get();
    base.derived.push_back(found);
    std::stable_sort(base.derived.begin(), base.derived.end(), [](const auto* a, const auto* b) {
      return periodMsOf(a->term()) < periodMsOf(b->term());
    });
    found->catchUp(closedThrough);
    found->skipSent(closedThrough);
  }
  return *found;
}

std::shared_ptr<const ZoneRules> MarketStore::zoneOf(const MarketStream& stream) const {
  auto zone = ZoneRules::find(stream.timeZone());
  return zone != nullptr ? zone : platformZone_;
}

void MarketStore::rewind(int64 closedThrough) {
  for (MarketStream* stream : streams()) {
    if (stream->published() != nullptr) stream->published()->clear();
    stream->known.store(from_ == kUnsetTime ? 0 : stream->lowerBound(from_));
  }
  for (auto& series : derived_) {
    auto fresh =
        std::make_unique<DerivedSeries>(series->base(), series->term(), zoneOf(series->base()));
    fresh->live = std::move(series->live);
    std::replace(series->base().derived.begin(), series->base().derived.end(), series.get(),
                 fresh.get());
    series = std::move(fresh);
    series->catchUp(closedThrough);
    series->skipSent(closedThrough);
  }
}

}  // namespace orvane::detail
