#include "platform/trade/conditions/GridDetail.h"

#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

/// Where an order carries its cell; see `GridDesk`.
constexpr std::size_t kCellAt = 9;

QString textOf(const std::string& gbk) { return QString::fromStdString(gbkToUtf8(gbk)); }

GridAccountPart partOf(const TradingAccountID& account) {
  GridAccountPart part;
  part.accountKey = account.accountKey;
  part.second = account.second;
  part.counterType = account.counterType;
  part.fourth = account.fourth;
  part.text1 = textOf(account.text1);
  part.text2 = textOf(account.text2);
  part.account = textOf(account.account);
  part.currency = account.currency;
  part.infoKey = account.infoKey;
  part.hedgeFlag = account.hedgeFlag;
  part.eighth = account.eighth;
  part.text4 = QString::fromStdString(account.text4);
  return part;
}

GridCodePart partOf(const ICodeID& code) {
  return {code.id, code.kind, code.market, textOf(code.code)};
}

// The unnamed fields go where the translation puts them back.

GridOrderRecord recordOf(const Order& order) {
  const OrderView view(order);
  GridOrderRecord record;
  record.account = partOf(order.account);
  record.gridId = order.ints[kCellAt];
  record.code = partOf(order.code);
  record.keyA = textOf(order.pair.first);
  record.keyB = textOf(order.pair.second);
  record.orderRef = textOf(order.orderRef);
  record.value1 = order.ints[order::DirectionAt];
  record.value2 = order.ints[order::OffsetAt];
  record.status = order.status();
  record.time = order.updateTime();
  record.value3 = order.values[order::FrozenMoney];
  record.value4 = order.values[order::Volume];
  record.value5 = order.values[order::FilledVolume];
  record.value6 = order.values[order::TradingDay];
  record.value7 = order.values[order::Turnover];
  record.value8 = view.limitPrice();
  record.text = textOf(order.text5);
  return record;
}

GridFillRecord recordOf(const OrderFill& fill, std::int32_t cell) {
  GridFillRecord record;
  record.account = partOf(fill.account);
  record.gridId = cell;
  record.code = partOf(fill.code);
  record.orderRef = textOf(fill.orderRef);
  record.value1 = fill.direction();
  record.value2 = fill.ints[fill::OffsetAt];
  record.fillRef = textOf(fill.fillText);
  record.time = fill.fillTime();
  record.price = fill.price();
  record.value3 = fill.values[fill::Volume];
  record.value4 = fill.numbers[fill::Profit];
  record.value5 = fill.values[fill::Fee];
  return record;
}

}  // namespace

bool isNamedBy(const GridDetail& detail, const CondId& key) {
  const auto fits = [](auto wanted, auto value) { return wanted == 0 || wanted == value; };
  return fits(key.first, detail.conditionId) && fits(key.second, detail.codeId) &&
         fits(key.third, detail.account) &&
         (key.text.isEmpty() || utf8ToGbk(key.text.toStdString()) == detail.name);
}

void tellDetail(CondSpi& spi, const GridDetail& detail) {
  QList<GridOrderRecord> orders;
  for (const Order& order : detail.orders) orders.append(recordOf(order));
  QList<GridFillRecord> fills;
  for (std::size_t at = 0; at < detail.fills.size(); ++at)
    fills.append(recordOf(detail.fills[at], detail.cells[at]));
  spi.onCondDetail(detail.conditionId, orders, fills);
}

}  // namespace orvane::detail
