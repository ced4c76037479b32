// A server that publishes and a runner that reads, from one configuration.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The server among the examples and its reader, as their configuration has them.
class PublishAndRead : public testing::Test {
 protected:
  test::ProgramResult run(std::vector<std::string> more = {}) {
    std::vector<std::string> all = {"run", ORVANE_TEST_EXAMPLES "/publish_and_read/run.json",
                                    "--report", folder_ / "report"};
    all.insert(all.end(), more.begin(), more.end());
    return test::runProgram(all);
  }

  QJsonObject runner(int at) const {
    return test::readReport(folder_ / "report")["runners"].toArray()[at].toObject();
  }

  const test::TempFolder folder_;
};

TEST_F(PublishAndRead, shouldHandEveryRecordAndQuoteFromTheServerToTheReader) {
  const auto result = run();
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  // Sixty bars, of which the first four give no mean of five.
  const QJsonObject published = runner(0)["published"].toObject();
  EXPECT_EQ(published["records"].toObject()["live"].toInt(), 56) << result.err;
  EXPECT_EQ(published["records"].toObject()["history"].toInt(), 0);
  EXPECT_EQ(published["quotes"].toObject()["live"].toInt(), 56) << result.err;
  EXPECT_EQ(published["quotes"].toObject()["refused"].toInt(), 0);
  const QJsonObject received = runner(1)["records"].toArray()[0].toObject();
  EXPECT_EQ(received["dictionary"].toString(), "means");
  EXPECT_EQ(received["target"].toString(), "A.X");
  EXPECT_EQ(received["records"].toInt(), 56);
  EXPECT_EQ(received["firstKey"].toInteger(), 1'609'724'100'000) << "09:35 in Shanghai";
  EXPECT_EQ(received["lastKey"].toInteger(), 1'609'727'400'000);
  EXPECT_EQ(runner(1)["env"].toObject()["quotes"].toString(), "56");
  EXPECT_NEAR(runner(1)["env"].toObject()["last"].toString().toDouble(), 104.68, 1e-9);
  EXPECT_TRUE(runner(0)["server"].toBool());
  EXPECT_FALSE(runner(1)["server"].toBool());
  EXPECT_TRUE(runner(1)["published"].isNull());
}

TEST_F(PublishAndRead, shouldShowTheStatisticsOfTheServerAloneInTheSummary) {
  const auto result = run();
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_THAT(result.out,
              HasSubstr("QtReal:56, QtHist:0, DtReal:      56, DtHist:      0, PubQue:"));
  const auto reader = result.out.find("runner reader");
  ASSERT_NE(reader, std::string::npos);
  EXPECT_THAT(result.out.substr(reader), Not(HasSubstr("QtReal")));
  EXPECT_THAT(result.out.substr(reader), HasSubstr("56 records of means A.X"));
}

TEST_F(PublishAndRead, shouldGiveTheSameDigestsWithAnyNumberOfThreads) {
  ASSERT_EQ(run({"--threads", "1"}).exitCode, kExitSuccess);
  const QJsonValue server = runner(0)["digest"], reader = runner(1)["digest"];
  EXPECT_EQ(reader.toString().size(), 32);
  for (const char* threads : {"2", "8"}) {
    ASSERT_EQ(run({"--threads", threads}).exitCode, kExitSuccess);
    EXPECT_EQ(runner(0)["digest"], server) << threads;
    EXPECT_EQ(runner(1)["digest"], reader) << threads;
  }
}

TEST_F(PublishAndRead, shouldKeepWhatWasPublishedInTheDictionaryForTheNextRun) {
  const std::string dictionary = folder_ / "dictionary.db";
  ASSERT_EQ(run({"--dictionary", dictionary}).exitCode, kExitSuccess);
  const auto bars = folder_.write("bars.csv", test::barsCsv());
  const auto result =
      test::runProgram({"run", "-s", "dic_reader", "-b", "A.X=" + bars, "--dictionary", dictionary,
                        "--from", "2021-01-05", "--report", folder_ / "report"});
  ASSERT_EQ(result.exitCode, kExitSuccess) << result.err;
  EXPECT_EQ(runner(0)["env"].toObject()["records"].toString(), "56");
}

}  // namespace
}  // namespace orvane
