#pragma once

#include <QList>

#include "shared/CondId.h"
#include "shared/Export.h"
#include "shared/GridRecords.h"

namespace orvane {

/// Where details of conditions go. Called on threads of the service, which does not own it.
class ORVANE_API CondSpi {
 public:
  virtual ~CondSpi();
  virtual void onCondReserved1();
  virtual void onCondReserved2();
  /// The orders that a condition works and their fills, whole or what changed. Records that come
  /// again in a later detail are delivered again.
  virtual void onCondDetail(const int64& conditionId, const QList<GridOrderRecord>& orders,
                            const QList<GridFillRecord>& fills);
  virtual void onCondReserved4();
  virtual void onCondReserved5();
  virtual void onCondReserved6();
};

/// The condition service, which works grid orders. Owned by the platform; any thread may call it.
/// It delivers on its own threads: callers hold locks.
class ORVANE_API ICondService {
 public:
  virtual ~ICondService();
  /// Details of this condition go to `spi` until `unsubscribeDetails`.
  virtual void subscribeDetail(const CondId& condition, CondSpi* spi) = 0;
  /// Ends every subscription of `spi`. When it returns, no call-back of it starts any more.
  virtual void unsubscribeDetails(CondSpi* spi) = 0;
};

/// The way to the common objects of the installed platform.
class ORVANE_API CmnFactory {
 public:
  static CmnFactory* instance();
  /// The object of this number: 3 is the condition service. Null where the platform has none.
  ICondService* get(int number);
};

}  // namespace orvane
