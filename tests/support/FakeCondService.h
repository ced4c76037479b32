#pragma once

#include "services/Common/CmnFactory.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A condition service that delivers nothing of its own accord. It notes every call as
/// "cond.<operation>".
class FakeCondService final : public ICondService {
 public:
  explicit FakeCondService(CallLog& calls) : calls_(calls) {}

  void subscribeDetail(const CondId& condition, CondSpi*) override {
    calls_.record("cond.subscribeDetail", std::to_string(condition.first));
  }
  void unsubscribeDetails(CondSpi*) override { calls_.record("cond.unsubscribeDetails"); }

 private:
  CallLog& calls_;
};

}  // namespace orvane::support
