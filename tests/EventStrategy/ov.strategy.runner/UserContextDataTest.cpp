// The context's operations on dictionary data, down to the services, and the data's way back to
// the strategy. The books of its subscriptions have tests of their own.

#include <stdexcept>

#include "EventStrategy/DataSrc.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class UserContextDataTest : public RunnerTest {
 protected:
  UserContextDataTest() {
    platform.calls.clear();
    logs.clear();
  }
  ~UserContextDataTest() override { platform.forgetSpis(); }

  std::vector<std::string> dataCalls() const { return platform.calls.entries("data."); }

  /// Subscribes within a run and forgets what that logged and called.
  int subscribeInRun() {
    startRun();
    user.subscribeDic("dic", "key", 1, kUnsetTime, 0);
    platform.calls.clear();
    return platform.routes.lastRequestId();
  }

  /// A batch as the service sends it: on a thread of its own.
  void send(int requestId, std::list<Record> records, const ResultStatus& status = {}) {
    const DataResult result{
        "other", static_cast<DataValueType>(3), {{"other", std::move(records)}}};
    onAnotherThread(
        [&] { platform.data().requestSpi(requestId)->onData(requestId, result, status, 16, 99); });
  }

  IContext& user = TestAccess::context(*runner);
  ResultStatus refused{52, "slow down"};
};

// Publishing.

TEST_F(UserContextDataTest, shouldPublishRecordsSortedWithFlag128AndTag0) {
  const std::list<Record> records = {{2, 0, "b"}, {1, 0, "a"}, {2, 0, "c"}};
  const std::list<Record> before = records;
  platform.calls.answer("publisher.publishRecords", {0, "7"});
  EXPECT_EQ(user.publishRecords("dic", "key", 3, records, 4), (ResultStatus{0, "7"}));
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.publishRecords dic key 3 3 132 0"));
  EXPECT_EQ(platform.published.lastRecords(),
            (std::list<Record>{{1, 0, "a"}, {2, 0, "b"}, {2, 0, "c"}}));
  EXPECT_EQ(records, before);
}

TEST_F(UserContextDataTest, shouldKeepFlag128WhereItIsGivenAndPassARefusalOn) {
  platform.calls.answer("publisher.publishRecords", refused);
  EXPECT_EQ(user.publishRecords("dic", "key", 0, {}, 128 | 1), refused);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.publishRecords dic key 0 0 129 0"));
}

// Blocking reads.

