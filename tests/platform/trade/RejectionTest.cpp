// Why orders are refused, each with its own text.

#include <cmath>

#include "tests/platform/trade/ExchangeFixture.h"
#include "tests/platform/trade/Sides.h"

namespace orvane::testing {
namespace {

class Rejection : public ExchangeTest {
 protected:
  std::string reasonOf(const Order& order, int64 now = 0) {
    place(order, now);
    const auto lines = take();
    return lines.size() == 1 ? lines.front().substr(lines.front().find(' ') + 1) : "not rejected";
  }
};

TEST_F(Rejection, shouldNameAnUnknownCode) {
  Order order = orderOf(kBuy, 1);
  order.code = {99, 1, 1, "ZZ"};
  EXPECT_EQ(reasonOf(order), "rejected: unknown code: ZZ");
}

TEST_F(Rejection, shouldNameNumbersThatMeanNothing) {
  Order order = orderOf(kBuy, 1);
  order.ints[order::TypeAt] = 9;
  EXPECT_EQ(reasonOf(order), "rejected: bad order type: 9");
  order = orderOf(kBuy, 1);
  order.ints[order::TimeInForceAt] = -1;
  EXPECT_EQ(reasonOf(order), "rejected: bad time in force: -1");
  order = orderOf(kBuy, 1);
  order.ints[order::DirectionAt] = 2;
  EXPECT_EQ(reasonOf(order), "rejected: bad direction: 2");
  order = orderOf(kBuy, 1);
  order.ints[order::OffsetAt] = 3;
  EXPECT_EQ(reasonOf(order), "rejected: bad offset: 3");
}

TEST_F(Rejection, shouldNameABadVolume) {
  instrument.lotSize = "0.5";
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 0)), "rejected: bad volume: 0 is not above 0");
  EXPECT_EQ(reasonOf(orderOf(kBuy, -1)), "rejected: bad volume: -1 is not above 0");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 0.7)), "rejected: bad volume: 0.7 is not a multiple of 0.5");
}

TEST_F(Rejection, shouldTakeAnyVolumeOfACodeWhoseLotSizeIsNotKnown) {
  instrument.lotSize.clear();
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1.5)), "not rejected");
}

TEST_F(Rejection, shouldSayThatANumberIsTooLarge) {
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1e12)), "rejected: bad volume: 1000000000000 is too large");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Limit, 1e9)),
            "rejected: bad limit price: 1000000000 is too large");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Stop, HUGE_VAL)),
            "rejected: bad stop price: inf is too large");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1e-9)), "rejected: bad volume: 0.000000001 is not above 0");
}

TEST_F(Rejection, shouldNameABadPrice) {
  instrument.priceTick = "0.05";
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Limit, 10.03)),
            "rejected: bad limit price: 10.03 is not a multiple of the price tick 0.05");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Stop, 0)),
            "rejected: bad stop price: 0 is not above 0");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Limit, 0.15)), "not rejected");
}

TEST_F(Rejection, shouldNameThePriceLimitsOfTheDay) {
  IDepthMarketData record;
  QuoteWriter writer(record);
  writer.set(quote::UpperLimit, 11);
  writer.set(quote::LowerLimit, 9);
  exchange->onTick(code.id, record, 0);
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1, order::Type::Limit, 11.5)),
            "rejected: bad limit price: 11.5 is above the day's upper limit 11");
  EXPECT_EQ(reasonOf(orderOf(kSell, 1, order::Type::Limit, 8)),
            "rejected: bad limit price: 8 is below the day's lower limit 9");
}

TEST_F(Rejection, shouldRefuseOutsideASessionThatGoesOverMidnightWhereThatIsChosen) {
  options.rejectsOutsideSessions = true;
  instrument.sessions = "21:00-02:30,09:00-11:30";
  instrument.timeZone = "Asia/Shanghai";
  open();
  constexpr int64 kHour = 3'600'000;
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 13 * kHour), "not rejected");  // 21:00 there.
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 18 * kHour + kHour / 2 - 1), "not rejected");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 18 * kHour + kHour / 2),
            "rejected: the session of C is closed");             // 02:30 there.
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), kHour), "not rejected");  // 09:00 there.
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 13 * kHour - 1), "rejected: the session of C is closed");
}

TEST_F(Rejection, shouldNameTheMoneyThatIsMissing) {
  startBalance = "1000";
  instrument.marginRate = "0.1";
  instrument.feePerLot = "2";
  instrument.multiplier = "10";
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 3, order::Type::Limit, 400)),
            "rejected: not enough money: needs 1206, available 1000");
  limit(kBuy, 400, 0);
  EXPECT_EQ(capital().frozen(), 402);
  EXPECT_EQ(capital().available(), 598);
  take();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 2, order::Type::Limit, 400)),
            "rejected: not enough money: needs 804, available 598");
}

