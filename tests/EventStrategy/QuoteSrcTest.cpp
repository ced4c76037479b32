#include "EventStrategy/QuoteSrc.h"

#include <memory>
#include <string>

#include "EventStrategy/TermSplit.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingQuoteNotify.h"

namespace orvane::support {
namespace {

constexpr const char* kAny = " begin=10 end=20 count=2147483647 flags=4";

class QuoteSrcTest : public LibraryTest {
 protected:
  QuoteSrcTest() {
    src->setNotify(&notify);
    platform.codes().codes["IF2101"] = codeOf(7, "IF2101");
    platform.calls.clear();
  }
  ~QuoteSrcTest() override { src->setNotify(nullptr); }

  std::vector<std::string> quoteCalls() const { return platform.calls.entries("quote."); }

  RecordingQuoteNotify notify;
  std::shared_ptr<QuoteSrc> src = std::make_shared<QuoteSrc>(0);
};

TEST_F(QuoteSrcTest, shouldCreateItsPublisherByTheModeBits) {
  const std::pair<int, const char*> cases[] = {{0, "0"}, {1, "0"}, {2, "2"}, {3, "2"},
                                               {4, "4"}, {5, "4"}, {6, "2"}, {8, "0"}};
  for (const auto& [mode, expected] : cases) {
    platform.calls.clear();
    const auto source = std::make_shared<QuoteSrc>(mode);
    EXPECT_THAT(platform.calls.entries(), ElementsAre(std::string("publisher.create ") + expected))
        << mode;
  }
}

TEST_F(QuoteSrcTest, shouldNotReleaseItsPublisherWhenItGoes) {
  src.reset();
  EXPECT_EQ(platform.calls.count("publisher.gone"), 0);
  src = std::make_shared<QuoteSrc>(0);
}

// Quotes.

TEST_F(QuoteSrcTest, shouldReachTheServiceOnceForManySubscribersOfOneCode) {
  EXPECT_EQ(src->subscribeQuote(codeOf(7), 3), ResultStatus());
  EXPECT_EQ(src->subscribeQuote(codeOf(7, "other text"), 5), ResultStatus());
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.subscribeQuote 7 flags=3"));
  EXPECT_EQ(TestAccess::refCounts(*src)[codeOf(7)], 2);
}

TEST_F(QuoteSrcTest, shouldLeaveTheQuoteRunningAfterTwoSubscribesAndOneUnsubscribe) {
  src->subscribeQuote(codeOf(7), 0);
  src->subscribeQuote(codeOf(7), 0);
  platform.calls.clear();
  EXPECT_EQ(src->unsubscribeQuote(codeOf(7), 9), ResultStatus());
  EXPECT_THAT(quoteCalls(), IsEmpty());
  EXPECT_TRUE(src->isSubscribeQuote(codeOf(7)));
  EXPECT_EQ(src->unsubscribeQuote(codeOf(7), 9), ResultStatus());
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.unsubscribeQuote 7 flags=9"));
  EXPECT_FALSE(src->isSubscribeQuote(codeOf(7)));
  EXPECT_TRUE(TestAccess::refCounts(*src).empty());
}

TEST_F(QuoteSrcTest, shouldAnswerSuccessAndReachNoServiceForAnUnsubscribeOfAnUnknownCode) {
  EXPECT_EQ(src->unsubscribeQuote(codeOf(7), 0), ResultStatus());
  EXPECT_THAT(quoteCalls(), IsEmpty());
}

TEST_F(QuoteSrcTest, shouldIgnoreWhatTheServiceAnswersToAnUnsubscribe) {
  platform.calls.answer("quote.unsubscribeQuote", {2, "no"});
  src->subscribeQuote(codeOf(7), 0);
  EXPECT_EQ(src->unsubscribeQuote(codeOf(7), 0), ResultStatus());
}

TEST_F(QuoteSrcTest, shouldPassARefusalOnUnchangedAndKeepTheCountAt1) {
  platform.calls.answer("quote.subscribeQuote", {1, "refused"});
  EXPECT_EQ(src->subscribeQuote(codeOf(7), 0), (ResultStatus{1, "refused"}));
  EXPECT_EQ(TestAccess::refCounts(*src)[codeOf(7)], 1);
  EXPECT_EQ(src->subscribeQuote(codeOf(7), 0), ResultStatus());
  EXPECT_EQ(platform.calls.count("quote.subscribeQuote"), 1);
}

TEST_F(QuoteSrcTest, shouldResolveATextAndGoOnWithTheCode) {
  EXPECT_EQ(src->subscribeQuote(std::string("IF2101"), 3), ResultStatus());
  EXPECT_EQ(src->unsubscribeQuote(std::string("IF2101"), 4), ResultStatus());
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("code.codeIdOf IF2101", "quote.subscribeQuote 7 flags=3",
                          "code.codeIdOf IF2101", "quote.unsubscribeQuote 7 flags=4"));
}

TEST_F(QuoteSrcTest, shouldGiveMinus2WithABlankBeforeTheTextWhenTheCodeServiceRefusesIt) {
  const ResultStatus expected{-2, gbkFromUtf8("无效合约 ") + "XX99"};
  const std::string text = "XX99";
  EXPECT_EQ(src->subscribeQuote(text, 0), expected);
  EXPECT_EQ(src->unsubscribeQuote(text, 0), expected);
  EXPECT_EQ(src->subscribeKline(text, "1m", 1, 0, 5, 0), expected);
  EXPECT_EQ(src->subscribeKline(text, "7x", 1, 0, 5, 0), expected);  // The code comes first.
  EXPECT_THAT(quoteCalls(), IsEmpty());
  EXPECT_TRUE(TestAccess::requests(*src).empty());
}

// Bars and ticks.

TEST_F(QuoteSrcTest, shouldStoreTheQueryAndAskForBarsOfThePeriod) {
  EXPECT_EQ(src->subscribeKline(codeOf(7), "1m", 10, 20, 99, 4, 5), ResultStatus());
  EXPECT_THAT(quoteCalls(),
              ElementsAre("quote.subscribeBars 5 code=7 term=(3,1) begin=10 end=20 count=99 "
                          "flags=4"));
  const auto requests = TestAccess::requests(*src);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests.at(5).code.id, 7);
  EXPECT_EQ(requests.at(5).beginTime, 10);
  EXPECT_EQ(requests.at(5).endTime, 20);
  EXPECT_EQ(requests.at(5).count, 99);
  EXPECT_EQ(requests.at(5).flags, 4);
  EXPECT_TRUE(src->isSubscribeKline(5));
  EXPECT_FALSE(src->isSubscribeKline(6));
}

