#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "EventStrategy/EventTypes.h"
#include "tests/EventStrategy/model/TradeLines.h"
#include "tests/EventStrategy/model/TradeWorld.h"

namespace orvane::support {

/// What a trade source promises. It keeps no marks: what it wants of an account follows from the
/// codes, the create sources and the orders placed, at any moment anew.
class TradeModel {
 public:
  using Lines = std::vector<std::string>;
  using Infos = std::map<std::string, CreateSourceTradeInfo>;

  /// A new run: nothing is subscribed, nothing was seen.
  void begin(const Infos& infos, const std::set<int64>& codes) {
    const bool listens = listens_;
    *this = TradeModel();
    listens_ = listens;
    infos_ = infos;
    codes_ = codes;
  }
  void setListens(bool listens) { listens_ = listens; }
  void setQuick(bool quick) { quick_ = quick; }
  void setCodes(const std::set<int64>& codes) { codes_ = codes; }
  void addSource(const std::string& to, const std::string& name) {
    if (infos_.contains(to)) infos_[to].subCreateSource.insert(name);
  }
  void addIds(const std::string& to, int64 ids) {
    if (infos_.contains(to)) infos_[to].subCreateId |= ids;
  }
  /// `failing` is the event type whose query fails, 0 for none.
  Lines subscribe(const TradeWorld::Account& account, int64 failing) {
    const int key = account.id.accountKey;
    if (subs_.contains(key)) return {};
    subs_[key].quick = quick_;
    return replay(account, failing);
  }
  void unsubscribe(int account) { subs_.erase(account); }
  void orderPlaced(int account, int64 code, const std::string& source) {
    if (!subs_.contains(account) || !infos_.contains(source)) return;
    subs_[account].ordered[source].insert(code);
  }

  bool isSubscribed(int account) const { return subs_.contains(account); }
  bool isQuick(int account) const { return subs_.at(account).quick; }
  bool hadSnapshot(int account) const { return subs_.at(account).hadSnapshot; }
  bool listens() const { return listens_; }

  // What it wants, by account.

  bool wants(const Order& order) const {
    return wantsOf(EventTypeOrder, order.account, order.code, order.source);
  }
  bool wants(const OrderFill& fill) const {
    return wantsOf(EventTypeFill, fill.account, fill.code, fill.source);
  }
  bool wants(const Position& position) const {
    const int account = position.account.accountKey;
    return (mask() & EventTypePosition) != 0 && subs_.contains(account) &&
           positionCodes(account).contains(position.code.id);
  }
  bool wants(const SourcePosition& position) const {
    return subs_.contains(position.account.accountKey) &&
           wantsByCode(EventTypeStrategyPosition, position.account.accountKey, position.code.id,
                       position.createSource);
  }

  /// All that stands at the service, in the words of `HeldSubscriptions`.
  std::set<std::string> standing() const {
    std::set<std::string> all;
    for (const auto& [key, sub] : subs_) {
      const std::string account = " " + std::to_string(key);
      all.insert("Status" + account);
      if ((mask() & EventTypeCapital) != 0) all.insert("Capital" + account);
      if ((mask() & EventTypePosition) != 0)
        for (const int64 code : positionCodes(key))
          all.insert("Position" + account + " " + std::to_string(code));
      for (const auto& [source, info] : infos_)
        for (const int64 code : codesOf(key, source))
          for (const auto& [type, kind] : kKindsByCode)
            if ((info.override & type) != 0)
              all.insert(kind + source + account + " " + std::to_string(code));
      for (const auto& [type, kind] : kKinds) {
        for (const std::string& name : otherSources(type))
          all.insert(kind + "BySourceName " + name + account);
        for (int bit = 1; bit <= 128; bit *= 2)
          if ((ids(type) & bit) != 0)
            all.insert(kind + "ByEventSourceId " + std::to_string(bit) + account);
      }
    }
    return all;
  }

  // What it delivers.

  Lines live(const Order& order) {
    if (!listens_) return {};
    if (isLast(order)) finished_.insert(order.id);
    return {lineOf(order)};
  }
  Lines live(const OrderFill& fill) {
    if (!listens_) return {};
    fills_.insert(nameOf(fill));
    return {lineOf(fill)};
  }
  template <typename Record>
  Lines live(const Record& record) const {
    return listens_ ? Lines{lineOf(record)} : Lines();
  }

  /// A status of some accounts: first what it brings back, then the status itself.
  Lines status(const AccountStatusInfo& info, const TradeWorld& world, int64 failing) {
    Lines lines;
    if (info.statusCode == 16)
      for (const TradingAccountID& id : info.accounts)
        if (subs_.contains(id.accountKey))
          append(lines, replay(world.accounts.at(id.accountKey), failing));
    if (listens_ && (mask() & EventTypeAccountStatus) != 0) lines.push_back(lineOf(info));
    return lines;
  }

