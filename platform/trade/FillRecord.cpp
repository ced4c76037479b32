#include "platform/trade/FillRecord.h"

#include "platform/fields/FillView.h"

namespace orvane::detail {
namespace {

constexpr int64 kFillsPerOrder = 100'000;

}  // namespace

OrderFill fillRecord(const WorkingOrder& order, const Booking& booking, Price price,
                     Volume volume) {
  const Order& of = order.record;
  const int64 id = of.id * kFillsPerOrder + order.fills;
  OrderFill record{.id = id,
                   .account = of.account,
                   .code = of.code,
                   .source = of.source,
                   .pair = of.pair,
                   .text1 = {},
                   .orderRef = of.orderRef,
                   .fillText = std::to_string(id),
                   .text3 = {}};
  record.direction() = static_cast<std::int32_t>(order.direction);
  record.ints[fill::OffsetAt] = static_cast<std::int32_t>(order.offset);
  record.setPrice(toDouble(price));
  record.values[fill::Volume] = wordOf(toDouble(volume));
  record.values[fill::Fee] = wordOf(toDouble(booking.fee));
  record.numbers[fill::OrderTime] = OrderView(of).insertTime();
  record.numbers[fill::OrderVolume] = of.values[order::Volume];
  record.numbers[fill::OrderFilledVolume] = of.values[order::FilledVolume];
  record.numbers[fill::Turnover] = wordOf(toDouble(booking.turnover));
  record.numbers[fill::Profit] = wordOf(toDouble(booking.profit));
  record.numbers[fill::OrderId] = of.id;
  return record;
}

}  // namespace orvane::detail
