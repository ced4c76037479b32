#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tests/EventStrategy/model/SubscriptionModel.h"

namespace orvane::support {

/// A record in a runner's list, as a model sees it.
struct EventModel {
  /// What a record of type 0 asks for. A stop, an error and a finish keep their runner alive.
  enum class Control { Stranger, Start, Stop, Error, Finish, Update, Reset };

  int type = 0;  ///< Of the real record.
  Control control = Control::Stranger;
  int id = 0;  ///< Of a code, a request, a key or a timer.
  int mark = 0;
  std::vector<int> accounts{};
  std::string text{};
  bool isTicks = false;

  bool keepsRunner() const {
    return type == 0 &&
           (control == Control::Stop || control == Control::Error || control == Control::Finish);
  }
};

/// One runner as a model sees it.
struct RunnerModel {
  static constexpr int kError = 1, kFinished = 2, kRunning = 4;

  int id = 0;
  std::string name;

  // Its life.
  int handles = 0;       ///< References to the handle: the factory's and the host's.
  bool attached = true;  ///< Its sources tell it of what they hear.
  bool alive = true;

  // What it shares with its host.
  std::string path, source;
  int spi = 0;  ///< The host's ear, 0 for none.
  std::map<std::string, std::string> envs;

  // Its run.
  int flags = 0;
  std::string message;
  bool stopping = false;
  int strategy = 0;            ///< The strategy's number, 0 for none.
  bool hearsAccounts = false;  ///< The trade source knows what a run wants: from the first on.
  SubscriptionModel subscriptions;

  // Its pump.
  std::deque<EventModel> pending, batch;
  bool scheduled = false, inTask = false;
  bool pendingCounter = false, batchCounter = false;

  bool isRunning() const { return (flags & kRunning) != 0; }
  bool wantsData() const { return isRunning() && !stopping; }
  int status() const {
    if (isRunning()) return 3;
    if ((flags & kFinished) != 0) return 2;
    return (flags & kError) != 0 ? 1 : 0;
  }
  bool isKept() const {
    if (handles > 0 || inTask) return true;
    for (const EventModel& event : pending)
      if (event.keepsRunner()) return true;
    return false;
  }
};

}  // namespace orvane::support
