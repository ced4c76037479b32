#pragma once

#include <map>

#include "platform/fields/CapitalView.h"
#include "platform/fields/FillView.h"
#include "platform/fields/OrderView.h"
#include "platform/fields/PositionView.h"
#include "services/Common/ITradeService.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {

/// Options of a playback with the given accounts, and a create source "S".
inline PlatformOptions tradeOptions(const std::vector<std::string>& accounts = {"A1"}) {
  PlatformOptions options;
  for (const std::string& name : accounts) options.trade.accounts.push_back({name, "CNY", "", 1});
  options.trade.sources = {"S"};
  return options;
}

inline ITradeService& tradeOf(InstalledPlatform& platform) {
  return *platform->router()->tradeService();
}

inline OrderRequest makeRequest(const TradingAccountID& account, const ICodeID& code,
                                order::Direction direction, double volume = 1,
                                order::Offset offset = order::Offset::Open,
                                const std::string& source = "S") {
  OrderRequest request;
  request.account = account;
  request.code = code;
  request.source = {536870912, source, ""};
  OrderWriter writer(request);
  writer.setType(order::Type::Market);
  writer.setDirection(direction);
  writer.setOffset(offset);
  writer.setVolume(volume);
  return request;
}

inline OrderRequest makeLimit(const TradingAccountID& account, const ICodeID& code,
                              order::Direction direction, double price, double volume = 1) {
  OrderRequest request = makeRequest(account, code, direction, volume);
  OrderWriter writer(request);
  writer.setType(order::Type::Limit);
  writer.setTimeInForce(order::TimeInForce::UntilCancelled);
  writer.setLimitPrice(price);
  return request;
}

/// A number without needless zeros.
inline std::string number(double value) {
  std::string text = std::to_string(value);
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text;
}

inline std::string lineOf(const Order& order) {
  static constexpr const char* kNames[] = {"sent",          "working",   "partly",   "filled",
                                           "cancelPending", "cancelled", "rejected", "expired"};
  return "order " + std::to_string(order.id) + " " + kNames[order.status()];
}

inline std::string lineOf(const OrderFill& fill) {
  const FillView view(fill);
  return "fill " + std::to_string(view.orderId()) + " " + (view.isBuy() ? "buy " : "sell ") +
         number(view.volume()) + "@" + number(view.price());
}

inline std::string lineOf(const Position& position) {
  const PositionView view(position);
  return "position " + position.code.code + " " + number(view.longSide().volume()) + "/" +
         number(view.shortSide().volume());
}

/// Records every call-back of trade and of bars as a line of text, and can act on them at once.
class TradeRecorder : public TradeEventSpi, public QuoteSpi {
 public:
  /// Whether some thread is inside a call of a service; call-backs must not come then.
  static bool& insideCall() {
    static thread_local bool inside = false;
    return inside;
  }

  void onRtnOrder(const Order& order) override {
    {
      const std::lock_guard lock(mutex_);
      orders_.push_back(order);
    }
    add(lineOf(order));
  }
  void onRtnTrade(const OrderFill& fill) override {
    {
      const std::lock_guard lock(mutex_);
      fills_.push_back(fill);
    }
    add(lineOf(fill));
  }
  void onRtnPosition(const Position& position) override { add(lineOf(position)); }
  void onRtnSourcePosition(const SourcePosition& position) override {
    add("source " + position.createSource + " " + lineOf(position));
  }
  void onRtnCapital(const TradingAccount& capital) override {
    add("capital " + capital.account.account);
  }
  void onRspStatus(const AccountID& account, const AccountStatusInfo& info) override {
    add("status " + account.text3 + " " + std::to_string(info.statusCode));
  }
  void onKLine(int, const std::vector<IKLine>& bars, const ResultStatus&, int flags) override {
    for (const IKLine& bar : bars)
      if (flags == 0) add("bar " + RecordingSpi::relative(KLineView(bar).endTime()));
  }
  void onTick(int, const std::vector<IDepthMarketData>& ticks, const ResultStatus&,
              int flags) override {
    for (const IDepthMarketData& tick : ticks)
      if (flags == 0) add("tick " + RecordingSpi::relative(QuoteView(tick).time()));
  }

  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  /// The lines that begin with one of the words.
  std::vector<std::string> linesOf(const std::vector<std::string>& words) const {
    std::vector<std::string> found;
    for (const std::string& line : lines()) {
      const std::string rest = line.substr(line.find(' ') + 1);
      for (const std::string& word : words)
        if (rest.rfind(word, 0) == 0) found.push_back(line);
    }
    return found;
  }
  std::vector<Order> orders() const {
    const std::lock_guard lock(mutex_);
    return orders_;
  }
  std::vector<OrderFill> fills() const {
    const std::lock_guard lock(mutex_);
    return fills_;
  }
  /// Called on the service's thread after each line, which has no time in front.
  std::function<void(const std::string& line)> onLine;

