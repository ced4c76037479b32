#include "platform/events/Publications.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>

#include "tests/platform/events/EventFixture.h"
#include "tests/platform/events/PublicationFixture.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Keeps every quote and tick that it gets.
struct TickReader final : QuoteSpi {
  void onQuote(const IDepthMarketData& quote) override { got.push_back(quote); }
  void onTick(int, const std::vector<IDepthMarketData>& ticks, const ResultStatus&, int) override {
    got.insert(got.end(), ticks.begin(), ticks.end());
  }
  std::vector<IDepthMarketData> got;
};

TEST(Publications, shouldBeSeenByOtherRunnersAsBarsLikeAnyOther) {
  PublishingPlayback on;
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(minute, minute * 10)}, kLive).code, 0);
  });
  const auto reader = on.readBars(on.p);
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16", "@0:01 bar#1 0:00-0:01",
                                           "@0:02 bar#1 0:01-0:02", "@0:03 bar#1 0:02-0:03",
                                           "@0:04 bar#1 0:03-0:04", "@0:05 bar#1 0:04-0:05"));
  EXPECT_EQ(reader->bars()[2], barOf(3, 30));  // Bit for bit.
  // Who comes later finds them in the history.
  auto late = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p, kUnsetTime, kUnsetTime, 2), kOneMinute, late,
                                     2);
  on.platform->drain();
  EXPECT_THAT(late->lines(), ElementsAre("@0:05 bar#2 0:03-0:04 0:04-0:05 flags=16"));
}

TEST(Publications, shouldBeSeenAsQuotesAndTicksWithEveryFieldAsItWasPublished) {
  PublishingPlayback on(2);
  on.platform->addPublished(on.p, "tick");
  IDepthMarketData given = makeTick(on.p, kMonday + kMinute, 12.5, 3);
  QuoteWriter(given).setBid(9, 12.25, 7);
  given.block3[7] = std::bit_cast<Word>(2.5);
  given.block2[5] = 77;
  given.extras[4] = "text";
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) {
      EXPECT_EQ(publisher->publishQuoteList({given}, kLive).code, 0);
    }
  });
  auto quotes = std::make_shared<TickReader>(), ticks = std::make_shared<TickReader>();
  EXPECT_EQ(on.platform.quotes().subscribeQuote(on.p, quotes, 0).code, 0);
  EXPECT_EQ(on.platform.quotes().subscribeBars(makeQuery(on.p), kTick, ticks, 1).code, 0);
  IDepthMarketData last;
  EXPECT_EQ(on.platform.quotes().getQuote(on.p, last, 0).code, 4);
  on.platform->run();
  EXPECT_EQ(on.platform.quotes().getQuote(on.p, last, 0).code, 0);
  ASSERT_EQ(quotes->got.size(), 1u);
  ASSERT_EQ(ticks->got.size(), 1u);
  for (const IDepthMarketData& got : {quotes->got[0], ticks->got[0], last}) {
    EXPECT_EQ(got.block1, given.block1);
    EXPECT_EQ(got.block2, given.block2);
    EXPECT_EQ(got.block3, given.block3);
    EXPECT_EQ(got.levels, given.levels);
    EXPECT_EQ(got.extras, given.extras);
  }
}

TEST(Publications, shouldGiveLongerBarsThatAreMadeOfThePublishedOnes) {
  PublishingPlayback on(7);
  on.platform->addPublished(on.p, "1m");
  on.platform->addPublished(on.q, "tick");
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive);
    publisher->publishQuoteList({makeTick(on.q, kMonday + minute * kMinute, minute, 2)}, kLive);
  });
  const auto reader = on.readBars(on.p, kFiveMinutes);
  on.platform.quotes().subscribeBars(makeQuery(on.q), kFiveMinutes, reader, 2);
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16", "@0:01 bar#2 flags=16",
                                           "@0:05 bar#1 0:00-0:05", "@0:05 bar#2 0:00-0:05"));
  ASSERT_EQ(reader->bars().size(), 2u);
  EXPECT_EQ(KLineView(reader->bars()[0]).close(), 5);
  EXPECT_EQ(KLineView(reader->bars()[1]).volume(), 8);
}

