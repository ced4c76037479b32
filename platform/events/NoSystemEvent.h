#pragma once

#include "platform/core/NotSupported.h"
#include "services/QuoteClient/ISystemEvent.h"

namespace orvane::detail {

/// Takes notices that no other part of this platform waits for.
class NoSystemEvent final : public ISystemEvent {
 public:
  void codePropertyChanged(const ICodeProperty&, int) override {}
};

}  // namespace orvane::detail
