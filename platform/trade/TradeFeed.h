#pragma once

#include <cstddef>
#include <set>
#include <unordered_map>
#include <vector>

#include "platform/fields/KLineView.h"
#include "platform/market/MarketStore.h"
#include "platform/market/TimeShift.h"
#include "platform/trade/PaperExchange.h"

namespace orvane::detail {

/// Brings market data to the exchange: of each code its ticks, if they show prices or depth, else
/// its shortest bars. Only codes in which somebody trades are fed, so that all others cost
/// nothing; a code in which somebody begins to is fed the last record known, and before it the last
/// that told a price. For one thread at a time.
class TradeFeed {
 public:
  explicit TradeFeed(const MarketStore& store) : store_(store) {}

  void setTimeShift(const TimeShift& shift) { shift_ = shift; }
  /// How times of the data are shown.
  int64 shown(int64 time) const { return shift_.shown(time); }

  /// Whether the next record of a stream is to be fed.
  bool isFed(const MarketStream& stream) {
    // Runners may begin to publish a code in which orders wait already.
    if (stream.order() >= lines_.size() && !unfed_.empty()) lookAtStreams();
    return stream.order() < lines_.size() && lines_[stream.order()].isActive;
  }
  /// Whether the next record of a stream that is fed may wait until somebody looks: a bar of the
  /// trading day of the one before it, which found the code held and no order at work.
  bool mayWait(const MarketStream& stream, std::size_t row) const {
    const Line& line = lines_[stream.order()];
    return line.isQuiet && KLineView(stream.bars().bars[row]).tradingDay() == line.day;
  }
  /// Takes a record for fed that waits.
  void skip(const MarketStream& stream, std::size_t row) { lines_[stream.order()].fed = row + 1; }
  /// Whether what was fed found the code held and nobody waiting for the next one.
  void noteQuiet(const MarketStream& stream, bool isQuiet);

  /// Feeds the next record of a stream, which is not known to anybody yet.
  void feedNext(const MarketStream& stream, PaperExchange& exchange, int64 now);
  /// Nobody trades in the stream's code any more.
  void rest(const MarketStream& stream) { lines_[stream.order()].isActive = false; }
  /// Somebody is about to trade in a code.
  void begin(int64 codeId, PaperExchange& exchange);

  /// As if nothing had been fed.
  void reset() {
    lines_.clear();
    unfed_.clear();
  }

 private:
  struct Line {
    const MarketStream* stream = nullptr;
    bool isActive = false;
    bool isQuiet = false;  ///< Of bars from files.
    int day = 0;           ///< The trading day of the last bar that was fed, if it is quiet.
    std::size_t fed = 0;   ///< All rows below it are the exchange's past.
  };
  void lookAtStreams();
  /// Feeds the codes that wait for a stream, whoever it was that made us look.
  void adoptStreams();
  void feed(const MarketStream& stream, std::size_t row, PaperExchange& exchange, int64 now);

  const MarketStore& store_;
  TimeShift shift_;
  std::vector<Line> lines_;                        ///< By the stream's order.
  std::unordered_map<int64, std::size_t> byCode_;  ///< The order of the stream that is fed.
  std::set<int64> unfed_;  ///< Codes in which somebody trades and that no stream feeds.
  IDepthMarketData tick_;
};

}  // namespace orvane::detail
