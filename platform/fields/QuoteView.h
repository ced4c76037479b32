#pragma once

#include <bit>

#include "shared/MarketRecords.h"

namespace orvane {

/// The positions of the carried fields of an `IDepthMarketData`, as the embedded platform fills
/// them. A price or size that the source does not give is 0; `flags` tells which sides are there.
namespace quote {

/// Positions in `block1`.
enum Block1 : std::size_t {
  Time = 0,       ///< Integer: UTC milliseconds.
  LastPrice = 1,  ///< Double, as are all that follow.
  Open = 2,       ///< Of the day so far.
  High = 3,       ///< Of the day so far.
  Low = 4,        ///< Of the day so far.
  PreClose = 5,
  PreSettle = 6,
  Settle = 7,  ///< 0 until it is published.
  UpperLimit = 8,
  LowerLimit = 9,
  TotalVolume = 10,  ///< Of the day so far.
  Volume = 11,       ///< Since the previous tick, or of this trade.
  TotalTurnover = 12,
  Turnover = 13,
  OpenInterest = 14,
  AskSize8 = 15,  ///< Ask sizes of levels 8 to 10; those of 1 to 7 stand in `block3`.
};

/// Positions in `block2`.
enum Block2 : std::size_t {
  TradingDay = 0,  ///< YYYYMMDD.
  BidLevels = 1,   ///< How many levels of `levels` hold a bid.
  AskLevels = 2,
  Flags = 3,
};

inline constexpr int kHasTrade = 1;  ///< `lastPrice` is a price of this tick.
inline constexpr int kHasBid = 2;
inline constexpr int kHasAsk = 4;

}  // namespace quote

/// Reads a quote by name. Levels count from 0, the best one, to 9. Holds a reference; make it
/// where you use it.
class QuoteView {
 public:
  explicit QuoteView(const IDepthMarketData& quote) : quote_(quote) {}

  int64 time() const { return quote_.block1[quote::Time]; }
  double lastPrice() const { return number(quote::LastPrice); }
  double open() const { return number(quote::Open); }
  double high() const { return number(quote::High); }
  double low() const { return number(quote::Low); }
  double preClose() const { return number(quote::PreClose); }
  double preSettle() const { return number(quote::PreSettle); }
  double settle() const { return number(quote::Settle); }
  double upperLimit() const { return number(quote::UpperLimit); }
  double lowerLimit() const { return number(quote::LowerLimit); }
  double totalVolume() const { return number(quote::TotalVolume); }
  double volume() const { return number(quote::Volume); }
  double totalTurnover() const { return number(quote::TotalTurnover); }
  double turnover() const { return number(quote::Turnover); }
  double openInterest() const { return number(quote::OpenInterest); }

  int tradingDay() const { return quote_.block2[quote::TradingDay]; }
  int bidLevels() const { return quote_.block2[quote::BidLevels]; }
  int askLevels() const { return quote_.block2[quote::AskLevels]; }
  int flags() const { return quote_.block2[quote::Flags]; }
  bool hasTrade() const { return (flags() & quote::kHasTrade) != 0; }
  bool hasBid() const { return (flags() & quote::kHasBid) != 0; }
  bool hasAsk() const { return (flags() & quote::kHasAsk) != 0; }

  double bidPrice(std::size_t level = 0) const {
    return std::bit_cast<double>(quote_.levels[level].value1);
  }
  double askPrice(std::size_t level = 0) const {
    return std::bit_cast<double>(quote_.levels[level].value2);
  }
  double bidSize(std::size_t level = 0) const { return quote_.levels[level].value3; }
  double askSize(std::size_t level = 0) const {
    return std::bit_cast<double>(level < 7 ? quote_.block3[level]
                                           : quote_.block1[quote::AskSize8 + level - 7]);
  }

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(quote_.block1[at]); }

  const IDepthMarketData& quote_;
};

/// Writes a quote by name.
class QuoteWriter {
 public:
  explicit QuoteWriter(IDepthMarketData& quote) : quote_(quote) {}

  void setTime(int64 utcMs) { quote_.block1[quote::Time] = utcMs; }
  void set(quote::Block1 at, double value) { quote_.block1[at] = std::bit_cast<Word>(value); }
  void set(quote::Block2 at, int value) { quote_.block2[at] = value; }
  void setBid(std::size_t level, double price, double size) {
    quote_.levels[level].value1 = std::bit_cast<Word>(price);
    quote_.levels[level].value3 = size;
  }
  void setAsk(std::size_t level, double price, double size) {
    quote_.levels[level].value2 = std::bit_cast<Word>(price);
    (level < 7 ? quote_.block3[level] : quote_.block1[quote::AskSize8 + level - 7]) =
        std::bit_cast<Word>(size);
  }

 private:
  IDepthMarketData& quote_;
};

}  // namespace orvane
