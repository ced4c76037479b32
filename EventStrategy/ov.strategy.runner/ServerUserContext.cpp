#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"

#include "EventStrategy/ov.strategy.runner/RunnerContext.h"

namespace orvane {
namespace {

constexpr int kServerFlag = 0x100000;
constexpr int64 kServerSourceType = 65536;

}  // namespace

ServerUserContext::ServerUserContext(RunnerContext* runnerContext) : UserContext(runnerContext) {}

ResultStatus ServerUserContext::subscribeQuote(const ICodeID& code, int flags) {
  return UserContext::subscribeQuote(code, flags | kServerFlag);
}

ResultStatus ServerUserContext::subscribeKline(int requestId, const ICodeID& code,
                                               const std::string& frequency, int64 beginTime,
                                               int64 endTime, int count, int flags) {
  return UserContext::subscribeKline(requestId, code, frequency, beginTime, endTime, count,
                                     flags | kServerFlag);
}

ResultStatus ServerUserContext::subscribeKline(const ICodeID& code, const std::string& frequency,
                                               int64 beginTime, int64 endTime, int count,
                                               int flags) {
  return UserContext::subscribeKline(code, frequency, beginTime, endTime, count,
                                     flags | kServerFlag);
}

ResultStatus ServerUserContext::sendOrderIds(const OrderRequest&, std::list<int64>&) {
  return notSupported();
}

ResultStatus ServerUserContext::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  std::string source;
  {
    const std::lock_guard lock(runnerContext_->shared().mutex);
    source = runnerContext_->shared().orderSource;
  }
  return sendCompleted(request, kServerSourceType, source, orders);
}

}  // namespace orvane
