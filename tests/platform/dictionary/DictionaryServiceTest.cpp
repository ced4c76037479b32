// Publications, subscriptions and reads of the dictionary, driven by its interfaces.

#include "platform/dictionary/DictionaryService.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <stdexcept>
#include <thread>

#include "tests/platform/dictionary/DictionaryFixture.h"

namespace orvane::testing {
namespace {

ResultStatus publish(IPublisher& publisher, const std::string& target, std::list<Record> records,
                     int flags = 0, int64 tag = 0, int type = 0) {
  return publisher.publishRecords("N", target, type, records, flags, tag);
}

TEST(DictionaryService, shouldGiveBackWhatWasPublishedWhenItIsRead) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  EXPECT_EQ(publish(*publisher, "a", {{1, 7, "one"}, {2, 8, "two"}}).code, 0);
  std::list<Record> records;
  EXPECT_EQ(BarDataReadSyncWrapper::getRecords("a", "N", 0, 9, records, {}, 1000, 32).code, 0);
  EXPECT_EQ(records, (std::list<Record>{{1, 7, "one"}, {2, 8, "two"}}));
  EXPECT_EQ(readAll("N", "b"), "");
  EXPECT_EQ(readAll("M", "a"), "");
}

TEST(DictionaryService, shouldTakeBothBoundsInWhenARangeIsRead) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "y"}, {3, 0, "z"}});
  EXPECT_EQ(readAll("N", "a", 2, 3), "2=y 3=z");
  EXPECT_EQ(readAll("N", "a", 3, 2), "");
}

TEST(DictionaryService, shouldSendHistoryAndThenWhatIsNew) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "y"}});
  const auto spi = std::make_shared<DataRecorder>();
  EXPECT_EQ(dictionary().subscribeData(wanting("N", {"a"}), spi, 5).code, 0);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#5 N/a 1=x 2=y f16"});
  publish(*publisher, "b", {{3, 0, "other"}});
  publish(*publisher, "a", {{3, 0, "z"}}, 0, 77, 4);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#5 N/a 3=z t77 v4"});
  dictionary().unsubscribeData(5);
  publish(*publisher, "a", {{4, 0, "late"}});
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{});
}

TEST(DictionaryService, shouldAnswerWithTheDepthOfTheQueueWhenItPublishes) {
  InstalledPlatform platform;
  const auto one = makePublisher();
  const auto two = makePublisher();
  EXPECT_EQ(publish(*one, "a", {{1, 0, "x"}}).message, "1");
  EXPECT_EQ(publish(*one, "a", {{2, 0, "x"}}).message, "2");
  EXPECT_EQ(publish(*two, "a", {{3, 0, "x"}}).message, "1");
  platform->drain();
  EXPECT_EQ(publish(*one, "a", {{4, 0, "x"}}).message, "1");
}

std::list<Record> numbered(int first, int count) {
  std::list<Record> records;
  for (int i = 0; i < count; ++i) records.push_back({first + i, 0, "x"});
  return records;
}

TEST(DictionaryService, shouldSendLongHistoryInBatchesWithProgress) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", numbered(0, 2000));
  publish(*publisher, "b", numbered(0, 500));
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {}), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(), (Lines{"data#1 N/a *1000", "progress#1 1000/2500", "data#1 N/a *1000",
                                "progress#1 2000/2500", "data#1 N/b *500 f16"}));
}

TEST(DictionaryService, shouldPartABatchWhereTheTypeOfValueChanges) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "x"}}, 0, 0, 5);
  publish(*publisher, "a", {{3, 0, "y"}}, 0, 0, 6);
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(),
            (Lines{"data#1 N/a 1=x 2=x v5", "progress#1 2/3", "data#1 N/a 3=y f16 v6"}));
}

TEST(DictionaryService, shouldKeepTheNewestOfEachTargetWhenACountIsGiven) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "y"}, {2, 0, "z"}});
  publish(*publisher, "b", {{7, 0, "w"}});
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"b", "a", "b"}, kUnsetTime, kUnsetTime, 1), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(), (Lines{"data#1 N/b 7=w", "progress#1 1/2", "data#1 N/a 2=z f16"}));
}

