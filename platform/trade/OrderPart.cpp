#include "platform/trade/OrderPart.h"

#include "platform/trade/RecordRests.h"

namespace orvane {

OrderPart::OrderPart(const Order& order)
    : id(order.id),
      value1(order.value1),
      values(order.values),
      ints(order.ints),
      value2(order.value2),
      value3(order.value3),
      value4(order.value4),
      value5(order.value5),
      key(order.pair.first),
      orderRef(order.orderRef) {}

void OrderPart::takeNumbers(const Order& order) {
  value1 = order.value1;
  values = order.values;
  ints = order.ints;
  value2 = order.value2;
  value3 = order.value3;
  value4 = order.value4;
  value5 = order.value5;
}

void OrderPart::putInto(Order& order) const {
  order.id = id;
  order.pair.first = key;
  order.orderRef = orderRef;
  order.value1 = value1;
  order.values = values;
  order.ints = ints;
  order.value2 = value2;
  order.value3 = value3;
  order.value4 = value4;
  order.value5 = value5;
}

bool OrderPart::hasSameRest(const Order& a, const Order& b) {
  // Each member is here or in the part, the pair in both.
  const auto& [id, account, code, source, cancelSource, pair, text3, text4, orderRef, value1,
               values, ints, text5, text6, value2, value3, value4, leg1, leg2, value5] = a;
  return text5 == b.text5 && text6 == b.text6 && text3 == b.text3 && text4 == b.text4 &&
         pair.second == b.pair.second && detail::areSame(cancelSource, b.cancelSource) &&
         detail::areSame(source, b.source) && detail::areSame(code, b.code) &&
         detail::areSame(account, b.account) && detail::areSame(leg1, b.leg1) &&
         detail::areSame(leg2, b.leg2);
}

std::size_t OrderPart::hashOfRest(const Order& of) noexcept {
  return detail::hashOf(of.account, of.code, of.source, of.cancelSource, of.pair.second, of.text3,
                        of.text4, of.text5, of.text6, of.leg1.code, of.leg2.code);
}

}  // namespace orvane
