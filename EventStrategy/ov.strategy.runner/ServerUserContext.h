#pragma once

#include "EventStrategy/ov.strategy.runner/UserContext.h"

namespace orvane {

/// The context of server runs: its market data requests carry the server's flag, and its orders go
/// out under a numeric source id of their own. Made and owned by its `RunnerContext`.
class ServerUserContext final : public UserContext {
 public:
  explicit ServerUserContext(RunnerContext* runnerContext);

  ResultStatus subscribeQuote(const ICodeID& code, int flags) override;
  ResultStatus subscribeKline(int requestId, const ICodeID& code, const std::string& frequency,
                              int64 beginTime, int64 endTime, int count, int flags) override;
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags) override;
  /// Code 23: a server strategy uses `sendOrder`.
  ResultStatus sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) override;
  ResultStatus sendOrder(const OrderRequest& request, std::list<Order>& orders) override;
};

}  // namespace orvane