TEST(DictionaryService, shouldAnswerARequestWithoutRecordsWithAnEmptyResult) {
  InstalledPlatform platform;
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#1 f16"});
}

TEST(DictionaryService, shouldSendOnlyKeysWithinTheBoundsAndEndWithThem) {
  PlatformOptions options;
  options.from = 1000;
  InstalledPlatform platform(options);
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "v"}, {2, 0, "w"}, {3, 0, "x"}, {4, 0, "y"}});
  const auto past = std::make_shared<DataRecorder>();
  const auto open = std::make_shared<DataRecorder>();
  const std::weak_ptr<DataRecorder> kept = past;
  dictionary().subscribeData(wanting("N", {"a"}, 2, 3), past, 1);
  dictionary().subscribeData(wanting("N", {"a"}, 3, 2000), open, 2);
  platform->drain();
  EXPECT_EQ(past->take(), Lines{"data#1 N/a 2=w 3=x f16"});
  EXPECT_EQ(open->take(), Lines{"data#2 N/a 3=x 4=y f16"});
  publish(*publisher, "a", {{2, 0, "again"}, {3, 0, "again"}});
  platform->drain();
  EXPECT_EQ(past->take(), Lines{});
  EXPECT_EQ(open->take(), Lines{"data#2 N/a 3=again"});
}

TEST(DictionaryService, shouldKeepTheOrderOfOneKeyAcrossPublications) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "first"}, {1, 0, "second"}});
  publish(*publisher, "a", {{0, 0, "older"}, {1, 0, "third"}});
  EXPECT_EQ(readAll("N", "a"), "0=older 1=first 1=second 1=third");
  Record record;
  EXPECT_EQ(BarDataReadSyncWrapper::getRecord("a", "N", 1, record, {}, 0, 0).code, 0);
  EXPECT_EQ(record.text, "third");
}

TEST(DictionaryService, shouldTellTheNewestRecordOfATargetAndEachTimeItIsAnother) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{5, 0, "x"}});
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeSnapshot({{"a", "N"}, {"b", "N"}}, spi, 0);
  dictionary().subscribeSnapshot({{"a", "N"}}, spi, 0);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"snapshot N/a 5=x"});
  publish(*publisher, "a", {{3, 0, "older"}});
  publish(*publisher, "a", {{6, 0, "y"}, {7, 0, "z"}});
  publish(*publisher, "b", {{1, 0, "w"}});
  platform->drain();
  EXPECT_EQ(spi->take(), (Lines{"snapshot N/a 7=z", "snapshot N/b 1=w"}));
  publish(*publisher, "a", {{7, 0, {}}, {6, 0, {}}}, dictionary::kDeletes);
  publish(*publisher, "b", {{1, 0, {}}}, dictionary::kDeletes);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"snapshot N/a 5=x"});
  dictionary().unsubscribeSnapshot({{"a", "N"}}, spi, 0);
  publish(*publisher, "a", {{8, 0, "late"}});
  publish(*publisher, "b", {{8, 0, "w"}});
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"snapshot N/b 8=w"});
  dictionary().unsubscribeAllSnapshots(spi);
  publish(*publisher, "b", {{9, 0, "late"}});
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{});
}

TEST(DictionaryService, shouldTellEachKeyThatIsDeleted) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "y"}, {2, 0, "z"}, {3, 0, "w"}});
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  spi->take();
  publish(*publisher, "a", {{1, 0, {}}, {2, 0, "?"}, {9, 0, {}}}, dictionary::kDeletes);
  publish(*publisher, "a", {{2, 0, {}}}, dictionary::kDeletes);
  publish(*publisher, "a", {{2, 0, "anew"}});
  platform->drain();
  EXPECT_EQ(spi->take(),
            (Lines{"delete#1 N/a 1-1 n1", "delete#1 N/a 2-2 n2", "data#1 N/a 2=anew"}));
  EXPECT_EQ(readAll("N", "a"), "2=anew 3=w");
}

TEST(DictionaryService, shouldAcknowledgeAnEmptyListAndTellNobody) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}});
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  spi->take();
  EXPECT_EQ(publish(*publisher, "a", {}).code, 0);
  EXPECT_EQ(publish(*publisher, "a", {}, dictionary::kDeletes).code, 0);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{});
  EXPECT_EQ(readAll("N", "a"), "1=x");
}

