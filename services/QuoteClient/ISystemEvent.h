#pragma once

#include "shared/CodeProperty.h"
#include "shared/Export.h"

namespace orvane {

/// Tells the platform's other parts of a change.
class ORVANE_API ISystemEvent {
 public:
  virtual ~ISystemEvent();
  static ISystemEvent* instance();
  /// A user changed a code's properties.
  virtual void codePropertyChanged(const ICodeProperty& property, int change) = 0;
};

}  // namespace orvane
