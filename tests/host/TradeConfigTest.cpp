// What a configuration says of accounts, limits and the exchange.

#include "host/TradeConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

RunPlan planOf(const std::string& keys) {
  const test::TempFolder folder;
  RunPlan plan;
  readRunConfig(folder.write("run.json", R"({"runners": [{"strategy": "sma_cross", "name": "one"},
      {"strategy": "sma_cross", "name": "two", "orderSource": "desk"}], "bars": "a.csv", )" +
                                             keys + "}"),
                plan);
  for (RunnerPlan& runner : plan.runners) runner.modulePath = "sma_cross.so";
  completeTrade(plan, "run.json");
  return plan;
}

std::string faultOf(const std::string& keys) {
  try {
    tradeOptions(planOf(keys), "UTC");
  } catch (const InputError& error) {
    return error.what();
  }
  return "no error";
}

TEST(TradeConfig, shouldGiveEachRunnerAnAccountOfItsOwn) {
  const RunPlan plan = planOf(R"("capital": "50000")");
  const TradeOptions options = tradeOptions(plan, "UTC");
  ASSERT_EQ(options.accounts.size(), 2u);
  EXPECT_EQ(options.accounts[0].name, "one");
  EXPECT_EQ(options.accounts[1].name, "two");
  EXPECT_EQ(options.accounts[1].startBalance, "50000");
  EXPECT_EQ(plan.runners[0].orderSource, "one");
  EXPECT_EQ(options.sources, (std::vector<std::string>{"one", "desk"}));
}

TEST(TradeConfig, shouldGiveTheCapitalToEachAccountWithoutABalanceOfItsOwn) {
  const RunPlan plan = planOf(
      R"("capital": "70", "accounts": [{"name": "one"}, {"name": "two", "startBalance": 5}])");
  const TradeOptions options = tradeOptions(plan, "UTC");
  ASSERT_EQ(options.accounts.size(), 2u);
  EXPECT_EQ(options.accounts[0].startBalance, "70");
  EXPECT_EQ(options.accounts[1].startBalance, "5");
}

TEST(TradeConfig, shouldLetRunnersShareAnAccount) {
  const test::TempFolder folder;
  RunPlan plan;
  readRunConfig(folder.write("run.json", R"({"runners": [
      {"strategy": "s", "name": "one", "account": "A",
       "limits": {"maxOrder": 5, "maxLoss": "10.5"}},
      {"strategy": "s", "name": "two", "account": "A"}], "bars": "a.csv",
      "accounts": [{"name": "A", "currency": "CNY", "startBalance": 1000.5, "counterType": 2}]})"),
                plan);
  completeTrade(plan, "run.json");
  const TradeOptions options = tradeOptions(plan, "UTC");
  ASSERT_EQ(options.accounts.size(), 1u);
  EXPECT_EQ(options.accounts[0].currency, "CNY");
  EXPECT_EQ(options.accounts[0].startBalance, "1000.5");
  EXPECT_EQ(options.accounts[0].counterType, 2);
  ASSERT_EQ(options.limits.size(), 2u);
  EXPECT_EQ(options.limits[0].source, "one");
  EXPECT_EQ(options.limits[0].maxOrder, "5");
  EXPECT_EQ(options.limits[0].maxLoss, "10.5");
  EXPECT_EQ(options.limits[1].maxOrder, "");
}

