// Order entry and subscriptions.

#include "platform/trade/TradeService.h"

#include <utility>

#include "platform/core/MadeInPlace.h"
#include "platform/core/NotSupported.h"
#include "platform/core/Periods.h"
#include "platform/fields/OrderView.h"
#include "shared/GbkLiteral.h"

namespace orvane::detail {
namespace {

Order orderOf(const OrderRequest& request, const TradingAccountID& account, int64 now) {
  Order order{.account = account,
              .code = request.code,
              .source = request.source,
              .cancelSource = {},
              .pair = request.pair,
              .text3 = request.text3,
              .text4 = request.text4,
              .orderRef = request.orderRef,
              .value1 = static_cast<double>(now),
              .values = request.values,
              .ints = request.ints,
              .text5 = {},
              .text6 = request.text6,
              .leg1 = {},
              .leg2 = {}};
  OrderWriter(order).setStatus(order::Status::Sent);
  order.ints[order::ReasonAt] = 0;
  order.values[order::UpdateTime] = now;
  for (const order::Values at : {order::FilledVolume, order::ArrivalTime, order::Turnover,
                                 order::Fee, order::FrozenMoney, order::TradingDay})
    order.values[at] = 0;
  return order;
}

}  // namespace

TradeService::TradeService(TradeState& state, std::function<int64()> now,
                           std::function<void()> onRequest,
                           std::function<std::int32_t(int64)> dayOf)
    : state_(state),
      now_(std::move(now)),
      onRequest_(std::move(onRequest)),
      dayOf_(std::move(dayOf)) {}

void TradeService::addContract(const ICodeID& code, const Instrument& instrument) {
  const std::lock_guard lock(state_.mutex);
  state_.exchange().addContract(code, instrument);
}

void TradeService::noteWaiting() {
  // One call is enough until the desk has taken everything in.
  if (state_.waiting.exchange(1) == 0) onRequest_();
}

ResultStatus TradeService::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  const TradingAccountID* account = state_.accounts.find(request.account);
  if (account == nullptr) return {22, "账号不存在"_gbk};
  const int64 now = now_();
  auto made = std::make_unique<Order>(MadeInPlace([&] { return orderOf(request, *account, now); }));
  Order& order = *made;
  {
    const std::lock_guard lock(state_.mutex);
    state_.inbox.number(order);
    order.pair.first = std::to_string(order.id);
    if (order.orderRef.empty()) order.orderRef = order.pair.first;
    orders.push_back(order);
    state_.inbox.putOrder(std::move(made), now);
  }
  noteWaiting();
  return {};
}

ResultStatus TradeService::cancelOrder(const Order& order) {
  const int64 now = now_();
  {
    const std::lock_guard lock(state_.mutex);
    std::optional<Order> known = state_.store.order(order.id);
    const bool isOver = known && OrderView(*known).isFinal();
    if (!known) known = state_.inbox.waitingOrder(order.id);
    if (!known) return statusWith(22, "order " + std::to_string(order.id));
    if (isOver) return statusWith(22, "order " + std::to_string(order.id) + " is over");
    if (ResultStatus status = checkLocked(known->account); status.code != 0) return status;
    state_.inbox.putCancel(order.id, known->account, order.source, now);
  }
  noteWaiting();
  return {};
}

ResultStatus TradeService::orderActionForward(const Order& /*order*/, int /*action*/) {
  return notSupported();
}

// An account of the exchange is there from the run's beginning to its end.
ResultStatus TradeService::attachAccount(const AccountRecord& account) {
  return state_.accounts.has(account.id) ? ResultStatus{} : statusWith(22, account.id.text3);
}

ResultStatus TradeService::detachAccount(const AccountRecord& account) {
  return attachAccount(account);
}

// Subscriptions.

void TradeService::subscribe(const std::shared_ptr<TradeEventSpi>& spi,
                             const TradeSelector& selector) {
  if (spi == nullptr || state_.accounts.find(selector.account) == nullptr) return;
  const bool wantsStatus = selector.topic == TradeTopic::Status;
  {
    const std::lock_guard lock(state_.mutex);
    // What comes next has a higher number.
    const bool isNew = state_.subscriptions.subscribe(spi, selector, state_.number);
    if (!isNew || !wantsStatus) return;
    state_.statusWishes.push_back({state_.subscriptions.receiverOf(spi.get()), selector.account});
  }
  noteWaiting();
}

void TradeService::unsubscribe(const std::shared_ptr<TradeEventSpi>& spi,
                               const TradeSelector& selector) {
  std::shared_ptr<TradeReceiver> ended;  // It may be the last to hold the spi: let go unlocked.
  const std::lock_guard lock(state_.mutex);
  ended = state_.subscriptions.unsubscribe(spi.get(), selector);
}