 private:
  struct Subscribed {
    bool quick = true;
    bool hadSnapshot = false;
    std::map<std::string, std::set<int64>> ordered;  ///< Codes, by the source that ordered there.
  };
  inline static const std::map<int64, std::string> kKinds = {{EventTypeOrder, "Order"},
                                                             {EventTypeFill, "Fill"}};
  inline static const std::map<int64, std::string> kKindsByCode = {
      {EventTypeOrder, "OrderBySourceName "},
      {EventTypeFill, "FillBySourceName "},
      {EventTypeStrategyPosition, "SourcePosition "}};

  int64 mask() const {
    int64 mask = 0;
    for (const auto& [source, info] : infos_) mask |= info.override;
    return mask;
  }
  std::set<std::string> otherSources(int64 type) const {
    std::set<std::string> names;
    for (const auto& [source, info] : infos_)
      if ((info.override & type) != 0) names.merge(std::set(info.subCreateSource));
    return names;
  }
  int64 ids(int64 type) const {
    int64 ids = 0;
    for (const auto& [source, info] : infos_)
      if ((info.override & type) != 0) ids |= info.subCreateId & 255;
    return ids;
  }
  std::set<int64> codesOf(int account, const std::string& source) const {
    std::set<int64> codes = codes_;
    const auto& ordered = subs_.at(account).ordered;
    if (const auto it = ordered.find(source); it != ordered.end())
      codes.insert(it->second.begin(), it->second.end());
    return codes;
  }
  std::set<int64> positionCodes(int account) const {
    std::set<int64> codes = codes_;
    for (const auto& [source, ordered] : subs_.at(account).ordered)
      codes.insert(ordered.begin(), ordered.end());
    return codes;
  }
  bool wantsByCode(int64 type, int account, int64 code, const std::string& source) const {
    const auto info = infos_.find(source);
    return info != infos_.end() && (info->second.override & type) != 0 &&
           codesOf(account, source).contains(code);
  }
  bool wantsOf(int64 type, const TradingAccountID& account, const ICodeID& code,
               const SourceId& source) const {
    if (!subs_.contains(account.accountKey)) return false;
    return (ids(type) & source.sourceType) != 0 ||
           otherSources(type).contains(source.createSource) ||
           wantsByCode(type, account.accountKey, code.id, source.createSource);
  }

  /// The present state of an account: all of it the first time, but for what is over on a quick
  /// account; later without what is over and was seen.
  Lines replay(const TradeWorld::Account& account, int64 failing) {
    Subscribed& sub = subs_.at(account.id.accountKey);
    const bool fails = (failing & mask()) != 0 || (!account.connected && asks());
    if (!listens_ || fails) return {};
    const bool first = !std::exchange(sub.hadSnapshot, true);
    Lines lines;
    for (const Position& position : account.positions)
      if (wants(position)) lines.push_back(lineOf(position));
    for (const SourcePosition& part : account.parts)
      if (wants(part)) lines.push_back(lineOf(part));
    std::vector<Order> orders(account.orders.begin(), account.orders.end());
    std::vector<OrderFill> fills(account.fills.begin(), account.fills.end());
    if (first) {
      std::ranges::stable_sort(orders, {}, [](const Order& each) {
        return std::tuple(each.updateTime(), each.orderRef);
      });
      std::ranges::stable_sort(fills, {}, [](const OrderFill& each) {
        return std::tuple(each.fillTime(), each.fillText);
      });
    }
    for (const Order& order : orders) {
      const bool over = isLast(order) && (first ? sub.quick : finished_.contains(order.id));
      if (wants(order)) append(lines, over ? remembered(order) : live(order));
    }
    for (const OrderFill& fill : fills) {
      const bool over = first ? sub.quick : fills_.contains(nameOf(fill));
      if (wants(fill)) append(lines, over ? remembered(fill) : live(fill));
    }
    return lines;
  }
  bool asks() const {
    return (mask() &
            (EventTypePosition | EventTypeStrategyPosition | EventTypeOrder | EventTypeFill)) != 0;
  }
  template <typename Record>
  Lines remembered(const Record& record) {
    live(record);
    return {};
  }
  static void append(Lines& to, const Lines& more) {
    to.insert(to.end(), more.begin(), more.end());
  }

  bool listens_ = true;
  bool quick_ = true;
  Infos infos_;
  std::set<int64> codes_;
  std::map<int, Subscribed> subs_;
  std::set<int64> finished_;
  std::set<std::string> fills_;
};

}  // namespace orvane::support
