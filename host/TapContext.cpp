#include "host/TapContext.h"

#include <QJsonDocument>
#include <type_traits>

namespace orvane {

std::string compactJson(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

namespace {

/// Request and timer ids are unique in the process; they are written as ordinals of the run.
struct RequestId {
  int id;
};
struct TimerId {
  int id;
};
struct OrderIds {
  const std::list<int64>& ids;
};
struct OrderId {
  int64 id;
};
struct PublicationAnswer {
  ResultStatus status;
};

constexpr int kLiveBit = 1;

void put(CallEncoder& out, RequestId id) { out.requestId(id.id); }
void put(CallEncoder& out, TimerId id) { out.timerId(id.id); }
void put(CallEncoder& out, OrderId id) { out.orderId(id.id); }
void put(CallEncoder& out, const OrderIds& list) {
  out.value(static_cast<int64>(list.ids.size()));
  for (const int64 id : list.ids) out.orderId(id);
}
void put(CallEncoder& out, const PublicationAnswer& answer) {
  const bool isTaken = answer.status.code == 0;
  out.value(isTaken ? ResultStatus() : answer.status);
}
void put(CallEncoder& out, bool flag) { out.value(std::int32_t{flag}); }
void put(CallEncoder& out, const QJsonObject& object) { out.value(compactJson(object)); }
void put(CallEncoder& out, const EnvItem& item) { out.value(item); }
void put(CallEncoder& out, const std::map<std::string, std::string>& pairs) {
  out.value(static_cast<int64>(pairs.size()));
  for (const auto& [key, value] : pairs) {
    out.value(key);
    out.value(value);
  }
}
template <typename Element>
void put(CallEncoder& out, const std::list<Element>& list) {
  out.values(list);
}
template <typename Value>
void put(CallEncoder& out, const Value& value) {
  out.value(value);
}

}  // namespace

namespace {

/// What others may come to hear of.
bool isPublication(ActionKind kind) {
  return (kind >= ActionKind::PublishQuoteList && kind <= ActionKind::PublishOp8) ||
         kind == ActionKind::PublishRecords;
}

}  // namespace

template <typename Do, typename... Arguments>
auto TapContext::act(ActionKind kind, const Do& doIt, const Arguments&... arguments) {
  if (isPublication(kind)) record_.hasPublished = true;
  hear();
  const bool written = isWritten();
  if (written) {
    encoder_->begin(kind);
    (put(*encoder_, arguments), ...);
  }
  if constexpr (std::is_void_v<decltype(doIt())>) {
    doIt();
  } else {
    auto answer = doIt();
    if (written) put(*encoder_, answer);
    return answer;
  }
}

template <typename Do, typename... Arguments>
ResultStatus TapContext::publish(ActionKind kind, PublishedCount& count, std::size_t items,
                                 int flags, const Do& doIt, const Arguments&... arguments) {
  const PublicationAnswer answer = act(
      kind, [&] { return PublicationAnswer{doIt()}; }, arguments..., flags);
  if (isHeard())
    (answer.status.code != 0   ? count.refused
     : (flags & kLiveBit) != 0 ? count.live
                               : count.history) += items;
  return answer.status;
}

void TapContext::setError(const std::string& message) {
  act(
      ActionKind::SetError, [&] { inner_.setError(message); }, message);
}

void TapContext::setFinish() {
  act(ActionKind::SetFinish, [&] { inner_.setFinish(); });
}

void TapContext::stop() {
  act(ActionKind::Stop, [&] { inner_.stop(); });
}

void TapContext::notifySpi(const QJsonObject& argument) {
  act(
      ActionKind::NotifySpi, [&] { inner_.notifySpi(argument); }, argument);
}

void TapContext::setEnvs(const std::map<std::string, std::string>& values, bool store) {
  act(
      ActionKind::SetEnvs, [&] { inner_.setEnvs(values, store); }, values, store);
}

void TapContext::setEnv(const std::string& key, const std::string& value, bool store) {
  act(
      ActionKind::SetEnv, [&] { inner_.setEnv(key, value, store); }, key, value, store);
}

void TapContext::clearEnv() {
  act(ActionKind::ClearEnv, [&] { inner_.clearEnv(); });
}

void TapContext::setEnvItems(const std::list<EnvItem>& items, bool store) {
  act(
      ActionKind::SetEnvItems, [&] { inner_.setEnvItems(items, store); }, items, store);
}

void TapContext::setEnvItem(const EnvItem& item, bool store) {
  act(
      ActionKind::SetEnvItem, [&] { inner_.setEnvItem(item, store); }, item, store);
}

void TapContext::clearEnvItems() {
  act(ActionKind::ClearEnvItems, [&] { inner_.clearEnvItems(); });
}

ResultStatus TapContext::subscribeQuote(const ICodeID& code, int flags) {
  return act(
      ActionKind::SubscribeQuote, [&] { return inner_.subscribeQuote(code, flags); }, code, flags);
}

ResultStatus TapContext::subscribeKline(int requestId, const ICodeID& code,
                                        const std::string& frequency, int64 beginTime,
                                        int64 endTime, int count, int flags) {
  return act(
      ActionKind::SubscribeKlineById,
      [&] {
        return inner_.subscribeKline(requestId, code, frequency, beginTime, endTime, count, flags);
      },
      RequestId{requestId}, code, frequency, beginTime, endTime, count, flags);
}

ResultStatus TapContext::subscribeKline(const ICodeID& code, const std::string& frequency,
                                        int64 beginTime, int64 endTime, int count, int flags) {
  return act(
      ActionKind::SubscribeKline,
      [&] { return inner_.subscribeKline(code, frequency, beginTime, endTime, count, flags); },
      code, frequency, beginTime, endTime, count, flags);
}

void TapContext::setNotifyQuick(bool quick) {
  act(
      ActionKind::SetNotifyQuick, [&] { inner_.setNotifyQuick(quick); }, quick);
}

void TapContext::subscribeTrade(const TradingAccountID& account, EventSourceId source) {
  act(
      ActionKind::SubscribeTradeSource, [&] { inner_.subscribeTrade(account, source); }, account,
      static_cast<int64>(source));
}

void TapContext::subscribeTrade(const TradingAccountID& account, const ICodeID& code) {
  act(
      ActionKind::SubscribeTradeCode, [&] { inner_.subscribeTrade(account, code); }, account, code);
}

ResultStatus TapContext::subscribeDic(const std::string& name, const std::string& key,
                                      int64 beginTime, int64 endTime, int flags) {
  return act(
      ActionKind::SubscribeDic,
      [&] { return inner_.subscribeDic(name, key, beginTime, endTime, flags); }, name, key,
      beginTime, endTime, flags);
}

void TapContext::subscribeDicSnapshot(const std::string& name, const std::string& key, int flags) {
  act(
      ActionKind::SubscribeDicSnapshot, [&] { inner_.subscribeDicSnapshot(name, key, flags); },
      name, key, flags);
}

int TapContext::createTimer(int64 interval, int64 beginTime, int triggerCount) {
  return act(
             ActionKind::CreateTimer,
             [&] { return TimerId{inner_.createTimer(interval, beginTime, triggerCount)}; },
             interval, beginTime, triggerCount)
      .id;
}

void TapContext::unsubscribeQuote(const ICodeID& code) {
  act(
      ActionKind::UnsubscribeQuote, [&] { inner_.unsubscribeQuote(code); }, code);
}

void TapContext::unsubscribeKline(int requestId) {
  act(
      ActionKind::UnsubscribeKlineById, [&] { inner_.unsubscribeKline(requestId); },
      RequestId{requestId});
}

void TapContext::unsubscribeKline(const ICodeID& code, const std::string& frequency) {
  act(
      ActionKind::UnsubscribeKline, [&] { inner_.unsubscribeKline(code, frequency); }, code,
      frequency);
}

void TapContext::unsubscribeDic(const std::string& name, const std::string& key) {
  act(
      ActionKind::UnsubscribeDic, [&] { inner_.unsubscribeDic(name, key); }, name, key);
}

void TapContext::unsubscribeDicSnapshot(const std::string& name, const std::string& key) {
  act(
      ActionKind::UnsubscribeDicSnapshot, [&] { inner_.unsubscribeDicSnapshot(name, key); }, name,
      key);
}

void TapContext::stopTimer(int timerId) {
  act(
      ActionKind::StopTimer, [&] { inner_.stopTimer(timerId); }, TimerId{timerId});
}

ResultStatus TapContext::publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) {
  return publish(
      ActionKind::PublishQuoteList, record_.publishedQuotes, quotes.size(), flags,
      [&] { return inner_.publishQuoteList(quotes, flags); }, quotes);
}

ResultStatus TapContext::publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                            int term, int flags) {
  return publish(
      ActionKind::PublishQuoteSeries, record_.publishedBars, bars.size(), flags,
      [&] { return inner_.publishQuoteSeries(code, bars, term, flags); }, code, bars, term);
}

