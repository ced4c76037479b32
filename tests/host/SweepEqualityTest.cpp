// A combination beside many others has the very results that it has alone.

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <map>

#include "host/LogSetup.h"
#include "host/RunConfig.h"
#include "host/sweep/BatchRunner.h"
#include "host/sweep/FigureList.h"
#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

constexpr int64 kDayMs = 86'400'000;
constexpr int64 kFirstDay = 1'609'718'400'000;  // 2021-01-04 00:00 UTC.

/// Bars of a minute over some days, which swing; the same at every run.
std::string swingingBars(int days) {
  std::string text = "datetime,open,high,low,close,volume\n";
  std::uint32_t state = 17;
  int price = 5000;
  const auto shown = [](int ticks) { return fmt::format("{}.{}", ticks / 5, ticks % 5 * 2); };
  for (int day = 4; day < 4 + days; ++day)
    for (int minute = 0; minute < 120; ++minute) {
      state = state * 1'664'525 + 1'013'904'223;
      const int open = price;
      price += static_cast<int>(state >> 24) % 31 - 15;
      text += fmt::format("2021-01-{:02} {:02}:{:02}:00,{},{},{},{},{}\n", day, 9 + minute / 60,
                          minute % 60, shown(open), shown(std::max(open, price) + 3),
                          shown(std::min(open, price) - 3), shown(price), 5 + minute % 7);
    }
  return text;
}

/// Ticks with one level of little volume, so that several who want it would quarrel.
std::string thinTicks() {
  std::string text = "datetime,last,volume,bid1,bidsize1,ask1,asksize1\n";
  for (int i = 0; i < 400; ++i) {
    const int price = 1000 + i * 7 % 23;
    text += fmt::format("2021-01-04 09:{:02}:{:02}.500,{},{},{},{},{},{}\n", i / 60, i % 60, price,
                        1 + i % 3, price - 1, 1 + i % 4, price + 1, 1 + i % 5);
  }
  return text;
}

/// Ticks of which many tell no price at all.
std::string silentTicks() {
  std::string text = "datetime,last,volume\n";
  for (int i = 0; i < 400; ++i) {
    const int price = i % 11 < 6 ? 0 : 1000 + i * 7 % 23 * 10;
    text += fmt::format("2021-01-04 09:{:02}:{:02}.500,{},{}\n", i / 60, i % 60, price,
                        price == 0 ? 0 : 3);
  }
  return text;
}

/// All that happened to a runner, but for the names of things: numbers by their bits.
struct Trace {
  std::vector<std::uint64_t> fills, orders, curve, figures;
  std::string status, message, digest;
};

