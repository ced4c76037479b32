#include "platform/core/LostCalls.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "platform/core/ServiceLoop.h"

namespace orvane::detail {
namespace {

void lose(const char* what) { throw std::runtime_error(what); }

TEST(LostCalls, shouldTellHowManyWereLostAndTheFirstOfThemOnce) {
  LostCalls::shared().take();
  EXPECT_TRUE(guarded("a call threw", [] {}));
  EXPECT_EQ(LostCalls::shared().take(), "");
  EXPECT_FALSE(guarded("a call threw", [] { lose("one"); }));
  EXPECT_EQ(LostCalls::shared().take(), "a call was lost: a call threw: one");
  guarded("the first threw", [] { throw std::bad_alloc(); });
  guarded("a call threw", [] { lose("two"); });
  EXPECT_EQ(LostCalls::shared().take(),
            "2 calls were lost, the first: the first threw: std::bad_alloc");
  EXPECT_EQ(LostCalls::shared().take(), "");
}

TEST(LostCalls, shouldTellOfWhatIsNoStandardExceptionAndOfVeryLongTexts) {
  LostCalls::shared().take();
  guarded("a call threw", [] { throw 42; });
  EXPECT_EQ(LostCalls::shared().take(), "a call was lost: a call threw");
  guarded("a call threw", [] { lose(std::string(5000, 'x').c_str()); });
  EXPECT_TRUE(LostCalls::shared().take().starts_with("a call was lost: a call threw: xxx"));
}

TEST(ServiceLoop, shouldGoOnAfterATaskThatThrew) {
  LostCalls::shared().take();
  ServiceLoop loop;
  loop.post([] { lose("posted"); });
  bool went = false;
  loop.runAndWait([&] { went = true; });
  EXPECT_TRUE(went);
  EXPECT_EQ(LostCalls::shared().take(),
            "a call was lost: the service loop met with an exception: posted");
}

TEST(ServiceLoop, shouldHandWhatATaskThrowsToWhoeverWaitsForIt) {
  LostCalls::shared().take();
  ServiceLoop loop;
  EXPECT_THROW(loop.runAndWait([] { lose("awaited"); }), std::runtime_error);
  bool went = false;
  loop.runAndWait([&] { went = true; });
  EXPECT_TRUE(went);
  EXPECT_EQ(LostCalls::shared().take(), "");
}

}  // namespace
}  // namespace orvane::detail
