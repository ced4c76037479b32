#include "platform/trade/FillRecord.h"

#include "platform/fields/FillView.h"

namespace orvane::detail {
namespace {

constexpr int64 kFillsPerOrder = 100'000;

}  // namespace

OrderFill fillRecord(const WorkingOrder& order, const Booking& booking, Price price,
                     Volume volume) {
  const Order& of = order.record;
  OrderFill record;
  record.id = of.id * kFillsPerOrder + order.fills;
  record.account = of.account;
  record.code = of.code;
  record.source = of.source;
  record.pair = of.pair;
  record.orderRef = of.orderRef;
  record.direction() = static_cast<std::int32_t>(order.direction);
  record.ints[fill::OffsetAt] = static_cast<std::int32_t>(order.offset);
  record.fillText = std::to_string(record.id);
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
