#include "platform/core/StallWatch.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

constexpr int kLooks = 3;

class StallWatches : public ::testing::Test {
 protected:
  /// How many looks it takes until they stand still; 0 if more than ten.
  int looksUntilStill() {
    for (int look = 1; look <= 10; ++look)
      if (watch.look()) return look;
    return 0;
  }
  QuietSignal signal;
  StallWatch watch{signal, kLooks};
};

TEST_F(StallWatches, shouldNeverSeeThoseStandStillWhoHaveNothingToDo) {
  EXPECT_EQ(looksUntilStill(), 0);
}

TEST_F(StallWatches, shouldSeeItOnceNothingMovedForSoManyLooks) {
  signal.addWork();
  EXPECT_EQ(looksUntilStill(), 1 + kLooks);  // The first one sees that something moved.
  EXPECT_EQ(looksUntilStill(), kLooks);
}

TEST_F(StallWatches, shouldBeginAnewWithWhateverComesOrGoes) {
  signal.addWork();
  for (const auto move : {&QuietSignal::addWork, &QuietSignal::endWork, &QuietSignal::acquireRef,
                          &QuietSignal::releaseRef}) {
    for (int look = 1; look < kLooks; ++look) EXPECT_FALSE(watch.look());
    (signal.*move)();
    EXPECT_FALSE(watch.look());
  }
  EXPECT_EQ(looksUntilStill(), kLooks);
}

TEST_F(StallWatches, shouldBeginAnewWhenTold) {
  signal.addWork();
  EXPECT_FALSE(watch.look());
  for (int look = 1; look < kLooks; ++look) EXPECT_FALSE(watch.look());
  watch.begin();
  EXPECT_EQ(looksUntilStill(), kLooks);
}

}  // namespace
}  // namespace orvane::detail