TEST_F(UserContextDataTest, shouldReadRecordsWithFlag32AMinuteToWaitAndNoWayToCancel) {
  platform.calls.answer("data.readRecords", refused);
  platform.dataRead.cancelled = true;
  std::list<Record> records = {{0, 0, "kept"}};
  EXPECT_EQ(user.readRecords("dic", "key", 10, 20, records, 4), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readRecords dic/key wait=60000 flags=36"));
  EXPECT_EQ(platform.dataRead.begin, 10);
  EXPECT_EQ(platform.dataRead.end, 20);
  EXPECT_FALSE(platform.dataRead.cancelled);
  EXPECT_EQ(records, (std::list<Record>{{0, 0, "kept"}, {10, 20, "dic"}}));
}

TEST_F(UserContextDataTest, shouldReadTargetsWithFlag32AndTheCallersWait) {
  platform.calls.answer("data.readTargets", refused);
  platform.dataRead.cancelled = true;
  platform.dataRead.answer = {{"a", {{1, 1, "old"}, {2, 2, "new"}}}, {"b", {}}};
  std::map<std::string, Record> records;
  EXPECT_EQ(user.readTargets("dic", {"a", "b"}, 10, records, 77, 4), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readTargets dic wait=77 flags=36"));
  EXPECT_EQ(platform.dataRead.targets, (std::list<std::string>{"a", "b"}));
  EXPECT_EQ(platform.dataRead.begin, 10);
  EXPECT_FALSE(platform.dataRead.cancelled);
  EXPECT_EQ(records, (std::map<std::string, Record>{{"a", {2, 2, "new"}}}));
}

TEST_F(UserContextDataTest, shouldReadARecordWithFlag32AMinuteToWaitAndNoWayToCancel) {
  platform.calls.answer("data.readTargets", refused);
  platform.dataRead.cancelled = true;
  Record record;
  EXPECT_EQ(user.readRecord("dic", "key", 10, record, 4), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readTargets dic wait=60000 flags=36"));
  EXPECT_EQ(platform.dataRead.targets, (std::list<std::string>{"key"}));
  EXPECT_FALSE(platform.dataRead.cancelled);
  EXPECT_EQ(record, (Record{10, 0, "dic"}));
}

TEST_F(UserContextDataTest, shouldReadTheNewestRecordWithTheFlagsAsGiven) {
  platform.data().latestAnswer = {{"dic", {{"key", {{1, 1, "old"}, {2, 2, "new"}}}}}};
  Record record;
  EXPECT_EQ(user.readLatest("dic", "key", record, 4), ResultStatus());
  EXPECT_THAT(dataCalls(), ElementsAre("data.readLatest dic/key flags=4"));
  EXPECT_EQ(record, (Record{2, 2, "new"}));
}

TEST_F(UserContextDataTest, shouldAnswer22ForANewestRecordThatIsNotThere) {
  Record record{7, 7, "kept"};
  EXPECT_EQ(user.readLatest("dic", "key", record, 0), (ResultStatus{22, gbkFromUtf8("不存在")}));
  EXPECT_EQ(record, (Record{7, 7, "kept"}));
}

TEST_F(UserContextDataTest, shouldReadManyNewestRecordsWithTheFlagsAsGiven) {
  platform.data().latestAnswer = {{"dic", {{"key", {{1, 1, "x"}}}}}};
  platform.calls.answer("data.readLatest", refused);
  std::list<LatestOfName> latest;
  EXPECT_EQ(user.readLatestMany({{"key", "dic"}, {"u", "m"}}, latest, 4), refused);
  EXPECT_THAT(dataCalls(), ElementsAre("data.readLatest dic/key,m/u flags=4"));
  EXPECT_EQ(latest, platform.data().latestAnswer);
}

// Ranges and definitions.

TEST_F(UserContextDataTest, shouldRequestARangeWithTag0AndDropTheStatus) {
  platform.calls.answer("publisher.requestRange", refused);
  user.requestRange("dic", "key", 10, 20, 512 | 4);
  EXPECT_THAT(platform.calls.entries(), ElementsAre("publisher.requestRange dic 0"));
  const DataReq request = platform.published.lastRequest();
  EXPECT_EQ(request.targets, (std::list<std::string>{"key"}));
  EXPECT_EQ(request.beginTime, 10);
  EXPECT_EQ(request.endTime, 20);
  EXPECT_EQ(request.count, 2147483647);
  EXPECT_EQ(request.flags, 512 | 4);
  EXPECT_THAT(logs.messages(), IsEmpty());
}

TEST_F(UserContextDataTest, shouldTellADictionarysDefinitionOr22) {
  DataDefine define;
  EXPECT_EQ(user.dataDefine("dic", define), ResultStatus());
  EXPECT_EQ(define.text1, "dic");
  platform.data().definesAnswer = std::list<DataDefine>{};
  EXPECT_EQ(user.dataDefine("none", define), (ResultStatus{22, gbkFromUtf8("不存在")}));
  EXPECT_EQ(define.text1, "dic");
  EXPECT_THAT(dataCalls(), ElementsAre("data.dataDefines dic 1", "data.dataDefines none 1"));
}

TEST_F(UserContextDataTest, shouldLetAStrategyReadInsideACallBack) {
  platform.data().latestAnswer = {{"dic", {{"key", {{2, 2, "new"}}}}}};
  std::string seen;
  script->on("onStart", [&](IContext* context) {
    Record record;
    if (context->readLatest("dic", "key", record, 0).code == 0) seen = record.text;
  });
  startRun();
  EXPECT_EQ(seen, "new");
}

// Data on its way to the strategy.

TEST_F(UserContextDataTest, shouldDeliverBatchesDeletionsAndStatusesUnderTheNameAndKeyAskedFor) {
  const int id = subscribeInRun();
  send(id, {{1, 2, "x"}, {3, 4, "y"}});
  onAnotherThread([&] { platform.data().requestSpi(id)->onProgress(id, 1, 2); });
  onAnotherThread([&] { platform.data().requestSpi(id)->onData(id, {}, {22, "none"}, 16, 99); });
  onAnotherThread([&] { platform.data().requestSpi(id)->onDelete(id, {"k", "n"}, 5, 6, 7); });
  pool.runAll();
  EXPECT_THAT(script->calls(),
              ElementsAre("onDic dic key [1:2:x,3:4:y,] status=0/ 16",
                          "onDic dic key [] status=22/none 16", "onDicDeleted dic key 5 5"));
}

TEST_F(UserContextDataTest, shouldNotLoseABatchThatComesBeforeTheSubscribeHasReturned) {
  platform.calls.onCall("data.subscribeData", [this] {
    send(platform.routes.lastRequestId(), {{1, 2, "x"}});
  });
  script->on("onStart", [](IContext* c) { c->subscribeDic("dic", "key", 1, kUnsetTime, 0); });
  runner->start({});
  pool.runAll();
  EXPECT_EQ(script->calls().back(), "onDic dic key [1:2:x,] status=0/ 16");
}

TEST_F(UserContextDataTest, shouldDropBatchesThatWereQueuedOrCameLateWhenItUnsubscribed) {
  const int id = subscribeInRun();
  send(id, {{1, 2, "queued"}});
  user.unsubscribeDic("dic", "key");
  EXPECT_THAT(dataCalls(), ElementsAre("data.unsubscribeData " + std::to_string(id)));
  send(id, {{1, 2, "late"}});
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(UserContextDataTest, shouldNotTakeTheDataOfAnOldRequestForThatOfItsSuccessor) {
  const int old = subscribeInRun();
  user.unsubscribeDic("dic", "key");
  user.subscribeDic("dic", "key", 1, kUnsetTime, 0);
  const int next = platform.routes.lastRequestId();
  send(old, {{1, 2, "old"}});
  send(next, {{1, 2, "next"}});
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDic dic key [1:2:next,] status=0/ 16"));
}

TEST_F(UserContextDataTest, shouldKeepTheOtherKeysOfANameWhenOneIsUnsubscribed) {
  const int first = subscribeInRun();
  user.subscribeDic("dic", "other", 1, kUnsetTime, 0);
  const int second = platform.routes.lastRequestId();
  user.unsubscribeDic("dic", "key");
  send(first, {{1, 2, "x"}});
  send(second, {{1, 2, "y"}});
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDic dic other [1:2:y,] status=0/ 16"));
}

TEST_F(UserContextDataTest,
       shouldDeliverTheDataOfARefusedRequestThatTheServiceServesLaterAllTheSame) {
  platform.calls.answer("data.subscribeData", refused);
  startRun();
  EXPECT_EQ(user.subscribeDic("dic", "key", 1, 2, 0), refused);
  send(platform.routes.lastRequestId(), {{1, 2, "x"}});
  pool.runAll();
  EXPECT_EQ(script->count("onDic"), 1);
  user.unsubscribeDic("dic", "key");
  EXPECT_EQ(platform.calls.count("data.unsubscribeData"), 1);
}

TEST_F(UserContextDataTest, shouldDeliverSnapshotsOfSubscribedKeysAlone) {
  startRun();
  user.subscribeDicSnapshot("dic", "key", 0);
  const auto service = platform.data().snapshotSpi();
  service->onSnapshot({"key", "dic"}, {1, 2, "x"});
  service->onSnapshot({"dic", "key"}, {1, 2, "swapped"});
  pool.runAll();
  EXPECT_THAT(script->calls(), ElementsAre("onDicSnapshot dic key 1:2:x"));
  script->clear();
  service->onSnapshot({"key", "dic"}, {1, 2, "queued"});
  user.unsubscribeDicSnapshot("dic", "key");
  service->onSnapshot({"key", "dic"}, {1, 2, "late"});
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

TEST_F(UserContextDataTest, shouldDeliverNothingAfterTheRunAndNothingOfItToTheNextRun) {
  const int id = subscribeInRun();
  user.subscribeDicSnapshot("dic", "key", 0);
  const auto service = platform.data().requestSpi(id);
  runner->stop();
  send(id, {{1, 2, "x"}});
  pool.runAll();
  EXPECT_THAT(dataCalls(), ElementsAre("data.subscribeSnapshot dic/key flags=0",
                                       "data.unsubscribeData " + std::to_string(id),
                                       "data.unsubscribeSnapshot dic/key flags=0"));
  runner->start({});
  pool.runAll();
  script->clear();
  service->onData(id, {}, {}, 0, 0);
  service->onSnapshot({"key", "dic"}, {});
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
}

// A service that throws.

TEST_F(UserContextDataTest, shouldCostTheEventOnlyAndAskTheServiceAgainWhenASubscribeThrew) {
  platform.calls.onCall("data.subscribeData", [] { throw std::runtime_error("hostile"); });
  script->on("onStart", [](IContext* c) { c->subscribeDic("dic", "key", 1, 2, 0); });
  runner->start({});
  pool.runAll();
  EXPECT_TRUE(runnerLogged("ERROR", ",do pool task error,exception,msg=hostile"));
  platform.calls.onCall("data.subscribeData", {});
  EXPECT_EQ(user.subscribeDic("dic", "key", 1, 2, 0), ResultStatus());
  EXPECT_EQ(platform.calls.count("data.subscribeData"), 2);
}

TEST_F(UserContextDataTest, shouldOutliveAServiceThatThrowsWhenTheRunnerGoes) {
  subscribeInRun();
  user.subscribeDicSnapshot("dic", "key", 0);
  platform.calls.onCall("data.unsubscribeData", [] { throw std::runtime_error("hostile"); });
  platform.calls.onCall("data.unsubscribeAllSnapshots", [] { throw 5; });
  const auto late = platform.data().spis();
  runner->stopEvent();
  runner.reset();
  EXPECT_EQ(platform.calls.count("data.unsubscribeData"), 1);
  EXPECT_EQ(platform.calls.count("data.unsubscribeAllSnapshots"), 1);
  EXPECT_EQ(logs.countContaining("r1,release error,exception,msg=hostile"), 1);
  for (const auto& kept : late) kept->onSnapshot({"key", "dic"}, {});
}

// General events and index changes end in the pump.

TEST_F(UserContextDataTest, shouldQueueGeneralEventsAndIndexChangesAndTellTheStrategyNothing) {
  startRun();
  runner->subscribeGeneralEvent("target", "name", {"k"});
  runner->subscribeElementChange(codeOf(7));
  std::list<IndexTradeElement> elements = {{codeOf(3), 30}};
  onAnotherThread([&] {
    platform.events->spi()->onGeneralEvent("topic", {}, "");
    platform.indexes.spi()->onElementChange(codeOf(7), elements);
  });
  EXPECT_THAT(TestAccess::pendingTypes(*runner),
              ElementsAre(EventTypeEvent, EventTypeIndexElementChange));
  pool.runAll();
  EXPECT_THAT(script->calls(), IsEmpty());
  EXPECT_THAT(TestAccess::pendingTypes(*runner), IsEmpty());
}

}  // namespace
}  // namespace orvane::support
