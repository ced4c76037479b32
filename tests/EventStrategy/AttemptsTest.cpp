#include "EventStrategy/Attempts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace orvane::support {
namespace {

using detail::Attempts;

TEST(Attempts, shouldThrowNothingWhenNoStepThrew) {
  int steps = 0;
  Attempts attempts;
  EXPECT_NO_THROW(attempts.finish());
  attempts.take([&] { ++steps; });
  attempts.take([&] { ++steps; });
  EXPECT_NO_THROW(attempts.finish());
  EXPECT_EQ(steps, 2);
}

TEST(Attempts, shouldTakeEveryStepAndThenThrowWhatTheFirstFailingOneThrew) {
  std::string taken;
  Attempts attempts;
  attempts.take([&] { taken += 'a'; });
  attempts.take([&] {
    taken += 'b';
    throw std::runtime_error("b");
  });
  attempts.take([&] {
    taken += 'c';
    throw 5;
  });
  attempts.take([&] { taken += 'd'; });
  EXPECT_EQ(taken, "abcd");
  std::string thrown;
  try {
    attempts.finish();
  } catch (const std::runtime_error& error) {
    thrown = error.what();
  }
  EXPECT_EQ(thrown, "b");
}

TEST(Attempts, shouldCarryAnythingThatWasThrown) {
  Attempts attempts;
  attempts.take([] { throw 5; });
  EXPECT_THROW(attempts.finish(), int);
}

}  // namespace
}  // namespace orvane::support