TEST(Publications, shouldTellHistoryToNobodyButLaterRequests) {
  PublishingPlayback on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  const auto reader = on.readBars(on.p);
  on.platform->drain();
  EXPECT_EQ(publisher->publishQuoteSeries(on.p, {barOf(-1, 1), barOf(0, 2)}, kMinute, 0).code, 0);
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  const auto late = on.readBars(on.p, kOneMinute, 2);
  on.platform->drain();
  EXPECT_EQ(late->bars().size(), 2u);
}

TEST(Publications, shouldMakeASeriesKnownOnceItIsAnnounced) {
  PublishingPlayback on(3);
  auto publisher = makeRunPublisher();
  auto reader = std::make_shared<RecordingSpi>();
  std::vector<int> answers;
  auto runner = on.eachMinute([&](int minute) {
    answers.push_back(
        on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1).code);
    if (minute == 1) {
      EXPECT_EQ(publisher->publishOp6("P.X", "1m", 0).code, 0);
      // Not before everybody sees it at one moment.
      EXPECT_EQ(on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1).code,
                17);
    }
  });
  on.platform->run();
  EXPECT_THAT(answers, ElementsAre(17, 0, 0));
}

TEST(Publications, shouldComeInOneOrderWhicheverThreadIsFaster) {
  const auto played = [](int faster) {
    PlatformOptions options;
    options.poolThreads = 3;
    PublishingPlayback on(1, options);
    on.platform->addPublished(on.p, "tick");
    std::unique_ptr<IPublisher> publishers[] = {makeRunPublisher(), makeRunPublisher()};
    std::latch first(1);
    std::vector<std::shared_ptr<RunnerSpi>> runners;
    for (int number : {0, 1})
      runners.push_back(on.eachMinute([&, number](int) {
        if (number != faster) first.wait();
        for (int i = 0; i < 3; ++i)
          publishers[number]->publishQuoteItems(
              on.p, {makeTick({}, kMonday + kMinute, number * 10 + i)}, kLive);
        if (number == faster) first.count_down();
      }));
    auto reader = std::make_shared<TickReader>();
    on.platform.quotes().subscribeQuote(on.p, reader, 0);
    on.platform->run();
    std::vector<double> prices;
    for (const IDepthMarketData& got : reader->got) prices.push_back(QuoteView(got).lastPrice());
    return prices;
  };
  EXPECT_THAT(played(0), ElementsAre(0, 1, 2, 10, 11, 12));
  EXPECT_THAT(played(1), ElementsAre(0, 1, 2, 10, 11, 12));
}

TEST(Publications, shouldDropTheRowsOfThePublisherThatComesSecondInTime) {
  PublishingPlayback on(1);
  on.platform->addPublished(on.p, "1m");
  auto first = makeRunPublisher(), second = makeRunPublisher();
  auto runner = on.eachMinute([&](int) {
    EXPECT_EQ(second->publishQuoteItems2(on.p, {barOf(1, 2)}, kLive).code, 0);
    EXPECT_EQ(first->publishQuoteItems2(on.p, {barOf(1, 1)}, kLive).code, 0);
  });
  const auto reader = on.readBars(on.p);
  on.platform->run();
  ASSERT_EQ(reader->bars().size(), 1u);
  EXPECT_EQ(KLineView(reader->bars()[0]).close(), 1);
}

TEST(Publications, shouldRefuseAtOnceWhatComesBeforeTheSamePublishersRowsThatAreNotToldYet) {
  PublishingPlayback on(7);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 7) {
      EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(3, 3), barOf(7, 7)}, kLive).code, 0);
    }
  });
  std::vector<int> answers;
  auto reader = std::make_shared<RunnerSpi>([&](const std::string& event) {
    if (event.find(" 0:0") == std::string::npos) return;
    answers.push_back(publisher->publishQuoteItems2(on.p, {barOf(5, 5)}, kLive).code);
  });
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1);
  on.platform->run();
  EXPECT_THAT(answers, ElementsAre(-2, -2));
}

