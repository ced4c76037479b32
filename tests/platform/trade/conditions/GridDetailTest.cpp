// What the condition service tells of grids.

#include "tests/platform/trade/conditions/GridFixture.h"

#include "services/Common/CmnFactory.h"

namespace orvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

double asDouble(Word word) { return std::bit_cast<double>(word); }

/// Records details as lines: "0:01 #1 buy 2@100 working", "0:02 #1 fill buy 2@100".
class DetailRecorder : public CondSpi {
 public:
  void onCondDetail(const int64& conditionId, const QList<GridOrderRecord>& orders,
                    const QList<GridFillRecord>& fills) override {
    static constexpr const char* kNames[] = {"sent",          "working",   "partly",   "filled",
                                             "cancelPending", "cancelled", "rejected", "expired"};
    const std::string head = RecordingSpi::relative(Timestamp::now(1).toUtcMsEponch()) + " #" +
                             std::to_string(conditionId) + " ";
    const auto sideOf = [](int direction) { return direction == 0 ? "buy " : "sell "; };
    for (const GridOrderRecord& order : orders) {
      lines.push_back(head + sideOf(order.value1) + number(asDouble(order.value4)) + "@" +
                      number(order.value8) + " " + kNames[order.status] +
                      (order.text.isEmpty() ? "" : ": " + order.text.toStdString()));
      allOrders.append(order);
    }
    for (const GridFillRecord& fill : fills) {
      lines.push_back(head + "fill " + sideOf(fill.value1) + number(asDouble(fill.value3)) + "@" +
                      number(fill.price));
      allFills.append(fill);
    }
    ++details;
    if (onDetail) onDetail();
  }

  Lines lines;
  QList<GridOrderRecord> allOrders;
  QList<GridFillRecord> allFills;
  int details = 0;
  std::function<void()> onDetail;
};

ICondService& conditions() { return *CmnFactory::instance()->get(3); }

std::vector<Bar> oneSale() { return {flat(98.5), flat(97.5), flat(99.5)}; }

