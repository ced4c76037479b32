#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/EmbeddedPlatform.h"
#include "services/Common/ICodeService.h"
#include "services/Common/IRealtimeQuoteService.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/ITimerNotify.h"
#include "services/Common/NotifyRefCounter.h"
#include "services/Common/ThreadPoolBase.h"
#include "services/Common/Timer.h"
#include "services/Common/Timestamp.h"

namespace orvane::testing {

inline constexpr int64 kMinute = 60'000;
inline constexpr int64 kHour = 60 * kMinute;
inline constexpr int64 kDay = 24 * kHour;
/// 2021-01-04 00:00 UTC, a Monday.
inline constexpr int64 kMonday = 1'609'718'400'000;

inline ThreadPoolBase& sharedPool() {
  static ThreadPoolBase* const pool = [] {
    ThreadPoolBase* made = ThreadPoolBase::create();
    ThreadPoolConfig config;
    config.threadCount = 3;
    made->configure(config);
    made->start();
    return made;
  }();
  return *pool;
}

/// An embedded platform that is installed as long as it lives.
class InstalledPlatform {
 public:
  explicit InstalledPlatform(PlatformOptions options = {}) : platform_(std::move(options)) {
    installPlatform(&platform_);
    sharedPool();
  }
  ~InstalledPlatform() {
    platform_.drain();
    installPlatform(nullptr);
  }
  EmbeddedPlatform* operator->() { return &platform_; }
  EmbeddedPlatform& operator*() { return platform_; }

  ICodeID code(const std::string& text, const std::string& zone = "") {
    Instrument instrument;
    instrument.code = text;
    instrument.market = "X";
    instrument.timeZone = zone;
    return platform_.addInstrument(instrument);
  }
  IRealtimeQuoteService& quotes() {
    return *platform_.router()->quoteHub()->realtimeQuoteService();
  }

 private:
  EmbeddedPlatform platform_;
};

inline IKLine makeBar(int64 begin, int64 end, double open, double high, double low, double close,
                      double volume = 1, int tradingDay = 20210104) {
  IKLine bar;
  KLineWriter writer(bar);
  writer.setTimes(begin, end);
  writer.set(kline::Open, open);
  writer.set(kline::High, high);
  writer.set(kline::Low, low);
  writer.set(kline::Close, close);
  writer.set(kline::Volume, volume);
  writer.set(kline::Turnover, close * volume);
  writer.setDayAndFlags(tradingDay, 0);
  return bar;
}

/// Bars one after another from `begin` on; bar i has the prices i + 1.
inline BarSeries makeBars(const ICodeID& code, int64 begin, int64 period, int count,
                          const std::string& zone = "UTC") {
  BarSeries series;
  series.code = code;
  series.periodMs = period;
  series.timeZone = zone;
  series.origin = "test";
  for (int i = 0; i < count; ++i)
    series.bars.push_back(
        makeBar(begin + i * period, begin + (i + 1) * period, i + 1, i + 1, i + 1, i + 1));
  return series;
}

inline TickSeries makeTicks(const ICodeID& code, const std::vector<int64>& times) {
  TickSeries series;
  series.code = code;
  series.timeZone = "UTC";
  series.origin = "test";
  series.columns = {{TickColumn::LastPrice}, {TickColumn::Volume}};
  for (std::size_t i = 0; i < times.size(); ++i) {
    series.times.push_back(times[i]);
    series.tradingDays.push_back(20210104);
    series.cells.push_back(static_cast<double>(i) + 1);
    series.cells.push_back(10);
  }
  return series;
}

inline IMDQuery makeQuery(const ICodeID& code, int64 begin = kUnsetTime, int64 end = kUnsetTime,
                          int count = kNoLimit) {
  IMDQuery query;
  query.code = code;
  query.beginTime = begin;
  query.endTime = end;
  query.count = count;
  return query;
}

inline constexpr TermPair kOneMinute{3, 1};
inline constexpr TermPair kFiveMinutes{3, 5};
inline constexpr TermPair kOneDay{5, 1};
inline constexpr TermPair kTick{8, 0};

/// Records every call-back as a line of text, and can act on them.
class RecordingSpi : public QuoteSpi {
 public:
  void onQuote(const IDepthMarketData& quote) override {
    add("quote " + relative(QuoteView(quote).time()));
  }
  void onTick(int id, const std::vector<IDepthMarketData>& ticks, const ResultStatus&,
              int flags) override {
    std::string line = "tick#" + std::to_string(id);
    for (const IDepthMarketData& tick : ticks) line += " " + relative(QuoteView(tick).time());
    add(line + end(flags));
  }
  void onKLine(int id, const std::vector<IKLine>& bars, const ResultStatus&, int flags) override {
    std::string line = "bar#" + std::to_string(id);
    for (const IKLine& bar : bars) {
      {
        const std::lock_guard lock(mutex_);
        bars_.push_back(bar);
      }
      line += " " + relative(KLineView(bar).beginTime()) + "-" + relative(KLineView(bar).endTime());
    }
    add(line + end(flags));
  }
  void onKLineProgress(int id, const KLineProgress& progress) override {
    add("progress#" + std::to_string(id) + " " + std::to_string(progress.value1) + "/" +
        std::to_string(progress.value2) + " " + std::to_string(progress.value3) + "%");
  }

  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  std::vector<IKLine> bars() const {
    const std::lock_guard lock(mutex_);
    return bars_;
  }
  /// Called on the service's thread after each line.
  std::function<void(const std::string& line)> onLine;

