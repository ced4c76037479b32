// The exchange as a whole under random markets and random order flow, held against a second, naive
// exchange step by step, and watched for what can never be.
//
// ORVANE_RANDOM_RUNS sets how many markets are tried, ORVANE_RANDOM_SEED where they begin: a
// failure names the seed of its market, which shows it again as the only one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <sstream>

#include "platform/fields/FillView.h"
#include "platform/fields/PositionView.h"
#include "tests/platform/trade/ExchangeWatch.h"
#include "tests/platform/trade/RandomMarket.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

using detail::Ledger;
using detail::Money;
using detail::PaperExchange;
using detail::TradeEvent;

constexpr int kMarkets = 3'000;
constexpr int kSteps = 60;

/// Where the seeds begin.
std::uint64_t firstSeed() {
  const char* const text = std::getenv("ORVANE_RANDOM_SEED");
  if (text != nullptr) return std::strtoull(text, nullptr, 10);
  return std::random_device{}() * std::uint64_t{1'000'000};
}

std::string toldLine(const Told& told) {
  std::ostringstream line;
  line.precision(17);
  line << told.orderId << (told.what == Told::kFill ? " fill" : " status ")
       << (told.what == Told::kFill ? "" : std::to_string(told.what)) << " t=" << told.time
       << " day " << told.day << " price " << told.price << " volume " << told.volume
       << " turnover " << told.turnover << " fee " << told.fee << " money " << told.money
       << (told.hadRested ? " rested" : "") << " " << told.reason;
  return line.str();
}

bool isSame(const Told& seen, const Told& expected) {
  return seen.orderId == expected.orderId && seen.what == expected.what &&
         seen.time == expected.time && seen.day == expected.day && seen.price == expected.price &&
         seen.volume == expected.volume && seen.turnover == expected.turnover &&
         seen.fee == expected.fee && seen.money == expected.money &&
         seen.hadRested == expected.hadRested && seen.reason.starts_with(expected.reason) &&
         seen.reason.empty() == expected.reason.empty();
}

Told toldOf(const Order& order) {
  const OrderView view(order);
  return {order.id,
          order.status(),
          view.updateTime(),
          view.tradingDay(),
          view.meanFillPrice(),
          view.filledVolume(),
          view.turnover(),
          view.fee(),
          view.frozenMoney(),
          false,
          view.message()};
}

Told toldOf(const OrderFill& fill) {
  const FillView view(fill);
  return {view.orderId(),
          Told::kFill,
          view.time(),
          view.tradingDay(),
          view.price(),
          view.volume(),
          view.turnover(),
          view.fee(),
          view.profit(),
          view.hadRested(),
          ""};
}

/// One random market with its orders.
class Trial {
 public:
  explicit Trial(std::uint64_t seed)
      : market_(seed),
        exchange_(market_.options),
        naive_(market_.naiveOptions, terms()),
        watch_(terms(), market_.naiveOptions.volumeShare) {
    for (std::size_t i = 0; i < market_.startBalances.size(); ++i) {
      TradingAccountID account;
      account.accountKey = static_cast<std::int32_t>(i) + 1;
      exchange_.addAccount(account, market_.startBalances[i]);
    }
    for (const RandomMarket::Code& code : market_.codes)
      exchange_.addContract(code.id, code.instrument);
  }

  void run(bool isTold) {
    isTold_ = isTold;
    for (int step = 0; step < kSteps && fault_.empty(); ++step) {
      const auto action = market_.below(10);
      if (action < 4)
        send();
      else if (action < 5)
        sendCancel();
      else
        feed();
    }
    end();
  }

  const std::string& fault() const { return fault_; }
  std::string trace() const { return trace_.str(); }
  const ExchangeWatch& watch() const { return watch_; }
  const std::map<std::string, int64>& reasons() const { return reasons_; }

 private:
  struct Action {
    bool isCancel = false;
    NaiveOrder order;
  };

  std::vector<NaiveTerms> terms() const {
    std::vector<NaiveTerms> all;
    for (const RandomMarket::Code& code : market_.codes) all.push_back(code.terms);
    return all;
  }

  void send() {
    Action action{false, market_.nextOrder()};
    action.order.id = ++lastId_;
    inFlight_.emplace(market_.now + market_.entryLatencyMs, action);
    arriveUntil(market_.now);
  }

  void sendCancel() {
    Action action{true, {}};
    action.order.id = 1 + market_.below(lastId_ + 1);
    inFlight_.emplace(market_.now + market_.entryLatencyMs, action);
    arriveUntil(market_.now);
  }

  void arriveUntil(int64 time) {
    while (!inFlight_.empty() && inFlight_.begin()->first <= time && fault_.empty()) {
      const auto [at, action] = *inFlight_.begin();
      inFlight_.erase(inFlight_.begin());
      if (action.isCancel)
        cancel(action.order.id, at);
      else
        place(action.order, at);
    }
  }