TEST_F(QuoteSrcTest, shouldSendTheLargestCountForACountOf0OrLess) {
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5);
  src->subscribeKline(codeOf(7), "1m", 10, 20, -3, 4, 6);
  EXPECT_THAT(quoteCalls(),
              ElementsAre(std::string("quote.subscribeBars 5 code=7 term=(3,1)") + kAny,
                          std::string("quote.subscribeBars 6 code=7 term=(3,1)") + kAny));
}

TEST_F(QuoteSrcTest, shouldAddFlag256WhenTheFrequencyAsksForIt) {
  src->subscribeKline(codeOf(7), "90s", 10, 20, 0, 4, 5);
  EXPECT_EQ(platform.quotes().query(5).flags, 4 + 256);
  EXPECT_EQ(platform.quotes().term(5), (TermPair{2, 90}));
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 6);
  EXPECT_EQ(platform.quotes().query(6).flags, 4);
}

TEST_F(QuoteSrcTest, shouldPassTheStatusOfABadFrequencyOnAndStoreNothing) {
  const ResultStatus expected{17, gbkFromUtf8("无效KLine周期")};
  EXPECT_EQ(src->subscribeKline(codeOf(7), "7x", 10, 20, 0, 4, 5), expected);
  EXPECT_EQ(src->subscribeKline(std::string("IF2101"), "7x", 10, 0, 6, 0), expected);
  EXPECT_TRUE(TestAccess::requests(*src).empty());
  EXPECT_THAT(quoteCalls(), IsEmpty());
}

TEST_F(QuoteSrcTest, shouldKeepTheRequestWhenTheServiceRefusesIt) {
  platform.calls.answer("quote.subscribeBars", {7, "refused"});
  EXPECT_EQ(src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5), (ResultStatus{7, "refused"}));
  EXPECT_TRUE(src->isSubscribeKline(5));
}

TEST_F(QuoteSrcTest, shouldOverwriteAnEntryOfTheSameId) {
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5);
  src->subscribeKline(codeOf(8), "1m", 10, 20, 0, 4, 5);
  const auto requests = TestAccess::requests(*src);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests.at(5).code.id, 8);
}

TEST_F(QuoteSrcTest, shouldTurnARangeIntoAQueryAndAddTheExtraFlags) {
  OVDataRange range;
  range.code = codeOf(7);
  range.term = 120000;
  range.mode = 9;
  range.beginTime = 10;
  range.endTime = 20;
  range.flags = 2;
  EXPECT_EQ(src->subscribeKline(range, 5, 8), ResultStatus());
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("common.dataRangeToQuery 120000 mode=9 begin=10 end=20 flags=2",
                          "quote.subscribeBars 5 code=7 term=(3,2) begin=10 end=20 "
                          "count=2147483647 flags=10"));
  EXPECT_EQ(TestAccess::requests(*src).at(5).flags, 10);
}

TEST_F(QuoteSrcTest, shouldBuildARangeOfMode2FromATextAndPassOnlyFourFlagBits) {
  EXPECT_EQ(src->subscribeKline(std::string("IF2101"), "1m", 10, 0x7FFFFFFF & ~512, 5, 0),
            ResultStatus());
  EXPECT_THAT(platform.calls.entries("common."),
              ElementsAre("common.dataRangeToQuery 60000 mode=2 begin=10 end=0 flags=" +
                          std::to_string(1 | 2 | 1024)));
  EXPECT_TRUE(src->isSubscribeKline(5));
}

