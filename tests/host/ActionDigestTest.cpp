// What a strategy publishes and asks for of dictionaries and accounts stands in its digest.

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <map>

#include "tests/host/Program.h"

namespace orvane {
namespace {

const char* const kActs[] = {"publishRecords",    "publishRecordsOf",
                             "publishQuoteList",  "publishQuoteSeries",
                             "publishQuoteItems", "publishQuoteItems2",
                             "publishOp5",        "publishOp6",
                             "publishOp7",        "publishOp8",
                             "subscribeDic",      "subscribeDicSnapshot",
                             "unsubscribeDic",    "unsubscribeDicSnapshot",
                             "requestRange",      "attachAccount",
                             "detachAccount"};

/// The digests of runs that do each act with one of two values, by act and value.
std::map<std::string, std::string> digests(const test::TempFolder& folder, int threads) {
  QJsonArray runners;
  for (const char* act : kActs)
    for (const char* value : {"a", "bb"})
      runners.append(
          QJsonObject{{"name", QString("%1 %2").arg(act, value)},
                      {"strategy", QString::fromStdString(test::testModule("acting_strategy"))},
                      {"account", "shared"},
                      {"server", true},
                      {"params", QJsonObject{{"act", act}}}});
  const QJsonObject config{{"runners", runners},
                           {"accounts", QJsonArray{QJsonObject{{"name", "shared"}}}},
                           {"threads", threads},
                           {"bars", QJsonArray{QJsonObject{{"code", "A.X"}, {"file", "b.csv"}}}}};
  folder.write("b.csv", test::barsCsv());
  const auto result = test::runProgram(
      {"run", folder.write("run.json", QJsonDocument(config).toJson().toStdString()), "--report",
       folder / "report", "--log-level", "off"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  std::map<std::string, std::string> found;
  const QJsonArray reported = test::readReport(folder / "report")["runners"].toArray();
  for (const auto& runner : reported)
    found[runner.toObject()["name"].toString().toStdString()] =
        runner.toObject()["digest"].toString().toStdString();
  return found;
}

TEST(ActionDigest, shouldDifferWhereAnActionDiffersAndBeTheSameWhereItIsTheSame) {
  const test::TempFolder folder;
  const auto once = digests(folder, 1);
  ASSERT_EQ(once.size(), 2 * std::size(kActs));
  for (const char* act : kActs)
    EXPECT_NE(once.at(std::string(act) + " a"), once.at(std::string(act) + " bb")) << act;
  EXPECT_EQ(digests(folder, 4), once);
}

}  // namespace
}  // namespace orvane
