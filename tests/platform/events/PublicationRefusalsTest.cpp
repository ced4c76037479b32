#include <gmock/gmock.h>

#include <limits>

#include "platform/events/Publications.h"
#include "tests/platform/events/PublicationFixture.h"

namespace orvane::testing {
namespace {

using ::testing::HasSubstr;

TEST(PublicationRefusals, shouldRefuseWhatFilesFeedAndFilesForWhatIsPublished) {
  PublishingPlayback on;
  auto publisher = makeRunPublisher();
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

TEST(PublicationRefusals, shouldDropWhatWaitsWhenAHostAddsAFileOfItsCode) {
  PublishingPlayback on(2);
  auto publisher = makeRunPublisher();
  EXPECT_EQ(publisher->publishQuoteItems2(on.p, {barOf(0, 1)}, kLive).code, 0);
  EXPECT_EQ(publisher->publishQuoteList({makeTick(on.p, kMonday, 1)}, kLive).code, 0);
  on.platform->addBars(makeBars(on.p, kMonday, kMinute, 2));
  auto reader = std::make_shared<RecordingSpi>();
  EXPECT_EQ(on.platform.quotes().subscribeBars(makeQuery(on.p), kOneMinute, reader, 1).code, 0);
  on.platform->run();
  EXPECT_EQ(reader->bars().size(), 2u);
  EXPECT_EQ(on.platform.quotes().subscribeBars(makeQuery(on.p), kTick, reader, 2).code, 8);
}

TEST(PublicationRefusals, shouldRefuseUnknownCodesEmptyListsAndPeriodsThatAreNone) {
  PublishingPlayback on;
  auto publisher = makeRunPublisher();
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

TEST(PublicationRefusals, shouldSayWhatIsWrongWithABar) {
  PublishingPlayback on;
  auto publisher = makeRunPublisher();
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
  EXPECT_EQ(refusal([](KLineWriter& writer, IKLine&) { writer.setDayAndFlags(20211301, 0); }),
            "trading day 20211301 is not a date");
  // Without a term the bars tell how long the period is.
  EXPECT_THAT(publisher->publishQuoteItems2(on.p, {makeBar(end, begin, 1, 1, 1, 1)}, kLive).message,
              HasSubstr("is not before end time"));
  EXPECT_THAT(
      publisher->publishQuoteItems2(on.p, {barOf(0, 1), makeBar(begin + 1, end, 1, 1, 1, 1)}, kLive)
          .message,
      HasSubstr("bars[1]: it lasts shorter than bars[0]"));
}

TEST(PublicationRefusals, shouldSayWhatIsWrongWithAQuote) {
  PublishingPlayback on;
  auto publisher = makeRunPublisher();
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

TEST(PublicationRefusals, shouldAnswerThatItDoesNotSupportWhatHasNoMeaningHere) {
  PublishingPlayback on;
  auto publisher = makeRunPublisher();
  using Operation = decltype(&IPublisher::publisherOp5);
  for (const Operation operation :
       {&IPublisher::publisherOp5, &IPublisher::publisherOp6, &IPublisher::publisherOp7,
        &IPublisher::publisherOp8, &IPublisher::publisherOp9, &IPublisher::publisherOp10,
        &IPublisher::publisherOp11, &IPublisher::publisherOp12})
    EXPECT_EQ((publisher.get()->*operation)("P.X", "1", 0, 0, "", 0, 0).code, 23);
  EXPECT_THAT(publisher->publishOp7("means", "text", 0).message,
              HasSubstr("key \"means\" has no slash"));
}

}  // namespace
}  // namespace orvane::testing
