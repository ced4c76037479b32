#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/fields/OrderView.h"
#include "platform/trade/ContractTerms.h"
#include "platform/trade/PositionSide.h"
#include "shared/AccountRecords.h"
#include "shared/TradeRecords.h"

namespace orvane::detail {

/// Why an order was refused: a code of `ResultStatusMessages` and a text, GBK.
struct Refusal {
  int code = 0;
  std::string text;
};

/// What an order asks of an account.
struct Claim {
  int64 orderId = 0;
  SourceId source;
  const ContractTerms* terms = nullptr;
  order::Direction direction{};
  order::Offset offset{};
  Volume volume;
  Price price;  ///< That money is held back at; of a market order the last one known.
};

/// What a fill did to an account.
struct Booking {
  Money turnover;
  Money fee;
  Money profit;  ///< Of what it closed, before fees.
};

/// The book of one account: money, positions by code and create source, and what orders at work
/// hold back. For one thread at a time. All amounts are exact.
///
/// A create source closes only what it opened: its oldest volume first (`Close`: yesterday's part,
/// then today's; `CloseToday`: today's alone).
///
/// After every operation:
/// - balance = start + closed profit - fees; equity = balance + floating profit;
///   available = equity - margin - frozen;
/// - closed profit, fees, margin, floating profit and frozen are the sums over codes and sources;
/// - a side's volume = today + yesterday = opened - closed; frozen volume is never above it.
class Ledger {
 public:
  Ledger(TradingAccountID account, Money start);

  const TradingAccountID& account() const { return account_; }

  /// Holds back what the order needs: money of an opening one, volume of a closing one. Answers
  /// why not if there is not enough, or if an account would hold and await more than 10^14 of
  /// turnover; nothing is changed then.
  std::optional<Refusal> freeze(const Claim& claim);
  /// Gives back what the rest of an order still holds; for an order that is over.
  void release(int64 orderId);
  /// What an order's rest holds back.
  Money frozenOf(int64 orderId) const;
  /// Books a fill of an order that `freeze` let in, and frees its share of what was held back.
  Booking fill(int64 orderId, Price price, Volume volume);

  /// Takes the last price of a code.
  void mark(int64 codeId, Price price);
  /// A new trading day of a code: today's part becomes yesterday's. Settles it first, at the last
  /// price, if `settles`. Answers whether a position changed.
  bool beginDay(int64 codeId, bool settles);

  Money balance() const;
  Money equity() const;
  Money available() const;
  Money frozen() const;
  Money margin() const;
  Money fees() const;
  Money closedProfit() const;
  Money floatingProfit() const;
  Money startBalance() const { return start_; }

  /// Profit, closed and floating, minus fees, of one create source.
  Money resultOf(const std::string& source) const;
  /// Volume on one side of a code that a source holds, or all sources if it is empty.
  Volume volumeOf(const std::string& source, int64 codeId, bool isLong) const;

  /// The public records, complete. `time` is the time of the last change, UTC milliseconds.
  TradingAccount capitalRecord(int64 time) const;
  /// Of a code that was ever traded; false if it was not.
  bool positionRecord(int64 codeId, Position& position) const;
  bool sourcePositionRecord(int64 codeId, const std::string& source,
                            SourcePosition& position) const;
  std::vector<int64> codes() const;                      ///< Ever traded, ascending.
  std::vector<std::string> sources(int64 codeId) const;  ///< That ever traded it, ascending.

 private:
  /// What one create source holds and made in one code.
  struct SourceBook {
    SourceId source;
    PositionSide longSide{true};
    PositionSide shortSide{false};
    Money closedProfit, fees;
    Money floating;  ///< At the code's mark price.
  };
  struct CodeBook {
    const ContractTerms* terms = nullptr;
    std::optional<Price> markPrice;
    bool isHeld = false;
    std::map<std::string, SourceBook> sources;
  };
  /// What an order at work holds back.
  struct Hold {
    Claim claim;
    Volume left;
    Money money;     ///< Of an opening order.
    Money turnover;  ///< Of an opening order's rest, at its price.
  };
  struct Need {
    Money turnover, margin, fee;
  };

  static std::optional<Need> needOf(const ContractTerms& terms, Price price, Volume volume);
  static PositionSide& sideOf(SourceBook& book, const Claim& claim);
  std::optional<Refusal> freezeMoney(const Claim& claim);
  std::optional<Refusal> freezeVolume(const Claim& claim);
  SourceBook& bookOf(const Claim& claim);
  void revalue(CodeBook& code);
  void fillSide(Position& position, const CodeBook& code, const std::vector<const SourceBook*>& of,
                bool isLong) const;
  void fillRecord(int64 codeId, const CodeBook& code, const std::vector<const SourceBook*>& of,
                  Position& position) const;

  TradingAccountID account_;
  Money start_;
  Money closedProfit_, fees_, margin_, frozen_, floating_;
  Money committed_;  ///< Turnover of what is held, and of what opening orders may still open.
  std::map<int64, CodeBook> codes_;
  std::map<int64, Hold> holds_;  ///< By order id.
};

}  // namespace orvane::detail
