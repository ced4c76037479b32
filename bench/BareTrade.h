#pragma once

#include <cstddef>
#include <list>

#include "bench/BareRoad.h"
#include "platform/fields/OrderView.h"
#include "platform/trade/ChunkedList.h"
#include "shared/TradeRecords.h"

namespace orvane::bench {

/// What an order and its fill are to a service and a runner: the strategy's request, the order that
/// is made of it, the copy that it is answered with, those that whoever asks later gets, and the
/// six records that tell of it, each on the runner's way. No book is kept and no price is compared.
class BareTrade {
 public:
  /// The road outlives it.
  explicit BareTrade(BareRoad& road) : road_(road) {
    // Texts are as long as they are in a run.
    asked_.account.account = "bench";
    asked_.account.text1 = "PAPER";
    asked_.code.code = "BENCH";
    asked_.source.createSource = "bench0";
    order_.pair.first = order_.orderRef = fill_.pair.first = fill_.orderRef = "1000000001";
    fill_.fillText = "100000000100001";
    fill_.account = position_.account = part_.account = capital_.account = asked_.account;
    fill_.code = position_.code = part_.code = asked_.code;
    fill_.source = asked_.source;
    part_.createSource = asked_.source.createSource;
  }

  void pass() {
    const OrderRequest request = asked_;
    Order& sent = orders_.emplace_back(order_);
    sent.id = static_cast<int64>(orders_.size());
    sent.account = request.account;
    sent.code = request.code;
    sent.source = request.source;
    std::list<Order> answer;
    answer.push_back(sent);
    for (const auto status : {order::Status::Working, order::Status::Filled}) {
      sent.status() = static_cast<std::int32_t>(status);
      road_.pass(sent);
    }
    road_.pass(fills_.emplace_back(fill_));
    road_.pass(position_);
    road_.pass(part_);
    road_.pass(capital_);
  }
  std::size_t count() const { return orders_.size(); }

 private:
  BareRoad& road_;
  OrderRequest asked_;
  Order order_;
  OrderFill fill_;
  Position position_;
  SourcePosition part_;
  TradingAccount capital_;
  ChunkedList<Order> orders_;
  ChunkedList<OrderFill> fills_;
};

}  // namespace orvane::bench
