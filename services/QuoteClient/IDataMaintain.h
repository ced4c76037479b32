#pragma once

#include <memory>

#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// Where the outcome of a maintenance goes. Called on threads of the service.
class ORVANE_API IDataMaintainSpi {
 public:
  IDataMaintainSpi() = default;
  IDataMaintainSpi(const IDataMaintainSpi&) = delete;
  IDataMaintainSpi& operator=(const IDataMaintainSpi&) = delete;
  virtual ~IDataMaintainSpi();
  virtual void onMaintainReserved1();
  virtual void onMaintainReserved2();
  virtual void onMaintainReserved3();
  /// The request ended, well or badly. Once per accepted request.
  virtual void onMaintained(int requestId, const ICodeID& code, ITimeType timeType,
                            const ResultStatus& status);
  virtual void onMaintainReserved5();
};

/// Puts the stored data of a code in order. Made for one use and given back; any thread may use it.
class ORVANE_API IDataMaintain {
 public:
  virtual ~IDataMaintain();

  /// A new one; never null. It is given back with `release`.
  static IDataMaintain* Create();
  /// Frees one that `Create` made. What it accepted goes on, and its spi is still called. Null is
  /// no error.
  static void release(IDataMaintain* maintain);

  /// Asks for the data of a code in a unit of time. What `value` means is the platform's. Code 0:
  /// accepted, and `IDataMaintainSpi::onMaintained` follows; it never comes inside this call. The
  /// spi is held until then.
  virtual ResultStatus maintain(const ICodeID& code, ITimeType timeType, int64 value,
                                const std::shared_ptr<IDataMaintainSpi>& spi, int requestId) = 0;
};

}  // namespace orvane
