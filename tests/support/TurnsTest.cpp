#include "tests/support/Turns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Shrink.h"

namespace orvane::support {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Names the threads of a list, one after the other, and then nobody.
Turns::Choose inOrder(std::vector<int> order) {
  return [order = std::move(order), at = std::size_t{0}]() mutable {
    return at < order.size() ? order[at++] : Turns::kNobody;
  };
}

TEST(TurnsTest, shouldLetTheThreadsActInTheOrderThatWasChosen) {
  Turns turns(3);
  std::vector<int> seen;
  turns.run(inOrder({2, 0, 0, 1, 2}), [&](int index) {
    EXPECT_EQ(Turns::current(), index);
    seen.push_back(index);
  });
  EXPECT_THAT(seen, ElementsAre(2, 0, 0, 1, 2));
  EXPECT_EQ(Turns::current(), Turns::kNobody);
}

TEST(TurnsTest, shouldGoOnWhereTheTurnWasHandedOverWhenItComesBack) {
  Turns turns(2);
  std::string seen;
  turns.run(inOrder({0, 1, 0, 0, 1}), [&](int index) {
    seen += index == 0 ? "a" : "x";
    turns.handOver();
    seen += index == 0 ? "b" : "y";
  });
  // The first thread acts twice, and both times its turn comes back once.
  EXPECT_EQ(seen, "axbay");
  seen.clear();
  turns.run(inOrder({0}), [&](int) { seen += "late"; });
  EXPECT_EQ(seen, "b");
}

TEST(TurnsTest, shouldRunAgainWithOtherDeeds) {
  Turns turns(1);
  int count = 0;
  for (int run = 0; run < 3; ++run) turns.run(inOrder({0, 0}), [&](int) { ++count; });
  EXPECT_EQ(count, 6);
}

TEST(TurnsTest, shouldEndWithoutAnyRun) { const Turns turns(4); }

TEST(ShrinkTest, shouldLeaveTheStepsThatTheFailureNeeds) {
  std::vector<int> steps;
  for (int i = 0; i < 100; ++i) steps.push_back(i);
  const auto needs = [](const std::vector<int>& some) {
    return std::ranges::count(some, 17) > 0 && std::ranges::count(some, 80) > 0;
  };
  EXPECT_THAT(shrunken<int>(steps, needs), ElementsAre(17, 80));
}

TEST(ShrinkTest, shouldLeaveNothingWhenEverythingFails) {
  EXPECT_THAT(shrunken<int>({1, 2, 3}, [](const std::vector<int>&) { return true; }), IsEmpty());
}

TEST(ShrinkTest, shouldGiveUpAfterSoManyTries) {
  int tries = 0;
  const std::vector<int> steps(64, 1);
  const auto never = [&](const std::vector<int>&) {
    ++tries;
    return false;
  };
  EXPECT_EQ(shrunken<int>(steps, never, 10), steps);
  EXPECT_EQ(tries, 10);
}

}  // namespace
}  // namespace orvane::support
