// Orders and fills in lists that keep once what they have in common.

#include "platform/trade/RecordList.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/trade/TradeResults.h"

namespace orvane {
namespace {

// Everything that a record holds, as a text.

template <typename... Members>
std::string joined(const Members&... members) {
  std::ostringstream out;
  ((out << members << '|'), ...);
  return out.str();
}
template <typename Number, std::size_t kCount>
std::string textOf(const std::array<Number, kCount>& numbers) {
  std::ostringstream out;
  for (const Number number : numbers) out << number << ' ';
  return out.str();
}
std::string textOf(const ICodeID& of) { return joined(of.id, of.kind, of.market, of.code); }
std::string textOf(const SourceId& of) {
  return joined(of.sourceType, of.createSource, of.sourceText);
}
std::string textOf(const TradingAccountID& of) {
  return joined(of.accountKey, of.second, of.counterType, of.fourth, of.text1, of.text2, of.account,
                of.currency, of.infoKey, of.hedgeFlag, of.eighth, of.text4);
}
std::string textOf(const OrderLeg& of) { return joined(textOf(of.code), textOf(of.values)); }
std::string textOf(const Order& of) {
  return joined(of.id, textOf(of.account), textOf(of.code), textOf(of.source),
                textOf(of.cancelSource), of.pair.first, of.pair.second, of.text3, of.text4,
                of.orderRef, of.value1, textOf(of.values), textOf(of.ints), of.text5, of.text6,
                of.value2, of.value3, of.value4, textOf(of.leg1), textOf(of.leg2), of.value5);
}
std::string textOf(const OrderFill& of) {
  return joined(of.id, of.value1, textOf(of.account), textOf(of.code), textOf(of.source),
                of.pair.first, of.pair.second, of.text1, of.orderRef, textOf(of.numbers),
                textOf(of.ints), of.fillText, textOf(of.values), of.text3);
}

/// One change for each member, whatever a record holds within others.
template <typename Record>
struct Change {
  std::function<void(Record&)> make;
  bool isOfRest = false;  ///< A member that records of one rest have in common.
};

void add(std::vector<Change<Order>>& all, bool isOfRest, std::function<void(Order&)> make) {
  all.push_back({std::move(make), isOfRest});
}

template <typename Record>
std::vector<Change<Record>> changesOfBoth() {
  using Make = std::function<void(Record&)>;
  std::vector<Change<Record>> all;
  const auto part = [&](Make make) { all.push_back({std::move(make), false}); };
  const auto rest = [&](Make make) { all.push_back({std::move(make), true}); };
  part([](Record& of) { of.id = 77; });
  part([](Record& of) { of.value1 = 7; });
  part([](Record& of) { of.pair.first = "key"; });
  part([](Record& of) { of.orderRef = "reference that is too long to be kept in place"; });
  part([](Record& of) { of.values.back() = 7; });
  part([](Record& of) { of.ints.back() = 7; });
  rest([](Record& of) { of.pair.second = "other"; });
  rest([](Record& of) { of.text3 = "other"; });
  rest([](Record& of) { of.account.accountKey = 7; });
  rest([](Record& of) { of.account.second = 7; });
  rest([](Record& of) { of.account.counterType = 7; });
  rest([](Record& of) { of.account.fourth = 7; });
  rest([](Record& of) { of.account.text1 = "other"; });
  rest([](Record& of) { of.account.text2 = "other"; });
  rest([](Record& of) { of.account.account = "other"; });
  rest([](Record& of) { of.account.currency = 7; });
  rest([](Record& of) { of.account.infoKey = 7; });
  rest([](Record& of) { of.account.hedgeFlag = 7; });
  rest([](Record& of) { of.account.eighth = 7; });
  rest([](Record& of) { of.account.text4 = "other"; });
  rest([](Record& of) { of.code.id = 7; });
  rest([](Record& of) { of.code.kind = 7; });
  rest([](Record& of) { of.code.market = 7; });
  rest([](Record& of) { of.code.code = "other"; });
  rest([](Record& of) { of.source.sourceType = 7; });
  rest([](Record& of) { of.source.createSource = "other"; });
  rest([](Record& of) { of.source.sourceText = "other"; });
  return all;
}

std::vector<Change<Order>> changesOf(const Order& /*of*/) {
  auto all = changesOfBoth<Order>();
  add(all, false, [](Order& of) { of.value2 = 7; });
  add(all, false, [](Order& of) { of.value3 = 7; });
  add(all, false, [](Order& of) { of.value4 = 7; });
  add(all, false, [](Order& of) { of.value5 = 7; });
  add(all, true, [](Order& of) { of.cancelSource.sourceType = 7; });
  add(all, true, [](Order& of) { of.cancelSource.createSource = "other"; });
  add(all, true, [](Order& of) { of.cancelSource.sourceText = "other"; });
  add(all, true, [](Order& of) { of.text4 = "other"; });
  add(all, true, [](Order& of) { of.text5 = "other"; });
  add(all, true, [](Order& of) { of.text6 = "other"; });
  for (OrderLeg Order::*const leg : {&Order::leg1, &Order::leg2}) {
    add(all, true, [leg](Order& of) { (of.*leg).code.market = 7; });
    add(all, true, [leg](Order& of) { (of.*leg).values.back() = 7; });
  }
  return all;
}

std::vector<Change<OrderFill>> changesOf(const OrderFill& /*of*/) {
  auto all = changesOfBoth<OrderFill>();
  all.push_back({[](OrderFill& of) { of.numbers.back() = 7; }, false});
  all.push_back({[](OrderFill& of) { of.fillText = "a text of its own"; }, false});
  all.push_back({[](OrderFill& of) { of.text1 = "other"; }, true});
  return all;
}

template <typename Record>
Record recordOf(int64 id) {
  Record record;
  record.id = id;
  record.account.account = "A";
  record.code.code = "C";
  record.source.createSource = "S";
  record.pair = {std::to_string(id), "second"};
  record.orderRef = record.pair.first;
  record.values[0] = id * 10;
  return record;
}

template <typename List>
class RecordListTest : public ::testing::Test {
 protected:
  using Record = typename List::value_type;

