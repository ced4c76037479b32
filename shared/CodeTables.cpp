#include "shared/CodeTables.h"

#include "shared/GbkLiteral.h"

namespace orvane {

// clang-format off
const std::array<const char*, 90> ResultStatusMessages = {
    /* -31 */ "边界最小值"_gbk,
    /* -30 */ "403请求被拒"_gbk,
    /* -29 */ "Token异常"_gbk,
    /* -28 */ "Sqlite的step报错corrupt"_gbk,
    /* -27 */ "CTP柜台版本不兼容"_gbk,
    /* -26 */ "查询限制"_gbk,
    /* -25 */ "前置机断开连接(不重连)"_gbk,
    /* -24 */ "前置机未连接"_gbk,
    /* -23 */ "超时"_gbk,
    /* -22 */ "请修改密码后重新登录"_gbk,
    /* -21 */ "非致命性登录失败（允许再次登录）"_gbk,
    /* -20 */ "重复登录"_gbk,
    /* -19 */ "Sqlite的prepare语句失败"_gbk,
    /* -18 */ "SqliteAPI持久化session不存在"_gbk,
    /* -17 */ "用户修改密码失败"_gbk,
    /* -16 */ "已经连接"_gbk,
    /* -15 */ "同步数据未完"_gbk,
    /* -14 */ "认证失败"_gbk,
    /* -13 */ "用户登出超时"_gbk,
    /* -12 */ "用户登出失败"_gbk,
    /* -11 */ "用户登录失败"_gbk,
    /* -10 */ "前置机断开连接"_gbk,
    /*  -9 */ "无效前置机地址"_gbk,
    /*  -8 */ "连接失败"_gbk,
    /*  -7 */ "连接断开"_gbk,
    /*  -6 */ "未连接"_gbk,
    /*  -5 */ "账户或密码错误"_gbk,
    /*  -4 */ "密码错误"_gbk,
    /*  -3 */ "账户错误"_gbk,
    /*  -2 */ "无效参数"_gbk,
    /*  -1 */ "未知错误"_gbk,
    /*   0 */ "正确"_gbk,
    /*   1 */ "订阅失败"_gbk,
    /*   2 */ "退订失败"_gbk,
    /*   3 */ "获取全部合约属性失败"_gbk,
    /*   4 */ "获取行情失败"_gbk,
    /*   5 */ "获取交易所行情失败"_gbk,
    /*   6 */ "更新行情失败"_gbk,
    /*   7 */ "申请KLine失败"_gbk,
    /*   8 */ "申请Tick失败"_gbk,
    /*   9 */ "申请Timesale失败"_gbk,
    /*  10 */ "申请Deallist失败"_gbk,
    /*  11 */ "查询今日KLine失败"_gbk,
    /*  12 */ "查询历史KLine失败"_gbk,
    /*  13 */ "查询今日Tick失败"_gbk,
    /*  14 */ "查询历史Tick失败"_gbk,
    /*  15 */ "查询今日Timesale失败"_gbk,
    /*  16 */ "查询历史Timesale失败"_gbk,
    /*  17 */ "无效KLine周期"_gbk,
    /*  18 */ "警告"_gbk,
    /*  19 */ "字段拷贝非法"_gbk,
    /*  20 */ "底层原始错误"_gbk,
    /*  21 */ "查询资金账户错误"_gbk,
    /*  22 */ "不存在"_gbk,
    /*  23 */ "不支持"_gbk,
    /*  24 */ "内存不足"_gbk,
    /*  25 */ "缺少认证信息"_gbk,
    /*  26 */ "注册回调失败"_gbk,
    /*  27 */ "内存分配失败"_gbk,
    /*  28 */ "未连接的市场类型"_gbk,
    /*  29 */ "结算确认失败"_gbk,
    /*  30 */ "未完成初始化任务"_gbk,
    /*  31 */ "ICE 网络未连接"_gbk,
    /*  32 */ "MAIN SERVICE初始化失败"_gbk,
    /*  33 */ "已存在"_gbk,
    /*  34 */ "ICE 服务异常"_gbk,
    /*  35 */ "未登陆"_gbk,
    /*  36 */ "基础周期列表查询失败"_gbk,
    /*  37 */ "非交易时段"_gbk,
    /*  38 */ "可平仓位不足"_gbk,
    /*  39 */ "DC未有已登录的用户"_gbk,
    /*  40 */ "错误的客户端类型"_gbk,
    /*  41 */ "客户端内部错误"_gbk,
    /*  42 */ "没有权限"_gbk,
    /*  43 */ "申请depth失败"_gbk,
    /*  44 */ "序列化失败"_gbk,
    /*  45 */ "反序列化失败"_gbk,
    /*  46 */ "未达到间隔时间"_gbk,
    /*  47 */ "时间过期"_gbk,
    /*  48 */ "忽略信号"_gbk,
    /*  49 */ "非程序化交易"_gbk,
    /*  50 */ "正在查询"_gbk,
    /*  51 */ "第一次登陆"_gbk,
    /*  52 */ "触发流控"_gbk,
    /*  53 */ "触发黑名单"_gbk,
    /*  54 */ "软件退出"_gbk,
    /*  55 */ "",
    /*  56 */ "数据重置"_gbk,
    /*  57 */ "合约换日"_gbk,
    /*  58 */ "登录繁忙，稍后重试"_gbk,
};
// clang-format on

const char* statusMessage(int code) {
  return code < kLowestStatusCode || code > kHighestStatusCode
             ? ""
             : ResultStatusMessages[code - kLowestStatusCode];
}

const std::map<std::string, int> HedgeFlagCodes = {
    {"Unknown", 0}, {"Speculatio", 1}, {"Arbitrage", 2}, {"Hedge", 3}, {"MarketMaker", 4}};

const std::array<const char*, 6> hedgeFlagNames = {"Unknown", "Speculatio",  "Arbitrage",
                                                   "Hedge",   "MarketMaker", ""};

const std::map<std::string, int> PriorityCodes = {
    {"NULL_PRIORITY", 0}, {"TODAY_PRIORITY", 1}, {"YESTERDAY_PRIORITY", 2}};

const std::map<int, std::string> EventSourceNames = {
    {1, "非本机"_gbk},    {2, "手工"_gbk},      {4, "程序化"_gbk},
    {8, "OVPY"},          {16, "算法中心"_gbk}, {32, "交易助手"_gbk},
    {64, "头寸监控"_gbk}, {128, "模式"_gbk},    {255, "全部"_gbk}};

// clang-format off
const std::map<std::string, int> CounterTypeCodes = {
    {"UNKNOWN", 0}, {"OVPaperDesk", 1}, {"CTP", 2}, {"Rohon", 3},
    {"HsUfx", 4}, {"ITN", 5}, {"JSD", 6}, {"GSA", 7},
    {"KD", 8}, {"HSO32", 9}, {"KingNew", 10}, {"Femas", 11},
    {"Cms", 12}, {"Cms2", 13}, {"XTEXT", 14}, {"QDIAM", 15},
    {"ZhiFu", 16}, {"QDP", 17}, {"ZhiDa", 18}, {"HxXt", 19},
    {"OVOldFuture", 20}, {"OVAsset", 21}, {"CTPSe", 22}, {"OVSTK", 23},
    {"XTPSTK", 24}, {"HSIS", 25}, {"CTPStkOptSe", 26}, {"FemasFull", 27},
    {"UfxStkOpt", 28}, {"Esunny", 29}, {"XTCTP", 30}, {"TradeGateWay", 31},
    {"Jees", 32}, {"PBCms", 33}, {"Pobo", 34}, {"CTP63", 35},
    {"Local", 36}, {"HSPB", 37}, {"OVOldStock", 38}, {"HSOPlus", 39},
    {"OVCloudSimu", 40}, {"CTPSm", 41}, {"GSFt", 42}, {"IBTWS", 43},
    {"Tiger", 44},
};
// clang-format on

const std::array<const char*, 15> currencyNames = {"CNY", "USD",         "HKD",  "GBP", "JPY",
                                                   "CAD", "AUD",         "EUR",  "CHF", "KRW",
                                                   "MYR", "unknowmoney", "CUSD", "SGD", ""};

namespace {

std::map<int, std::string> makeFlagBitNames() {
  std::map<int, std::string> names = {{0, "None"}};
  for (int bit = 0; bit < 30; ++bit) names.emplace(1 << bit, std::to_string(bit));
  return names;
}

}  // namespace

const std::map<int, std::string> FlagBitNames = makeFlagBitNames();

std::string flagsToNames(const std::map<int, std::string>& table, int64 mask) {
  std::string text;
  int64 rest = mask;
  for (const auto& [code, name] : table) {
    if (rest == 0) break;
    if ((rest & code) == 0) continue;
    text += name;
    text += '|';
    rest &= ~static_cast<int64>(code);
  }
  if (!text.empty()) text.pop_back();
  return text;
}

std::string eventSourceText(int64 mask) { return flagsToNames(EventSourceNames, mask); }

std::list<int> eventSourceCodes(int64 mask) {
  std::list<int> codes;
  int64 rest = mask;
  for (const auto& [code, name] : EventSourceNames) {
    if (rest == 0) break;
    if ((rest & code) == 0) continue;
    codes.push_back(code);
    rest &= ~static_cast<int64>(code);
  }
  return codes;
}

std::string flagBitText(int mask) { return flagsToNames(FlagBitNames, mask); }

}  // namespace orvane
