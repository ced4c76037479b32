#include "platform/events/Publications.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>
#include <limits>
#include <random>

#include "services/ov.publisher/IPublisher.h"
#include "tests/platform/events/EventFixture.h"
#include "tests/platform/trade/TradeFixture.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kLive = 1;

std::unique_ptr<IPublisher> makePublisher() {
  return std::unique_ptr<IPublisher>(IPublisher::create(2));
}

IDepthMarketData makeTick(const ICodeID& code, int64 time, double price, double volume = 1) {
  IDepthMarketData tick;
  tick.code = code;
  QuoteWriter writer(tick);
  writer.setTime(time);
  writer.set(quote::LastPrice, price);
  writer.set(quote::Volume, volume);
  writer.set(quote::TradingDay, 20210104);
  writer.set(quote::Flags, quote::kHasTrade);
  return tick;
}

IKLine barOf(int minute, double close) {
  const int64 end = kMonday + minute * kMinute;
  return makeBar(end - kMinute, end, close, close, close, close);
}

/// A playback of minute bars of A, beside a code P that files know nothing of.
struct Setting {
  explicit Setting(int bars = 5, PlatformOptions options = {}) : platform(options) {
    platform->addBars(makeBars(a, kMonday, kMinute, bars));
  }
  /// A runner that calls `onMinute` with the number of each bar of A that it gets.
  std::shared_ptr<RunnerSpi> eachMinute(std::function<void(int)> onMinute) {
    auto runner = std::make_shared<RunnerSpi>([onMinute](const std::string& event) {
      const std::size_t at = event.find(" 0:0");
      if (at != std::string::npos) onMinute(event[at + 4] - '0');
    });
    platform.quotes().subscribeBars(makeQuery(a), kOneMinute, runner, 100 + ++runners);
    return runner;
  }
  InstalledPlatform platform;
  const ICodeID a = platform.code("A"), p = platform.code("P"), q = platform.code("Q");
  int runners = 0;
};

TEST(Publications, shouldBeSeenByOtherRunnersAsBarsLikeAnyOther) {
  Setting on;
  on.platform->addPublished(on.p, "1m");
  auto publisher = makePublisher();
  auto runner = on.eachMinute([&](int minute) {
    EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(minute, minute * 10)}, kLive).code, 0);
  });
  auto reader = std::make_shared<RecordingSpi>();
  EXPECT_EQ(on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1).code, 0);
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
  Setting on(2);
  on.platform->addPublished(on.p, "tick");
  IDepthMarketData given = makeTick(on.p, kMonday + kMinute, 12.5, 3);
  QuoteWriter(given).setBid(9, 12.25, 7);
  given.block3[7] = std::bit_cast<Word>(2.5);
  given.block2[5] = 77;
  given.extras[4] = "text";
  auto publisher = makePublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) {
      EXPECT_EQ(publisher->publishQuoteList({given}, kLive).code, 0);
    }
  });
  struct Spi final : QuoteSpi {
    std::vector<IDepthMarketData> got;
    void onQuote(const IDepthMarketData& quote) override { got.push_back(quote); }
    void onTick(int, const std::vector<IDepthMarketData>& ticks, const ResultStatus&,
                int) override {
      got.insert(got.end(), ticks.begin(), ticks.end());
    }
  };
  auto quotes = std::make_shared<Spi>(), ticks = std::make_shared<Spi>();
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
  Setting on(7);
  on.platform->addPublished(on.p, "1m");
  on.platform->addPublished(on.q, "tick");
  auto publisher = makePublisher();
  auto runner = on.eachMinute([&](int minute) {
    publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive);
    publisher->publishQuoteList({makeTick(on.q, kMonday + minute * kMinute, minute, 2)}, kLive);
  });
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kFiveMinutes, reader, 1);
  on.platform.quotes().subscribeBars(makeQuery(on.q), kFiveMinutes, reader, 2);
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16", "@0:01 bar#2 flags=16",
                                           "@0:05 bar#1 0:00-0:05", "@0:05 bar#2 0:00-0:05"));
  ASSERT_EQ(reader->bars().size(), 2u);
  EXPECT_EQ(KLineView(reader->bars()[0]).close(), 5);
  EXPECT_EQ(KLineView(reader->bars()[1]).volume(), 8);
}

TEST(Publications, shouldTellHistoryToNobodyButLaterRequests) {
  Setting on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makePublisher();
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1);
  on.platform->drain();
  EXPECT_EQ(publisher->publishQuoteSeries(on.p, {barOf(-1, 1), barOf(0, 2)}, kMinute, 0).code, 0);
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  auto late = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, late, 2);
  on.platform->drain();
  EXPECT_EQ(late->bars().size(), 2u);
}

