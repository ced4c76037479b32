#include "shared/TextForms.h"

#include <gtest/gtest.h>

#include "shared/BaseInformation.h"
#include "tests/shared/Iconv.h"

namespace orvane {
namespace {

using support::gbkFromUtf8;

/// Puts base information in place for a test's time.
class TextForms : public ::testing::Test {
 protected:
  TextForms() {
    auto tables = std::make_shared<BaseInformationMap>();
    tables->markets[4] = {"CFFEX"};
    tables->markets[9] = {gbkFromUtf8("上期所")};
    tables->infoNames[7] = {gbkFromUtf8("期货")};
    tables->infoNames[0] = {"zero"};
    gBaseInformationMap = tables;
  }
  ~TextForms() override { gBaseInformationMap.reset(); }
};

TEST_F(TextForms, shouldJoinCodeAndMarketNameByADot) {
  EXPECT_EQ(codeText({1, 0, 4, "IF2101"}), "IF2101.CFFEX");
  EXPECT_EQ(codeText({1, 0, 9, "cu2103"}), "cu2103." + gbkFromUtf8("上期所"));
}

TEST_F(TextForms, shouldKeepTheDotWhenTheMarketHasNoName) {
  EXPECT_EQ(codeText({1, 0, 5, "X"}), "X.");
  EXPECT_EQ(codeText(ICodeID{}), ".");
}

TEST_F(TextForms, shouldKeepTheDotWhenThereIsNoBaseInformation) {
  gBaseInformationMap.reset();
  EXPECT_EQ(codeText({1, 0, 4, "IF2101"}), "IF2101.");
}

TEST_F(TextForms, shouldJoinTheFiveNamesOfAnAccountByAtSigns) {
  TradingAccountID account;
  account.text1 = "desk";
  account.account = "0815";
  account.currency = 0;
  account.infoKey = 7;
  account.hedgeFlag = 3;
  EXPECT_EQ(accountText(account), "desk@0815@CNY@" + gbkFromUtf8("期货") + "@Hedge");
}

TEST_F(TextForms, shouldPrintUnknowmoneyForADefaultAccount) {
  EXPECT_EQ(accountText(TradingAccountID{}), "@@unknowmoney@zero@Unknown");
}

TEST_F(TextForms, shouldPrintAnEmptyCurrencyNameFor14AndForMinus1) {
  TradingAccountID account;
  for (const int currency : {14, -1, 15, 1000}) {
    account.currency = currency;
    EXPECT_EQ(accountText(account), "@@@zero@Unknown") << currency;
  }
}

TEST_F(TextForms, shouldPrintAnEmptyHedgeNameFor5AndFor6) {
  TradingAccountID account;
  for (const int flag : {5, 6, -1}) {
    account.hedgeFlag = flag;
    EXPECT_EQ(accountText(account), "@@unknowmoney@zero@") << flag;
  }
}

TEST_F(TextForms, shouldPrintAnEmptyInfoNameWhereTheKeyOrTheTableIsMissing) {
  TradingAccountID account;
  account.infoKey = 99;
  EXPECT_EQ(accountText(account), "@@unknowmoney@@Unknown");
  gBaseInformationMap.reset();
  EXPECT_EQ(accountText(account), "@@unknowmoney@@Unknown");
}

}  // namespace
}  // namespace orvane
