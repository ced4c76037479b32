// Bars that waited, against the same bars told to the exchange and the curves one by one.

#include <bit>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/fields/PositionView.h"
#include "platform/trade/TradeState.h"
#include "tests/platform/trade/TradeFixture.h"
#include "tests/support/RandomRuns.h"

namespace orvane::testing {
namespace {

using detail::MarketStream;
using detail::TradeState;

constexpr int64 kBar = 10;

/// Two codes with bars of the same times, wild enough that a rich account refuses some prices.
class Reckonings {
 public:
  Reckonings(std::uint64_t seed, std::size_t sources, std::size_t accounts, const char* start)
      : random_(seed), sources_(sources), accounts_(accounts) {
    for (std::size_t i = 0; i < accounts; ++i) options_.accounts.push_back({"A", "CNY", "", 1});
    for (AccountSpec& account : options_.accounts) {
      account.name += std::to_string(&account - options_.accounts.data());
      account.startBalance = start;
    }
    options_.sources = {"S", "T"};
    waiting_ = make();
    direct_ = make();
    for (std::size_t code = 0; code < 2; ++code) {
      series_[code] = std::make_shared<BarSeries>();
      series_[code]->code = codeOf(code);
      stream_[code] = std::make_unique<MarketStream>(series_[code], code);
    }
  }

  void play(int bars) {
    for (int bar = 0; bar < bars; ++bar) {
      for (std::size_t code = 0; code < 2; ++code) addBar(code, bar);
      if (below(12) == 0) trade(bar);
      if (below(20) == 0) waiting_->books();
    }
  }

  std::vector<std::string> ofWaiting() { return picture(*waiting_); }
  std::vector<std::string> ofDirect() { return picture(*direct_); }
  int postponed() const { return postponed_; }

 private:
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  static ICodeID codeOf(std::size_t code) {
    return {static_cast<int64>(code) + 7, 1, 1, code == 0 ? "C" : "D"};
  }

  std::unique_ptr<TradeState> make() const {
    auto state = std::make_unique<TradeState>(options_);
    for (std::size_t code = 0; code < 2; ++code) {
      Instrument instrument;
      instrument.code = codeOf(code).code;
      state->exchange().addContract(codeOf(code), instrument);
    }
    state->equity().start(0);
    return state;
  }