  void place(const NaiveOrder& order, int64 time) {
    if (isTold_)
      trace_ << "t=" << time << " order " << order.id << " account " << order.account << " code "
             << order.code << " source " << order.source << " type " << order.type << " tif "
             << order.timeInForce << " dir " << order.direction << " off " << order.offset
             << " volume " << order.volume.value_or(-1) << " limit " << order.limit.value_or(-1)
             << " stop " << order.stop.value_or(-1) << "\n";
    watch_.arrives(order, time);
    exchange_.place(std::make_unique<Order>(market_.recordOf(order)), time);
    naive_.place(order, time);
    compare(time);
  }

  void cancel(int64 id, int64 time) {
    if (isTold_) trace_ << "t=" << time << " cancel " << id << "\n";
    exchange_.cancel(id, {}, time);
    naive_.cancel(id, time);
    compare(time);
  }

  void feed() {
    const auto at =
        static_cast<std::size_t>(market_.below(static_cast<std::int64_t>(market_.codes.size())));
    RandomMarket::Code& code = market_.codes[at];
    if (code.hasTicks) {
      const RandomMarket::Tick tick = market_.nextTick(code);
      arriveUntil(market_.now);
      tell(at, tick.naive);
      watch_.shows(at, tick.naive);
      exchange_.onTick(code.id.id, tick.record, market_.now);
      naive_.tick(at, tick.naive, market_.now);
    } else {
      const RandomMarket::Bar bar = market_.nextBar(code);
      arriveUntil(market_.now);
      tell(at, bar.naive);
      watch_.shows(at, bar.naive);
      exchange_.onBar(code.id.id, bar.record, bar.previousEnd, market_.now);
      naive_.bar(at, bar.naive, market_.now);
    }
    compare(market_.now);
  }

  void tell(std::size_t code, const NaiveBar& bar) {
    if (isTold_)
      trace_ << "t=" << market_.now << " bar of " << code << ": " << bar.open << " " << bar.high
             << " " << bar.low << " " << bar.close << " volume " << bar.volume.value_or(-1)
             << " from " << bar.begin << " to " << bar.end << " day " << bar.day
             << (bar.isDealtIn ? "" : " not dealt in") << "\n";
  }

  void tell(std::size_t code, const NaiveTick& tick) {
    if (!isTold_) return;
    trace_ << "t=" << market_.now << " tick of " << code << ":";
    for (const NaiveLevel& bid : tick.bids)
      trace_ << " b" << bid.price << "x" << bid.size.value_or(-1);
    for (const NaiveLevel& ask : tick.asks)
      trace_ << " a" << ask.price << "x" << ask.size.value_or(-1);
    trace_ << " last " << tick.last.value_or(-1) << " traded " << tick.traded << " day " << tick.day
           << "\n";
  }

  /// What both exchanges told, by order: the true one may take orders of one event in any turn that
  /// the liquidity allows.
  void compare(int64 time) {
    const std::vector<TradeEvent> events = exchange_.takeEvents();
    watch_.saw(events, time);
    watch_.isOver();
    std::vector<Told> seen;
    for (const TradeEvent& event : events) {
      if (const auto* order = event.order()) seen.push_back(toldOf(*order));
      if (const auto* fill = event.fill()) seen.push_back(toldOf(*fill));
    }
    std::vector<Told> expected = naive_.take();
    std::ranges::stable_sort(seen, {}, &Told::orderId);
    std::ranges::stable_sort(expected, {}, &Told::orderId);
    for (const Told& told : expected)
      if (!told.reason.empty()) ++reasons_[told.reason];
    if (isTold_)
      for (const Told& told : seen) trace_ << "    " << toldLine(told) << "\n";
    if (!std::ranges::equal(seen, expected, isSame)) {
      fault_ = "other events than the naive exchange's:\n";
      for (const Told& told : expected) fault_ += "    " + toldLine(told) + "\n";
    }
    if (!watch_.fault().empty()) fault_ += "never may be: " + watch_.fault();
    for (std::size_t i = 0; i < market_.startBalances.size(); ++i) compareAccount(i);
  }

  void expect(bool is, const char* what, std::size_t account) {
    if (!is && fault_.empty()) fault_ = what + (" of account " + std::to_string(account));
  }

  void compareAccount(std::size_t i) {
    const Ledger& ledger = *exchange_.ledger(static_cast<std::int32_t>(i) + 1);
    const Int128 start = market_.naiveOptions.starts[i];
    const Int128 floating = naive_.floating(i);
    const Int128 margin = naive_.margin(i);
    const Int128 frozen = naive_.frozen(i);
    const Int128 balance = start + naive_.closed(i) - naive_.fees(i);
    expect(ledger.closedProfit().units == naive_.closed(i), "closed profit", i);
    expect(ledger.fees().units == naive_.fees(i), "fees", i);
    expect(ledger.margin().units == margin, "margin", i);
    expect(ledger.frozen().units == frozen, "frozen money", i);
    expect(ledger.floatingProfit().units == floating, "floating profit", i);
    expect(ledger.balance().units == balance, "balance", i);
    expect(ledger.equity().units == balance + floating, "equity", i);
    expect(ledger.available().units == balance + floating - margin - frozen, "available", i);
    for (const std::string source : {"a", "b"}) {
      expect(ledger.resultOf(source).units == naive_.resultOf(i, source), "result", i);
      for (std::size_t code = 0; code < market_.codes.size(); ++code)
        comparePosition(ledger, i, source, code);
    }
  }

