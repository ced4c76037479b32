#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/trade/TradeState.h"
#include "platform/trade/conditions/DetailBook.h"
#include "platform/trade/conditions/GridWorker.h"
#include "platform/trade/conditions/IGridConditions.h"
#include "services/Common/ITradeService.h"

namespace orvane::detail {

/// Works the grid conditions of a run: a client of the trade service like any strategy, with the
/// same latencies and the same losses of connection, but on the service loop's thread alone. What
/// it does in answer to a record or a report waits in the inbox like everybody's orders.
///
/// Made with `make_shared`: the trade service holds it while it is subscribed. Its mutex is never
/// held while a service or a receiver is called.
class GridDesk final : public TradeEventSpi,
                       public IGridConditions,
                       public std::enable_shared_from_this<GridDesk> {
 public:
  struct Parts {
    TradeState& state;
    ITradeService& trade;
    const TradeOptions& options;
    std::function<bool(const std::string& text, ICodeID& code)> findCode;
    std::function<void()> onRequest;  ///< Called, with no lock held, when `serve` has work.
  };
  /// Throws `std::invalid_argument`, in UTF-8, that names grid, field and value.
  explicit GridDesk(Parts parts);
  ~GridDesk() override;

  /// The condition service that the library sees.
  DetailBook& details() { return details_; }

  // IGridConditions
  ResultStatus create(const GridOptions& options, int64& id) override;
  ResultStatus change(int64 id, const GridOptions& options) override;
  ResultStatus pause(int64 id) override;
  ResultStatus resume(int64 id) override;
  ResultStatus stop(int64 id) override;
  ResultStatus remove(int64 id) override;
  ResultStatus find(int64 id, GridState& state) const override;
  std::vector<GridState> all() const override;
  void prepare() override;

  // The service loop's thread, with no lock held.
  void beginRun();
  void rewind();
  /// Codes whose records are to be fed to the exchange from now on; each is given once.
  std::vector<int64> takeNewCodes();
  /// Whether a grid works the code.
  bool isWatched(int64 codeId) const { return watched_.contains(codeId); }
  void onRecord(int64 codeId);
  bool anyWaiting() const { return isWaiting_.load(); }
  /// Whether there was ever anything to do: else `takeNewCodes` and `serve` have nothing either.
  bool isInUse() const { return isInUse_.load(); }
  /// Sends what the grids want sent or, if there is nothing of that kind and `isQuiet`, tells the
  /// details of what happened. Returns whether there was anything to do.
  bool serve(bool isQuiet);

  // TradeEventSpi
  void onRtnOrder(const Order& order) override;
  void onRtnTrade(const OrderFill& fill) override;
  void onRspStatus(const AccountID& connection, const AccountStatusInfo& info) override;

 private:
  struct Grid {
    GridOptions options;
    GridTerms terms;
    TradingAccountID account;
    std::optional<ICodeID> code;  ///< Empty until it was looked up.
    std::optional<GridWorker> worker;
    bool hasBegun = false;
    bool isRemoved = false;
    std::map<int64, Order> told;       ///< The worker's orders, as they were told last.
    std::map<int64, int64> lastFills;  ///< The last fill that was told of each.
    std::vector<Order> changed;        ///< Not told to subscribers yet.
    std::vector<OrderFill> fills;      ///< Likewise.
    std::vector<std::int32_t> fillCells;
  };

  // Answers what is wrong, with field and value, GBK; empty if all is well.
  std::string read(const GridOptions& options, Grid& grid) const;
  std::string lookUp(Grid& grid) const;
  std::string checkName(const std::string& name) const;
  void addOptions();
  template <typename Act>
  ResultStatus withGrid(int64 id, Act act);
  void noteWaiting();

  // The service loop's thread.
  void beginNew();
  void subscribe(const TradingAccountID& account);
  bool sendAll();
  void send(int64 id, const GridAction& action);
  OrderRequest requestOf(int64 id, const Grid& grid, const GridAction& action) const;
  Grid* gridOf(const SourceId& source);
  void catchUp(const TradingAccountID& account);
  bool isIdle() const;
  bool anyChanges() const;
  std::vector<GridDetail> takeChanges();
  std::vector<GridDetail> picture() const;
  void forgetRemoved();

  const Parts parts_;
  DetailBook details_;
  std::atomic<bool> isWaiting_{false};
  std::atomic<bool> isInUse_{false};
  std::set<int64> watched_;  ///< The service loop's.

  mutable std::mutex mutex_;  ///< Guards what follows.
  std::map<int64, Grid> grids_;
  int64 lastId_ = 0;
  bool isRunning_ = false;
  std::vector<int64> newCodes_;
};

}  // namespace orvane::detail
