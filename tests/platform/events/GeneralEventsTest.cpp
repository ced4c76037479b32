#include "platform/events/GeneralEvents.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>
#include <thread>

#include "tests/platform/events/EventFixture.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

PlatformOptions scripted(std::vector<ScriptedEvent> script) {
  PlatformOptions options;
  options.events.script = std::move(script);
  return options;
}

TEST(GeneralEvents, shouldTellAScriptedEventAtItsTimeBeforeTheTimersAndRecordsOfThatTime) {
  InstalledPlatform platform(scripted({{kMonday + 3 * kMinute, "news", "late", "k"},
                                       {kMonday + 2 * kMinute, "news", "first", "", {{"a", "1"}}},
                                       {kMonday + 2 * kMinute, "news", "second", ""}}));
  const ICodeID code = platform.code("A");
  platform->addBars(makeBars(code, kMonday, kMinute, 3));
  auto runner = std::make_shared<RunnerSpi>(nullptr);
  auto spi = std::make_shared<EventSpi>(runner);
  events().subscribe(spi, "news", {"first", "second", "late"}, {}, true);
  platform.quotes().subscribeBars(makeQuery(code), kOneMinute, runner, 1);
  platform->run();
  EXPECT_THAT(runner->handled(),
              ElementsAre("@0:01 bar#1 f16", HasSubstr("@0:01 bar#1 0:01"), "@0:02 news/first a=1",
                          "@0:02 news/second", HasSubstr("@0:02 bar#1 0:02"),
                          "@0:03 news/late key=k", HasSubstr("@0:03 bar#1 0:03")));
}

TEST(GeneralEvents, shouldTellOnlyTheTargetNamesAndKeysThatWereAskedFor) {
  InstalledPlatform platform;
  auto spi = makeEventSpi();
  subscribe(spi, "room", "open", {"north", "east"});
  subscribe(spi, "room", "shut");
  platform->publishEvent("room", "open", "north");
  platform->publishEvent("room", "open", "south");
  platform->publishEvent("room", "open");
  platform->publishEvent("room", "shut", "south");
  platform->publishEvent("room", "paint", "north");
  platform->publishEvent("hall", "open", "north");
  platform->drain();
  EXPECT_THAT(spi->handled(),
              ElementsAre(HasSubstr("room/open key=north"), HasSubstr("room/shut key=south")));
}

TEST(GeneralEvents, shouldTellEveryNameOfATargetWhenTheNameIsEmptyOrNoneIsGiven) {
  InstalledPlatform platform;
  auto empty = makeEventSpi();
  auto none = makeEventSpi();
  subscribe(empty, "room", "");
  events().subscribe(none, "room", {}, {}, true);
  platform->publishEvent("room", "open");
  platform->publishEvent("room", "shut");
  platform->publishEvent("hall", "open");
  platform->drain();
  EXPECT_EQ(empty->handled().size(), 2u);
  EXPECT_EQ(none->handled().size(), 2u);
}

TEST(GeneralEvents, shouldTellAnEventOnceHoweverManySubscriptionsItMeets) {
  InstalledPlatform platform;
  auto spi = makeEventSpi();
  subscribe(spi, "room", "open", {"north"});
  subscribe(spi, "room", "open", {"east"});
  subscribe(spi, "room", "");
  platform->publishEvent("room", "open", "north");
  platform->publishEvent("room", "open", "east");
  platform->drain();
  EXPECT_THAT(spi->handled(), ElementsAre(HasSubstr("north"), HasSubstr("east")));
}

TEST(GeneralEvents, shouldTellNothingMoreAndLetGoOfTheReceiverOnceItUnsubscribed) {
  InstalledPlatform platform;
  auto byName = makeEventSpi(), byTarget = makeEventSpi(), byAll = makeEventSpi();
  for (const auto& spi : {byName, byTarget, byAll}) {
    events().subscribe(spi, "room", {"open", "shut"}, {}, true);
    subscribe(spi, "hall", "open");
  }
  events().unsubscribe(byName, "room", {"open"});
  events().unsubscribeTarget(byTarget, "room");
  events().unsubscribeAll(byAll);
  EXPECT_EQ(byAll.use_count(), 1);
  platform->publishEvent("room", "open");
  platform->publishEvent("room", "shut");
  platform->publishEvent("hall", "open");
  platform->drain();
  EXPECT_THAT(byName->handled(), ElementsAre(HasSubstr("room/shut"), HasSubstr("hall/open")));
  EXPECT_THAT(byTarget->handled(), ElementsAre(HasSubstr("hall/open")));
  EXPECT_TRUE(byAll->handled().empty());
  events().unsubscribe(byName, "room", {"shut"});
  EXPECT_GT(byName.use_count(), 1);
  events().unsubscribe(byName, "hall", {"open"});
  EXPECT_EQ(byName.use_count(), 1);
}

