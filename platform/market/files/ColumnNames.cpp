#include "platform/market/files/ColumnNames.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "shared/NearText.h"

namespace orvane::detail {
namespace {

struct OurName {
  Role role;
  const char* name;
};

constexpr OurName kOurNames[] = {
    {Role::DateTime, "datetime"},
    {Role::OpenTime, "openTime"},
    {Role::CloseTime, "closeTime"},
    {Role::Date, "date"},
    {Role::TradeDate, "tradeDate"},
    {Role::ActionDate, "actionDate"},
    {Role::TradingDay, "tradingDay"},
    {Role::Time, "time"},
    {Role::Millis, "millisecond"},
    {Role::Code, "code"},
    {Role::Market, "market"},
    {Role::Open, "open"},
    {Role::High, "high"},
    {Role::Low, "low"},
    {Role::Close, "close"},
    {Role::LastPrice, "lastPrice"},
    {Role::Volume, "volume"},
    {Role::TotalVolume, "totalVolume"},
    {Role::Turnover, "turnover"},
    {Role::TotalTurnover, "totalTurnover"},
    {Role::Amount, "amount"},
    {Role::OpenInterest, "openInterest"},
    {Role::PreClose, "preClose"},
    {Role::PreSettle, "preSettle"},
    {Role::Settle, "settle"},
    {Role::UpperLimit, "upperLimit"},
    {Role::LowerLimit, "lowerLimit"},
    {Role::BidPrice, "bidPrice"},
    {Role::BidSize, "bidSize"},
    {Role::AskPrice, "askPrice"},
    {Role::AskSize, "askSize"},
    {Role::BidOpen, "bidOpen"},
    {Role::BidHigh, "bidHigh"},
    {Role::BidLow, "bidLow"},
    {Role::BidClose, "bidClose"},
    {Role::AskOpen, "askOpen"},
    {Role::AskHigh, "askHigh"},
    {Role::AskLow, "askLow"},
    {Role::AskClose, "askClose"},
    {Role::Until, "until"},
    {Role::Period, "period"},
    {Role::TimeZone, "timeZone"},
};

struct Aliases {
  Role role;
  const char* names;  ///< In plain form, separated by blanks.
};

/// Names in plain form: small letters, no punctuation.
constexpr Aliases kAliases[] = {
    {Role::DateTime,
     "datetime timestamp ts datetimeutc timestamputc timeutc utctime utc gmttime localtime epoch "
     "unix unixtime unixtimestamp timestampms tsms timestampns tsevent exchtime exchangetime "
     "eventtime bartime klinetime candletime timekey dt dtyyyymmddhhmmss tickts tradetimestamp "
     "localtimestamp transacttime timems timens timeus datetimenano mts 日期时间 时间戳 交易时间"},
    {Role::OpenTime,
     "opentime starttime begintime begin start bartimestart barstart timestart windowstart "
     "intervalstart timeperiodstart openat candlebegintime candlebegin 开始时间 开盘时间"},
    {Role::CloseTime,
     "closetime endtime end barend bartimeend timeend windowend intervalend timeperiodend closeat "
     "candleendtime 结束时间 收盘时间"},
    {Role::Date, "date day dte yyyymmdd dtyyyymmdd datestr sessiondate bardate 日期 年月日"},
    {Role::TradeDate, "tradedate tradedt tdate 交易日期"},
    {Role::ActionDate, "actiondate actionday naturalday calendardate caldate 业务日期 自然日"},
    {Role::TradingDay, "tradingday tradingdate tradeday tday 交易日"},
    {Role::Time,
     "time clock tm hhmmss hhmm timeofday actiontime updatetime tradetime bartimeofday ticktime "
     "datatime quotetime marketimes 时间 更新时间 最后修改时间 成交时间"},
    {Role::Millis,
     "ms millis millisec millisecond milliseconds updatemillisec updatemillisecond msec 毫秒 "
     "最后修改毫秒"},
    {Role::Code,
     "code symbol ticker tscode instrument instrumentid localsymbol vtsymbol contract contractcode "
     "contractid security securityid securitycode secucode stockcode stkcd sid sym ric isin "
     "orderbookid windcode innercode product pair instid instrumentname symbolcode ticker1 scode "
     "代码 证券代码 股票代码 合约 合约代码 品种 品种代码 交易代码"},
    {Role::Market,
     "exchange market exch exchangeid exchid marketcode exchcode venue mic exchangecode "
     "市场 市场代码 交易所 交易所代码"},
    {Role::Open,
     "open o openprice openpx priceopen pxopen opn opening openingprice openp firstprice "
     "first 开盘 开盘价 今开盘 今开 开"},
    {Role::High,
     "high h highprice highpx pricehigh pxhigh highest highestprice max maxprice highp "
     "dayhigh 最高 最高价 高"},
    {Role::Low,
     "low l lowprice lowpx pricelow pxlow lowest lowestprice min minprice lowp daylow "
     "最低 最低价 低"},
    {Role::Close,
     "close c closeprice closepx priceclose pxclose cls closing closingprice closep "
     "closelast 收盘 收盘价 今收盘 收"},
    {Role::LastPrice,
     "lastprice last price px lastpx pricelast pxlast tradeprice tradepx matchprice dealprice "
     "current currentprice lp lasttradeprice lasttradedprice ltp p trade 最新价 最新 成交价 现价 "
     "成交价格 价格"},
    {Role::Volume,
     "volume vol v qty quantity size sz lastvolume lastsize lastqty tradevolume tradesize tradeqty "
     "tradevol tickvol tickvolume lastvol lasttradesize volumeincrease volumedelta shares lots "
     "volumetraded totaltradedqty basevolume volumebase volumeshares voltraded barvolume volumn "
     "成交量 现量 现手 成交数量 手数 量 交易量 单笔成交量"},
    {Role::TotalVolume,
     "totalvolume totalvol cumvolume cumvol cumulativevolume accvolume accvol accumvolume "
     "dayvolume "
     "totalqty totalvolumetrade totaltradevolume volumetotal sumvolume tvolume tvol 总成交量 "
     "累计成交量 总量 总手 数量"},
    {Role::Turnover,
     "turnover value lastturnover money tradevalue tradedvalue notional dollarvolume lastamount "
     "quotevolume quoteassetvolume volumequote turnoverincrease turnoverdelta tradeamount turn "
     "amt volccy volccyquote totaltradedvalue 成交额 成交金额 金额 交易额"},
    {Role::TotalTurnover,
     "totalturnover cumturnover accturnover dayturnover totalvalue totalvaluetrade totalamount "
     "totalmoney cumamount accamount 总成交额 累计成交额 总成交金额 累计成交金额 总额"},
    {Role::Amount, "amount"},
    {Role::OpenInterest,
     "openinterest openint oi opi interest position hold openinterests closeoi posi "
     "openinterestlots 持仓量 持仓 未平仓量 空盘量"},
    {Role::PreClose,
     "preclose precloseprice preclosepx prevclose previousclose yclose lastclose "
     "yesterdayclose prevclosepx prevcloseprice 昨收 昨收盘 昨收价 昨收盘价 前收盘 "
     "前收盘价 前收"},
    {Role::PreSettle,
     "presettle presettleprice presettlement presettlementprice prevsettle "
     "prevsettlement prevsettlementprice 昨结 昨结算 昨结算价 上次结算价 前结算 前结算价"},
    {Role::Settle,
     "settle settleprice settlement settlementprice 结算 结算价 今结算 今结算价 "
     "本次结算价"},
    {Role::UpperLimit,
     "upperlimit upperlimitprice limitup limitupprice uplimit highlimit "
     "highlimited upperlimited uplimitprice 涨停 涨停价 涨停板价"},
    {Role::LowerLimit,
     "lowerlimit lowerlimitprice limitdown limitdownprice downlimit lowlimit "
     "lowlimited lowerlimited downlimitprice 跌停 跌停价 跌停板价"},
    {Role::BidOpen, "bidopen openbid bido obid"},
    {Role::BidHigh, "bidhigh highbid bidh hbid"},
    {Role::BidLow, "bidlow lowbid bidl lbid"},
    {Role::BidClose, "bidclose closebid bidc cbid"},
    {Role::AskOpen, "askopen openask asko oask offeropen"},
    {Role::AskHigh, "askhigh highask askh hask offerhigh"},
    {Role::AskLow, "asklow lowask askl lask offerlow"},
    {Role::AskClose, "askclose closeask askc cask offerclose"},
    {Role::Until, "until"},
    {Role::Period, "period"},
    {Role::TimeZone, "timezone"},
};

/// Small letters and digits, without punctuation; what stands in brackets after a name, as in
/// "Volume (lots)" or "成交量(手)", is dropped, unless it is a number: "BidPrice[1]".
std::string plainName(std::string_view name) {
  std::string plain;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const char c = name[at];
    const bool wide = name.substr(at).starts_with("（");
    if (!plain.empty() && (c == '(' || c == '[' || wide)) {
      const std::size_t end = std::min(name.find_first_of(")]", at), name.size());
      const std::string_view inside = name.substr(at + 1, end - std::min(end, at + 1));
      if (inside.empty() || inside.find_first_not_of("0123456789") != inside.npos) {
        const std::size_t close = wide ? name.find("）", at) : end;
        if (close == name.npos || wide) break;
        at = close;
        continue;
      }
    }
    if (c >= 'A' && c <= 'Z')
      plain += static_cast<char>(c + 32);
    else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (c & 0x80) != 0)
      plain += c;
  }
  return plain;
}