  static std::vector<std::string> textsOf(const List& list) {
    std::vector<std::string> texts;
    for (const Record& record : list) texts.push_back(textOf(record));
    return texts;
  }
};
using Lists = ::testing::Types<OrderList, FillList>;
TYPED_TEST_SUITE(RecordListTest, Lists);

TYPED_TEST(RecordListTest, shouldGiveBackARecordWhicheverMemberIsAnotherThanBefore) {
  using Of = typename TestFixture::Record;
  for (const auto& change : changesOf(Of{})) {
    const Of plain = recordOf<Of>(1);
    Of changed = plain;
    change.make(changed);
    ASSERT_NE(textOf(changed), textOf(plain));
    const TypeParam list{plain, changed, plain};
    EXPECT_EQ(this->textsOf(list),
              (std::vector<std::string>{textOf(plain), textOf(changed), textOf(plain)}));
    EXPECT_EQ(textOf(list[1]), textOf(changed));
    EXPECT_EQ(textOf(list.front()), textOf(plain));
    EXPECT_EQ(textOf(list.back()), textOf(plain));
    EXPECT_EQ(&list.restAt(0) == &list.restAt(1), !change.isOfRest) << textOf(changed);
    EXPECT_EQ(&list.restAt(0), &list.restAt(2));
  }
}

TYPED_TEST(RecordListTest, shouldKeepOnceWhatManyHaveInCommon) {
  using Of = typename TestFixture::Record;
  TypeParam list;
  std::vector<std::string> texts;
  for (int64 id = 0; id < 3'000; ++id) {
    Of record = recordOf<Of>(id);
    if (id % 3 == 0) record.text3 = "third";
    list.push_back(record);
    texts.push_back(textOf(record));
    EXPECT_EQ(&list.restAt(static_cast<std::size_t>(id)),
              &list.restAt(id % 3 == 0 ? 0 : static_cast<std::size_t>(1)));
  }
  EXPECT_EQ(list.size(), 3'000u);
  EXPECT_EQ(this->textsOf(list), texts);
}

TYPED_TEST(RecordListTest, shouldKeepOnceWhatRecordsHaveInCommonThatComeByTurns) {
  using Of = typename TestFixture::Record;
  constexpr std::size_t kKinds = 50;
  TypeParam list;
  std::vector<std::string> texts;
  for (std::size_t at = 0; at < 20 * kKinds; ++at) {
    Of record = recordOf<Of>(static_cast<int64>(at));
    record.code.id = static_cast<int64>(at % kKinds);
    list.push_back(record);
    texts.push_back(textOf(record));
    EXPECT_EQ(&list.restAt(at), &list.restAt(at % kKinds));
  }
  EXPECT_EQ(this->textsOf(list), texts);
}

TYPED_TEST(RecordListTest, shouldUseTheRoomAgainOfWhatNoRecordHasAnyMore) {
  using Of = typename TestFixture::Record;
  TypeParam list{recordOf<Of>(1), recordOf<Of>(2), recordOf<Of>(3)};
  const void* const common = &list.restAt(1);
  std::set<const void*> places;
  for (int turn = 0; turn < 100; ++turn) {
    Of changed = recordOf<Of>(1);
    if (turn % 10 != 0) changed.text3 = "turn " + std::to_string(turn);
    list.replace(0, changed);
    places.insert(&list.restAt(0));
    ASSERT_EQ(textOf(list[0]), textOf(changed));
    ASSERT_EQ(textOf(list[1]), textOf(recordOf<Of>(2)));
    ASSERT_EQ(&list.restAt(0) == common, turn % 10 == 0);
  }
  EXPECT_LE(places.size(), 3u);
  // Nobody has the one that all had; then it comes back.
  Of other = recordOf<Of>(9);
  other.text3 = "other";
  for (std::size_t at = 0; at < 3; ++at) list.replace(at, other);
  list.push_back(recordOf<Of>(4));
  std::vector<std::string> texts{textOf(other), textOf(other), textOf(other),
                                 textOf(recordOf<Of>(4))};
  TypeParam moved = std::move(list);
  for (int64 id = 10; id < 16; ++id) {
    other.text3 = "other " + std::to_string(id);
    for (TypeParam* const all : {&list, &moved}) all->push_back(other);
    texts.push_back(textOf(other));
  }
  EXPECT_EQ(this->textsOf(moved), texts);
  EXPECT_EQ(this->textsOf(list), std::vector<std::string>(texts.begin() + 4, texts.end()));
}

TYPED_TEST(RecordListTest, shouldKeepRecordsThatHaveNothingInCommon) {
  using Of = typename TestFixture::Record;
  TypeParam list;
  std::vector<std::string> texts;
  for (int64 turn = 0; turn < 2; ++turn)
    for (int64 id = 0; id < 100; ++id) {
      Of record = recordOf<Of>(id);
      record.text3 = "text " + std::to_string(id);
      list.push_back(record);
      texts.push_back(textOf(record));
    }
  EXPECT_EQ(this->textsOf(list), texts);
}

TYPED_TEST(RecordListTest, shouldReadRecordsOfSeveralListsByTurns) {
  using Of = typename TestFixture::Record;
  Of other = recordOf<Of>(2);
  other.source.createSource = "T";
  const TypeParam a{recordOf<Of>(1), recordOf<Of>(3)}, b{other};
  typename TypeParam::Reader reader;
  EXPECT_EQ(textOf(reader.read(a, 0)), textOf(recordOf<Of>(1)));
  EXPECT_EQ(textOf(reader.read(b, 0)), textOf(other));
  EXPECT_EQ(textOf(reader.read(a, 1)), textOf(recordOf<Of>(3)));
  typename TypeParam::Reader next = std::move(reader);
  EXPECT_EQ(textOf(next.read(a, 0)), textOf(recordOf<Of>(1)));
  EXPECT_EQ(textOf(reader.read(a, 0)), textOf(recordOf<Of>(1)));
}

TYPED_TEST(RecordListTest, shouldPutAnotherRecordInThePlaceOfOne) {
  using Of = typename TestFixture::Record;
  TypeParam list{recordOf<Of>(1), recordOf<Of>(2)};
  Of other = recordOf<Of>(9);
  other.source.sourceText = "other";
  list.replace(0, other);
  EXPECT_EQ(this->textsOf(list),
            (std::vector<std::string>{textOf(other), textOf(recordOf<Of>(2))}));
}

TYPED_TEST(RecordListTest, shouldTakeAllWithItWhenItIsCopiedOrMoved) {
  using Of = typename TestFixture::Record;
  TypeParam list{recordOf<Of>(1)};
  const TypeParam copy = list;
  list.push_back(recordOf<Of>(2));
  TypeParam moved = std::move(list);
  moved.push_back(recordOf<Of>(3));
  EXPECT_EQ(this->textsOf(copy), std::vector<std::string>{textOf(recordOf<Of>(1))});
  EXPECT_EQ(moved.size(), 3u);
  EXPECT_EQ(textOf(moved.back()), textOf(recordOf<Of>(3)));
  list.push_back(recordOf<Of>(5));
  EXPECT_EQ(this->textsOf(list), std::vector<std::string>{textOf(recordOf<Of>(5))});
  moved = {};
  EXPECT_TRUE(moved.empty());
  moved.push_back(recordOf<Of>(4));
  EXPECT_EQ(this->textsOf(moved), std::vector<std::string>{textOf(recordOf<Of>(4))});
}

}  // namespace
}  // namespace orvane
