#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/fields/OrderView.h"
#include "platform/trade/ContractTerms.h"
#include "platform/trade/PositionSide.h"
#include "platform/trade/PriceRun.h"
#include "platform/trade/TradeGlance.h"
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

/// A fill that is about to be booked.
struct FillPiece {
  Price price;
  Volume volume;
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
///
/// No amount ever leaves the range of `Money`: a start balance is at most 10^15, what is held and
/// awaited at most 10^10 of volume and 10^14 of turnover, and `checkFills` keeps the rest.
class Ledger {
 public:
  static constexpr Money kMostStart{Int128{10'000'000'000'000'000'000U} *
                                    1'000'000'000'000'000'000};

  Ledger(TradingAccountID account, Money start);
  // Books point to one another: they stay where they are when a ledger is moved.
  Ledger(const Ledger&) = delete;
  Ledger(Ledger&&) = default;
  Ledger& operator=(Ledger&&) = default;

  const TradingAccountID& account() const { return account_; }

  /// Holds back what the order needs: money of an opening one, volume of a closing one. Answers
  /// why not if there is not enough, or if the account would hold and await more than 10^10 of
  /// volume or 10^14 of turnover; nothing is changed then.
  std::optional<Refusal> freeze(const Claim& claim);
  /// Gives back what the rest of an order still holds; for an order that is over.
  void release(int64 orderId);
  /// What an order's rest holds back.
  Money frozenOf(int64 orderId) const;
  /// Why fills, all of them, cannot be booked, though the order was let in: the account would have
  /// dealt in more than 2.5 x 10^15 of turnover since the start, hold more than that at the last
  /// prices, or have more than 10^15 of margin or of fees.
  std::optional<Refusal> checkFills(int64 orderId, std::span<const FillPiece> pieces) const;
  /// Books a fill that `checkFills` has nothing against, of an order that `freeze` let in, and
  /// frees its share of what was held back.
  Booking fill(int64 orderId, Price price, Volume volume);

  /// Takes the last price of a code; none at which what is held would be worth more than
  /// 2.5 x 10^15, then the one before stays.
  void mark(int64 codeId, Price price);
  /// To look at many prices of a code in a row, of which `mark` is then told the last that it took;
  /// empty unless one side of one source is all that is held of it, valued by its present terms.
  std::optional<PriceRun> priceRun(int64 codeId) const;
  /// A new trading day of a code: today's part becomes yesterday's. Settles it first, at the last
  /// price, if `settles` and its margin would not be out of range. Answers whether a position
  /// changed.
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
  /// What both sides, added up, are worth at the last price, of a source or of all if it is empty.
  double exposureOf(const std::string& source, int64 codeId) const;
  double exposureOf(int64 codeId) const;
  /// Whether a source, or any if it is empty, holds anything of a code.
  bool holds(const std::string& source, int64 codeId) const;

  /// The public records, complete. `time` is the time of the last change, UTC milliseconds.
  TradingAccount capitalRecord(int64 time) const;
  /// Of a code that was ever traded; false if it was not. Written into a record that is blank.
  bool positionRecord(int64 codeId, Position& position) const;
  bool sourcePositionRecord(int64 codeId, const std::string& source,
                            SourcePosition& position) const;
  std::vector<int64> codes() const;                      ///< Ever traded, ascending.
  std::vector<std::string> sources(int64 codeId) const;  ///< That ever traded it, ascending.
  /// How each create source stands, by name.
  std::vector<SourceGlance> sourceGlances() const;

 private:
  /// What one create source holds and made in one code.
  struct SourceBook {
    SourceId source;
    PositionSide longSide{true};
    PositionSide shortSide{false};
    Money closedProfit, fees;
    Money floating;  ///< At the code's mark price.

    bool isEmpty() const { return longSide.isEmpty() && shortSide.isEmpty(); }
  };
  struct CodeBook {
    const ContractTerms* terms = nullptr;
    std::optional<Price> markPrice;
    Volume held;  ///< Of both sides of all sources: asked for at each price, so counted at fills.
    Money value;  ///< The same at the mark price.
    std::map<std::string, SourceBook> sources;
    /// Mostly one side of one source is all there is. Null where it is not so, and where what it is
    /// worth is out of range.
    const PositionSide* soleSide = nullptr;
    SourceBook* soleHolder = nullptr;  ///< Whose side that is.

    bool isHeld() const { return !held.isZero(); }
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
  static std::optional<Money> feeOf(const ContractTerms& terms, Money turnover, Volume volume);
  static PositionSide& sideOf(SourceBook& book, const Claim& claim);
  std::optional<Refusal> freezeMoney(const Claim& claim);
  std::optional<Refusal> freezeVolume(const Claim& claim);
  void hold(const Claim& claim, Money money, Money turnover);
  SourceBook& bookOf(const Claim& claim);
  /// What is held has changed.
  void recount(CodeBook& code);
  /// Its price, or what is held, has: it is worth `value` now, or 0 where that is out of range.
  void revalue(CodeBook& code, Money value);
  void setFloating(SourceBook& book, Money floating);
  static double exposureOf(const CodeBook& code, Volume volume);
  bool settlementFits(const CodeBook& code) const;
  // Of one source's book or, if it is null, of all.
  template <typename Visit>
  static void eachBook(const CodeBook& code, const SourceBook* only, Visit visit);
  static void fillSide(Position& position, const CodeBook& code, const SourceBook* only,
                       bool isLong);
  void fillRecord(int64 codeId, const CodeBook& code, const SourceBook* only,
                  Position& position) const;

  TradingAccountID account_;
  Money start_;
  Money closedProfit_, fees_, margin_, frozen_, floating_;
  Money committed_;  ///< Turnover of what is held, and of what opening orders may still open.
  Volume committedVolume_;  ///< The same in volume.
  Money traded_;            ///< Turnover of all fills.
  Money value_;             ///< Of all that is held, long and short added up, at the mark prices.
  std::map<int64, CodeBook> codes_;
  std::map<int64, Hold> holds_;  ///< By order id.
};

}  // namespace orvane::detail
