#include "shared/CodeTables.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/shared/Iconv.h"

namespace orvane {
namespace {

using support::gbkFromUtf8;

const std::vector<std::pair<int, const char*>>& statusTexts() {
  static const std::vector<std::pair<int, const char*>> rows = {
      {-31, "边界最小值"},
      {-30, "403请求被拒"},
      {-29, "Token异常"},
      {-28, "Sqlite的step报错corrupt"},
      {-27, "CTP柜台版本不兼容"},
      {-26, "查询限制"},
      {-25, "前置机断开连接(不重连)"},
      {-24, "前置机未连接"},
      {-23, "超时"},
      {-22, "请修改密码后重新登录"},
      {-21, "非致命性登录失败（允许再次登录）"},
      {-20, "重复登录"},
      {-19, "Sqlite的prepare语句失败"},
      {-18, "SqliteAPI持久化session不存在"},
      {-17, "用户修改密码失败"},
      {-16, "已经连接"},
      {-15, "同步数据未完"},
      {-14, "认证失败"},
      {-13, "用户登出超时"},
      {-12, "用户登出失败"},
      {-11, "用户登录失败"},
      {-10, "前置机断开连接"},
      {-9, "无效前置机地址"},
      {-8, "连接失败"},
      {-7, "连接断开"},
      {-6, "未连接"},
      {-5, "账户或密码错误"},
      {-4, "密码错误"},
      {-3, "账户错误"},
      {-2, "无效参数"},
      {-1, "未知错误"},
      {0, "正确"},
      {1, "订阅失败"},
      {2, "退订失败"},
      {3, "获取全部合约属性失败"},
      {4, "获取行情失败"},
      {5, "获取交易所行情失败"},
      {6, "更新行情失败"},
      {7, "申请KLine失败"},
      {8, "申请Tick失败"},
      {9, "申请Timesale失败"},
      {10, "申请Deallist失败"},
      {11, "查询今日KLine失败"},
      {12, "查询历史KLine失败"},
      {13, "查询今日Tick失败"},
      {14, "查询历史Tick失败"},
      {15, "查询今日Timesale失败"},
      {16, "查询历史Timesale失败"},
      {17, "无效KLine周期"},
      {18, "警告"},
      {19, "字段拷贝非法"},
      {20, "底层原始错误"},
      {21, "查询资金账户错误"},
      {22, "不存在"},
      {23, "不支持"},
      {24, "内存不足"},
      {25, "缺少认证信息"},
      {26, "注册回调失败"},
      {27, "内存分配失败"},
      {28, "未连接的市场类型"},
      {29, "结算确认失败"},
      {30, "未完成初始化任务"},
      {31, "ICE 网络未连接"},
      {32, "MAIN SERVICE初始化失败"},
      {33, "已存在"},
      {34, "ICE 服务异常"},
      {35, "未登陆"},
      {36, "基础周期列表查询失败"},
      {37, "非交易时段"},
      {38, "可平仓位不足"},
      {39, "DC未有已登录的用户"},
      {40, "错误的客户端类型"},
      {41, "客户端内部错误"},
      {42, "没有权限"},
      {43, "申请depth失败"},
      {44, "序列化失败"},
      {45, "反序列化失败"},
      {46, "未达到间隔时间"},
      {47, "时间过期"},
      {48, "忽略信号"},
      {49, "非程序化交易"},
      {50, "正在查询"},
      {51, "第一次登陆"},
      {52, "触发流控"},
      {53, "触发黑名单"},
      {54, "软件退出"},
      {56, "数据重置"},
      {57, "合约换日"},
      {58, "登录繁忙，稍后重试"},
  };
  return rows;
}

TEST(ResultStatusMessages, shouldHoldEachMessageInGbkAtCodePlus31) {
  ASSERT_EQ(statusTexts().size(), 89u);
  for (const auto& [code, utf8] : statusTexts())
    EXPECT_EQ(std::string(ResultStatusMessages.at(code + 31)), gbkFromUtf8(utf8)) << code;
}

TEST(ResultStatusMessages, shouldHoldNotThereFor22AndUnknownErrorForMinus1AtPlus31) {
  EXPECT_EQ(std::string(ResultStatusMessages[22 + 31]), gbkFromUtf8("不存在"));
  EXPECT_EQ(std::string(ResultStatusMessages[-1 + 31]), gbkFromUtf8("未知错误"));
}

TEST(ResultStatusMessages, shouldBeginWithTheLowestCodeAndHoldRightAtPosition31) {
  EXPECT_EQ(std::string(ResultStatusMessages.front()), gbkFromUtf8("边界最小值"));
  EXPECT_EQ(std::string(ResultStatusMessages[31]), gbkFromUtf8("正确"));
  EXPECT_EQ(std::string(ResultStatusMessages.back()), gbkFromUtf8("登录繁忙，稍后重试"));
}

TEST(ResultStatusMessages, shouldHaveNoTextForCode55) {
  EXPECT_EQ(std::string(ResultStatusMessages[55 + 31]), "");
}

TEST(StatusMessage, shouldBeEmptyOutsideTheTable) {
  EXPECT_STREQ(statusMessage(-32), "");
  EXPECT_STREQ(statusMessage(59), "");
  EXPECT_EQ(std::string(statusMessage(-31)), gbkFromUtf8("边界最小值"));
  EXPECT_EQ(std::string(statusMessage(58)), gbkFromUtf8("登录繁忙，稍后重试"));
}

TEST(HedgeFlagCodes, shouldMapFiveTextsToTheirCodes) {
  const std::map<std::string, int> expected = {
      {"Unknown", 0}, {"Speculatio", 1}, {"Arbitrage", 2}, {"Hedge", 3}, {"MarketMaker", 4}};
  EXPECT_EQ(HedgeFlagCodes, expected);
}

TEST(HedgeFlagNames, shouldHoldTheTextsByCodeAndAnEmptySixth) {
  ASSERT_EQ(hedgeFlagNames.size(), 6u);
  for (const auto& [text, code] : HedgeFlagCodes) EXPECT_EQ(text, hedgeFlagNames[code]);
  EXPECT_STREQ(hedgeFlagNames[5], "");
}

TEST(PriorityCodes, shouldMapThreeTextsToTheirCodes) {
  const std::map<std::string, int> expected = {
      {"NULL_PRIORITY", 0}, {"TODAY_PRIORITY", 1}, {"YESTERDAY_PRIORITY", 2}};
  EXPECT_EQ(PriorityCodes, expected);
}

TEST(EventSourceNames, shouldNameEachBitAndTheWholeMaskInGbk) {
  const std::map<int, std::string> expected = {
      {1, gbkFromUtf8("非本机")},    {2, gbkFromUtf8("手工")},
      {4, gbkFromUtf8("程序化")},    {8, "OVPY"},
      {16, gbkFromUtf8("算法中心")}, {32, gbkFromUtf8("交易助手")},
      {64, gbkFromUtf8("头寸监控")}, {128, gbkFromUtf8("模式")},
      {255, gbkFromUtf8("全部")}};
  EXPECT_EQ(EventSourceNames, expected);
}

TEST(CounterTypeCodes, shouldHold45CountersWithTheirCodes) {
  const std::map<std::string, int> expected = {
      {"UNKNOWN", 0},      {"OVPaperDesk", 1}, {"CTP", 2},          {"Rohon", 3},
      {"HsUfx", 4},        {"ITN", 5},         {"JSD", 6},          {"GSA", 7},
      {"KD", 8},           {"HSO32", 9},       {"KingNew", 10},     {"Femas", 11},
      {"Cms", 12},         {"Cms2", 13},       {"XTEXT", 14},       {"QDIAM", 15},
      {"ZhiFu", 16},       {"QDP", 17},        {"ZhiDa", 18},       {"HxXt", 19},
      {"OVOldFuture", 20}, {"OVAsset", 21},    {"CTPSe", 22},       {"OVSTK", 23},
      {"XTPSTK", 24},      {"HSIS", 25},       {"CTPStkOptSe", 26}, {"FemasFull", 27},
      {"UfxStkOpt", 28},   {"Esunny", 29},     {"XTCTP", 30},       {"TradeGateWay", 31},
      {"Jees", 32},        {"PBCms", 33},      {"Pobo", 34},        {"CTP63", 35},
      {"Local", 36},       {"HSPB", 37},       {"OVOldStock", 38},  {"HSOPlus", 39},
      {"OVCloudSimu", 40}, {"CTPSm", 41},      {"GSFt", 42},        {"IBTWS", 43},
      {"Tiger", 44},
  };
  ASSERT_EQ(expected.size(), 45u);
  EXPECT_EQ(CounterTypeCodes, expected);
}

TEST(CurrencyNames, shouldHoldFifteenTextsOfWhichTheLastIsEmpty) {
  const std::vector<std::string> expected = {"CNY", "USD",         "HKD",  "GBP", "JPY",
                                             "CAD", "AUD",         "EUR",  "CHF", "KRW",
                                             "MYR", "unknowmoney", "CUSD", "SGD", ""};
  EXPECT_EQ(std::vector<std::string>(currencyNames.begin(), currencyNames.end()), expected);
}

TEST(FlagBitNames, shouldHoldNoneAndTheNumberOfEachBitFrom0To29) {
  ASSERT_EQ(FlagBitNames.size(), 31u);
  EXPECT_EQ(FlagBitNames.at(0), "None");
  for (int bit = 0; bit < 30; ++bit) EXPECT_EQ(FlagBitNames.at(1 << bit), std::to_string(bit));
}

TEST(EventSourceText, shouldBeEmptyForAMaskOf0) { EXPECT_EQ(eventSourceText(0), ""); }

TEST(EventSourceText, shouldJoinTheNamesOfTwoBitsForAMaskOf3) {
  EXPECT_EQ(eventSourceText(3), gbkFromUtf8("非本机|手工"));
}

TEST(EventSourceText, shouldNameEightBitsAndNeverTheWholeForAMaskOf255) {
  EXPECT_EQ(eventSourceText(255),
            gbkFromUtf8("非本机|手工|程序化|OVPY|算法中心|交易助手|头寸监控|模式"));
}

TEST(EventSourceCodes, shouldHaveEightEntriesInAscendingOrderForAMaskOf255) {
  EXPECT_EQ(eventSourceCodes(255), (std::list<int>{1, 2, 4, 8, 16, 32, 64, 128}));
}

TEST(EventSourceCodes, shouldHaveNoneForAMaskOf256SinceNoKeyHasThatBit) {
  EXPECT_TRUE(eventSourceCodes(256).empty());
  EXPECT_EQ(eventSourceText(256), "");
}

TEST(EventSourceCodes, shouldIgnoreBitsOutsideTheTableBesideOthers) {
  EXPECT_EQ(eventSourceCodes((int64{1} << 40) | 256 | 4), (std::list<int>{4}));
}

TEST(FlagBitText, shouldNameTheSetBitsLowestFirst) { EXPECT_EQ(flagBitText(5), "0|2"); }

TEST(FlagBitText, shouldBeEmptyFor0BecauseNoneHasNoBitToMatch) { EXPECT_EQ(flagBitText(0), ""); }

TEST(FlagBitText, shouldPrintNothingForABitAbove29) {
  EXPECT_EQ(flagBitText(1 << 30), "");
  EXPECT_EQ(flagBitText(static_cast<int>(0x80000000u)), "");
  EXPECT_EQ(flagBitText((1 << 30) | (1 << 29)), "29");
}

TEST(FlagBitText, shouldNameAllThirtyBitsForMinus1) {
  std::string expected = "0";
  for (int bit = 1; bit < 30; ++bit) expected += "|" + std::to_string(bit);
  EXPECT_EQ(flagBitText(-1), expected);
}

TEST(FlagsToNames, shouldTakeAnEntrysBitsOutOnceItWasNamed) {
  const std::map<int, std::string> table = {{0, "none"}, {3, "low"}, {6, "mid"}, {8, "high"}};
  EXPECT_EQ(flagsToNames(table, 2), "low");
  EXPECT_EQ(flagsToNames(table, 7), "low|mid");
  EXPECT_EQ(flagsToNames(table, 3), "low");
  EXPECT_EQ(flagsToNames(table, 16), "");
  EXPECT_EQ(flagsToNames({}, 16), "");
}

}  // namespace
}  // namespace orvane
