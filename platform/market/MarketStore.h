#pragma once

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/core/ZoneRules.h"
#include "platform/market/BarBuilder.h"
#include "platform/market/MarketRequest.h"
#include "platform/market/PublishedSeries.h"
#include "platform/market/Series.h"

namespace orvane::detail {

class MarketStream;

/// Bars of a period that no file has, made from a stream as far as the stream is known. For
/// whoever has the turn.
class DerivedSeries {
 public:
  DerivedSeries(MarketStream& base, const TermPair& term, std::shared_ptr<const ZoneRules> zone);

  MarketStream& base() const { return base_; }
  const TermPair& term() const { return term_; }
  const std::vector<IKLine>& bars() const { return bars_; }  ///< The complete ones.
  int64 openEnd() const { return builder_.openEnd(); }

  /// Takes in what the stream knows by now, and closes what ended at or before `closedThrough`.
  void catchUp(int64 closedThrough);
  void closeAt(int64 time) { builder_.closeAt(time, bars_); }
  /// Takes for delivered what a series that stood all along would have delivered by now. A tick
  /// that ends a bar is of the next one, and the bar goes out after all records of that instant.
  void skipSent(int64 closedThrough);

  RequestList live;
  std::size_t sent = 0;  ///< The bars that are history; those beyond are about to be delivered.

 private:
  void addRow(std::size_t row);
  void addTick(std::size_t row);

  MarketStream& base_;
  TermPair term_;
  BarBuilder builder_;
  std::vector<IKLine> bars_;
  std::size_t rows_ = 0;  ///< Rows of the stream that were taken in.
};

/// One series in the feed. The data never change, but that a published series grows; `known` is how
/// many rows were played or are history, readable by any thread. The lists are for whoever has the
/// turn.
class MarketStream {
 public:
  MarketStream(std::shared_ptr<const BarSeries> bars, std::size_t order);
  MarketStream(std::shared_ptr<const TickSeries> ticks, std::size_t order);

  MarketStream(std::shared_ptr<PublishedSeries> published, std::size_t order);

  /// The series if runners publish it; null if it came from files.
  PublishedSeries* published() const { return published_.get(); }
  bool isTicks() const { return ticks_ != nullptr; }
  const BarSeries& bars() const { return *bars_; }
  const TickSeries& ticks() const { return *ticks_; }
  const ICodeID& code() const { return isTicks() ? ticks_->code : bars_->code; }
  const std::string& timeZone() const { return isTicks() ? ticks_->timeZone : bars_->timeZone; }
  int64 periodMs() const { return isTicks() ? 0 : bars_->periodMs; }
  std::size_t order() const { return order_; }
  std::size_t rows() const { return isTicks() ? ticks_->rows() : bars_->bars.size(); }
  /// When a row is known: a tick at its time, a bar at its end.
  int64 timeAt(std::size_t row) const {
    return isTicks() ? ticks_->times[row] : bars_->bars[row].words[kline::EndTime];
  }
  /// Makes `tick` the record of a row; false if a rewind took it away. Any thread may call it.
  bool fillTick(std::size_t row, IDepthMarketData& tick) const {
    if (published_ != nullptr) return published_->fillTick(row, tick);
    ticks_->fill(row, tick);
    return true;
  }
  /// Whether bars can be made of it.
  bool hasPrices() const { return !isTicks() || column(TickColumn::LastPrice) >= 0; }
  /// The position of a column of a tick series in its rows, or -1.
  int column(TickColumn wanted) const { return columns_[static_cast<std::size_t>(wanted)]; }
  /// The first row at or after `time`.
  std::size_t lowerBound(int64 time) const;

  std::atomic<std::size_t> known{0};
  RequestList live;
  std::vector<DerivedSeries*> derived;  ///< Shorter periods first.

 private:
  std::shared_ptr<const BarSeries> bars_;
  std::shared_ptr<const TickSeries> ticks_;
  std::shared_ptr<PublishedSeries> published_;
  std::array<int, 18> columns_{};  ///< By `TickColumn`.
  std::size_t order_;
};

/// All market data of a platform, and the bars that are made of them. The operations that say
/// nothing else are safe from any thread.
class MarketStore {
 public:
  /// `from` and `to` bound what is played; `kUnsetTime` does not.
  MarketStore(int64 from, int64 to, std::shared_ptr<const ZoneRules> platformZone);

  /// Throws `std::invalid_argument` if there is such a series already, or a row out of order.
  void add(std::shared_ptr<const BarSeries> bars);
  void add(std::shared_ptr<const TickSeries> ticks);

  /// The stream of a code's ticks; null without one.
  MarketStream* ticksOf(int64 codeId) const;
  /// The stream that bars of a period are taken or made from; null if they cannot be made.
  MarketStream* sourceOf(int64 codeId, const TermPair& term) const;
  /// The stream of a code and a period, 0 for ticks; null without one.
  MarketStream* exactOf(int64 codeId, int64 periodMs) const;
  /// Whether files feed a code.
  bool hasFileOf(int64 codeId) const;
  /// The first instant to be played; `from` if that is set, 0 without data.
  int64 beginTime() const;
  bool hasRecords() const;  ///< Whether files gave any.

  std::vector<MarketStream*> streams() const;  ///< In the order they were added.
  std::size_t streamCount() const;
  int64 from() const { return from_; }
  int64 to() const { return to_; }

  // For whoever has the turn.

  /// The stream that runners publish of a code and a period, 0 for ticks; made if it is not there.
  MarketStream& publishedOf(const ICodeID& code, int64 periodMs, const std::string& timeZone);

  /// The bars of a period made from `base`, which know what it knows.
  DerivedSeries& derive(MarketStream& base, const TermPair& term, int64 closedThrough);
  const std::vector<std::unique_ptr<DerivedSeries>>& derived() const { return derived_; }
  /// Makes everything as if nothing had been played; standing requests go on.
  void rewind(int64 closedThrough);

 private:
  std::shared_ptr<const ZoneRules> zoneOf(const MarketStream& stream) const;
  void refusePublished(int64 codeId, const std::string& origin) const;
  MarketStream& addStream(std::unique_ptr<MarketStream> stream);

  const int64 from_;
  const int64 to_;
  const std::shared_ptr<const ZoneRules> platformZone_;
  std::vector<std::unique_ptr<DerivedSeries>> derived_;  ///< For whoever has the turn.

  mutable std::mutex mutex_;  ///< Guards what follows; the streams themselves stay.
  std::vector<std::unique_ptr<MarketStream>> streams_;
  std::map<int64, std::vector<MarketStream*>> byCode_;
};

}  // namespace orvane::detail
