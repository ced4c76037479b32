#pragma once

#include <map>
#include <string>
#include <utility>

#include "EventStrategy/ov.strategy.runner/UserContext.h"

namespace orvane {

/// The context of server runs. Its market data requests carry the server's flag, its orders go out
/// under a numeric source id of their own, its accounts are those of `IRunnerGlobal`, and it counts
/// what it publishes. Made and owned by its `RunnerContext`; what it adds has no lock either, and
/// belongs to the pool task.
class ServerUserContext final : public UserContext {
 public:
  /// `runnerContext` is borrowed and never null.
  explicit ServerUserContext(RunnerContext* runnerContext);

  /// For the key "#STAT#" the time of the last publication and the counters since 18:00, on one
  /// line; the default is not used then. All else from the runner's environment.
  std::string env(const std::string& key, const std::string& defaultValue) override;
  ResultStatus subscribeQuote(const ICodeID& code, int flags) override;
  ResultStatus subscribeKline(int requestId, const ICodeID& code, const std::string& frequency,
                              int64 beginTime, int64 endTime, int count, int flags) override;
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags) override;
  ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) override;
  ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars, int term,
                                  int flags) override;
  ResultStatus publishQuoteItems(const ICodeID& code, const std::list<IDepthMarketData>& ticks,
                                 int flags) override;
  ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                  int flags) override;
  /// Makes a host's account available; each call counts, also one that the trade service refuses.
  /// Code 22 for an account that the host did not give.
  ResultStatus attachAccount(const std::string& account, int counterType) override;
  /// Undoes every attachment of the account. Code 0 also for one that was never attached.
  ResultStatus detachAccount(const std::string& account, int counterType) override;
  /// The first trading account of a host's account; code 22 without one.
  ResultStatus findTradingAccount(const std::string& account, int counterType,
                                  TradingAccountID& tradingAccount) override;
  /// Code 23: a server strategy uses `sendOrder`.
  ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) override;
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags) override;
  /// Undoes what stands, and then detaches every account. The counters stay.
  void exit() override;

 private:
  friend struct detail::TestAccess;

  std::string statistics();
  void countPublished(const char* realtimeKey, const char* historyKey, std::size_t items,
                      int flags);

  std::map<std::pair<int, std::string>, int> accountRefs_;  ///< By counter type and account text.
  std::map<std::string, int64> stats_;
  int64 statResetMs_;        ///< When the counters were last set to zero, or were due to be.
  int64 lastPublishMs_ = 0;  ///< 0 until something was published.
};

}  // namespace orvane
