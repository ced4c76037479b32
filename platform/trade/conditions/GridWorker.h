#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/trade/conditions/GridTerms.h"
#include "shared/TradeRecords.h"

namespace orvane::detail {

/// Something that a grid wants done: an order of a cell, or the cancel of one.
struct GridAction {
  enum class Kind : std::uint8_t { Buy, Sell, Cancel };
  Kind kind{};
  std::size_t cell = 0;
  Price price;
  Volume volume;
  int64 orderId = 0;  ///< Of a cancel.
};

/// The rules of one grid, without any service: it is told prices and what became of its orders, and
/// says what it wants done. For one thread at a time.
///
/// A cell has one order at a time. It bids for the grid's volume at its lower level while the last
/// price lies above that level; once the bid is over it offers what it holds at its upper level. A
/// bid that is filled in part is withdrawn when the price goes beyond the upper level, so that what
/// was bought can be sold.
///
/// A rejected order makes its cell wait: for the next price where time alone may help (a closed
/// session, too many orders a second), else for a sale of the grid, a new trading day, a return of
/// the connection or `resume`. Cells that wait are tried one after another, sales first, and a new
/// rejection ends the trying: so a grid without money says so, and does not say it without end.
class GridWorker {
 public:
  enum class Mode : std::uint8_t { Working, Paused, Stopped };

  explicit GridWorker(const GridTerms& terms);

  /// The run begins. Before it, and before the first price, nothing is done.
  void begin(Multiplier multiplier, bool isUp);

  // What happened.
  void onPrice(Price last, int tradingDay);
  void onConnection(bool isUp);
  void onOrder(const Order& order);
  void onFill(const OrderFill& fill);
  /// The order of an action was sent under this id, or refused at once.
  void onSent(std::size_t cell, int64 orderId);
  void onRefused(std::size_t cell, const std::string& message);

  // What the owner of the grid wants. Orders at work are withdrawn first in each case but the
  // second; what was bought is kept.
  void pause();
  void resume();
  void stop();
  /// Goes over to another range once no order is at work. What is held stays for sale at the price
  /// that it had; a part whose two prices are a cell's of the new range goes into that cell.
  void change(const GridTerms& terms);

  /// What is to be done now. Each order must be answered by `onSent` or `onRefused` at once.
  std::vector<GridAction> act();
  /// Whether `act` may have something to say.
  bool isDirty() const { return isDirty_; }

  Mode mode() const { return mode_; }
  bool hasPrice() const { return price_.has_value(); }
  /// An order stays the grid's until the `act` after its end.
  bool hasOrders() const { return !byOrder_.empty(); }
  bool isMine(int64 orderId) const { return byOrder_.contains(orderId); }
  /// Orders that are not over, ascending by id.
  std::vector<int64> orders() const;
  Volume held() const;
  Money profit() const { return profit_; }  ///< Of what was sold, before fees.
  int64 sales() const { return sales_; }    ///< How often a cell sold all that it held.
  /// Why cells wait, GBK: the last reason; empty when none waits.
  const std::string& trouble() const { return trouble_; }

 private:
  enum class Wait : std::uint8_t { None, ForPrice, ForChange };
  struct Lot {
    Price price;
    Volume volume;
  };
  struct Cell {
    Price buy, sell;
    std::deque<Lot> lots;  ///< What it holds, oldest first.
    int64 orderId = 0;     ///< 0: no order.
    bool isBuying = false;
    bool isOver = false;  ///< The order; its last fills may be told after its end.
    bool isCancelling = false;
    Wait wait = Wait::None;
  };

  static Volume heldIn(const Cell& cell);
  bool wantsToSell(const Cell& cell) const { return cell.orderId == 0 && !cell.lots.empty(); }
  bool wantsToBuy(std::size_t at) const;
  void takeEnded();
  void withdraw(std::size_t at, std::vector<GridAction>& actions);
  void withdrawAll(std::vector<GridAction>& actions);
  void place(std::size_t at, std::vector<GridAction>& actions);
  void tryWaiting(std::vector<GridAction>& actions);
  std::optional<std::size_t> nextWaiting() const;
  void makeWait(Cell& cell, Wait wait, const std::string& why);
  void tryAgain() { triesAll_ = isDirty_ = true; }
  void takeFromLots(Cell& cell, Price price, Volume volume);
  void beginRange();

  GridTerms terms_;
  std::optional<GridTerms> nextTerms_;
  Multiplier multiplier_;
  /// Those of the range; then those of former ones that hold something, which only sell.
  std::vector<Cell> cells_;
  std::map<int64, std::size_t> byOrder_;
  Mode mode_ = Mode::Working;
  bool isUp_ = false;
  bool isDirty_ = true;
  std::optional<Price> price_;
  std::size_t below_ = 0;  ///< How many levels lie below the price.
  int day_ = 0;
  bool triesAll_ = false, triesForPrice_ = false;  ///< Which cells that wait are tried.
  bool anyForPrice_ = false;                       ///< Whether one may wait for the next price.
  std::optional<std::size_t> trying_;              ///< The cell whose order tells whether to go on.
  Money profit_;
  int64 sales_ = 0;
  std::string trouble_;
};

}  // namespace orvane::detail
