// What a strategy sees: the run, the environment, forwards and trade queries.

#include "EventStrategy/ov.strategy.runner/UserContext.h"

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

TradingAccountID accountNamed(int key, const std::string& text = "acc") {
  TradingAccountID account;
  account.accountKey = key;
  account.account = text;
  return account;
}

Order orderOf(int64 id, const std::string& source) {
  Order order;
  order.id = id;
  order.source.createSource = source;
  return order;
}

OrderFill fillOf(int64 id, const std::string& source) {
  OrderFill fill;
  fill.id = id;
  fill.source.createSource = source;
  return fill;
}

std::vector<int64> idList(const auto& records) {
  std::vector<int64> ids;
  for (const auto& record : records) ids.push_back(record.id);
  return ids;
}

class UserContextTest : public RunnerTest {
 protected:
  UserContextTest() {
    platform.calls.clear();
    logs.clear();
  }

  std::vector<std::string> taken() {
    std::vector<std::string> entries = platform.calls.entries();
    platform.calls.clear();
    return entries;
  }

  IContext& user = TestAccess::context(*runner);
};

// The run.

TEST_F(UserContextTest, shouldTellNameAndOrderSource) {
  EXPECT_EQ(user.name(), "r1");
  EXPECT_EQ(user.orderSource(), "source");
}

TEST_F(UserContextTest, shouldTellAndSetTheStopFlagThroughStopErrorAndFinish) {
  EXPECT_FALSE(user.isSetStop());
  user.stop();
  EXPECT_TRUE(user.isSetStop());
  runner->start({});
  EXPECT_FALSE(user.isSetStop());
  user.setError("e");
  EXPECT_TRUE(user.isSetStop());
  runner->start({});
  user.setFinish();
  EXPECT_TRUE(user.isSetStop());
  EXPECT_TRUE(runnerLogged("INFO", ",stop"));
  EXPECT_TRUE(runnerLogged("INFO", ",setError,e"));
  EXPECT_TRUE(runnerLogged("INFO", ",setFinish"));
}

TEST_F(UserContextTest, shouldPassTheArgumentOfNotifySpiOnTheCallersThreadUntouched) {
  user.notifySpi({{"k", "v"}});
  EXPECT_THAT(spi->calls(), ElementsAre("notify {\"k\":\"v\"}"));
  EXPECT_EQ(spi->lastThread(), std::this_thread::get_id());
}

TEST_F(UserContextTest, shouldDrawRequestIdsFromTheRouter) {
  const int first = user.generateRequestId();
  EXPECT_EQ(user.generateRequestId(), first + 1);
  EXPECT_EQ(platform.routes.lastRequestId(), first + 1);
}

// The environment.

TEST_F(UserContextTest, shouldReachTheSpiButLeaveTheMapAsItWasForSetEnvWithStoreFalse) {
  user.setEnv("a", "1", true);
  user.setEnv("a", "2", false);
  user.setEnv("b", "3", false);
  EXPECT_THAT(spi->calls(), ElementsAre("envs a=1,", "envs a=2,", "envs b=3,"));
  EXPECT_EQ(user.envs(), (std::map<std::string, std::string>{{"a", "1"}}));
}

TEST_F(UserContextTest, shouldOverwriteAndKeepOthersForSetEnvsWithStoreTrue) {
  user.setEnvs({{"a", "1"}, {"b", "2"}}, true);
  user.setEnvs({{"b", "3"}}, true);
  EXPECT_EQ(user.envs(), (std::map<std::string, std::string>{{"a", "1"}, {"b", "3"}}));
  EXPECT_THAT(spi->calls(), ElementsAre("envs a=1,b=2,", "envs b=3,"));
}

TEST_F(UserContextTest, shouldNeverReachTheSpiForClearEnvAndClearEnvItems) {
  user.setEnv("a", "1", true);
  user.setEnvItem({"g", "k", 1, "t"}, true);
  const std::size_t told = spi->calls().size();
  user.clearEnv();
  user.clearEnvItems();
  EXPECT_EQ(spi->calls().size(), told);
  EXPECT_TRUE(user.envs().empty());
  EXPECT_TRUE(user.envItems("g").empty());
}

TEST_F(UserContextTest, shouldAnswerTheDefaultForAMissingKey) {
  EXPECT_EQ(user.env("missing", "default"), "default");
  user.setEnv("there", "", true);
  EXPECT_EQ(user.env("there", "default"), "");
}

