// The context's eight publications: what reaches the publisher, unchanged, and what it answers.

#include <limits>
#include <stdexcept>

#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

class UserContextPublishTest : public RunnerTest {
 protected:
  UserContextPublishTest() { platform.calls.clear(); }

  /// Scripts the publisher's answer to an operation; it is returned.
  ResultStatus answers(const std::string& operation, int code) {
    const ResultStatus status{code, operation};
    platform.calls.answer("publisher." + operation, status);
    return status;
  }

  std::vector<std::string> taken() {
    std::vector<std::string> entries = platform.calls.entries();
    platform.calls.clear();
    return entries;
  }

  static constexpr int kAnyFlags = std::numeric_limits<int>::min() | 5;
  const std::string flags = std::to_string(kAnyFlags);
  IContext& user = TestAccess::context(*runner);
};

TEST_F(UserContextPublishTest, shouldPublishQuotesInOrderWithTheFlagsAsGiven) {
  const ResultStatus status = answers("publishQuoteList", 52);
  EXPECT_EQ(user.publishQuoteList({quoteOf(7, 1), quoteOf(8, 2)}, kAnyFlags), status);
  EXPECT_THAT(taken(), ElementsAre("publisher.publishQuoteList 2 " + flags));
  const std::list<IDepthMarketData> quotes = platform.published.lastQuotes();
  ASSERT_EQ(quotes.size(), 2u);
  EXPECT_EQ(quotes.front().code.id, 7);
  EXPECT_EQ(quotes.back().block1[0], 2);
}

TEST_F(UserContextPublishTest, shouldPublishASeriesOfBarsWithItsPeriod) {
  const ResultStatus status = answers("publishQuoteSeries", 53);
  EXPECT_EQ(user.publishQuoteSeries(codeOf(7), {barOf(2), barOf(1)}, -60, kAnyFlags), status);
  EXPECT_THAT(taken(), ElementsAre("publisher.publishQuoteSeries 7 2 -60 " + flags));
  EXPECT_EQ(platform.published.lastBars(), (std::list<IKLine>{barOf(2), barOf(1)}));
}

TEST_F(UserContextPublishTest, shouldPublishTicksOfACode) {
  const ResultStatus status = answers("publishQuoteItems", 54);
  EXPECT_EQ(user.publishQuoteItems(codeOf(7), {quoteOf(9, 3)}, kAnyFlags), status);
  EXPECT_THAT(taken(), ElementsAre("publisher.publishQuoteItems 7 1 " + flags));
  EXPECT_EQ(platform.published.lastQuotes().front().block1[0], 3);
}

TEST_F(UserContextPublishTest, shouldPublishBarsOfACode) {
  const ResultStatus status = answers("publishQuoteItems2", 56);
  EXPECT_EQ(user.publishQuoteItems2(codeOf(7), {barOf(4)}, kAnyFlags), status);
  EXPECT_THAT(taken(), ElementsAre("publisher.publishQuoteItems2 7 1 " + flags));
  EXPECT_EQ(platform.published.lastBars(), (std::list<IKLine>{barOf(4)}));
}

TEST_F(UserContextPublishTest, shouldForwardTheOtherFourEachToItsOwnOperation) {
  using Operation = ResultStatus (IContext::*)(const std::string&, const std::string&, int);
  const std::pair<Operation, std::string> operations[] = {{&IContext::publishOp5, "publishOp5"},
                                                          {&IContext::publishOp6, "publishOp6"},
                                                          {&IContext::publishOp7, "publishOp7"},
                                                          {&IContext::publishOp8, "publishOp8"}};
  int code = 1;
  for (const auto& [operation, name] : operations) {
    const ResultStatus status = answers(name, ++code);
    EXPECT_EQ((user.*operation)("key", "text", kAnyFlags), status);
    EXPECT_THAT(taken(), ElementsAre("publisher." + name + " key text " + flags));
  }
}

TEST_F(UserContextPublishTest, shouldPublishEmptyListsLikeAnyOther) {
  EXPECT_EQ(user.publishQuoteList({}, 0), ResultStatus());
  EXPECT_EQ(user.publishQuoteSeries(codeOf(7), {}, 0, 0), ResultStatus());
  EXPECT_EQ(user.publishQuoteItems(codeOf(7), {}, 0), ResultStatus());
  EXPECT_EQ(user.publishQuoteItems2(codeOf(7), {}, 0), ResultStatus());
  EXPECT_EQ(taken().size(), 4u);
}

TEST_F(UserContextPublishTest, shouldPublishAlsoBeforeAndAfterARun) {
  EXPECT_EQ(user.publishOp5("before", "", 0), ResultStatus());
  startRun();
  runner->stop();
  pool.runAll();
  platform.calls.clear();
  EXPECT_EQ(user.publishOp5("after", "", 0), ResultStatus());
  EXPECT_THAT(taken(), ElementsAre("publisher.publishOp5 after  0"));
}

TEST_F(UserContextPublishTest, shouldCostTheEventOnlyWhenThePublisherThrows) {
  startRun();
  platform.calls.onCall("publisher.publishOp5", [] { throw std::runtime_error("hostile"); });
  script->on("onOrder", [](IContext* context) { context->publishOp5("", "", 0); });
  deliver(orderEvent(1));
  deliver(orderEvent(2));
  EXPECT_EQ(logs.count("Runner", "ERROR", "r1,do pool task error,exception,msg=hostile"), 2);
  EXPECT_EQ(script->count("onOrder"), 2);
}

}  // namespace
}  // namespace orvane::support