ResultStatus TapContext::publishQuoteItems(const ICodeID& code,
                                           const std::list<IDepthMarketData>& ticks, int flags) {
  return publish(
      ActionKind::PublishQuoteItems, record_.publishedQuotes, ticks.size(), flags,
      [&] { return inner_.publishQuoteItems(code, ticks, flags); }, code, ticks);
}

ResultStatus TapContext::publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                            int flags) {
  return publish(
      ActionKind::PublishQuoteItems2, record_.publishedBars, bars.size(), flags,
      [&] { return inner_.publishQuoteItems2(code, bars, flags); }, code, bars);
}

ResultStatus TapContext::publishOp5(const std::string& key, const std::string& text, int flags) {
  return act(
      ActionKind::PublishOp5, [&] { return inner_.publishOp5(key, text, flags); }, key, text,
      flags);
}

ResultStatus TapContext::publishOp6(const std::string& key, const std::string& text, int flags) {
  return act(
      ActionKind::PublishOp6, [&] { return inner_.publishOp6(key, text, flags); }, key, text,
      flags);
}

ResultStatus TapContext::publishOp7(const std::string& key, const std::string& text, int flags) {
  return act(
      ActionKind::PublishOp7, [&] { return inner_.publishOp7(key, text, flags); }, key, text,
      flags);
}