TEST_F(QuoteSrcTest, shouldLetFlag512WinOver1024InTheTextForm) {
  src->subscribeKline(std::string("IF2101"), "90s", 10, 512 | 1024 | 64, 5, 1048576);
  EXPECT_THAT(platform.calls.entries("common."),
              ElementsAre("common.dataRangeToQuery 90000 mode=2 begin=10 end=0 flags=" +
                          std::to_string(512 | 256)));
  EXPECT_EQ(platform.quotes().query(5).flags, 512 | 256 | 1048576);
}

TEST_F(QuoteSrcTest, shouldCancelARequestAtTheServiceOnceAndAnswerSuccess) {
  platform.calls.answer("quote.cancelRequest", {3, "no"});
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5);
  platform.calls.clear();
  EXPECT_EQ(src->unsubscribeKline(5), ResultStatus());
  EXPECT_EQ(src->unsubscribeKline(5), ResultStatus());
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.cancelRequest 5"));
  EXPECT_FALSE(src->isSubscribeKline(5));
}

TEST_F(QuoteSrcTest, shouldReachNoServiceForAnUnsubscribeOfAnUnknownId) {
  EXPECT_EQ(src->unsubscribeKline(5), ResultStatus());
  EXPECT_THAT(quoteCalls(), IsEmpty());
}

TEST_F(QuoteSrcTest, shouldDrawRequestIdsFromTheRouter) {
  EXPECT_EQ(src->generateRequestId(), 1);
  EXPECT_EQ(src->generateRequestId(), 2);
  EXPECT_EQ(platform.routes.lastRequestId(), 2);
}

// Release.

TEST_F(QuoteSrcTest, shouldCancelEachIdOnceInOrderAndThenUnsubscribeTheSpiOnceOnRelease) {
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 9);
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5);
  src->subscribeQuote(codeOf(7), 0);
  platform.calls.clear();
  src->release();
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.cancelRequest 5", "quote.cancelRequest 9",
                                        "quote.unsubscribeSpi"));
  EXPECT_TRUE(TestAccess::requests(*src).empty());
  EXPECT_TRUE(TestAccess::refCounts(*src).empty());
}

TEST_F(QuoteSrcTest, shouldUnsubscribeTheSpiOnceOnReleaseEvenIfThereAreNoRequests) {
  src->release();
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.unsubscribeSpi"));
}

TEST_F(QuoteSrcTest, shouldOnlyEmptyItsBooksOnReleaseWhereThereIsNoRealtimeService) {
  src->subscribeKline(codeOf(7), "1m", 10, 20, 0, 4, 5);
  platform.calls.clear();
  platform.routes.hasRealtime = false;
  src->release();
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
  EXPECT_FALSE(src->isSubscribeKline(5));
  platform.routes.hasRealtime = true;
}

TEST_F(QuoteSrcTest, shouldServeAgainAfterRelease) {
  src->release();
  platform.calls.clear();
  EXPECT_EQ(src->subscribeQuote(codeOf(7), 1), ResultStatus());
  EXPECT_THAT(quoteCalls(), ElementsAre("quote.subscribeQuote 7 flags=1"));
}

// Without an owner.

TEST_F(QuoteSrcTest, shouldThrowBadWeakPtrAfterTheBookKeepingWhenNotHeldByASharedPtr) {
  QuoteSrc unowned(0);
  EXPECT_THROW(unowned.subscribeQuote(codeOf(7), 0), std::bad_weak_ptr);
  EXPECT_EQ(TestAccess::refCounts(unowned)[codeOf(7)], 1);
  EXPECT_THROW(unowned.subscribeKline(codeOf(7), "1m", 1, 2, 0, 0, 5), std::bad_weak_ptr);
  EXPECT_TRUE(unowned.isSubscribeKline(5));
  EXPECT_THROW(unowned.unsubscribeQuote(codeOf(7), 0), std::bad_weak_ptr);
  EXPECT_TRUE(TestAccess::refCounts(unowned).empty());
}

// Periods.

TEST(TermToTimeType, shouldSplitIntoTheLongestUnitThatDividesThePeriod) {
  const std::pair<int64, TermPair> cases[] = {
      {120000, {3, 2}},     {86400000, {5, 1}},    {0, {8, 0}},           {90000, {2, 90}},
      {250, {5, 1}},        {500, {1, 1}},         {1500, {1, 3}},        {1000, {2, 1}},
      {3600000, {4, 1}},    {7200000, {4, 2}},     {604800000, {6, 1}},   {1209600000, {6, 2}},
      {2592000000, {7, 1}}, {31536000000, {8, 1}}, {63072000000, {8, 2}}, {172800000, {5, 2}},
      {5184000000, {7, 2}}, {1, {5, 1}},           {60001, {5, 1}},       {31536000000 + 1, {5, 1}},
      {7776000000, {7, 3}}};
  for (const auto& [term, pair] : cases) {
    EXPECT_EQ(termToTimeType(term).timeType, pair.timeType) << term;
    EXPECT_EQ(termToTimeType(term).count, pair.count) << term;
  }
}

}  // namespace
}  // namespace orvane::support
