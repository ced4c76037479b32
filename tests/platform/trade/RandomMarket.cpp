#include "tests/platform/trade/RandomMarket.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/core/Periods.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"

namespace orvane::testing {
namespace {

constexpr int64 kOneLot = 100'000'000;  // 1
constexpr int64 kHighest = std::numeric_limits<int64>::max();

double priceNumber(int64 units) { return toDouble(detail::Price{units}); }
double volumeNumber(int64 units) { return toDouble(detail::Volume{units}); }

}  // namespace

RandomMarket::RandomMarket(std::uint64_t seed) : random_(seed) {
  isWild_ = chance(15);
  now = 1'609'718'400'000 + below(24) * detail::kHourMs;
  makeOptions();
  const auto count = oneOf<int>({1, 1, 2, 3});
  for (int number = 1; number <= count; ++number) addCode(number);
}

std::int64_t RandomMarket::below(std::int64_t limit) {
  return static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(limit));
}

void RandomMarket::makeOptions() {
  const auto accounts = oneOf<int>({1, 1, 2, 3});
  for (int i = 0; i < accounts; ++i) {
    startBalances.push_back(isWild_ ? "1000000000000000"
                                    : oneOf<std::string>({"200", "2000", "1000000"}));
    naiveOptions.starts.push_back(detail::moneyOf(std::string_view(startBalances.back()))->units);
  }
  entryLatencyMs = oneOf<int64>({0, 0, 5, 15});
  if (chance(40)) {
    const auto [text, rate] = oneOf<std::pair<std::string, int64>>(
        {{"0.1", 1'000'000'000}, {"0.3333333333", 3'333'333'333}, {"1", 10'000'000'000}});
    options.barVolumeShare = text;
    naiveOptions.volumeShare = rate;
  }
  naiveOptions.fillsAtTouch = chance(30);
  naiveOptions.standsInFront = chance(30);
  naiveOptions.settles = chance(40);
  naiveOptions.rejectsOutside = chance(15);
  using enum TradeOptions::LimitFill;
  options.limitFill = naiveOptions.fillsAtTouch ? Touch : Through;
  options.queue =
      naiveOptions.standsInFront ? TradeOptions::Queue::Front : TradeOptions::Queue::Behind;
  options.settlesDaily = naiveOptions.settles;
  options.rejectsOutsideSessions = naiveOptions.rejectsOutside;
  options.slippage = oneOf<std::string>({"", "", "0.3", isWild_ ? "900000000" : "0.2"});
  options.slippageTicks = chance(30) ? 2 : 0;
  if (!chance(30)) return;
  RiskLimits limits{"a", chance(50) ? "7" : "", chance(50) ? "20" : "", chance(50) ? "50" : "",
                    chance(20) ? 4 : 0};
  options.limits.push_back(limits);
  NaiveLimits& naive = naiveOptions.limits["a"];
  if (!limits.maxOrder.empty()) naive.maxOrder = 7 * kOneLot;
  if (!limits.maxPosition.empty()) naive.maxPosition = 20 * kOneLot;
  if (!limits.maxLoss.empty()) naive.maxLoss = detail::moneyOf(std::string_view("50"))->units;
  naive.maxOrdersPerSecond = limits.maxOrdersPerSecond;
}

void RandomMarket::addCode(int number) {
  using Choice = std::pair<std::string, int64>;
  Code code;
  code.instrument.code = "C" + std::to_string(number);
  code.id = {number, 1, 1, code.instrument.code};
  code.hasTicks = chance(50);
  const auto take = [this](std::string& text, int64& units, const std::vector<Choice>& choices) {
    const Choice& choice = oneOf(choices);
    text = choice.first;
    units = choice.second;
  };
  NaiveTerms& terms = code.terms;
  Instrument& told = code.instrument;
  take(told.priceTick, terms.tick, {{"0.2", 2'000'000'000}, {"0.05", 500'000'000}, {"", 0}});
  take(told.lotSize, terms.lot, {{"1", kOneLot}, {"0.5", kOneLot / 2}, {"", 0}});
  take(told.multiplier, terms.multiplier, {{"", 10'000}, {"10", 100'000}, {"0.5", 5'000}});
  take(told.marginRate, terms.marginRate,
       {{"", 0},
        {"0.1", 1'000'000'000},
        {"0.1234567891", 1'234'567'891},
        {isWild_ ? "10" : "1", isWild_ ? 100'000'000'000 : 10'000'000'000}});
  take(told.feeRate, terms.feeRate,
       {{"", 0}, {"0.000023", 230'000}, {"0.0123456789", 123'456'789}});
  told.feePerLot = oneOf<std::string>({"", "1.5", "0.12345678"});
  if (!told.feePerLot.empty())
    terms.feePerLot = detail::moneyOf(std::string_view(told.feePerLot))->units;
  const auto session = below(3);
  told.timeZone = "UTC";
  if (session == 1) told.sessions = "06:00-18:00";
  if (session == 2) told.sessions = "18:00-06:00";
  terms.openHour = session == 0 ? 0 : session == 1 ? 6 : 18;
  terms.closeHour = session == 0 ? 24 : session == 1 ? 18 : 6;
  const auto slippage = detail::priceOf(std::string_view(options.slippage));
  terms.slippage = (slippage ? slippage->units : 0) + terms.tick * options.slippageTicks;
  code.step = terms.tick == 0 ? 1'000'000'000 : terms.tick;
  code.middle = 60 * code.step;
  codes.push_back(code);
}

void RandomMarket::wander(Code& code) {
  code.middle += (below(5) - 2) * code.step;
  if (isWild_ && chance(10))
    code.middle = oneOf<int64>({4'500'000'000, 900'000'000, 25'000, 300, 30}) * 2'000'000'000;
  code.middle = std::max(code.middle, 12 * code.step);
  if (chance(6)) code.day += static_cast<int>(1 + below(2));
}

void RandomMarket::passTime(Code& code) {
  if (chance(2)) now += below(7) * detail::kHourMs;
  now += code.hasTicks && chance(30) ? 0 : 1 + below(15);
}

std::pair<double, std::optional<int64>> RandomMarket::size(const Code& code) {
  const auto kind = below(20);
  if (kind == 0) return {0, std::nullopt};
  if (kind == 1) return {std::nan(""), std::nullopt};
  if (kind == 2) return {-3, std::nullopt};
  if (kind == 3 && isWild_) return {chance(50) ? 1e300 : HUGE_VAL, kHighest};
  const int64 part = kind < 6 ? kOneLot / 5 : std::max<int64>(code.terms.lot, kOneLot / 2);
  const int64 volume = (1 + below(12)) * part * (isWild_ && kind == 7 ? 1'000'000'000 : 1);
  return {volumeNumber(volume), volume};
}

RandomMarket::Bar RandomMarket::nextBar(Code& code) {
  wander(code);
  Bar bar;
  NaiveBar& naive = bar.naive;
  const int64 last = code.lastEnd < 0 ? now : code.lastEnd;
  const int64 begin = chance(80) ? last : last - 4 + below(12);
  passTime(code);
  now = std::max(now, begin + 1);
  naive.end = now;
  bar.previousEnd = code.lastEnd < 0 ? begin : code.lastEnd;
  naive.begin = std::min(std::max(begin, bar.previousEnd), naive.end);
  code.lastEnd = now;
  naive.day = code.day - (chance(2) ? 1 : 0);
  naive.open = code.middle + (below(7) - 3) * code.step;
  naive.close = chance(20) ? naive.open : code.middle + (below(7) - 3) * code.step;
  naive.high = std::max(naive.open, naive.close) + (chance(40) ? 0 : below(4) * code.step);
  naive.low = std::min(naive.open, naive.close) - (chance(40) ? 0 : below(4) * code.step);
  KLineWriter writer(bar.record);
  writer.setTimes(begin, naive.end);
  writer.set(kline::Open, priceNumber(naive.open));
  writer.set(kline::High, priceNumber(naive.high));
  writer.set(kline::Low, priceNumber(naive.low));
  writer.set(kline::Close, priceNumber(naive.close));
  auto [number, volume] = size(code);
  volume = number == 0 && naive.high == naive.low ? 0 : volume;
  const bool isQuoteBar = chance(5);
  naive.volume = isQuoteBar ? std::nullopt : volume;
  writer.set(kline::Volume, number);
  writer.setDayAndFlags(naive.day, isQuoteBar ? kline::kQuoteBar : 0);
  if (chance(3)) {
    naive.isDealtIn = false;
    writer.set(oneOf<kline::Word>({kline::Open, kline::High, kline::Low, kline::Close}),
               oneOf<double>({0, -1, std::nan(""), 1e9, HUGE_VAL}));
  }
  return bar;
}

std::vector<NaiveLevel> RandomMarket::ladder(const Code& code, bool isBid,
                                             IDepthMarketData& record) {
  std::vector<NaiveLevel> levels;
  QuoteWriter writer(record);
  const bool isThere = !chance(12);
  const auto count = static_cast<std::size_t>(chance(5) ? 10 : below(5));
  int64 price = code.middle + (isBid ? -1 : 1) * below(3) * code.step;
  for (std::size_t i = 0; i < count; ++i) {
    const auto [number, volume] = size(code);
    const double wrong = oneOf<double>({0, -1, std::nan(""), 1e10});
    const bool isGood = price > 0 && !chance(3);
    const double shown = isGood ? priceNumber(price) : wrong;
    isBid ? writer.setBid(i, shown, number) : writer.setAsk(i, shown, number);
    if (isGood && isThere) levels.push_back({price, volume});
    price += (isBid ? -1 : 1) * (1 + (chance(20) ? 1 : 0)) * code.step;
  }
  writer.set(isBid ? quote::BidLevels : quote::AskLevels, static_cast<int>(count));
  if (isThere) record.block2[quote::Flags] |= isBid ? quote::kHasBid : quote::kHasAsk;
  return levels;
}

RandomMarket::Tick RandomMarket::nextTick(Code& code) {
  wander(code);
  passTime(code);
  Tick tick;
  NaiveTick& naive = tick.naive;
  QuoteWriter writer(tick.record);
  writer.setTime(now);
  naive.day = code.day - (chance(2) ? 1 : 0);
  writer.set(quote::TradingDay, naive.day);
  naive.bids = ladder(code, true, tick.record);
  naive.asks = ladder(code, false, tick.record);
  const int64 last = code.middle + (below(7) - 3) * code.step;
  const bool isWrong = chance(3);
  writer.set(quote::LastPrice, isWrong ? oneOf<double>({0, -2, std::nan("")}) : priceNumber(last));
  const auto [number, volume] = size(code);
  writer.set(quote::Volume, number);
  if (chance(50)) {
    tick.record.block2[quote::Flags] |= quote::kHasTrade;
    if (!isWrong) naive.last = last;
    naive.traded = volume.value_or(0);
  }
  if (chance(15)) {
    naive.upper = code.middle + 4 * code.step;
    naive.lower = code.middle - 4 * code.step;
    writer.set(quote::UpperLimit, priceNumber(naive.upper));
    writer.set(quote::LowerLimit, priceNumber(naive.lower));
  }
  return tick;
}

NaiveOrder RandomMarket::nextOrder() {
  NaiveOrder order;
  order.account = static_cast<std::size_t>(below(static_cast<int64>(startBalances.size())));
  order.code = static_cast<std::size_t>(below(static_cast<int64>(codes.size())));
  const Code& code = codes[order.code];
  order.source = chance(75) ? "a" : "b";
  order.type = static_cast<int>(below(3));
  order.timeInForce = static_cast<int>(chance(50) ? 3 : below(3));
  order.direction = static_cast<int>(below(2));
  order.offset = chance(60) ? 0 : static_cast<int>(1 + below(2));
  order.volume = (1 + below(8)) * std::max<int64>(code.terms.lot, kOneLot / 2);
  const int64 price = code.middle + (below(11) - 5) * code.step;
  if (order.type == 0) order.limit = price;
  if (order.type == 2) order.stop = price;
  if (isWild_ && chance(20)) *order.volume *= oneOf<int64>({1'000'000, 300'000'000, 2'000'000'000});
  if (!chance(8)) return order;
  switch (below(8)) {
    case 0:
      order.type = static_cast<int>(below(2)) * 4 - 1;
      break;
    case 1:
      order.timeInForce = static_cast<int>(below(2)) * 5 - 1;
      break;
    case 2:
      order.direction = static_cast<int>(below(2)) * 3 - 1;
      break;
    case 3:
      order.offset = static_cast<int>(below(2)) * 4 - 1;
      break;
    case 4:
      order.volume = oneOf<int64>({0, -kOneLot, kOneLot / 4});
      break;
    case 5:
      order.volume.reset();
      break;
    default: {
      std::optional<int64>& one = order.type == 2 ? order.stop : order.limit;
      one = oneOf<std::optional<int64>>({std::nullopt, 0, -code.step, price + code.step / 2});
    }
  }
  return order;
}

Order RandomMarket::recordOf(const NaiveOrder& order) {
  Order record;
  record.id = order.id;
  record.account.accountKey = static_cast<std::int32_t>(order.account) + 1;
  record.code = codes[order.code].id;
  record.source = {536870912, order.source, ""};
  record.ints[order::TypeAt] = order.type;
  record.ints[order::TimeInForceAt] = order.timeInForce;
  record.ints[order::DirectionAt] = order.direction;
  record.ints[order::OffsetAt] = order.offset;
  OrderWriter writer(record);
  const double none = oneOf<double>({std::nan(""), HUGE_VAL, 1e12});
  writer.setVolume(order.volume ? volumeNumber(*order.volume) : none);
  if (order.type != 1) {
    writer.setLimitPrice(order.limit ? priceNumber(*order.limit) : none);
    writer.setStopPrice(order.stop ? priceNumber(*order.stop) : none);
  }
  return record;
}

}  // namespace orvane::testing
