// What report.html is made of. What it does in a browser is tested in tests/page.

#include "host/ReportPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <cmath>

#include "host/PageData.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The text of an element of JSON in a page.
std::string element(const std::string& page, const std::string& id) {
  const std::string tag = "<script type=\"application/json\" id=\"" + id + "\">";
  const std::size_t begin = page.find(tag);
  if (begin == std::string::npos) return {};
  const std::size_t from = begin + tag.size();
  return page.substr(from, page.find("</script>", from) - from);
}

QJsonObject jsonOf(const std::string& text) {
  return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

class ReportPage : public testing::Test {
 protected:
  /// The page of a run of the command.
  std::string pageOf(const std::vector<std::string>& arguments, const std::string& name = "out") {
    std::vector<std::string> all = {"run", "-q",       "--strategy-log-level",
                                    "off", "--report", folder_ / name};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const auto result = test::runProgram(all);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return test::readFile(folder_ / (name + "/report.html"));
  }

  std::vector<std::string> crossing() const {
    return {"-s", "sma_cross", "-p", R"({"fast": 2, "slow": 4})", "-b", "A.X=" + bars_};
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
};

TEST_F(ReportPage, shouldHoldTheCandlesThatTheRunnerReceived) {
  const QJsonObject data = jsonOf(element(pageOf(crossing()), "data"));
  ASSERT_EQ(data["series"].toArray().size(), 1);
  const QJsonObject series = data["series"].toArray()[0].toObject();
  EXPECT_EQ(series["code"].toString(), "A.X");
  EXPECT_EQ(series["records"].toInt(), 30);
  EXPECT_EQ(series["widthMs"].toInt(), 0);
  const QJsonObject candles = series["candles"].toObject();
  ASSERT_EQ(candles["time"].toArray().size(), 30);
  EXPECT_EQ(candles["time"].toArray()[1].toInt(), 60'000);
  EXPECT_EQ(candles["open"].toArray()[0].toDouble(), 10.1);
  EXPECT_EQ(candles["high"].toArray()[29].toDouble(), 11.5);
  EXPECT_EQ(candles["low"].toArray()[29].toDouble(), 9.5);
  EXPECT_EQ(candles["close"].toArray()[29].toDouble(), 10.1);
  EXPECT_EQ(candles["volume"].toArray()[3].toDouble(), 100);
}

TEST_F(ReportPage, shouldHoldTheTradesAndTheEquityOfTheReport) {
  const QJsonObject data = jsonOf(element(pageOf(crossing()), "data"));
  const QJsonObject report = test::readReport(folder_ / "out");
  const QJsonObject reported = report["runners"].toArray()[0].toObject()["trading"].toObject();
  const QJsonObject trading = data["entries"].toArray()[0].toObject()["trading"].toObject();
  EXPECT_EQ(trading["figures"], reported["figures"]);
  const QJsonObject trades = trading["trades"].toObject();
  const QJsonArray list = reported["trades"].toArray();
  ASSERT_GT(list.size(), 3);
  ASSERT_EQ(trades["price"].toArray().size(), list.size());
  for (qsizetype i = 0; i < list.size(); ++i) {
    const QJsonObject trade = list[i].toObject();
    for (const char* name : {"price", "volume", "fee", "profit", "order", "offset"})
      EXPECT_EQ(trades[name].toArray()[i], trade[name]) << name;
    EXPECT_EQ(trades["isBuy"].toArray()[i].toInt(), trade["side"].toString() == "buy" ? 1 : 0);
  }
  EXPECT_EQ(trading["equity"].toObject()["equity"].toArray(),
            reported["equity"].toObject()["equity"].toArray());
  EXPECT_EQ(trading["orders"].toObject()["count"].toInt(), reported["orders"].toArray().size());
  ASSERT_EQ(trading["months"].toArray().size(), 1);
  EXPECT_NEAR(trading["months"].toArray()[0].toArray()[2].toDouble(),
              reported["figures"].toObject()["return"].toDouble(), 1e-12);
}

TEST_F(ReportPage, shouldTellWhyAShortRunHasNoFiguresOfAYear) {
  const std::string out = folder_ / "short";
  std::vector<std::string> arguments = crossing();
  arguments.insert(arguments.begin(), "run");
  arguments.insert(arguments.end(), {"--strategy-log-level", "off", "--report", out});
  const auto result = test::runProgram(arguments);
  EXPECT_THAT(result.out, HasSubstr("annual, sharpe and sortino take 28 calendar days\n"));
  const QJsonObject runner = test::readReport(out)["runners"].toArray()[0].toObject();
  const QJsonObject figures = runner["trading"].toObject()["figures"].toObject();
  EXPECT_LT(figures["days"].toDouble(), 1);
  EXPECT_TRUE(figures["annualReturn"].isNull());
  EXPECT_TRUE(figures["annualVolatility"].isNull());
  EXPECT_EQ(figures["annualNote"].toString(),
            "less than a calendar day is too little for a figure of a year, which takes 28");
}

TEST_F(ReportPage, shouldNameNoCurrencyWhereNoneIsGiven) {
  pageOf(crossing());
  const QJsonObject report = test::readReport(folder_ / "out");
  EXPECT_TRUE(report["accounts"].toArray()[0].toObject()["currency"].isNull());
  EXPECT_TRUE(report["total"].toObject()["currency"].isNull());
  const QJsonObject config{
      {"runners", QJsonArray{QJsonObject{{"strategy", "sma_cross"}, {"account", "A"}}}},
      {"accounts", QJsonArray{QJsonObject{{"name", "A"}, {"currency", "CNY"}}}},
      {"bars", QJsonArray{QJsonObject{{"file", QString::fromStdString(bars_)}, {"code", "A.X"}}}}};
  pageOf({folder_.write("named.json", QJsonDocument(config).toJson().toStdString())}, "named");
  const QJsonObject named = test::readReport(folder_ / "named");
  EXPECT_EQ(named["accounts"].toArray()[0].toObject()["currency"].toString(), "CNY");
  EXPECT_EQ(named["total"].toObject()["currency"].toString(), "CNY");
}

TEST_F(ReportPage, shouldShareASeriesAmongTheRunnersThatReceivedIt) {
  const QJsonObject config{
      {"runners", QJsonArray{QJsonObject{{"name", "a"}, {"strategy", "sma_cross"}},
                             QJsonObject{{"name", "b"}, {"strategy", "sma_cross"}}}},
      {"bars", QJsonArray{QJsonObject{{"file", QString::fromStdString(bars_)}, {"code", "A.X"}}}}};
  const std::string file = folder_.write("run.json", QJsonDocument(config).toJson().toStdString());
  const QJsonObject data = jsonOf(element(pageOf({file}), "data"));
  EXPECT_EQ(data["series"].toArray().size(), 1);
  ASSERT_EQ(data["entries"].toArray().size(), 2);
  for (const auto& entry : data["entries"].toArray())
    EXPECT_EQ(entry.toObject()["series"].toArray(), QJsonArray{0});
}

TEST_F(ReportPage, shouldTellTheHashesOfTheDataInPageAndReport) {
  const QJsonObject data = jsonOf(element(pageOf(crossing()), "data"));
  const QJsonArray hashes = data["data"].toArray()[0].toObject()["hashes"].toArray();
  EXPECT_EQ(hashes,
            test::readReport(folder_ / "out")["data"].toArray()[0].toObject()["hashes"].toArray());
  ASSERT_EQ(hashes.size(), 1);
  const QJsonObject hash = hashes[0].toObject();
  EXPECT_EQ(hash["file"].toString().toStdString(), bars_);
  EXPECT_EQ(hash["bytes"].toInt(), static_cast<int>(test::barsCsv().size()));
  EXPECT_EQ(hash["xxh3"].toString().size(), 32);
}

TEST_F(ReportPage, shouldBeTheSameTwiceButForTheElementOfItsTimings) {
  const auto untimed = [](std::string page) {
    const std::string timing = element(page, "timing");
    EXPECT_TRUE(jsonOf(timing).contains("elapsedSeconds"));
    page.replace(page.find(timing), timing.size(), "");
    return page;
  };
  EXPECT_EQ(untimed(pageOf(crossing(), "one")), untimed(pageOf(crossing(), "other")));
}

TEST_F(ReportPage, shouldReferToNothingOutsideItself) {
  std::string page = pageOf(crossing());
  EXPECT_THAT(page, HasSubstr("default-src 'none'"));
  // Outside of scripts, no element leads or loads anything from anywhere.
  const std::string begin = "<script>", end = "</script>";
  for (std::size_t at = 0; (at = page.find(begin)) != std::string::npos;)
    page.erase(at, page.find(end, at) + end.size() - at);
  for (const char* way : {"src=", "href=", "<link", "<iframe", "<object", "<embed", "@import",
                          "url(", "http-equiv=\"refresh"})
    EXPECT_THAT(page, Not(HasSubstr(way)));
}

TEST_F(ReportPage, shouldNotLetATextOfTheRunEndItsElement) {
  std::vector<std::string> arguments = crossing();
  arguments.insert(arguments.end(), {"--name", "</script><b>&<!--"});
  const std::string page = pageOf(arguments);
  EXPECT_EQ(page.find("</script><b>"), std::string::npos);
  EXPECT_EQ(jsonOf(element(page, "data"))["entries"].toArray()[0].toObject()["name"].toString(),
            "</script><b>&<!--");
}

TEST_F(ReportPage, shouldTellWhatTheLibraryOfItsChartsAsksFor) {
  const std::string page = pageOf(crossing());
  EXPECT_THAT(page, HasSubstr("Licensed under Apache License 2.0"));
  EXPECT_THAT(page, HasSubstr("attributionLogo: true"));
}

TEST(PageData, shouldKeepEveryPeakAndTroughOfACurveThatItThins) {
  EquityPoints curve;
  for (int i = 0; i < 10'000; ++i)
    curve.push_back({i * 1000, 100 + std::sin(i / 50.0) * (i % 97), 0});
  curve[4321].equity = -500;
  curve[7654].equity = 900;
  const auto thin = thinnedCurve(curve, 500);
  EXPECT_LE(thin.size(), 502u);
  EXPECT_GT(thin.size(), 250u);
  EXPECT_EQ(thin.front().time, 0);
  EXPECT_EQ(thin.back().time, 9'999'000);
  EXPECT_TRUE(std::ranges::is_sorted(thin, std::less_equal<>{}, &EquityPoint::time));
  const auto [low, high] = std::ranges::minmax_element(thin, {}, &EquityPoint::equity);
  EXPECT_EQ(low->time, 4'321'000);
  EXPECT_EQ(high->time, 7'654'000);
}

TEST(PageData, shouldLeaveAShortCurveAsItIs) {
  const EquityCurve curve = {{1, 5, 0}, {2, 4, 0}, {3, 6, 0}};
  EXPECT_EQ(thinnedCurve(curve, 3).size(), 3u);
  EXPECT_TRUE(thinnedCurve({}, 500).empty());
}

}  // namespace
}  // namespace orvane
