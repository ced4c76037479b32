#include "platform/market/files/ColumnMap.h"

#include <algorithm>

#include "platform/market/files/DataFiles.h"

namespace orvane::detail {
namespace {

/// The first column of the first of some roles that the file has.
int find(const std::vector<NamedRole>& roles, std::initializer_list<Role> wanted) {
  for (const Role role : wanted) {
    const auto found = std::find_if(roles.begin(), roles.end(),
                                    [&](const NamedRole& named) { return named.role == role; });
    if (found != roles.end()) return static_cast<int>(found - roles.begin());
  }
  return -1;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    if (text.size() > 300) return text + ", ...";
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

[[noreturn]] void missing(const std::string& place, const std::string& what,
                          const std::vector<std::string>& names) {
  throw DataFileError(place + ": no column for " + what + " (the columns are: " + listed(names) +
                      "); name it with \"columns\" in a description");
}

void bindTime(ColumnMap& map, const std::string& place, const std::vector<NamedRole>& roles,
              const std::vector<std::string>& names) {
  TimeColumns& time = map.time;
  time.moment = find(roles, {Role::DateTime, Role::OpenTime});
  time.date = find(roles, {Role::ActionDate, Role::Date, Role::TradeDate, Role::TradingDay});
  time.time = find(roles, {Role::Time});
  time.millis = find(roles, {Role::Millis});
  if (time.moment < 0 && time.date < 0 && time.time < 0)
    time.moment = find(roles, {Role::CloseTime});
  if (time.moment < 0 && (time.date < 0 || time.time < 0)) {
    time.momentIsTimeOfDay = time.date < 0 && time.time >= 0;
    time.moment = time.date >= 0 ? time.date : time.time;
    time.date = time.time = -1;
  }
  if (time.moment < 0 && time.date < 0) {
    if (time.millis < 0) missing(place, "the time", names);
    std::swap(time.moment, time.millis);
  }
  if (time.moment >= 0) {
    const Role role = roles[static_cast<std::size_t>(time.moment)].role;
    if (role == Role::OpenTime) map.stampIsEnd = false;
    if (role == Role::CloseTime) map.stampIsEnd = true;
  }
  const int tradingDay = find(roles, {Role::TradingDay, Role::TradeDate});
  if (tradingDay != time.moment) time.tradingDay = tradingDay;
  map.code = find(roles, {Role::Code});
  map.market = find(roles, {Role::Market});
  map.timeZone = find(roles, {Role::TimeZone});
  map.isWhole = map.timeZone >= 0;
}

void need(int column, Role role, const std::string& place, const std::vector<std::string>& names) {
  if (column < 0) missing(place, "\"" + ourName(role) + "\"", names);
}

struct TickRole {
  Role role;
  TickColumn column;
};

constexpr TickRole kTickRoles[] = {
    {Role::LastPrice, TickColumn::LastPrice},
    {Role::Open, TickColumn::Open},
    {Role::High, TickColumn::High},
    {Role::Low, TickColumn::Low},
    {Role::PreClose, TickColumn::PreClose},
    {Role::PreSettle, TickColumn::PreSettle},
    {Role::Settle, TickColumn::Settle},
    {Role::UpperLimit, TickColumn::UpperLimit},
    {Role::LowerLimit, TickColumn::LowerLimit},
    {Role::TotalVolume, TickColumn::TotalVolume},
    {Role::Volume, TickColumn::Volume},
    {Role::TotalTurnover, TickColumn::TotalTurnover},
    {Role::Turnover, TickColumn::Turnover},
    {Role::OpenInterest, TickColumn::OpenInterest},
    {Role::BidPrice, TickColumn::BidPrice},
    {Role::BidSize, TickColumn::BidSize},
    {Role::AskPrice, TickColumn::AskPrice},
    {Role::AskSize, TickColumn::AskSize},
};

bool isLadder(Role role) { return role >= Role::BidPrice && role <= Role::AskSize; }

/// What a name means in a tick: a close is the last price, and an amount is a size where there is
/// no other.
void settleTickRoles(std::vector<NamedRole>& roles) {
  const bool hasLast = find(roles, {Role::LastPrice}) >= 0;
  const bool hasVolume = find(roles, {Role::Volume}) >= 0;
  const bool hasBook = find(roles, {Role::BidPrice, Role::AskPrice}) >= 0;
  for (NamedRole& named : roles) {
    if (named.role == Role::Close && !hasLast) named.role = Role::LastPrice;
    if (named.role == Role::Amount)
      named.role = hasVolume || hasBook ? Role::Turnover : Role::Volume;
    if (named.role == Role::BidClose) named = {Role::BidPrice};
    if (named.role == Role::AskClose) named = {Role::AskPrice};
  }
}

}  // namespace

TickLook looksLikeTicks(const std::vector<NamedRole>& roles) {
  if (find(roles, {Role::BidOpen, Role::AskOpen}) >= 0) return TickLook::No;
  const bool isBook = find(roles, {Role::BidPrice, Role::AskPrice}) >= 0;
  if (find(roles, {Role::Open, Role::High, Role::Low}) < 0)
    return isBook || find(roles, {Role::LastPrice}) >= 0 ? TickLook::Yes : TickLook::No;
  // The open, high and low of the day so far.
  return isBook && find(roles, {Role::LastPrice}) >= 0 ? TickLook::IfTimed : TickLook::No;
}

std::vector<NamedRole> rolesOfHeader(const std::vector<std::string>& header) {
  std::vector<NamedRole> roles;
  for (const std::string& name : header) {
    NamedRole role = roleOfName(name).value_or(NamedRole{});
    // Of two columns with one meaning the first one counts.
    if (role.role != Role::None && std::find(roles.begin(), roles.end(), role) != roles.end())
      role = {};
    roles.push_back(role);
  }
  return roles;
}

ColumnMap bindBars(const std::string& place, const std::vector<NamedRole>& roles,
                   const std::vector<std::string>& names) {
  ColumnMap map;
  bindTime(map, place, roles, names);
  map.open = find(roles, {Role::Open});
  const bool sides = find(roles, {Role::BidOpen, Role::AskOpen}) >= 0;
  if (map.open < 0 && sides) {
    map.quoteBar = true;
    map.open = find(roles, {Role::BidOpen});
    map.high = find(roles, {Role::BidHigh});
    map.low = find(roles, {Role::BidLow});
    map.close = find(roles, {Role::BidClose});
    map.askOpen = find(roles, {Role::AskOpen});
    map.askHigh = find(roles, {Role::AskHigh});
    map.askLow = find(roles, {Role::AskLow});
    map.askClose = find(roles, {Role::AskClose});
    map.volume = find(roles, {Role::BidSize});
    map.turnover = find(roles, {Role::AskSize});
    const std::pair<int, Role> bid[] = {{map.open, Role::BidOpen},
                                        {map.high, Role::BidHigh},
                                        {map.low, Role::BidLow},
                                        {map.close, Role::BidClose}};
    const std::pair<int, Role> ask[] = {{map.askOpen, Role::AskOpen},
                                        {map.askHigh, Role::AskHigh},
                                        {map.askLow, Role::AskLow},
                                        {map.askClose, Role::AskClose}};
    for (const auto& side : {bid, ask}) {
      const bool any =
          std::any_of(side, side + 4, [](const auto& item) { return item.first >= 0; });
      for (int i = 0; any && i < 4; ++i) need(side[i].first, side[i].second, place, names);
    }
    return map;
  }
  map.high = find(roles, {Role::High});
  map.low = find(roles, {Role::Low});
  map.close = find(roles, {Role::Close, Role::LastPrice});
  map.volume = find(roles, {Role::Volume, Role::TotalVolume});
  map.turnover = find(roles, {Role::Turnover, Role::Amount, Role::TotalTurnover});
  map.openInterest = find(roles, {Role::OpenInterest});
  map.period = find(roles, {Role::Period});
  map.time.until = find(roles, {Role::Until});
  need(map.open, Role::Open, place, names);
  need(map.high, Role::High, place, names);
  need(map.low, Role::Low, place, names);
  need(map.close, Role::Close, place, names);
  return map;
}

ColumnMap bindTicks(const std::string& place, const std::vector<NamedRole>& given,
                    const std::vector<std::string>& names) {
  std::vector<NamedRole> roles = given;
  settleTickRoles(roles);
  ColumnMap map;
  bindTime(map, place, roles, names);
  const auto written = [&](int level) {
    return std::any_of(roles.begin(), roles.end(), [&](const NamedRole& named) {
      return isLadder(named.role) && named.hasLevel && named.level == level;
    });
  };
  const bool fromZero = written(0);
  if (fromZero && written(10))
    throw DataFileError(place + ": the columns name levels 0 to 10, of which there are eleven");
  for (std::size_t i = 0; i < roles.size(); ++i) {
    const NamedRole& named = roles[i];
    for (const TickRole& known : kTickRoles) {
      if (known.role != named.role) continue;
      TickColumnId id{known.column, 0};
      if (isLadder(named.role) && named.hasLevel)
        id.level = static_cast<std::uint8_t>(named.level - (fromZero ? 0 : 1));
      const bool taken = std::any_of(map.ticks.begin(), map.ticks.end(),
                                     [&](const auto& item) { return item.second == id; });
      if (!taken) map.ticks.emplace_back(static_cast<int>(i), id);
    }
  }
  const bool priced = std::any_of(map.ticks.begin(), map.ticks.end(), [](const auto& item) {
    const TickColumn column = item.second.column;
    return column == TickColumn::LastPrice || column == TickColumn::BidPrice ||
           column == TickColumn::AskPrice;
  });
  if (!priced) missing(place, "a price (\"lastPrice\", \"bidPrice1\" or \"askPrice1\")", names);
  return map;
}

}  // namespace orvane::detail
