#include "host/StopTeller.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

RunnerStanding standing(const std::string& name, int status, std::uint64_t calls = 0,
                        int inside = RunPulse::kOutside) {
  return {name, status, {}, calls, inside};
}

const int kBars = static_cast<int>(CallKind::BarSeries);

TEST(StopTeller, shouldNameTheRunnersThatDoNotComeOutOfACallback) {
  const std::vector<RunnerStanding> standings = {standing("quick", RunnerRunning, 5, kBars),
                                                 standing("slow", RunnerRunning)};
  EXPECT_EQ(StopTeller::waitingText(standings, standings, 2),
            "stopping for 2 s: \"quick\" is in onBarSeries");
}

TEST(StopTeller, shouldNotTakeARunnerThatComesAlongForOneThatIsHeld) {
  const std::vector<RunnerStanding> before = {standing("quick", RunnerRunning, 5, kBars)};
  const std::vector<RunnerStanding> now = {standing("quick", RunnerRunning, 9, kBars)};
  EXPECT_EQ(StopTeller::waitingText(before, now, 1), "stopping for 1 s: \"quick\" not stopped yet");
}

TEST(StopTeller, shouldNameAFewOfMany) {
  std::vector<RunnerStanding> standings;
  for (const char* name : {"a", "b", "c", "d", "e"})
    standings.push_back(standing(name, RunnerRunning));
  EXPECT_EQ(StopTeller::waitingText({}, standings, 1),
            "stopping for 1 s: \"a\", \"b\", \"c\" and 2 more not stopped yet");
}

TEST(StopTeller, shouldSayWhenOnlyTheWritingLasts) {
  const std::vector<RunnerStanding> standings = {standing("quick", RunnerStopped)};
  EXPECT_EQ(StopTeller::waitingText(standings, standings, 4),
            "stopping for 4 s: the runners have stopped, what they did is written");
}

}  // namespace
}  // namespace orvane
