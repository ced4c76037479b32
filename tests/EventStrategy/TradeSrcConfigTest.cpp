// The configuration of the trade source, its listener, its release and its ownership.

#include <memory_resource>

#include "tests/EventStrategy/TradeSrcFixture.h"

namespace orvane::support {
namespace {

class TradeSrcConfig : public TradeSrcTest {
 protected:
  TradeSrc& src() { return *source; }
};

TEST_F(TradeSrcConfig, shouldLogTheSizeAndEachEntryOfTheTradeInfosInKeyOrder) {
  source->setCreateSourceTradeInfo(
      {{"b", {EventTypeOrder, 0, {}}}, {"a", {EventTypeCapital | EventTypeFill, 6, {"y", "x"}}}});
  EXPECT_THAT(eventLines(),
              ElementsAre(",setCreateSourceTradeInfo,size=2",
                          ",createSource=a,override=FILL|CAPITAL,subCreateId=手工|程序化,"
                          "subCreateSource=x,y",
                          ",createSource=b,override=ORDER,subCreateId=,subCreateSource="));
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(TradeSrcConfig, shouldReplaceTheTradeInfosAndWidenTheMaskByEachOverride) {
  source->setCreateSourceTradeInfo(
      {{"a", {EventTypeOrder, 3, {"x"}}}, {"b", {EventTypeFill, 0, {}}}});
  EXPECT_EQ(TestAccess::eventMask(src()), EventTypeOrder | EventTypeFill);
  source->setCreateSourceTradeInfo({{"c", {EventTypePosition, 0, {}}}});
  EXPECT_EQ(TestAccess::eventMask(src()), EventTypePosition);
  const auto infos = TestAccess::createSourceInfos(src());
  ASSERT_EQ(infos.size(), 1u);
  EXPECT_EQ(infos.begin()->first, "c");
}

TEST_F(TradeSrcConfig, shouldReadTheWholeWidthOfAnOverride) {
  const int64 wide = (int64{1} << 40) | EventTypeOrder;
  source->setCreateSourceTradeInfo({{"a", {wide, 0, {}}}});
  EXPECT_EQ(TestAccess::eventMask(src()), wide);
}

TEST_F(TradeSrcConfig, shouldReplaceTheRelatedCodesAndDropASecondCodeWithTheSameId) {
  source->setRelatedCodeId({codeOf(3, "X"), codeOf(2, "Y"), codeOf(3, "Z")});
  EXPECT_THAT(eventLines(), ElementsAre(",setRelatedCodeId,X.,Y.,Z."));
  const std::set<ICodeID> codes = TestAccess::relatedCodes(src());
  ASSERT_EQ(codes.size(), 2u);
  EXPECT_EQ(codes.begin()->id, 2);
  EXPECT_EQ(codes.rbegin()->code, "X");
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(TradeSrcConfig, shouldTakeTwoCodesWithOneIdAndDifferentTextForOneCodeEverywhere) {
  source->subscribeTrade(account);
  platform.calls.clear();
  source->onRelatedCodeIdChange({codeOf(1, "another text")});
  EXPECT_THAT(tradeCalls(), IsEmpty());
  OrderRequest request;
  request.account = account;
  request.code = codeOf(1, "a third");
  request.source.createSource = "own";
  std::list<Order> sent;
  source->sendOrder(request, sent);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.sendOrder 5 1"));
  source->onRelatedCodeIdChange({});
  EXPECT_EQ(platform.calls.count("trade.unsubscribe"), 0);  // The order keeps the one code.
}

TEST_F(TradeSrcConfig, shouldTakeTwoAccountsWithOneKeyForOneAccount) {
  source->subscribeTrade(account);
  platform.calls.clear();
  TradingAccountID twin = accountOf(5, "twin");
  source->subscribeTrade(twin);
  EXPECT_THAT(tradeCalls(), IsEmpty());
  source->unsubscribeTrade(twin);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.unsubscribeAccount 5"));
  EXPECT_TRUE(TestAccess::subInfos(src()).empty());
}

TEST_F(TradeSrcConfig, shouldGiveQuickOffToLaterAccountsAndChangeNothingForOneSubscribedBefore) {
  source->subscribeTrade(account);
  source->setNotifyQuick(false);
  const TradingAccountID later = accountOf(6, "later");
  source->subscribeTrade(later);
  source->subscribeTrade(account);  // A second subscription leaves what stands alone.
  EXPECT_TRUE(marks().quick);
  EXPECT_FALSE(marks(later).quick);
  EXPECT_EQ(logs.count("Event", "DEBUG", "stg,setNotifyQuick,0"), 1);
  source->setNotifyQuick(true);
  EXPECT_EQ(logs.count("Event", "DEBUG", "stg,setNotifyQuick,1"), 1);
}

TEST_F(TradeSrcConfig, shouldRestoreQuickOnAResetButLeaveTheAccountsWithTheirMarks) {
  source->setNotifyQuick(false);
  source->addSubscribeTradeByCreateSource("own", "other");
  source->addSubscribeTradeByCreateId("own", 2);
  source->subscribeTrade(account);
  static_cast<TradeDataSpi&>(src()).onRtnOrder(orderOf(7, 3));
  static_cast<TradeDataSpi&>(src()).onRtnTrade(fillOf("f"));
  const TradeSrcSubInfo before = marks();
  platform.calls.clear();
  logs.clear();
  source->resetCache();
  EXPECT_TRUE(TestAccess::notifyQuick(src()));
  EXPECT_TRUE(TestAccess::createSourceInfos(src()).empty());
  EXPECT_EQ(TestAccess::eventMask(src()), 0);
  EXPECT_TRUE(TestAccess::relatedCodes(src()).empty());
  EXPECT_TRUE(TestAccess::finishedOrderIds(src()).empty());
  EXPECT_TRUE(TestAccess::deliveredFillKeys(src()).empty());
  EXPECT_FALSE(marks().quick);
  EXPECT_TRUE(marks().snapshotSent);
  EXPECT_EQ(marks().positionCodes, before.positionCodes);
  EXPECT_EQ(marks().sourceCodes, before.sourceCodes);
  EXPECT_EQ(marks().orderSources, std::set<std::string>{"other"});
  EXPECT_EQ(marks().fillEventSourceIds, 2);
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_THAT(logs.messages("Event"), IsEmpty());
}

TEST_F(TradeSrcConfig, shouldGiveBackTheMemoryOfWhatItSawOnAReset) {
  struct Counting final : std::pmr::memory_resource {
    void* do_allocate(std::size_t bytes, std::size_t alignment) override {
      held += bytes;
      return std::pmr::new_delete_resource()->allocate(bytes, alignment);
    }
    void do_deallocate(void* at, std::size_t bytes, std::size_t alignment) override {
      held -= bytes;
      std::pmr::new_delete_resource()->deallocate(at, bytes, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override {
      return this == &other;
    }
    std::size_t held = 0;
  } memory;
  std::pmr::memory_resource* const usual = std::pmr::set_default_resource(&memory);
  const auto own = std::make_shared<TradeSrc>();
  own->setNotify(&notify);
  for (int run = 0; run < 2; ++run) {
    for (int i = 0; i < 100; ++i) {
      static_cast<TradeDataSpi&>(*own).onRtnTrade(fillOf("f" + std::to_string(i)));
      static_cast<TradeDataSpi&>(*own).onRtnOrder(orderOf(i, 3));
    }
    EXPECT_GT(memory.held, 1'000u);
    const std::size_t once = memory.held;
    // What it has seen already costs nothing more.
    for (int i = 0; i < 100; ++i)
      static_cast<TradeDataSpi&>(*own).onRtnTrade(fillOf("f" + std::to_string(i)));
    EXPECT_EQ(memory.held, once);
    own->resetCache();
    EXPECT_EQ(memory.held, 0u);
  }
  std::pmr::set_default_resource(usual);
}

TEST_F(TradeSrcConfig, shouldStillSubscribeTheStatusButForwardNoneWhenTheTradeInfosAreEmpty) {
  source->setCreateSourceTradeInfo({});
  EXPECT_EQ(TestAccess::eventMask(src()), 0);
  source->subscribeTrade(account);
  EXPECT_THAT(tradeCalls(), ElementsAre("trade.subscribeStatus 5"));
  tellStatus(16);
  tellStatus(17);
  EXPECT_THAT(notify.take(), IsEmpty());
}

TEST_F(TradeSrcConfig, shouldSubscribeEightEventSourcesOneByOneForAMaskOf255AndIgnoreHigherBits) {
  source->setRelatedCodeId({});
  source->setCreateSourceTradeInfo({{"own", {EventTypeOrder, 255 | 256 | 4096, {}}}});
  source->subscribeTrade(account);
  const auto calls = platform.calls.entries("trade.subscribeOrderByEventSourceId");
  std::vector<std::string> expected;
  for (int id = 1; id <= 128; id *= 2)
    expected.push_back("trade.subscribeOrderByEventSourceId " + std::to_string(id) + " 5");
  EXPECT_EQ(calls, expected);
  EXPECT_EQ(marks().orderEventSourceIds, 255);
}

TEST_F(TradeSrcConfig, shouldFetchTheConditionServiceInsideEachSetNotifyWithTheMutexHeld) {
  int fetched = 0;
  platform.onConditionService = [&] {
    ++fetched;
    EXPECT_FALSE(TestAccess::mutexIsFree(src()));
  };
  source->setNotify(nullptr);
  source->setNotify(&notify);
  EXPECT_EQ(fetched, 2);
  source->subDetail({});
  source->unsubAllDetail();
  source->release();
  EXPECT_EQ(fetched, 2);  // Kept: nobody else fetches it.
  platform.onConditionService = {};
  EXPECT_THAT(
      platform.calls.entries("cond."),
      ElementsAre("cond.subscribeDetail 0", "cond.unsubscribeDetails", "cond.unsubscribeDetails"));
}

TEST_F(TradeSrcConfig, shouldMakeNoCallToAConditionServiceThatWasNeverFetched) {
  const auto fresh = std::make_shared<TradeSrc>();
  fresh->subDetail({});
  fresh->unsubAllDetail();
  fresh->release();
  EXPECT_EQ(platform.calls.count("cond."), 0);
}

TEST_F(TradeSrcConfig, shouldLogAConditionInItsTextFormAndTakeNoMutexForIt) {
  platform.calls.onCall("cond.subscribeDetail",
                        [&] { EXPECT_TRUE(TestAccess::mutexIsFree(src())); });
  platform.calls.onCall("cond.unsubscribeDetails",
                        [&] { EXPECT_TRUE(TestAccess::mutexIsFree(src())); });
  CondId condition;
  condition.first = 11;
  condition.second = 22;
  condition.third = 33;
  condition.text = QString::fromUtf8("条件");
  source->subDetail(condition);
  source->unsubAllDetail();
  EXPECT_THAT(eventLines(), ElementsAre(",subDetail,33|11|条件|22", ",unsubAllDetail"));
  EXPECT_THAT(platform.calls.entries("cond."),
              ElementsAre("cond.subscribeDetail 11", "cond.unsubscribeDetails"));
  platform.calls.onCall("cond.unsubscribeDetails", {});
}

TEST_F(TradeSrcConfig, shouldWithdrawFromTheTradeServiceAndThenFromTheConditionsOnRelease) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  platform.calls.onCall("trade.unsubscribeAll", [&] {
    EXPECT_FALSE(TestAccess::mutexIsFree(src()));
    EXPECT_EQ(logs.countContaining("release,unsubscribeTrade end"), 0);
  });
  source->release();
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("trade.unsubscribeAll", "cond.unsubscribeDetails"));
  EXPECT_THAT(eventLines(),
              ElementsAre(",release,unsubscribeTrade begin", ",release,unsubscribeTrade end"));
  EXPECT_TRUE(TestAccess::subInfos(src()).empty());
}

TEST_F(TradeSrcConfig, shouldReleaseWithoutATradeServiceWhenTheRouterYieldsNone) {
  source->subscribeTrade(account);
  platform.calls.clear();
  logs.clear();
  platform.routes.hasTrade = false;
  source->release();
  EXPECT_THAT(platform.calls.entries(), ElementsAre("cond.unsubscribeDetails"));
  EXPECT_EQ(eventLines().size(), 2u);
  EXPECT_TRUE(TestAccess::subInfos(src()).empty());
}

TEST_F(TradeSrcConfig, shouldKeepWhatItSawWhenAnAccountIsUnsubscribedOrTheSourceReleased) {
  source->subscribeTrade(account);
  static_cast<TradeDataSpi&>(src()).onRtnOrder(orderOf(7, 3));
  static_cast<TradeDataSpi&>(src()).onRtnTrade(fillOf("f"));
  source->unsubscribeTrade(account);
  EXPECT_EQ(TestAccess::finishedOrderIds(src()), std::set<int64>{7});
  source->release();
  EXPECT_EQ(TestAccess::finishedOrderIds(src()), std::set<int64>{7});
  EXPECT_EQ(TestAccess::deliveredFillKeys(src()).size(), 1u);
}

TEST_F(TradeSrcConfig, shouldNameAFillByAccountMarketReferenceDirectionAndItsOwnText) {
  OrderFill fill = fillOf("text");
  fill.code.market = 8;
  fill.orderRef = "ref";
  fill.direction() = 2;
  static_cast<TradeDataSpi&>(src()).onRtnTrade(fill);
  EXPECT_EQ(TestAccess::deliveredFillKeys(src()), std::set<std::string>{"5@8@ref@2@text"});
}

TEST_F(TradeSrcConfig, shouldFailWithBadWeakPtrWhereNoSharedPtrOwnsTheSource) {
  TradeSrc bare;
  bare.setNotify(&notify);
  EXPECT_THROW(bare.subscribeTrade(account), std::bad_weak_ptr);
  EXPECT_THROW(bare.unsubscribeTrade(account), std::bad_weak_ptr);
  EXPECT_THROW(bare.release(), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::mutexIsFree(bare));
  EXPECT_THAT(tradeCalls(), IsEmpty());
  bare.setNotify(nullptr);
}

}  // namespace
}  // namespace orvane::support
