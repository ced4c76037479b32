// A server run's accounts: those that the host gave, attached as often as asked, and detached at
// the end.

#include "EventStrategy/ov.strategy.runner/IRunnerGlobal.h"
#include "tests/EventStrategy/ov.strategy.runner/RunnerTest.h"

namespace orvane::support {
namespace {

using Refs = std::map<std::pair<int, std::string>, int>;

AccountRecord hostAccount(int counterType, const std::string& account) {
  AccountRecord record;
  record.id.counterType = counterType;
  record.id.text3 = account;
  record.login.text5 = "five";
  TradingAccountID first, second;
  first.account = account + "/1";
  second.account = account + "/2";
  record.tradingAccounts = {first, second};
  return record;
}

class ServerAccountsTest : public RunnerTest {
 protected:
  ServerAccountsTest() : RunnerTest(1) {
    AccountRecord bare = hostAccount(3, "bare");
    bare.tradingAccounts.clear();
    IRunnerGlobal::instance()->setAccounts(
        {hostAccount(3, "b"), hostAccount(3, "a"), hostAccount(2, "z"), bare});
    platform.calls.clear();
  }
  ~ServerAccountsTest() override { IRunnerGlobal::instance()->setKeepDetail(true); }

  Refs refs() { return TestAccess::accountRefs(user); }

  const ResultStatus noSuchAccount{22, gbkFromUtf8("账号不存在")};
  ServerUserContext& user = TestAccess::serverContext(*runner);
};

TEST_F(ServerAccountsTest, shouldAttachAHostsAccountAndAnswerWhatTheServiceSays) {
  EXPECT_EQ(user.attachAccount("a", 3), ResultStatus());
  EXPECT_THAT(platform.calls.entries(), ElementsAre("trade.attachAccount a"));
  EXPECT_EQ(platform.trade().lastAccount.id.counterType, 3);
  EXPECT_EQ(platform.trade().lastAccount.login.text5, "five");
  EXPECT_EQ(platform.trade().lastAccount.tradingAccounts.size(), 2u);
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 1}}));
}

TEST_F(ServerAccountsTest, shouldGiveTheServiceNoMoreThanTheHostsSwitchLetsThrough) {
  IRunnerGlobal::instance()->setKeepDetail(false);
  user.attachAccount("a", 3);
  EXPECT_EQ(platform.trade().lastAccount.login.text5, "");
}

TEST_F(ServerAccountsTest, shouldAnswer22ForAnAccountThatTheHostDidNotGiveAndDoNothingElse) {
  user.attachAccount("a", 3);
  platform.calls.clear();
  TradingAccountID found;
  found.account = "mine";
  for (const auto& [account, counter] : {std::pair{"no", 3}, std::pair{"a", 2}}) {
    EXPECT_EQ(user.attachAccount(account, counter), noSuchAccount);
    EXPECT_EQ(user.detachAccount(account, counter), noSuchAccount);
    EXPECT_EQ(user.findTradingAccount(account, counter, found), noSuchAccount);
  }
  EXPECT_EQ(found.account, "mine");
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 1}}));
  EXPECT_THAT(platform.calls.entries(), IsEmpty());
}

TEST_F(ServerAccountsTest, shouldDetachTwiceInOneCallAfterTwoAttachesAndThenDoNothing) {
  user.attachAccount("a", 3);
  user.attachAccount("a", 3);
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 2}}));
  platform.calls.answer("trade.detachAccount", {38, "no"});
  platform.calls.clear();
  EXPECT_EQ(user.detachAccount("a", 3), ResultStatus());
  EXPECT_THAT(platform.calls.entries(),
              ElementsAre("trade.detachAccount a", "trade.detachAccount a"));
  EXPECT_TRUE(refs().empty());
  EXPECT_EQ(user.detachAccount("a", 3), ResultStatus());
  EXPECT_EQ(platform.calls.count("trade."), 2);
}

