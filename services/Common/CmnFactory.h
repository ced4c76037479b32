#pragma once

#include "shared/CondId.h"
#include "shared/Export.h"

namespace orvane {

/// Where details of conditions go. The third operation carries a detail; its records join it with
/// the translation of grid details.
class ORVANE_API CondSpi {
 public:
  virtual ~CondSpi();
  virtual void onCondReserved1();
  virtual void onCondReserved2();
  virtual void onCondDetail(int64 conditionId);
  virtual void onCondReserved4();
  virtual void onCondReserved5();
  virtual void onCondReserved6();
};

/// The condition service, which works grid orders. Owned by the platform; any thread may call it.
class ORVANE_API ICondService {
 public:
  virtual ~ICondService();
  virtual void subscribeDetail(const CondId& condition, CondSpi* spi) = 0;
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
