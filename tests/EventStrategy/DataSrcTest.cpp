// The subscriptions of the dictionary source, its call-backs, and which lock is held when.

#include "EventStrategy/DataSrc.h"

#include <latch>
#include <thread>

#include "tests/EventStrategy/DataSrcFixture.h"
#include "tests/support/HostThread.h"

namespace orvane::support {
namespace {

using Snapshots = std::map<SnapshotKey, int>;

// The publisher.

TEST_F(DataSrcTest, shouldCreateItsPublisherByTheModeBits) {
  const std::pair<int, const char*> cases[] = {{0, "0"}, {1, "0"}, {2, "2"}, {3, "2"},
                                               {4, "4"}, {5, "4"}, {6, "2"}, {8, "0"}};
  for (const auto& [mode, expected] : cases) {
    platform.calls.clear();
    const auto source = std::make_shared<DataSrc>(mode);
    EXPECT_THAT(platform.calls.entries(), ElementsAre(std::string("publisher.create ") + expected))
        << mode;
  }
}

TEST_F(DataSrcTest, shouldDeleteItsPublisherWhenItGoes) {
  src.reset();
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.gone"));
  src = std::make_shared<DataSrc>(0);
}

// Requests.

TEST_F(DataSrcTest, shouldGiveTheServiceTheRequestItselfAndTheId) {
  EXPECT_EQ(subscribe(11), ResultStatus());
  EXPECT_THAT(dataCalls(),
              ElementsAre("data.subscribeData 11 dic/key begin=1 end=2 count=3 flags=4"));
  EXPECT_EQ(platform.data().requestSpi(11).get(), static_cast<DataSpi*>(src.get()));
  EXPECT_TRUE(src->isSubscribeData(11));
  EXPECT_FALSE(src->isSubscribeData(12));
}

TEST_F(DataSrcTest, shouldHaveTheIdInItsBooksWhenTheServiceIsAsked) {
  bool known = false;
  platform.calls.onCall("data.subscribeData", [&] { known = src->isSubscribeData(11); });
  subscribe(11);
  EXPECT_TRUE(known);
}

TEST_F(DataSrcTest, shouldPassARefusalOnUnchangedAndKeepTheIdUntilItIsTakenOut) {
  platform.calls.answer("data.subscribeData", {30, "not yet"});
  EXPECT_EQ(subscribe(11), (ResultStatus{30, "not yet"}));
  EXPECT_TRUE(src->isSubscribeData(11));
  EXPECT_TRUE(src->forgetRequest(11));
  EXPECT_FALSE(src->isSubscribeData(11));
  EXPECT_FALSE(src->forgetRequest(11));
}

TEST_F(DataSrcTest, shouldAskTheServiceEachTimeAnIdIsUsedAndHoldItOnce) {
  subscribe(11);
  subscribe(11, "other");
  EXPECT_EQ(platform.calls.count("data.subscribeData"), 2);
  EXPECT_EQ(TestAccess::requestIds(*src), (std::set<int>{11}));
}

// Snapshots.

TEST_F(DataSrcTest, shouldReachTheServiceForTheFirstAndForTheLastSubscriberOfASnapshotAlone) {
  src->subscribeDataSnapshot("dic", "key", 5);
  src->subscribeDataSnapshot("dic", "key", 6);
  EXPECT_THAT(dataCalls(), ElementsAre("data.subscribeSnapshot dic/key flags=5"));
  platform.calls.clear();
  src->unsubscribeDataSnapshot("dic", "key", 7);
  EXPECT_THAT(dataCalls(), IsEmpty());
  EXPECT_TRUE(src->isSubscribeDataSnapshot("dic", "key"));
  src->unsubscribeDataSnapshot("dic", "key", 8);
  EXPECT_THAT(dataCalls(), ElementsAre("data.unsubscribeSnapshot dic/key flags=8"));
  EXPECT_TRUE(TestAccess::snapshots(*src).empty());
}

TEST_F(DataSrcTest, shouldCallNoServiceAndMakeNoEntryForAnUnsubscribeOfASnapshotNeverSubscribed) {
  src->unsubscribeDataSnapshot("dic", "key", 5);
  EXPECT_THAT(dataCalls(), IsEmpty());
  EXPECT_TRUE(TestAccess::snapshots(*src).empty());
}

TEST_F(DataSrcTest, shouldTellNameAndTargetApart) {
  src->subscribeDataSnapshot("a", "b", 0);
  EXPECT_TRUE(src->isSubscribeDataSnapshot("a", "b"));
  EXPECT_FALSE(src->isSubscribeDataSnapshot("b", "a"));
  src->subscribeDataSnapshot("b", "a", 0);
  EXPECT_EQ(TestAccess::snapshots(*src), (Snapshots{{{"b", "a"}, 1}, {{"a", "b"}, 1}}));
  EXPECT_EQ(platform.calls.count("data.subscribeSnapshot"), 2);
}

TEST_F(DataSrcTest, shouldOrderSnapshotsByNameAndThenByTargetByteForByteTheShorterFirst) {
  const SnapshotKey ordered[] = {{"z", ""},   {"z", "A"}, {"", "a"},     {"a", "a"},
                                 {"ab", "a"}, {"b", "a"}, {"\x80", "a"}, {"a", "a\x80"}};
  for (std::size_t i = 0; i + 1 < std::size(ordered); ++i)
    EXPECT_LT(ordered[i], ordered[i + 1]) << i;
}

TEST_F(DataSrcTest, shouldGiveTheServiceItselfForBothEndsOfASnapshot) {
  src->subscribeDataSnapshot("dic", "key", 0);
  src->unsubscribeDataSnapshot("dic", "key", 0);
  src->release();
  const auto spis = platform.data().spis();
  ASSERT_EQ(spis.size(), 3u);
  for (const auto& spi : spis) EXPECT_EQ(spi.get(), static_cast<DataSpi*>(src.get()));
}

TEST_F(DataSrcTest, shouldHaveCountedASnapshotBeforeTheServiceIsAskedAndUncountedItBefore) {
  std::vector<bool> known;
  const auto look = [&] { known.push_back(src->isSubscribeDataSnapshot("dic", "key")); };
  platform.calls.onCall("data.subscribeSnapshot", look);
  platform.calls.onCall("data.unsubscribeSnapshot", look);
  src->subscribeDataSnapshot("dic", "key", 0);
  src->unsubscribeDataSnapshot("dic", "key", 0);
  EXPECT_THAT(known, ElementsAre(true, false));
}

// Release.

TEST_F(DataSrcTest, shouldEndEachRequestInAscendingOrderAndAllSnapshotsOnceOnRelease) {
  for (const int id : {12, 7, 100, -3}) subscribe(id);
  src->subscribeDataSnapshot("dic", "b", 0);
  src->subscribeDataSnapshot("dic", "a", 0);
  platform.calls.clear();
  src->release();
  EXPECT_THAT(dataCalls(), ElementsAre("data.unsubscribeData -3", "data.unsubscribeData 7",
                                       "data.unsubscribeData 12", "data.unsubscribeData 100",
                                       "data.unsubscribeAllSnapshots"));
  EXPECT_TRUE(TestAccess::requestIds(*src).empty());
  EXPECT_TRUE(TestAccess::snapshots(*src).empty());
}

TEST_F(DataSrcTest, shouldEndAllSnapshotsOnceOnReleaseAlsoIfThereWereNone) {
  src->release();
  EXPECT_THAT(dataCalls(), ElementsAre("data.unsubscribeAllSnapshots"));
}

TEST_F(DataSrcTest, shouldHaveEmptyBooksWhenTheFirstRequestEndsOnRelease) {
  subscribe(7);
  subscribe(8);
  src->subscribeDataSnapshot("dic", "key", 0);
  std::set<int> left{1};
  Snapshots snapshots{{{"x", "y"}, 1}};
  platform.calls.onCall("data.unsubscribeData", [&] {
    left = TestAccess::requestIds(*src);
    snapshots = TestAccess::snapshots(*src);
  });
  src->release();
  EXPECT_TRUE(left.empty());
  EXPECT_TRUE(snapshots.empty());
}

TEST_F(DataSrcTest, shouldServeAgainAfterRelease) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  src->release();
  platform.calls.clear();
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  EXPECT_EQ(dataCalls().size(), 2u);
  platform.data().requestSpi(7)->onProgress(7, 1, 2);
  EXPECT_THAT(notify.take(), ElementsAre("onProgress 7 1 2"));
}

// Call-backs.

TEST_F(DataSrcTest, shouldPassASnapshotOnWithNameFirst) {
  src->subscribeDataSnapshot("dic", "key", 0);
  platform.data().snapshotSpi()->onSnapshot({"key", "dic"}, {1, 2, "x"});
  EXPECT_THAT(notify.take(), ElementsAre("onDataSnapshot dic/key 1:2:x"));
}

TEST_F(DataSrcTest, shouldDropASnapshotOfAKeyWithoutSubscribers) {
  src->subscribeDataSnapshot("dic", "key", 0);
  const auto spi = platform.data().snapshotSpi();
  spi->onSnapshot({"dic", "key"}, {1, 2, "x"});
  src->unsubscribeDataSnapshot("dic", "key", 0);
  spi->onSnapshot({"key", "dic"}, {1, 2, "x"});
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(DataSrcTest, shouldPassProgressABatchAndADeletionOn) {
  subscribe(7);
  const auto spi = platform.data().requestSpi(7);
  spi->onProgress(7, 50, 100);
  spi->onData(7, resultOf({{1, 2, "x"}, {3, 4, "y"}}), {18, "warned"}, 16, 99);
  spi->onDelete(7, {"key", "dic"}, 5, 6, 8);
  EXPECT_THAT(notify.take(),
              ElementsAre("onProgress 7 50 100",
                          "onData 7 [1:2:x,3:4:y,] type=3 status=18warned flag=16 tag=99",
                          "onDeleteData 7 5 6 8"));
}

TEST_F(DataSrcTest, shouldPassAnEmptyResultOnAsAnEmptyListOfValueType0WithTheStatus) {
  subscribe(7);
  DataResult empty;
  empty.valueType = static_cast<DataValueType>(3);
  src->onData(7, empty, {22, "none"}, 16, 99);
  EXPECT_THAT(notify.take(), ElementsAre("onData 7 [] type=0 status=22none flag=16 tag=99"));
}

TEST_F(DataSrcTest, shouldPassATargetWithoutRecordsOnWithItsValueType) {
  subscribe(7);
  src->onData(7, resultOf({}), {}, 0, 0);
  EXPECT_THAT(notify.take(), ElementsAre("onData 7 [] type=3 status=0 flag=0 tag=0"));
}

TEST_F(DataSrcTest, shouldDropAllTargetsOfABatchButTheFirst) {
  subscribe(7);
  DataResult result = resultOf({{1, 2, "x"}});
  result.targets.push_back({"second", {{3, 4, "y"}}});
  src->onData(7, result, {}, 0, 0);
  EXPECT_THAT(notify.take(), ElementsAre("onData 7 [1:2:x,] type=3 status=0 flag=0 tag=0"));
}

TEST_F(DataSrcTest, shouldDropALateCallBackOfARequestThatIsOver) {
  subscribe(7);
  subscribe(8);
  const auto spi = platform.data().requestSpi(7);
  unsubscribe(7);
  spi->onData(7, resultOf({{1, 2, "x"}}), {}, 0, 0);
  spi->onProgress(7, 1, 2);
  spi->onDelete(7, {"key", "dic"}, 5, 6, 8);
  spi->onData(9, {}, {}, 0, 0);
  EXPECT_THAT(notify.take(), IsEmpty());
  spi->onProgress(8, 1, 2);
  EXPECT_THAT(notify.take(), ElementsAre("onProgress 8 1 2"));
}

TEST_F(DataSrcTest, shouldKeepARequestAfterItsLastBatch) {
  subscribe(7);
  src->onData(7, resultOf({}), {}, 16, 0);
  src->onData(7, resultOf({}), {}, 0, 0);
  EXPECT_EQ(notify.take().size(), 2u);
}

TEST_F(DataSrcTest, shouldDropEverythingWhileDetachedAndKeepItsBooks) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  src->setNotify(nullptr);
  const auto all = [this] {
    src->onSnapshot({"key", "dic"}, {});
    src->onProgress(7, 1, 2);
    src->onData(7, {}, {}, 0, 0);
    src->onData(7, resultOf({}), {}, 0, 0);
    src->onDelete(7, {}, 1, 2, 3);
  };
  all();
  EXPECT_THAT(notify.take(), IsEmpty());
  src->setNotify(&notify);
  all();
  EXPECT_EQ(notify.take().size(), 5u);
}

TEST_F(DataSrcTest, shouldDoNothingWhenTheServiceIsDisconnected) {
  subscribe(7);
  platform.data().requestSpi(7)->onDisconnected();
  EXPECT_THAT(notify.take(), IsEmpty());
  EXPECT_TRUE(src->isSubscribeData(7));
}

// Locks.

TEST_F(DataSrcTest, shouldHoldNoLockAcrossAnySubscriptionCall) {
  expectLocksFreeIn({"data.subscribeData", "data.unsubscribeData", "data.subscribeSnapshot",
                     "data.unsubscribeSnapshot", "data.unsubscribeAllSnapshots"});
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  src->unsubscribeDataSnapshot("dic", "key", 0);
  src->release();
  EXPECT_EQ(checks, 5);
}

TEST_F(DataSrcTest, shouldHoldTheNotifyMutexAloneWhileItCallsTheNotify) {
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  notify.hook = [this] {
    ++checks;
    EXPECT_FALSE(TestAccess::notifyMutexIsFree(*src));
    EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
  };
  src->onSnapshot({"key", "dic"}, {});
  src->onProgress(7, 1, 2);
  src->onData(7, {}, {}, 0, 0);
  src->onData(7, resultOf({}), {}, 0, 0);
  src->onDelete(7, {}, 1, 2, 3);
  EXPECT_EQ(checks, 5);
}

TEST_F(DataSrcTest, shouldThrowBadWeakPtrAfterTheBookKeepingWhenNotHeldByASharedPtr) {
  DataSrc unowned(0);
  EXPECT_THROW(unowned.subscribeData({}, 7), std::bad_weak_ptr);
  EXPECT_TRUE(unowned.isSubscribeData(7));
  EXPECT_THROW(unowned.subscribeDataSnapshot("dic", "key", 0), std::bad_weak_ptr);
  EXPECT_TRUE(unowned.isSubscribeDataSnapshot("dic", "key"));
  EXPECT_THROW(unowned.unsubscribeDataSnapshot("dic", "key", 0), std::bad_weak_ptr);
  EXPECT_FALSE(unowned.isSubscribeDataSnapshot("dic", "key"));
  EXPECT_THROW(unowned.release(), std::bad_weak_ptr);
  EXPECT_FALSE(unowned.isSubscribeData(7));
  EXPECT_TRUE(TestAccess::dataMutexIsFree(unowned));
}

// With threads.

class DataSrcThreads : public DataSrcTest {};

TEST_F(DataSrcThreads, shouldBlockADetachUntilTheCallBackInProgressHasReturned) {
  subscribe(7);
  ASSERT_TRUE(src->isSubscribeData(7));
  std::latch inside(1);
  std::latch leave(1);
  std::atomic<bool> returned{false};
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
    returned = true;
  };
  std::thread service([&] { src->onProgress(7, 1, 2); });
  inside.wait();
  {
    HostThread host([&] {
      src->setNotify(nullptr);
      EXPECT_TRUE(returned);
    });
    EXPECT_TRUE(host.awaitSleep());
    leave.count_down();
  }
  service.join();
}

