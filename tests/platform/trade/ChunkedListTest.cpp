#include "platform/trade/ChunkedList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <ranges>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane {
namespace {

/// As large as a record: blocks hold 4, 8, ... 256 of them.
struct Large {
  std::size_t number = 0;
  std::string text;
  char rest[880] = {};
};

TEST(ChunkedList, shouldKeepItsElementsInTheirOrderAndPlaceWhileOthersAreAdded) {
  ChunkedList<Large> list;
  std::vector<const Large*> places;
  for (std::size_t i = 0; i < 2'000; ++i) {
    places.push_back(&list.emplace_back(Large{i, std::to_string(i)}));
    ASSERT_EQ(list.size(), i + 1);
    ASSERT_EQ(&list.back(), places.back());
  }
  EXPECT_EQ(&list.front(), places.front());
  std::size_t next = 0;
  for (const Large& each : std::as_const(list)) {
    ASSERT_EQ(&each, places[next]);
    ASSERT_EQ(&list[next], places[next]);
    ASSERT_EQ(each.number, next);
    ASSERT_EQ(each.text, std::to_string(next));
    ++next;
  }
  EXPECT_EQ(next, 2'000u);
}

TEST(ChunkedList, shouldFindEachElementOnBothSidesOfTheEndOfEachBlock) {
  // Blocks of small elements: 1,024 in the first, 65,536 in the largest.
  ChunkedList<int> list;
  for (int i = 0; i < 300'000; ++i) list.push_back(i);
  for (int i = 0; i < 300'000; ++i) ASSERT_EQ(list[static_cast<std::size_t>(i)], i);
  EXPECT_EQ(std::accumulate(list.begin(), list.end(), std::int64_t{0}),
            std::int64_t{300'000} * 299'999 / 2);
}

// As those of a deque.
static_assert(std::random_access_iterator<ChunkedList<int>::iterator>);
static_assert(std::random_access_iterator<ChunkedList<int>::const_iterator>);
static_assert(std::is_convertible_v<ChunkedList<int>::iterator, ChunkedList<int>::const_iterator>);
static_assert(!std::is_convertible_v<ChunkedList<int>::const_iterator, ChunkedList<int>::iterator>);
static_assert(std::ranges::random_access_range<const ChunkedList<int>>);

TEST(ChunkedList, shouldServeAlgorithmsThatJump) {
  ChunkedList<int> list;
  for (int i = 0; i < 5'000; ++i) list.push_back((i * 7) % 5'000);
  std::sort(list.begin(), list.end());
  EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
  const auto found = std::lower_bound(list.begin(), list.end(), 4'321);
  EXPECT_EQ(found - list.begin(), 4'321);
  EXPECT_EQ(*(list.end() - 1), 4'999);
  EXPECT_EQ(list.begin()[17], 17);
  EXPECT_LT(list.begin(), list.end());
  const ChunkedList<int>::const_iterator first = list.begin();
  EXPECT_EQ(list.end() - first, 5'000);
  EXPECT_EQ(*list.rbegin(), 4'999);
  EXPECT_EQ(std::reverse_iterator(list.cend()), list.rbegin());
  EXPECT_EQ(std::reverse_iterator(list.cbegin()), list.rend());
}

TEST(ChunkedList, shouldBeWalkedThroughInStepsOfEitherDirectionAndLength) {
  ChunkedList<int> list;
  for (int i = 0; i < 200'000; ++i) list.push_back(i);
  int next = 0;
  for (auto at = list.cbegin(); at != list.cend(); ++at) ASSERT_EQ(*at, next++);
  auto back = list.end();
  while (back != list.begin()) ASSERT_EQ(*--back, --next);
  // The ends of blocks are at 1,024 and twice as far each time, later by 65,536.
  for (const int border : {1'024, 3'072, 7'168, 64'512, 130'048, 195'584}) {
    auto at = list.begin() + (border - 2);
    for (const int step : {1, 1, 1, -1, -1, -1, 1, 2, -2}) {
      const auto before = at;
      if (step == 1)
        EXPECT_EQ(at++, before);
      else if (step == -1)
        EXPECT_EQ(at--, before);
      else
        at += step;
      ASSERT_EQ(*at, *before + step) << border;
    }
  }
}

TEST(ChunkedList, shouldBeWalkedOnThroughWhatIsAddedMeanwhile) {
  ChunkedList<int> list{0};
  auto at = list.begin();
  for (int i = 1; i < 5'000; ++i) {
    ++at;
    EXPECT_EQ(at, list.end());
    list.push_back(i);
    ASSERT_EQ(*at, i);
  }
}

TEST(ChunkedList, shouldBeEmptyWhereNothingWasAddedOrAllWasCleared) {
  ChunkedList<Large> list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.begin(), list.end());
  for (std::size_t i = 0; i < 20; ++i) list.push_back(Large{i, {}});
  list.clear();
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.begin(), list.end());
  list.push_back(Large{7, {}});
  EXPECT_EQ(list.front().number, 7u);
}

TEST(ChunkedList, shouldHaveElementsOfItsOwnWhenItIsCopiedAndLeaveNoneBehindWhenItIsMoved) {
  ChunkedList<Large> first;
  for (std::size_t i = 0; i < 700; ++i) first.push_back(Large{i, "x"});
  ChunkedList<Large> copy = first;
  copy[3].number = 33;
  copy.push_back(Large{700, {}});
  EXPECT_EQ(first[3].number, 3u);
  EXPECT_EQ(first.size(), 700u);
  const Large* const place = &first[699];
  ChunkedList<Large> moved = std::move(first);
  EXPECT_EQ(&moved[699], place);
  EXPECT_TRUE(first.empty());  // NOLINT(bugprone-use-after-move): it is empty by contract.
  first.push_back(Large{1, {}});
  EXPECT_EQ(first.back().number, 1u);
  moved = std::move(copy);
  EXPECT_EQ(moved.size(), 701u);
  EXPECT_EQ(moved[3].number, 33u);
  const ChunkedList<int> given{3, 1, 2};
  EXPECT_EQ(std::vector<int>(given.begin(), given.end()), (std::vector<int>{3, 1, 2}));
}

TEST(ChunkedList, shouldBeAsItWasWhenAnElementCannotBeMade) {
  struct Picky {
    explicit Picky(int value) : number(value) {
      if (value < 0) throw std::runtime_error("no");
    }
    int number;
    char rest[2'000] = {};
  };
  // In the midst of a block, and as the first of the next ones.
  ChunkedList<Picky> list;
  for (int i = 0; i < 40; ++i) {
    EXPECT_THROW(list.emplace_back(-1), std::runtime_error);
    ASSERT_EQ(list.size(), static_cast<std::size_t>(i));
    if (i > 0) {
      ASSERT_EQ(list.back().number, i - 1);
    }
    list.emplace_back(i);
  }
  int next = 0;
  for (const Picky& each : list) ASSERT_EQ(each.number, next++);
  EXPECT_EQ(next, 40);
}

TEST(ChunkedList, shouldMakeAnyMemoryReadyWithoutAChangeToIt) {
  std::vector<char> bytes(1 << 20, 'a');
  detail::makeReady(bytes.data() + 1, bytes.size() - 2);
  detail::makeReady(bytes.data() + 5, 3);
  detail::makeReady(nullptr, 0);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'a'), 1 << 20);
}

}  // namespace
}  // namespace orvane