TEST_F(Rejection, shouldAlwaysMeetANeedOfZero) {
  startBalance = "1";
  open();
  buy(100, 0);
  bar(0, 10, 10, 10, 10);
  bar(1, 5, 5, 5, 5);
  EXPECT_LT(capital().available(), 0);
  take();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1)), "not rejected");
}

TEST_F(Rejection, shouldNameThePositionThatIsMissingAlsoWhereAnotherOrderHoldsIt) {
  buy(2, 0);
  bar(0, 10, 10, 10, 10);
  place(orderOf(kSell, 1, order::Type::Limit, 50, order::Offset::Close), 10);
  take();
  EXPECT_EQ(reasonOf(orderOf(kSell, 2, order::Type::Market, 0, order::Offset::Close)),
            "rejected: not enough position to close: long volume 1 is free, asked for 2");
  source = "other";
  EXPECT_EQ(reasonOf(orderOf(kSell, 1, order::Type::Market, 0, order::Offset::Close)),
            "rejected: not enough position to close: long volume 0 is free, asked for 1");
}

TEST_F(Rejection, shouldNameEachRiskLimitAndGoOn) {
  options.limits = {{"S", "5", "8", "100", 3}};
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 6), 0), "rejected: risk limit: order volume 6 is above 5");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 5), 0), "not rejected");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 4), 0),
            "rejected: risk limit: position 9 with orders at work would be above 8");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 999),
            "rejected: risk limit: more than 3 orders within a second");
  source = "other";
  EXPECT_EQ(reasonOf(orderOf(kBuy, 50), 999), "not rejected");
  source = "S";
  lastEnd = 5000;
  bar(500, 50, 50, 50, 50);
  bar(501, 20, 20, 20, 20);
  take();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 1), 6000), "rejected: risk limit: loss 150 is above 100");
  EXPECT_EQ(reasonOf(orderOf(kSell, 1, order::Type::Market, 0, order::Offset::Close), 6000),
            "not rejected");
}

TEST_F(Rejection, shouldHoldASourceToTheLastOfItsRiskLimits) {
  options.limits = {{"S", "5", "", "1", 0}, {"T", "5", "", "", 0}, {"S", "7", "", "", 0}};
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 8), 0), "rejected: risk limit: order volume 8 is above 7");
  EXPECT_EQ(reasonOf(orderOf(kBuy, 7), 0), "not rejected");
  options.limits.push_back({"S", "", "", "", 0});
  open();
  EXPECT_EQ(reasonOf(orderOf(kBuy, 8), 0), "not rejected");
  source = "T";
  EXPECT_EQ(reasonOf(orderOf(kBuy, 8), 0), "rejected: risk limit: order volume 8 is above 5");
}

TEST_F(Rejection, shouldNameTheVolumeThatAnAccountMayHoldAndAwait) {
  place(orderOf(kBuy, 9e9), 0);
  EXPECT_THAT(take(), IsEmpty());
  EXPECT_EQ(reasonOf(orderOf(kSell, 2e9)),
            "rejected: too much volume: asked for 2000000000, the account holds and awaits "
            "9000000000 of at most 10000000000");
  EXPECT_EQ(reasonOf(orderOf(kSell, 1e9)), "not rejected");
}

TEST_F(Rejection, shouldNotWrapTheVolumeThatARiskLimitLooksAt) {
  options.limits = {{"S", "", "92000000000", "", 0}};
  open();
  for (int key = 1; key <= 9; ++key) {
    account.accountKey = key;
    exchange->addAccount(account, "");
    place(orderOf(kBuy, 9.9e9), 0);
  }
  EXPECT_THAT(take(), IsEmpty());
  const std::string tooMuch =
      "rejected: risk limit: position 92233720368.54775807 with orders at work would be above "
      "92000000000";
  EXPECT_EQ(reasonOf(orderOf(kBuy, 9.9e9)), tooMuch);  // All of it at work,
  bar(0, 1, 1, 1, 1);
  EXPECT_EQ(take().size(), 9u);
  EXPECT_EQ(reasonOf(orderOf(kBuy, 9.9e9), 10), tooMuch);  // or held.
  EXPECT_EQ(reasonOf(orderOf(kBuy, 90e9), 10), tooMuch);
}

TEST_F(Rejection, shouldRefuseAStartBalanceOutOfRange) {
  startBalance = "1000000000000000";
  open();
  startBalance = "1000000000000000.01";
  EXPECT_THROW(open(), std::invalid_argument);
  startBalance = "-1000000000000001";
  EXPECT_THROW(open(), std::invalid_argument);
}

}  // namespace
}  // namespace orvane::testing
