#pragma once

#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane {

/// Where a timer's firings go.
class ORVANE_API ITimerNotify {
 public:
  ITimerNotify();
  virtual ~ITimerNotify();

  /// One firing of timer `id`. `value` is what the timer's platform passes with each firing; the
  /// embedded one passes the time the firing was due at, in UTC milliseconds.
  virtual void onTimer(int id, int64 value) = 0;
};

}  // namespace orvane
