// The dictionary in playback: what is shown when, and that threads do not matter.

#include <atomic>
#include <random>
#include <thread>

#include "services/Common/ITradeService.h"
#include "tests/platform/dictionary/DictionaryFixture.h"
#include "tests/platform/events/EventFixture.h"

namespace orvane::testing {
namespace {

int64 at(int minute) { return kMonday + minute * kMinute; }

RecordPublication recordsAt(const std::string& target, std::initializer_list<int> minutes,
                            int64 time = kUnsetTime) {
  RecordPublication publication{"N", target, 0, 0, 0, time, {}};
  for (const int minute : minutes)
    publication.records.push_back({at(minute), 0, "m" + std::to_string(minute)});
  return publication;
}

/// A platform with ten bars, which end at 0:01 to 0:10.
class BarPlatform : public InstalledPlatform {
 public:
  explicit BarPlatform(PlatformOptions options = {})
      : InstalledPlatform(std::move(options)), bars(code("A")) {
    (*this)->addBars(makeBars(bars, kMonday, kMinute, 10));
  }
  void feedBars(const std::shared_ptr<QuoteSpi>& spi, int id = 900) {
    quotes().subscribeBars(makeQuery(bars), kOneMinute, spi, id);
  }
  const ICodeID bars;
};

/// A runner's stand-in that gets the bars and the records of targets.
struct Runner {
  Runner(BarPlatform& platform, int number, std::list<std::string> targets,
         RunnerSpi::Handler handler)
      : publisher(makePublisher()),
        spi(std::make_shared<RunnerSpi>(std::move(handler))),
        data(std::make_shared<RunnerData>(spi)) {
    platform.feedBars(spi, 1000 + number);
    if (!targets.empty()) dictionary().subscribeData(wanting("N", targets), data, 2000 + number);
  }
  Lines dataLines() const {
    Lines found;
    for (const std::string& line : spi->handled())
      if (line.find(" bar#") == std::string::npos) found.push_back(line);
    return found;
  }

