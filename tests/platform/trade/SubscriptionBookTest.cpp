#include "platform/trade/SubscriptionBook.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

class Spi : public TradeEventSpi {};

const TradeSelector kOrdersOfS{TradeTopic::Order, 1, TradeSelector::kEveryCode, 0, "S"};
const TradeSelector kOrdersOfSInFive{TradeTopic::Order, 1, 5, 0, "S"};
const TradeSelector kOrdersOfPrograms{TradeTopic::Order, 1, TradeSelector::kEveryCode, 4, {}};
const TradeSubject kOrderOfS{TradeTopic::Order, 1, 5, 4, "S"};

TEST(SubscriptionBook, shouldNameAReceiverOnceWhenSeveralSubscriptionsMatch) {
  SubscriptionBook book;
  const auto spi = std::make_shared<Spi>();
  EXPECT_TRUE(book.subscribe(spi, kOrdersOfS, 0));
  EXPECT_TRUE(book.subscribe(spi, kOrdersOfSInFive, 0));
  EXPECT_TRUE(book.subscribe(spi, kOrdersOfPrograms, 0));
  EXPECT_FALSE(book.subscribe(spi, kOrdersOfS, 0));
  const TradeReceivers receivers = book.receiversOf(kOrderOfS, 1);
  ASSERT_EQ(receivers.size(), 1u);
  EXPECT_EQ(receivers.front()->spi, spi);
}

TEST(SubscriptionBook, shouldSelectBySourceCodeAndEventSource) {
  struct Case {
    TradeSelector selector;
    TradeSubject subject;
    bool reaches;
  };
  const std::vector<Case> cases = {
      {kOrdersOfS, kOrderOfS, true},
      {kOrdersOfS, {TradeTopic::Order, 1, 6, 0, "S"}, true},
      {kOrdersOfS, {TradeTopic::Order, 1, 5, 4, "T"}, false},
      {kOrdersOfS, {TradeTopic::Order, 2, 5, 4, "S"}, false},
      {kOrdersOfS, {TradeTopic::Fill, 1, 5, 4, "S"}, false},
      {kOrdersOfSInFive, kOrderOfS, true},
      {kOrdersOfSInFive, {TradeTopic::Order, 1, 6, 4, "S"}, false},
      {kOrdersOfPrograms, {TradeTopic::Order, 1, 6, 6, "T"}, true},
      {kOrdersOfPrograms, {TradeTopic::Order, 1, 6, 2, "T"}, false},
      {{TradeTopic::Position, 1, 5, 0, {}}, {TradeTopic::Position, 1, 5, 0, {}}, true},
      {{TradeTopic::Position, 1, 5, 0, {}}, {TradeTopic::Position, 1, 6, 0, {}}, false},
      {{TradeTopic::SourcePosition, 1, 5, 0, "S"},
       {TradeTopic::SourcePosition, 1, 5, 0, "T"},
       false},
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SubscriptionBook book;
    book.subscribe(std::make_shared<Spi>(), cases[i].selector, 0);
    EXPECT_EQ(book.receiversOf(cases[i].subject, 1).size(), cases[i].reaches ? 1u : 0u) << i;
  }
}

TEST(SubscriptionBook, shouldKeepTheOrderOfFirstSubscriptions) {
  SubscriptionBook book;
  const auto first = std::make_shared<Spi>();
  const auto second = std::make_shared<Spi>();
  book.subscribe(first, {TradeTopic::Capital, 1, 0, 0, {}}, 0);
  book.subscribe(second, kOrdersOfS, 0);
  book.subscribe(first, kOrdersOfS, 0);
  const TradeReceivers receivers = book.receiversOf(kOrderOfS, 1);
  ASSERT_EQ(receivers.size(), 2u);
  EXPECT_EQ(receivers[0]->spi, first);
  EXPECT_EQ(receivers[1]->spi, second);
}