TEST(DictionaryService, shouldRefuseEmptyPartsAndKeepBytesThatAreNoText) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  EXPECT_EQ(publisher->publishRecords("", "a", 0, {{1, 0, "x"}}, 0, 0).code, -2);
  EXPECT_EQ(publisher->publishRecords("N", "", 0, {{1, 0, "x"}}, 0, 0).code, -2);
  EXPECT_EQ(dictionary().subscribeData(wanting("N", {"a"}), nullptr, 1).code, -2);
  EXPECT_EQ(
      dictionary().subscribeData(wanting("", {"a"}), std::make_shared<DataRecorder>(), 1).code, -2);
  EXPECT_EQ(publisher->requestRange(wanting("", {"a"}), 1).code, -2);
  EXPECT_THROW(platform->addRecords({{"", "a", 0, 0, 0, kUnsetTime, {}}}), std::invalid_argument);
  EXPECT_THROW(platform->addRecords({{"N", "", 0, 0, 0, kUnsetTime, {}}}), std::invalid_argument);
  dictionary().subscribeSnapshot({{"a", "N"}}, nullptr, 0);
  const std::string zero("z\0z", 3);
  const std::list<Record> records = {{1, 0, ""}, {2, 0, zero}, {3, 0, "\xFF\xFF"}};
  EXPECT_EQ(publisher->publishRecords(zero, zero, 0, records, 0, 0).code, 0);
  std::list<Record> found;
  EXPECT_EQ(BarDataReadSyncWrapper::getRecords(zero, zero, 0, 9, found, {}, 0, 0).code, 0);
  EXPECT_EQ(found, records);
  EXPECT_EQ(BDUtil::getTargetByName(zero, nullptr, false), std::list<std::string>{zero});
}

TEST(DictionaryService, shouldTakeTheWholeRangeOfKeys) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  const int64 lowest = -kUnsetTime - 1;
  publish(*publisher, "a", {{lowest, 0, "x"}, {0, 0, "y"}, {kUnsetTime, 0, "z"}});
  EXPECT_EQ(readAll("N", "a", lowest, kUnsetTime),
            std::to_string(lowest) + "=x 0=y " + std::to_string(kUnsetTime) + "=z");
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#1 N/a " + readAll("N", "a", lowest) + " f16"});
}

TEST(DictionaryService, shouldSendARangeAgainToThoseWhoSubscribe) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {2, 0, "y"}});
  publish(*publisher, "b", {{1, 0, "z"}});
  const auto a = std::make_shared<DataRecorder>();
  const auto all = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), a, 1);
  dictionary().subscribeData(wanting("N", {}), all, 2);
  platform->drain();
  a->take();
  all->take();
  EXPECT_EQ(publisher->requestRange(wanting("N", {"a"}, 2, 9), 33).code, 0);
  EXPECT_EQ(dictionary().requestAll(wanting("N", {}, 1, 1), 44).code, 0);
  EXPECT_EQ(publisher->requestRange(wanting("M", {}), 55).code, 0);
  platform->drain();
  EXPECT_EQ(a->take(), (Lines{"data#1 N/a 1=x f80 t44", "data#1 N/a 2=y f80 t33"}));
  EXPECT_EQ(all->take(),
            (Lines{"data#2 N/a 1=x f64 t44", "data#2 N/b 1=z f80 t44", "data#2 N/a 2=y f80 t33"}));
}

TEST(DictionaryService, shouldAnswerTheNewestOfManyTargetsInTheOrderAskedFor) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", {{1, 0, "x"}, {4, 0, "y"}});
  publish(*publisher, "b", {{2, 0, "z"}});
  std::list<LatestOfName> latest;
  EXPECT_EQ(dictionary().readLatest({{"b", "N"}, {"c", "N"}, {"a", "N"}}, latest, 0).code, 0);
  ASSERT_EQ(latest.size(), 1U);
  std::string text;
  for (const auto& [target, records] : latest.front().second)
    text += target + textOf(records) + " ";
  EXPECT_EQ(text, "b2=z a4=y ");
  EXPECT_EQ(dictionary().readLatest({{"a", "M"}}, latest, 0).code, 0);
  EXPECT_TRUE(latest.empty());
}