TEST_F(UserContextTest, shouldAnswerTheItemsOfAGroupInKeyOrder) {
  user.setEnvItems({{"g", "b", 1, "x"}, {"g", "a", 2, "y"}, {"h", "c", 3, "z"}}, true);
  user.setEnvItem({"g", "b", 4, "w"}, true);
  user.setEnvItem({"g", "z", 5, "v"}, false);
  const std::list<EnvItem> items = user.envItems("g");
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items.front().key, "a");
  EXPECT_EQ(items.back().key, "b");
  EXPECT_EQ(items.back().kind, 4);
  EXPECT_TRUE(user.envItems("unknown").empty());
  EXPECT_EQ(spi->calls().back(), "envItems g/z/5/v,");
}

TEST_F(UserContextTest, shouldLetASpiCallBackIntoTheContext) {
  spi->hook = [this](const std::string& call) {
    if (call.starts_with("envs ")) {
      EXPECT_EQ(user.env("a", ""), "1");
      user.clearEnv();
    }
    if (call.starts_with("notify")) {
      EXPECT_EQ(user.name(), "r1");
    }
  };
  user.setEnv("a", "1", true);
  user.notifySpi({});
  spi->hook = nullptr;
  EXPECT_TRUE(user.envs().empty());
}

// Quote forwards.

TEST_F(UserContextTest, shouldForwardQuotesCodesAndPublications) {
  IDepthMarketData quote;
  ICodeID code;
  ICodeProperty property;
  std::list<ICodeID> codes;
  user.getQuote(codeOf(7), quote, 3);
  user.publishQuoteList({quote}, 1);
  user.publishQuoteSeries(codeOf(7), {}, 60, 2);
  user.publishQuoteItems(codeOf(7), {}, 3);
  user.publishQuoteItems2(codeOf(7), {}, 4);
  user.publishOp5("k", "t", 5);
  user.publishOp6("k", "t", 6);
  user.publishOp7("k", "t", 7);
  user.publishOp8("k", "t", 8);
  user.codeServiceQuery("IF", code, 9);
  user.currentCodeProperty(codeOf(7), property, 10);
  user.resolvedCodeProperty(codeOf(7), property);
  user.resolvedCodeProperty3(codeOf(7), property);
  user.codeRangeQuery("IF", 1, 2, codes);
  EXPECT_THAT(
      taken(),
      ElementsAre(
          "quote.getQuote 7 flags=3", "publisher.publishQuoteList 1 1",
          "publisher.publishQuoteSeries 7 0 60 2", "publisher.publishQuoteItems 7 0 3",
          "publisher.publishQuoteItems2 7 0 4", "publisher.publishOp5 k t 5",
          "publisher.publishOp6 k t 6", "publisher.publishOp7 k t 7", "publisher.publishOp8 k t 8",
          "code.codeServiceQuery IF 9", "code.currentCodeProperty 7 10", "code.resolveDominant 7",
          "code.currentCodeProperty 107 9223372036854775807", "code.resolveContinuous 7",
          "code.currentCodeProperty 307 9223372036854775807", "code.codeRangeQuery IF 1 2 0"));
  platform.calls.answer("publisher.publishOp5", {52, "x"});
  EXPECT_EQ(user.publishOp5("k", "t", 5), (ResultStatus{52, "x"}));
}

// Accounts.

TEST_F(UserContextTest, shouldAnswer23ForAttachAndDetachAccount) {
  const ResultStatus expected{23, gbkFromUtf8("不支持")};
  EXPECT_EQ(user.attachAccount("acc", 1), expected);
  EXPECT_EQ(user.detachAccount("acc", 1), expected);
  EXPECT_THAT(taken(), IsEmpty());
}

class FindTradingAccount : public UserContextTest {
 protected:
  FindTradingAccount() {
    AccountLinks other;
    other.id.text3 = "other";
    other.id.counterType = 2;
    other.tradingAccounts = {accountNamed(1)};
    AccountLinks wanted;
    wanted.id.text3 = "acc";
    wanted.id.counterType = 3;
    wanted.tradingAccounts = {accountNamed(5), accountNamed(6)};
    platform.trade().links = {other, wanted};
    out.accountKey = 99;
  }

  const ResultStatus missing{22, gbkFromUtf8("账号不存在")};
  TradingAccountID out;
};

TEST_F(FindTradingAccount, shouldCopyTheFirstTradingAccountOfTheMatchingRecord) {
  EXPECT_EQ(user.findTradingAccount("acc", 3, out), ResultStatus());
  EXPECT_EQ(out.accountKey, 5);
  EXPECT_THAT(taken(), ElementsAre("trade.accountRecords acc 3"));
}

