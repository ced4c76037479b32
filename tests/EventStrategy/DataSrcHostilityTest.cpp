// The dictionary source against a service that keeps every shared pointer, calls back when it
// likes, refuses and throws: random sequences beside a model of its two tables, and the worst
// moments one by one.

#include <atomic>
#include <latch>
#include <optional>
#include <random>
#include <stdexcept>

#include "tests/EventStrategy/DataSrcFixture.h"
#include "tests/support/RandomRuns.h"

namespace orvane::support {
namespace {

const char* const kSubscriptionCalls[] = {"data.subscribeData", "data.unsubscribeData",
                                          "data.subscribeSnapshot", "data.unsubscribeSnapshot",
                                          "data.unsubscribeAllSnapshots"};

/// What a source must know and do, told as simply as can be.
struct DataModel {
  std::set<int> requests;
  std::map<SnapshotKey, int> snapshots;
  bool attached = true;
  std::vector<std::string> calls;       ///< What the service must be asked, in this step.
  std::vector<std::string> deliveries;  ///< What the notify must hear, in this step.
};

/// One source, its model, and the draws of one sequence.
class DataWorld {
 public:
  DataWorld(FakePlatform& platform, unsigned seed) : platform_(platform), random_(seed) {
    src_->setNotify(&notify_);
    for (const char* operation : kSubscriptionCalls)
      platform_.calls.onCall(operation, [this] { act(); });
  }
  ~DataWorld() {
    for (const char* operation : kSubscriptionCalls) platform_.calls.onCall(operation, {});
    src_->setNotify(nullptr);
    platform_.forgetSpis();
  }

  /// One random operation under a random mood of the service; then everything is compared.
  void step() {
    platform_.calls.clear();
    model_.calls.clear();
    model_.deliveries.clear();
    mood_ = static_cast<Mood>(std::min(below(12), 4));
    for (const char* operation : kSubscriptionCalls)
      platform_.calls.answer(operation, mood_ == Mood::Refuses ? kRefusal : ResultStatus());
    const bool threw = operate();
    EXPECT_EQ(threw, mood_ == Mood::Throws && !model_.calls.empty());
    EXPECT_EQ(platform_.calls.entries("data."), model_.calls);
    EXPECT_EQ(notify_.take(), model_.deliveries);
    EXPECT_EQ(TestAccess::requestIds(*src_), model_.requests);
    EXPECT_EQ(TestAccess::snapshots(*src_), model_.snapshots);
    thrown += threw ? 1 : 0;
    delivered += static_cast<int>(model_.deliveries.size());
  }

  int delivered = 0, dropped = 0, thrown = 0, refused = 0, replaced = 0;

 private:
  enum class Mood { Refuses, Throws, CallsAtOnce, CallsFromAThread, Calm };
  static inline const ResultStatus kRefusal{30, "not yet"};

  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  SnapshotKey drawKey() {
    static const char* const texts[] = {"a", "b", ""};
    return {texts[below(3)], texts[below(3)]};
  }

  bool operate() {
    try {
      switch (below(16)) {
        case 0:
        case 1:
        case 2:
          return subscribe(below(5)), false;
        case 3:
        case 4:
          return unsubscribe(below(5)), false;
        case 5:
        case 6:
        case 7:
          return subscribeSnapshot(drawKey()), false;
        case 8:
        case 9:
        case 10:
          return unsubscribeSnapshot(drawKey()), false;
        case 11:
          return attach(below(3) > 0), false;
        case 12:
          if (below(2) > 0) return callBack(), false;
          return below(2) > 0 ? release() : replace(), false;
        default:
          return callBack(), callBack(), false;
      }
    } catch (const std::runtime_error&) {
      return true;
    }
  }