std::uint64_t bits(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint64_t bits(int64 value) { return static_cast<std::uint64_t>(value); }

Trace traceOf(const RunnerOutcome& outcome) {
  Trace trace;
  trace.status = runnerStatusName(outcome.state.status);
  trace.message = outcome.state.message;
  trace.digest = outcome.digest;
  for (const std::optional<double>& value : figureValues(figuresOf(outcome)))
    trace.figures.insert(trace.figures.end(), {value.has_value(), bits(value.value_or(0))});
  if (!outcome.trading || outcome.trading->orders.empty()) return trace;
  for (const EquityPoint& point : outcome.trading->curve)
    trace.curve.insert(trace.curve.end(),
                       {bits(point.time), bits(point.equity), bits(point.exposure)});
  for (const OrderFill& fill : outcome.trading->fills) {
    const FillView view(fill);
    trace.fills.insert(trace.fills.end(),
                       {bits(view.time()), static_cast<std::uint64_t>(view.direction()),
                        static_cast<std::uint64_t>(view.offset()), bits(view.price()),
                        bits(view.volume()), bits(view.fee()), bits(view.profit()),
                        bits(view.turnover()), static_cast<std::uint64_t>(fill.code.id)});
  }
  for (const Order& order : outcome.trading->orders) {
    const OrderView view(order);
    trace.orders.insert(trace.orders.end(),
                        {bits(view.insertTime()), bits(view.updateTime()),
                         static_cast<std::uint64_t>(view.status()), bits(view.volume()),
                         bits(view.filledVolume()), bits(view.meanFillPrice())});
  }
  return trace;
}

class SweepEquality : public testing::Test {
 protected:
  void SetUp() override { setUpLog({{}, "off", "off"}); }

  /// A sweep of the test's strategy over a file.
  SweepPlan planOf(const std::vector<std::string>& grid, const QJsonObject& params,
                   const std::string& ticks = {}) {
    const bool isTicks = !ticks.empty();
    SweepPlan plan{{}, ParameterSpace(grid, "--grid"), {}, 0, {}, 0};
    for (std::uint64_t i = 0; i < plan.space.size(); ++i) plan.numbers.push_back(i);
    RunnerPlan runner;
    runner.name = "swept";
    runner.strategy = runner.modulePath = test::testModule("swept_strategy");
    runner.params = params;
    plan.run.runners.push_back(runner);
    DataInput input;
    input.kind = isTicks ? DataFileRequest::Kind::Ticks : DataFileRequest::Kind::Bars;
    input.code = "A.X";
    input.paths = {isTicks ? folder_.write("ticks.csv", ticks)
                           : folder_.write("bars.csv", swingingBars(4))};
    plan.run.data.push_back(input);
    plan.run.trade.feeRate = "0.0001";
    plan.run.startBalance = "50000";
    plan.run.places["startBalance"] = "--capital";
    return plan;
  }

  /// The same combination as `orvane run` would play it.
  Trace alone(const SweepPlan& sweep, std::uint64_t number, const std::optional<TimeSpan>& span) {
    RunPlan plan = sweep.run;
    // The account is named like the runner, and the strategy is told so.
    plan.runners.front().name += fmt::format("-{}", number + 1);
    plan.runners.front().params = sweep.space.paramsOf(sweep.run.runners.front().params, number);
    if (span) {
      plan.from = fmt::format("2021-01-{:02}", 4 + (span->begin - kFirstDay) / kDayMs);
      plan.to = fmt::format("2021-01-{:02}", 4 + (span->end - kFirstDay) / kDayMs);
    }
    completeRunners(plan, "--strategy");
    const RunOutcome outcome =
        runSession(plan, loadDataSet(plan, {}), interrupts_, progress_, [] {});
    EXPECT_TRUE(outcome.failures.empty());
    RunnerOutcome runner = outcome.runners.front();
    // Who never traded is judged by the account.
    if (!runner.trading) {
      SourceResult nothing;
      nothing.curve = outcome.accounts->front().curve;
      runner.trading = std::make_shared<const SourceResult>(std::move(nothing));
    }
    return traceOf(runner);
  }

  /// Runs all combinations at once and each alone, and answers the traces.
  std::vector<Trace> expectEqual(const SweepPlan& plan,
                                 const std::optional<TimeSpan>& span = std::nullopt) {
    std::vector<Trace> traces;
    BatchRunner runner(plan, loadDataSet(plan.run, {}), progress_);
    EXPECT_TRUE(runner.run(plan.numbers, span, interrupts_,
                           [&](std::uint64_t number, const RunnerOutcome& outcome) {
                             EXPECT_EQ(number, plan.numbers[traces.size()]);
                             traces.push_back(traceOf(outcome));
                           }));
    EXPECT_EQ(traces.size(), plan.numbers.size());
    for (std::size_t i = 0; i < traces.size(); ++i) {
      const Trace single = alone(plan, plan.numbers[i], span);
      const std::string which = testing::PrintToString(plan.space.textsOf(plan.numbers[i]));
      EXPECT_EQ(traces[i].fills, single.fills) << which;
      EXPECT_EQ(traces[i].orders, single.orders) << which;
      EXPECT_EQ(traces[i].curve, single.curve) << which;
      EXPECT_EQ(traces[i].figures, single.figures) << which;
      EXPECT_EQ(traces[i].digest, single.digest) << which;
      EXPECT_EQ(traces[i].status + traces[i].message, single.status + single.message) << which;
      EXPECT_EQ(traces[i].digest.size(), 32);
    }
    return traces;
  }

  const test::TempFolder folder_;
  InterruptWatcher interrupts_;
  ProgressLine progress_;
};

TEST_F(SweepEquality, shouldHaveEveryFillPointAndFigureOfBarsThatARunHasAlone) {
  const auto traces = expectEqual(planOf({"every=3:9:2", "volume=1:3:1", "limit=false,true"}, {}));
  for (const Trace& trace : traces) EXPECT_GT(trace.fills.size(), 9 * 10) << "too little trades";
  EXPECT_NE(traces.front().fills, traces.back().fills);
}

TEST_F(SweepEquality, shouldHaveTheSameInAWindowThatHasHistoryBeforeIt) {
  const TimeSpan span{kFirstDay + kDayMs, kFirstDay + 3 * kDayMs};
  const auto traces = expectEqual(planOf({"every=3:11:1"}, {}), span);
  EXPECT_NE(traces.front().curve, traces.back().curve);
  EXPECT_EQ(traces.front().curve.front(), bits(span.begin));
}

TEST_F(SweepEquality, shouldGiveEachTheWholeVolumeOfThinTicks) {
  const auto traces = expectEqual(planOf({"every=3:8:1", "volume=2,5"}, {}, thinTicks()));
  for (const Trace& trace : traces) EXPECT_GT(trace.fills.size(), 9 * 10) << "too little trades";
  expectEqual(planOf({"every=3:8:1", "volume=2,5"}, {{"limit", true}}, thinTicks()));
}

TEST_F(SweepEquality, shouldReckonWithTheSamePricesWhereTicksTellNone) {
  SweepPlan plan = planOf({"every=3:9:1", "volume=2:6:1"}, {}, silentTicks());
  plan.run.trade.marginRate = "1";
  plan.run.startBalance = "5000";
  const auto traces = expectEqual(plan);
  EXPECT_GT(traces.front().fills.size(), 0);
  EXPECT_NE(traces.front().orders, traces.back().orders);
}

TEST_F(SweepEquality, shouldEndEachRunWhereItEndsAloneThoughOthersGoOn) {
  const auto traces =
      expectEqual(planOf({"every=5,8", "quit=0,33,44", "fail=0,30", "refuse=false,true"}, {}));
  std::map<std::string, int> statuses;
  for (const Trace& trace : traces) ++statuses[trace.status];
  EXPECT_EQ(statuses, (std::map<std::string, int>{{"Stopped", 2}, {"Finished", 4}, {"Error", 18}}));
  EXPECT_EQ(traces[1].message, "不要 \"these\", no");
}

TEST_F(SweepEquality, shouldLetNobodyHearWhatAnotherPublishes) {
  const auto traces = expectEqual(planOf({"every=4:7:1"}, {{"talk", true}}));
  for (const Trace& trace : traces) EXPECT_GT(trace.fills.size(), 9 * 10) << "it heard somebody";
}

TEST_F(SweepEquality, shouldLetNobodyCountTheAccountsOfOthers) {
  const auto traces = expectEqual(planOf({"every=4:7:1"}, {{"shy", true}}));
  for (const Trace& trace : traces) EXPECT_GT(trace.fills.size(), 9 * 10) << "it saw somebody";
}

TEST_F(SweepEquality, shouldNotReadTheDataAgainNorCopyIt) {
  const SweepPlan plan = planOf({"every=3,4"}, {});
  const DataSet data = loadDataSet(plan.run, {});
  const DataSet shared = data.shared();
  EXPECT_EQ(shared.bars.front().series.bars.data(), data.bars.front().series.bars.data());
  EXPECT_EQ(shared.summaries().front().records, data.records());
  EXPECT_EQ(shared.summaries().front().origin, data.summaries().front().origin);
}

}  // namespace
}  // namespace orvane
