// The naive exchange's accounts: what orders need, what fills do, and days.

#include <algorithm>

#include "platform/core/Periods.h"
#include "tests/platform/trade/NaiveExchange.h"

namespace orvane::testing {
namespace {

constexpr Int128 powerOfTen(int exponent) {
  return exponent == 0 ? Int128{1} : 10 * powerOfTen(exponent - 1);
}

constexpr Int128 kMoney = powerOfTen(22);
constexpr Int128 kMostTurnover = powerOfTen(14) * kMoney;
constexpr Int128 kMostMargin = powerOfTen(15) * kMoney;
constexpr Int128 kMostFees = powerOfTen(15) * kMoney;
constexpr Int128 kMostTraded = powerOfTen(14) * 25 * kMoney;
constexpr Int128 kMostValue = kMostTraded;
constexpr int64 kMostVolume = 1'000'000'000'000'000'000;

/// amount x factor / 10^decimals of money, rounded half up to 8 decimals; of positive numbers. The
/// amount is split in two, since the product may be too long.
Int128 moneyOf(Int128 amount, Int128 factor, int decimals) {
  const auto about = static_cast<long double>(amount) * static_cast<long double>(factor) /
                     static_cast<long double>(powerOfTen(decimals));
  if (about > 1e38L) return powerOfTen(38);  // More than anything may be.
  const Int128 unit = powerOfTen(14);
  const Int128 scale = powerOfTen(decimals);
  const Int128 high = amount / unit * factor;
  const Int128 rest = high % scale * unit + amount % unit * factor;
  return (high / scale + (rest + scale * unit / 2) / (scale * unit)) * unit;
}

}  // namespace

NaiveExchange::NaiveExchange(NaiveOptions options, std::vector<NaiveTerms> terms)
    : options_(std::move(options)), terms_(std::move(terms)), codes_(terms_.size()) {
  for (const Int128 start : options_.starts) accounts_.emplace_back().start = start;
}

std::optional<Int128> NaiveExchange::turnover(std::size_t code, int64 price, int64 volume) const {
  const auto about = static_cast<long double>(price) * static_cast<long double>(volume) *
                     static_cast<long double>(terms_[code].multiplier);
  if (about > 1e38L) return std::nullopt;
  return Int128{price} * volume * terms_[code].multiplier;
}

Int128 NaiveExchange::marginFor(std::size_t code, int64 price, int64 volume) const {
  return moneyOf(turnover(code, price, volume).value(), terms_[code].marginRate, 10);
}

Int128 NaiveExchange::feeFor(std::size_t code, int64 price, int64 volume) const {
  return moneyOf(turnover(code, price, volume).value(), terms_[code].feeRate, 10) +
         moneyOf(terms_[code].feePerLot, volume, 8);
}

Int128 NaiveExchange::gain(std::size_t code, const Lot& lot, int64 price, bool isLong) const {
  const Int128 rise =
      turnover(code, price, lot.volume).value() - turnover(code, lot.price, lot.volume).value();
  return isLong ? rise : -rise;
}

Int128 NaiveExchange::margin(std::size_t account) const {
  Int128 sum = 0;
  for (const auto& [key, side] : accounts_[account].sides)
    for (const Lot& lot : side) sum += marginFor(std::get<1>(key), lot.price, lot.volume);
  return sum;
}

Int128 NaiveExchange::frozenBy(const NaiveOrder& order) const {
  if (!order.opens() || order.isOver) return 0;
  return marginFor(order.code, order.claimPrice, order.left) +
         feeFor(order.code, order.claimPrice, order.left);
}

Int128 NaiveExchange::frozen(std::size_t account) const {
  Int128 sum = 0;
  for (const NaiveOrder& order : orders_)
    if (order.account == account) sum += frozenBy(order);
  return sum;
}

Int128 NaiveExchange::floating(std::size_t account) const {
  Int128 sum = 0;
  for (const auto& [key, side] : accounts_[account].sides)
    for (const Lot& lot : side)
      sum += gain(std::get<1>(key), lot, accounts_[account].marks.at(std::get<1>(key)),
                  std::get<2>(key));
  return sum;
}

Int128 NaiveExchange::resultOf(std::size_t account, const std::string& source) const {
  const Account& of = accounts_[account];
  const auto booked = of.booked.find(source);
  Int128 sum = booked == of.booked.end() ? 0 : booked->second;
  for (const auto& [key, side] : of.sides) {
    const auto& [owner, code, isLong] = key;
    if (owner != source) continue;
    for (const Lot& lot : side) sum += gain(code, lot, of.marks.at(code), isLong);
  }
  return sum;
}

Int128 NaiveExchange::available(std::size_t account) const {
  const Account& of = accounts_[account];
  return of.start + of.closed - of.fees + floating(account) - margin(account) - frozen(account);
}

int64 NaiveExchange::held(std::size_t account, const std::string& source, std::size_t code,
                          bool isLong, bool ofToday) const {
  const auto side = accounts_[account].sides.find({source, code, isLong});
  int64 sum = 0;
  if (side == accounts_[account].sides.end()) return sum;
  for (const Lot& lot : side->second)
    if (lot.isToday || !ofToday) sum += lot.volume;
  return sum;
}

/// Of all that is held, at the last prices, if one code's were another; empty if out of range.
std::optional<Int128> NaiveExchange::value(const Account& account, std::size_t markedCode,
                                           int64 price) const {
  Int128 sum = 0;
  for (const auto& [key, side] : account.sides) {
    const std::size_t code = std::get<1>(key);
    for (const Lot& lot : side) {
      const auto part =
          turnover(code, code == markedCode ? price : account.marks.at(code), lot.volume);
      if (!part || *part > kMostValue) return std::nullopt;
      sum += *part;
    }
  }
  return sum;
}

// Whether an order is let in.

std::string NaiveExchange::badNumbers(const NaiveOrder& order) const {
  const NaiveTerms& terms = terms_[order.code];
  const auto isWithin = [](int number, int last) { return number >= 0 && number <= last; };
  if (!isWithin(order.type, 2)) return "bad order type";
  if (!isWithin(order.timeInForce, 3)) return "bad time in force";
  if (!isWithin(order.direction, 1)) return "bad direction";
  if (!isWithin(order.offset, 2)) return "bad offset";
  if (order.volume.value_or(0) <= 0) return "bad volume";
  if (order.type == 0 && order.limit.value_or(0) <= 0) return "bad limit price";
  if (order.type == 2 && order.stop.value_or(0) <= 0) return "bad stop price";
  if (terms.lot > 0 && *order.volume % terms.lot != 0) return "bad volume";
  if (order.type == 0 && terms.tick > 0 && *order.limit % terms.tick != 0) return "bad limit price";
  if (order.type == 2 && terms.tick > 0 && *order.stop % terms.tick != 0) return "bad stop price";
  const Code& code = codes_[order.code];
  if (order.type == 0 && code.upper > 0 && *order.limit > code.upper) return "bad limit price";
  if (order.type == 0 && code.lower > 0 && *order.limit < code.lower) return "bad limit price";
  return "";
}

std::string NaiveExchange::riskBroken(const NaiveOrder& order, int64 now) {
  const auto at = options_.limits.find(order.source);
  if (at == options_.limits.end()) return "";
  const NaiveLimits& limits = at->second;
  std::vector<int64>& times = orderTimes_[order.source];
  times.push_back(now);
  const auto recent = std::ranges::count_if(times, [now](int64 time) { return time > now - 1000; });
  if (limits.maxOrdersPerSecond > 0 && recent > limits.maxOrdersPerSecond)
    return "risk limit: more than";
  if (limits.maxOrder && *order.volume > *limits.maxOrder) return "risk limit: order volume";
  if (!order.opens()) return "";
  Int128 after = *order.volume;
  Int128 result = 0;
  for (std::size_t account = 0; account < accounts_.size(); ++account) {
    after += held(account, order.source, order.code, order.isBuy(), false);
    result += resultOf(account, order.source);
  }
  for (const NaiveOrder& other : orders_)
    if (other.source == order.source && other.code == order.code && other.opens() &&
        other.direction == order.direction)
      after += other.left;
  if (limits.maxPosition && after > *limits.maxPosition) return "risk limit: position";
  if (limits.maxLoss && result < -*limits.maxLoss) return "risk limit: loss";
  return "";
}

/// What closing orders of the side at work still want, or those for today's part alone.
int64 NaiveExchange::wanted(const NaiveOrder& like, bool ofToday) const {
  int64 sum = 0;
  for (const NaiveOrder& order : orders_)
    if (!order.opens() && order.account == like.account && order.code == like.code &&
        order.source == like.source && order.isLong() == like.isLong() &&
        (!ofToday || order.isOfToday()))
      sum += order.left;
  return sum;
}

std::string NaiveExchange::notEnough(const NaiveOrder& order) const {
  const std::size_t account = order.account;
  if (!order.opens()) {
    const auto free = [&](bool ofToday) {
      return held(account, order.source, order.code, order.isLong(), ofToday) -
             wanted(order, ofToday);
    };
    const bool isThere =
        order.left <= free(false) && (!order.isOfToday() || order.left <= free(true));
    return isThere ? "" : "not enough position";
  }
  Int128 volume = order.left;
  Int128 committed = 0;
  for (const auto& [key, side] : accounts_[account].sides)
    for (const Lot& lot : side) {
      volume += lot.volume;
      committed += turnover(std::get<1>(key), lot.price, lot.volume).value();
    }
  for (const NaiveOrder& other : orders_)
    if (other.account == account && other.opens()) {
      volume += other.left;
      committed += turnover(other.code, other.claimPrice, other.left).value();
    }
  if (volume > kMostVolume) return "too much volume";
  const auto own = turnover(order.code, order.claimPrice, order.left);
  if (!own || *own > kMostTurnover - committed) return "too large";
  const Int128 margin = marginFor(order.code, order.claimPrice, order.left);
  const Int128 fee = feeFor(order.code, order.claimPrice, order.left);
  if (margin > kMostTurnover || fee > kMostTurnover) return "too large";
  const bool isMet = margin + fee == 0 || margin + fee <= available(account);
  return isMet ? "" : "not enough money";
}

std::string NaiveExchange::whyNot(const NaiveOrder& order, int64 now) {
  if (std::string bad = badNumbers(order); !bad.empty()) return bad;
  const NaiveTerms& terms = terms_[order.code];
  const int64 time = now % (24 * detail::kHourMs);
  const bool isOpen =
      terms.openHour < terms.closeHour
          ? time >= terms.openHour * detail::kHourMs && time < terms.closeHour * detail::kHourMs
          : time >= terms.openHour * detail::kHourMs || time < terms.closeHour * detail::kHourMs;
  if (options_.rejectsOutside && !isOpen) return "the session of";
  return riskBroken(order, now);
}

void NaiveExchange::place(NaiveOrder order, int64 now) {
  order.arrival = now;
  std::string reason = whyNot(order, now);
  if (reason.empty()) {
    order.left = *order.volume;
    order.claimPrice = order.type == 0   ? *order.limit
                       : order.type == 2 ? *order.stop
                                         : codes_[order.code].mark.value_or(0);
    reason = notEnough(order);
  }
  if (!reason.empty()) {
    order.isOver = true;
    tell(order, order::Status::Rejected, now, reason);
    return;
  }
  orders_.push_back(order);
  tell(order, order::Status::Working, now);
}

// What fills, prices and days do.

bool NaiveExchange::fillFits(const NaiveOrder& order, int64 price, int64 volume) const {
  const Account& account = accounts_[order.account];
  const auto amount = turnover(order.code, price, volume);
  if (!amount || *amount > kMostTraded - account.traded) return false;
  if (feeFor(order.code, price, volume) > kMostFees - account.fees) return false;
  if (!order.opens()) return true;
  if (marginFor(order.code, price, volume) > kMostMargin - margin(order.account)) return false;
  const auto marked = account.marks.find(order.code);
  const int64 markPrice = marked == account.marks.end() ? price : marked->second;
  const auto added = turnover(order.code, markPrice, volume);
  return added && *added <= kMostValue - value(account, order.code, markPrice).value();
}

/// Takes volume out of a side, the oldest first, and tells what it was opened for.
Int128 NaiveExchange::takeOldest(const NaiveOrder& order, int64 volume) {
  Side& side = accounts_[order.account].sides[{order.source, order.code, order.isLong()}];
  Int128 cost = 0;
  for (auto lot = side.begin(); volume > 0;) {
    if (order.isOfToday() && !lot->isToday) {
      ++lot;
      continue;
    }
    const int64 part = std::min(volume, lot->volume);
    cost += turnover(order.code, lot->price, part).value();
    volume -= part;
    lot->volume -= part;
    lot = lot->volume == 0 ? side.erase(lot) : std::next(lot);
  }
  return cost;
}

bool NaiveExchange::fill(NaiveOrder& order, int64 price, int64 volume, bool hadRested, int64 time) {
  if (!fillFits(order, price, volume)) {
    end(order, order.fills == 0 ? order::Status::Rejected : order::Status::Cancelled, time,
        "too large");
    return false;
  }
  Account& account = accounts_[order.account];
  const Int128 amount = turnover(order.code, price, volume).value();
  const Int128 fee = feeFor(order.code, price, volume);
  Int128 profit = 0;
  if (order.opens()) {
    account.sides[{order.source, order.code, order.isLong()}].push_back({price, volume, true});
  } else {
    const Int128 cost = takeOldest(order, volume);
    profit = order.isLong() ? amount - cost : cost - amount;
  }
  account.closed += profit;
  account.fees += fee;
  account.traded += amount;
  account.booked[order.source] += profit - fee;
  account.marks.try_emplace(order.code, price);
  order.left -= volume;
  order.turnover += amount;
  order.fee += fee;
  ++order.fills;
  order.isOver = order.left == 0;
  const int64 filled = *order.volume - order.left;
  const double units = toDouble(detail::Volume{filled}) *
                       toDouble(detail::Multiplier{terms_[order.code].multiplier});
  order.meanPrice = order.fills == 1 ? toDouble(detail::Price{price})
                                     : toDouble(detail::Money{order.turnover}) / units;
  tell(order, order.isOver ? order::Status::Filled : order::Status::PartlyFilled, time);
  told_.push_back({order.id, Told::kFill, time, codes_[order.code].day,
                   toDouble(detail::Price{price}), toDouble(detail::Volume{volume}),
                   toDouble(detail::Money{amount}), toDouble(detail::Money{fee}),
                   toDouble(detail::Money{profit}), hadRested, ""});
  return true;
}

void NaiveExchange::markAccounts(std::size_t code, int64 price) {
  codes_[code].mark = price;
  for (Account& account : accounts_) {
    const auto marked = account.marks.find(code);
    if (marked == account.marks.end()) continue;
    const auto worth = value(account, code, price);
    const bool isHeld = std::ranges::any_of(account.sides, [code](const auto& side) {
      return std::get<1>(side.first) == code && !side.second.empty();
    });
    if (!isHeld || (worth && *worth <= kMostValue)) marked->second = price;
  }
}

void NaiveExchange::settle(Account& account, std::size_t code) {
  const auto marked = account.marks.find(code);
  if (marked == account.marks.end()) return;
  const int64 price = marked->second;
  Int128 restated = 0;
  for (const auto& [key, side] : account.sides)
    for (const Lot& lot : side) {
      const std::size_t of = std::get<1>(key);
      restated += marginFor(of, of == code ? price : lot.price, lot.volume);
      if (restated > kMostMargin) return;
    }
  for (auto& [key, side] : account.sides) {
    const auto& [source, at, isLong] = key;
    if (at != code) continue;
    int64 today = 0;
    int64 before = 0;
    for (const Lot& lot : side) {
      const Int128 profit = gain(code, lot, price, isLong);
      account.closed += profit;
      account.booked[source] += profit;
      (lot.isToday ? today : before) += lot.volume;
    }
    side.clear();
    if (before > 0) side.push_back({price, before, false});
    if (today > 0) side.push_back({price, today, true});
  }
}

void NaiveExchange::newDay(std::size_t code, int day, int64 time) {
  if (day <= codes_[code].day) return;
  const bool isFirst = codes_[code].day == 0;
  codes_[code].day = day;
  if (isFirst) return;
  for (NaiveOrder& order : orders_) {
    if (order.code != code) continue;
    const bool isDayOver = order.timeInForce == 0 && order.day != 0 && order.day < day;
    if (isDayOver || order.isOfToday()) end(order, order::Status::Expired, time);
  }
  sweep();
  for (Account& account : accounts_) {
    if (options_.settles) settle(account, code);
    for (auto& [key, side] : account.sides)
      if (std::get<1>(key) == code)
        for (Lot& lot : side) lot.isToday = false;
  }
}

}  // namespace orvane::testing
