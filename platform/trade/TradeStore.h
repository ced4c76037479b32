#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/trade/TradeResults.h"
#include "shared/TradeRecords.h"

namespace orvane::detail {

/// All orders and fills of a run, in memory: orders in the order in which they were admitted, in
/// their last state, and fills as they happened. Guarded by its owner.
class TradeStore {
 public:
  /// `notesChanges`: whether `takeChanged` will be asked.
  explicit TradeStore(std::size_t accounts, bool notesChanges = true);

  void addOrder(const Order& order);
  /// Takes the new state of an order that was added: numbers, messages and who last acted on it.
  /// Account, code, source and references stay as they were.
  void updateOrder(const Order& order);
  void addFill(const OrderFill& fill);

  /// Empty without one.
  std::optional<Order> order(int64 id) const;

  /// What one create source sent and dealt on an account, in the order of the account's own lists.
  struct Trades {
    OrderList orders;
    FillList fills;
  };
  /// By create source; those that sent an order or have a fill.
  using BySource = std::map<std::string, Trades>;
  const BySource& sources(std::int32_t account) const { return of(account).sources; }
  /// Moves them all out of it; nothing may be asked of the store until it is cleared.
  BySource takeSources(std::int32_t account) { return std::move(of(account).sources); }

  /// The orders of an account, its open ones, and its fills, that `wanted` lets through: it is
  /// asked with a record of the same rest, and with what the one in question has for itself.
  template <typename Wanted>
  void orders(std::int32_t account, Wanted wanted, std::list<Order>& found) const {
    find(orders_, of(account).orders, wanted, found);
  }
  template <typename Wanted>
  void openOrders(std::int32_t account, Wanted wanted, std::list<Order>& found) const {
    find(orders_, of(account).open, wanted, found);
  }
  template <typename Wanted>
  void fills(std::int32_t account, Wanted wanted, std::list<OrderFill>& found) const {
    find(fills_, of(account).fills, wanted, found);
  }
  /// The fills of one order that was added.
  void fillsOfOrder(int64 id, std::list<OrderFill>& found) const;

  /// Copies of the orders that were added or changed since the last call, in the order in which
  /// they were admitted.
  std::vector<Order> takeChanged();
  std::size_t changedCount() const { return changed_.size(); }
  /// Copies of the fills that were added since the last call.
  std::vector<OrderFill> takeNewFills();
  std::size_t newFillCount() const { return fills_.size() - toldFills_; }

  void clear();

 private:
  struct PerAccount {
    BySource sources;
    std::vector<std::size_t> orders, fills;
    std::set<std::size_t> open;
  };
  const PerAccount& of(std::int32_t account) const {
    return accounts_[static_cast<std::size_t>(account) - 1];
  }
  PerAccount& of(std::int32_t account) { return accounts_[static_cast<std::size_t>(account) - 1]; }

  /// Where an order is, and between which places its fills are, others' among them.
  struct Place {
    std::size_t order = 0;
    std::size_t firstFill = 0;
    std::size_t endOfFills = 0;
  };

  /// Where a record is kept.
  template <typename List>
  struct Kept {
    List* list = nullptr;
    std::size_t at = 0;
    auto record() const { return (*list)[at]; }
  };
  template <typename List, typename Places, typename Wanted, typename Record>
  static void find(const std::vector<Kept<List>>& all, const Places& places, const Wanted& wanted,
                   std::list<Record>& found) {
    for (const std::size_t place : places) {
      const auto& [list, at] = all[place];
      if (wanted(list->restAt(at), std::as_const(*list).partAt(at))) found.push_back((*list)[at]);
    }
  }

  const bool notesChanges_;
  std::vector<Kept<OrderList>> orders_;
  std::vector<Kept<FillList>> fills_;
  std::size_t toldFills_ = 0;
  std::unordered_map<int64, Place> byId_;
  std::vector<PerAccount> accounts_;
  std::set<std::size_t> changed_;
};

}  // namespace orvane::detail
