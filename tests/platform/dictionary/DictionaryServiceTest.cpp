// Publications, subscriptions and reads of the dictionary, driven by its interfaces.

#include "platform/dictionary/DictionaryService.h"

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

}  // namespace
}  // namespace orvane::testing
