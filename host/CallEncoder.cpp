#include "host/CallEncoder.h"

#include "platform/fields/FillView.h"

namespace orvane {

void CallEncoder::value(const ICodeID& code) {
  out_.put(code.id);
  out_.put(code.kind);
  out_.put(code.market);
  out_.put(code.code);
}

void CallEncoder::value(const ResultStatus& status) {
  out_.put(status.code);
  out_.put(status.message);
}

void CallEncoder::value(const IDepthMarketData& quote) {
  value(quote.code);
  out_.put(quote.block1);
  out_.put(quote.block2);
  out_.put(quote.block3);
  for (const DepthLevel& level : quote.levels) {
    out_.put(level.value1);
    out_.put(level.value2);
    out_.put(level.value3);
  }
  out_.put(static_cast<std::uint64_t>(quote.extras.size()));
  for (const auto& [key, text] : quote.extras) {
    out_.put(key);
    out_.put(text);
  }
}

void CallEncoder::value(const KLineProgress& progress) {
  out_.put(progress.value1);
  out_.put(progress.value2);
  out_.put(progress.value3);
  out_.put(progress.value4);
  value(progress.status);
}

void CallEncoder::value(const TradingAccountID& account) {
  out_.put(ordinal(accountKeys_, account.accountKey));
  out_.put(account.second);
  out_.put(account.counterType);
  out_.put(account.fourth);
  out_.put(account.text1);
  out_.put(account.text2);
  out_.put(account.account);
  out_.put(account.currency);
  out_.put(account.infoKey);
  out_.put(account.hedgeFlag);
  out_.put(account.eighth);
  out_.put(account.text4);
}

void CallEncoder::value(const TradingAccount& capital) {
  value(capital.account);
  out_.put(capital.block1);
  out_.put(capital.value);
  out_.put(capital.block2);
}

void CallEncoder::value(const SourceId& source) {
  out_.put(source.sourceType);
  out_.put(source.createSource);
  out_.put(source.sourceText);
}

void CallEncoder::value(const OrderLeg& leg) {
  value(leg.code);
  out_.put(leg.values);
}

void CallEncoder::reference(const std::string& text, int64 orderId) {
  if (text != std::to_string(orderId)) return out_.put(text);
  out_.put(std::string_view("#"));
  this->orderId(orderId);
}

void CallEncoder::value(const Order& order) {
  orderId(order.id);
  value(order.account);
  value(order.code);
  value(order.source);
  value(order.cancelSource);
  reference(order.pair.first, order.id);
  out_.put(order.pair.second);
  out_.put(order.text3);
  out_.put(order.text4);
  reference(order.orderRef, order.id);
  out_.put(order.value1);
  out_.put(order.values);
  out_.put(order.ints);
  out_.put(order.text5);
  out_.put(order.text6);
  out_.put(order.value2);
  out_.put(order.value3);
  out_.put(order.value4);
  value(order.leg1);
  value(order.leg2);
  out_.put(order.value5);
}

void CallEncoder::value(const OrderRequest& request) {
  value(request.account);
  value(request.code);
  value(request.source);
  out_.put(request.pair.first);
  out_.put(request.pair.second);
  out_.put(request.text3);
  out_.put(request.text4);
  out_.put(request.orderRef);
  out_.put(request.value1);
  out_.put(request.values);
  out_.put(request.ints);
  out_.put(request.text5);
  out_.put(request.text6);
}

void CallEncoder::value(const OrderFill& fill) {
  const int64 ofOrder = FillView(fill).orderId();
  out_.put(ordinal(fillIds_, fill.id));
  out_.put(fill.value1);
  value(fill.account);
  value(fill.code);
  value(fill.source);
  reference(fill.pair.first, ofOrder);
  out_.put(fill.pair.second);
  out_.put(fill.text1);
  reference(fill.orderRef, ofOrder);
  for (std::size_t i = 0; i < fill::OrderId; ++i) out_.put(fill.numbers[i]);
  orderId(ofOrder);
  out_.put(fill.ints);
  // The fill's own number in text, which stands above already.
  out_.put(fill.fillText == std::to_string(fill.id) ? std::string("#") : fill.fillText);
  out_.put(fill.values);
  out_.put(fill.text3);
}

void CallEncoder::value(const Position& position) {
  out_.put(position.first);
  value(position.account);
  value(position.code);
  out_.put(position.text1);
  out_.put(position.block1);
  out_.put(position.value1);
  out_.put(position.block2);
  out_.put(position.value2);
  out_.put(position.block3);
  out_.put(position.ints);
  out_.put(position.block4);
  out_.put(position.value3);
}

void CallEncoder::value(const SourcePosition& position) {
  value(static_cast<const Position&>(position));
  out_.put(position.sourceType);
  out_.put(position.createSource);
  out_.put(position.sourceText);
}

void CallEncoder::value(const EnvItem& item) {
  out_.put(item.group);
  out_.put(item.key);
  out_.put(item.kind);
  out_.put(item.text);
}

void CallEncoder::value(const Record& record) {
  out_.put(record.key);
  out_.put(record.value2);
  out_.put(record.text);
}

}  // namespace orvane