/// The first account buys one of a code, at any price.
void buy(PublishingPlayback& on, const ICodeID& code) {
  const TradingAccountID account = *tradeOf(on.platform).tradingAccounts().begin();
  std::list<Order> orders;
  const auto request = makeRequest(account, code, order::Direction::Buy);
  EXPECT_EQ(tradeOf(on.platform).sendOrder(request, orders).code, 0);
}

/// How much of P the first account holds.
double heldOf(PublishingPlayback& on) {
  const TradingAccountID account = *tradeOf(on.platform).tradingAccounts().begin();
  Position held;
  tradeOf(on.platform).getPosition(account, on.p, held);
  return PositionView(held).longSide().volume();
}

TEST(Publications, shouldFillOrdersThatStoodBeforeAndNoneThatAnswerTheRecord) {
  PlatformOptions options = tradeOptions();
  PublishingPlayback on(4, options);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makeRunPublisher();
  std::vector<double> held;
  auto runner = on.eachMinute([&](int minute) {
    held.push_back(heldOf(on));
    publisher->publishQuoteItems(on.p, {makeTick({}, kMonday + minute * kMinute, 100, 5)}, kLive);
    if (minute == 2) buy(on, on.p);
  });
  on.platform->run();
  // Sent at 0:02 beside a price of that time, filled by the price of 0:03.
  EXPECT_THAT(held, ElementsAre(0, 0, 0, 1));
}

TEST(Publications, shouldFillAnOrderThatWaitedBeforeAnybodyPublishedItsCode) {
  PublishingPlayback on(3, tradeOptions());
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1)
      buy(on, on.p);
    else
      publisher->publishQuoteItems(on.p, {makeTick({}, kMonday + minute * kMinute, 100, 5)}, kLive);
  });
  on.platform->run();
  EXPECT_EQ(heldOf(on), 1);
}

TEST(Publications, shouldFillAnOrderThatWaitedWhenAnotherCodeIsTradedAfterTheAnnouncement) {
  PublishingPlayback on(4, tradeOptions());
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) buy(on, on.p);
    if (minute == 2) {
      EXPECT_EQ(publisher->publishOp6("P.X", "tick", 0).code, 0);
      buy(on, on.a);
    }
    if (minute > 2)
      publisher->publishQuoteItems(on.p, {makeTick({}, kMonday + minute * kMinute, 100, 5)}, kLive);
  });
  on.platform->run();
  EXPECT_EQ(heldOf(on), 1);
}

TEST(Publications, shouldNotTellLongerBarsThatAreMadeOfHistory) {
  PublishingPlayback on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  const auto reader = on.readBars(on.p, kFiveMinutes);
  on.platform->drain();
  publisher->publishQuoteItems2(on.p, {barOf(-6, 1), barOf(-1, 1)}, 0);
  auto runner = on.eachMinute(
      [&](int minute) { publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive); });
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  const auto late = on.readBars(on.p, kFiveMinutes, 2);
  on.platform->drain();
  EXPECT_EQ(late->bars().size(), 2u);
}

TEST(Publications, shouldChangeNoLongerBarThatIsCompleteWhenABarComesLate) {
  PublishingPlayback on(7);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  const auto reader = on.readBars(on.p, kFiveMinutes);
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) publisher->publishQuoteItems2(on.p, {barOf(1, 1)}, kLive);
    if (minute == 7) publisher->publishQuoteItems2(on.p, {barOf(3, 3), barOf(7, 7)}, kLive);
  });
  on.platform->run();
  ASSERT_EQ(reader->bars().size(), 1u);
  EXPECT_EQ(KLineView(reader->bars()[0]).high(), 1);
}

TEST(Publications, shouldBeForgottenOnARewindAndPlayedAgain) {
  PublishingPlayback on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive).code, 0);
  });
  on.platform->run();
  on.platform->rewind();
  const auto reader = on.readBars(on.p);
  on.platform->drain();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  on.platform->run();
  EXPECT_EQ(reader->bars().size(), 2u);
}

