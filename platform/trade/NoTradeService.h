#pragma once

#include "platform/core/NotSupported.h"
#include "services/Common/ITradeService.h"

namespace orvane::detail {

/// A trade side without accounts: lists are empty, everything else is not supported.
class NoTradeService : public ITradeService {
 public:
  ResultStatus sendOrder(const OrderRequest&, std::list<Order>&) override { return notSupported(); }
  ResultStatus cancelOrder(const Order&) override { return notSupported(); }
  ResultStatus orderActionForward(const Order&, int) override { return notSupported(); }
  ResultStatus getPosition(const TradingAccountID&, const ICodeID&, Position&) override {
    return notSupported();
  }
  ResultStatus getPositions(const TradingAccountID&, std::list<Position>&, int) override {
    return notSupported();
  }
  ResultStatus getSourcePosition(const TradingAccountID&, const std::string&, const ICodeID&,
                                 SourcePosition&) override {
    return notSupported();
  }
  ResultStatus getSourcePositions(const TradingAccountID&, std::list<SourcePosition>&) override {
    return notSupported();
  }
  ResultStatus getCapital(const TradingAccountID&, TradingAccount&) override {
    return notSupported();
  }
  ResultStatus getOrder(int64, Order&) override { return notSupported(); }
  ResultStatus ordersByCode(const TradingAccountID&, const ICodeID&, std::list<Order>&) override {
    return notSupported();
  }
  ResultStatus queryHistory(const HistoryQuery&, std::list<HistoryDayRecord>&) override {
    return notSupported();
  }
  ResultStatus openOrdersByCode(const TradingAccountID&, const ICodeID&,
                                std::list<Order>&) override {
    return notSupported();
  }
  ResultStatus openOrdersOfAccount(const TradingAccountID&, std::list<Order>&) override {
    return notSupported();
  }
  ResultStatus ordersByKey(const TradingAccountID&, const std::string&,
                           std::list<Order>&) override {
    return notSupported();
  }
  ResultStatus ordersOfAccount(const TradingAccountID&, std::list<Order>&) override {
    return notSupported();
  }
  ResultStatus fillQueryForward(int64, std::list<OrderFill>&) override { return notSupported(); }
  ResultStatus fillsByCode(const TradingAccountID&, const ICodeID&,
                           std::list<OrderFill>&) override {
    return notSupported();
  }
  ResultStatus fillsOfAccount(const TradingAccountID&, std::list<OrderFill>&) override {
    return notSupported();
  }
  int tradingAccountCount() override { return 0; }
  std::vector<TradingAccountID> tradingAccounts() override { return {}; }
  std::list<AccountLinks> accountRecords(const std::string&, int) override { return {}; }
  void subscribeStatus(const std::shared_ptr<TradeEventSpi>&, const TradingAccountID&) override {}
  void subscribeCapital(const std::shared_ptr<TradeEventSpi>&, const TradingAccountID&) override {}
  void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>&, const std::string&,
                                  const TradingAccountID&) override {}
  void subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>&, const std::string&,
                                  const TradingAccountID&, const ICodeID&) override {}
  void subscribeOrderByEventSourceId(const std::shared_ptr<TradeEventSpi>&, EventSourceId,
                                     const TradingAccountID&) override {}
  void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>&, const std::string&,
                                 const TradingAccountID&) override {}
  void subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>&, const std::string&,
                                 const TradingAccountID&, const ICodeID&) override {}
  void subscribeFillByEventSourceId(const std::shared_ptr<TradeEventSpi>&, EventSourceId,
                                    const TradingAccountID&) override {}
  void subscribePosition(const std::shared_ptr<TradeEventSpi>&, const TradingAccountID&,
                         const ICodeID&) override {}
  void subscribeSourcePosition(const std::shared_ptr<TradeEventSpi>&, const std::string&,
                               const TradingAccountID&, const ICodeID&) override {}
  void unsubscribeAccount(const std::shared_ptr<TradeEventSpi>&, const TradingAccountID&) override {
  }
  void unsubscribeAll(const std::shared_ptr<TradeEventSpi>&) override {}
  ResultStatus attachAccount(const AccountRecord&) override { return notSupported(); }
  ResultStatus detachAccount(const AccountRecord&) override { return notSupported(); }
};

}  // namespace orvane::detail