const std::unordered_map<std::string_view, Role>& aliasTable() {
  static const auto table = [] {
    std::unordered_map<std::string_view, Role> made;
    for (const Aliases& entry : kAliases) {
      std::string_view names = entry.names;
      while (!names.empty()) {
        const std::size_t end = std::min(names.find(' '), names.size());
        if (end > 0) made.emplace(names.substr(0, end), entry.role);
        names.remove_prefix(std::min(end + 1, names.size()));
      }
    }
    return made;
  }();
  return table;
}

/// A word of a ladder name that `text` begins with is taken off it.
bool takeAny(std::string_view& text, std::initializer_list<std::string_view> words) {
  for (const std::string_view word : words) {
    if (!text.starts_with(word)) continue;
    text.remove_prefix(word.size());
    return true;
  }
  return false;
}

/// -1 if there is no number, -2 if it is out of range.
int takeLevel(std::string_view& text) {
  static constexpr std::string_view kChinese[] = {"一", "二", "三", "四", "五",
                                                  "六", "七", "八", "九", "十"};
  for (int i = 0; i < 10; ++i)
    if (takeAny(text, {kChinese[i]})) return i + 1;
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0) return -1;
  int level = 0;
  for (const char c : text.substr(0, std::min<std::size_t>(digits, 4)))
    level = level * 10 + (c - '0');
  text.remove_prefix(digits);
  return digits > 2 || level > 10 ? -2 : level;
}

