// The source of general events against a manager that keeps every shared pointer, calls back when
// it likes and throws: random sequences beside a model of its table, and the worst moments.

#include <atomic>
#include <latch>
#include <random>
#include <stdexcept>
#include <thread>

#include "EventStrategy/GeneralEventSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/support/RandomRuns.h"

namespace orvane::support {
namespace {

const char* const kSubscriptionCalls[] = {"event.subscribe", "event.unsubscribe",
                                          "event.unsubscribeTarget", "event.unsubscribeAll"};

/// One source, its model, and the draws of one sequence. The source's mutex keeps out whoever calls
/// back from another thread during an operation, so what comes then is delivered after it.
class EventWorld {
 public:
  EventWorld(FakePlatform& platform, unsigned seed) : platform_(platform), random_(seed) {
    src_->setNotify(&notify_);
    for (const char* operation : kSubscriptionCalls)
      platform_.calls.onCall(operation, [this] { act(); });
  }
  ~EventWorld() {
    for (const char* operation : kSubscriptionCalls) platform_.calls.onCall(operation, {});
    src_->setNotify(nullptr);
    platform_.forgetSpis();
  }

  /// One random operation under a random mood of the manager; then everything is compared.
  void step() {
    platform_.calls.clear();
    calls_.clear();
    deliveries_.clear();
    mood_ = static_cast<Mood>(std::min(below(8), 2));
    const bool threw = operate();
    if (caller_.joinable()) caller_.join();
    EXPECT_EQ(threw, mood_ == Mood::Throws && !calls_.empty());
    EXPECT_EQ(platform_.calls.entries("event."), calls_);
    EXPECT_EQ(notify_.take(), deliveries_);
    EXPECT_EQ(TestAccess::subscriptions(*src_), table_);
    thrown += threw ? 1 : 0;
    delivered += static_cast<int>(deliveries_.size());
  }

  int delivered = 0, dropped = 0, thrown = 0, replaced = 0;

 private:
  enum class Mood { Throws, CallsFromAThread, Calm };

  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string draw() { return std::string(1, static_cast<char>('a' + below(3))); }
  bool throws() const { return mood_ == Mood::Throws; }

  bool operate() {
    try {
      switch (below(12)) {
        case 0:
        case 1:
        case 2:
          subscribe(draw(), draw());
          break;
        case 3:
        case 4:
          unsubscribe(draw(), draw());
          break;
        case 5:
          unsubscribeAll();
          break;
        case 6:
          release();
          break;
        case 7:
          attach(below(3) > 0);
          break;
        case 8:
          replace();
          break;
        default:
          callBack(below(4));
      }
      return false;
    } catch (const std::runtime_error&) {
      return true;
    }
  }

  void subscribe(const std::string& target, const std::string& name) {
    table_[target].insert(name);
    calls_.push_back("event.subscribe " + target + " names=" + name + " keys=k live=1");
    src_->subscribeEvent(target, name, {"k"});
  }

  void unsubscribe(const std::string& target, const std::string& name) {
    calls_.push_back("event.unsubscribe " + target + " names=" + name);
    if (!throws()) table_[target].erase(name);
    src_->unsubscribeEvent(target, name);
  }

  /// The first target that the manager throws at ends it, and the table stays.
  void unsubscribeAll() {
    for (const auto& [target, names] : table_) {
      calls_.push_back("event.unsubscribeTarget " + target);
      if (throws()) break;
    }
    if (!throws() || table_.empty()) table_.clear();
    src_->unsubscribeAllEvent();
  }

  void release() {
    calls_.push_back("event.unsubscribeAll");
    table_.clear();
    src_->release();
  }

  void attach(bool attached) {
    attached_ = attached;
    src_->setNotify(attached ? &notify_ : nullptr);
  }

  /// The owner goes and another comes; the manager still has the old source's pointers.
  void replace() {
    ++replaced;
    attach(false);
    calls_.push_back("event.unsubscribeAll");
    table_.clear();
    const auto old = std::exchange(src_, std::make_shared<GeneralEventSrc>());
    attach(true);
    old->release();
  }

  /// What the manager does inside a call.
  void act() {
    if (throws()) throw std::runtime_error("hostile");
    if (mood_ != Mood::CallsFromAThread || caller_.joinable()) return;
    // Picked here, heard once the source's mutex is free again.
    const int number = below(4);
    const auto spi = drawSpi();
    expect(spi, number);
    caller_ = std::thread([spi, number] { tell(*spi, number); });
  }

  void callBack(int number) {
    const auto spi = drawSpi();
    expect(spi, number);
    tell(*spi, number);
  }

  std::shared_ptr<GeneralEventSpi> drawSpi() {
    const auto spis = platform_.events->spis();
    if (spis.empty()) return src_;
    return spis[static_cast<std::size_t>(below(static_cast<int>(spis.size())))];
  }

  void expect(const std::shared_ptr<GeneralEventSpi>& spi, int number) {
    if (attached_ && spi.get() == src_.get())
      deliveries_.push_back("topic [n=" + std::to_string(number) + ",] d");
    else
      ++dropped;
  }

