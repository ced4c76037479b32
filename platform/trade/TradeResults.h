#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/trade/ChunkedList.h"
#include "platform/trade/FillPart.h"
#include "platform/trade/OrderPart.h"
#include "platform/trade/RecordList.h"
#include "shared/AccountRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// A point of an equity curve.
struct EquityPoint {
  int64 time = 0;       ///< UTC milliseconds.
  double equity = 0;    ///< In the account's currency.
  double exposure = 0;  ///< Value of all positions at the last prices, long and short added up.
};

/// By time. Growing by a point a bar moves none of them.
using EquityPoints = ChunkedList<EquityPoint>;

/// An equity curve that is complete: points by time, which copies of it share. Any thread may read
/// it.
class EquityCurve {
 public:
  using value_type = EquityPoint;
  using const_iterator = EquityPoints::const_iterator;

  EquityCurve() = default;
  EquityCurve(EquityPoints points)
      : points_(std::make_shared<const EquityPoints>(std::move(points))) {}
  EquityCurve(std::initializer_list<EquityPoint> points) : EquityCurve(EquityPoints(points)) {}

  const_iterator begin() const { return points().begin(); }
  const_iterator end() const { return points().end(); }
  std::size_t size() const { return points().size(); }
  bool empty() const { return points().empty(); }
  const EquityPoint& front() const { return points().front(); }
  const EquityPoint& back() const { return points().back(); }
  const EquityPoint& operator[](std::size_t at) const { return points()[at]; }

 private:
  const EquityPoints& points() const {
    static const EquityPoints none;
    return points_ ? *points_ : none;
  }

  std::shared_ptr<const EquityPoints> points_;
};

using OrderList = RecordList<Order, OrderPart>;
using FillList = RecordList<OrderFill, FillPart>;

/// What one create source did on one account.
struct SourceResult {
  std::string source;  ///< GBK.
  OrderList orders;    ///< In their last state, in the order in which they were admitted.
  FillList fills;      ///< In the order in which they happened.
  /// The account's start balance plus the profit, closed and floating, minus the fees of this
  /// source: the whole account's curve where the source has the account to itself.
  EquityCurve curve;
};

/// What happened on one account. Curves have a point at the start, after every fill and
/// settlement, with each bar of a code that is held (with ticks, at most one a minute), and at the
/// end.
struct AccountResult {
  TradingAccountID account;
  TradingAccount capital;  ///< At the end, as `CapitalView` reads it.
  EquityCurve curve;
  std::vector<SourceResult> sources;  ///< By name, ascending; those that sent an order.
};

}  // namespace orvane