enum class Cell { None, Price, Size };

Cell takeCell(std::string_view& text) {
  if (takeAny(text, {"price", "px", "rate", "价格", "价"})) return Cell::Price;
  if (takeAny(text, {"volume", "vol", "size", "sz", "quantity", "qty", "amount", "数量", "量"}))
    return Cell::Size;
  return Cell::None;
}

Cell takeShortCell(std::string_view& text) {
  if (takeAny(text, {"p"})) return Cell::Price;
  if (takeAny(text, {"v", "s", "q"})) return Cell::Size;
  return Cell::None;
}

/// A name of the depth ladder: "bid1", "ask_volume_5", "bp1", "av3", "b1_p", "asks[0].price",
/// "申买价一", "卖三量".
std::optional<NamedRole> ladderRole(std::string_view plain) {
  std::string_view rest = plain;
  bool bid = true;
  bool shortName = false;
  // "sizebid", "price_ask1"
  Cell cell = Cell::None;
  {
    std::string_view ahead = rest;
    const Cell first = takeCell(ahead);
    if (first != Cell::None && (ahead.starts_with("bid") || ahead.starts_with("ask"))) {
      cell = first;
      rest = ahead;
    }
  }
  if (takeAny(rest, {"best"})) cell = Cell::None;
  if (takeAny(rest, {"bid", "buy", "申买", "委买", "买入", "买"})) {
    bid = true;
  } else if (takeAny(rest, {"ask", "sell", "offer", "申卖", "委卖", "卖出", "卖"})) {
    bid = false;
  } else if (takeAny(rest, {"b"})) {
    shortName = true;
  } else if (takeAny(rest, {"a", "s"})) {
    bid = false;
    shortName = true;
  } else {
    return std::nullopt;
  }
  // "bids[0].price"; but "bidsize" has no plural.
  if (rest.size() > 1 && rest[0] == 's' && rest[1] >= '0' && rest[1] <= '9') rest.remove_prefix(1);
  int level = takeLevel(rest);
  if (level == -2) return std::nullopt;
  if (cell == Cell::None) cell = takeCell(rest);
  if (cell == Cell::None && !rest.empty()) cell = takeShortCell(rest);
  if (level == -1) level = takeLevel(rest);
  if (level == -2 || !rest.empty()) return std::nullopt;
  if (shortName && (level == -1 || cell == Cell::None) && plain.size() != 2) return std::nullopt;
  if (shortName && plain.size() == 2 && cell == Cell::None && level == -1) return std::nullopt;
  if (plain == "as") return std::nullopt;
  const bool price = cell != Cell::Size;
  const Role role =
      bid ? (price ? Role::BidPrice : Role::BidSize) : (price ? Role::AskPrice : Role::AskSize);
  return NamedRole{role, std::max(level, 0), level >= 0};
}

}  // namespace

