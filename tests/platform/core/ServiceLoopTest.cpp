#include "platform/core/ServiceLoop.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

/// A task that posts itself for ever, until it is told to end, and counts how often it ran.
struct Restless {
  explicit Restless(ServiceLoop& on) : loop(on) { post(); }
  void post() {
    loop.post([this] {
      ++runs;
      if (!isOver) post();
    });
  }
  ServiceLoop& loop;
  int runs = 0;
  bool isOver = false;
};

TEST(ServiceLoop, shouldKeepADeadlineThoughEveryTaskPostsAnother) {
  ServiceLoop loop;
  loop.runAndWait([&] {
    Restless task(loop);
    loop.runPostedUntil(ServiceLoop::WallTime(), [] { return false; });
    EXPECT_EQ(task.runs, 1);
    task.isOver = true;
    loop.runPosted();
    EXPECT_EQ(task.runs, 2);
  });
}

TEST(ServiceLoop, shouldLeaveWhatTasksPostForTheNextTime) {
  ServiceLoop loop;
  loop.runAndWait([&] {
    Restless one(loop), other(loop);
    loop.runPostedNow();
    EXPECT_EQ(one.runs + other.runs, 2);
    one.isOver = other.isOver = true;
    EXPECT_TRUE(loop.runPosted());
    EXPECT_EQ(one.runs + other.runs, 4);
    EXPECT_FALSE(loop.runPosted());
  });
}

}  // namespace
}  // namespace orvane::detail
