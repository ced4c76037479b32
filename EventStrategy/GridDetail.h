#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <functional>
#include <list>

#include "shared/GridRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// The translation of a condition's details into ordinary orders and fills. None of these touches
/// anything but its arguments; the caller's lock guards the id tables.
///
/// The records have no 64-bit id of their own, so they are given one that stays the same from
/// detail to detail: an order the one that the trade service knows it by, if it does, and a fresh
/// one otherwise; a fill always a fresh one.

/// Ids that were given: of an order under its `orderGridKey`, of a fill under its `fillRef`.
using GridIds = QMap<QString, int64>;

/// The open orders of an account in a code, as the trade service answers them.
using AskOpenOrders = std::function<std::list<Order>(const TradingAccountID&, const ICodeID&)>;

TradingAccountID tradingAccountOf(const GridAccountPart& part);
ICodeID codeIdOf(const GridCodePart& part);

/// What tells a grid order: two keys and the grid's number.
QString orderGridKey(const QString& a, const QString& b, int n);
QString orderGridKey(const GridOrderRecord& record);
QString orderGridKey(const Order& order);

/// What fills of one order have in common with it.
QString fillGroupKey(const QString& orderRef, int gridId);

/// Finds the ids of those orders that the trade service knows and that `ids` lacks. Asks once for
/// an account and code at most, however many records share them.
void findGridOrderIds(const QList<GridOrderRecord>& records, const AskOpenOrders& ask,
                      GridIds& ids);

/// The orders of a detail, in its order. One that `ids` lacks takes the next id from `nextId` on,
/// and is put there. An order's `value5` becomes the mean price of its fills in this detail.
std::list<Order> gridOrders(int64 conditionId, const QList<GridOrderRecord>& records,
                            const QList<GridFillRecord>& fills, int64 nextId, GridIds& ids);

/// The fills of a detail, in its order, each with what it takes over from its order if the detail
/// has that. Ids as with `gridOrders`.
std::list<OrderFill> gridFills(int64 conditionId, const QList<GridOrderRecord>& orders,
                               const QList<GridFillRecord>& records, int64 nextId, GridIds& ids);

}  // namespace orvane
