#include "platform/trade/FillPart.h"

#include "platform/trade/RecordRests.h"

namespace orvane {

FillPart::FillPart(const OrderFill& fill)
    : id(fill.id),
      value1(fill.value1),
      ints(fill.ints),
      numbers(fill.numbers),
      values(fill.values),
      key(fill.pair.first),
      orderRef(fill.orderRef),
      fillText(fill.fillText) {}

void FillPart::putInto(OrderFill& fill) const {
  fill.id = id;
  fill.value1 = value1;
  fill.ints = ints;
  fill.numbers = numbers;
  fill.values = values;
  fill.pair.first = key;
  fill.orderRef = orderRef;
  fill.fillText = fillText;
}

bool FillPart::hasSameRest(const OrderFill& a, const OrderFill& b) {
  // Each member is here or in the part, the pair in both.
  const auto& [id, value1, account, code, source, pair, text1, orderRef, numbers, ints, fillText,
               values, text3] = a;
  return text1 == b.text1 && text3 == b.text3 && pair.second == b.pair.second &&
         detail::areSame(source, b.source) && detail::areSame(code, b.code) &&
         detail::areSame(account, b.account);
}

std::size_t FillPart::hashOfRest(const OrderFill& of) noexcept {
  return detail::hashOf(of.account, of.code, of.source, of.pair.second, of.text1, of.text3);
}

}  // namespace orvane