TEST(TradeConfig, shouldReadTheExchange) {
  const TradeOptions options =
      tradeOptions(planOf(R"("trade": {"entryLatencyMs": 5, "reportLatencyMs": 7, "slippage": 0.2,
      "slippageTicks": 3, "marginRate": "0.1", "feePerLot": 1.5, "feeRate": "0.0001",
      "barVolumeShare": 0.25, "limitFill": "touch", "queue": "front", "dailySettlement": true,
      "rejectOutsideSessions": true,
      "connection": [{"account": "two", "time": "2021-01-04 10:00", "up": false}]})"),
                   "Asia/Shanghai");
  EXPECT_EQ(options.entryLatencyMs, 5);
  EXPECT_EQ(options.reportLatencyMs, 7);
  EXPECT_EQ(options.slippage, "0.2");
  EXPECT_EQ(options.slippageTicks, 3);
  EXPECT_EQ(options.marginRate, "0.1");
  EXPECT_EQ(options.feePerLot, "1.5");
  EXPECT_EQ(options.feeRate, "0.0001");
  EXPECT_EQ(options.barVolumeShare, "0.25");
  EXPECT_EQ(options.limitFill, TradeOptions::LimitFill::Touch);
  EXPECT_EQ(options.queue, TradeOptions::Queue::Front);
  EXPECT_TRUE(options.settlesDaily);
  EXPECT_TRUE(options.rejectsOutsideSessions);
  ASSERT_EQ(options.script.size(), 1u);
  EXPECT_EQ(options.script[0].account, "two");
  EXPECT_EQ(options.script[0].time, 1'609'725'600'000);
  EXPECT_FALSE(options.script[0].isUp);
}

TEST(TradeConfig, shouldRefuseAnOrderSourceThatIsAnotherRunnersAlready) {
  // Limits and figures are of a source: the second runner's would hide those of the first.
  const auto faultOfRunners = [](const std::string& runners) {
    try {
      const test::TempFolder folder;
      RunPlan plan;
      readRunConfig(folder.write("run.json", R"({"bars": "a.csv", "runners": [)" + runners + "]}"),
                    plan);
      completeTrade(plan, "run.json");
    } catch (const InputError& error) {
      return std::string(error.what());
    }
    return std::string("none");
  };
  EXPECT_THAT(faultOfRunners(R"({"strategy": "a", "name": "one", "orderSource": "S"},
                                {"strategy": "a", "name": "two", "orderSource": "S"})"),
              HasSubstr("runners[1]: orderSource: \"S\" is that of the runner \"one\" already"));
  EXPECT_THAT(faultOfRunners(R"({"strategy": "a", "name": "one", "orderSource": "two"},
                                {"strategy": "a", "name": "two"})"),
              HasSubstr("runners[1]: orderSource: \"two\" is that of the runner \"one\" already"));
  EXPECT_EQ(faultOfRunners(R"({"strategy": "a", "name": "one", "orderSource": "two"},
                              {"strategy": "a", "name": "two", "orderSource": "one"})"),
            "none");
}

TEST(TradeConfig, shouldNameThePlaceAndTheValueOfWhatIsWrong) {
  EXPECT_THAT(faultOf(R"("accounts": [{"name": "A"}, {"name": "A"}])"),
              HasSubstr("accounts[1].name: two accounts are named \"A\""));
  EXPECT_THAT(faultOf(R"("accounts": [{"name": "A", "currency": "QQQ"}])"), HasSubstr("currency"));
  EXPECT_THAT(faultOf(R"("accounts": [{"currency": "CNY"}])"), HasSubstr("accounts[0].name"));
  EXPECT_THAT(faultOf(R"("trade": {"limitFill": "never"})"),
              HasSubstr("must be \"through\" or \"touch\""));
  EXPECT_THAT(faultOf(R"("trade": {"latency": 3})"), HasSubstr("latency"));
  EXPECT_THAT(faultOf(R"("trade": {"entryLatencyMs": -3})"), HasSubstr("entryLatencyMs"));
  EXPECT_THAT(
      faultOf(R"("trade": {"connection": [{"account": "x", "time": "2021-01-04", "up": true}]})"),
      HasSubstr("connection[0].account: there is no account \"x\""));
  EXPECT_THAT(
      faultOf(R"("trade": {"connection": [{"account": "one", "time": "soon", "up": true}]})"),
      HasSubstr("connection[0].time"));
}

}  // namespace
}  // namespace orvane