TEST(DictionaryService, shouldReadOneRecordOfEachTargetAtATime) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "b", {{1, 0, "x"}, {4, 0, "y"}});
  publish(*publisher, "a", {{3, 0, "z"}});
  std::list<TargetRecord> found;
  EXPECT_EQ(
      BarDataReadSyncWrapper::getRecord(std::list<std::string>{}, "N", 3, found, {}, 0, 0).code, 0);
  std::string text;
  for (const TargetRecord& each : found) text += each.target + textOf(each.records) + " ";
  EXPECT_EQ(text, "a3=z b1=x ");
  Record record{9, 9, "as it was"};
  EXPECT_EQ(BarDataReadSyncWrapper::getRecord("b", "N", 0, record, {}, 0, 0).code, 22);
  EXPECT_EQ(record.text, "as it was");
}

TEST(DictionaryService, shouldEndAReadWhenItIsCancelled) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", numbered(0, 2500));
  std::list<Record> records = {{7, 7, "as it was"}};
  int asked = 0;
  const auto read = [&](const BarDataReadSyncWrapper::Cancel& cancelled, int64 wait) {
    return BarDataReadSyncWrapper::getRecords("a", "N", 0, kUnsetTime, records, cancelled, wait, 32)
        .code;
  };
  EXPECT_EQ(read([&] { return ++asked == 2; }, 0), 48);
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(records.front().text, "as it was");
  EXPECT_THROW(read([]() -> bool { throw std::runtime_error("tired"); }, 0), std::runtime_error);
  // No lock is held while the predicate is asked, so it may read itself.
  EXPECT_EQ(read([&] { return readAll("N", "a", 1, 1) != "1=x"; }, 0), 0);
  EXPECT_EQ(records.size(), 2500U);
}

TEST(DictionaryService, shouldEndAReadWhenItsTimeIsOver) {
  int64 steady = 0;
  const std::atomic<bool> cancelled{false};
  const auto nothing = [] {};
  detail::DictionaryService service({false, "", [] { return int64{0}; }, [] { return true; },
                                     [] { return true; }, nothing, nothing, [&] { return steady; },
                                     cancelled});
  service.publish(service.addSource(), {"N", "a", 0, 0, 0, kUnsetTime, numbered(0, 2500)});
  std::list<Record> records = {{7, 7, "as it was"}};
  const auto read = [&](int64 wait) {
    return service
        .readRecords(
            {"N", "a"}, records, [&] { return steady += 5, false; }, wait)
        .code;
  };
  EXPECT_EQ(read(10), -23);
  EXPECT_EQ(records.front().text, "as it was");
  EXPECT_EQ(read(16), 0);
  EXPECT_EQ(records.size(), 2500U);
  EXPECT_EQ(read(0), 0);
}

TEST(DictionaryService, shouldTellWhatIsThere) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "b", {{3, 0, "x"}, {8, 0, "x"}}, 0, 0, 6);
  publish(*publisher, "a", {{5, 0, "x"}});
  publish(*publisher, "gone", {{5, 0, "x"}});
  publish(*publisher, "gone", {{5, 0, {}}}, dictionary::kDeletes);
  std::list<DataDefine> defines;
  EXPECT_EQ(dictionary().dataDefines(defines, {"M", "N"}, 1).code, 0);
  ASSERT_EQ(defines.size(), 1U);
  const DataDefine& define = defines.front();
  EXPECT_EQ(define.text1 + " " + define.text2 + " " + define.text3, "N 3 8");
  EXPECT_EQ(define.value1, 2);
  EXPECT_EQ(define.value2, 3);
  EXPECT_EQ(define.value3, 6);
  std::list<DataBrief> briefs;
  EXPECT_EQ(dictionary().dataBriefs(briefs, {}).code, 0);
  ASSERT_EQ(briefs.size(), 1U);
  EXPECT_EQ(briefs.front().text1 + ": " + briefs.front().text2, "N: 2 targets, 3 records");
  EXPECT_EQ(BDUtil::getTargetByName("N", nullptr, false), (std::list<std::string>{"a", "b"}));
  std::string answer;
  EXPECT_EQ(dictionary().queryOp("names", answer).code, 0);
  EXPECT_EQ(answer, "N\n");
  EXPECT_EQ(dictionary().queryOp("targets N", answer).code, 0);
  EXPECT_EQ(answer, "a\nb\n");
  EXPECT_EQ(dictionary().queryOp("weather", answer).code, 23);
}