  void comparePosition(const Ledger& ledger, std::size_t i, const std::string& source,
                       std::size_t code) {
    const int64 codeId = market_.codes[code].id.id;
    SourcePosition record;
    const bool isThere = ledger.sourcePositionRecord(codeId, source, record);
    const PositionView view(record);
    for (const bool isLong : {true, false}) {
      const int64 held = naive_.held(i, source, code, isLong, false);
      const int64 today = naive_.held(i, source, code, isLong, true);
      expect(ledger.volumeOf(source, codeId, isLong).units == held, "held volume", i);
      if (!isThere) continue;
      const PositionView::Side side = isLong ? view.longSide() : view.shortSide();
      expect(side.todayVolume() == toDouble(detail::Volume{today}), "today's volume", i);
      expect(side.yesterdayVolume() == toDouble(detail::Volume{held - today}), "yesterday's volume",
             i);
      expect(side.frozenVolume() <= side.volume(), "frozen volume", i);
    }
  }

  /// Everything that is at work is cancelled; nothing may be left.
  void end() {
    arriveUntil(market_.now + market_.entryLatencyMs);
    for (int64 id = 1; id <= lastId_ && fault_.empty(); ++id)
      cancel(id, market_.now + market_.entryLatencyMs);
    if (!fault_.empty()) return;
    watch_.ends();
    if (!watch_.fault().empty()) fault_ = "never may be: " + watch_.fault();
    for (std::size_t i = 0; i < market_.startBalances.size(); ++i)
      expect(exchange_.ledger(static_cast<std::int32_t>(i) + 1)->frozen().isZero(),
             "money left frozen", i);
    for (const RandomMarket::Code& code : market_.codes)
      expect(!exchange_.isBusy(code.id.id), "orders left at work", 0);
  }

  RandomMarket market_;
  PaperExchange exchange_;
  NaiveExchange naive_;
  ExchangeWatch watch_;
  std::multimap<int64, Action> inFlight_;
  int64 lastId_ = 0;
  std::map<std::string, int64> reasons_;
  bool isTold_ = false;
  std::string fault_;
  std::ostringstream trace_;
};

/// What all trials saw.
struct Sums {
  int64 fills = 0;
  std::map<order::Status, int64> ends;
  std::map<std::string, int64> reasons;

  void add(const Trial& trial) {
    fills += trial.watch().fills();
    for (const auto status : {order::Status::Filled, order::Status::Cancelled,
                              order::Status::Rejected, order::Status::Expired})
      ends[status] += trial.watch().count(status);
    for (const auto& [reason, count] : trial.reasons()) reasons[reason] += count;
  }
};

TEST(ExchangeProperty, shouldDoWhatANaiveExchangeDoesWithRandomMarketsAndOrders) {
  const auto markets = static_cast<std::uint64_t>(support::randomRuns(kMarkets));
  const std::uint64_t first = firstSeed();
  std::cout << markets << " markets from ORVANE_RANDOM_SEED=" << first << "\n";
  Sums sums;
  for (std::uint64_t seed = first; seed < first + markets; ++seed) {
    Trial trial(seed);
    trial.run(false);
    sums.add(trial);
    if (trial.fault().empty()) continue;
    Trial again(seed);
    again.run(true);
    FAIL() << "ORVANE_RANDOM_SEED=" << seed << "\n" << again.trace() << again.fault();
  }
  // They go where there is something to see.
  const auto most = static_cast<int64>(markets);
  EXPECT_GT(sums.fills, most);
  for (const auto& [status, count] : sums.ends)
    EXPECT_GT(count, most / 4) << "status " << static_cast<int>(status);
  std::string seen;
  for (const auto& [reason, count] : sums.reasons)
    seen += reason + ": " + std::to_string(count) + "\n";
  std::cout << sums.fills << " fills; rejections:\n" << seen;
  if (markets < kMarkets) return;  // Some are rare.
  for (const char* reason : {"bad limit price", "bad order type", "bad volume", "not enough money",
                             "not enough position", "risk limit: loss", "risk limit: more than",
                             "risk limit: order volume", "risk limit: position", "the session of",
                             "too large", "too much volume"})
    EXPECT_GT(sums.reasons[reason], 0) << reason;
}

}  // namespace
}  // namespace orvane::testing
