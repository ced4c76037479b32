#include "platform/market/files/FileNames.h"

#include <gtest/gtest.h>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Description.h"

namespace orvane::detail {
namespace {

TEST(FileNames, shouldCutTheCodeBeforeDatesPeriodsAndKinds) {
  const std::pair<const char*, const char*> kCases[] = {
      {"/data/spy_20131007_1min_trade.csv", "SPY"},
      {"es_201312_20131006_1min_quote.csv.gz", "ES_201312"},
      {"cffex_if_hot_2010_2022_5min.csv.gz", "CFFEX_IF_HOT"},
      {"btcusd_coinbase_2014_2018_day.csv", "BTCUSD_COINBASE"},
      {"BTCUSDT-1m-2024-01.csv", "BTCUSDT"},
      {"EURUSD_M5.csv", "EURUSD"},
      {"600000.SH.csv", "600000.SH"},
      {"CFFEX.IF.HOT_d.csv", "CFFEX.IF.HOT"},
      {"RM705-2017-03-20.csv", "RM705"},
      {"m5.csv", "M5"},
      {"day.csv", "DAY"},
      {"aapl.csv", "AAPL"},
      {"/data/spy/20131007_trade.csv", "SPY"},
      {"20131007_trade.csv", "20131007_TRADE"},
      {".csv", "CSV"},
  };
  for (const auto& [path, code] : kCases) EXPECT_EQ(codeFromFileName(path), code) << path;
}

TEST(FileNames, shouldFindPeriodAndDateWhereverTheyStand) {
  EXPECT_EQ(factsOfFileName("es_201312_20131006_1min_quote.csv").periodMs, 60'000);
  EXPECT_EQ(numberOfDay(*factsOfFileName("es_201312_20131006_1min_quote.csv").day), 20131006);
  EXPECT_EQ(numberOfDay(*factsOfFileName("RM705-2017-03-20.csv").day), 20170320);
  EXPECT_EQ(factsOfFileName("x_5sec.csv").periodMs, 5000);
  EXPECT_EQ(factsOfFileName("x_daily.csv").periodMs, kDayMs);
  EXPECT_EQ(factsOfFileName("x_20131399.csv").day, std::nullopt);
  EXPECT_EQ(factsOfFileName("x_201310061.csv").day, std::nullopt);
  EXPECT_EQ(factsOfFileName("m1_x.csv").periodMs, 0);
}

}  // namespace
}  // namespace orvane::detail
