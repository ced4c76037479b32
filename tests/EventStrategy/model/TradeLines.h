#pragma once

#include <string>

#include "shared/AccountRecords.h"
#include "shared/TradeRecords.h"

namespace orvane::support {

// One line for each record, with every field that a schedule fills: two records with one line are
// the same record.

inline std::string lineOf(const Order& order) {
  return "order " + std::to_string(order.id) + " account=" + order.account.account +
         " code=" + std::to_string(order.code.id) + " from=" + order.source.createSource + "/" +
         std::to_string(order.source.sourceType) + " status=" + std::to_string(order.status()) +
         " time=" + std::to_string(order.updateTime()) + " ref=" + order.orderRef +
         " marks=" + std::to_string(order.values[10]) + order.text6;
}

inline std::string lineOf(const OrderFill& fill) {
  return "fill " + fill.fillText + " account=" + fill.account.account +
         " code=" + std::to_string(fill.code.id) + " from=" + fill.source.createSource + "/" +
         std::to_string(fill.source.sourceType) + " direction=" + std::to_string(fill.direction()) +
         " time=" + std::to_string(fill.fillTime()) + " ref=" + fill.orderRef +
         " marks=" + std::to_string(fill.values[3]) + fill.text3;
}

inline std::string lineOf(const Position& position) {
  return "position account=" + position.account.account +
         " code=" + std::to_string(position.code.id) +
         " marks=" + std::to_string(position.block4[39]) + position.text1;
}

inline std::string lineOf(const SourcePosition& position) {
  return "source " + position.createSource + " " + lineOf(static_cast<const Position&>(position));
}

inline std::string lineOf(const TradingAccount& capital) {
  return "capital account=" + capital.account.account +
         " marks=" + std::to_string(capital.block2[17]);
}

inline std::string lineOf(const AccountStatusInfo& info) {
  return "status " + std::to_string(info.statusCode) + " marks=" + std::to_string(info.value);
}

/// Statuses that an order never leaves.
inline bool isLast(const Order& order) {
  return order.status() == 3 || (order.status() >= 5 && order.status() <= 7);
}

/// What tells a fill from every other: the account, the market, the order, the side and its text.
inline std::string nameOf(const OrderFill& fill) {
  return std::to_string(fill.account.accountKey) + " " + std::to_string(fill.code.market) + " " +
         fill.orderRef + " " + std::to_string(fill.direction()) + " " + fill.fillText;
}

}  // namespace orvane::support
