// The order of the virtual operations is part of the contract with modules, hosts and services that
// are built apart from the library. Each list below names the operations after the destructor in
// their order: the first stands at place 2 of the table, behind the destructor's two.

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "EventStrategy/DataNotify.h"
#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/GeneralEventNotify.h"
#include "EventStrategy/IDataSrc.h"
#include "EventStrategy/IEvent.h"
#include "EventStrategy/IEventStrategy.h"
#include "EventStrategy/IGeneralEventSrc.h"
#include "EventStrategy/IIndexSrc.h"
#include "EventStrategy/IQuoteSrc.h"
#include "EventStrategy/ITradeSrc.h"
#include "EventStrategy/IndexNotify.h"
#include "EventStrategy/QuoteNotify.h"
#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "services/Common/CmnFactory.h"
#include "services/Common/IDataService.h"
#include "services/Common/IRealtimeQuoteService.h"
#include "services/Common/ITimerNotify.h"
#include "services/Common/ITradeService.h"
#include "services/QuoteClient/IDataMaintain.h"
#include "services/QuoteClient/IGeneralEventManager.h"
#include "services/QuoteClient/IIndexTrade.h"
#include "services/ov.publisher/IPublisher.h"
#include "tests/support/VtableSlot.h"

namespace orvane {
namespace {

using support::slotOf;

/// Picks one of several operations of one name by its arguments.
template <typename Result, typename Class, typename... Arguments>
auto pick(Result (Class::*operation)(Arguments...)) {
  return operation;
}

void expectOrder(const std::vector<int>& places) {
  for (std::size_t i = 0; i < places.size(); ++i)
    EXPECT_EQ(places[i], static_cast<int>(i) + 2)
        << "operation " << i + 1 << " after the destructor";
}

TEST(IContext, shouldHave78OperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IContext>);
  using C = IContext;
  const std::vector<int> places = {
      slotOf(&C::name),
      slotOf(&C::isSetStop),
      slotOf(&C::setError),
      slotOf(&C::setFinish),
      slotOf(&C::stop),
      slotOf(&C::notifySpi),
      slotOf(&C::setEnvs),
      slotOf(&C::setEnv),
      slotOf(&C::clearEnv),
      slotOf(&C::env),
      slotOf(&C::envs),
      slotOf(&C::setEnvItems),
      slotOf(&C::setEnvItem),
      slotOf(&C::clearEnvItems),
      slotOf(&C::envItems),
      slotOf(&C::generateRequestId),
      slotOf(&C::logTrace),
      slotOf(&C::logDebug),
      slotOf(&C::logInfo),
      slotOf(&C::logWarn),
      slotOf(&C::logError),
      slotOf(&C::subscribeQuote),
      slotOf(pick<ResultStatus, C, int, const ICodeID&, const std::string&, int64, int64, int, int>(
          &C::subscribeKline)),
      slotOf(pick<ResultStatus, C, const ICodeID&, const std::string&, int64, int64, int, int>(
          &C::subscribeKline)),
      slotOf(&C::setNotifyQuick),
      slotOf(pick<void, C, const TradingAccountID&, EventSourceId>(&C::subscribeTrade)),
      slotOf(pick<void, C, const TradingAccountID&, const ICodeID&>(&C::subscribeTrade)),
      slotOf(&C::subscribeDic),
      slotOf(&C::subscribeDicSnapshot),
      slotOf(&C::createTimer),
      slotOf(&C::unsubscribeQuote),
      slotOf(pick<void, C, int>(&C::unsubscribeKline)),
      slotOf(pick<void, C, const ICodeID&, const std::string&>(&C::unsubscribeKline)),
      slotOf(&C::unsubscribeDic),
      slotOf(&C::unsubscribeDicSnapshot),
      slotOf(&C::stopTimer),
      slotOf(&C::getQuote),
      slotOf(&C::publishQuoteList),
      slotOf(&C::publishQuoteSeries),
      slotOf(&C::publishQuoteItems),
      slotOf(&C::publishQuoteItems2),
      slotOf(&C::publishOp5),
      slotOf(&C::publishOp6),
      slotOf(&C::publishOp7),
      slotOf(&C::publishOp8),
      slotOf(&C::codeServiceQuery),
      slotOf(&C::currentCodeProperty),
      slotOf(&C::resolvedCodeProperty),
      slotOf(&C::resolvedCodeProperty3),
      slotOf(&C::codeRangeQuery),
      slotOf(&C::orderSource),
      slotOf(&C::attachAccount),
      slotOf(&C::detachAccount),
      slotOf(&C::findTradingAccount),
      slotOf(&C::tradingAccountCount),
      slotOf(&C::sendOrderIds),
      slotOf(&C::sendOrder),
      slotOf(&C::cancelOrder),
      slotOf(&C::getOrder),
      slotOf(&C::ordersByCode),
      slotOf(&C::openOrdersByCode),
      slotOf(&C::historyOrders),
      slotOf(&C::fillsByCode),
      slotOf(&C::fillQueryForward),
      slotOf(&C::historyFills),
      slotOf(&C::orderActionForward),
      slotOf(&C::getPosition),
      slotOf(&C::getPositions),
      slotOf(&C::publishRecords),
      slotOf(&C::readRecords),
      slotOf(&C::readTargets),
      slotOf(&C::readRecord),
      slotOf(&C::readLatest),
      slotOf(&C::readLatestMany),
      slotOf(&C::requestRange),
      slotOf(&C::dataDefine),
      slotOf(&C::exit)};
  EXPECT_EQ(places.size() + 1, 78u);
  expectOrder(places);
}

TEST(IStrategy, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IStrategy>);
  using S = IStrategy;
  const std::vector<int> places = {slotOf(&S::onStart),
                                   slotOf(&S::onUpdate),
                                   slotOf(&S::onQuote),
                                   slotOf(&S::onTickSeriesById),
                                   slotOf(&S::onBarSeriesById),
                                   slotOf(&S::onTickSeries),
                                   slotOf(&S::onBarSeries),
                                   slotOf(&S::onBarProgressById),
                                   slotOf(&S::onBarProgress),
                                   slotOf(&S::onAccountStatus),
                                   slotOf(&S::onCapital),
                                   slotOf(&S::onPosition),
                                   slotOf(&S::onStrategyPosition),
                                   slotOf(&S::onOrder),
                                   slotOf(&S::onFill),
                                   slotOf(&S::onDicSnapshot),
                                   slotOf(&S::onDic),
                                   slotOf(&S::onDicDeleted),
                                   slotOf(&S::onTimer),
                                   slotOf(&S::onStop)};
  EXPECT_EQ(places.size() + 1, 21u);
  expectOrder(places);
}

