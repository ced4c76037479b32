#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <algorithm>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IStrategy.h"
#include "platform/fields/QuoteView.h"
#include "sdk/testing/OrderDesk.h"
#include "sdk/testing/RecordingContext.h"
#include "sdk/testing/StrategyCalls.h"

/// The function that `ORVANE_STRATEGY` makes: link a test with the strategy's source to have it.
extern "C" orvane::IStrategy* createStrategy();

namespace orvane {

/// Plays a strategy in a test, without a platform, a runner or a thread: calls its call-backs one
/// at a time, and keeps what it did in `context()`.
///
///     StrategyHarness harness(createStrategy());
///     const ICodeID code = harness.addSeries("A.X", "1m");
///     harness.addAccount("main");
///     harness.start({{"fast", 5}});
///     harness.play(code, "1m", makeBars({}));
///     harness.stop();
///
/// The call-backs can be called one by one (`StrategyCalls`), with anything; `play` and `advanceTo`
/// bring only what the strategy subscribed. As with a runner, once the strategy ended its run
/// nothing but `onStop` comes any more; unlike there, an exception that it throws reaches the test.
///
/// Orders stay as they were sent until the test says what becomes of them (`accept`, `fill`,
/// `reject`, `finishCancel`), or until `play` fills them at the bars by the few rules of
/// `OrderDesk`. These are there to exercise a strategy, not to measure it: it has no money, no fees
/// and no queue. For results, run it with `orvane run`. For one thread.
class StrategyHarness : public StrategyCalls {
 public:
  /// Takes the strategy over.
  explicit StrategyHarness(IStrategy* strategy) : StrategyHarness(own(strategy)) {}
  /// The same of one that somebody owns.
  explicit StrategyHarness(std::unique_ptr<IStrategy> strategy)
      : StrategyCalls(std::move(strategy)), desk_(context()) {}

  // What the strategy is told of the run.

  /// Makes a series known, and offers it to the strategy under the parameter "data" as a host does:
  /// bars of a frequency, or live quotes where that is empty. The code is a text such as
  /// "IF2101.CFFEX", UTF-8.
  ICodeID addSeries(const std::string& code, const std::string& frequency,
                    const ICodeProperty& property = {}) {
    QJsonObject series{{"code", QString::fromStdString(code)},
                       {"kind", frequency.empty() ? "ticks" : "bars"}};
    if (!frequency.empty()) series["frequency"] = QString::fromStdString(frequency);
    data_.append(series);
    return context().addCode(code, property);
  }
  /// Makes an account known, and gives it to the strategy under the parameter "account".
  TradingAccountID addAccount(const std::string& name) {
    account_ = QString::fromStdString(name);
    return context().addAccount(name);
  }

  /// Calls `onStart` with these parameters and what was added; what they say themselves of "data"
  /// and "account" goes before it. Answers whether the run goes on.
  bool start(QJsonObject params = {}) {
    if (!data_.isEmpty() && !params.contains(QLatin1String("data"))) params["data"] = data_;
    if (!account_.isEmpty() && !params.contains(QLatin1String("account")))
      params["account"] = account_;
    return StrategyCalls::start(params);
  }

  // Data and time.

  /// Ends the history of a series with these bars, which may be none. `play` does it with none
  /// where it was not done.
  void history(const ICodeID& code, const std::string& frequency, const std::vector<IKLine>& bars) {
    begun_.push_back({code.id, frequency});
    barSeries(code, frequency, bars, {}, kEndOfHistory);
  }

  /// Plays live bars, oldest first. For each one the time moves on to its end, which fires timers;
  /// then orders of its code meet it (unless `setFillsAtBars(false)`), then the strategy gets it.
  /// Answers how many bars the strategy was given: 0 if it has no subscription of the series.
  int play(const ICodeID& code, const std::string& frequency, const std::vector<IKLine>& bars) {
    int given = 0;
    if (!context().subscription(code, frequency)) return 0;
    if (std::ranges::find(begun_, Series{code.id, frequency}) == begun_.end())
      history(code, frequency, {});
    for (const IKLine& bar : bars) {
      advanceTo(KLineView(bar).endTime());
      if (fillsAtBars_) meet(code, KLineView(bar));
      if (isOver()) break;
      if (!context().subscription(code, frequency)) continue;
      barSeries(code, frequency, {bar});
      ++given;
    }
    return given;
  }

