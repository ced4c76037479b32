#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/EventTypes.h"
#include "EventStrategy/TradeSrc.h"
#include "shared/TextForms.h"
#include "tests/EventStrategy/LibraryTest.h"

namespace orvane::support {

/// Keeps what a trade source delivers, in order, as lines such as "order 7". A hook runs before a
/// line is kept, with no lock held here; if it throws, the delivery fails and nothing is kept.
class RecordingTradeNotify final : public EventTradeNotify {
 public:
  void onRtnPosition(const Position& position) override {
    add("position " + std::to_string(position.code.id));
  }
  void onRtnStrategyPosition(const SourcePosition& position) override {
    add("sourcePosition " + std::to_string(position.code.id));
  }
  void onRtnOrder(const Order& order) override { add("order " + std::to_string(order.id)); }
  void onRtnTrade(const OrderFill& fill) override { add("fill " + fill.fillText); }
  void onRspStatus(const AccountID&, const AccountStatusInfo& info) override {
    add("status " + std::to_string(info.statusCode));
  }
  void onRtnCapital(const TradingAccount&) override { add("capital"); }

  std::function<void(const std::string&)> onLine;  ///< Set it before other threads deliver.

  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  void add(std::string line) {
    if (onLine) onLine(line);
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// A trade source with the usual configuration: create source "own" that wants everything, and
/// the code 1.
class TradeSrcTest : public LibraryTest {
 protected:
  static constexpr int64 kEverything = EventTypeAccountStatus | EventTypePosition | EventTypeOrder |
                                       EventTypeFill | EventTypeStrategyPosition | EventTypeCapital;

  TradeSrcTest() {
    source->setName("stg");
    account = accountOf(5, "acc");
    configure(kEverything);
    source->setRelatedCodeId({codeOf(1, "A")});
    source->setNotify(&notify);
    platform.calls.clear();
    logs.clear();
  }
  ~TradeSrcTest() override {
    source->setNotify(nullptr);
    platform.forgetSpis();
  }

  void configure(int64 wanted) {
    CreateSourceTradeInfo info;
    info.override = wanted;
    source->setCreateSourceTradeInfo({{"own", info}});
  }

  static TradingAccountID accountOf(int key, const std::string& text) {
    TradingAccountID result;
    result.accountKey = key;
    result.account = text;
    return result;
  }

  /// As the log writes it, in UTF-8.
  std::string accountLog() const { return utf8FromGbk(accountText(account)); }

  Order orderOf(int64 id, int status = 0, int64 codeId = 1, const std::string& from = "own",
                int64 time = 0) const {
    Order order;
    order.id = id;
    order.account = account;
    order.code = codeOf(codeId);
    order.source.createSource = from;
    order.status() = status;
    order.updateTime() = time;
    order.orderRef = "r" + std::to_string(id);
    return order;
  }

  OrderFill fillOf(const std::string& text, int64 codeId = 1, const std::string& from = "own",
                   int64 time = 0) const {
    OrderFill fill;
    fill.account = account;
    fill.code = codeOf(codeId);
    fill.source.createSource = from;
    fill.fillText = text;
    fill.fillTime() = time;
    return fill;
  }

  Position positionOf(int64 codeId) const {
    Position position;
    position.account = account;
    position.code = codeOf(codeId);
    return position;
  }

  SourcePosition sourcePositionOf(int64 codeId, const std::string& from = "own") const {
    SourcePosition position;
    position.account = account;
    position.code = codeOf(codeId);
    position.createSource = from;
    return position;
  }

  /// The service tells a status of the account.
  void tellStatus(int code) { tellStatus(code, {account}); }

  void tellStatus(int code, const std::vector<TradingAccountID>& accounts) {
    AccountStatusInfo info;
    info.statusCode = code;
    info.accounts = accounts;
    static_cast<TradeMsgSpi&>(*source).onRspStatus({}, info);
  }

  bool eventLogged(const std::string& text) { return loggedOnce("Event", "DEBUG", "stg" + text); }

  /// The messages of the trade source, without level and logger, in order.
  std::vector<std::string> eventLines() {
    std::vector<std::string> lines = logs.messages("Event");
    const std::size_t prefix = LogCapture::message("Event", "DEBUG", "stg").size();
    for (std::string& line : lines) line.erase(0, prefix);
    return lines;
  }

  /// The account's entry in the source's table.
  TradeSrcSubInfo marks() { return marks(account); }
  TradeSrcSubInfo marks(const TradingAccountID& of) { return TestAccess::subInfos(*source).at(of); }

  std::vector<std::string> tradeCalls() { return platform.calls.entries("trade."); }

  std::shared_ptr<TradeSrc> source = std::make_shared<TradeSrc>();
  RecordingTradeNotify notify;
  TradingAccountID account;
};

}  // namespace orvane::support