TEST(IRunner, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IRunner>);
  using R = IRunner;
  expectOrder({slotOf(&R::name), slotOf(&R::setStrategyPath), slotOf(&R::setSpi),
               slotOf(&R::setOrderSource), slotOf(&R::start), slotOf(&R::update), slotOf(&R::stop),
               slotOf(&R::reset4PlayBack), slotOf(&R::setEnvs), slotOf(&R::setEnvItems)});
}

TEST(IRunnerFactory, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IRunnerFactory>);
  expectOrder({slotOf(&IRunnerFactory::createRunner), slotOf(&IRunnerFactory::destroyRunner)});
}

TEST(IRunnerSpi, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IRunnerSpi>);
  using S = IRunnerSpi;
  expectOrder(
      {slotOf(&S::onStatus), slotOf(&S::onNotify), slotOf(&S::onEnvs), slotOf(&S::onEnvItems)});
}

TEST(IEvent, shouldHaveNoVirtualOperationButTheDestructor) {
  struct Probe : IEvent {
    Probe() : IEvent(0) {}
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<IEvent>);
  EXPECT_EQ(slotOf(&Probe::next), 2);
}

TEST(IEventStrategy, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IEventStrategy>);
  using E = IEventStrategy;
  using Text = const std::string&;
  const std::vector<int> places = {
      slotOf(&E::name),
      slotOf(&E::setName),
      slotOf(&E::startEvent),
      slotOf(&E::stopEvent),
      slotOf(&E::resetCache),
      slotOf(&E::generateId),
      slotOf(&E::quoteSrc),
      slotOf(&E::tradeSrc),
      slotOf(&E::dataSrc),
      slotOf(&E::generalEventSrc),
      slotOf(&E::indexSrc),
      slotOf(&E::createTimer),
      slotOf(&E::stopTimer),
      slotOf(&E::stopAllTimer),
      slotOf(&E::isTimerExist),
      slotOf(&E::setNotifyQuick),
      slotOf(&E::setCreateSourceTradeInfo),
      slotOf(&E::setRelatedCodeId),
      slotOf(&E::addSubscribeTradeByCreateSource),
      slotOf(&E::addSubscribeTradeByCreateId),
      slotOf(&E::onRelatedCodeIdChange),
      slotOf(pick<ResultStatus, E, const OVDataRange&, int, int>(&E::subscribeKline)),
      slotOf(pick<ResultStatus, E, const ICodeID&, Text, int64, int64, int, int, int>(
          &E::subscribeKline)),
      slotOf(pick<ResultStatus, E, Text, Text, int64, int, int, int>(&E::subscribeKline)),
      slotOf(pick<ResultStatus, E, const ICodeID&, int>(&E::subscribeQuote)),
      slotOf(pick<ResultStatus, E, Text, int>(&E::subscribeQuote)),
      slotOf(&E::subscribeTrade),
      slotOf(&E::subscribeDataSnapshot),
      slotOf(&E::unsubscribeDataSnapshot),
      slotOf(&E::subscribeData),
      slotOf(&E::subscribeGeneralEvent),
      slotOf(&E::subscribeElementChange),
      slotOf(&E::subDetail),
      slotOf(&E::unsubscribeKline),
      slotOf(pick<ResultStatus, E, const ICodeID&, int>(&E::unsubscribeQuote)),
      slotOf(pick<ResultStatus, E, Text, int>(&E::unsubscribeQuote)),
      slotOf(&E::unsubscribeTrade),
      slotOf(&E::unsubscribeData),
      slotOf(&E::unsubscribeGenaralEvent),
      slotOf(&E::unsubscribeAllGenaralEvent),
      slotOf(&E::unsubscribeElementChange),
      slotOf(&E::unsubscribeAllElementChange),
      slotOf(&E::unsubscribeCond),
      slotOf(&E::isSubscribeKline),
      slotOf(&E::isSubscribeQuote),
      slotOf(&E::isSubscribeDataSnapshot),
      slotOf(&E::isSubscribeData),
      slotOf(&E::pushEvent)};
  EXPECT_EQ(places.size() + 1, 49u);
  expectOrder(places);
}

