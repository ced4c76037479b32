#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"

namespace orvane {

/// Hears of one runner and keeps what it heard. Any thread may call it.
class RunnerWatch final : public IRunnerSpi {
 public:
  struct State {
    int status = -1;                          ///< The last `RunnerStatusCode`; -1 before the first.
    std::string message;                      ///< UTF-8.
    std::map<std::string, std::string> envs;  ///< The last value of each key, UTF-8.
    std::uint64_t notifications = 0;

    bool isOver() const { return status >= 0 && status != RunnerRunning; }
  };

  /// `onOver` is called, with no lock held, whenever the run has ended.
  explicit RunnerWatch(std::function<void()> onOver) : onOver_(std::move(onOver)) {}

  State state() const;
  /// The status and the message alone, which costs less.
  std::pair<int, std::string> standing() const;

  void onStatus(int status, const std::string& message) override;
  void onNotify(const QJsonObject& argument) override;
  void onEnvs(const std::map<std::string, std::string>& values) override;
  void onEnvItems(const std::list<EnvItem>& items) override;

 private:
  const std::function<void()> onOver_;
  mutable std::mutex mutex_;
  State state_;
};

/// The name of a status as reports show it, such as "Stopped".
const char* runnerStatusName(int status);

}  // namespace orvane