  static void tell(GeneralEventSpi& spi, int number) {
    spi.onGeneralEvent("topic", {{"n", std::to_string(number)}}, "d");
  }

  FakePlatform& platform_;
  std::mt19937 random_;
  RecordingEventNotify notify_;
  std::shared_ptr<GeneralEventSrc> src_ = std::make_shared<GeneralEventSrc>();
  std::map<std::string, std::set<std::string>> table_;
  bool attached_ = true;
  std::vector<std::string> calls_;       ///< What the manager must be asked, in this step.
  std::vector<std::string> deliveries_;  ///< What the notify must hear, in this step.
  std::thread caller_;
  Mood mood_ = Mood::Calm;
};

class GeneralEventSrcHostility : public LibraryTest {
 protected:
  GeneralEventSrcHostility() { src->setNotify(&notify); }
  ~GeneralEventSrcHostility() override {
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  void throwFrom(const char* operation) {
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  }

  RecordingEventNotify notify;
  std::shared_ptr<GeneralEventSrc> src = std::make_shared<GeneralEventSrc>();
};

TEST_F(GeneralEventSrcHostility, shouldAgreeWithItsModelWhateverTheManagerDoes) {
  const int runs = randomRuns(500);
  int delivered = 0, dropped = 0, thrown = 0, replaced = 0;
  for (int run = 1; run <= runs && !HasFailure(); ++run) {
    SCOPED_TRACE("seed " + std::to_string(run));
    EventWorld world(platform, static_cast<unsigned>(run));
    for (int i = 0; i < 50 && !HasFailure(); ++i) world.step();
    delivered += world.delivered;
    dropped += world.dropped;
    thrown += world.thrown;
    replaced += world.replaced;
    logs.clear();
  }
  EXPECT_GT(delivered, runs / 2);
  EXPECT_GT(dropped, runs);
  EXPECT_GT(thrown, runs / 4);
  EXPECT_GT(replaced, runs / 2);
}

TEST_F(GeneralEventSrcHostility, shouldDeliverAnEventThatComesTwiceTwiceAlsoAfterTheUnsubscribe) {
  // The manager is trusted to deliver what was subscribed and nothing else.
  src->subscribeEvent("t", "n", {});
  src->unsubscribeEvent("t", "n");
  for (int i = 0; i < 2; ++i)
    onAnotherThread([this] { platform.events->spi()->onGeneralEvent("late", {}, ""); });
  EXPECT_THAT(notify.take(), ElementsAre("late [] ", "late [] "));
}

TEST_F(GeneralEventSrcHostility,
       shouldLiveUntilTheManagerLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  src->subscribeEvent("t", "n", {});
  const std::weak_ptr<GeneralEventSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<GeneralEventSrc>();
  ASSERT_FALSE(watched.expired());
  for (const auto& spi : platform.events->spis()) spi->onGeneralEvent("late", {}, "");
  EXPECT_THAT(notify.take(), IsEmpty());
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
}

TEST_F(GeneralEventSrcHostility, shouldLetAnExceptionOfTheManagerThroughAndFreeItsMutex) {
  for (const char* operation : kSubscriptionCalls) throwFrom(operation);
  using Table = std::map<std::string, std::set<std::string>>;
  EXPECT_THROW(src->subscribeEvent("t", "n", {}), std::runtime_error);
  EXPECT_THROW(src->unsubscribeEvent("t", "n"), std::runtime_error);
  EXPECT_THROW(src->unsubscribeEvent("u", "n"), std::runtime_error);
  EXPECT_THROW(src->unsubscribeAllEvent(), std::runtime_error);
  EXPECT_EQ(TestAccess::subscriptions(*src), (Table{{"t", {"n"}}}));
  logs.clear();
  EXPECT_THROW(src->release(), std::runtime_error);
  EXPECT_TRUE(TestAccess::subscriptions(*src).empty());
  EXPECT_EQ(logs.countContaining(",release,unsubscribeEvent end"), 1);
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(GeneralEventSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 2000;
  src->subscribeEvent("t", "n", {});
  std::atomic<bool> over{false};
  std::atomic<bool> detached{false};
  std::atomic<int> heardTooLate{0};
  std::latch go(kThreads + 1);
  notify.hook = [&] { heardTooLate += detached ? 1 : 0; };
  std::vector<std::thread> manager;
  for (int i = 0; i < kThreads; ++i)
    manager.emplace_back([&, spi = platform.events->spi()] {
      go.arrive_and_wait();
      for (int n = 0; n < kCalls && !over; ++n) spi->onGeneralEvent("topic", {}, "");
    });
  go.arrive_and_wait();
  for (int round = 0; round < 20; ++round) {
    src->subscribeEvent("t", "n", {});
    src->unsubscribeEvent("t", "n");
    src->unsubscribeAllEvent();
  }
  src->setNotify(nullptr);
  detached = true;
  src->release();
  src = std::make_shared<GeneralEventSrc>();  // The owner goes; the manager still calls.
  platform.forgetSpis();
  over = true;
  for (std::thread& thread : manager) thread.join();
  EXPECT_EQ(heardTooLate, 0);
}

}  // namespace
}  // namespace orvane::support
