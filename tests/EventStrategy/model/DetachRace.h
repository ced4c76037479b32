#pragma once

#include <atomic>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

namespace orvane::support {

/// What an owner does in the race below.
struct DetachRace {
  std::function<void()> callBack;  ///< All that the service can tell, from any thread.
  std::function<void()> work;      ///< Subscribes and unsubscribes.
  std::function<void()> detach;
  std::function<void()> leave;  ///< Releases the source and lets go of it.
};

/// Four threads of a service call back without end while an owner works its source, detaches and
/// leaves. Gives how many call-backs were heard once the detach had returned; `hook` is what runs
/// whenever one is heard.
inline int heardAfterDetach(std::function<void()>& hook, const DetachRace& race) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 2000;
  std::atomic<bool> isOver{false}, isDetached{false};
  std::atomic<int> heardTooLate{0};
  std::latch go(kThreads + 1);
  hook = [&] { heardTooLate += isDetached ? 1 : 0; };
  std::vector<std::thread> service;
  for (int i = 0; i < kThreads; ++i)
    service.emplace_back([&] {
      go.arrive_and_wait();
      for (int n = 0; n < kCalls && !isOver; ++n) race.callBack();
    });
  go.arrive_and_wait();
  for (int round = 0; round < 50; ++round) race.work();
  race.detach();
  isDetached = true;
  race.leave();
  isOver = true;
  for (std::thread& thread : service) thread.join();
  hook = {};
  return heardTooLate;
}

}  // namespace orvane::support
