#pragma once

#include <array>
#include <bit>

#include "shared/TradeRecords.h"

namespace orvane {

/// The positions of the carried fields of a `Position`, as the embedded platform fills them.
namespace position {

/// Positions in `block1` (long side) and `block2` (short side); all are doubles.
enum Side : std::size_t {
  Volume = 0,
  TodayVolume = 1,      ///< Opened on the present trading day.
  YesterdayVolume = 2,  ///< Opened before it.
  FrozenVolume = 3,     ///< Held back by closing orders at work.
  Margin = 4,
  FloatingProfit = 5,
  OpenTurnover = 6,  ///< Sum of open price times volume times multiplier.
};

/// Positions in `block3`; all are doubles.
enum Whole : std::size_t {
  MarkPrice = 0,  ///< The last price known; 0 before there is one.
  ClosedProfit = 1,
  Fee = 2,
  Multiplier = 5,
};

}  // namespace position

/// Reads a position by name. Volumes are not negative on either side. Holds a reference; make it
/// where you use it.
class PositionView {
 public:
  /// One side of a position.
  class Side {
   public:
    Side(const std::array<Word, 16>& block, double openPrice)
        : block_(block), openPrice_(openPrice) {}
    double volume() const { return number(position::Volume); }
    double todayVolume() const { return number(position::TodayVolume); }
    double yesterdayVolume() const { return number(position::YesterdayVolume); }
    double frozenVolume() const { return number(position::FrozenVolume); }
    double closableVolume() const { return volume() - frozenVolume(); }
    double margin() const { return number(position::Margin); }
    double floatingProfit() const { return number(position::FloatingProfit); }
    double openPrice() const { return openPrice_; }  ///< The mean; 0 without a position.

   private:
    double number(std::size_t at) const { return std::bit_cast<double>(block_[at]); }

    const std::array<Word, 16>& block_;
    double openPrice_;
  };

  explicit PositionView(const Position& record) : record_(record) {}

  Side longSide() const { return {record_.block1, record_.value1}; }
  Side shortSide() const { return {record_.block2, record_.value2}; }
  double netVolume() const { return longSide().volume() - shortSide().volume(); }
  double markPrice() const { return number(position::MarkPrice); }
  double closedProfit() const { return number(position::ClosedProfit); }
  double fee() const { return number(position::Fee); }
  double multiplier() const { return number(position::Multiplier); }

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(record_.block3[at]); }

  const Position& record_;
};

}  // namespace orvane
