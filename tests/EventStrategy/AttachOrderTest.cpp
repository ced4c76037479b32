// The order in which a strategy is attached to its six sources and detached from them. A write
// waits for its source's mutex, so with all six held, letting them go one by one shows which
// source is next: in any other order the thread under test would wait for ever.

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/EventStrategy/CollectingStrategy.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/support/HostThread.h"

namespace orvane::support {
namespace {

class AttachOrder : public LibraryTest {
 protected:
  struct Source {
    std::mutex& mutex;
    std::function<bool()> isAttached;
  };

  template <typename Src>
  static Source sourceOf(Src& src) {
    return {TestAccess::attachMutex(src), [&src] { return TestAccess::notify(src) != nullptr; }};
  }

  /// Whether the source could be looked at just now and was in this state. Here and below mutexes
  /// are only tried: to wait for one with others held would state an order among them.
  static bool isSeen(const Source& source, bool attached) {
    const std::unique_lock lock(source.mutex, std::try_to_lock);
    return lock.owns_lock() && source.isAttached() == attached;
  }

  /// Lets the sources go one by one while `act` runs; returns when each was reached in its turn.
  static void letGoInTurn(const std::vector<Source>& sources, bool attached,
                          const std::function<void()>& act) {
    for (const Source& source : sources) ASSERT_TRUE(source.mutex.try_lock());
    std::thread actor(act);
    for (std::size_t i = 0; i < sources.size(); ++i) {
      for (std::size_t later = i; later < sources.size(); ++later)
        EXPECT_NE(sources[later].isAttached(), attached) << i << " " << later;
      sources[i].mutex.unlock();
      while (!isSeen(sources[i], attached)) std::this_thread::yield();
    }
    actor.join();
  }

  CollectingStrategy strategy;
  std::vector<Source> sources = {
      sourceOf(TestAccess::data(strategy)),   sourceOf(TestAccess::quotes(strategy)),
      sourceOf(TestAccess::trades(strategy)), sourceOf(TestAccess::timers(strategy)),
      sourceOf(TestAccess::events(strategy)), sourceOf(TestAccess::indexes(strategy))};
};

TEST_F(AttachOrder, shouldAttachDataQuotesTradesTimersEventsAndIndexInThisOrder) {
  letGoInTurn(sources, true, [this] { strategy.startEvent(); });
}

TEST_F(AttachOrder, shouldDetachInTheReverseOrder) {
  strategy.startEvent();
  const std::vector<Source> reversed(sources.rbegin(), sources.rend());
  letGoInTurn(reversed, false, [this] { strategy.stopEvent(); });
}

TEST_F(AttachOrder, shouldTakeANewNameToTradesEventsAndIndexInThisOrderUnderItsOwnMutex) {
  const Source& trades = sources[2];
  const Source& events = sources[4];
  const Source& indexes = sources[5];
  const auto isNamed = [](const Source& source, const std::function<std::string()>& name) {
    const std::unique_lock lock(source.mutex, std::try_to_lock);
    return lock.owns_lock() && name() == "new";
  };
  for (const Source* source : {&trades, &events, &indexes}) ASSERT_TRUE(source->mutex.try_lock());
  {
    HostThread namer([this] { strategy.setName("new"); });
    trades.mutex.unlock();
    while (!isNamed(trades, [this] { return TestAccess::name(TestAccess::trades(strategy)); }))
      std::this_thread::yield();
    EXPECT_EQ(TestAccess::name(TestAccess::events(strategy)), "");
    events.mutex.unlock();
    while (!isNamed(events, [this] { return TestAccess::name(TestAccess::events(strategy)); }))
      std::this_thread::yield();
    EXPECT_EQ(TestAccess::name(TestAccess::indexes(strategy)), "");
    HostThread reader([this] { EXPECT_EQ(strategy.name(), "new"); });
    EXPECT_TRUE(reader.awaitSleep());  // The strategy's own mutex is held to the end.
    indexes.mutex.unlock();
  }
  EXPECT_EQ(TestAccess::name(TestAccess::indexes(strategy)), "new");
}

}  // namespace
}  // namespace orvane::support