TEST(Publications, shouldMakeASeriesKnownOnceItIsAnnounced) {
  Setting on(3);
  auto publisher = makePublisher();
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
    Setting on(1, options);
    on.platform->addPublished(on.p, "tick");
    std::unique_ptr<IPublisher> publishers[] = {makePublisher(), makePublisher()};
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
    struct Spi final : QuoteSpi {
      std::vector<double> prices;
      void onQuote(const IDepthMarketData& quote) override {
        prices.push_back(QuoteView(quote).lastPrice());
      }
    };
    auto reader = std::make_shared<Spi>();
    on.platform.quotes().subscribeQuote(on.p, reader, 0);
    on.platform->run();
    return reader->prices;
  };
  EXPECT_THAT(played(0), ElementsAre(0, 1, 2, 10, 11, 12));
  EXPECT_THAT(played(1), ElementsAre(0, 1, 2, 10, 11, 12));
}

TEST(Publications, shouldDropTheRowsOfThePublisherThatComesSecondInTime) {
  Setting on(1);
  on.platform->addPublished(on.p, "1m");
  auto first = makePublisher(), second = makePublisher();
  auto runner = on.eachMinute([&](int) {
    EXPECT_EQ(second->publishQuoteItems2(on.p, {barOf(1, 2)}, kLive).code, 0);
    EXPECT_EQ(first->publishQuoteItems2(on.p, {barOf(1, 1)}, kLive).code, 0);
  });
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1);
  on.platform->run();
  ASSERT_EQ(reader->bars().size(), 1u);
  EXPECT_EQ(KLineView(reader->bars()[0]).close(), 1);
}

TEST(Publications, shouldFillOrdersThatStoodBeforeAndNoneThatAnswerTheRecord) {
  PlatformOptions options = tradeOptions();
  Setting on(4, options);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makePublisher();
  TradingAccountID account;
  const auto accounts = tradeOf(on.platform).tradingAccounts();
  account = *accounts.begin();
  const auto position = [&] {
    Position held;
    tradeOf(on.platform).getPosition(account, on.p, held);
    return PositionView(held).longSide().volume();
  };
  std::vector<double> held;
  auto runner = on.eachMinute([&](int minute) {
    held.push_back(position());
    publisher->publishQuoteItems(on.p, {makeTick({}, kMonday + minute * kMinute, 100, 5)}, kLive);
    if (minute != 2) return;
    std::list<Order> orders;
    EXPECT_EQ(tradeOf(on.platform)
                  .sendOrder(makeRequest(account, on.p, order::Direction::Buy), orders)
                  .code,
              0);
  });
  on.platform->run();
  // Sent at 0:02 beside a price of that time, filled by the price of 0:03.
  EXPECT_THAT(held, ElementsAre(0, 0, 0, 1));
}

TEST(Publications, shouldFillAnOrderThatWaitedBeforeAnybodyPublishedItsCode) {
  Setting on(3, tradeOptions());
  auto publisher = makePublisher();
  const TradingAccountID account = *tradeOf(on.platform).tradingAccounts().begin();
  auto runner = on.eachMinute([&](int minute) {
    std::list<Order> orders;
    if (minute == 1)
      tradeOf(on.platform).sendOrder(makeRequest(account, on.p, order::Direction::Buy), orders);
    else
      publisher->publishQuoteItems(on.p, {makeTick({}, kMonday + minute * kMinute, 100, 5)}, kLive);
  });
  on.platform->run();
  Position held;
  tradeOf(on.platform).getPosition(account, on.p, held);
  EXPECT_EQ(PositionView(held).longSide().volume(), 1);
}

TEST(Publications, shouldNotTellLongerBarsThatAreMadeOfHistory) {
  Setting on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makePublisher();
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kFiveMinutes, reader, 1);
  on.platform->drain();
  publisher->publishQuoteItems2(on.p, {barOf(-6, 1), barOf(-1, 1)}, 0);
  auto runner = on.eachMinute(
      [&](int minute) { publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive); });
  on.platform->run();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  auto late = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kFiveMinutes, late, 2);
  on.platform->drain();
  EXPECT_EQ(late->bars().size(), 2u);
}

TEST(Publications, shouldChangeNoLongerBarThatIsCompleteWhenABarComesLate) {
  Setting on(7);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makePublisher();
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kFiveMinutes, reader, 1);
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) publisher->publishQuoteItems2(on.p, {barOf(1, 1)}, kLive);
    if (minute == 7) publisher->publishQuoteItems2(on.p, {barOf(3, 3), barOf(7, 7)}, kLive);
  });
  on.platform->run();
  ASSERT_EQ(reader->bars().size(), 1u);
  EXPECT_EQ(KLineView(reader->bars()[0]).high(), 1);
}

