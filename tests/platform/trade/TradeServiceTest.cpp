// Accounts, order entry and queries of the embedded platform's trade service.

#include "platform/trade/TradeService.h"

#include "shared/CodeTables.h"
#include "shared/GbkLiteral.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using Lines = std::vector<std::string>;
using order::Direction;

std::vector<int64> idsOf(const std::list<Order>& orders) {
  std::vector<int64> ids;
  for (const Order& order : orders) ids.push_back(order.id);
  return ids;
}

TEST(TradeService, shouldNumberTheAccountsOfTheOptionsAndCompleteThem) {
  PlatformOptions options;
  options.trade.accounts = {{"first", "CNY", "500", 1}, {"second", "", "", 2}};
  TradePlatform platform(options, 0);
  ASSERT_EQ(platform.service().tradingAccountCount(), 2);
  EXPECT_EQ(platform.account(0).accountKey, 1);
  EXPECT_EQ(platform.account(0).account, "first");
  EXPECT_EQ(platform.account(0).text1, "first");
  EXPECT_EQ(platform.account(0).currency, 0);
  EXPECT_EQ(platform.account(1).accountKey, 2);
  EXPECT_EQ(platform.account(1).counterType, 2);
  EXPECT_EQ(platform.account(1).currency, 11);
}

TEST(TradeService, shouldFindAccountRecordsByTextAndCounterType) {
  PlatformOptions options;
  options.trade.accounts = {{"first", "CNY", "", 1}, {"second", "CNY", "", 2}};
  TradePlatform platform(options, 0);
  const std::list<AccountLinks> found = platform.service().accountRecords("second", 2);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front().id.text3, "second");
  EXPECT_EQ(found.front().id.counterType, 2);
  ASSERT_EQ(found.front().tradingAccounts.size(), 1u);
  EXPECT_EQ(found.front().tradingAccounts.front().accountKey, 2);
  EXPECT_EQ(platform.service().accountRecords("second", 0).size(), 1u);
  EXPECT_TRUE(platform.service().accountRecords("second", 1).empty());
  EXPECT_TRUE(platform.service().accountRecords("third", 0).empty());
  EXPECT_EQ(platform.service().accountRecords("", 0).size(), 2u);
}

TEST(TradeService, shouldRefuseAccountsThatAreWrong) {
  const std::vector<std::vector<AccountSpec>> wrong = {{{"", "CNY", "", 1}},
                                                       {{"a", "CNY", "", 1}, {"a", "CNY", "", 1}},
                                                       {{"a", "XYZ", "", 1}},
                                                       {{"a", "CNY", "", 99}},
                                                       {{"a", "CNY", "much", 1}}};
  for (const std::vector<AccountSpec>& accounts : wrong) {
    PlatformOptions options;
    options.trade.accounts = accounts;
    EXPECT_THROW(EmbeddedPlatform platform(options), std::invalid_argument) << accounts.size();
  }
  PlatformOptions options = tradeOptions();
  options.trade.script = {{"nobody", 0, false}};
  EXPECT_THROW(EmbeddedPlatform platform(options), std::invalid_argument);
}

TEST(TradeService, shouldRefuseAnOrderOfAnUnknownAccount) {
  TradePlatform platform;
  OrderRequest request = makeRequest(platform.account(), platform.code, Direction::Buy);
  request.account.accountKey = 7;
  std::list<Order> orders;
  const ResultStatus status = platform.service().sendOrder(request, orders);
  EXPECT_EQ(status, (ResultStatus{22, "账号不存在"_gbk}));
  EXPECT_TRUE(orders.empty());
}

