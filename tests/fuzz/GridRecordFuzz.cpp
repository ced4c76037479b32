#include <fuzzer/FuzzedDataProvider.h>

#include "EventStrategy/GridDetail.h"
#include "tests/fuzz/InputFile.h"

namespace orvane {
namespace {

QString textOf(FuzzedDataProvider& input) {
  return QString::fromUtf8(QByteArray::fromStdString(input.ConsumeRandomLengthString(6)));
}

GridAccountPart accountOf(FuzzedDataProvider& input) {
  GridAccountPart part;
  part.accountKey = input.ConsumeIntegralInRange(0, 2);
  part.text1 = textOf(input);
  part.account = textOf(input);
  return part;
}

GridOrderRecord orderOf(FuzzedDataProvider& input) {
  GridOrderRecord record;
  record.account = accountOf(input);
  record.gridId = input.ConsumeIntegral<std::int32_t>();
  record.code.id = input.ConsumeIntegralInRange(0, 3);
  record.keyA = textOf(input);
  record.keyB = textOf(input);
  record.orderRef = textOf(input);
  record.status = input.ConsumeIntegral<std::int32_t>();
  record.text = textOf(input);
  return record;
}

GridFillRecord fillOf(FuzzedDataProvider& input) {
  GridFillRecord record;
  record.account = accountOf(input);
  record.gridId = input.ConsumeIntegral<std::int32_t>();
  record.orderRef = textOf(input);
  record.fillRef = textOf(input);
  record.price = input.ConsumeFloatingPoint<double>();
  return record;
}

std::list<int64> idsOf(const auto& records) {
  std::list<int64> ids;
  for (const auto& one : records) ids.push_back(one.id);
  return ids;
}

}  // namespace
}  // namespace orvane

/// Details of a condition with any text and number: each record gives one order or fill, and the
/// same detail again gives the same ids, whatever the clock says by then.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvane;
  FuzzedDataProvider input(data, size);
  QList<GridOrderRecord> orders;
  QList<GridFillRecord> fills;
  while (input.remaining_bytes() > 0 && orders.size() + fills.size() < 32) {
    if (input.ConsumeBool())
      orders.append(orderOf(input));
    else
      fills.append(fillOf(input));
  }
  int asked = 0;
  GridIds orderIds;
  GridIds fillIds;
  findGridOrderIds(
      orders,
      [&asked](const TradingAccountID&, const ICodeID&) {
        ++asked;
        return std::list<Order>();
      },
      orderIds);
  require(asked <= 3 * 4);
  const auto first = idsOf(gridOrders(7, orders, fills, 1000, orderIds));
  const auto firstFills = idsOf(gridFills(7, orders, fills, 1000, fillIds));
  require(first.size() == static_cast<std::size_t>(orders.size()));
  require(firstFills.size() == static_cast<std::size_t>(fills.size()));
  require(idsOf(gridOrders(7, orders, fills, 9000, orderIds)) == first);
  require(idsOf(gridFills(7, orders, fills, 9000, fillIds)) == firstFills);
  return 0;
}
