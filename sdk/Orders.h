#pragma once

#include <optional>

#include "platform/fields/OrderView.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// A market order: it fills at the next price there is. `volume` is in lots, shares or coins. Send
/// it with `IContext::sendOrder`, which puts the runner's create source in.
inline OrderRequest marketOrder(const TradingAccountID& account, const ICodeID& code,
                                order::Direction direction, order::Offset offset, double volume) {
  OrderRequest request;
  request.account = account;
  request.code = code;
  OrderWriter writer(request);
  writer.setType(order::Type::Market);
  writer.setTimeInForce(order::TimeInForce::UntilCancelled);
  writer.setDirection(direction);
  writer.setOffset(offset);
  writer.setVolume(volume);
  return request;
}

/// A limit order: it fills at `price` or better, and ends with its trading day unless told
/// otherwise.
inline OrderRequest limitOrder(const TradingAccountID& account, const ICodeID& code,
                               order::Direction direction, order::Offset offset, double volume,
                               double price,
                               order::TimeInForce timeInForce = order::TimeInForce::Day) {
  OrderRequest request = marketOrder(account, code, direction, offset, volume);
  OrderWriter writer(request);
  writer.setType(order::Type::Limit);
  writer.setTimeInForce(timeInForce);
  writer.setLimitPrice(price);
  return request;
}

/// A stop order: once the market reaches `stopPrice` (from below for a buy, from above for a
/// sell), it is a market order. It stands until it is cancelled unless told otherwise.
inline OrderRequest stopOrder(const TradingAccountID& account, const ICodeID& code,
                              order::Direction direction, order::Offset offset, double volume,
                              double stopPrice,
                              order::TimeInForce timeInForce = order::TimeInForce::UntilCancelled) {
  OrderRequest request = marketOrder(account, code, direction, offset, volume);
  OrderWriter writer(request);
  writer.setType(order::Type::Stop);
  writer.setTimeInForce(timeInForce);
  writer.setStopPrice(stopPrice);
  return request;
}

/// Opens a long position, or adds to it: at the market, or at `limit` or better, until it is
/// cancelled. It never closes a short one; `Trader` has orders that do.
inline OrderRequest buy(const TradingAccountID& account, const ICodeID& code, double volume,
                        std::optional<double> limit = {}) {
  constexpr auto direction = order::Direction::Buy;
  constexpr auto offset = order::Offset::Open;
  return limit ? limitOrder(account, code, direction, offset, volume, *limit,
                            order::TimeInForce::UntilCancelled)
               : marketOrder(account, code, direction, offset, volume);
}

/// Opens a short position, or adds to it: at the market, or at `limit` or better, until it is
/// cancelled. It never closes a long one; `Trader` has orders that do.
inline OrderRequest sell(const TradingAccountID& account, const ICodeID& code, double volume,
                         std::optional<double> limit = {}) {
  OrderRequest request = buy(account, code, volume, limit);
  OrderWriter(request).setDirection(order::Direction::Sell);
  return request;
}

}  // namespace orvane
