#pragma once

#include <map>
#include <string>

#include "host/ActionKind.h"
#include "host/CallKind.h"
#include "host/Digest.h"
#include "shared/AccountRecords.h"
#include "shared/DictionaryRecords.h"
#include "shared/EnvItem.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

/// Writes the call-backs of one run into a digest, in the canonical form of docs/report.md. Numbers
/// that are unique in the process (ids of requests, timers, orders and fills, keys of accounts)
/// depend on what other runners do, so they are written as the order in which this run first
/// showed them.
class CallEncoder {
 public:
  explicit CallEncoder(Digest& out) : out_(out) {}

  void begin(CallKind kind) { out_.put(static_cast<std::int32_t>(kind)); }
  void begin(ActionKind kind) { out_.put(static_cast<std::int32_t>(kind)); }
  /// Marks that the call-back just written ended with an exception.
  void threw(const std::string& what) {
    out_.put(std::int32_t{-1});
    out_.put(what);
  }

  void requestId(int id) { out_.put(ordinal(requestIds_, id)); }
  void timerId(int id) { out_.put(ordinal(timerIds_, id)); }
  void orderId(int64 id) { out_.put(ordinal(orderIds_, id)); }
  void value(std::int32_t number) { out_.put(number); }
  void value(int64 number) { out_.put(number); }
  void value(const std::string& text) { out_.put(text); }

  void value(const ICodeID& code);
  void value(const ResultStatus& status);
  void value(const IKLine& bar) { out_.put(bar.words); }
  void value(const IDepthMarketData& quote);
  void value(const KLineProgress& progress);
  void value(const TradingAccountID& account);
  void value(const TradingAccount& capital);
  void value(const SourceId& source);
  void value(const OrderLeg& leg);
  void value(const Order& order);
  void value(const OrderRequest& request);
  void value(const OrderFill& fill);
  void value(const Position& position);
  void value(const SourcePosition& position);
  void value(const Record& record);
  void value(const EnvItem& item);

  /// A vector or list: its length, then its elements.
  template <typename List>
  void values(const List& list) {
    out_.put(static_cast<std::uint64_t>(list.size()));
    for (const auto& element : list) value(element);
  }

 private:
  template <typename Id>
  static std::int32_t ordinal(std::map<Id, std::int32_t>& seen, const Id& id) {
    return seen.try_emplace(id, static_cast<std::int32_t>(seen.size())).first->second;
  }

  Digest& out_;
  /// A text that holds the order's own number stands for it; any other one is written.
  void reference(const std::string& text, int64 orderId);

  std::map<int, std::int32_t> requestIds_, timerIds_;
  std::map<std::int32_t, std::int32_t> accountKeys_;
  std::map<int64, std::int32_t> orderIds_, fillIds_;
};

}  // namespace orvane
