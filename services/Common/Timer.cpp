#include "services/Common/Timer.h"

#include "services/IPlatform.h"

namespace orvane {

Timer::Timer(int id) : engine_(installedPlatform().createTimer(id)) {}
Timer::~Timer() = default;

int Timer::genId() { return installedPlatform().nextTimerId(); }

bool Timer::start(int64 beginTime, int64 interval, std::shared_ptr<ITimerNotify> notify,
                  int triggerCount) {
  return engine_->start(beginTime, interval, std::move(notify), triggerCount);
}

void Timer::stop() { engine_->stop(); }

}  // namespace orvane
