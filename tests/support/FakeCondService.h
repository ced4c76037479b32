#pragma once

#include <atomic>

#include "services/Common/CmnFactory.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A condition service that delivers nothing of its own accord. It notes every call as
/// "cond.<operation>", and remembers the spi of the last subscription.
class FakeCondService final : public ICondService {
 public:
  explicit FakeCondService(CallLog& calls) : calls_(calls) {}

  void subscribeDetail(const CondId& condition, CondSpi* spi) override {
    spi_ = spi;
    calls_.record("cond.subscribeDetail", std::to_string(condition.first));
  }
  void unsubscribeDetails(CondSpi*) override { calls_.record("cond.unsubscribeDetails"); }

  CondSpi* spi() const { return spi_; }

 private:
  CallLog& calls_;
  std::atomic<CondSpi*> spi_{nullptr};
};

}  // namespace orvane::support
