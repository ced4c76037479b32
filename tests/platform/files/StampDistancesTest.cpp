#include "platform/market/files/StampDistances.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>

namespace orvane::detail {
namespace {

using Counts = std::map<std::int64_t, std::size_t>;

StampDistances noted(std::initializer_list<std::int64_t> distances) {
  StampDistances all;
  for (const std::int64_t distance : distances) all.note(distance);
  return all;
}

TEST(StampDistances, shouldBeNoneBeforeThereAreNeighbours) {
  EXPECT_EQ(StampDistances().counts(), Counts());
}

TEST(StampDistances, shouldCountEachDistanceWhereverItStands) {
  EXPECT_EQ(noted({60, 60, 5, 60, 5, 5}).counts(), (Counts{{5, 3}, {60, 3}}));
}

TEST(StampDistances, shouldCountADistanceOf0) {
  EXPECT_EQ(noted({0, 0, 7}).counts(), (Counts{{0, 2}, {7, 1}}));
}

TEST(StampDistances, shouldCountTheLastRunOfBothPartsWhenPartsAreAdded) {
  StampDistances all = noted({60, 60});
  all.add(noted({60, 5, 5}));
  all.note(60);
  EXPECT_EQ(all.counts(), (Counts{{5, 2}, {60, 4}}));
}

TEST(StampDistances, shouldStayWithEachCopy) {
  StampDistances one = noted({60});
  StampDistances other = one;
  other.note(60);
  one.note(5);
  EXPECT_EQ(one.counts(), (Counts{{5, 1}, {60, 1}}));
  EXPECT_EQ(other.counts(), (Counts{{60, 2}}));
}

}  // namespace
}  // namespace orvane::detail
