#include "platform/events/EventInbox.h"
#include "tests/support/RandomRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace orvane::detail {
namespace {

EventNotice notice(const std::string& name) { return {"t", name, {}}; }

std::string namesOf(const std::vector<EventNotice>& notices) {
  std::string names;
  for (const EventNotice& each : notices) names += each.name;
  return names;
}

TEST(EventInbox, shouldKeepThePublishersOwnOrderAndPutPublishersInTheOrderOfWhatTheySaid) {
  EventInbox inbox;
  inbox.put(notice("z"), {8, 0});
  inbox.put(notice("m"), {3, 0});
  inbox.put(notice("b"), {8, 0});
  inbox.put(notice("n"), {3, 0});
  EXPECT_EQ(namesOf(inbox.takeAll(true)), "mnzb");
  EXPECT_TRUE(inbox.empty());
  EXPECT_TRUE(inbox.takeAll(true).empty());
}

TEST(EventInbox, shouldPutWhatATaskSaidBeforeWhatTheTasksSaidThatItAdded) {
  EventInbox inbox;
  inbox.put(notice("a"), {5, 1});
  inbox.put(notice("z"), {5, 0});
  EXPECT_EQ(namesOf(inbox.takeAll(true)), "za");
}

TEST(EventInbox, shouldPutWhatTheHostSaidFirstAndAsItCame) {
  EventInbox inbox;
  inbox.put(notice("z"), {});
  inbox.put(notice("a"), {1, 0});
  inbox.put(notice("y"), {});
  EXPECT_EQ(namesOf(inbox.takeAll(true)), "zya");
}

TEST(EventInbox, shouldKeepTheOrderOfArrivalWhenThereIsNoLockstep) {
  EventInbox inbox;
  inbox.put(notice("z"), {8, 0});
  inbox.put(notice("m"), {3, 0});
  inbox.put(notice("a"), {8, 0});
  EXPECT_EQ(namesOf(inbox.takeAll(false)), "zma");
}

TEST(EventInbox, shouldGiveOneOrderHoweverThePublishersWereNumberedAndMixed) {
  const auto seed = static_cast<unsigned>(support::randomSeed());
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int round = 0; round < 200; ++round) {
    // A few publishers, some of which say the same.
    std::vector<std::string> said(2 + random() % 5);
    for (std::string& names : said)
      for (unsigned i = 1 + random() % 4; i > 0; --i)
        names += static_cast<char>('a' + random() % 3);
    std::string expected;
    for (int run = 0; run < 5; ++run) {
      std::vector<std::size_t> turns, spoken(said.size()), numbers(said.size());
      for (std::size_t i = 0; i < said.size(); ++i) {
        turns.insert(turns.end(), said[i].size(), i);
        numbers[i] = i + 1;
      }
      std::shuffle(turns.begin(), turns.end(), random);
      std::shuffle(numbers.begin(), numbers.end(), random);
      EventInbox inbox;
      for (const std::size_t who : turns)
        inbox.put(notice(std::string(1, said[who][spoken[who]++])), {numbers[who], 0});
      const std::string got = namesOf(inbox.takeAll(true));
      if (run == 0) expected = got;
      ASSERT_EQ(got, expected);
    }
  }
}

}  // namespace
}  // namespace orvane::detail