TEST_F(ServerAccountsTest, shouldCountAnAttachThatTheServiceRefusesAndDetachItAtExit) {
  platform.calls.answer("trade.attachAccount", {38, "no"});
  EXPECT_EQ(user.attachAccount("a", 3), (ResultStatus{38, "no"}));
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 1}}));
  user.exit();
  EXPECT_EQ(platform.calls.count("trade.detachAccount a"), 1);
  EXPECT_TRUE(refs().empty());
}

TEST_F(ServerAccountsTest, shouldCountAnAccountTextPerCounterType) {
  IRunnerGlobal::instance()->setAccounts({hostAccount(4, "a")});
  user.attachAccount("a", 3);
  user.attachAccount("a", 4);
  user.detachAccount("a", 3);
  EXPECT_EQ(refs(), (Refs{{{4, "a"}, 1}}));
}

TEST_F(ServerAccountsTest, shouldDetachByCounterTypeAndThenByTextAfterTheBaseTeardown) {
  user.attachAccount("b", 3);
  user.attachAccount("a", 3);
  user.attachAccount("z", 2);
  user.attachAccount("a", 3);
  user.subscribeQuote(codeOf(7), 0);
  platform.calls.clear();
  logs.clear();
  bool baseIsDone = true;
  platform.calls.onCall("trade.detachAccount", [&] {
    baseIsDone = baseIsDone && runnerLogged("DEBUG", ",stop all timer");
  });
  user.exit();
  EXPECT_TRUE(baseIsDone);
  EXPECT_THAT(platform.calls.entries("trade.detachAccount"),
              ElementsAre("trade.detachAccount z", "trade.detachAccount a", "trade.detachAccount a",
                          "trade.detachAccount b"));
  EXPECT_EQ(platform.calls.count("quote.unsubscribeQuote"), 1);
  EXPECT_TRUE(refs().empty());
  user.exit();
  EXPECT_EQ(platform.calls.count("trade.detachAccount"), 4);
}

TEST_F(ServerAccountsTest, shouldDetachWhenARunStops) {
  script->on("onStart", [](IContext* context) { context->attachAccount("a", 3); });
  startRun();
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 1}}));
  runner->stop();
  pool.runAll();
  EXPECT_EQ(platform.calls.count("trade.detachAccount a"), 1);
  EXPECT_TRUE(refs().empty());
}

TEST_F(ServerAccountsTest, shouldDetachNothingWhenItIsDestroyed) {
  user.attachAccount("a", 3);
  runner->stopEvent();
  runner.reset();
  pool.runAll();
  EXPECT_EQ(platform.calls.count("trade.detachAccount"), 0);
}

TEST_F(ServerAccountsTest, shouldFindTheFirstTradingAccountInTheHostsStoreAndAskNoService) {
  TradingAccountID found;
  EXPECT_EQ(user.findTradingAccount("a", 3, found), ResultStatus());
  EXPECT_EQ(found.account, "a/1");
  EXPECT_EQ(platform.calls.count("trade."), 0);
}

TEST_F(ServerAccountsTest, shouldAnswer22ForAnAccountWithoutTradingAccounts) {
  TradingAccountID found;
  found.account = "mine";
  EXPECT_EQ(user.findTradingAccount("bare", 3, found), noSuchAccount);
  EXPECT_EQ(found.account, "mine");
}

TEST_F(ServerAccountsTest, shouldAnswer23WhereThereIsNoTradeSideAndStillCount) {
  platform.routes.hasTrade = false;
  EXPECT_EQ(user.attachAccount("a", 3), (ResultStatus{23, gbkFromUtf8("不支持")}));
  EXPECT_EQ(refs(), (Refs{{{3, "a"}, 1}}));
  EXPECT_EQ(user.detachAccount("a", 3), ResultStatus());
  EXPECT_TRUE(refs().empty());
  platform.routes.hasTrade = true;
}

}  // namespace
}  // namespace orvane::support
