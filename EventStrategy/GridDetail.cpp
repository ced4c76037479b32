#include "EventStrategy/GridDetail.h"

#include <QSet>
#include <bit>

#include "shared/TextCodec.h"

namespace orvane {
namespace {

constexpr int64 kGridSourceType = 0x20000;
constexpr const char* kGridSource = "__grid__";

constexpr std::size_t kGridIdAt = 9;  ///< In an order's `ints`.

std::string gbkOf(const QString& text) { return utf8ToGbk(text.toStdString()); }

QString textOf(const std::string& gbk) { return QString::fromStdString(gbkToUtf8(gbk)); }

SourceId sourceOf(int64 conditionId) {
  return {kGridSourceType, kGridSource, std::to_string(conditionId)};
}

/// The id that is known under a key, or else the next new one, known from now on.
int64 idOf(const QString& key, int64& nextId, GridIds& ids) {
  const auto known = ids.constFind(key);
  if (known != ids.constEnd()) return *known;
  return *ids.insert(key, nextId++);
}

double meanPrice(const QList<GridFillRecord>& fills) {
  double sum = 0;
  for (const GridFillRecord& fill : fills) sum += fill.price;
  return sum / static_cast<double>(fills.size());
}

Order orderOf(const GridOrderRecord& record) {
  Order order;
  order.account = tradingAccountOf(record.account);
  order.ints[kGridIdAt] = record.gridId;
  order.code = codeIdOf(record.code);
  order.pair = {gbkOf(record.keyA), gbkOf(record.keyB)};
  order.orderRef = gbkOf(record.orderRef);
  order.ints[4] = record.value1;
  order.ints[2] = record.value2;
  order.status() = record.status;
  order.value1 = static_cast<double>(record.time);
  order.updateTime() = record.time;
  order.values[8] = record.value3;
  order.values[1] = record.value4;
  order.values[2] = record.value5;
  order.values[9] = record.value6;
  order.values[6] = record.value7;
  order.values[5] = std::bit_cast<Word>(record.value8);
  order.text5 = gbkOf(record.text);
  return order;
}

OrderFill fillOf(const GridFillRecord& record) {
  OrderFill fill;
  fill.account = tradingAccountOf(record.account);
  fill.value1 = record.gridId;
  fill.code = codeIdOf(record.code);
  fill.orderRef = gbkOf(record.orderRef);
  fill.direction() = record.value1;
  fill.ints[1] = record.value2;
  fill.fillText = gbkOf(record.fillRef);
  fill.fillTime() = record.time;
  fill.setPrice(record.price);
  fill.values[1] = record.value3;
  fill.numbers[4] = record.value4;
  fill.values[3] = record.value5;
  return fill;
}

}  // namespace

TradingAccountID tradingAccountOf(const GridAccountPart& part) {
  TradingAccountID account;
  account.accountKey = part.accountKey;
  account.second = part.second;
  account.counterType = part.counterType;
  account.fourth = part.fourth;
  account.text1 = gbkOf(part.text1);
  account.text2 = gbkOf(part.text2);
  account.account = gbkOf(part.account);
  account.currency = part.currency;
  account.infoKey = part.infoKey;
  account.hedgeFlag = part.hedgeFlag;
  account.eighth = part.eighth;
  account.text4 = part.text4.toStdString();  // The one text that stays UTF-8.
  return account;
}

ICodeID codeIdOf(const GridCodePart& part) {
  return {part.id, part.kind, part.market, gbkOf(part.code)};
}

QString orderGridKey(const QString& a, const QString& b, int n) {
  return QString("%1@%2@%3").arg(a).arg(b).arg(n);
}

QString orderGridKey(const GridOrderRecord& record) {
  return orderGridKey(record.keyB, record.keyA, record.gridId);
}

QString orderGridKey(const Order& order) {
  return orderGridKey(textOf(order.pair.second), textOf(order.pair.first), order.ints[kGridIdAt]);
}

QString fillGroupKey(const QString& orderRef, int gridId) {
  return QString("%1@%2").arg(orderRef).arg(gridId);
}

void findGridOrderIds(const QList<GridOrderRecord>& records, const AskOpenOrders& ask,
                      GridIds& ids) {
  GridIds serviceIds;
  QMap<std::int32_t, QSet<int64>> askedCodes;
  for (const GridOrderRecord& record : records) {
    const QString key = orderGridKey(record);
    if (ids.contains(key)) continue;
    if (!serviceIds.contains(key)) {
      QSet<int64>& asked = askedCodes[record.account.accountKey];
      if (asked.contains(record.code.id)) continue;
      asked.insert(record.code.id);
      for (const Order& order : ask(tradingAccountOf(record.account), codeIdOf(record.code)))
        serviceIds[orderGridKey(order)] = order.id;
    }
    const auto found = serviceIds.constFind(key);
    if (found != serviceIds.constEnd()) ids[key] = *found;
  }
}

std::list<Order> gridOrders(int64 conditionId, const QList<GridOrderRecord>& records,
                            const QList<GridFillRecord>& fills, int64 nextId, GridIds& ids) {
  QMap<QString, QList<GridFillRecord>> fillGroups;
  for (const GridFillRecord& fill : fills)
    fillGroups[fillGroupKey(fill.orderRef, fill.gridId)].append(fill);
  std::list<Order> orders;
  for (const GridOrderRecord& record : records) {
    Order order = orderOf(record);
    order.id = idOf(orderGridKey(record), nextId, ids);
    order.source = sourceOf(conditionId);
    const auto group = fillGroups.constFind(fillGroupKey(record.orderRef, record.gridId));
    if (group != fillGroups.constEnd()) order.value5 = meanPrice(*group);
    orders.push_back(std::move(order));
  }
  return orders;
}

std::list<OrderFill> gridFills(int64 conditionId, const QList<GridOrderRecord>& orders,
                               const QList<GridFillRecord>& records, int64 nextId, GridIds& ids) {
  QMap<QString, GridOrderRecord> orderByRef;
  for (const GridOrderRecord& order : orders) orderByRef[order.orderRef] = order;
  std::list<OrderFill> fills;
  for (const GridFillRecord& record : records) {
    OrderFill fill = fillOf(record);
    fill.id = idOf(record.fillRef, nextId, ids);
    fill.source = sourceOf(conditionId);
    const auto order = orderByRef.constFind(record.orderRef);
    if (order != orderByRef.constEnd()) {
      fill.numbers[0] = order->time;
      fill.numbers[1] = order->value4;
      fill.numbers[2] = order->value5;
      fill.pair = {gbkOf(order->keyA), gbkOf(order->keyB)};
    }
    fills.push_back(std::move(fill));
  }
  return fills;
}

}  // namespace orvane
