#pragma once

#include <memory>

#include "services/Common/ITimerNotify.h"
#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane {

/// What a platform supplies behind one `Timer`.
class ORVANE_API ITimerEngine {
 public:
  virtual ~ITimerEngine();
  virtual bool start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
                     int triggerCount) = 0;
  virtual void stop() = 0;
};

/// One timer, on the clock of the installed platform. Made stopped; any thread may stop it.
class ORVANE_API Timer {
 public:
  explicit Timer(int id);
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// A new id, unique in the process.
  static int genId();

  /// Starts firing `onTimer(id, value)` at `beginTime` (UTC milliseconds) and every `interval`
  /// milliseconds after it, `triggerCount` times in all, on a thread of the platform. Holds
  /// `notify` as long as it runs. What a count of 0 means is the platform's; see
  /// docs/services.md.
  bool start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
             int triggerCount);

  /// Stops firing: after it returns no new firing starts. One that runs may still be under way.
  void stop();

 private:
  std::unique_ptr<ITimerEngine> engine_;
};

}  // namespace orvane
