#pragma once

#include <concurrentqueue/concurrentqueue.h>
#include <oneapi/tbb/concurrent_queue.h>
#include <oneapi/tbb/task_arena.h>

#define ASIO_STANDALONE
#include <asio/post.hpp>
#include <asio/strand.hpp>
#include <asio/thread_pool.hpp>
#include <atomic>
#include <deque>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "EventStrategy/Events.h"

namespace orvane::bench {

/// Takes what a runner's strategy would. One object a context; one call at a time.
class Receiver {
 public:
  virtual ~Receiver() = default;
  virtual void onQuote(const IDepthMarketData& quote) = 0;
};

/// The peers of the pump: each hands records to contexts, one call at a time for each context, in
/// the order in which they were given, on one thread that is not the giver's.
using Receivers = std::vector<std::unique_ptr<Receiver>>;

/// The package's own serial executor over its thread pool.
class AsioStrands {
 public:
  explicit AsioStrands(const Receivers& receivers) {
    for (const auto& receiver : receivers)
      contexts_.push_back({asio::make_strand(pool_.get_executor()), receiver.get()});
  }
  ~AsioStrands() { pool_.join(); }

  void give(std::size_t at, std::unique_ptr<TickEvent> event) {
    Context& context = contexts_[at];
    asio::post(context.strand, [to = context.to, event = std::move(event)]() mutable {
      to->onQuote(event->quote);
      event.reset();
    });
  }

 private:
  struct Context {
    asio::strand<asio::thread_pool::executor_type> strand;
    Receiver* to;
  };
  asio::thread_pool pool_{1};
  std::vector<Context> contexts_;
};

/// A queue for each context and a count of what waits in it: who makes it more than nothing hands
/// the context to the executor, and whoever runs it goes on until it is nothing.
template <typename Queue, typename Executor>
class CountedQueues {
 public:
  explicit CountedQueues(const Receivers& receivers) {
    for (const auto& receiver : receivers) contexts_.emplace_back(receiver.get());
  }
  ~CountedQueues() {  // Not every executor waits for its tasks.
    while (open_.load() != 0) std::this_thread::yield();
  }

  void give(std::size_t at, std::unique_ptr<TickEvent> event) {
    Context& context = contexts_[at];
    context.queue.put(event.release());
    if (context.waiting.fetch_add(1) != 0) return;
    open_.fetch_add(1);
    executor_.run([this, &context] { drain(context); });
  }

 private:
  struct Context {
    explicit Context(Receiver* receiver) : to(receiver) {}
    Queue queue;
    std::atomic<std::int64_t> waiting{0};
    Receiver* to;
  };

  void drain(Context& context) {
    std::int64_t taken = 0;
    TickEvent* event = nullptr;
    while (context.queue.take(event)) {
      const std::unique_ptr<TickEvent> owned(event);
      context.to->onQuote(owned->quote);
      ++taken;
    }
    if (context.waiting.fetch_sub(taken) != taken)
      executor_.run([this, &context] { drain(context); });
    else
      open_.fetch_sub(1);
  }

  std::deque<Context> contexts_;
  std::atomic<std::int64_t> open_{0};  ///< Contexts that the executor has.
  Executor executor_;
};

class TbbQueue {
 public:
  void put(TickEvent* event) { queue_.push(event); }
  bool take(TickEvent*& event) { return queue_.try_pop(event); }

 private:
  oneapi::tbb::concurrent_queue<TickEvent*> queue_;
};

class TbbArena {
 public:
  template <typename Work>
  void run(Work work) {
    arena_.enqueue(std::move(work));
  }

 private:
  oneapi::tbb::task_arena arena_{2, 1};  // One place is the giver's, so one worker.
};

class LockFreeQueue {
 public:
  void put(TickEvent* event) { queue_.enqueue(event); }
  bool take(TickEvent*& event) { return queue_.try_dequeue(event); }

 private:
  moodycamel::ConcurrentQueue<TickEvent*> queue_;
};

class AsioPool {
 public:
  ~AsioPool() { pool_.join(); }
  template <typename Work>
  void run(Work work) {
    asio::post(pool_, std::move(work));
  }

 private:
  asio::thread_pool pool_{1};
};

using TbbQueues = CountedQueues<TbbQueue, TbbArena>;
using LockFreeQueues = CountedQueues<LockFreeQueue, AsioPool>;

}  // namespace orvane::bench
