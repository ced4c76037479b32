#include <memory>

#include "EventStrategy/QuoteSrc.h"
#include "tests/EventStrategy/LibraryTest.h"

namespace orvane::support {
namespace {

class QuoteSrcQueries : public LibraryTest {
 protected:
  QuoteSrcQueries() {
    platform.codes().codes["IF2101"] = codeOf(7, "IF2101");
    platform.codes().property.time = 55;
    platform.calls.clear();
  }

  std::vector<std::string> taken() {
    std::vector<std::string> entries = platform.calls.entries();
    platform.calls.clear();
    return entries;
  }

  std::shared_ptr<IQuoteSrc> src = std::make_shared<QuoteSrc>(0);
};

TEST_F(QuoteSrcQueries, shouldForwardGetQuoteToTheRealtimeService) {
  IDepthMarketData quote;
  EXPECT_EQ(src->getQuote(codeOf(7), quote, 3), ResultStatus());
  EXPECT_EQ(quote.code.id, 7);
  platform.calls.answer("quote.getQuote", {4, "none"});
  EXPECT_EQ(src->getQuote(codeOf(8), quote, 3), (ResultStatus{4, "none"}));
  EXPECT_THAT(taken(), ElementsAre("quote.getQuote 7 flags=3", "quote.getQuote 8 flags=3"));
}

TEST_F(QuoteSrcQueries, shouldLeaveACodeThatFailsOutOfGetQuotesAndKeepTheOrder) {
  // The answer of a call is drawn before its hook runs, so each hook scripts the next call.
  platform.calls.onCall("quote.getQuote", [&] {
    const bool nextFails = platform.calls.entries().size() == 1;
    platform.calls.answer("quote.getQuote", nextFails ? ResultStatus{4, "none"} : ResultStatus());
  });
  const auto quotes = src->getQuotes({codeOf(9), codeOf(8), codeOf(7)}, 1);
  ASSERT_EQ(quotes.size(), 2u);
  EXPECT_EQ(quotes[0].code.id, 9);
  EXPECT_EQ(quotes[1].code.id, 7);
  EXPECT_EQ(taken().size(), 3u);
}

TEST_F(QuoteSrcQueries, shouldForwardTheCodeQueriesWithTheirArguments) {
  std::string name;
  ICodeID code;
  std::list<ICodeID> codes;
  int market = 0;
  std::list<ICodeProperty> properties;
  src->codeNameOf(codeOf(7), name);
  src->codeIdOf("IF2101", code);
  src->codeQueryA(1, codes);
  src->codeQueryB(1, 2, 3, codes);
  src->codeQueryC(1, 2, codes);
  src->codeRangeQuery("IF", 4, 5, codes);
  src->codeQueryD(6, name);
  src->codeQueryE("CFFEX", market);
  src->codeServiceQuery("IF2101", code, 8);
  src->codeQueryF(6, properties);
  EXPECT_THAT(taken(), ElementsAre("code.codeNameOf 7", "code.codeIdOf IF2101", "code.codeQueryA 1",
                                   "code.codeQueryB 1 2 3", "code.codeQueryC 1 2",
                                   "code.codeRangeQuery IF 4 5 0", "code.codeQueryD 6",
                                   "code.codeQueryE CFFEX", "code.codeServiceQuery IF2101 8",
                                   "code.codeQueryF 6 9223372036854775807"));
  EXPECT_EQ(market, 9);
}

TEST_F(QuoteSrcQueries, shouldPassAServicesStatusOnUnchanged) {
  std::list<ICodeID> codes;
  platform.calls.answer("code.codeQueryA", {30, "not yet"});
  EXPECT_EQ(src->codeQueryA(1, codes), (ResultStatus{30, "not yet"}));
  platform.calls.answer("code.codeRangeQuery", {31, "no net"});
  EXPECT_EQ(src->codeRangeQuery("", 0, 1, codes), (ResultStatus{31, "no net"}));
}

TEST_F(QuoteSrcQueries, shouldAskForThePropertyAtATimeByTheCodesIdAlone) {
  ICodeProperty property;
  EXPECT_EQ(src->codeProperty(codeOf(7), property, 1000), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("code.codePropertyAt 7 1000"));
  EXPECT_EQ(property.time, 55);
}

TEST_F(QuoteSrcQueries, shouldAskForTheCurrentPropertyAndZeroItsLastFieldForTheUnsetTime) {
  ICodeProperty property;
  EXPECT_EQ(src->codeProperty(codeOf(7), property, kUnsetTime), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("code.currentCodeProperty 7 9223372036854775807"));
  EXPECT_EQ(property.time, 0);
}

TEST_F(QuoteSrcQueries, shouldLeaveTheLastFieldAloneWhenTheCurrentPropertyFails) {
  platform.calls.answer("code.currentCodeProperty", {22, "x"});
  ICodeProperty property;
  EXPECT_EQ(src->codeProperty(codeOf(7), property, kUnsetTime), (ResultStatus{22, "x"}));
  EXPECT_EQ(property.time, 55);
}

TEST_F(QuoteSrcQueries, shouldForwardCurrentCodePropertyWithoutTouchingTheAnswer) {
  ICodeProperty property;
  src->currentCodeProperty(codeOf(7), property, 12);
  EXPECT_THAT(taken(), ElementsAre("code.currentCodeProperty 7 12"));
  EXPECT_EQ(property.time, 55);
}

TEST_F(QuoteSrcQueries, shouldResolveATextBeforeItAsksForPropertiesAndReturnAFailedLookup) {
  ICodeProperty property;
  std::vector<ITimeCodeProp> history;
  EXPECT_EQ(src->codeProperty(std::string("IF2101"), property, 1000), ResultStatus());
  EXPECT_EQ(src->historyCodeProperties(std::string("IF2101"), history, 4), ResultStatus());
  EXPECT_EQ(history.size(), 1u);
  EXPECT_THAT(taken(), ElementsAre("code.codeIdOf IF2101", "code.codePropertyAt 7 1000",
                                   "code.codeIdOf IF2101", "code.historyCodeProperties 7 4"));
  const ResultStatus missing{22, gbkFromUtf8("不存在")};
  EXPECT_EQ(src->codeProperty(std::string("XX"), property, 1000), missing);
  EXPECT_EQ(src->historyCodeProperties(std::string("XX"), history, 4), missing);
  EXPECT_THAT(taken(), ElementsAre("code.codeIdOf XX", "code.codeIdOf XX"));
}

TEST_F(QuoteSrcQueries, shouldForwardTheHistoryOfACode) {
  std::vector<ITimeCodeProp> history;
  EXPECT_EQ(src->historyCodeProperties(codeOf(7), history, 4), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("code.historyCodeProperties 7 4"));
}

TEST_F(QuoteSrcQueries, shouldResolveBeforeItAsksForThePropertyAtTheUnsetTime) {
  ICodeProperty property;
  EXPECT_EQ(src->resolvedCodeProperty(codeOf(7), property), ResultStatus());
  EXPECT_EQ(property.code.id, 107);
  EXPECT_EQ(src->resolvedCodeProperty2(codeOf(7), property), ResultStatus());
  EXPECT_EQ(property.code.id, 207);
  EXPECT_EQ(src->resolvedCodeProperty3(codeOf(7), property), ResultStatus());
  EXPECT_EQ(property.code.id, 307);
  EXPECT_EQ(src->resolvedCodeProperty4(codeOf(7), property), ResultStatus());
  EXPECT_EQ(property.code.id, 507);
  EXPECT_THAT(
      taken(),
      ElementsAre("code.resolveDominant 7", "code.currentCodeProperty 107 9223372036854775807",
                  "code.resolveUnderlying 7", "code.currentCodeProperty 207 9223372036854775807",
                  "code.resolveContinuous 7", "code.currentCodeProperty 307 9223372036854775807",
                  "code.resolveUnderlying 7", "code.resolveContinuous 207",
                  "code.currentCodeProperty 507 9223372036854775807"));
}

TEST_F(QuoteSrcQueries, shouldReturnAFailingResolversStatusAndAskNothingMore) {
  ICodeProperty property;
  platform.calls.answer("code.resolveUnderlying", {22, "u"});
  EXPECT_EQ(src->resolvedCodeProperty2(codeOf(7), property), (ResultStatus{22, "u"}));
  EXPECT_EQ(src->resolvedCodeProperty4(codeOf(7), property), (ResultStatus{22, "u"}));
  platform.calls.answer("code.resolveUnderlying", {});
  platform.calls.answer("code.resolveContinuous", {22, "c"});
  EXPECT_EQ(src->resolvedCodeProperty3(codeOf(7), property), (ResultStatus{22, "c"}));
  EXPECT_EQ(src->resolvedCodeProperty4(codeOf(7), property), (ResultStatus{22, "c"}));
  platform.calls.answer("code.resolveDominant", {22, "d"});
  EXPECT_EQ(src->resolvedCodeProperty(codeOf(7), property), (ResultStatus{22, "d"}));
  EXPECT_EQ(platform.calls.count("code.currentCodeProperty"), 0);
}

TEST_F(QuoteSrcQueries, shouldAppendTheCategoriesOfKind1ThenOfKind7AndSkipAMarketThatFails) {
  platform.codes().marketsOfKind[1] = {4, 5};
  platform.codes().marketsOfKind[7] = {6};
  platform.codes().categoriesOfMarket[{4, 1}] = {{41, "", ""}, {42, "", ""}};
  platform.codes().categoriesOfMarket[{6, 7}] = {{67, "", ""}};
  std::vector<ICategoryID> categories = {{1, "", ""}};
  EXPECT_EQ(src->categories(categories), ResultStatus());
  ASSERT_EQ(categories.size(), 4u);
  EXPECT_EQ(categories[0].first, 1);
  EXPECT_EQ(categories[1].first, 41);
  EXPECT_EQ(categories[2].first, 42);
  EXPECT_EQ(categories[3].first, 67);
  EXPECT_THAT(
      platform.calls.entries("code.categoriesOf"),
      ElementsAre("code.categoriesOf 4 1", "code.categoriesOf 5 1", "code.categoriesOf 6 7"));
}

TEST_F(QuoteSrcQueries, shouldAnswerSuccessForCategoriesEvenIfTheMarketListsFail) {
  platform.calls.answer("code.markets", {30, "x"});
  std::vector<ICategoryID> categories;
  EXPECT_EQ(src->categories(categories), ResultStatus());
  EXPECT_TRUE(categories.empty());
}

TEST_F(QuoteSrcQueries, shouldForwardACategoryQueryWithTheCategoryOfTheText) {
  platform.codes().categories["futures"] = {77, "a", "b"};
  std::list<ICodeID> codes;
  EXPECT_EQ(src->categoryQuery("futures", 3, codes), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("code.getCategoryID futures", "code.categoryQuery 77 3"));
}

TEST_F(QuoteSrcQueries, shouldGiveMinus1UnknownErrorForACategoryTextThatDoesNotResolve) {
  std::list<ICodeID> codes;
  EXPECT_EQ(src->categoryQuery("nothing", 3, codes), (ResultStatus{-1, gbkFromUtf8("未知错误")}));
  EXPECT_EQ(platform.calls.count("code.categoryQuery"), 0);
}

TEST_F(QuoteSrcQueries, shouldCorrectACopyStoreItAndTellTheSystemOfTheChange) {
  ICodeProperty property;
  property.name = "mine";
  EXPECT_EQ(src->setUserCodeProperty(property), ResultStatus());
  EXPECT_EQ(property.name, "mine");
  EXPECT_THAT(taken(), ElementsAre("code.correctUserProp mine",
                                   "code.setUserCodeProperties 1 mine corrected",
                                   "system.codePropertyChanged mine corrected 1"));
}

TEST_F(QuoteSrcQueries, shouldStopAtTheFirstFailureOfSetUserCodeProperty) {
  platform.calls.answer("code.setUserCodeProperties", {42, "no"});
  EXPECT_EQ(src->setUserCodeProperty({}), (ResultStatus{42, "no"}));
  EXPECT_EQ(platform.calls.count("system."), 0);
  platform.calls.answer("code.correctUserProp", {19, "bad"});
  platform.calls.clear();
  EXPECT_EQ(src->setUserCodeProperty({}), (ResultStatus{19, "bad"}));
  EXPECT_EQ(platform.calls.count("code.setUserCodeProperties"), 0);
}

TEST_F(QuoteSrcQueries, shouldForwardFreqToTerm) {
  int64 term = 0;
  bool extra = false;
  EXPECT_EQ(src->freqToTerm("90s", term, extra), ResultStatus());
  EXPECT_EQ(term, 90000);
  EXPECT_TRUE(extra);
  EXPECT_EQ(src->freqToTerm("x", term, extra).code, 17);
}

TEST_F(QuoteSrcQueries, shouldForwardTheEightPublisherOperationsInOrder) {
  src->publishQuoteList({quoteOf(1), quoteOf(2)}, 1);
  src->publishQuoteSeries(codeOf(7), {barOf(1)}, 60, 2);
  src->publishQuoteItems(codeOf(7), {quoteOf(1)}, 3);
  src->publishQuoteItems2(codeOf(7), {barOf(1)}, 4);
  src->publishOp5("k", "t", 5);
  src->publishOp6("k", "t", 6);
  src->publishOp7("k", "t", 7);
  platform.calls.answer("publisher.publishOp8", {52, "slow down"});
  EXPECT_EQ(src->publishOp8("k", "t", 8), (ResultStatus{52, "slow down"}));
  EXPECT_THAT(taken(),
              ElementsAre("publisher.publishQuoteList 2 1", "publisher.publishQuoteSeries 7 1 60 2",
                          "publisher.publishQuoteItems 7 1 3", "publisher.publishQuoteItems2 7 1 4",
                          "publisher.publishOp5 k t 5", "publisher.publishOp6 k t 6",
                          "publisher.publishOp7 k t 7", "publisher.publishOp8 k t 8"));
}

}  // namespace
}  // namespace orvane::support