  void subscribe(int id) {
    model_.requests.insert(id);
    model_.calls.push_back("data.subscribeData " + std::to_string(id) +
                           " dic begin=0 end=0 count=0 flags=0");
    DataReq request;
    request.name = "dic";
    const ResultStatus status = src_->subscribeData(request, id);
    EXPECT_EQ(status, mood_ == Mood::Refuses ? kRefusal : ResultStatus());
    refused += status.code != 0 ? 1 : 0;
  }

  void unsubscribe(int id) {
    const bool known = model_.requests.erase(id) > 0;
    if (known) model_.calls.push_back("data.unsubscribeData " + std::to_string(id));
    EXPECT_EQ(src_->forgetRequest(id), known);
    if (known) platform_.data().unsubscribeData(id);
  }

  void subscribeSnapshot(const SnapshotKey& key) {
    if (++model_.snapshots[key] == 1)
      model_.calls.push_back("data.subscribeSnapshot " + key.name + "/" + key.target + " flags=1");
    src_->subscribeDataSnapshot(key.name, key.target, 1);
  }

  void unsubscribeSnapshot(const SnapshotKey& key) {
    const auto it = model_.snapshots.find(key);
    if (it != model_.snapshots.end() && --it->second == 0) {
      model_.snapshots.erase(it);
      model_.calls.push_back("data.unsubscribeSnapshot " + key.name + "/" + key.target +
                             " flags=2");
    }
    src_->unsubscribeDataSnapshot(key.name, key.target, 2);
  }

  void attach(bool attached) {
    model_.attached = attached;
    src_->setNotify(attached ? &notify_ : nullptr);
  }

  void release() {
    for (const int id : model_.requests)
      model_.calls.push_back("data.unsubscribeData " + std::to_string(id));
    model_.calls.push_back("data.unsubscribeAllSnapshots");
    model_.requests.clear();
    model_.snapshots.clear();
    src_->release();
  }

  /// The owner goes and another comes; the service still has the old source's pointers.
  void replace() {
    ++replaced;
    attach(false);
    const auto change = [this] {
      src_ = std::make_shared<DataSrc>(0);
      attach(true);
    };
    try {
      release();
    } catch (...) {
      change();
      throw;
    }
    change();
  }

  /// What the service does inside a call.
  void act() {
    if (mood_ == Mood::Throws) throw std::runtime_error("hostile");
    if (mood_ == Mood::CallsAtOnce) callBack();
    if (mood_ == Mood::CallsFromAThread && below(4) == 0)
      onAnotherThread([this] {
        callBack();
        callBack();
      });
  }

  /// A call-back of any kind for any request or key, by any pointer that the service ever got.
  void callBack() {
    const auto spis = platform_.data().spis();
    const std::shared_ptr<DataSpi> spi =
        spis.empty() ? src_ : spis[static_cast<std::size_t>(below(static_cast<int>(spis.size())))];
    const bool heard = model_.attached && spi.get() == src_.get();
    const int id = below(5);
    const SnapshotKey key = drawKey();
    const std::string idText = std::to_string(id);
    std::optional<std::string> expected;
    switch (below(5)) {
      case 0:
        if (heard && model_.snapshots.contains(key))
          expected = "onDataSnapshot " + key.name + "/" + key.target + " 1:2:x";
        expect(expected);
        return spi->onSnapshot(key, {1, 2, "x"});
      case 1:
        if (heard && model_.requests.contains(id)) expected = "onProgress " + idText + " 1 2";
        expect(expected);
        return spi->onProgress(id, 1, 2);
      case 2:
        if (heard && model_.requests.contains(id)) expected = "onDeleteData " + idText + " 1 2 3";
        expect(expected);
        return spi->onDelete(id, key, 1, 2, 3);
      case 3:
        if (heard && model_.requests.contains(id))
          expected = "onData " + idText + " [] type=0 status=9s flag=1 tag=2";
        expect(expected);
        return spi->onData(id, {}, {9, "s"}, 1, 2);
      default:
        if (heard && model_.requests.contains(id))
          expected = "onData " + idText + " [1:2:x,] type=3 status=0 flag=1 tag=2";
        expect(expected);
        return spi->onData(id, resultOf({{1, 2, "x"}}), {}, 1, 2);
    }
  }