  void add(const std::string& line) {
    const std::string stamped = "@" + relative(Timestamp::now(1).toUtcMsEponch()) + " " + line;
    {
      const std::lock_guard lock(mutex_);
      lines_.push_back(stamped);
    }
    if (onLine) onLine(line);
  }

  /// A time as hours and minutes (and seconds if there are any) since `kMonday`.
  static std::string relative(int64 time) {
    const int64 minutes = (time - kMonday) / kMinute;
    std::string text = std::to_string(minutes / 60) + ":" + (minutes % 60 < 10 ? "0" : "") +
                       std::to_string(minutes % 60);
    const int64 rest = (time - kMonday) % kMinute;
    return rest == 0 ? text : text + "+" + std::to_string(rest);
  }

 private:
  static std::string end(int flags) { return flags == 0 ? "" : " flags=" + std::to_string(flags); }

  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  std::vector<IKLine> bars_;
};

/// Stands in for a runner: takes each call-back into a list, as a runner's pump does, and handles
/// it on the pool.
class RunnerSpi final : public QuoteSpi, public std::enable_shared_from_this<RunnerSpi> {
 public:
  using Handler = std::function<void(const std::string& event)>;
  explicit RunnerSpi(Handler handler) : handler_(std::move(handler)) {}

  void onQuote(const IDepthMarketData& quote) override {
    push("quote " + RecordingSpi::relative(QuoteView(quote).time()));
  }
  void onKLine(int id, const std::vector<IKLine>& bars, const ResultStatus&, int flags) override {
    std::string line = "bar#" + std::to_string(id);
    for (const IKLine& bar : bars)
      line += " " + RecordingSpi::relative(KLineView(bar).endTime()) + "=" +
              std::to_string(KLineView(bar).close());
    push(line + " f" + std::to_string(flags));
  }
  void onKLineProgress(int id, const KLineProgress& progress) override {
    push("progress#" + std::to_string(id) + " " + std::to_string(progress.value1));
  }
  void push(const std::string& event) {
    const std::lock_guard lock(mutex_);
    pending_.push_back(event);
    if (counter_ == nullptr) counter_ = std::make_unique<NotifyRefCounter>();
    schedule();
  }
  std::vector<std::string> handled() const {
    const std::lock_guard lock(mutex_);
    return handled_;
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
      const std::lock_guard lock(mutex_);
      batch.swap(pending_);
      counter.swap(counter_);
    }
    for (const std::string& event : batch) {
      {
        const std::lock_guard lock(mutex_);
        handled_.push_back("@" + RecordingSpi::relative(Timestamp::now(1).toUtcMsEponch()) + " " +
                           event);
      }
      if (handler_) handler_(event);
    }
    counter.reset();
    const std::lock_guard lock(mutex_);
    running_ = false;
    schedule();
  }

  const Handler handler_;
  mutable std::mutex mutex_;
  std::vector<std::string> pending_;
  std::vector<std::string> handled_;
  std::unique_ptr<NotifyRefCounter> counter_;
  bool running_ = false;
};

}  // namespace orvane::testing
