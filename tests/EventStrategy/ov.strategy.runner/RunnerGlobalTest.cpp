// The store of the host's accounts.

#include "EventStrategy/ov.strategy.runner/RunnerGlobal.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "shared/GbkLiteral.h"

namespace orvane::support {
namespace {

AccountRecord recordOf(int counterType, const std::string& account, const std::string& mark = {}) {
  AccountRecord record;
  record.id.counterType = counterType;
  record.id.text3 = account;
  record.login.text3 = "kept";
  record.login.text5 = "five";
  record.login.text6 = "six";
  record.text1 = mark;
  record.hidden = {"a", 1, "b", "c", 2, 3};
  record.text7 = "last";
  TradingAccountID trading;
  trading.accountKey = counterType;
  record.tradingAccounts.push_back(trading);
  return record;
}

void expectDetail(const AccountRecord& record) {
  EXPECT_EQ(record.login.text5, "five");
  EXPECT_EQ(record.login.text6, "six");
  EXPECT_EQ(record.hidden.text1, "a");
  EXPECT_EQ(record.hidden.value1, 1);
  EXPECT_EQ(record.hidden.text2, "b");
  EXPECT_EQ(record.hidden.text3, "c");
  EXPECT_EQ(record.hidden.value2, 2);
  EXPECT_EQ(record.hidden.value3, 3);
}

void expectNoDetail(const AccountRecord& record) {
  EXPECT_EQ(record.login.text5, "");
  EXPECT_EQ(record.login.text6, "");
  EXPECT_EQ(record.hidden.text1, "");
  EXPECT_EQ(record.hidden.value1, 0);
  EXPECT_EQ(record.hidden.text2, "");
  EXPECT_EQ(record.hidden.text3, "");
  EXPECT_EQ(record.hidden.value2, 0);
  EXPECT_EQ(record.hidden.value3, 0);
}

TEST(RunnerGlobalTest, shouldBeOneObjectForEveryThread) {
  std::vector<IRunnerGlobal*> seen(8);
  std::vector<std::thread> threads;
  for (IRunnerGlobal*& each : seen)
    threads.emplace_back([&each] { each = IRunnerGlobal::instance(); });
  for (std::thread& thread : threads) thread.join();
  for (const IRunnerGlobal* each : seen) EXPECT_EQ(each, IRunnerGlobal::instance());
}

TEST(RunnerGlobalTest, shouldNotFindAnythingInAFreshStore) {
  RunnerGlobal store;
  AccountRecord out = recordOf(9, "mine", "untouched");
  const ResultStatus status = store.getAccount(2, "a", out);
  EXPECT_EQ(status.code, 22);
  EXPECT_EQ(status.message, "不存在"_gbk);
  EXPECT_EQ(out.text1, "untouched");
  EXPECT_EQ(out.id.text3, "mine");
}

TEST(RunnerGlobalTest, shouldGiveAnAccountWhole) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a", "first"), recordOf(2, "b", "second")});
  AccountRecord out;
  const ResultStatus status = store.getAccount(2, "b", out);
  EXPECT_EQ(status.code, 0);
  EXPECT_EQ(status.message, "");
  EXPECT_EQ(out.id.text3, "b");
  EXPECT_EQ(out.text1, "second");
  EXPECT_EQ(out.text7, "last");
  ASSERT_EQ(out.tradingAccounts.size(), 1u);
  EXPECT_EQ(out.tradingAccounts.front().accountKey, 2);
  expectDetail(out);
}

TEST(RunnerGlobalTest, shouldNotFindAKnownAccountUnderAnotherCounterType) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a")});
  AccountRecord out;
  EXPECT_EQ(store.getAccount(3, "a", out).code, 22);
}

TEST(RunnerGlobalTest, shouldTakeACounterTypeAsUnsignedWhenStoringAndReading) {
  RunnerGlobal store;
  store.setAccounts({recordOf(-1, "a", "minus")});
  store.setKeepDetailByCounter({{4294967295U, false}});
  AccountRecord out;
  ASSERT_EQ(store.getAccount(-1, "a", out).code, 0);
  EXPECT_EQ(out.text1, "minus");
  expectNoDetail(out);
}

TEST(RunnerGlobalTest, shouldReplaceAnAccountWholeWhenItIsSetAgain) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a", "old")});
  AccountRecord bare;
  bare.id.counterType = 2;
  bare.id.text3 = "a";
  store.setAccounts({bare});
  AccountRecord out = recordOf(2, "x", "was here");
  ASSERT_EQ(store.getAccount(2, "a", out).code, 0);
  EXPECT_EQ(out.text1, "");
  EXPECT_EQ(out.text7, "");
  EXPECT_TRUE(out.tradingAccounts.empty());
}

TEST(RunnerGlobalTest, shouldKeepAccountsThatALaterListDoesNotName) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a")});
  store.setAccounts({recordOf(2, "b")});
  AccountRecord out;
  EXPECT_EQ(store.getAccount(2, "a", out).code, 0);
}

TEST(RunnerGlobalTest, shouldFollowTheGeneralSwitchWhereACounterTypeHasNone) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a"), recordOf(3, "a")});
  store.setKeepDetailByCounter({{3, true}});
  AccountRecord out;
  store.getAccount(2, "a", out);
  expectDetail(out);  // Detail is kept until somebody says otherwise.
  store.setKeepDetail(false);
  store.getAccount(2, "a", out);
  expectNoDetail(out);
  EXPECT_EQ(out.login.text3, "kept");
  store.getAccount(3, "a", out);
  expectDetail(out);
}

TEST(RunnerGlobalTest, shouldKeepTheSwitchesThatALaterCallDoesNotName) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a"), recordOf(3, "a")});
  store.setKeepDetailByCounter({{2, false}});
  store.setKeepDetailByCounter({{3, false}});
  AccountRecord out;
  store.getAccount(2, "a", out);
  expectNoDetail(out);
  store.setKeepDetailByCounter({{2, true}});
  store.getAccount(2, "a", out);
  expectDetail(out);
}

TEST(RunnerGlobalTest, shouldNeverChangeTheStoredRecord) {
  RunnerGlobal store;
  store.setAccounts({recordOf(2, "a")});
  store.setKeepDetail(false);
  AccountRecord out;
  store.getAccount(2, "a", out);
  expectNoDetail(out);
  store.setKeepDetail(true);
  store.getAccount(2, "a", out);
  expectDetail(out);
}

}  // namespace
}  // namespace orvane::support