std::optional<NamedRole> roleOfName(std::string_view name) {
  const std::string plain = plainName(name);
  if (plain.empty() || plain.size() > 60) return std::nullopt;
  const auto& table = aliasTable();
  if (const auto found = table.find(plain); found != table.end()) return NamedRole{found->second};
  if (const auto ladder = ladderRole(plain)) return ladder;
  // "Volume BTC", "Volume USDT", "Open (USD)": the unit follows the name.
  std::string_view text = name;
  const std::size_t blank = text.find_first_of(" _");
  if (blank != text.npos && blank > 0) {
    const std::string head = plainName(text.substr(0, blank));
    if (head == "volume" || head == "vol") return NamedRole{Role::Volume};
    if (head == "成交量") return NamedRole{Role::Volume};
  }
  return std::nullopt;
}

std::optional<NamedRole> roleOfOurName(std::string_view name) {
  if (name == "-" || name.empty()) return NamedRole{};
  return roleOfName(name);
}

std::string ourName(Role role, int level) {
  for (const OurName& entry : kOurNames) {
    if (entry.role != role) continue;
    const bool ladder = role >= Role::BidPrice && role <= Role::AskSize;
    return ladder ? entry.name + std::to_string(std::max(level, 1)) : entry.name;
  }
  return "-";
}

std::vector<std::string> ourNames() {
  std::vector<std::string> names;
  for (const OurName& entry : kOurNames) names.push_back(ourName(entry.role, 1));
  return names;
}

std::string nearestName(std::string_view name, const std::vector<std::string>& known) {
  const auto lower = [](std::string_view text) {
    std::string result(text);
    for (char& c : result)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return result;
  };
  const std::string written = lower(name.substr(0, 60));
  const auto distance = [&](const std::string& one) { return lettersApart(lower(one), written); };
  const auto nearest = std::ranges::min_element(known, {}, distance);
  return nearest == known.end() ? std::string() : *nearest;
}

}  // namespace orvane::detail