TEST(GeneralEvents, shouldBearUnsubscribingWhatWasNeverSubscribed) {
  InstalledPlatform platform;
  auto spi = makeEventSpi();
  events().unsubscribe(spi, "room", {"open"});
  events().unsubscribeTarget(spi, "room");
  events().unsubscribeAll(spi);
  subscribe(spi, "hall", "open");
  events().unsubscribe(spi, "room", {"open"});
  events().unsubscribe(spi, "hall", {"shut"});
  platform->publishEvent("hall", "open");
  platform->drain();
  EXPECT_EQ(spi->handled().size(), 1u);
}

TEST(GeneralEvents, shouldSubscribeNothingWithoutAReceiverOrWithTheFlagOff) {
  InstalledPlatform platform;
  auto spi = makeEventSpi();
  events().subscribe(spi, "room", {"open"}, {}, false);
  events().subscribe(nullptr, "room", {"open"}, {}, true);
  EXPECT_EQ(spi.use_count(), 1);
  platform->publishEvent("room", "open");
  platform->drain();
  EXPECT_TRUE(spi->handled().empty());
}

TEST(GeneralEvents, shouldTellOnItsOwnThreadAndNeverInsideThePublishingCall) {
  InstalledPlatform platform;
  auto spi = makeEventSpi();
  std::thread::id teller;
  spi->onTold = [&] { teller = std::this_thread::get_id(); };
  subscribe(spi, "room", "open");
  EXPECT_EQ(platform->publishEvent("room", "open").code, 0);
  platform->drain();
  EXPECT_EQ(spi->handled().size(), 1u);
  EXPECT_NE(teller, std::this_thread::get_id());
  EXPECT_NE(teller, std::thread::id());
}

TEST(GeneralEvents, shouldRefuseAnEventWithoutTargetOrName) {
  InstalledPlatform platform;
  EXPECT_EQ(platform->publishEvent("", "open").code, -2);
  EXPECT_THAT(platform->publishEvent("", "open").message, HasSubstr("topic"));
  EXPECT_THAT(platform->publishEvent("room", "").message, HasSubstr("detail"));
  const auto refusal = [](ScriptedEvent event) -> std::string {
    try {
      EmbeddedPlatform made(scripted({{1, "room", "open", ""}, std::move(event)}));
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return {};
  };
  EXPECT_EQ(refusal({1, "", "open", ""}), "events: script[1]: target is empty");
  EXPECT_EQ(refusal({1, "room", "", ""}), "events: script[1]: name is empty");
  EXPECT_EQ(refusal({1, "room", "open", ""}), "");
}

TEST(GeneralEvents, shouldTellWhatRunnersPublishInOneOrderWhicheverThreadIsFaster) {
  const auto played = [](int faster) {
    PlatformOptions options;
    options.poolThreads = 3;
    InstalledPlatform platform(options);
    const ICodeID code = platform.code("A");
    platform->addBars(makeBars(code, kMonday, kMinute, 1));
    std::latch first(1);
    const auto publisher = [&](int number) {
      return std::make_shared<RunnerSpi>([&, number](const std::string& event) {
        if (event.find("0:01") == std::string::npos) return;
        if (number != faster) first.wait();
        const std::string name = std::to_string(number);
        EXPECT_EQ(events().publishEvent("from", {{"step", "z"}}, name).code, 0);
        EXPECT_EQ(events().publishEvent("from", {{"step", "a"}}, name).code, 0);
        if (number == faster) first.count_down();
      });
    };
    auto one = publisher(1), two = publisher(2);
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, one, 1);
    platform.quotes().subscribeBars(makeQuery(code), kOneMinute, two, 2);
    auto spi = makeEventSpi();
    subscribe(spi, "from", "");
    platform->run();
    return spi->handled();
  };
  const Lines expected{"@0:01 from/1 step=z", "@0:01 from/1 step=a", "@0:01 from/2 step=z",
                       "@0:01 from/2 step=a"};
  EXPECT_EQ(played(1), expected);
  EXPECT_EQ(played(2), expected);
}