  void addBar(std::size_t code, int bar) {
    // Now and then the price of before, none, or one at which a large volume is worth too much.
    double& price = prices_[code];
    if (below(4) != 0) price = 90 + static_cast<double>(below(2'000)) / 100;
    const double shown = below(15) == 0 ? 0 : below(15) == 0 ? 4e8 : price;
    series_[code]->bars.push_back(
        makeBar(bar * kBar, (bar + 1) * kBar, shown, shown, shown, shown, 1e9));
    const auto row = static_cast<std::size_t>(bar);
    const int64 codeId = codeOf(code).id;
    const int64 time = (bar + 1) * kBar;
    const IKLine& record = series_[code]->bars[row];
    if (mayWait_[code]) {
      if (waiting_->postponed.isFull()) waiting_->books();
      waiting_->postponed.add(*stream_[code], row);
      ++postponed_;
      direct_->exchange().onQuietBar(*direct_->exchange().contract(codeId), record);
      direct_->equity().noteMark({codeId, time, false});
      return;
    }
    for (TradeState* const state : {waiting_.get(), direct_.get()}) {
      state->exchange().onBar(codeId, record, bar * kBar, time);
      for (const detail::TradeEvent& event : state->exchange().takeEvents())
        if (const OrderFill* const fill = event.fill())
          state->equity().noteFill(fill->account.accountKey, fill->source.createSource, codeId,
                                   time);
      mayWait_[code] =
          state->equity().noteMark({codeId, time, false}) && !state->exchange().isBusy(codeId);
    }
  }

  void trade(int bar) {
    const std::size_t code = below(2), account = below(accounts_);
    const std::string source = below(sources_) == 0 ? "S" : "T";
    const bool buys = below(2) == 0, opens = below(5) < 3;
    const double volume = below(3) == 0 ? 1e7 : static_cast<double>(1 + below(3));
    ++lastId_;
    for (TradeState* const state : {waiting_.get(), direct_.get()}) {
      const TradingAccountID& id = state->accounts.all()[account];
      OrderRequest request =
          makeRequest(id, codeOf(code), buys ? order::Direction::Buy : order::Direction::Sell,
                      volume, opens ? order::Offset::Open : order::Offset::Close, source);
      auto order = std::make_unique<Order>();
      order->id = lastId_;
      order->account = id;
      order->code = request.code;
      order->source = request.source;
      OrderWriter writer(*order);
      writer.setType(order::Type::Market);
      writer.setDirection(buys ? order::Direction::Buy : order::Direction::Sell);
      writer.setOffset(opens ? order::Offset::Open : order::Offset::Close);
      writer.setVolume(volume);
      state->equity().addSource(id.accountKey, source);
      state->exchange().place(std::move(order), (bar + 1) * kBar);
      state->exchange().takeEvents();
    }
    mayWait_[code] = false;
  }

  static void add(std::vector<std::string>& all, const std::string& name,
                  const EquityPoints& points) {
    for (const EquityPoint& point : points)
      all.push_back(name + " " + std::to_string(point.time) + " " +
                    std::to_string(std::bit_cast<std::uint64_t>(point.equity)) + " " +
                    std::to_string(std::bit_cast<std::uint64_t>(point.exposure)));
  }

  std::vector<std::string> picture(TradeState& state) const {
    std::vector<std::string> all;
    const auto [exchange, equity] = state.books();
    for (const TradingAccountID& account : state.accounts.all()) {
      const detail::Ledger& ledger = *exchange.ledger(account.accountKey);
      all.push_back(text(ledger.equity()) + " " + text(ledger.floatingProfit()) + " " +
                    text(ledger.available()));
      add(all, account.account, equity.account(account.accountKey).points);
      for (std::size_t code = 0; code < 2; ++code) {
        Position position;
        if (!ledger.positionRecord(codeOf(code).id, position)) continue;
        all.push_back(std::to_string(PositionView(position).markPrice()));
      }
    }
    for (const auto& [key, curve] : equity.sources())
      add(all, key.second, equity.pointsOf(key, curve));
    for (std::size_t code = 0; code < 2; ++code)
      if (const auto last = exchange.lastPrice(codeOf(code).id)) all.push_back(text(last->price));
    return all;
  }

  std::mt19937_64 random_;
  const std::size_t sources_, accounts_;
  TradeOptions options_;
  std::unique_ptr<TradeState> waiting_, direct_;
  std::shared_ptr<BarSeries> series_[2];
  std::unique_ptr<MarketStream> stream_[2];
  double prices_[2] = {100, 100};
  bool mayWait_[2] = {};
  int64 lastId_ = 0;
  int postponed_ = 0;
};

TEST(Reckoning, shouldComeToWhatEachBarByItselfComesTo) {
  const std::uint64_t seed = support::randomSeed();
  SCOPED_TRACE("ORVANE_RANDOM_SEED=" + std::to_string(seed));
  int postponed = 0;
  for (std::uint64_t run = 0; run < static_cast<std::uint64_t>(support::randomRuns(200)); ++run) {
    Reckonings both(seed + run, 1 + run % 2, 1 + run / 2 % 2,
                    run / 4 % 2 == 0 ? "1000000" : "900000000000000");
    both.play(200);
    ASSERT_EQ(both.ofWaiting(), both.ofDirect()) << "run " << run;
    postponed += both.postponed();
  }
  EXPECT_GT(postponed, 1'000);
}

}  // namespace
}  // namespace orvane::testing