void TradeService::subscribeStatus(const std::shared_ptr<TradeEventSpi>& spi,
                                   const TradingAccountID& account) {
  subscribe(spi, {TradeTopic::Status, account.accountKey, TradeSelector::kEveryCode, 0, {}});
}

void TradeService::subscribeCapital(const std::shared_ptr<TradeEventSpi>& spi,
                                    const TradingAccountID& account) {
  subscribe(spi, {TradeTopic::Capital, account.accountKey, TradeSelector::kEveryCode, 0, {}});
}

void TradeService::subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                              const std::string& source,
                                              const TradingAccountID& account) {
  subscribe(spi, {TradeTopic::Order, account.accountKey, TradeSelector::kEveryCode, 0, source});
}

void TradeService::subscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                              const std::string& source,
                                              const TradingAccountID& account,
                                              const ICodeID& code) {
  subscribe(spi, {TradeTopic::Order, account.accountKey, code.id, 0, source});
}

void TradeService::subscribeOrderByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi,
                                                 EventSourceId source,
                                                 const TradingAccountID& account) {
  for (EventSourceId bit = 1; bit <= 128; bit <<= 1)
    if ((source & bit) != 0)
      subscribe(spi, {TradeTopic::Order, account.accountKey, TradeSelector::kEveryCode, bit, {}});
}

void TradeService::subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                             const std::string& source,
                                             const TradingAccountID& account) {
  subscribe(spi, {TradeTopic::Fill, account.accountKey, TradeSelector::kEveryCode, 0, source});
}

void TradeService::subscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                             const std::string& source,
                                             const TradingAccountID& account, const ICodeID& code) {
  subscribe(spi, {TradeTopic::Fill, account.accountKey, code.id, 0, source});
}

void TradeService::subscribeFillByEventSourceId(const std::shared_ptr<TradeEventSpi>& spi,
                                                EventSourceId source,
                                                const TradingAccountID& account) {
  for (EventSourceId bit = 1; bit <= 128; bit <<= 1)
    if ((source & bit) != 0)
      subscribe(spi, {TradeTopic::Fill, account.accountKey, TradeSelector::kEveryCode, bit, {}});
}

void TradeService::subscribePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                     const TradingAccountID& account, const ICodeID& code) {
  subscribe(spi, {TradeTopic::Position, account.accountKey, code.id, 0, {}});
}

void TradeService::subscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                           const std::string& source,
                                           const TradingAccountID& account, const ICodeID& code) {
  subscribe(spi, {TradeTopic::SourcePosition, account.accountKey, code.id, 0, source});
}

void TradeService::unsubscribeOrderBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                                const std::string& source,
                                                const TradingAccountID& account,
                                                const ICodeID& code) {
  unsubscribe(spi, {TradeTopic::Order, account.accountKey, code.id, 0, source});
}

void TradeService::unsubscribeFillBySourceName(const std::shared_ptr<TradeEventSpi>& spi,
                                               const std::string& source,
                                               const TradingAccountID& account,
                                               const ICodeID& code) {
  unsubscribe(spi, {TradeTopic::Fill, account.accountKey, code.id, 0, source});
}

void TradeService::unsubscribePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                       const TradingAccountID& account, const ICodeID& code) {
  unsubscribe(spi, {TradeTopic::Position, account.accountKey, code.id, 0, {}});
}

void TradeService::unsubscribeSourcePosition(const std::shared_ptr<TradeEventSpi>& spi,
                                             const std::string& source,
                                             const TradingAccountID& account, const ICodeID& code) {
  unsubscribe(spi, {TradeTopic::SourcePosition, account.accountKey, code.id, 0, source});
}

void TradeService::unsubscribeAccount(const std::shared_ptr<TradeEventSpi>& spi,
                                      const TradingAccountID& account) {
  std::shared_ptr<TradeReceiver> ended;  // It may be the last to hold the spi: let go unlocked.
  const std::lock_guard lock(state_.mutex);
  ended = state_.subscriptions.unsubscribeAccount(spi.get(), account.accountKey);
}

void TradeService::unsubscribeAll(const std::shared_ptr<TradeEventSpi>& spi) {
  if (state_.onLetGo) state_.onLetGo(spi);
  std::shared_ptr<TradeReceiver> ended;
  const std::lock_guard lock(state_.mutex);
  ended = state_.subscriptions.unsubscribeAll(spi.get());
}

}  // namespace orvane::detail