TEST(Publications, shouldTakeTheLocalDayWhereNoTradingDayIsTold) {
  PublishingPlayback on(1);
  const ICodeID east = on.platform.code("E", "Asia/Tokyo");
  on.platform->addPublished(east, "1d");
  on.platform->addPublished(on.p, "tick");
  auto publisher = makeRunPublisher();
  IDepthMarketData tick = makeTick(on.p, kMonday, 1);
  QuoteWriter(tick).set(quote::TradingDay, 0);
  IKLine bar = makeBar(kMonday - 9 * kHour - kDay, kMonday - 9 * kHour, 1, 1, 1, 1);
  KLineWriter(bar).setDayAndFlags(0, kline::kQuoteBar);
  EXPECT_EQ(publisher->publishQuoteList({tick}, 0).code, 0);
  EXPECT_EQ(publisher->publishQuoteItems2(east, {bar}, 0).code, 0);
  on.platform->drain();
  IDepthMarketData last;
  EXPECT_EQ(on.platform.quotes().getQuote(on.p, last, 0).code, 0);
  EXPECT_EQ(QuoteView(last).tradingDay(), 20210104);
  const auto reader = on.readBars(east, kOneDay);
  on.platform->drain();
  ASSERT_EQ(reader->bars().size(), 1u);
  EXPECT_EQ(KLineView(reader->bars()[0]).tradingDay(), 20210103);
  EXPECT_EQ(KLineView(reader->bars()[0]).flags(), kline::kQuoteBar);
}

TEST(Publications, shouldTakeThePriceOfAShortForm) {
  PublishingPlayback on(2);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makeRunPublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) {
      EXPECT_EQ(publisher->publishOp8("P.X", "12.5", 0).code, 0);
    }
    if (minute == 2) {
      EXPECT_EQ(publisher->publisherOp4("P", "13", 4, 0, "", 0, 0).code, 0);
    }
  });
  on.readBars(on.p);
  on.platform->run();
  IDepthMarketData last;
  EXPECT_EQ(on.platform.quotes().getQuote(on.p, last, 0).code, 0);
  EXPECT_EQ(QuoteView(last).lastPrice(), 13);
  EXPECT_EQ(QuoteView(last).volume(), 4);
  EXPECT_EQ(QuoteView(last).tradingDay(), 20210104);
  EXPECT_EQ(publisher->publishOp8("P.X", "much", 0).code, -2);
  EXPECT_EQ(publisher->publishOp8("Z.X", "1", 0).code, 22);
}

TEST(Publications, shouldTellGeneralEventsOfTheShortForms) {
  PublishingPlayback on(1);
  auto publisher = makeRunPublisher();
  auto spi = makeEventSpi();
  subscribe(spi, "room", "");
  EXPECT_EQ(publisher->publishOp5("room", "open", 0).code, 0);
  EXPECT_EQ(publisher->publisherOp2("room", "shut", 3, 0, "north", 5, 0).code, 0);
  EXPECT_EQ(publisher->publishOp5("room", "", 0).code, -2);
  on.platform->drain();
  EXPECT_THAT(spi->handled(), ElementsAre(HasSubstr("room/open"),
                                          HasSubstr("room/shut count=5 key=north value1=3")));
}

TEST(Publications, shouldComeInLiveModeOnceTheRunHasBegun) {
  PlatformOptions options;
  options.mode = PlatformOptions::Mode::Live;
  options.speed = 60'000;
  PublishingPlayback on(20, options);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makeRunPublisher();
  const int64 before = on.platform->nowUtcMs();
  EXPECT_EQ(publisher->publishQuoteList({makeTick(on.p, before, 7)}, kLive).code, 0);
  struct Spi final : QuoteSpi {
    std::promise<IDepthMarketData> got;
    void onQuote(const IDepthMarketData& quote) override { got.set_value(quote); }
  };
  auto reader = std::make_shared<Spi>();
  on.platform.quotes().subscribeQuote(on.p, reader, 0);
  on.platform->run();
  const IDepthMarketData got = reader->got.get_future().get();
  EXPECT_EQ(QuoteView(got).time(), before);
  EXPECT_EQ(QuoteView(got).lastPrice(), 7);
}

}  // namespace
}  // namespace orvane::testing