  void expect(const std::optional<std::string>& delivery) {
    if (delivery)
      model_.deliveries.push_back(*delivery);
    else
      ++dropped;
  }

  FakePlatform& platform_;
  std::mt19937 random_;
  RecordingDataNotify notify_;
  std::shared_ptr<DataSrc> src_ = std::make_shared<DataSrc>(0);
  DataModel model_;
  Mood mood_ = Mood::Calm;
};

class DataSrcHostility : public DataSrcTest {
 protected:
  void throwFrom(const char* operation) {
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  }

  /// Every call-back that there is, for request 7 and the snapshot dic/key.
  static void callAll(DataSpi& spi) {
    spi.onSnapshot({"key", "dic"}, {1, 2, "x"});
    spi.onProgress(7, 1, 2);
    spi.onData(7, resultOf({{1, 2, "x"}}), {}, 0, 0);
    spi.onData(7, {}, {}, 0, 0);
    spi.onDelete(7, {"key", "dic"}, 1, 2, 3);
    spi.onDisconnected();
  }
  static constexpr std::size_t kHeard = 5;  ///< So many of `callAll` reach a notify.
};

TEST_F(DataSrcHostility, shouldAgreeWithItsModelWhateverTheServiceDoes) {
  const int runs = randomRuns(500);
  int delivered = 0, dropped = 0, thrown = 0, refused = 0, replaced = 0;
  for (int run = 1; run <= runs; ++run) {
    SCOPED_TRACE("seed " + std::to_string(run));
    DataWorld world(platform, static_cast<unsigned>(run));
    for (int i = 0; i < 60 && !HasFailure(); ++i) world.step();
    if (HasFailure()) break;
    delivered += world.delivered;
    dropped += world.dropped;
    thrown += world.thrown;
    refused += world.refused;
    replaced += world.replaced;
  }
  EXPECT_GT(delivered, runs);
  EXPECT_GT(dropped, runs);
  EXPECT_GT(thrown, runs / 4);
  EXPECT_GT(refused, runs / 8);
  EXPECT_GT(replaced, 0);
}

TEST_F(DataSrcHostility, shouldDeliverWhatTheServiceCallsBackInsideTheSubscribeItself) {
  platform.calls.onCall("data.subscribeData", [this] { src->onProgress(7, 1, 2); });
  platform.calls.onCall("data.subscribeSnapshot", [this] {
    src->onSnapshot({"key", "dic"}, {1, 2, "x"});
  });
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  EXPECT_THAT(notify.take(), ElementsAre("onProgress 7 1 2", "onDataSnapshot dic/key 1:2:x"));
}

TEST_F(DataSrcHostility, shouldDeliverACallBackThatComesTwiceTwice) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  for (int i = 0; i < 2; ++i) onAnotherThread([this] { callAll(*platform.data().requestSpi(7)); });
  EXPECT_EQ(notify.take().size(), 2 * kHeard);
}

TEST_F(DataSrcHostility, shouldDropWhatComesInsideTheUnsubscribeAndAfterIt) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  const auto late = [this] { onAnotherThread([this] { callAll(*src); }); };
  platform.calls.onCall("data.unsubscribeSnapshot", late);
  src->unsubscribeDataSnapshot("dic", "key", 0);
  EXPECT_EQ(notify.take().size(), kHeard - 1);  // The request still stands.
  platform.calls.onCall("data.unsubscribeData", late);
  unsubscribe(7);
  for (const auto& spi : platform.data().spis()) callAll(*spi);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(DataSrcHostility, shouldDropWhatComesInsideARelease) {
  subscribe(7);
  subscribe(8);
  src->subscribeDataSnapshot("dic", "key", 0);
  const auto late = [this] {
    ++checks;
    callAll(*src);
    onAnotherThread([this] { callAll(*src); });
  };
  platform.calls.onCall("data.unsubscribeData", late);
  platform.calls.onCall("data.unsubscribeAllSnapshots", late);
  src->release();
  EXPECT_EQ(checks, 3);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(DataSrcHostility, shouldLiveUntilTheServiceLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  const std::weak_ptr<DataSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<DataSrc>(0);
  ASSERT_FALSE(watched.expired());
  platform.calls.clear();
  for (const auto& spi : platform.data().spis()) callAll(*spi);
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_EQ(platform.calls.count("publisher.gone"), 0);
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(platform.calls.count("publisher.gone"), 1);
}

TEST_F(DataSrcHostility, shouldLetAnExceptionOfTheServiceThroughWithItsBooksWrittenAndNoLockHeld) {
  for (const char* operation : kSubscriptionCalls) throwFrom(operation);
  EXPECT_THROW(subscribe(7), std::runtime_error);
  EXPECT_TRUE(src->isSubscribeData(7));
  EXPECT_THROW(src->subscribeDataSnapshot("dic", "key", 0), std::runtime_error);
  EXPECT_TRUE(src->isSubscribeDataSnapshot("dic", "key"));
  EXPECT_THROW(src->unsubscribeDataSnapshot("dic", "key", 0), std::runtime_error);
  EXPECT_TRUE(TestAccess::snapshots(*src).empty());
  EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
  for (const char* operation : kSubscriptionCalls) platform.calls.onCall(operation, {});
}

TEST_F(DataSrcHostility, shouldWithdrawTheRestWhenOneWithdrawalThrowsAndThenThrowTheFirst) {
  for (const int id : {7, 8, 9}) subscribe(id);
  platform.calls.clear();
  int calls = 0;
  platform.calls.onCall("data.unsubscribeData",
                        [&calls] { throw std::runtime_error("call " + std::to_string(++calls)); });
  std::string thrown;
  try {
    src->release();
  } catch (const std::runtime_error& error) {
    thrown = error.what();
  }
  EXPECT_EQ(thrown, "call 1");
  EXPECT_THAT(dataCalls(), ElementsAre("data.unsubscribeData 7", "data.unsubscribeData 8",
                                       "data.unsubscribeData 9", "data.unsubscribeAllSnapshots"));
  EXPECT_TRUE(TestAccess::requestIds(*src).empty());
  platform.calls.onCall("data.unsubscribeData", {});
}

TEST_F(DataSrcHostility, shouldFreeItsMutexWhenTheNotifyThrows) {
  subscribe(7);
  notify.hook = [] { throw std::runtime_error("no memory"); };
  EXPECT_THROW(src->onProgress(7, 1, 2), std::runtime_error);
  EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
  notify.hook = {};
}

TEST_F(DataSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 2000;
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  std::atomic<bool> over{false};
  std::atomic<bool> detached{false};
  std::atomic<int> heardTooLate{0};
  std::latch go(kThreads + 1);
  notify.hook = [&] { heardTooLate += detached ? 1 : 0; };
  std::vector<std::thread> service;
  for (int i = 0; i < kThreads; ++i)
    service.emplace_back([&, spi = platform.data().requestSpi(7)] {
      go.arrive_and_wait();
      for (int n = 0; n < kCalls && !over; ++n) callAll(*spi);
    });
  go.arrive_and_wait();
  for (int round = 0; round < 50; ++round) {
    subscribe(7);
    src->subscribeDataSnapshot("dic", "key", 0);
    src->unsubscribeDataSnapshot("dic", "key", 0);
    unsubscribe(7);
  }
  subscribe(7);
  src->setNotify(nullptr);
  detached = true;
  src->release();
  src = std::make_shared<DataSrc>(0);  // The owner goes; the service still calls.
  platform.forgetSpis();
  over = true;
  for (std::thread& thread : service) thread.join();
  EXPECT_EQ(heardTooLate, 0);
}

}  // namespace
}  // namespace orvane::support