TEST_F(FindTradingAccount, shouldMatchOnTheAccountTextAloneWithCounterType0) {
  EXPECT_EQ(user.findTradingAccount("acc", 0, out), ResultStatus());
  EXPECT_EQ(out.accountKey, 5);
  EXPECT_EQ(user.findTradingAccount("acc", -1, out), ResultStatus());
}

TEST_F(FindTradingAccount, shouldAnswer22AndLeaveTheOutRecordForAnUnknownAccount) {
  EXPECT_EQ(user.findTradingAccount("nobody", 0, out), missing);
  EXPECT_EQ(user.findTradingAccount("acc", 2, out), missing);
  EXPECT_EQ(out.accountKey, 99);
}

TEST_F(FindTradingAccount, shouldAnswer22ForARecordWithoutTradingAccounts) {
  platform.trade().links.back().tradingAccounts.clear();
  EXPECT_EQ(user.findTradingAccount("acc", 3, out), missing);
  EXPECT_EQ(out.accountKey, 99);
}

TEST_F(UserContextTest, shouldForwardTheNumberOfTradingAccounts) {
  platform.trade().accounts.resize(3);
  EXPECT_EQ(user.tradingAccountCount(), 3);
}

// Orders.

TEST_F(UserContextTest, shouldStampAnOrderWithTheNumericSourceAndTheOrderSource) {
  OrderRequest request;
  std::list<Order> orders;
  for (const int64 type : {int64{0}, int64{1}}) {
    request.source.sourceType = type;
    EXPECT_EQ(user.sendOrder(request, orders), ResultStatus());
    EXPECT_EQ(platform.trade().lastRequest.source.sourceType, 536870912) << type;
    EXPECT_EQ(platform.trade().lastRequest.source.createSource, "source");
  }
  EXPECT_EQ(request.source.sourceType, 1);  // The caller's own record stays as it was.
  EXPECT_EQ(request.source.createSource, "");
  request.source.sourceType = 2;
  request.source.createSource = "own";
  user.sendOrder(request, orders);
  EXPECT_EQ(platform.trade().lastRequest.source.sourceType, 2);
  EXPECT_EQ(platform.trade().lastRequest.source.createSource, "own");
}

TEST_F(UserContextTest, shouldReturnTheStatusAndTheOrdersOfSendOrder) {
  platform.trade().sentOrders = {orderOf(11, ""), orderOf(12, "")};
  std::list<Order> orders;
  EXPECT_EQ(user.sendOrder({}, orders), ResultStatus());
  EXPECT_EQ(idList(orders), (std::vector<int64>{11, 12}));
  platform.calls.answer("trade.sendOrder", {38, "no"});
  EXPECT_EQ(user.sendOrder({}, orders), (ResultStatus{38, "no"}));
}

TEST_F(UserContextTest, shouldAppendTheIdsOfTheNewOrdersInOrder) {
  platform.trade().sentOrders = {orderOf(12, ""), orderOf(11, "")};
  std::list<int64> ids = {1};
  EXPECT_EQ(user.sendOrderIds({}, ids), ResultStatus());
  EXPECT_EQ(ids, (std::list<int64>{1, 12, 11}));
  EXPECT_EQ(platform.trade().lastRequest.source.sourceType, 536870912);
}

TEST_F(UserContextTest, shouldBuildACancelFromIdAccountAndNumericSourceAlone) {
  Order order = orderOf(11, "theirs");
  order.account = accountNamed(5, "acc");
  order.code = codeOf(7);
  order.source.sourceType = 8;
  order.source.sourceText = "text";
  order.orderRef = "ref";
  platform.trade().orders = {order};
  EXPECT_EQ(user.cancelOrder(11, ""), ResultStatus());
  const Order& sent = platform.trade().lastOrder;
  EXPECT_EQ(sent.id, 11);
  EXPECT_EQ(sent.account.accountKey, 5);
  EXPECT_EQ(sent.account.account, "acc");
  EXPECT_EQ(sent.source.sourceType, 8);
  EXPECT_EQ(sent.source.createSource, "source");
  EXPECT_EQ(sent.source.sourceText, "");
  EXPECT_EQ(sent.code.id, 0);
  EXPECT_EQ(sent.orderRef, "");
  user.cancelOrder(11, "named");
  EXPECT_EQ(platform.trade().lastOrder.source.createSource, "named");
}

TEST_F(UserContextTest, shouldReturnTheStatusOfAMissingOrderAndCancelNothing) {
  EXPECT_EQ(user.cancelOrder(11, "").code, 22);
  EXPECT_EQ(platform.calls.count("trade.cancelOrder"), 0);
}

