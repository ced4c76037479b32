#pragma once

#include <QString>

#include "shared/GridRecords.h"

namespace orvane::support {

/// A grid order of the account with this key in this code; its keys are "a<n>" and "b<n>" and its
/// reference "r<n>".
inline GridOrderRecord gridOrderOf(int n, int accountKey = 5, int64 codeId = 1, int gridId = 1) {
  GridOrderRecord record;
  record.account.accountKey = accountKey;
  record.gridId = gridId;
  record.code.id = codeId;
  record.keyA = QString("a%1").arg(n);
  record.keyB = QString("b%1").arg(n);
  record.orderRef = QString("r%1").arg(n);
  return record;
}

/// A fill "f<n>" of the grid order that has this reference.
inline GridFillRecord gridFillOf(int n, const QString& orderRef, double price = 0, int gridId = 1) {
  GridFillRecord record;
  record.account.accountKey = 5;
  record.gridId = gridId;
  record.code.id = 1;
  record.orderRef = orderRef;
  record.fillRef = QString("f%1").arg(n);
  record.price = price;
  return record;
}

}  // namespace orvane::support
