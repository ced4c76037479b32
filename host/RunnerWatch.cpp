#include "host/RunnerWatch.h"

#include "shared/TextCodec.h"

namespace orvane {

RunnerWatch::State RunnerWatch::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

std::pair<int, std::string> RunnerWatch::standing() const {
  const std::lock_guard lock(mutex_);
  return {state_.status, state_.message};
}

void RunnerWatch::onStatus(int status, const std::string& message) {
  bool isOver = false;
  {
    const std::lock_guard lock(mutex_);
    state_.status = status;
    state_.message = gbkToUtf8(message);
    isOver = state_.isOver();
  }
  if (isOver && onOver_) onOver_();
}

void RunnerWatch::onNotify(const QJsonObject&) {
  const std::lock_guard lock(mutex_);
  ++state_.notifications;
}

void RunnerWatch::onEnvs(const std::map<std::string, std::string>& values) {
  const std::lock_guard lock(mutex_);
  for (const auto& [key, value] : values) state_.envs[gbkToUtf8(key)] = gbkToUtf8(value);
}

void RunnerWatch::onEnvItems(const std::list<EnvItem>& items) {
  const std::lock_guard lock(mutex_);
  for (const EnvItem& item : items)
    state_.envs[gbkToUtf8(item.group) + "/" + gbkToUtf8(item.key)] = gbkToUtf8(item.text);
}

const char* runnerStatusName(int status) {
  switch (status) {
    case RunnerStopped:
      return "Stopped";
    case RunnerError:
      return "Error";
    case RunnerFinished:
      return "Finished";
    case RunnerRunning:
      return "Running";
    default:
      return "NotStarted";
  }
}

}  // namespace orvane
