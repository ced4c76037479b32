#pragma once

#include <bit>
#include <cstdint>

#include "shared/TradeRecords.h"

namespace orvane {

/// The positions of the carried fields of an `Order` and an `OrderRequest`, as the embedded
/// platform reads and fills them. Prices, volumes and money are doubles, the nearest to the exact
/// decimal that the exchange reckons with. In a request, fields that the exchange makes (status,
/// filled volume, times, fees) are not looked at.
namespace order {

/// Positions in `ints`.
enum Ints : std::size_t {
  TypeAt = 0,         ///< `Type`.
  TimeInForceAt = 1,  ///< `TimeInForce`.
  OffsetAt = 2,       ///< `Offset`.
  ReasonAt = 3,       ///< Why the exchange ended it, a code of `ResultStatusMessages`; else 0.
  DirectionAt = 4,    ///< `Direction`.
  StatusAt = 5,       ///< `Status`.
};

/// Positions in `values`.
enum Values : std::size_t {
  UpdateTime = 0,    ///< Integer: UTC milliseconds of the last change.
  Volume = 1,        ///< Double.
  FilledVolume = 2,  ///< Double.
  StopPrice = 3,     ///< Double: of a stop order.
  ArrivalTime = 4,   ///< Integer: when the exchange received it; 0 while it is on its way.
  LimitPrice = 5,    ///< Double: of a limit order.
  Turnover = 6,      ///< Double: price times volume times multiplier of its fills so far.
  Fee = 7,           ///< Double: of its fills so far.
  FrozenMoney = 8,   ///< Double: what its rest still holds back.
  TradingDay = 9,    ///< Integer: YYYYMMDD of the first market event it can meet; 0 before.
};

enum class Type : std::int32_t {
  Limit = 0,
  Market = 1,
  Stop = 2,  ///< Becomes a market order once the stop price is reached.
};

enum class TimeInForce : std::int32_t {
  Day = 0,  ///< Ends with the trading day of the first market event that it can meet.
  ImmediateOrCancel = 1,
  FillOrKill = 2,
  UntilCancelled = 3,
};

enum class Offset : std::int32_t {
  Open = 0,
  Close = 1,       ///< Yesterday's part first, then today's.
  CloseToday = 2,  ///< Today's part alone.
};

enum class Direction : std::int32_t { Buy = 0, Sell = 1 };

/// These numbers are stored and never change.
enum class Status : std::int32_t {
  Sent = 0,           ///< On its way to the exchange.
  Working = 1,        ///< At the exchange, nothing filled.
  PartlyFilled = 2,   ///< At the exchange, partly filled.
  Filled = 3,         ///< Final.
  CancelPending = 4,  ///< At the exchange; a cancel is on its way.
  Cancelled = 5,      ///< Final; it may be partly filled.
  Rejected = 6,       ///< Final; `message` says why.
  Expired = 7,        ///< Final: its time in force is over; it may be partly filled.
};

constexpr bool isFinal(Status status) {
  return status == Status::Filled || status == Status::Cancelled || status == Status::Rejected ||
         status == Status::Expired;
}

}  // namespace order

/// Reads an order by name. Holds a reference; make it where you use it.
class OrderView {
 public:
  explicit OrderView(const Order& order) : order_(order) {}

  order::Type type() const { return static_cast<order::Type>(order_.ints[order::TypeAt]); }
  order::TimeInForce timeInForce() const {
    return static_cast<order::TimeInForce>(order_.ints[order::TimeInForceAt]);
  }
  order::Offset offset() const { return static_cast<order::Offset>(order_.ints[order::OffsetAt]); }
  order::Direction direction() const {
    return static_cast<order::Direction>(order_.ints[order::DirectionAt]);
  }
  order::Status status() const { return static_cast<order::Status>(order_.status()); }
  bool isBuy() const { return direction() == order::Direction::Buy; }
  bool isFinal() const { return order::isFinal(status()); }
  int reason() const { return order_.ints[order::ReasonAt]; }
  /// Why the exchange rejected it, or cancelled its rest, GBK; else empty.
  const std::string& message() const { return order_.text5; }

  double volume() const { return number(order::Volume); }
  double filledVolume() const { return number(order::FilledVolume); }
  double remainingVolume() const { return volume() - filledVolume(); }
  double limitPrice() const { return number(order::LimitPrice); }
  double stopPrice() const { return number(order::StopPrice); }
  double meanFillPrice() const { return order_.value5; }  ///< 0 while nothing is filled.
  double turnover() const { return number(order::Turnover); }
  double fee() const { return number(order::Fee); }
  double frozenMoney() const { return number(order::FrozenMoney); }

  int64 insertTime() const { return static_cast<int64>(order_.value1); }  ///< When it was sent.
  int64 updateTime() const { return order_.updateTime(); }
  int64 arrivalTime() const { return order_.values[order::ArrivalTime]; }
  int tradingDay() const { return static_cast<int>(order_.values[order::TradingDay]); }

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(order_.values[at]); }

  const Order& order_;
};

/// Writes the fields of a request by name, or those of an order.
template <typename Record>
class OrderWriter {
 public:
  explicit OrderWriter(Record& record) : record_(record) {}

  void setType(order::Type type) { setInt(order::TypeAt, type); }
  void setTimeInForce(order::TimeInForce time) { setInt(order::TimeInForceAt, time); }
  void setOffset(order::Offset offset) { setInt(order::OffsetAt, offset); }
  void setDirection(order::Direction direction) { setInt(order::DirectionAt, direction); }
  void setStatus(order::Status status) { setInt(order::StatusAt, status); }
  void setVolume(double volume) { set(order::Volume, volume); }
  void setLimitPrice(double price) { set(order::LimitPrice, price); }
  void setStopPrice(double price) { set(order::StopPrice, price); }
  void set(order::Values at, double value) { record_.values[at] = std::bit_cast<Word>(value); }

 private:
  template <typename Enum>
  void setInt(order::Ints at, Enum value) {
    record_.ints[at] = static_cast<std::int32_t>(value);
  }

  Record& record_;
};

}  // namespace orvane
