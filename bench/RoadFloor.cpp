// The least that a record's road in a playback can cost on this machine, and the least that an
// order can: what the library's contract names on it, and nothing else.

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchBars.h"
#include "bench/BenchTicks.h"
#include "platform/fields/OrderView.h"
#include "shared/TradeRecords.h"

namespace orvane {
namespace {

/// A strategy, seen through a virtual call.
class Receiver {
 public:
  virtual ~Receiver() = default;
  virtual void take(const IDepthMarketData& quote) = 0;
  virtual void take(const std::vector<IKLine>& bars) = 0;
  virtual void take(const Order& order) = 0;
  virtual void take(const OrderFill& fill) = 0;
  virtual void take(const Position& position) = 0;
  virtual void take(const SourcePosition& position) = 0;
  virtual void take(const TradingAccount& capital) = 0;
};

class Counting final : public Receiver {
 public:
  void take(const IDepthMarketData& quote) override { add(quote.block1[quote::Time]); }
  void take(const std::vector<IKLine>& bars) override { add(bars.front().words[0]); }
  void take(const Order& order) override { add(order.id); }
  void take(const OrderFill& fill) override { add(fill.id); }
  void take(const Position& position) override { add(position.block1[0]); }
  void take(const SourcePosition& position) override { add(position.block1[0]); }
  void take(const TradingAccount& capital) override { add(capital.block1[0]); }

 private:
  void add(Word value) { benchmark::DoNotOptimize(sum_ += value); }

  Word sum_ = 0;
};

/// An event that owns its record.
class OwnedEvent {
 public:
  virtual ~OwnedEvent() = default;
  virtual void deliver(Receiver& to) = 0;
};

template <typename Record>
class Owned final : public OwnedEvent {
 public:
  explicit Owned(const Record& record) : record_(record) {}
  void deliver(Receiver& to) override { to.take(record_); }

 private:
  const Record record_;
};

/// One runner's way of a record, without the tables that are looked into on the way: the source's
/// lock before and after the event's wait, the lock of its way to the runner, the runner's list
/// locked for the push, the swap and the look for more, the turn given up and taken back; a task
/// with a weak reference; counts of what was pushed and what was digested.
class BareRoad : public std::enable_shared_from_this<BareRoad> {
 public:
  template <typename Record>
  void pass(const Record& record) {
    locked(kSource);
    {
      const std::lock_guard notify(lockOf(kNotify));
      const std::lock_guard list(lockOf(kList));
      events_.push_back(std::make_unique<Owned<Record>>(record));
      ++references_;
      ++tasks_;
      if (self_.expired()) self_ = weak_from_this();
      task_ = [weak = std::move(self_)]() mutable {
        if (const auto self = weak.lock()) self->runTask(std::move(weak));
      };
    }
    lockOf(kTurn).unlock();
    std::exchange(task_, nullptr)();
    --tasks_;
    lockOf(kTurn).lock();
  }
  void begin() { lockOf(kTurn).lock(); }
  void end() { lockOf(kTurn).unlock(); }

 private:
  enum Lock { kTurn, kSource, kNotify, kList, kLocks };
  struct alignas(64) Padded {
    std::mutex mutex;
  };

  std::mutex& lockOf(Lock which) { return locks_[which].mutex; }
  void locked(Lock which) { const std::lock_guard lock(lockOf(which)); }
  void runTask(std::weak_ptr<BareRoad> self) {
    std::vector<std::unique_ptr<OwnedEvent>> batch;
    {
      const std::lock_guard list(lockOf(kList));
      batch.swap(events_);
    }
    for (const auto& event : batch) {
      locked(kSource);
      event->deliver(*receiver_);
    }
    batch.clear();
    --references_;
    const std::lock_guard list(lockOf(kList));
    if (events_.empty()) events_.swap(batch);  // Its memory is used again.
    self_ = std::move(self);
  }

  std::array<Padded, kLocks> locks_;
  std::vector<std::unique_ptr<OwnedEvent>> events_;
  std::function<void()> task_;
  std::weak_ptr<BareRoad> self_;  ///< Brought back by the last task.
  std::atomic<int> references_{0}, tasks_{0};
  const std::unique_ptr<Receiver> receiver_ = std::make_unique<Counting>();
};

void roadFloor(benchmark::State& state) {
  const TickSeries series = bench::makeTicks({}, 200'000);
  const auto road = std::make_shared<BareRoad>();
  road->begin();
  IDepthMarketData quote;
  for (auto _ : state)
    for (std::size_t row = 0; row < series.rows(); ++row) {
      series.fill(row, quote);
      road->pass(quote);
    }
  road->end();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(series.rows()));
}
BENCHMARK(roadFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The records of an order that is filled at once, with texts as long as they are in a run.
struct OrderRecords {
  OrderRecords() {
    request.account.account = "bench";
    request.account.text1 = "PAPER";
    request.code.code = "BENCH";
    request.source.createSource = "bench0";
    order.pair.first = order.orderRef = fill.pair.first = fill.orderRef = "1000000001";
    fill.fillText = "100000000100001";
    fill.account = position.account = sourcePosition.account = capital.account = request.account;
    fill.code = position.code = sourcePosition.code = request.code;
    fill.source = request.source;
    sourcePosition.createSource = request.source.createSource;
  }

  OrderRequest request;
  Order order;
  OrderFill fill;
  Position position;
  SourcePosition sourcePosition;
  TradingAccount capital;
};

/// What an order and its fill are to a service and a runner: the strategy's request, the order that
/// is made of it, the copy that it is answered with, those that whoever asks later gets, and the
/// six records that tell of it, each on the runner's way. No book is kept and no price is compared.
void trade(BareRoad& road, OrderRecords& records, std::vector<std::unique_ptr<Order>>& orders,
           std::vector<std::unique_ptr<OrderFill>>& fills) {
  const OrderRequest request = records.request;
  Order& sent = *orders.emplace_back(std::make_unique<Order>(records.order));
  sent.id = static_cast<int64>(orders.size());
  sent.account = request.account;
  sent.code = request.code;
  sent.source = request.source;
  std::list<Order> answer;
  answer.push_back(sent);
  for (const auto status : {order::Status::Working, order::Status::Filled}) {
    sent.status() = static_cast<std::int32_t>(status);
    road.pass(sent);
  }
  road.pass(*fills.emplace_back(std::make_unique<OrderFill>(records.fill)));
  road.pass(records.position);
  road.pass(records.sourcePosition);
  road.pass(records.capital);
}

/// Bars with an order and its fill on each.
void orderFloor(benchmark::State& state) {
  constexpr std::size_t kBars = 100'000;
  const BarSeries series = bench::makeBars({}, kBars);
  const auto road = std::make_shared<BareRoad>();
  OrderRecords records;
  road->begin();
  for (auto _ : state) {
    std::vector<std::unique_ptr<Order>> orders;
    std::vector<std::unique_ptr<OrderFill>> fills;
    for (const IKLine& bar : series.bars) {
      road->pass(std::vector<IKLine>{bar});
      trade(*road, records, orders, fills);
    }
  }
  road->end();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kBars));
}
BENCHMARK(orderFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace orvane