TEST(EventTradeNotify, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<EventTradeNotify>);
  using N = EventTradeNotify;
  expectOrder({slotOf(&N::onRtnPosition), slotOf(&N::onRtnStrategyPosition), slotOf(&N::onRtnOrder),
               slotOf(&N::onRtnTrade), slotOf(&N::onRspStatus), slotOf(&N::onRtnCapital)});
}

TEST(ITimerNotify, shouldHaveItsOperationBehindTheDestructor) {
  static_assert(std::has_virtual_destructor_v<ITimerNotify>);
  expectOrder({slotOf(&ITimerNotify::onTimer)});
}

TEST(QuoteNotify, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<QuoteNotify>);
  using N = QuoteNotify;
  expectOrder({slotOf(&N::onQuote), slotOf(&N::onKLine), slotOf(&N::onKLineProgress),
               slotOf(&N::onTick), slotOf(&N::onRollover)});
}

TEST(DataNotify, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<DataNotify>);
  using N = DataNotify;
  expectOrder({slotOf(&N::onDataSnapshot), slotOf(&N::onProgress), slotOf(&N::onData),
               slotOf(&N::onDeleteData)});
}

TEST(GeneralEventNotify, shouldHaveItsOperationBehindTheDestructor) {
  static_assert(std::has_virtual_destructor_v<GeneralEventNotify>);
  expectOrder({slotOf(&GeneralEventNotify::onGeneralEvent)});
}

TEST(IndexNotify, shouldHaveItsOperationBehindTheDestructor) {
  static_assert(std::has_virtual_destructor_v<IndexNotify>);
  expectOrder({slotOf(&IndexNotify::onElementChange)});
}

