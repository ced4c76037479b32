#include "host/QuoteTrades.h"

#include <fmt/core.h>

#include <algorithm>
#include <tuple>

#include "host/InputError.h"
#include "platform/market/MeanPrice.h"
#include "platform/market/files/CacheFile.h"

namespace orvane {
namespace {

constexpr TickColumnId kBestBid{TickColumn::BidPrice}, kBestAsk{TickColumn::AskPrice};

/// The place of a column in a row; -1 without one.
int placeOf(const TickSeries& ticks, const TickColumnId& id) {
  const auto at = std::ranges::find(ticks.columns, id);
  return at == ticks.columns.end() ? -1 : static_cast<int>(at - ticks.columns.begin());
}

std::string columnNames(const TickSeries& ticks) {
  std::string names;
  for (const TickColumnId& id : ticks.columns)
    names += (names.empty() ? "" : ", ") + nameOfTickColumn(id);
  return names;
}

/// Whether a stream tells of each change alone: no row has both prices.
bool namesOneSideARow(const TickSeries& ticks, int bid, int ask) {
  for (std::size_t row = 0; row < ticks.rows(); ++row) {
    const double* const cells = ticks.cells.data() + row * ticks.columns.size();
    if (cells[bid] > 0 && cells[ask] > 0) return false;
  }
  return true;
}

/// The mean of bid and ask, row by row; 0 where there is none.
class MeanOfSides {
 public:
  explicit MeanOfSides(bool carries) : carries_(carries) {}

  double next(int tradingDay, double bid, double ask) {
    if (carries_ && (bid > 0 || ask > 0)) {
      if (tradingDay != tradingDay_) bid_ = ask_ = 0;
      tradingDay_ = tradingDay;
      bid_ = bid = bid > 0 ? bid : bid_;
      ask_ = ask = ask > 0 ? ask : ask_;
    }
    return bid > 0 && ask > 0 ? detail::meanPrice(bid, ask) : 0;
  }

 private:
  const bool carries_;  ///< A side holds until it is named again or the trading day ends.
  int tradingDay_ = 0;
  double bid_ = 0, ask_ = 0;
};

bool hasQuotes(const TickSeries& ticks) {
  return placeOf(ticks, kBestBid) >= 0 || placeOf(ticks, kBestAsk) >= 0;
}

}  // namespace

TickSeries tradesOfQuotes(const TickSeries& ticks, const std::string& side,
                          const std::string& option) {
  const int bid = placeOf(ticks, kBestBid), ask = placeOf(ticks, kBestAsk);
  for (const auto& [place, other, id] :
       {std::tuple(bid, "ask", kBestBid), std::tuple(ask, "bid", kBestAsk)})
    if (place < 0 && side != other)
      throw InputError(fmt::format("{}: \"{}\" needs the column {}, and the ticks have {}", option,
                                   side, nameOfTickColumn(id), columnNames(ticks)));
  TickSeries trades;
  trades.code = ticks.code;
  trades.timeZone = ticks.timeZone;
  trades.origin = ticks.origin;
  trades.columns = {{TickColumn::LastPrice}};
  trades.times = ticks.times.shared();
  trades.tradingDays = ticks.tradingDays.shared();
  trades.cells.reserve(ticks.rows());
  MeanOfSides mean(side == "mid" && namesOneSideARow(ticks, bid, ask));
  for (std::size_t row = 0; row < ticks.rows(); ++row) {
    const double* const cells = ticks.cells.data() + row * ticks.columns.size();
    const double bidPrice = bid < 0 ? 0 : cells[bid], askPrice = ask < 0 ? 0 : cells[ask];
    trades.cells.push_back(side == "bid"   ? bidPrice
                           : side == "ask" ? askPrice
                                           : mean.next(ticks.tradingDays[row], bidPrice, askPrice));
  }
  trades.isOrdered = ticks.isOrdered;
  return trades;
}

std::string whyNoTrades(const TickSeries& ticks, const std::string& side) {
  if (!side.empty())
    return fmt::format("no tick has {} above 0",
                       side == "mid" ? std::string("both prices") : "a price of the " + side);
  const char* const advice = hasQuotes(ticks) ? "; --of bid, ask or mid makes bars of quotes" : "";
  if (placeOf(ticks, {TickColumn::LastPrice}) < 0)
    return fmt::format("bars are made of last prices, and the ticks have only {}{}",
                       columnNames(ticks), advice);
  const bool hasVolume =
      placeOf(ticks, {TickColumn::Volume}) >= 0 || placeOf(ticks, {TickColumn::TotalVolume}) >= 0;
  return fmt::format("no tick has a last price above 0{}{}",
                     hasVolume ? " and a volume, or a total volume that grew" : "", advice);
}

}  // namespace orvane