TEST(Publications, shouldBeForgottenOnARewindAndPlayedAgain) {
  Setting on(2);
  on.platform->addPublished(on.p, "1m");
  auto publisher = makePublisher();
  auto runner = on.eachMinute([&](int minute) {
    EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(minute, minute)}, kLive).code, 0);
  });
  on.platform->run();
  on.platform->rewind();
  auto reader = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1);
  on.platform->drain();
  EXPECT_THAT(reader->lines(), ElementsAre("@0:01 bar#1 flags=16"));
  on.platform->run();
  EXPECT_EQ(reader->bars().size(), 2u);
}

TEST(Publications, shouldRefuseWhatFilesFeedAndFilesForWhatIsPublished) {
  Setting on;
  auto publisher = makePublisher();
  const ResultStatus status = publisher->publishQuoteItems2(on.a, {barOf(0, 1)}, kLive);
  EXPECT_EQ(status.code, -2);
  EXPECT_THAT(status.message, HasSubstr("A.X is fed by files"));
  EXPECT_THROW(on.platform->addPublished(on.a, "1m"), std::invalid_argument);
  EXPECT_THROW(on.platform->addPublished(on.p, "often"), std::invalid_argument);
  EXPECT_THROW(on.platform->addPublished({}, "1m"), std::invalid_argument);
  on.platform->addPublished(on.p, "1m");
  EXPECT_THROW(on.platform->addBars(makeBars(on.p, kMonday, kMinute, 1)), std::invalid_argument);
  EXPECT_THROW(on.platform->addTicks(makeTicks(on.p, {kMonday})), std::invalid_argument);
}