TEST(DetailBook, shouldTellInOneDetailWhatAnInstantChangedAndEachFillOnceWithItsOrder) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  EXPECT_EQ(recorder.lines, (Lines{"0:01 #1 buy 2@98 working", "0:02 #1 buy 2@98 filled",
                                   "0:02 #1 sell 2@99 working", "0:02 #1 fill buy 2@97.5",
                                   "0:03 #1 sell 2@99 filled", "0:03 #1 buy 2@99 working",
                                   "0:03 #1 buy 2@98 working", "0:03 #1 fill sell 2@99.5"}));
  EXPECT_EQ(recorder.details, 3);
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldJoinRecordsToTheOrdersOfTheTradeService) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  ASSERT_EQ(recorder.allFills.size(), 2);
  const GridFillRecord& fill = recorder.allFills[1];
  const std::vector<Order> orders = platform.orders();
  const Order& sale = orders.at(1);
  EXPECT_EQ(fill.orderRef.toStdString(), sale.orderRef);
  EXPECT_EQ(fill.gridId, sale.ints[9]);
  EXPECT_EQ(asDouble(fill.value4), 4);  // Profit: 2 x 2.
  EXPECT_EQ(fill.account.account, "A1");
  EXPECT_EQ(fill.account.accountKey, platform.account().accountKey);
  EXPECT_EQ(fill.code.id, platform.code.id);
  EXPECT_EQ(fill.value2, static_cast<int>(order::Offset::Close));
  EXPECT_EQ(fill.time, kMonday + 2 * kMinute);
  EXPECT_EQ(fill.fillRef.toStdString(), std::to_string(sale.id * 100'000 + 1));
  // The sale's last state: that of its bid comes before it, two new bids after it.
  const GridOrderRecord& record = recorder.allOrders[3];
  EXPECT_EQ(record.keyA.toStdString(), sale.pair.first);
  EXPECT_EQ(record.keyB.toStdString(), sale.pair.second);
  EXPECT_EQ(record.gridId, sale.ints[9]);
  EXPECT_EQ(record.orderRef, fill.orderRef);
  EXPECT_EQ(asDouble(record.value5), 2);
  EXPECT_EQ(asDouble(record.value7), 199);
  EXPECT_EQ(record.value6, 20210104);
  EXPECT_EQ(record.value2, static_cast<int>(order::Offset::Close));
  EXPECT_EQ(record.time, sale.updateTime());
  EXPECT_EQ(record.code.code, "A");
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldSayInADetailThatAGridHasNoMoney) {
  PlatformOptions options = gridOptions(makeGrid("98", "99", "1", "2"));
  options.trade.accounts[0].startBalance = "100";
  options.trade.marginRate = "1";
  GridPlatform platform(options, {flat(99.5), flat(99.5), flat(99.5)});
  DetailRecorder recorder;
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  EXPECT_EQ(recorder.lines,
            (Lines{"0:01 #1 buy 2@98 rejected: not enough money: needs 196, available 100"}));
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldTellALateSubscriberTheOrdersAtWorkAndThenTheChanges) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  platform.at(2, [&] { conditions().subscribeDetail({}, &recorder); });
  platform.play();
  EXPECT_EQ(recorder.lines, (Lines{"0:02 #1 sell 2@99 working", "0:03 #1 sell 2@99 filled",
                                   "0:03 #1 buy 2@99 working", "0:03 #1 buy 2@98 working",
                                   "0:03 #1 fill sell 2@99.5"}));
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldTellTheOrdersAtWorkAgainAndChangesOnceToWhoeverSubscribesTwice) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")),
                        {flat(98.5), flat(98.5), flat(97.5)});
  DetailRecorder recorder;
  conditions().subscribeDetail({}, &recorder);
  platform.at(2, [&] { conditions().subscribeDetail({}, &recorder); });
  platform.play();
  EXPECT_EQ(recorder.lines, (Lines{"0:01 #1 buy 2@98 working", "0:02 #1 buy 2@98 working",
                                   "0:03 #1 buy 2@98 filled", "0:03 #1 sell 2@99 working",
                                   "0:03 #1 fill buy 2@97.5"}));
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldTellOnlyTheConditionsThatAKeyNames) {
  PlatformOptions options = gridOptions(makeGrid("98", "99", "1", "1", "one"));
  options.trade.accounts.push_back({"A2", "CNY", "", 1});
  options.trade.grids.push_back(makeGrid("97", "98", "1", "1", "two"));
  options.trade.grids.back().account = "A2";
  GridPlatform platform(options, {flat(100), flat(100)});
  const auto second = platform.account(1).accountKey;
  const Lines one{"0:01 #1 buy 1@98 working"};
  const Lines two{"0:01 #2 buy 1@97 working"};
  const std::vector<std::pair<CondId, Lines>> cases = {{{1, 0, 0, ""}, one},
                                                       {{2, 0, 0, ""}, two},
                                                       {{0, 0, second, ""}, two},
                                                       {{0, 0, 0, "one"}, one},
                                                       {{1, 0, second, ""}, Lines{}},
                                                       {{0, platform.code.id, 0, "two"}, two},
                                                       {{0, platform.code.id + 1, 0, ""}, Lines{}},
                                                       {{3, 0, 0, ""}, Lines{}}};
  std::vector<std::unique_ptr<DetailRecorder>> recorders;
  for (const auto& [key, expected] : cases) {
    recorders.push_back(std::make_unique<DetailRecorder>());
    conditions().subscribeDetail(key, recorders.back().get());
  }
  platform.play();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(recorders[i]->lines, cases[i].second) << i;
    conditions().unsubscribeDetails(recorders[i].get());
  }
}

TEST(DetailBook, shouldTellNothingAnyMoreAfterAnUnsubscribeFromInsideACallBack) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  recorder.onDetail = [&] { conditions().unsubscribeDetails(&recorder); };
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  EXPECT_EQ(recorder.lines, (Lines{"0:01 #1 buy 2@98 working"}));
}

TEST(DetailBook, shouldNotTellASubscriberWhomAnotherOnesCallBackUnsubscribed) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder first, second;
  first.onDetail = [&] { conditions().unsubscribeDetails(&second); };
  conditions().subscribeDetail({}, &first);
  conditions().subscribeDetail({}, &second);
  platform.play();
  EXPECT_THAT(second.lines, IsEmpty());
  conditions().unsubscribeDetails(&first);
}

