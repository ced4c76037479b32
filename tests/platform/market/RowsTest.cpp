#include "platform/market/Rows.h"

#include <gtest/gtest.h>

#include <numeric>

namespace orvane {
namespace {

TEST(Rows, shouldGrowLikeAVector) {
  Rows<int> rows;
  for (int i = 0; i < 1000; ++i) rows.push_back(i);
  ASSERT_EQ(rows.size(), 1000U);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(rows[static_cast<std::size_t>(i)], i);
  rows.erase(rows.begin() + 1);
  EXPECT_EQ(rows[1], 2);
  rows.insert(rows.begin() + 1, {7, 8});
  EXPECT_EQ(rows[0], 0);
  EXPECT_EQ(rows[1], 7);
  EXPECT_EQ(rows[2], 8);
  EXPECT_EQ(rows[3], 2);
  EXPECT_EQ(rows.size(), 1001U);
  rows.resize(1003);
  EXPECT_EQ(rows.back(), 0);
}

TEST(Rows, shouldBeCopiedRowByRowAndMovedWhole) {
  Rows<int> rows{1, 2, 3};
  Rows<int> copy = rows;
  copy[0] = 9;
  EXPECT_EQ(rows, (Rows<int>{1, 2, 3}));
  const int* const data = rows.data();
  const Rows<int> moved = std::move(rows);
  EXPECT_EQ(moved.data(), data);
  EXPECT_EQ(Rows<int>(std::vector<int>{1, 2, 3}), moved);
}

TEST(Rows, shouldShareTheirMemoryUntilOneOfThemGrows) {
  Rows<int> rows = {1, 2, 3};
  Rows<int> same = rows.shared();
  EXPECT_EQ(same.data(), rows.data());
  const Rows<int> last = rows.shared();
  rows = {};
  EXPECT_EQ(same, (Rows<int>{1, 2, 3}));
  same.push_back(4);
  EXPECT_NE(same.data(), last.data());
  EXPECT_EQ(same, (Rows<int>{1, 2, 3, 4}));
  EXPECT_EQ(last, (Rows<int>{1, 2, 3}));
}

TEST(Rows, shouldLeaveForeignMemoryAloneWhenTheyGrow) {
  auto memory = std::make_shared<std::array<int, 3>>(std::array<int, 3>{1, 2, 3});
  auto rows = Rows<int>::over(memory, memory->data(), 3);
  EXPECT_EQ(memory.use_count(), 2);
  EXPECT_EQ(rows.data(), memory->data());
  rows.push_back(4);
  rows[0] = 9;
  EXPECT_EQ((*memory)[0], 1);
  EXPECT_EQ(rows, (Rows<int>{9, 2, 3, 4}));
  EXPECT_EQ(memory.use_count(), 1);
}

TEST(Rows, shouldJoinTheRoomsThatWereFilledForThem) {
  Rows<int> rows;
  rows.reserve(10);
  Rows<int> first = rows.roomAt(0, 4), second = rows.roomAt(4, 4), third = rows.roomAt(8, 2);
  for (Rows<int>* room : {&third, &second, &first})
    for (int i = 0; i < 2; ++i)
      room->push_back(static_cast<int>(10 * (room->data() - rows.data())) + i);
  rows.join(first);
  rows.join(second);
  rows.join(third);
  EXPECT_EQ(rows, (Rows<int>{0, 1, 40, 41, 80, 81}));
}

TEST(Rows, shouldHoldManyRowsInLargePages) {
  Rows<std::int64_t> rows;
  rows.resizeForWriting(3'000'000);
  std::iota(rows.begin(), rows.end(), 0);
  EXPECT_EQ(rows[2'999'999], 2'999'999);
}

}  // namespace
}  // namespace orvane