TEST(IQuoteSrc, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IQuoteSrc>);
  using Q = IQuoteSrc;
  using Text = const std::string&;
  using Histories = std::vector<ITimeCodeProp>&;
  const std::vector<int> places = {
      slotOf(&Q::getQuote),
      slotOf(&Q::getQuotes),
      slotOf(&Q::codeNameOf),
      slotOf(&Q::codeIdOf),
      slotOf(&Q::codeQueryA),
      slotOf(&Q::codeQueryB),
      slotOf(&Q::codeQueryC),
      slotOf(&Q::codeRangeQuery),
      slotOf(&Q::codeQueryD),
      slotOf(&Q::codeQueryE),
      slotOf(&Q::codeServiceQuery),
      slotOf(&Q::currentCodeProperty),
      slotOf(pick<ResultStatus, Q, Text, ICodeProperty&, int64>(&Q::codeProperty)),
      slotOf(pick<ResultStatus, Q, const ICodeID&, ICodeProperty&, int64>(&Q::codeProperty)),
      slotOf(pick<ResultStatus, Q, Text, Histories, int>(&Q::historyCodeProperties)),
      slotOf(pick<ResultStatus, Q, const ICodeID&, Histories, int>(&Q::historyCodeProperties)),
      slotOf(&Q::codeQueryF),
      slotOf(&Q::resolvedCodeProperty),
      slotOf(&Q::resolvedCodeProperty2),
      slotOf(&Q::resolvedCodeProperty3),
      slotOf(&Q::resolvedCodeProperty4),
      slotOf(&Q::categories),
      slotOf(&Q::categoryQuery),
      slotOf(&Q::setUserCodeProperty),
      slotOf(&Q::fetchBarsSync),
      slotOf(&Q::maintainDataSync),
      slotOf(&Q::freqToTerm),
      slotOf(&Q::publishQuoteList),
      slotOf(&Q::publishQuoteSeries),
      slotOf(&Q::publishQuoteItems),
      slotOf(&Q::publishQuoteItems2),
      slotOf(&Q::publishOp5),
      slotOf(&Q::publishOp6),
      slotOf(&Q::publishOp7),
      slotOf(&Q::publishOp8),
      slotOf(&Q::generateRequestId)};
  expectOrder(places);
}

TEST(ITradeSrc, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<ITradeSrc>);
  using T = ITradeSrc;
  expectOrder({slotOf(&T::sendOrderIds),      slotOf(&T::sendOrder),
               slotOf(&T::cancelOrder),       slotOf(&T::orderActionForward),
               slotOf(&T::getPosition),       slotOf(&T::getPositions),
               slotOf(&T::getSourcePosition), slotOf(&T::getOrder),
               slotOf(&T::ordersByCode),      slotOf(&T::queryHistory),
               slotOf(&T::openOrdersByCode),  slotOf(&T::openOrdersOfAccount),
               slotOf(&T::ordersByKey),       slotOf(&T::ordersOfAccount),
               slotOf(&T::getFill),           slotOf(&T::fillQueryForward),
               slotOf(&T::fillsByCode),       slotOf(&T::tradingAccountCount),
               slotOf(&T::tradingAccountsOf), slotOf(&T::tradingAccounts),
               slotOf(&T::accountRecords)});
}

TEST(IDataSrc, shouldHaveItsOperationsInTheirFixedOrder) {
  static_assert(std::has_virtual_destructor_v<IDataSrc>);
  using D = IDataSrc;
  expectOrder(
      {slotOf(&D::publisherOp1),   slotOf(&D::publisherOp2),    slotOf(&D::publisherOp3),
       slotOf(&D::publisherOp4),   slotOf(&D::publisherOp5),    slotOf(&D::publisherOp6),
       slotOf(&D::publisherOp7),   slotOf(&D::publisherOp8),    slotOf(&D::publisherOp9),
       slotOf(&D::publisherOp10),  slotOf(&D::publisherOp11),   slotOf(&D::publisherOp12),
       slotOf(&D::publishRecords), slotOf(&D::readRecords),     slotOf(&D::readTargets),
       slotOf(&D::readRecord),     slotOf(&D::readLatest),      slotOf(&D::readLatestMany),
       slotOf(&D::requestRange),   slotOf(&D::requestRangeAll), slotOf(&D::dataDefine),
       slotOf(&D::dataBrief),      slotOf(&D::targetsOfName),   slotOf(&D::dataServiceQuery)});
}

TEST(IGeneralEventSrc, shouldHaveTwoOperationsWithTheDestructor) {
  struct Probe : IGeneralEventSrc {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<IGeneralEventSrc>);
  expectOrder({slotOf(&IGeneralEventSrc::publishEvent), slotOf(&Probe::next)});
}

TEST(IIndexSrc, shouldHaveTwoOperationsWithTheDestructor) {
  struct Probe : IIndexSrc {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<IIndexSrc>);
  expectOrder({slotOf(&IIndexSrc::indexElements), slotOf(&Probe::next)});
}

TEST(QuoteSpi, shouldHaveItsOperationsInTheirFixedOrder) {
  struct Probe : QuoteSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<QuoteSpi>);
  using S = QuoteSpi;
  expectOrder({slotOf(&S::onQuote), slotOf(&S::onTick), slotOf(&S::onKLine), slotOf(&S::onTimesale),
               slotOf(&S::onDeallist), slotOf(&S::onKLineProgress), slotOf(&S::onRollover),
               slotOf(&S::onDisconnected), slotOf(&Probe::next)});
}