 protected:
  virtual void add(const std::string& line) {
    EXPECT_FALSE(insideCall()) << "called back inside a call: " << line;
    note(line);
    if (onLine) onLine(line);
  }
  void note(const std::string& line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back("@" + RecordingSpi::relative(Timestamp::now(1).toUtcMsEponch()) + " " + line);
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  std::vector<Order> orders_;
  std::vector<OrderFill> fills_;
};

/// Stands in for a runner that trades: takes call-backs into a list, as a runner's pump does, and
/// handles each on the pool. What it finds in one batch must not depend on the threads.
class TradeRunner final : public TradeRecorder, public std::enable_shared_from_this<TradeRunner> {
 public:
  using Handler = std::function<void(TradeRunner& self, const std::string& event)>;
  explicit TradeRunner(Handler handler) : handler_(std::move(handler)) {}

  void push(const std::string& event) {
    const std::lock_guard lock(pumpMutex_);
    pending_.push_back(event);
    if (counter_ == nullptr) counter_ = std::make_unique<NotifyRefCounter>();
    schedule();
  }

 protected:
  void add(const std::string& line) override {
    EXPECT_FALSE(insideCall()) << "called back inside a call: " << line;
    push(line);
  }

 private:
  void schedule() {
    if (running_ || pending_.empty()) return;
    running_ = true;
    sharedPool().addTask([self = shared_from_this()] { self->work(); });
  }
  void work() {
    std::vector<std::string> batch;
    std::unique_ptr<NotifyRefCounter> counter;
    {
      const std::lock_guard lock(pumpMutex_);
      batch.swap(pending_);
      counter.swap(counter_);
    }
    // More than one at once would mean that no quiet lay between two call-backs.
    note("batch of " + std::to_string(batch.size()));
    for (const std::string& event : batch) {
      note(event);
      if (handler_) handler_(*this, event);
    }
    counter.reset();
    const std::lock_guard lock(pumpMutex_);
    running_ = false;
    schedule();
  }

  const Handler handler_;
  std::mutex pumpMutex_;
  std::vector<std::string> pending_;
  std::unique_ptr<NotifyRefCounter> counter_;
  bool running_ = false;
};

/// A platform with accounts, one code "A" and its one minute bars from `kMonday` on, and the trade
/// service; bar i has the prices i + 1, ends at minute i + 1, and has a volume of 1,000.
class TradePlatform {
 public:
  explicit TradePlatform(PlatformOptions options = tradeOptions(), int bars = 10)
      : platform_(std::move(options)),
        code(platform_.code("A")),
        accounts(service().tradingAccounts()) {
    if (bars > 0) platform_->addBars(bars_(code, bars));
  }
  static BarSeries bars_(const ICodeID& code, int count) {
    BarSeries series = makeBars(code, kMonday, kMinute, count);
    for (IKLine& bar : series.bars) KLineWriter(bar).set(kline::Volume, 1000);
    return series;
  }

  EmbeddedPlatform* operator->() { return &*platform_; }
  InstalledPlatform& installed() { return platform_; }
  ITradeService& service() { return tradeOf(platform_); }
  const TradingAccountID& account(std::size_t at = 0) const { return accounts.at(at); }

  /// Sends an order and gives its id; fails the test if it is refused.
  int64 send(const OrderRequest& request) {
    std::list<Order> orders;
    TradeRecorder::insideCall() = true;
    const ResultStatus status = service().sendOrder(request, orders);
    TradeRecorder::insideCall() = false;
    EXPECT_EQ(status.code, 0) << status.message;
    return orders.empty() ? 0 : orders.front().id;
  }
  ResultStatus cancel(int64 id, const std::string& source = "S") {
    Order order;
    order.id = id;
    order.source.createSource = source;
    return service().cancelOrder(order);
  }
  int64 buy(double volume = 1) {
    return send(makeRequest(account(), code, order::Direction::Buy, volume));
  }
  void subscribeAll(const std::shared_ptr<TradeEventSpi>& spi, std::size_t at = 0) {
    TradeRecorder::insideCall() = true;
    service().subscribeStatus(spi, account(at));
    service().subscribeCapital(spi, account(at));
    service().subscribePosition(spi, account(at), code);
    service().subscribeSourcePosition(spi, "S", account(at), code);
    service().subscribeOrderBySourceName(spi, "S", account(at), code);
    service().subscribeFillBySourceName(spi, "S", account(at), code);
    TradeRecorder::insideCall() = false;
  }
  void subscribeBars(const std::shared_ptr<QuoteSpi>& spi, int id = 1) {
    platform_.quotes().subscribeBars(makeQuery(code), kOneMinute, spi, id);
  }

 private:
  InstalledPlatform platform_;

 public:
  const ICodeID code;
  const std::vector<TradingAccountID> accounts;
};

}  // namespace orvane::testing
