#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/reference/Instrument.h"
#include "platform/trade/ContractTerms.h"
#include "platform/trade/Ledger.h"
#include "platform/trade/TradeEvent.h"
#include "platform/trade/TradeOptions.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane::detail {

struct Contract;

/// What the last market event of a code told.
struct LastPrice {
  Price price;
  int tradingDay = 0;
};

/// The matching and the books of a paper exchange. For one thread at a time: whoever feeds it
/// market data; it calls nobody. Orders reach it when their entry latency is over.
///
/// An order meets only market events that come after it: a tick at or after its arrival that was
/// fed after it; the open and the range of a bar that began at or after its arrival; of a bar that
/// was running when it arrived, the close alone. A bar begins, for this, no earlier than the
/// previous bar of its series ended.
class PaperExchange {
 public:
  explicit PaperExchange(TradeOptions options);
  ~PaperExchange();

  /// Adds an account; `account` is complete, with its key. Throws `std::invalid_argument`.
  void addAccount(const TradingAccountID& account, const std::string& startBalance);
  /// Tells the terms of a code, from its instrument and the options' own; orders of a code that is
  /// not known are rejected. Throws `std::invalid_argument` that names field and value.
  void addContract(const ICodeID& code, const Instrument& instrument);

  /// Takes an order that arrives now. `order` is complete but for what the exchange fills in. It
  /// is answered by events: Working or Rejected, and what follows.
  void place(std::unique_ptr<Order> order, int64 now);
  /// Cancels an order that is at work; of any other nothing happens.
  void cancel(int64 orderId, const SourceId& by, int64 now);

  /// Market data, in the order of the feed, before the runners see it. `now` is its time. Of one
  /// code either ticks or the bars of one series are fed. `previousEnd` is the end time of the
  /// bar before it in its series, or its own begin time.
  void onBar(int64 codeId, const IKLine& bar, int64 previousEnd, int64 now);
  void onTick(int64 codeId, const IDepthMarketData& tick, int64 now);
  /// Null for a code that is not known. It stays where it is, and is the exchange's.
  Contract* contract(int64 codeId);
  /// A bar of the trading day of the one before it, of a code in which no order is at work: all
  /// that `onBar` would do then. For many in a row, so it takes what is found by the code.
  void onQuietBar(Contract& contract, const IKLine& bar);
  /// Whether an order of the code is at work: where none is, only the mark price is taken.
  bool isBusy(int64 codeId) const;
  /// Empty before the first price of a code.
  std::optional<LastPrice> lastPrice(int64 codeId) const;
  /// Null for a code that is not known. It stays where it is.
  const ContractTerms* terms(int64 codeId) const;

  /// What happened since the last call. The other form fills `taken`, whose room is used again.
  std::vector<TradeEvent> takeEvents();
  void takeEvents(std::vector<TradeEvent>& taken);
  bool hasEvents() const;

  Ledger* ledger(std::int32_t accountKey);
  const Ledger* ledger(std::int32_t accountKey) const;
  /// Back to the start: accounts as they were opened, no orders.
  void reset();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvane::detail
