#pragma once

#include <QString>
#include <limits>

#include "shared/Types.h"

namespace orvane {

/// The details of a condition as the condition service reports them: the orders that it works and
/// their fills. An order is joined to the trade service's own by `keyA`, `keyB` and `gridId`, and
/// a fill to its order by `orderRef`. Fields without a meaning here are carried into the `Order` or
/// `OrderFill` that is made of the record.

/// The account of a record: field by field a `TradingAccountID`.
struct GridAccountPart {
  std::int32_t accountKey = std::numeric_limits<std::int32_t>::max();
  std::int32_t second = std::numeric_limits<std::int32_t>::max();
  std::int32_t counterType = -1;
  std::int32_t fourth = 0;
  QString text1, text2, account;
  std::int32_t currency = 11;
  std::int32_t infoKey = 0;
  std::int32_t hedgeFlag = 0;
  std::int32_t eighth = 0;
  QString text4;
};

/// The code of a record: field by field an `ICodeID`.
struct GridCodePart {
  int64 id = 0;
  std::int32_t kind = -1;
  std::int32_t market = -1;
  QString code;
};

/// An order that a condition works.
struct GridOrderRecord {
  GridAccountPart account;
  std::int32_t gridId = 0;
  GridCodePart code;
  QString keyA, keyB;
  QString orderRef;
  std::int32_t value1 = 0, value2 = 0;
  std::int32_t status = 0;  ///< As `Order::status`.
  int64 time = 0;           ///< UTC milliseconds.
  Word value3 = 0, value4 = 0, value5 = 0, value6 = 0, value7 = 0;
  double value8 = 0;
  QString text;
};

/// A fill of such an order.
struct GridFillRecord {
  GridAccountPart account;
  std::int32_t gridId = 0;
  GridCodePart code;
  QString orderRef;  ///< That of its `GridOrderRecord`.
  std::int32_t value1 = 0, value2 = 0;
  QString fillRef;  ///< What tells it from every other fill.
  int64 time = 0;   ///< UTC milliseconds.
  double price = 0;
  Word value3 = 0, value4 = 0, value5 = 0;
};

}  // namespace orvane
