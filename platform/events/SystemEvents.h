#pragma once

#include "services/QuoteClient/IGeneralEventManager.h"
#include "services/QuoteClient/ISystemEvent.h"

namespace orvane::detail {

/// Tells a change of a code's properties as a general event: target "system", name "codeProperty",
/// as key the code's text, and every property in a field of its name. Any thread may call it.
class SystemEvents final : public ISystemEvent {
 public:
  explicit SystemEvents(IGeneralEventManager& events) : events_(events) {}

  void codePropertyChanged(const ICodeProperty& property, int change) override;

 private:
  IGeneralEventManager& events_;
};

}  // namespace orvane::detail