TEST_F(DataSrcThreads, shouldSubscribeWhileACallOfTheNotifyIsInProgress) {
  subscribe(7);
  ASSERT_TRUE(src->isSubscribeData(7));
  std::latch inside(1);
  std::latch leave(1);
  notify.hook = [&] {
    inside.count_down();
    leave.wait();
  };
  std::thread service([&] { src->onProgress(7, 1, 2); });
  inside.wait();
  subscribe(8);
  src->subscribeDataSnapshot("dic", "key", 0);
  EXPECT_TRUE(src->isSubscribeData(8));
  leave.count_down();
  service.join();
}

TEST_F(DataSrcThreads, shouldCountSubscribersRightUnderManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 200;
  std::latch go(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      go.arrive_and_wait();
      for (int round = 0; round < kRounds; ++round) {
        src->subscribeDataSnapshot("dic", "key", 0);
        src->onSnapshot({"key", "dic"}, {});
        subscribe(100 + i);
        src->onProgress(100 + i, 1, 2);
        unsubscribe(100 + i);
        src->unsubscribeDataSnapshot("dic", "key", 0);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(TestAccess::snapshots(*src).empty());
  EXPECT_TRUE(TestAccess::requestIds(*src).empty());
  EXPECT_EQ(notify.take().size(), 2u * kThreads * kRounds);
  EXPECT_EQ(platform.calls.count("data.subscribeSnapshot"),
            platform.calls.count("data.unsubscribeSnapshot"));
}

}  // namespace
}  // namespace orvane::support