TEST(DictionaryService, shouldGoOnWhenACallbackThrows) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  const auto bad = std::make_shared<DataRecorder>();
  const auto good = std::make_shared<DataRecorder>();
  bad->onLine = [](const std::string&) { throw std::bad_alloc(); };
  dictionary().subscribeData(wanting("N", {"a"}), bad, 1);
  dictionary().subscribeData(wanting("N", {"a"}), good, 2);
  publish(*publisher, "a", {{1, 0, "x"}});
  platform->drain();
  publish(*publisher, "a", {{2, 0, "y"}});
  platform->drain();
  EXPECT_EQ(bad->lines().back(), "data#1 N/a 2=y");
  EXPECT_EQ(good->lines().back(), "data#2 N/a 2=y");
}

TEST(DictionaryService, shouldLetGoOfAReceiverWhenItsLastRequestEnded) {
  InstalledPlatform platform;
  auto spi = std::make_shared<DataRecorder>();
  const std::weak_ptr<DataRecorder> kept = spi;
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  dictionary().subscribeSnapshot({{"a", "N"}}, spi, 0);
  platform->drain();
  dictionary().unsubscribeData(1);
  dictionary().unsubscribeAllSnapshots(spi);
  spi.reset();
  platform->drain();
  EXPECT_TRUE(kept.expired());
}

TEST(DictionaryService, shouldEndTheOlderOfTwoRequestsOfOneIdOfAReceiver) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  const auto spi = std::make_shared<DataRecorder>();
  const auto other = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  dictionary().subscribeData(wanting("N", {"b"}), spi, 1);
  dictionary().subscribeData(wanting("N", {"b"}), other, 1);
  platform->drain();
  spi->take();
  other->take();
  publish(*publisher, "a", {{1, 0, "x"}});
  publish(*publisher, "b", {{1, 0, "y"}});
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{"data#1 N/b 1=y"});
  EXPECT_EQ(other->take(), Lines{"data#1 N/b 1=y"});
  dictionary().unsubscribeData(1);
  dictionary().unsubscribeData(1);
  publish(*publisher, "b", {{2, 0, "late"}});
  platform->drain();
  EXPECT_EQ(spi->take(), Lines{});
  EXPECT_EQ(other->take(), Lines{});
}

TEST(DictionaryService, shouldStopAHistoryWhenItsReceiverCancelsInTheMidst) {
  InstalledPlatform platform;
  const auto publisher = makePublisher();
  publish(*publisher, "a", numbered(0, 5000));
  const auto spi = std::make_shared<DataRecorder>();
  spi->onLine = [](const std::string& line) {
    if (line.starts_with("progress")) dictionary().unsubscribeData(1);
  };
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  EXPECT_EQ(spi->take(), (Lines{"data#1 N/a *1000", "progress#1 1000/5000"}));
}

TEST(DictionaryService, shouldDeliverLiveToReceiversOnTheServicesThread) {
  PlatformOptions options;
  options.mode = PlatformOptions::Mode::Live;
  InstalledPlatform platform(options);
  const auto spi = std::make_shared<DataRecorder>();
  dictionary().subscribeData(wanting("N", {"a"}), spi, 1);
  platform->drain();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([i] {
      const auto own = makePublisher();
      for (int k = 0; k < 50; ++k) publish(*own, "a", {{i * 1000 + k, 0, "x"}});
    });
  for (std::thread& each : threads) each.join();
  platform->drain();
  std::list<Record> records;
  BarDataReadSyncWrapper::getRecords("a", "N", 0, kUnsetTime, records, {}, 0, 0);
  EXPECT_EQ(records.size(), 200U);
  Lines seen = spi->take();
  EXPECT_EQ(seen.front(), "data#1 f16");
  EXPECT_EQ(seen.size(), 201U);
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(std::unique(seen.begin(), seen.end()), seen.end());
}

}  // namespace
}  // namespace orvane::testing