TEST_F(UserContextTest, shouldForwardGetOrderFillQueryAndOrderAction) {
  platform.trade().orders = {orderOf(11, "s")};
  platform.trade().fills = {fillOf(21, "s")};
  Order order;
  std::list<OrderFill> fills;
  EXPECT_EQ(user.getOrder(11, order), ResultStatus());
  EXPECT_EQ(order.id, 11);
  EXPECT_EQ(user.getOrder(12, order).code, 22);
  EXPECT_EQ(user.fillQueryForward(11, fills), ResultStatus());
  EXPECT_EQ(fills.size(), 1u);
  EXPECT_EQ(user.orderActionForward(order, 4), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("trade.getOrder 11", "trade.getOrder 12",
                                   "trade.fillQueryForward 11", "trade.orderActionForward 11 4"));
}

TEST_F(UserContextTest, shouldKeepAllRecordsForAnEmptySourceAndAppendThem) {
  platform.trade().orders = {orderOf(1, "a"), orderOf(2, "b")};
  platform.trade().fills = {fillOf(3, "a"), fillOf(4, "b")};
  std::list<Order> orders = {orderOf(9, "z")};
  EXPECT_EQ(user.ordersByCode(accountNamed(5), codeOf(7), orders, ""), ResultStatus());
  EXPECT_EQ(idList(orders), (std::vector<int64>{9, 1, 2}));
  EXPECT_EQ(user.openOrdersByCode(accountNamed(5), codeOf(7), orders, ""), ResultStatus());
  EXPECT_EQ(orders.size(), 5u);
  std::list<OrderFill> fills;
  EXPECT_EQ(user.fillsByCode(accountNamed(5), codeOf(7), fills, ""), ResultStatus());
  EXPECT_EQ(idList(fills), (std::vector<int64>{3, 4}));
  EXPECT_THAT(taken(), ElementsAre("trade.ordersByCode 5 7", "trade.openOrdersByCode 5 7",
                                   "trade.fillsByCode 5 7"));
}

TEST_F(UserContextTest, shouldKeepTheRecordsOfTheSourceAloneAndStillAnswerTheServicesStatus) {
  platform.trade().orders = {orderOf(1, "a"), orderOf(2, "b")};
  platform.trade().fills = {fillOf(3, "a"), fillOf(4, "b")};
  for (const char* operation :
       {"trade.ordersByCode", "trade.openOrdersByCode", "trade.fillsByCode"})
    platform.calls.answer(operation, {50, "busy"});
  const ResultStatus busy{50, "busy"};
  std::list<Order> orders;
  EXPECT_EQ(user.ordersByCode(accountNamed(5), codeOf(7), orders, "b"), busy);
  EXPECT_EQ(user.openOrdersByCode(accountNamed(5), codeOf(7), orders, "b"), busy);
  EXPECT_EQ(idList(orders), (std::vector<int64>{2, 2}));
  std::list<OrderFill> fills;
  EXPECT_EQ(user.fillsByCode(accountNamed(5), codeOf(7), fills, "b"), busy);
  EXPECT_EQ(idList(fills), (std::vector<int64>{4}));
  orders.clear();
  EXPECT_EQ(user.ordersByCode(accountNamed(5), codeOf(7), orders, "nobody"), busy);
  EXPECT_TRUE(orders.empty());
}

TEST_F(UserContextTest, shouldBuildAHistoryQueryAndMoveTheRecordsInOrder) {
  HistoryDayRecord first;
  first.entries.resize(2);
  first.entries.front().orders = {orderOf(1, "")};
  first.entries.front().fills = {fillOf(11, "")};
  first.entries.back().orders = {orderOf(2, ""), orderOf(3, "")};
  HistoryDayRecord second;
  second.entries.resize(1);
  second.entries.front().orders = {orderOf(4, "")};
  second.entries.front().fills = {fillOf(12, "")};
  platform.trade().history = {first, second};
  std::list<Order> orders = {orderOf(9, "")};
  EXPECT_EQ(user.historyOrders(accountNamed(5), codeOf(7), orders, "src", 100, 200),
            ResultStatus());
  EXPECT_EQ(idList(orders), (std::vector<int64>{9, 1, 2, 3, 4}));
  HistoryQuery query = platform.trade().lastQuery;
  EXPECT_EQ(query.accounts, (std::vector<TradingAccountID>{accountNamed(5)}));
  EXPECT_EQ(query.codes, (std::vector<ICodeID>{codeOf(7)}));
  EXPECT_EQ(query.sources, (std::list<std::string>{"src"}));
  EXPECT_EQ(query.begin, 100);
  EXPECT_EQ(query.end, 200);
  EXPECT_EQ(query.mask, 1089);
  std::list<OrderFill> fills;
  EXPECT_EQ(user.historyFills(accountNamed(5), codeOf(7), fills, "", 100, 200), ResultStatus());
  EXPECT_EQ(idList(fills), (std::vector<int64>{11, 12}));
  EXPECT_EQ(platform.trade().lastQuery.mask, 1153);
  EXPECT_TRUE(platform.trade().lastQuery.sources.empty());
}