TEST(GeneralEvents, shouldLetEachEventBeDigestedBeforeTheNextIsTold) {
  InstalledPlatform platform;
  std::vector<std::string> order;  // Calls and handlings never overlap in lockstep.
  auto answering = makeEventSpi([&](const std::string& event) {
    order.push_back("handled " + event);
    if (event == "room/open") events().publishEvent("room", {}, "answer");
  });
  answering->onTold = [&] { order.push_back("told"); };
  subscribe(answering, "room", "");
  platform->publishEvent("room", "open");
  platform->publishEvent("room", "shut");
  platform->drain();
  EXPECT_THAT(order, ElementsAre("told", "handled room/open", "told", "handled room/shut", "told",
                                 "handled room/answer"));
}

TEST(GeneralEvents, shouldLeaveOutTheScriptBeforeTheFirstInstantAndFromTheLastOn) {
  PlatformOptions options = scripted({{kMonday + kMinute - 1, "t", "early", ""},
                                      {kMonday + kMinute, "t", "begin", ""},
                                      {kMonday + 2 * kMinute, "t", "between", ""},
                                      {kMonday + 3 * kMinute, "t", "end", ""}});
  options.from = kMonday + kMinute;
  options.to = kMonday + 3 * kMinute;
  InstalledPlatform platform(options);
  platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 9));
  auto spi = makeEventSpi();
  subscribe(spi, "t", "");
  platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre("@0:01 t/begin", "@0:02 t/between"));
}

TEST(GeneralEvents, shouldTellNothingOfTheScriptAfterTheLastRecord) {
  InstalledPlatform platform(scripted(
      {{kMonday + 2 * kMinute, "t", "with", ""}, {kMonday + 2 * kMinute + 1, "t", "after", ""}}));
  platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 2));
  auto spi = makeEventSpi();
  subscribe(spi, "t", "");
  platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre("@0:02 t/with"));
}

TEST(GeneralEvents, shouldPlayAScriptThatHasNoMarketDataBesideIt) {
  InstalledPlatform platform(
      scripted({{kMonday, "t", "one", ""}, {kMonday + kHour, "t", "two", ""}}));
  auto spi = makeEventSpi();
  subscribe(spi, "t", "");
  EXPECT_EQ(platform->nowUtcMs(), kMonday);
  platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre("@0:00 t/one", "@1:00 t/two"));
}

TEST(GeneralEvents, shouldTellTheScriptAgainAfterARewind) {
  InstalledPlatform platform(scripted({{kMonday + kMinute, "t", "one", ""}}));
  platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 2));
  auto spi = makeEventSpi();
  subscribe(spi, "t", "");
  platform->run();
  platform->run();
  EXPECT_EQ(spi->handled().size(), 1u);
  platform->rewind();
  platform->run();
  EXPECT_EQ(spi->handled().size(), 2u);
}

TEST(GeneralEvents, shouldGoOnWhenAReceiverThrows) {
  InstalledPlatform platform;
  auto bad = makeEventSpi(), worse = makeEventSpi(), good = makeEventSpi();
  bad->onTold = [] { throw std::runtime_error("no"); };
  worse->onTold = [] { throw 1; };
  for (const auto& spi : {bad, worse, good}) subscribe(spi, "t", "");
  platform->publishEvent("t", "one");
  platform->drain();
  EXPECT_TRUE(bad->handled().empty());
  EXPECT_EQ(good->handled().size(), 1u);
}

TEST(GeneralEvents, shouldLetARunBeCancelledThoughPublishersAnswerOneAnother) {
  InstalledPlatform platform;
  platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 2));
  int answers = 0;
  auto spi = makeEventSpi([&](const std::string&) {
    if (++answers == 100) platform->cancel();
    events().publishEvent("t", {}, "again");
  });
  subscribe(spi, "t", "");
  platform->publishEvent("t", "first");
  platform->run();
  EXPECT_EQ(answers, 100);
}

TEST(GeneralEvents, shouldTellInLiveModeWhatIsPublishedAndWhatTheScriptSays) {
  PlatformOptions options = scripted({{kMonday + 2 * kMinute, "t", "script", ""}});
  options.mode = PlatformOptions::Mode::Live;
  options.speed = 60'000;
  InstalledPlatform platform(options);
  platform->addBars(makeBars(platform.code("A"), kMonday, kMinute, 20));
  std::promise<void> told;
  auto spi = makeEventSpi([&](const std::string& event) {
    if (event == "t/host") told.set_value();
  });
  subscribe(spi, "t", "");
  platform->publishEvent("t", "host");
  told.get_future().wait();  // Without a run: live services answer always.
  platform->run();
  EXPECT_THAT(spi->handled(), ElementsAre(HasSubstr("t/host"), HasSubstr("t/script")));
}

}  // namespace
}  // namespace orvane::testing