ResultStatus TapContext::publishOp8(const std::string& key, const std::string& text, int flags) {
  return act(
      ActionKind::PublishOp8, [&] { return inner_.publishOp8(key, text, flags); }, key, text,
      flags);
}

ResultStatus TapContext::attachAccount(const std::string& account, int counterType) {
  return act(
      ActionKind::AttachAccount, [&] { return inner_.attachAccount(account, counterType); },
      account, counterType);
}

ResultStatus TapContext::detachAccount(const std::string& account, int counterType) {
  return act(
      ActionKind::DetachAccount, [&] { return inner_.detachAccount(account, counterType); },
      account, counterType);
}

ResultStatus TapContext::sendOrderIds(const OrderRequest& request, std::list<int64>& orderIds) {
  std::list<int64> made;
  ResultStatus status = act(
      ActionKind::SendOrderIds, [&] { return inner_.sendOrderIds(request, made); }, request);
  if (isWritten()) put(*encoder_, OrderIds{made});
  orderIds.splice(orderIds.end(), made);
  return status;
}

ResultStatus TapContext::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  ResultStatus status = act(
      ActionKind::SendOrder, [&] { return inner_.sendOrder(request, orders); }, request);
  if (isWritten()) put(*encoder_, orders);
  return status;
}

ResultStatus TapContext::cancelOrder(int64 orderId, const std::string& source) {
  return act(
      ActionKind::CancelOrder, [&] { return inner_.cancelOrder(orderId, source); },
      OrderId{orderId}, source);
}

ResultStatus TapContext::orderActionForward(const Order& order, int action) {
  return act(
      ActionKind::OrderAction, [&] { return inner_.orderActionForward(order, action); }, order,
      action);
}

ResultStatus TapContext::publishRecords(const std::string& name, const std::string& target,
                                        int valueType, const std::list<Record>& records,
                                        int flags) {
  return publish(
      ActionKind::PublishRecords, record_.publishedRecords, records.size(), flags,
      [&] { return inner_.publishRecords(name, target, valueType, records, flags); }, name, target,
      valueType, records);
}

void TapContext::requestRange(const std::string& name, const std::string& target, int64 begin,
                              int64 end, int flags) {
  act(
      ActionKind::RequestRange, [&] { inner_.requestRange(name, target, begin, end, flags); }, name,
      target, begin, end, flags);
}

}  // namespace orvane
