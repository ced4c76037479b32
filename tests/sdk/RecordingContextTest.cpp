#include "sdk/testing/RecordingContext.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sdk/Orders.h"
#include "sdk/Records.h"

namespace orvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RecordingContext, shouldAnswerWhatIsScriptedOnceAndAlways) {
  RecordingContext context;
  const ICodeID code = context.addCode("A.X");
  context.script.next("sendOrder", {-6, "first"});
  context.script.always("subscribeQuote", {1, "never"});
  std::list<Order> sent;
  EXPECT_EQ(context.sendOrder(buy({}, code, 1), sent).message, "first");
  EXPECT_TRUE(sent.empty());
  EXPECT_EQ(context.sendOrder(buy({}, code, 1), sent).code, 0);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(context.orders[0].orderId, 0);
  EXPECT_EQ(context.orders[1].orderId, sent.front().id);
  EXPECT_EQ(context.subscribeQuote(code, 0).code, 1);
  EXPECT_EQ(context.subscription(code), nullptr);
  EXPECT_THAT(context.script.unused(), IsEmpty());
  context.script.next("sendOrdr", {1, ""});
  EXPECT_THAT(context.script.unused(), ElementsAre("sendOrdr")) << "a misspelt one is noticed";
}

TEST(RecordingContext, shouldKeepWhatIsLoggedNotifiedAndPutIntoTheEnvironment) {
  RecordingContext context;
  context.logWarn(gbk("均线"), false);
  context.notifySpi({{"a", 1}});
  context.setEnvs({{"k", "v"}}, true);
  context.setEnvItem({"g", "b", 1, "2"}, true);
  context.setEnvItem({"g", "a", 1, "1"}, true);
  ASSERT_EQ(context.logs.size(), 1u);
  EXPECT_EQ(context.logs[0].level, RecordedLog::Level::Warn);
  EXPECT_FALSE(context.logs[0].toStg);
  EXPECT_TRUE(context.logged("均"));
  EXPECT_EQ(context.notifications.size(), 1u);
  EXPECT_EQ(context.env("k", "-"), "v");
  EXPECT_EQ(context.env("l", "-"), "-");
  ASSERT_EQ(context.envItems("g").size(), 2u);
  EXPECT_EQ(context.envItems("g").front().key, "a");
  context.clearEnv();
  context.clearEnvItems();
  EXPECT_TRUE(context.envs().empty());
  EXPECT_TRUE(context.envItems("g").empty());
}

TEST(RecordingContext, shouldKeepTheFirstEndOfARun) {
  RecordingContext context;
  EXPECT_FALSE(context.isSetStop());
  context.setError("first");
  context.setError("second");
  context.setFinish();
  EXPECT_EQ(context.ending, RecordingContext::End::Error);
  EXPECT_EQ(context.error, "first");
}

TEST(RecordingContext, shouldKnowTheCodesThatWereAddedAndNoOther) {
  RecordingContext context;
  ICodeProperty property;
  property.priceTick = 0.2;
  const ICodeID code = context.addCode("IF2101.CFFEX", property);
  EXPECT_EQ(context.addCode("IF2101.CFFEX"), code);
  ICodeID found;
  EXPECT_EQ(context.codeServiceQuery("IF2101.CFFEX", found, 0).code, 0);
  EXPECT_EQ(found, code);
  EXPECT_EQ(found.code, "IF2101");
  EXPECT_EQ(context.codeServiceQuery("IF2102.CFFEX", found, 0).code, 22);
  context.addCode("IF2101.CFFEX", property);
  ICodeProperty answered;
  EXPECT_EQ(context.currentCodeProperty(code, answered, 0).code, 0);
  EXPECT_EQ(answered.priceTick, 0.2);
  context.addCode("IH2101.CFFEX");
  std::list<ICodeID> codes;
  context.codeRangeQuery("I", 1, 5, codes);
  EXPECT_EQ(codes.size(), 1u);
}

TEST(RecordingContext, shouldAnswerASecondEqualSubscriptionAsTheFirst) {
  RecordingContext context;
  const ICodeID code = context.addCode("A.X");
  context.subscribeKline(code, "1m", kUnsetTime, kUnsetTime, 0, 0);
  context.subscribeKline(code, "1m", kUnsetTime, kUnsetTime, 0, 0);
  EXPECT_EQ(context.subscriptions.size(), 1u);
  EXPECT_EQ(context.subscribeKline(7, code, "1m", 0, 5, 2, 0).code, 0);
  EXPECT_EQ(context.subscribeKline(7, code, "5m", 0, 5, 2, 0).code, -1) << "a used id";
  context.unsubscribeKline(7);
  EXPECT_EQ(context.subscribeKline(7, code, "5m", 0, 5, 2, 0).code, 0);
  context.unsubscribeKline(code, "1m");
  EXPECT_EQ(context.subscription(code, "1m"), nullptr);
  EXPECT_EQ(context.subscriptions[0].isEnded, true);
}

TEST(RecordingContext, shouldReadTheRecordsThatWereAddedAndPublished) {
  RecordingContext context;
  context.addRecord("means", "A.X", jsonRecord(5, {{"mean", 1}}));
  EXPECT_EQ(context.publishRecords("means", "A.X", 0, {jsonRecord(7, {{"mean", 2}})}, kLive).code,
            0);
  ASSERT_EQ(context.publications.size(), 1u);
  EXPECT_EQ(context.publications[0].name, "means");
  EXPECT_EQ(context.publications[0].count, 1u);
  Record record;
  EXPECT_EQ(context.readLatest("means", "A.X", record, 0).code, 0);
  EXPECT_EQ(record.key, 7);
  EXPECT_EQ(context.readRecord("means", "A.X", 6, record, 0).code, 0);
  EXPECT_EQ(record.key, 5);
  EXPECT_EQ(context.readRecord("means", "A.X", 4, record, 0).code, 22);
  EXPECT_EQ(context.readLatest("means", "B.X", record, 0).code, 22);
  std::list<Record> records;
  context.readRecords("means", "A.X", kUnsetTime, kUnsetTime, records, 0);
  EXPECT_EQ(records.size(), 2u);
  EXPECT_EQ(context.records("means", "A.X"), records);
  std::map<std::string, Record> byTarget;
  context.readTargets("means", {"A.X", "B.X"}, kUnsetTime, byTarget, 0, 0);
  EXPECT_EQ(byTarget.size(), 1u);
  std::list<LatestOfName> latest;
  context.readLatestMany({{"A.X", "means"}}, latest, 0);
  ASSERT_EQ(latest.size(), 1u);
  EXPECT_EQ(latest.front().first, "means");
}

TEST(RecordingContext, shouldFindAnOrderThatWasJustSentByItsIdAlone) {
  RecordingContext context;
  const ICodeID code = context.addCode("A.X");
  const TradingAccountID account = context.addAccount("main");
  std::list<Order> sent, found;
  context.sendOrder(buy(account, code, 1), sent);
  context.openOrdersByCode(account, code, found, "");
  EXPECT_TRUE(found.empty());
  Order order;
  EXPECT_EQ(context.getOrder(sent.front().id, order).code, 0);
  EXPECT_EQ(order.source.createSource, "test");
  OrderWriter(*context.order(order.id)).setStatus(order::Status::Working);
  context.openOrdersByCode(account, code, found, "");
  EXPECT_EQ(found.size(), 1u);
  EXPECT_EQ(context.getOrder(99, order).code, 22);
  EXPECT_EQ(context.cancelOrder(99, "").code, 22);
}

}  // namespace
}  // namespace orvane