TEST(Publications, shouldRefuseUnknownCodesEmptyListsAndPeriodsThatAreNone) {
  Setting on;
  auto publisher = makePublisher();
  EXPECT_EQ(publisher->publishQuoteItems2({}, {barOf(0, 1)}, kLive).code, 22);
  EXPECT_EQ(publisher->publishQuoteList({makeTick({}, kMonday, 1)}, kLive).code, 22);
  EXPECT_THAT(publisher->publishQuoteItems2(on.p, {}, kLive).message, HasSubstr("no bars"));
  EXPECT_THAT(publisher->publishQuoteList({}, kLive).message, HasSubstr("no quotes"));
  for (const int term : {0, -60'000})
    EXPECT_THAT(publisher->publishQuoteSeries(on.p, {barOf(0, 1)}, term, kLive).message,
                HasSubstr("is not a period"));
  EXPECT_THAT(publisher->publishQuoteItems(on.p, {makeTick(on.q, kMonday, 1)}, kLive).message,
              HasSubstr("quotes[0]: its code is Q"));
  EXPECT_EQ(publisher->publishOp6("Z", "1m", 0).code, 22);
  EXPECT_EQ(publisher->publishOp6("P", "often", 0).code, 17);
}

TEST(Publications, shouldSayWhatIsWrongWithABar) {
  Setting on;
  auto publisher = makePublisher();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const auto refusal = [&](const std::function<void(KLineWriter&, IKLine&)>& spoil) {
    IKLine bar = barOf(1, 10);
    KLineWriter writer(bar);
    spoil(writer, bar);
    const ResultStatus status =
        publisher->publishQuoteSeries(on.p, {barOf(0, 1), bar}, kMinute, kLive);
    EXPECT_EQ(status.code, -2);
    const std::size_t at = status.message.find("bars[1]: ");
    return at == std::string::npos ? status.message : status.message.substr(at + 9);
  };
  const auto with = [&](kline::Word at, double value) {
    return refusal([=](KLineWriter& writer, IKLine&) { writer.set(at, value); });
  };
  EXPECT_EQ(with(kline::Open, nan), "open NaN is not a price");
  EXPECT_EQ(with(kline::Close, infinity), "close infinity is not a price");
  EXPECT_EQ(with(kline::High, 1e300), "high 1e+300 is not a price");
  EXPECT_EQ(with(kline::High, 9), "high 9 is below open 10");
  EXPECT_EQ(with(kline::Low, 11), "open 10 is below low 11");
  EXPECT_EQ(with(kline::Volume, -1), "volume -1 is not a volume");
  EXPECT_EQ(with(kline::Volume, 1e18), "volume 1e+18 is not a volume");
  EXPECT_EQ(with(kline::Turnover, nan), "turnover NaN is not an amount");
  EXPECT_EQ(with(kline::OpenInterest, -1), "open interest -1 is not a volume");
  const int64 begin = kMonday, end = kMonday + kMinute;
  const auto times = [&](int64 from, int64 to) {
    return refusal([=](KLineWriter& writer, IKLine&) { writer.setTimes(from, to); });
  };
  EXPECT_THAT(times(end, begin), HasSubstr("is not before end time"));
  EXPECT_THAT(times(begin, begin), HasSubstr("is not before end time"));
  EXPECT_EQ(times(begin - 1, end), "it lasts longer than its period of 60000 ms");
  EXPECT_EQ(times(begin + 1, end + 1), "it has not ended yet");
  EXPECT_EQ(times(begin - kMinute, begin), "it does not end after the bar before");
  EXPECT_THAT(times(std::numeric_limits<int64>::min(), std::numeric_limits<int64>::max()),
              HasSubstr("is not a time"));
  EXPECT_EQ(refusal([](KLineWriter& writer, IKLine&) { writer.setDayAndFlags(0, 0); }),
            "trading day 0 is not a date");
  // Without a term the bars tell how long the period is.
  EXPECT_THAT(publisher->publishQuoteItems2(on.p, {makeBar(end, begin, 1, 1, 1, 1)}, kLive).message,
              HasSubstr("is not before end time"));
  EXPECT_THAT(
      publisher->publishQuoteItems2(on.p, {barOf(0, 1), makeBar(begin + 1, end, 1, 1, 1, 1)}, kLive)
          .message,
      HasSubstr("bars[1]: it lasts shorter than bars[0]"));
}

TEST(Publications, shouldSayWhatIsWrongWithAQuote) {
  Setting on;
  auto publisher = makePublisher();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto refusal = [&](const std::function<void(QuoteWriter&)>& spoil) {
    IDepthMarketData tick = makeTick(on.p, kMonday, 10);
    QuoteWriter writer(tick);
    spoil(writer);
    const ResultStatus status = publisher->publishQuoteList({tick}, kLive);
    EXPECT_EQ(status.code, -2);
    const std::size_t at = status.message.find("quotes[0]: ");
    return at == std::string::npos ? status.message : status.message.substr(at + 11);
  };
  const auto with = [&](quote::Block1 at, double value) {
    return refusal([=](QuoteWriter& writer) { writer.set(at, value); });
  };
  EXPECT_EQ(with(quote::LastPrice, nan), "last price NaN is not a price");
  EXPECT_EQ(with(quote::UpperLimit, -1e10), "upper limit -1e+10 is not a price");
  EXPECT_EQ(with(quote::Volume, -2), "volume -2 is not a volume");
  EXPECT_EQ(with(quote::TotalTurnover, 1e17), "total turnover 1e+17 is not an amount");
  EXPECT_EQ(refusal([&](QuoteWriter& writer) {
              writer.set(quote::High, 1);
              writer.set(quote::Low, 2);
            }),
            "high 1 is below low 2");
  EXPECT_EQ(refusal([&](QuoteWriter& writer) { writer.setBid(2, nan, 1); }),
            "bid price 3 NaN is not a price");
  EXPECT_EQ(refusal([&](QuoteWriter& writer) { writer.setAsk(9, 1, -1); }),
            "ask size 10 -1 is not a volume");
  EXPECT_EQ(refusal([&](QuoteWriter& writer) { writer.set(quote::AskLevels, 11); }),
            "11 levels are none");
  EXPECT_EQ(refusal([&](QuoteWriter& writer) { writer.setTime(kMonday + kMinute + 1); }),
            "it lies after now");
  EXPECT_THAT(
      refusal([&](QuoteWriter& writer) { writer.setTime(std::numeric_limits<int64>::min()); }),
      HasSubstr("is not a time"));
  EXPECT_EQ(refusal([&](QuoteWriter& writer) { writer.set(quote::TradingDay, 20210230); }),
            "trading day 20210230 is not a date");
  EXPECT_THAT(
      publisher
          ->publishQuoteList({makeTick(on.p, kMonday, 1), makeTick(on.p, kMonday - 1, 1)}, kLive)
          .message,
      HasSubstr("quotes[1]: its time is before that of the quote before"));
}

TEST(Publications, shouldTakeThePriceOfAShortForm) {
  Setting on(2);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makePublisher();
  auto runner = on.eachMinute([&](int minute) {
    if (minute == 1) {
      EXPECT_EQ(publisher->publishOp8("P.X", "12.5", 0).code, 0);
    }
    if (minute == 2) {
      EXPECT_EQ(publisher->publisherOp4("P", "13", 4, 0, "", 0, 0).code, 0);
    }
  });
  auto bars = std::make_shared<RecordingSpi>();
  on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, bars, 1);
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
  Setting on(1);
  auto publisher = makePublisher();
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
  Setting on(20, options);
  on.platform->addPublished(on.p, "tick");
  auto publisher = makePublisher();
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
