// The platform's own side of a playback: the feed, the delivery and the wait for quiet, with a
// receiver that handles each call-back on the pool, as a runner does, and does nothing more.

#include <benchmark/benchmark.h>

#include <memory>
#include <mutex>

#include "platform/EmbeddedPlatform.h"
#include "services/Common/IRealtimeQuoteService.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/NotifyRefCounter.h"
#include "services/Common/ThreadPoolBase.h"

namespace orvane {
namespace {

constexpr int64 kMinute = 60'000;
constexpr int64 kStart = 1'609'718'400'000;

ThreadPoolBase& pool() {
  static ThreadPoolBase* const made = [] {
    ThreadPoolBase* fresh = ThreadPoolBase::create();
    ThreadPoolConfig config;
    config.threadCount = 3;
    fresh->configure(config);
    fresh->start();
    return fresh;
  }();
  return *made;
}

class Receiver final : public QuoteSpi, public std::enable_shared_from_this<Receiver> {
 public:
  explicit Receiver(bool onPool) : onPool_(onPool) {}
  std::size_t records = 0;

  void onKLine(int, const std::vector<IKLine>& bars, const ResultStatus&, int) override {
    take(bars.size());
  }
  void onQuote(const IDepthMarketData&) override { take(1); }

 private:
  void take(std::size_t count) {
    if (!onPool_) {
      records += count;
      return;
    }
    const std::lock_guard lock(mutex_);
    if (counter_ == nullptr) counter_ = std::make_unique<NotifyRefCounter>();
    pool().addTask([self = weak_from_this(), count] {
      const auto receiver = self.lock();
      std::unique_ptr<NotifyRefCounter> counter;
      {
        const std::lock_guard inner(receiver->mutex_);
        counter.swap(receiver->counter_);
        receiver->records += count;
      }
    });
  }

  const bool onPool_;
  std::mutex mutex_;
  std::unique_ptr<NotifyRefCounter> counter_;
};

BarSeries makeBars(const ICodeID& code, int count) {
  BarSeries series;
  series.code = code;
  series.periodMs = kMinute;
  series.timeZone = "Asia/Shanghai";
  series.origin = "bench";
  series.bars.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    KLineWriter writer(series.bars[static_cast<std::size_t>(i)]);
    writer.setTimes(kStart + i * kMinute, kStart + (i + 1) * kMinute);
    for (const auto at : {kline::Open, kline::High, kline::Low, kline::Close, kline::Volume})
      writer.set(at, i % 100 + 1);
  }
  return series;
}

enum Way { Direct, OnPool, FiveMinutes, Quotes };

void playback(benchmark::State& state, Way way, int receivers) {
  constexpr int kRecords = 300'000;
  for (auto _ : state) {
    state.PauseTiming();
    auto platform = std::make_unique<EmbeddedPlatform>();
    installPlatform(platform.get());
    pool();
    Instrument instrument;
    instrument.code = "A";
    const ICodeID code = platform->addInstrument(instrument);
    if (way == Quotes) {
      TickSeries ticks;
      ticks.code = code;
      ticks.columns = {{TickColumn::LastPrice}, {TickColumn::Volume},   {TickColumn::BidPrice},
                       {TickColumn::BidSize},   {TickColumn::AskPrice}, {TickColumn::AskSize}};
      for (int i = 0; i < kRecords; ++i) {
        ticks.times.push_back(kStart + i * 500);
        ticks.tradingDays.push_back(20210104);
        for (int c = 0; c < 6; ++c) ticks.cells.push_back(i % 100 + c + 1);
      }
      platform->addTicks(std::move(ticks));
    } else {
      platform->addBars(makeBars(code, kRecords));
    }
    IRealtimeQuoteService& quotes = *platform->router()->quoteHub()->realtimeQuoteService();
    std::vector<std::shared_ptr<Receiver>> all;
    for (int i = 0; i < receivers; ++i) {
      all.push_back(std::make_shared<Receiver>(way != Direct));
      IMDQuery query;
      query.code = code;
      query.beginTime = query.endTime = kUnsetTime;
      query.count = kNoLimit;
      if (way == Quotes)
        quotes.subscribeQuote(code, all.back(), 0);
      else
        quotes.subscribeBars(query, {3, way == FiveMinutes ? 5 : 1}, all.back(), i + 1);
    }
    state.ResumeTiming();
    platform->run();
    state.PauseTiming();
    const std::size_t expected = way == FiveMinutes ? kRecords / 5 : kRecords;
    if (all.front()->records != expected) state.SkipWithError("records are missing");
    all.clear();
    platform->drain();
    installPlatform(nullptr);
    platform.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}

#define ORVANE_PLAYBACK(name, way, receivers) \
  BENCHMARK_CAPTURE(playback, name, way, receivers)->UseRealTime()->Unit(benchmark::kMillisecond)

ORVANE_PLAYBACK(barsInline, Direct, 1);
ORVANE_PLAYBACK(barsOneRunner, OnPool, 1);
ORVANE_PLAYBACK(barsEightRunners, OnPool, 8);
ORVANE_PLAYBACK(fiveMinuteBarsOneRunner, FiveMinutes, 1);
ORVANE_PLAYBACK(quotesOneRunner, Quotes, 1);

}  // namespace
}  // namespace orvane
