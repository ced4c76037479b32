#pragma once

#include <memory>
#include <mutex>

#include "services/QuoteClient/IDataMaintain.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// What all maintenance objects of one platform share: each notes its calls here as
/// "maintain.<operation>" and answers as scripted, and the spi of the last request stays known, so
/// that a test can call back as the service would, however late. Any thread may use it.
class MaintainDesk {
 public:
  explicit MaintainDesk(CallLog& calls) : calls_(calls) {}

  /// Notes "maintain.create", and "maintain.release" when the object goes.
  IDataMaintain* create();

  std::shared_ptr<IDataMaintainSpi> spi() const;
  void forget();

 private:
  class Maintain;

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::shared_ptr<IDataMaintainSpi> spi_;
};

}  // namespace orvane::support