// Positions.

TEST_F(UserContextTest, shouldAnswerCode0WithAccountAndCodeForACodeWithoutAPosition) {
  Position position;
  EXPECT_EQ(user.getPosition(accountNamed(5, "mine"), codeOf(7), position, ""), ResultStatus());
  EXPECT_EQ(position.account.accountKey, 5);
  EXPECT_EQ(position.account.account, "mine");
  EXPECT_EQ(position.code.id, 7);
  Position bySource;
  EXPECT_EQ(user.getPosition(accountNamed(5, "mine"), codeOf(7), bySource, "src"), ResultStatus());
  EXPECT_EQ(bySource.account.accountKey, 5);
  EXPECT_EQ(bySource.code.id, 7);
  EXPECT_THAT(taken(), ElementsAre("trade.getPosition 5 7", "trade.getSourcePosition 5 7 src"));
}

TEST_F(UserContextTest, shouldKeepAnotherFailureOfGetPositionAndStillFillAccountAndCode) {
  platform.calls.answer("trade.getPosition", {50, "busy"});
  Position position;
  EXPECT_EQ(user.getPosition(accountNamed(5), codeOf(7), position, ""), (ResultStatus{50, "busy"}));
  EXPECT_EQ(position.account.accountKey, 5);
  EXPECT_EQ(position.code.id, 7);
}

TEST_F(UserContextTest, shouldAnswerThePositionOfTheAccountOrOfTheSource) {
  Position whole;
  whole.account = accountNamed(5);
  whole.code = codeOf(7);
  whole.value1 = 10;
  SourcePosition part;
  part.account = accountNamed(5);
  part.code = codeOf(7);
  part.createSource = "src";
  part.value1 = 3;
  platform.trade().positions = {whole};
  platform.trade().sourcePositionRecords = {part};
  Position position;
  EXPECT_EQ(user.getPosition(accountNamed(5), codeOf(7), position, ""), ResultStatus());
  EXPECT_EQ(position.value1, 10);
  EXPECT_EQ(user.getPosition(accountNamed(5), codeOf(7), position, "src"), ResultStatus());
  EXPECT_EQ(position.value1, 3);
}

TEST_F(UserContextTest, shouldAskForPositionsWithMask32AndKeepTheStatus) {
  platform.trade().positions.resize(2);
  std::list<Position> positions;
  EXPECT_EQ(user.getPositions(accountNamed(5), positions), ResultStatus());
  EXPECT_EQ(positions.size(), 2u);
  platform.calls.answer("trade.getPositions", {50, "busy"});
  EXPECT_EQ(user.getPositions(accountNamed(5), positions), (ResultStatus{50, "busy"}));
  EXPECT_EQ(platform.calls.count("trade.getPositions 5 mask=32"), 2);
}

// Dictionary data.

TEST_F(UserContextTest, shouldAddItsFlagsAndWaitsToTheDataOperations) {
  std::list<Record> records;
  std::map<std::string, Record> byTarget;
  Record record;
  std::list<LatestOfName> latest;
  DataDefine define;
  user.publishRecords("n", "t", 3, {{1, 2, "x"}}, 4);
  user.readRecords("n", "t", 1, 2, records, 1);
  user.readTargets("n", {"t", "u"}, 5, byTarget, 77, 1);
  user.readRecord("n", "t", 5, record, 1);
  user.readLatestMany({{"t", "n"}}, latest, 6);
  user.requestRange("n", "t", 1, 2, 6);
  user.dataDefine("n", define);
  const std::vector<std::string> calls = taken();
  EXPECT_THAT(
      calls,
      ElementsAre("publisher.publishRecords n t 3 1 132 0",
                  "data.readRecords n/t wait=60000 flags=33", "data.readTargets n wait=77 flags=33",
                  "data.readTargets n wait=60000 flags=33", "data.readLatest n/t flags=6",
                  "publisher.requestRange n 0", "data.dataDefines n 1"));
  EXPECT_EQ(byTarget.size(), 2u);
  EXPECT_EQ(record.text, "n");
}

}  // namespace
}  // namespace orvane::support
