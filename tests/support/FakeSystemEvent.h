#pragma once

#include "services/QuoteClient/ISystemEvent.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// Hears of changes and tells nobody. Notes "system.codePropertyChanged".
class FakeSystemEvent final : public ISystemEvent {
 public:
  explicit FakeSystemEvent(CallLog& calls) : calls_(calls) {}

  void codePropertyChanged(const ICodeProperty& property, int change) override {
    calls_.record("system.codePropertyChanged", property.name + " " + std::to_string(change));
  }

 private:
  CallLog& calls_;
};

}  // namespace orvane::support