  std::unique_ptr<IPublisher> publisher;
  std::shared_ptr<RunnerSpi> spi;
  std::shared_ptr<RunnerData> data;
};

bool isBar(const std::string& event, int minute) {
  return event.starts_with("bar#") &&
         event.find(" " + RecordingSpi::relative(at(minute)) + "=") != std::string::npos;
}

TEST(DictionaryPlayback, shouldShowARecordFromItsKeyOn) {
  BarPlatform platform;
  platform->addRecords({recordsAt("a", {0, 1, 3, 12})});
  const Runner runner(platform, 1, {"a"}, {});
  platform->run();
  EXPECT_EQ(runner.dataLines(),
            (Lines{"@0:01 data#2001 a 0:00=m0 0:01=m1 f16", "@0:03 data#2001 a 0:03=m3 f0"}));
}

TEST(DictionaryPlayback, shouldShowARecordBetweenTwoBarsAtItsOwnTime) {
  BarPlatform platform;
  platform->addRecords({{"N", "a", 0, 0, 0, kUnsetTime, {{at(3) + 7, 0, "x"}}}});
  const Runner runner(platform, 1, {"a"}, {});
  platform->run();
  EXPECT_EQ(runner.dataLines().back(), "@0:03+7 data#2001 a 0:03+7=x f0");
}

TEST(DictionaryPlayback, shouldShowARecordFromItsPublicationOnWhenThatComesLater) {
  BarPlatform platform;
  platform->addRecords({recordsAt("a", {2, 6}, at(4))});
  const Runner runner(platform, 1, {"a"}, {});
  platform->run();
  EXPECT_EQ(runner.dataLines(), (Lines{"@0:01 data#2001 f16", "@0:04 data#2001 a 0:02=m2 f0",
                                       "@0:06 data#2001 a 0:06=m6 f0"}));
}

TEST(DictionaryPlayback, shouldShowRecordsBeforeTheBarOfTheirTime) {
  BarPlatform platform;
  platform->addRecords({recordsAt("a", {5})});
  const Runner runner(platform, 1, {"a"}, {});
  platform->run();
  const Lines all = runner.spi->handled();
  const auto record = std::find(all.begin(), all.end(), "@0:05 data#2001 a 0:05=m5 f0");
  ASSERT_NE(record, all.end());
  EXPECT_TRUE((record + 1)->starts_with("@0:05 bar#"));
}

TEST(DictionaryPlayback,
     shouldShowRecordsAfterAllThatHappensOnTheTradeSideAndAllEventsOfTheirTime) {
  PlatformOptions options;
  options.trade.accounts.push_back({"A1", "CNY", "", 1});
  options.trade.script.push_back({"A1", at(5), false});
  for (const char* name : {"first", "second"})
    options.events.script.push_back({at(5), "room", name, ""});
  BarPlatform platform(options);
  platform->addRecords({recordsAt("a", {5})});
  const Runner runner(platform, 1, {"a"}, {});
  const auto heard = std::make_shared<EventSpi>(runner.spi);
  subscribe(heard, "room", "");
  struct Status final : TradeEventSpi {
    std::shared_ptr<RunnerSpi> runner;
    void onRspStatus(const AccountID&, const AccountStatusInfo& info) override {
      runner->push("status " + std::to_string(info.statusCode));
    }
  };
  const auto status = std::make_shared<Status>();
  status->runner = runner.spi;
  ITradeService& trade = *platform->router()->tradeService();
  trade.subscribeStatus(status, *trade.tradingAccounts().begin());
  platform->run();
  const Lines all = runner.spi->handled();
  const auto begin = std::find(all.begin(), all.end(), "@0:05 status 17");
  ASSERT_GE(all.end() - begin, 5);
  EXPECT_EQ(Lines(begin, begin + 4), (Lines{"@0:05 status 17", "@0:05 room/first",
                                            "@0:05 room/second", "@0:05 data#2001 a 0:05=m5 f0"}));
}

TEST(DictionaryPlayback, shouldNotReadAheadWhateverIsAsked) {
  BarPlatform platform;
  platform->addRecords({recordsAt("a", {1, 2, 3, 4}), recordsAt("b", {7})});
  std::string range, latest, record, targets, define;
  const Runner runner(platform, 1, {}, [&](const std::string& event) {
    if (!isBar(event, 3)) return;
    range = readAll("N", "a");
    std::list<LatestOfName> found;
    dictionary().readLatest({{"a", "N"}, {"b", "N"}}, found, 0);
    for (const auto& [name, all] : found)
      for (const auto& [target, one] : all) latest += target + textOf(one);
    Record one;
    BarDataReadSyncWrapper::getRecord("a", "N", kUnsetTime, one, {}, 0, 0);
    record = one.text;
    for (const std::string& each : BDUtil::getTargetByName("N", nullptr, false)) targets += each;
    std::list<DataDefine> defines;
    dictionary().dataDefines(defines, {"N"}, 1);
    define = std::to_string(defines.front().value1) + "/" + std::to_string(defines.front().value2);
  });
  platform->run();
  EXPECT_EQ(range, textOf(recordsAt("a", {1, 2, 3}).records));
  EXPECT_EQ(latest, "a" + textOf(recordsAt("a", {3}).records));
  EXPECT_EQ(record, "m3");
  EXPECT_EQ(targets, "a");
  EXPECT_EQ(define, "1/3");
}

TEST(DictionaryPlayback, shouldHoldBackARecordThatIsPublishedForLater) {
  BarPlatform platform;
  Runner* self = nullptr;
  std::string soon;
  Runner runner(platform, 1, {"a"}, [&](const std::string& event) {
    if (isBar(event, 2)) {
      const std::list<Record> both = recordsAt("a", {2, 5}).records;
      EXPECT_EQ(self->publisher->publishRecords("N", "a", 0, both, 0, 0).code, 0);
    }
    if (isBar(event, 4)) soon = readAll("N", "a");
  });
  self = &runner;
  platform->run();
  EXPECT_EQ(runner.dataLines(), (Lines{"@0:01 data#2001 f16", "@0:02 data#2001 a 0:02=m2 f0",
                                       "@0:05 data#2001 a 0:05=m5 f0"}));
  EXPECT_EQ(soon, textOf(recordsAt("a", {2}).records));
}

TEST(DictionaryPlayback, shouldHideAPublicationFromEverybodyUntilAllAreQuiet) {
  BarPlatform platform;
  Runner* self = nullptr;
  std::string within, after;
  Runner runner(platform, 1, {}, [&](const std::string& event) {
    if (isBar(event, 2)) {
      self->publisher->publishRecords("N", "a", 0, recordsAt("a", {2}).records, 0, 0);
      within = readAll("N", "a");
    }
    if (isBar(event, 3)) after = readAll("N", "a");
  });
  self = &runner;
  platform->run();
  EXPECT_EQ(within, "");
  EXPECT_EQ(after, textOf(recordsAt("a", {2}).records));
}

/// Six runners that publish on every bar, and answer one another once, all to one target. Returns
/// what each of them saw, and in the end found.
std::vector<Lines> playManyPublishers(int threads, unsigned seed) {
  PlatformOptions options;
  options.poolThreads = threads;
  BarPlatform platform(options);
  std::vector<std::unique_ptr<Runner>> runners;
  std::mutex mutex;
  std::mt19937 random(seed);
  for (int i = 0; i < 6; ++i) {
    runners.push_back(std::make_unique<Runner>(
        platform, i, std::list<std::string>{"t"}, [&, i](const std::string& event) {
          int turns = 0;
          {
            const std::lock_guard lock(mutex);
            turns = std::uniform_int_distribution(0, 3)(random);
          }
          for (; turns > 0; --turns) std::this_thread::yield();
          const std::string me = "r" + std::to_string(i);
          if (event.starts_with("bar#"))
            runners[static_cast<std::size_t>(i)]->publisher->publishRecords(
                "N", "t", 0, {{Timestamp::now(1).toUtcMsEponch(), 0, me}}, 0, 0);
          if (event.find("=r0 f0") != std::string::npos)
            runners[static_cast<std::size_t>(i)]->publisher->publishRecords(
                "N", "t", 0, {{at(0), 0, me + "+"}}, 0, 0);
        }));
  }
  platform->run();
  std::vector<Lines> seen;
  for (const auto& runner : runners) seen.push_back(runner->spi->handled());
  seen.push_back({readAll("N", "t")});
  return seen;
}

TEST(DictionaryPlayback, shouldShowEverybodyTheSameOrderOnEveryRunWithAnyNumberOfThreads) {
  const std::vector<Lines> once = playManyPublishers(1, 1);
  // Ten bars with six publications each, and six answers to the first of them.
  ASSERT_EQ(std::count(once.front().begin(), once.front().end(), "@0:04 data#2000 t 0:04=r5 f0"),
            1);
  for (unsigned seed = 2; seed < 6; ++seed)
    EXPECT_EQ(playManyPublishers(static_cast<int>(seed % 4) + 1, seed), once) << "seed " << seed;
}

TEST(DictionaryPlayback, shouldGiveALateRequestItsHistoryAndThenEachNewRecordOnce) {
  BarPlatform platform;
  Runner* other = nullptr;
  Runner publishing(platform, 1, {"a"}, [&](const std::string& event) {
    if (!event.starts_with("bar#") || event.find('=') == std::string::npos) return;
    const int64 now = Timestamp::now(1).toUtcMsEponch();
    other->publisher->publishRecords("N", "a", 0, {{now, 0, "x"}, {now + 1, 0, "y"}}, 0, 0);
  });
  Runner late(platform, 2, {}, [&](const std::string& event) {
    // In the middle of the delivery of a record that another one publishes at this very bar.
    if (isBar(event, 4)) dictionary().subscribeData(wanting("N", {"a"}), other->data, 77);
  });
  other = &late;
  platform->run();
  std::string seen;
  for (const std::string& line : late.dataLines()) seen += line.substr(line.find(" a ") + 3) + "; ";
  EXPECT_EQ(seen,
            "0:01=x 0:01+1=y 0:02=x 0:02+1=y 0:03=x 0:03+1=y 0:04=x f16; 0:04+1=y f0; 0:05=x f0; "
            "0:05+1=y f0; 0:06=x f0; 0:06+1=y f0; 0:07=x f0; 0:07+1=y f0; 0:08=x f0; 0:08+1=y f0; "
            "0:09=x f0; 0:09+1=y f0; 0:10=x f0; ");
}

TEST(DictionaryPlayback, shouldPlayTheSameAgainWhenItIsRewound) {
  BarPlatform platform;
  platform->addRecords({recordsAt("a", {3})});
  Runner* self = nullptr;
  Runner runner(platform, 1, {"a"}, [&](const std::string& event) {
    if (isBar(event, 5))
      self->publisher->publishRecords("N", "a", 0, recordsAt("a", {4}).records, 0, 0);
  });
  self = &runner;
  platform->run();
  const Lines first = runner.dataLines();
  const std::string found = readAll("N", "a");
  EXPECT_EQ(found, textOf(recordsAt("a", {3, 4}).records));
  platform->rewind();
  EXPECT_EQ(readAll("N", "a"), "");
  platform->run();
  const Lines second = runner.dataLines();
  // The request stands, so its history does not come again.
  EXPECT_EQ(Lines(second.begin() + static_cast<int>(first.size()), second.end()),
            Lines(first.begin() + 1, first.end()));
  EXPECT_EQ(readAll("N", "a"), found);
}

TEST(DictionaryPlayback, shouldEndARunWherePublishersAnswerOneAnotherForEverWhenItIsCancelled) {
  BarPlatform platform;
  Runner* self = nullptr;
  std::atomic<int> rounds{0};
  Runner runner(platform, 1, {"a"}, [&](const std::string&) {
    if (++rounds == 50) platform->cancel();
    self->publisher->publishRecords("N", "a", 0, {{at(0), 0, "x"}}, 0, 0);
  });
  self = &runner;
  platform->run();
  platform->drain();
  EXPECT_GE(rounds, 50);
  EXPECT_LT(rounds, 60);
}

TEST(DictionaryPlayback, shouldAnswerManyRunnersThatReadInsideCallbacksWithOneThread) {
  PlatformOptions options;
  options.poolThreads = 1;
  BarPlatform platform(options);
  platform->addRecords({recordsAt("a", {1, 2, 3})});
  std::atomic<int> answered{0};
  std::vector<std::unique_ptr<Runner>> runners;
  for (int i = 0; i < 40; ++i)
    runners.push_back(
        std::make_unique<Runner>(platform, i, std::list<std::string>{}, [&](const std::string&) {
          for (const int64 wait : {0, 1, -1, 60'000}) {
            std::list<Record> records;
            if (BarDataReadSyncWrapper::getRecords(
                    "a", "N", 0, kUnsetTime, records, [] { return false; }, wait, 32)
                    .code == 0)
              ++answered;
          }
        }));
  platform->run();
  // Ten bars, and the end of the history, which is empty.
  EXPECT_EQ(answered, 40 * 11 * 4);
}

TEST(DictionaryPlayback, shouldShowEverythingWhenThereIsNoTimeYet) {
  InstalledPlatform platform;
  platform->addRecords({recordsAt("a", {1, 2})});
  EXPECT_EQ(readAll("N", "a"), textOf(recordsAt("a", {1, 2}).records));
}

TEST(DictionaryPlayback, shouldTellWhoAskedBeforeThereWasATimeWhatComesLater) {
  InstalledPlatform platform;
  const ICodeID code = platform.code("A");
  platform->addRecords({recordsAt("a", {0, 4})});
  const auto runner = std::make_shared<RunnerSpi>(RunnerSpi::Handler());
  dictionary().subscribeData(wanting("N", {"a"}), std::make_shared<RunnerData>(runner), 1);
  platform->drain();
  ASSERT_EQ(runner->handled().size(), 1u);
  EXPECT_TRUE(runner->handled()[0].ends_with("data#1 a 0:00=m0 0:04=m4 f16"));
  platform->addBars(makeBars(code, kMonday, kMinute, 10));
  platform->run();
  EXPECT_EQ(runner->handled().size(), 2u) << "what lies before the start is not told again";
  EXPECT_EQ(runner->handled().back(), "@0:04 data#1 a 0:04=m4 f0");
}

}  // namespace
}  // namespace orvane::testing