TEST(DataSpi, shouldHaveItsOperationsInTheirFixedOrder) {
  struct Probe : DataSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<DataSpi>);
  using S = DataSpi;
  expectOrder({slotOf(&S::onSnapshot), slotOf(&S::onProgress), slotOf(&S::onData),
               slotOf(&S::onDelete), slotOf(&S::onDisconnected), slotOf(&Probe::next)});
}

TEST(TradeMsgSpi, shouldHaveTheStatusAndTwoEmptyOperations) {
  struct Probe : TradeMsgSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<TradeMsgSpi>);
  using S = TradeMsgSpi;
  expectOrder({slotOf(&S::onRspStatus), slotOf(&S::onMsgReserved2), slotOf(&S::onMsgReserved3),
               slotOf(&Probe::next)});
}

TEST(TradeDataSpi, shouldHave32OperationsWithTheDataAt1And3And5And7And9And14) {
  struct Probe : TradeDataSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<TradeDataSpi>);
  using S = TradeDataSpi;
  EXPECT_EQ(slotOf(&S::onRtnTrade), 1 + 1);
  EXPECT_EQ(slotOf(&S::onRtnOrder), 3 + 1);
  EXPECT_EQ(slotOf(&S::onRtnPosition), 5 + 1);
  EXPECT_EQ(slotOf(&S::onRtnPositionChange), 7 + 1);
  EXPECT_EQ(slotOf(&S::onRtnSourcePosition), 9 + 1);
  EXPECT_EQ(slotOf(&S::onRtnCapital), 14 + 1);
  EXPECT_EQ(slotOf(&S::onDataReserved32), 32 + 1);
  EXPECT_EQ(slotOf(&Probe::next), 33 + 1);
}

TEST(CondSpi, shouldHaveSixOperationsOfWhichTheThirdIsTheDetail) {
  struct Probe : CondSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<CondSpi>);
  EXPECT_EQ(slotOf(&CondSpi::onCondDetail), 3 + 1);
  EXPECT_EQ(slotOf(&Probe::next), 7 + 1);
}

TEST(IndexTradeSpi, shouldHaveTheElementChangeAsItsNinthAndLastOperation) {
  struct Probe : IndexTradeSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<IndexTradeSpi>);
  EXPECT_EQ(slotOf(&IndexTradeSpi::onElementChange), 8 + 1);
  EXPECT_EQ(slotOf(&Probe::next), 9 + 1);
}

TEST(IDataMaintainSpi, shouldHaveThreeEmptyOperationsThenTheOutcomeThenAnEmptyOne) {
  struct Probe : IDataMaintainSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<IDataMaintainSpi>);
  using S = IDataMaintainSpi;
  expectOrder({slotOf(&S::onMaintainReserved1), slotOf(&S::onMaintainReserved2),
               slotOf(&S::onMaintainReserved3), slotOf(&S::onMaintained),
               slotOf(&S::onMaintainReserved5), slotOf(&Probe::next)});
}

TEST(GeneralEventSpi, shouldHaveTwoOperationsWithTheDestructor) {
  struct Probe : GeneralEventSpi {
    virtual void next() {}
  };
  static_assert(std::has_virtual_destructor_v<GeneralEventSpi>);
  expectOrder({slotOf(&GeneralEventSpi::onGeneralEvent), slotOf(&Probe::next)});
}

TEST(IPublisher, shouldHaveTheTwelveThenRecordsThenTheQuoteOperationsFifteenthToTwentySecond) {
  static_assert(std::has_virtual_destructor_v<IPublisher>);
  using P = IPublisher;
  expectOrder({slotOf(&P::publisherOp1),      slotOf(&P::publisherOp2),
               slotOf(&P::publisherOp3),      slotOf(&P::publisherOp4),
               slotOf(&P::publisherOp5),      slotOf(&P::publisherOp6),
               slotOf(&P::publisherOp7),      slotOf(&P::publisherOp8),
               slotOf(&P::publisherOp9),      slotOf(&P::publisherOp10),
               slotOf(&P::publisherOp11),     slotOf(&P::publisherOp12),
               slotOf(&P::publishRecords),    slotOf(&P::requestRange),
               slotOf(&P::publishQuoteList),  slotOf(&P::publishQuoteSeries),
               slotOf(&P::publishQuoteItems), slotOf(&P::publishQuoteItems2),
               slotOf(&P::publishOp5),        slotOf(&P::publishOp6),
               slotOf(&P::publishOp7),        slotOf(&P::publishOp8)});
}

}  // namespace
}  // namespace orvane