  /// Plays live quotes; orders are left alone. Answers as `play` does.
  int playQuotes(const std::vector<IDepthMarketData>& quotes) {
    int given = 0;
    for (const IDepthMarketData& each : quotes) {
      advanceTo(QuoteView(each).time());
      context().setQuote(each);
      if (isOver() || !context().subscription(each.code)) continue;
      quote(each);
      ++given;
    }
    return given;
  }

  /// Moves the time on, never back, and fires the timers that are due until then, in the order of
  /// their times. One that fires more often than once is due again an interval later.
  void advanceTo(int64 time) {
    while (!isOver()) {
      RecordedTimer* const next = nextTimer(time);
      if (next == nullptr) break;
      const int id = next->id;
      const int64 due = next->due;
      context().now = std::max(context().now, due);
      next->due += std::max<int64>(next->interval, 1);
      if (next->left > 0 && --next->left == 0) next->isStopped = true;
      timer(id, due);
    }
    context().now = std::max(context().now, time);
  }

  // What becomes of an order. Each throws `std::invalid_argument` if there is no such order, or if
  // it is over.

  /// Whether orders meet the bars that are played, which they do from the start.
  void setFillsAtBars(bool fillsAtBars) { fillsAtBars_ = fillsAtBars; }

  /// The exchange took it.
  void accept(int64 orderId) { tell(desk_.move(orderId, order::Status::Working)); }
  /// It is filled, whole or in part; a volume below 0 means what is left. The position moves with
  /// it. `onOrder` comes first, then `onFill`, as on the platform.
  void fill(int64 orderId, double price, double volume = -1) {
    const OrderFill filled = desk_.fill(orderId, price, volume);
    order(*context().order(orderId));
    StrategyCalls::fill(filled);
  }
  /// The exchange refuses it, with a text (UTF-8) and a code.
  void reject(int64 orderId, const std::string& text, int code = -1) {
    tell(desk_.move(orderId, order::Status::Rejected, gbk(text), code));
  }
  /// It is cancelled, whether the strategy asked for it or not.
  void finishCancel(int64 orderId) { tell(desk_.move(orderId, order::Status::Cancelled)); }

 private:
  using Series = std::pair<int64, std::string>;

  static std::unique_ptr<IStrategy> own(IStrategy* strategy) {
    if (strategy == nullptr) throw std::invalid_argument("no strategy to test");
    return std::unique_ptr<IStrategy>(strategy);
  }

  void tell(const Order& changed) { order(changed); }

  RecordedTimer* nextTimer(int64 time) {
    RecordedTimer* next = nullptr;
    for (RecordedTimer& each : context().timers)
      if (!each.isStopped && each.due <= time && (next == nullptr || each.due < next->due))
        next = &each;
    return next;
  }

  void meet(const ICodeID& code, const KLineView& bar) {
    for (const int64 id : context().openOrders()) {
      const Order& waiting = *context().order(id);
      if (isOver() || waiting.code != code || OrderView(waiting).isFinal()) continue;
      if (OrderView(waiting).status() == order::Status::CancelPending) {
        finishCancel(id);
      } else if (const std::string refusal = desk_.refusalOf(waiting); !refusal.empty()) {
        reject(id, refusal, status::kNoPosition);
      } else if (const auto price = OrderDesk::priceAt(OrderView(waiting), bar)) {
        fill(id, *price);
      } else if (OrderView(waiting).status() == order::Status::Sent) {
        accept(id);
      }
    }
  }

  OrderDesk desk_;
  QJsonArray data_;
  QString account_;
  std::vector<Series> begun_;  ///< Whose history is over.
  bool fillsAtBars_ = true;
};

}  // namespace orvane
