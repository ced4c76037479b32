#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "platform/trade/AccountBook.h"
#include "platform/trade/NoTradeService.h"
#include "platform/trade/OrderInbox.h"
#include "platform/trade/TradeOptions.h"

namespace orvane::detail {

/// The trade service over a paper exchange. Any thread may call its public operations, with locks
/// held: they take one short lock and never call out.
class TradeService final : public NoTradeService {
 public:
  /// `now` gives the platform's time. Throws `std::invalid_argument` if an option is wrong.
  TradeService(const TradeOptions& options, std::function<int64()> now);

  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  int tradingAccountCount() override;
  std::vector<TradingAccountID> tradingAccounts() override;
  std::list<AccountLinks> accountRecords(const std::string& account, int counterType) override;

 private:
  const AccountBook accounts_;
  const std::function<int64()> now_;
  std::mutex mutex_;  ///< Guards what follows.
  OrderInbox inbox_;
};

}  // namespace orvane::detail
