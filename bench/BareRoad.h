#pragma once

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

#include "platform/fields/OrderView.h"
#include "platform/fields/QuoteView.h"
#include "platform/trade/ChunkedList.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane::bench {

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

/// Looks at each record, and does no more.
class Counting : public Receiver {
 public:
  void take(const IDepthMarketData& quote) override { see(quote.block1[quote::Time]); }
  void take(const std::vector<IKLine>& bars) override { see(bars.front().words[0]); }
  void take(const Order& order) override { see(order.id); }
  void take(const OrderFill& fill) override { see(fill.id); }
  void take(const Position& position) override { see(position.block1[0]); }
  void take(const SourcePosition& position) override { see(position.block1[0]); }
  void take(const TradingAccount& capital) override { see(capital.block1[0]); }

 private:
  void see(Word value) { benchmark::DoNotOptimize(sum_ += value); }

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
  explicit BareRoad(std::unique_ptr<Receiver> receiver) : receiver_(std::move(receiver)) {}

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
  const std::unique_ptr<Receiver> receiver_;
};

/// What an order and its fill are to a service and a runner: the strategy's request, the order that
/// is made of it, the copy that it is answered with, those that whoever asks later gets, and the
/// six records that tell of it, each on the runner's way. No book is kept and no price is compared.
class BareTrade {
 public:
  explicit BareTrade(BareRoad& road) : road_(road) {
    // Texts are as long as they are in a run.
    asked_.account.account = "bench";
    asked_.account.text1 = "PAPER";
    asked_.code.code = "BENCH";
    asked_.source.createSource = "bench0";
    order_.pair.first = order_.orderRef = fill_.pair.first = fill_.orderRef = "1000000001";
    fill_.fillText = "100000000100001";
    fill_.account = position_.account = part_.account = capital_.account = asked_.account;
    fill_.code = position_.code = part_.code = asked_.code;
    fill_.source = asked_.source;
    part_.createSource = asked_.source.createSource;
  }

  void pass() {
    const OrderRequest request = asked_;
    Order& sent = orders_.emplace_back(order_);
    sent.id = static_cast<int64>(orders_.size());
    sent.account = request.account;
    sent.code = request.code;
    sent.source = request.source;
    std::list<Order> answer;
    answer.push_back(sent);
    for (const auto status : {order::Status::Working, order::Status::Filled}) {
      sent.status() = static_cast<std::int32_t>(status);
      road_.pass(sent);
    }
    road_.pass(fills_.emplace_back(fill_));
    road_.pass(position_);
    road_.pass(part_);
    road_.pass(capital_);
  }
  std::size_t count() const { return orders_.size(); }

 private:
  BareRoad& road_;
  OrderRequest asked_;
  Order order_;
  OrderFill fill_;
  Position position_;
  SourcePosition part_;
  TradingAccount capital_;
  ChunkedList<Order> orders_;
  ChunkedList<OrderFill> fills_;
};

}  // namespace orvane::bench
