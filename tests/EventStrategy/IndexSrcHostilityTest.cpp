// The worst moments of the source of index changes, one by one: a service that keeps every shared
// pointer, calls back when it likes, and throws.

#include <stdexcept>

#include "EventStrategy/IndexSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/DetachRace.h"

namespace orvane::support {
namespace {

const char* const kIndexCalls[] = {"index.subscribeElementChange",
                                   "index.unsubscribeElementChange"};

void tell(IndexTradeSpi& spi, int64 code) {
  std::list<IndexTradeElement> elements = {{codeOf(3), 30}};
  spi.onElementChange(codeOf(code, "X"), elements);
}

std::string heard(int64 code) { return std::to_string(code) + " X [3=30,]"; }

class IndexSrcHostility : public LibraryTest {
 protected:
  IndexSrcHostility() { src->setNotify(&notify); }
  ~IndexSrcHostility() override {
    for (const char* operation : kIndexCalls) platform.calls.onCall(operation, {});
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  RecordingEventNotify notify;
  std::shared_ptr<IndexSrc> src = std::make_shared<IndexSrc>();
};

TEST_F(IndexSrcHostility, shouldDeliverAChangeThatComesTwiceTwice) {
  src->subscribeElementChange(codeOf(7));
  for (int i = 0; i < 2; ++i) onAnotherThread([this] { tell(*platform.indexes.spi(), 7); });
  EXPECT_THAT(notify.take(), ElementsAre(heard(7), heard(7)));
}

TEST_F(IndexSrcHostility, shouldDropWhatComesDuringAnUnsubscribeOrARelease) {
  std::thread late;
  int calls = 0;
  platform.calls.onCall("index.unsubscribeElementChange", [&] {
    ++calls;
    late = std::thread([this] { tell(*src, 7); });
  });
  src->subscribeElementChange(codeOf(7));
  src->unsubscribeElementChange(codeOf(7));
  late.join();
  src->subscribeElementChange(codeOf(7));
  src->release();
  late.join();
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(IndexSrcHostility, shouldLiveUntilTheServiceLetsGoAndDeliverNothingOnceItsOwnerIsGone) {
  src->subscribeElementChange(codeOf(7));
  const std::weak_ptr<IndexSrc> watched = src;
  src->setNotify(nullptr);
  src->release();
  src = std::make_shared<IndexSrc>();
  ASSERT_FALSE(watched.expired());
  for (const auto& spi : platform.indexes.spis()) tell(*spi, 7);
  EXPECT_THAT(notify.take(), IsEmpty());
  platform.forgetSpis();
  EXPECT_TRUE(watched.expired());
}

TEST_F(IndexSrcHostility, shouldLetAnExceptionOfTheServiceThroughAndFreeItsMutex) {
  for (const char* operation : kIndexCalls)
    platform.calls.onCall(operation, [] { throw std::runtime_error("hostile"); });
  EXPECT_THROW(src->subscribeElementChange(codeOf(7)), std::runtime_error);
  EXPECT_THROW(src->unsubscribeElementChange(codeOf(7)), std::runtime_error);
  EXPECT_EQ(TestAccess::codes(*src).size(), 1u);
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(IndexSrcHostility, shouldWithdrawTheRestWhenOneWithdrawalThrowsAndThenThrowTheFirst) {
  for (const int64 code : {7, 8, 9}) src->subscribeElementChange(codeOf(code));
  platform.calls.clear();
  int calls = 0;
  platform.calls.onCall("index.unsubscribeElementChange",
                        [&calls] { throw std::runtime_error("call " + std::to_string(++calls)); });
  EXPECT_EQ(thrownBy([this] { src->release(); }), "call 1");
  EXPECT_EQ(platform.calls.count("index."), 3);
  EXPECT_TRUE(TestAccess::codes(*src).empty());
  EXPECT_TRUE(TestAccess::mutexIsFree(*src));
}

TEST_F(IndexSrcHostility, shouldDeliverNothingAfterADetachWhileManyThreadsCallBack) {
  src->subscribeElementChange(codeOf(7));
  DetachRace race;
  race.callBack = [spi = platform.indexes.spi()] { tell(*spi, 7); };
  race.work = [this] {
    src->unsubscribeAll();
    src->subscribeElementChange(codeOf(7));
  };
  race.detach = [this] { src->setNotify(nullptr); };
  race.leave = [this] {
    src->release();
    src = std::make_shared<IndexSrc>();
    platform.forgetSpis();
  };
  EXPECT_EQ(heardAfterDetach(notify.hook, race), 0);
}

}  // namespace
}  // namespace orvane::support
