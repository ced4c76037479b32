// The dictionary source's worst moments, one by one: a service that keeps every shared pointer,
// calls back when it likes, and throws.

#include <stdexcept>

#include "tests/EventStrategy/DataSrcFixture.h"
#include "tests/EventStrategy/model/DetachRace.h"

namespace orvane::support {
namespace {

const char* const kSubscriptionCalls[] = {"data.subscribeData", "data.unsubscribeData",
                                          "data.subscribeSnapshot", "data.unsubscribeSnapshot",
                                          "data.unsubscribeAllSnapshots"};

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
  EXPECT_EQ(thrownBy([this] { src->release(); }), "call 1");
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
  subscribe(7);
  src->subscribeDataSnapshot("dic", "key", 0);
  DetachRace race;
  race.callBack = [spi = platform.data().requestSpi(7)] { callAll(*spi); };
  race.work = [this] {
    subscribe(7);
    src->subscribeDataSnapshot("dic", "key", 0);
    src->unsubscribeDataSnapshot("dic", "key", 0);
    unsubscribe(7);
  };
  race.detach = [this] { src->setNotify(nullptr); };
  race.leave = [this] {
    src->release();
    src = std::make_shared<DataSrc>(0);
    platform.forgetSpis();
  };
  EXPECT_EQ(heardAfterDetach(notify.hook, race), 0);
}

}  // namespace
}  // namespace orvane::support