TEST(SubscriptionBook, shouldNotTellWhatHappenedBeforeTheSubscription) {
  SubscriptionBook book;
  book.subscribe(std::make_shared<Spi>(), kOrdersOfS, 7);
  EXPECT_TRUE(book.receiversOf(kOrderOfS, 7).empty());
  EXPECT_EQ(book.receiversOf(kOrderOfS, 8).size(), 1u);
}

TEST(SubscriptionBook, shouldHoldAReceiverUntilItsLastSubscriptionEnds) {
  SubscriptionBook book;
  const auto spi = std::make_shared<Spi>();
  book.subscribe(spi, kOrdersOfS, 0);
  book.subscribe(spi, {TradeTopic::Capital, 2, 0, 0, {}}, 0);
  EXPECT_EQ(spi.use_count(), 2);
  EXPECT_NE(book.unsubscribeAccount(spi.get(), 1), nullptr);
  EXPECT_TRUE(book.receiversOf(kOrderOfS, 1).empty());
  EXPECT_EQ(spi.use_count(), 2);
  book.unsubscribe(spi.get(), {TradeTopic::Capital, 2, 0, 0, {}});
  EXPECT_EQ(spi.use_count(), 1);
}

TEST(SubscriptionBook, shouldTakeTheEndOfWhatIsNotHeld) {
  SubscriptionBook book;
  const auto spi = std::make_shared<Spi>();
  EXPECT_EQ(book.unsubscribeAll(spi.get()), nullptr);
  book.subscribe(spi, kOrdersOfS, 0);
  EXPECT_NE(book.unsubscribe(spi.get(), kOrdersOfPrograms), nullptr);
  EXPECT_EQ(book.receiversOf(kOrderOfS, 1).size(), 1u);
}

TEST(SubscriptionBook, shouldAnswerOfAnewOnceSomebodyComesOrGoes) {
  SubscriptionBook book;
  const auto spisOf = [&](const TradeSubject& subject) {
    std::vector<const TradeEventSpi*> spis;
    for (const auto& receiver : book.receiversOf(subject, 10)) spis.push_back(receiver->spi.get());
    return spis;
  };
  using Spis = std::vector<const TradeEventSpi*>;
  const auto first = std::make_shared<Spi>(), second = std::make_shared<Spi>();
  EXPECT_EQ(spisOf(kOrderOfS), Spis());
  book.subscribe(first, kOrdersOfS, 0);
  for (int again = 0; again < 2; ++again) EXPECT_EQ(spisOf(kOrderOfS), Spis{first.get()});
  // Of the same topic, but about something else.
  for (const TradeSubject& other : {TradeSubject{TradeTopic::Order, 1, 5, 4, "T"},
                                    TradeSubject{TradeTopic::Order, 2, 5, 4, "S"}}) {
    EXPECT_EQ(spisOf(other), Spis());
    EXPECT_EQ(spisOf(kOrderOfS), Spis{first.get()});
  }
  book.subscribe(second, kOrdersOfPrograms, 0);
  for (int again = 0; again < 2; ++again)
    EXPECT_EQ(spisOf(kOrderOfS), (Spis{first.get(), second.get()}));
  book.unsubscribe(first.get(), kOrdersOfS);
  for (int again = 0; again < 2; ++again) EXPECT_EQ(spisOf(kOrderOfS), Spis{second.get()});
}

TEST(SubscriptionBook, shouldKeepNobodyWhoseSubscriptionsHaveEnded) {
  SubscriptionBook book;
  auto spi = std::make_shared<Spi>();
  book.subscribe(spi, kOrdersOfS, 0);
  EXPECT_EQ(book.receiversOf(kOrderOfS, 1).size(), 1u);
  const std::weak_ptr<Spi> left = spi;
  book.unsubscribeAll(spi.get());
  spi.reset();
  EXPECT_TRUE(left.expired());
}

}  // namespace
}  // namespace orvane::detail
