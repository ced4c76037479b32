#pragma once

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "host/CallEncoder.h"
#include "host/CallKind.h"
#include "host/CandleSeries.h"
#include "host/Digest.h"
#include "host/RunPulse.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// One tick, as far as a report shows it.
struct TickGlance {
  int64 time = 0;
  double last = 0, volume = 0, bid = 0, bidSize = 0, ask = 0, askSize = 0;
  int flags = 0;
};

/// What a run received of one series.
struct SeriesRecord {
  ICodeID code;
  std::string frequency;  ///< Empty for quotes.
  bool isTicks = false;
  std::uint64_t records = 0;
  IKLine firstBar, lastBar;
  TickGlance firstTick, lastTick;
  std::optional<CandleSeries> candles;  ///< Only where a report will show them.
};

/// What runs keep of their market data for charts.
struct CandleKeeping {
  std::size_t most = 0;  ///< Candles of each series; 0: none are kept.
  std::shared_ptr<const ZoneOffsets> zone;
};

/// How many items a strategy gave to the publisher.
struct PublishedCount {
  std::uint64_t live = 0;     ///< With bit 0 of the flags.
  std::uint64_t history = 0;  ///< Without it.
  std::uint64_t refused = 0;  ///< Of both, those that were not taken.

  std::uint64_t sum() const { return live + history + refused; }
};

/// What a run received of one target of one dictionary.
struct DictionaryRecord {
  std::uint64_t records = 0;    ///< By `onDic`.
  std::uint64_t snapshots = 0;  ///< By `onDicSnapshot`.
  std::uint64_t deletions = 0;  ///< By `onDicDeleted`.
  /// The keys of the first and the last record that came, in order of their coming.
  int64 firstKey = 0, lastKey = 0;
};

/// What one run of one strategy received and published. Written by the strategy's tap, call by
/// call; read by the host once its runner is quiet.
struct RunRecord {
  std::array<std::uint64_t, kCallKinds> calls{};
  RunPulse pulse;  ///< For any thread, at any time.
  std::uint64_t bars = 0, ticks = 0;
  bool spokeOnTicks = false;  ///< It did or said something when it was given some.
  int64 firstTime = kUnsetTime, lastTime = kUnsetTime;  ///< Of the market data, UTC milliseconds.
  /// By code id and frequency; of quotes under the frequency "".
  std::map<std::pair<int64, std::string>, SeriesRecord> series;
  /// By the dictionary's name and the target, GBK.
  std::map<std::pair<std::string, std::string>, DictionaryRecord> dictionaries;
  PublishedCount publishedQuotes, publishedBars, publishedRecords;
  /// Whether it tried to publish anything at all, or asked how many trading accounts there are, on
  /// whatever thread: what it does may differ then by who runs beside it.
  std::atomic<bool> hasPublished{false};
  std::string statisticsLine;  ///< What a server run said at its end; empty for others.
  std::uint64_t exceptions = 0;
  std::string firstException;      ///< "onQuote: what it said", UTF-8.
  std::unique_ptr<Digest> digest;  ///< Null where it is switched off.

  std::uint64_t events() const {
    std::uint64_t sum = 0;
    for (const std::uint64_t count : calls) sum += count;
    return sum;
  }
};

/// The records of all runs, by the runner's name. Any thread may call it.
class RunRecords {
 public:
  explicit RunRecords(bool withDigest, CandleKeeping candles = {})
      : withDigest_(withDigest), candles_(std::move(candles)) {}

  bool withDigest() const { return withDigest_; }
  const CandleKeeping& candles() const { return candles_; }

  /// Makes `record` the one of this runner (GBK name). A runner that begins anew replaces its
  /// record, so a reset counts and hashes like a fresh process.
  void set(const std::string& runner, std::shared_ptr<RunRecord> record) {
    const std::lock_guard lock(mutex_);
    records_[runner] = std::move(record);
  }

  /// The record of a runner; null if it never started.
  std::shared_ptr<RunRecord> find(const std::string& runner) const {
    const std::lock_guard lock(mutex_);
    const auto at = records_.find(runner);
    return at == records_.end() ? nullptr : at->second;
  }

 private:
  const bool withDigest_;
  const CandleKeeping candles_;
  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<RunRecord>> records_;
};

}  // namespace orvane
