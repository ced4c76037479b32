#include "platform/market/files/ColumnNames.h"

#include <gtest/gtest.h>

namespace orvane::detail {
namespace {

Role roleOf(const char* name) { return roleOfName(name).value_or(NamedRole{}).role; }

TEST(ColumnNames, shouldKnowNamesInEveryCommonStyle) {
  const std::pair<const char*, Role> kCases[] = {{"Open", Role::Open},
                                                 {"<OPEN>", Role::Open},
                                                 {"open_price", Role::Open},
                                                 {"开盘价", Role::Open},
                                                 {"VOL", Role::Volume},
                                                 {"Vol.", Role::Volume},
                                                 {"成交量(手)", Role::Volume},
                                                 {"Volume (BTC)", Role::Volume},
                                                 {"Volume USDT", Role::Volume},
                                                 {"成交额", Role::Turnover},
                                                 {"持仓量", Role::OpenInterest},
                                                 {"oi", Role::OpenInterest},
                                                 {"open_interest", Role::OpenInterest},
                                                 {"openInterest", Role::OpenInterest},
                                                 {"ts_code", Role::Code},
                                                 {"local_symbol", Role::Code},
                                                 {"trade_date", Role::TradeDate},
                                                 {"action_date", Role::ActionDate},
                                                 {"action_time", Role::Time},
                                                 {"UpdateMillisec", Role::Millis},
                                                 {"Last Price", Role::LastPrice},
                                                 {"settle_price", Role::Settle},
                                                 {"px", Role::LastPrice},
                                                 {"总成交量", Role::TotalVolume},
                                                 {"日期", Role::Date},
                                                 {"最高", Role::High},
                                                 {"foo", Role::None},
                                                 {"", Role::None},
                                                 {"__", Role::None},
                                                 {"asset", Role::None},
                                                 {"side", Role::None},
                                                 {"pct_chg", Role::None}};
  for (const auto& [name, role] : kCases) EXPECT_EQ(roleOf(name), role) << name;
}

TEST(ColumnNames, shouldKnowTheLadderInEveryCommonStyle) {
  const std::pair<const char*, NamedRole> kCases[] = {{"bid1", {Role::BidPrice, 1, true}},
                                                      {"BidPrice1", {Role::BidPrice, 1, true}},
                                                      {"bid_price_1", {Role::BidPrice, 1, true}},
                                                      {"bp1", {Role::BidPrice, 1, true}},
                                                      {"bv1", {Role::BidSize, 1, true}},
                                                      {"ask_volume_5", {Role::AskSize, 5, true}},
                                                      {"askqty3", {Role::AskSize, 3, true}},
                                                      {"a1_p", {Role::AskPrice, 1, true}},
                                                      {"b10_v", {Role::BidSize, 10, true}},
                                                      {"AskPx[0]", {Role::AskPrice, 0, true}},
                                                      {"asks[2].amount", {Role::AskSize, 2, true}},
                                                      {"bids[0].price", {Role::BidPrice, 0, true}},
                                                      {"bid", {Role::BidPrice, 0, false}},
                                                      {"ask_size", {Role::AskSize, 0, false}},
                                                      {"best_bid_qty", {Role::BidSize, 0, false}},
                                                      {"申买价一", {Role::BidPrice, 1, true}},
                                                      {"申卖量五", {Role::AskSize, 5, true}},
                                                      {"买一价", {Role::BidPrice, 1, true}},
                                                      {"卖十量", {Role::AskSize, 10, true}},
                                                      {"s1", {Role::AskPrice, 1, true}},
                                                      {"offer_price2", {Role::AskPrice, 2, true}},
                                                      {"bid_px_00", {Role::BidPrice, 0, true}},
                                                      {"sell3_volume", {Role::AskSize, 3, true}}};
  for (const auto& [name, role] : kCases) EXPECT_EQ(roleOfName(name), role) << name;
  for (const char* name : {"bid11", "bid99999", "bids_total", "buyer", "b", "a", "s", "as", "ab1"})
    EXPECT_EQ(roleOfName(name), std::nullopt) << name;
}

TEST(ColumnNames, shouldKnowAllNamesOfOurs) {
  for (const std::string& name : ourNames()) {
    const auto role = roleOfOurName(name);
    ASSERT_TRUE(role.has_value()) << name;
    EXPECT_EQ(ourName(role->role, role->level), name);
  }
  EXPECT_EQ(roleOfOurName("-")->role, Role::None);
}

}  // namespace
}  // namespace orvane::detail