TEST(TradeService, shouldAnswerAnOrderAtOnceWithItsNumberAndEverythingThatTheRequestCarries) {
  TradePlatform platform;
  OrderRequest request = makeRequest(platform.account(), platform.code, Direction::Sell, 3);
  request.account = {};
  request.account.accountKey = 1;
  request.pair.second = "second";
  request.text3 = "three";
  request.text4 = "four";
  request.text5 = "five";
  request.text6 = "six";
  request.ints[7] = 77;
  request.values[10] = 1010;
  std::list<Order> orders;
  EXPECT_EQ(platform.service().sendOrder(request, orders).code, 0);
  ASSERT_EQ(orders.size(), 1u);
  const Order& order = orders.front();
  EXPECT_EQ(order.id, 1'000'000'001);
  EXPECT_EQ(order.pair.first, "1000000001");
  EXPECT_EQ(order.orderRef, "1000000001");
  EXPECT_EQ(order.pair.second, "second");
  EXPECT_EQ(order.text3, "three");
  EXPECT_EQ(order.text4, "four");
  EXPECT_EQ(order.text5, "");  // Why an order was refused stands there.
  EXPECT_EQ(order.text6, "six");
  EXPECT_EQ(order.code.code, platform.code.code);
  EXPECT_EQ(order.ints[7], 77);
  EXPECT_EQ(order.values[10], 1010);
  EXPECT_EQ(order.account.account, "A1");
  EXPECT_EQ(order.source.createSource, "S");
  const OrderView view(order);
  EXPECT_EQ(view.status(), order::Status::Sent);
  EXPECT_EQ(view.volume(), 3);
  EXPECT_EQ(view.insertTime(), kMonday + kMinute);
  EXPECT_EQ(view.updateTime(), kMonday + kMinute);
}

TEST(TradeService, shouldNumberOrdersBySourceAndKeepTheirReference) {
  PlatformOptions options = tradeOptions();
  options.trade.sources = {"S", "T"};
  TradePlatform platform(options);
  const auto sendAs = [&](const std::string& source) {
    return platform.send(makeRequest(platform.account(), platform.code, Direction::Buy, 1,
                                     order::Offset::Open, source));
  };
  EXPECT_EQ(sendAs("T"), 2'000'000'001);
  EXPECT_EQ(sendAs("S"), 1'000'000'001);
  EXPECT_EQ(sendAs("other"), 3'000'000'001);
  EXPECT_EQ(sendAs("T"), 2'000'000'002);
  OrderRequest request = makeRequest(platform.account(), platform.code, Direction::Buy);
  request.orderRef = "mine";
  std::list<Order> orders;
  platform.service().sendOrder(request, orders);
  EXPECT_EQ(orders.front().orderRef, "mine");
}

TEST(TradeService, shouldKnowAnOrderByItsIdButNotListItBeforeItIsAdmitted) {
  TradePlatform platform;
  const int64 id = platform.buy();
  Order order;
  EXPECT_EQ(platform.service().getOrder(id, order).code, 0);
  EXPECT_EQ(order.status(), 0);
  std::list<Order> orders;
  EXPECT_EQ(platform.service().ordersOfAccount(platform.account(), orders).code, 0);
  EXPECT_TRUE(orders.empty());
  std::list<OrderFill> fills;
  EXPECT_EQ(platform.service().fillQueryForward(id, fills).code, 0);
  platform->drain();
  platform.service().ordersOfAccount(platform.account(), orders);
  EXPECT_EQ(idsOf(orders), std::vector<int64>{id});
  EXPECT_EQ(orders.front().status(), 1);
}

TEST(TradeService, shouldFillAMarketOrderAtTheNextOpenAndShowItInEveryQuery) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:02") platform.buy(2);
  };
  platform.subscribeBars(spi);
  platform->run();
  ITradeService& service = platform.service();
  std::list<OrderFill> fills;
  ASSERT_EQ(service.fillsOfAccount(platform.account(), fills).code, 0);
  ASSERT_EQ(fills.size(), 1u);
  EXPECT_EQ(lineOf(fills.front()), "fill 1000000001 buy 2@3");
  fills.clear();
  service.fillsByCode(platform.account(), platform.code, fills);
  EXPECT_EQ(fills.size(), 1u);
  fills.clear();
  EXPECT_EQ(service.fillQueryForward(1'000'000'001, fills).code, 0);
  EXPECT_EQ(fills.size(), 1u);
  Order order;
  EXPECT_EQ(service.getOrder(1'000'000'001, order).code, 0);
  EXPECT_EQ(OrderView(order).status(), order::Status::Filled);
  EXPECT_EQ(OrderView(order).meanFillPrice(), 3);
  Position position;
  EXPECT_EQ(service.getPosition(platform.account(), platform.code, position).code, 0);
  EXPECT_EQ(PositionView(position).longSide().volume(), 2);
  EXPECT_EQ(PositionView(position).markPrice(), 10);
  SourcePosition part;
  EXPECT_EQ(service.getSourcePosition(platform.account(), "S", platform.code, part).code, 0);
  EXPECT_EQ(PositionView(part).longSide().volume(), 2);
  EXPECT_EQ(part.createSource, "S");
  std::list<Position> positions;
  EXPECT_EQ(service.getPositions(platform.account(), positions, 0x40020).code, 0);
  EXPECT_EQ(positions.size(), 1u);
  std::list<SourcePosition> parts;
  EXPECT_EQ(service.sourcePositions(platform.account(), parts).code, 0);
  EXPECT_EQ(parts.size(), 1u);
  TradingAccount capital;
  EXPECT_EQ(service.getCapital(platform.account(), capital).code, 0);
  EXPECT_EQ(CapitalView(capital).floatingProfit(), 14);
  EXPECT_EQ(CapitalView(capital).equity(), 1'000'014);
}

TEST(TradeService, shouldNotLookAtWhatTheExchangeMakesWhereARequestBringsIt) {
  TradePlatform platform;
  OrderRequest request = makeLimit(platform.account(), platform.code, Direction::Buy, 0.5, 2);
  request.value1 = 99;
  request.text5 = "why";
  OrderWriter writer(request);
  writer.setStatus(order::Status::Filled);
  request.ints[order::ReasonAt] = 5;
  for (const auto at : {order::UpdateTime, order::FilledVolume, order::ArrivalTime, order::Turnover,
                        order::Fee, order::FrozenMoney, order::TradingDay})
    writer.set(at, 123);
  platform.send(request);
  platform->run();
  std::list<Order> orders;
  platform.service().ordersOfAccount(platform.account(), orders);
  ASSERT_EQ(orders.size(), 1u);
  const OrderView view(orders.front());
  EXPECT_EQ(view.status(), order::Status::Working);
  EXPECT_EQ(view.reason(), 0);
  EXPECT_EQ(view.message(), "");
  EXPECT_EQ(view.filledVolume(), 0);
  EXPECT_EQ(view.turnover(), 0);
  EXPECT_EQ(view.fee(), 0);
  EXPECT_EQ(view.frozenMoney(), 0);
  EXPECT_EQ(view.meanFillPrice(), 0);
  EXPECT_EQ(view.insertTime(), kMonday + kMinute);
  EXPECT_EQ(view.arrivalTime(), kMonday + kMinute);
}

TEST(TradeService, shouldAnswerNotThereForWhatWasNeverTraded) {
  TradePlatform platform;
  ITradeService& service = platform.service();
  const ResultStatus notThere{22, statusMessage(22)};
  Position position;
  SourcePosition part;
  Order order;
  std::list<OrderFill> fills;
  EXPECT_EQ(service.getPosition(platform.account(), platform.code, position), notThere);
  EXPECT_EQ(service.getSourcePosition(platform.account(), "S", platform.code, part), notThere);
  EXPECT_EQ(service.getOrder(5, order), notThere);
  EXPECT_EQ(service.fillQueryForward(5, fills), notThere);
  std::list<Position> positions;
  EXPECT_EQ(service.getPositions(platform.account(), positions, 32).code, 0);
  EXPECT_TRUE(positions.empty());
}

TEST(TradeService, shouldRefuseQuestionsAboutAnUnknownAccount) {
  TradePlatform platform;
  TradingAccountID unknown;
  const ResultStatus refused{22, "账号不存在"_gbk};
  std::list<Order> orders;
  std::list<Position> positions;
  TradingAccount capital;
  EXPECT_EQ(platform.service().ordersOfAccount(unknown, orders), refused);
  EXPECT_EQ(platform.service().getPositions(unknown, positions, 32), refused);
  EXPECT_EQ(platform.service().getCapital(unknown, capital), refused);
}

TEST(TradeService, shouldFindOrdersByReferenceAndById) {
  TradePlatform platform;
  OrderRequest request = makeRequest(platform.account(), platform.code, Direction::Buy);
  request.orderRef = "mine";
  const int64 first = platform.send(request);
  const int64 second = platform.buy();
  platform->drain();
  std::list<Order> orders;
  platform.service().ordersByKey(platform.account(), "mine", orders);
  EXPECT_EQ(idsOf(orders), std::vector<int64>{first});
  orders.clear();
  platform.service().ordersByKey(platform.account(), std::to_string(second), orders);
  EXPECT_EQ(idsOf(orders), std::vector<int64>{second});
}

TEST(TradeService, shouldListOpenOrdersByCodeAndAccount) {
  TradePlatform platform;
  const ICodeID other = platform.installed().code("B");
  platform->addBars(TradePlatform::bars_(other, 10));
  const int64 onA =
      platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 0.5));
  const int64 onB = platform.send(makeLimit(platform.account(), other, Direction::Buy, 0.5));
  platform->run();
  std::list<Order> orders;
  platform.service().openOrdersByCode(platform.account(), other, orders);
  EXPECT_EQ(idsOf(orders), std::vector<int64>{onB});
  orders.clear();
  platform.service().openOrdersOfAccount(platform.account(), orders);
  EXPECT_EQ(idsOf(orders), (std::vector<int64>{onA, onB}));
  orders.clear();
  platform.service().ordersByCode(platform.account(), platform.code, orders);
  EXPECT_EQ(idsOf(orders), std::vector<int64>{onA});
}

TEST(TradeService, shouldCancelAnOrderThatRests) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  const int64 id = platform.send(makeLimit(platform.account(), platform.code, Direction::Buy, 0.5));
  EXPECT_EQ(platform.cancel(id).code, 0);
  platform->run();
  EXPECT_EQ(spi->linesOf({"order"}),
            (Lines{"@0:01 order 1000000001 working", "@0:01 order 1000000001 cancelled"}));
  EXPECT_EQ(spi->orders().back().cancelSource.createSource, "S");
}

TEST(TradeService, shouldRefuseToCancelWhatIsUnknownOrOver) {
  TradePlatform platform;
  EXPECT_EQ(platform.cancel(5).code, 22);
  const int64 id = platform.buy();
  EXPECT_EQ(platform.cancel(id).code, 0);
  platform->run();
  const ResultStatus status = platform.cancel(id);
  EXPECT_EQ(status.code, 22);
  EXPECT_NE(status.message.find("is over"), std::string::npos);
}

TEST(TradeService, shouldNotSupportActionsOnOrders) {
  TradePlatform platform;
  EXPECT_EQ(platform.service().orderActionForward({}, 1).code, 23);
}

TEST(TradeService, shouldAttachAndDetachTheAccountsThatItHasAndNoOthers) {
  TradePlatform platform;
  const auto connection = [](const std::string& text, int counterType) {
    AccountRecord record;
    record.id.text3 = text;
    record.id.counterType = counterType;
    return record;
  };
  const TradingAccountID& mine = platform.account();
  const AccountRecord known = connection(mine.account, mine.counterType);
  EXPECT_EQ(platform.service().attachAccount(known).code, 0);
  EXPECT_EQ(platform.service().detachAccount(known).code, 0);
  EXPECT_EQ(platform.service().attachAccount(connection(mine.account, 0)).code, 0);

  const AccountRecord otherCounter = connection(mine.account, mine.counterType + 1);
  const AccountRecord otherText = connection(mine.account + "x", mine.counterType);
  for (const AccountRecord& unknown : {otherCounter, otherText}) {
    EXPECT_EQ(platform.service().attachAccount(unknown).code, 22);
    EXPECT_EQ(platform.service().detachAccount(unknown).code, 22);
  }
}

TEST(TradeService, shouldTellRejectionsOfTheExchangeWithTheirText) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  platform.subscribeAll(spi);
  platform.send(
      makeRequest(platform.account(), platform.code, Direction::Sell, 1, order::Offset::Close));
  platform->run();
  ASSERT_EQ(spi->orders().size(), 1u);
  EXPECT_EQ(OrderView(spi->orders().front()).status(), order::Status::Rejected);
  EXPECT_FALSE(OrderView(spi->orders().front()).message().empty());
}

TEST(TradeService, shouldAnswerHistoryByTradingDay) {
  TradePlatform platform(tradeOptions(), 0);
  BarSeries series = TradePlatform::bars_(platform.code, 10);
  for (std::size_t i = 5; i < 10; ++i) KLineWriter(series.bars[i]).setDayAndFlags(20210105, 0);
  platform->addBars(std::move(series));
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line == "bar 0:01" || line == "bar 0:07") platform.buy();
  };
  platform.subscribeBars(spi);
  platform->run();
  HistoryQuery query;
  query.accounts = {platform.account()};
  query.begin = kMonday;
  query.end = kMonday + kDay;
  query.mask = 1041;
  std::list<HistoryDayRecord> days;
  ASSERT_EQ(platform.service().queryHistory(query, days).code, 0);
  ASSERT_EQ(days.size(), 1u);
  ASSERT_EQ(days.front().entries.size(), 2u);
  EXPECT_EQ(days.front().entries.front().date, 20210104);
  EXPECT_EQ(days.front().entries.back().date, 20210105);
  EXPECT_TRUE(days.front().entries.front().orders.empty());
  days.clear();
  query.mask = 1089;
  platform.service().queryHistory(query, days);
  EXPECT_EQ(idsOf(days.front().entries.front().orders), std::vector<int64>{1'000'000'001});
  EXPECT_EQ(idsOf(days.front().entries.back().orders), std::vector<int64>{1'000'000'002});
  EXPECT_TRUE(days.front().entries.front().fills.empty());
  days.clear();
  query.mask = 1153;
  platform.service().queryHistory(query, days);
  EXPECT_EQ(days.front().entries.front().fills.size(), 1u);
  EXPECT_TRUE(days.front().entries.front().orders.empty());
  days.clear();
  query.sources = {"nobody"};
  platform.service().queryHistory(query, days);
  EXPECT_TRUE(days.front().entries.empty());
}

TEST(TradeService, shouldShareTheHistoryOfAdjoiningSpansWithoutDoubles) {
  TradePlatform platform;
  const auto spi = std::make_shared<TradeRecorder>();
  spi->onLine = [&](const std::string& line) {
    if (line.rfind("bar", 0) == 0) platform.buy();
  };
  platform.subscribeBars(spi);
  platform->run();
  std::size_t found = 0;
  const int64 middle = kMonday + 5 * kMinute;
  for (const auto& [begin, end] : {std::pair{kMonday, middle}, std::pair{middle + 1, kUnsetTime}}) {
    HistoryQuery query;
    query.begin = begin;
    query.end = end;
    query.mask = 1089;
    std::list<HistoryDayRecord> days;
    platform.service().queryHistory(query, days);
    for (const HistoryDayEntry& entry : days.front().entries) found += entry.orders.size();
  }
  EXPECT_EQ(found, 10u);
}

TEST(TradeService, shouldMapTheNumbersOfSourcesToEventSources) {
  TradePlatform platform;
  EXPECT_EQ(platform->eventSourceOf({2, "", ""}), 2);
  EXPECT_EQ(platform->eventSourceOf({1, "", ""}), 1);
  EXPECT_EQ(platform->eventSourceOf({536870912, "", ""}), 4);
  EXPECT_EQ(platform->eventSourceOf({65536, "", ""}), 4);
  EXPECT_EQ(platform->eventSourceOf({0, "", ""}), 0);
}

}  // namespace
}  // namespace orvane::testing