TEST(DetailBook, shouldTellAnOrderOnceToWhoeverSubscribesWhileItsChangeIsTold) {
  PlatformOptions options = gridOptions(makeGrid("98", "99", "1", "1", "one"));
  options.trade.grids.push_back(makeGrid("97", "98", "1", "1", "two"));
  GridPlatform platform(options, {flat(100), flat(100)});
  DetailRecorder first, second;
  first.onDetail = [&] {
    if (first.details == 1) conditions().subscribeDetail({}, &second);
  };
  conditions().subscribeDetail({}, &first);
  platform.play();
  EXPECT_EQ(second.lines, (Lines{"0:01 #1 buy 1@98 working", "0:01 #2 buy 1@97 working"}));
  conditions().unsubscribeDetails(&first);
  conditions().unsubscribeDetails(&second);
}

TEST(DetailBook, shouldGoOnAfterACallBackThatThrew) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  recorder.onDetail = [] { throw std::runtime_error("no"); };
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  EXPECT_EQ(recorder.details, 3);
  conditions().unsubscribeDetails(&recorder);
}

TEST(DetailBook, shouldIgnoreANullReceiverAndAnUnknownOne) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  DetailRecorder recorder;
  conditions().subscribeDetail({}, nullptr);
  conditions().unsubscribeDetails(&recorder);
  platform.play();
  EXPECT_THAT(recorder.lines, IsEmpty());
}

TEST(DetailBook, shouldTellAfterTheReconnectionWhatHappenedDuringAnOutage) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "2"));
  const int64 half = kMinute / 2;
  options.trade.script = {{"A1", kMonday + kMinute + half, false},
                          {"A1", kMonday + 3 * kMinute + half, true}};
  GridPlatform platform(options, {flat(98.5), flat(97.5), flat(97.5), flat(97.5)});
  DetailRecorder recorder;
  conditions().subscribeDetail({}, &recorder);
  platform.play();
  EXPECT_EQ(recorder.lines,
            (Lines{"0:01 #1 buy 2@98 working", "0:03+30000 #1 buy 2@98 filled",
                   "0:03+30000 #1 sell 2@99 working", "0:03+30000 #1 fill buy 2@97.5"}));
  conditions().unsubscribeDetails(&recorder);
}

/// A receiver of details and of trade reports in one object, as the library's trade source is.
class BothSpi final : public TradeEventSpi, public CondSpi {
 public:
  explicit BothSpi(bool& isGone) : isGone_(isGone) {}
  ~BothSpi() override { isGone_ = true; }
  void onCondDetail(const int64&, const QList<GridOrderRecord>&,
                    const QList<GridFillRecord>&) override {
    if (onDetail) onDetail();
  }
  std::function<void()> onDetail;

 private:
  bool& isGone_;
};

TEST(DetailBook, shouldKeepAReceiverAliveThatGoesDuringItsOwnCallBack) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  bool isGone = false;
  auto spi = std::make_shared<BothSpi>(isGone);
  bool wasGoneInside = true;
  spi->onDetail = [&] {
    platform.service().unsubscribeAll(spi);
    conditions().unsubscribeDetails(spi.get());
    spi.reset();
    wasGoneInside = isGone;
  };
  conditions().subscribeDetail({}, spi.get());
  platform.play();
  EXPECT_FALSE(wasGoneInside);
  EXPECT_TRUE(isGone);
}

TEST(DetailBook, shouldLetGoOfAReceiverOnceBothItsSubscriptionsEnded) {
  GridPlatform platform(gridOptions(makeGrid("98", "102", "1", "2")), oneSale());
  bool isGone = false;
  auto spi = std::make_shared<BothSpi>(isGone);
  conditions().subscribeDetail({}, spi.get());
  CondSpi* const bare = spi.get();
  platform.service().unsubscribeAll(spi);
  spi.reset();
  EXPECT_FALSE(isGone);
  conditions().unsubscribeDetails(bare);
  EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace orvane::testing
