#include "host/TapStrategy.h"

#include <exception>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

constexpr char kTickFrequency[] = "tick";
constexpr char kStatisticsKey[] = "#STAT#";

}  // namespace

TapStrategy::TapStrategy(std::unique_ptr<IStrategy> inner, std::string failure, RunRecords& records)
    : inner_(std::move(inner)),
      failure_(std::move(failure)),
      records_(records),
      record_(std::make_shared<RunRecord>()) {
  if (!records_.withDigest()) return;
  record_->digest = std::make_unique<Digest>();
  encoder_.emplace(*record_->digest);
}

TapStrategy::~TapStrategy() = default;

template <typename Encode, typename Forward>
void TapStrategy::pass(CallKind kind, IContext* context, const Encode& encode,
                       const Forward& forward) {
  const RunPulse::Call pulse(record_->pulse, kind);
  ++record_->calls[static_cast<std::size_t>(kind)];
  if (encoder_) {
    encoder_->begin(kind);
    encode(*encoder_);
  }
  if (!inner_) return;
  try {
    if (!tapContext_) tapContext_.emplace(*context, *record_, encoder_ ? &*encoder_ : nullptr);
    const TapContext::Call call(*tapContext_);
    const std::uint64_t said = tapContext_->saidSoFar();
    forward(*inner_, &*tapContext_);
    const bool isTick =
        kind == CallKind::Quote || kind == CallKind::TickSeries || kind == CallKind::TickSeriesById;
    if (isTick && tapContext_->saidSoFar() != said) record_->spokeOnTicks = true;
  } catch (const std::exception& error) {
    noteException(kind, error.what());
    throw;
  } catch (...) {
    noteException(kind, "an exception that is not a standard one");
    throw;
  }
}

void TapStrategy::noteException(CallKind kind, const std::string& what) {
  if (encoder_) encoder_->threw(what);
  if (record_->exceptions++ == 0)
    record_->firstException =
        std::string(kCallNames[static_cast<std::size_t>(kind)]) + ": " + gbkToUtf8(what);
}

SeriesRecord& TapStrategy::series(const ICodeID& code, const std::string& frequency, bool isTicks) {
  if (lastSeries_ != nullptr && lastSeries_->code.id == code.id &&
      lastSeries_->frequency == frequency)
    return *lastSeries_;
  const auto [at, isNew] = record_->series.try_emplace({code.id, frequency});
  if (isNew) {
    at->second.code = code;
    at->second.frequency = frequency;
    at->second.isTicks = isTicks;
    if (const CandleKeeping& keeping = records_.candles(); keeping.most != 0)
      at->second.candles.emplace(keeping.most, keeping.zone);
  }
  lastSeries_ = &at->second;
  return at->second;
}

void TapStrategy::noteTime(int64 utcMs) {
  if (record_->firstTime == kUnsetTime || utcMs < record_->firstTime) record_->firstTime = utcMs;
  if (record_->lastTime == kUnsetTime || utcMs > record_->lastTime) record_->lastTime = utcMs;
}

void TapStrategy::noteBars(const ICodeID& code, const std::string& frequency,
                           const std::vector<IKLine>& bars) {
  if (bars.empty()) return;
  SeriesRecord& found = series(code, frequency, false);
  if (found.records == 0) found.firstBar = bars.front();
  found.lastBar = bars.back();
  found.records += bars.size();
  if (found.candles)
    for (const IKLine& bar : bars) found.candles->addBar(bar);
  record_->bars += bars.size();
  noteTime(KLineView(bars.front()).beginTime());
  noteTime(KLineView(bars.back()).endTime());
}

void TapStrategy::noteTick(const IDepthMarketData& tick, const std::string& frequency) {
  const QuoteView view(tick);
  SeriesRecord& found = series(tick.code, frequency, true);
  found.lastTick = {view.time(),    view.lastPrice(), view.volume(),  view.bidPrice(),
                    view.bidSize(), view.askPrice(),  view.askSize(), view.flags()};
  if (found.records++ == 0) found.firstTick = found.lastTick;
  if (found.candles) found.candles->addTick(tick);
  ++record_->ticks;
  noteTime(view.time());
}

DictionaryRecord& TapStrategy::dictionary(const std::string& name, const std::string& target) {
  return record_->dictionaries[{name, target}];
}

void TapStrategy::noteRecord(DictionaryRecord& found, const Record& record) {
  if (found.records + found.snapshots == 0) found.firstKey = record.key;
  found.lastKey = record.key;
}

void TapStrategy::onStart(IContext* context, const QJsonObject& params) {
  records_.set(context->name(), record_);
  pass(
      CallKind::Start, context, [&](CallEncoder& out) { out.value(compactJson(params)); },
      [&](IStrategy& to, IContext* its) { to.onStart(its, params); });
  if (!inner_) context->setError(failure_);
}

void TapStrategy::onUpdate(IContext* context, const QJsonObject& params) {
  pass(
      CallKind::Update, context, [&](CallEncoder& out) { out.value(compactJson(params)); },
      [&](IStrategy& to, IContext* its) { to.onUpdate(its, params); });
}

void TapStrategy::onQuote(IContext* context, const IDepthMarketData& quote) {
  noteTick(quote, {});
  pass(
      CallKind::Quote, context, [&](CallEncoder& out) { out.value(quote); },
      [&](IStrategy& to, IContext* its) { to.onQuote(its, quote); });
}

void TapStrategy::onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                                   const std::vector<IDepthMarketData>& ticks,
                                   const ResultStatus& status, int batchFlag) {
  for (const auto& tick : ticks) noteTick(tick, kTickFrequency);
  pass(
      CallKind::TickSeriesById, context,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.values(ticks);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to, IContext* its) {
        to.onTickSeriesById(its, requestId, code, ticks, status, batchFlag);
      });
}

void TapStrategy::onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                                  const std::string& frequency, const std::vector<IKLine>& bars,
                                  const ResultStatus& status, int batchFlag) {
  noteBars(code, frequency, bars);
  pass(
      CallKind::BarSeriesById, context,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.value(frequency);
        out.values(bars);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to, IContext* its) {
        to.onBarSeriesById(its, requestId, code, frequency, bars, status, batchFlag);
      });
}

void TapStrategy::onTickSeries(IContext* context, const ICodeID& code,
                               const std::vector<IDepthMarketData>& ticks,
                               const ResultStatus& status, int batchFlag) {
  for (const auto& tick : ticks) noteTick(tick, kTickFrequency);
  pass(
      CallKind::TickSeries, context,
      [&](CallEncoder& out) {
        out.value(code);
        out.values(ticks);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to, IContext* its) { to.onTickSeries(its, code, ticks, status, batchFlag); });
}

void TapStrategy::onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                              const std::vector<IKLine>& bars, const ResultStatus& status,
                              int batchFlag) {
  noteBars(code, frequency, bars);
  pass(
      CallKind::BarSeries, context,
      [&](CallEncoder& out) {
        out.value(code);
        out.value(frequency);
        out.values(bars);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to, IContext* its) {
        to.onBarSeries(its, code, frequency, bars, status, batchFlag);
      });
}

void TapStrategy::onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                                    const std::string& frequency, const KLineProgress& progress) {
  pass(
      CallKind::BarProgressById, context,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.value(frequency);
        out.value(progress);
      },
      [&](IStrategy& to, IContext* its) {
        to.onBarProgressById(its, requestId, code, frequency, progress);
      });
}

void TapStrategy::onBarProgress(IContext* context, const ICodeID& code,
                                const std::string& frequency, const KLineProgress& progress) {
  pass(
      CallKind::BarProgress, context,
      [&](CallEncoder& out) {
        out.value(code);
        out.value(frequency);
        out.value(progress);
      },
      [&](IStrategy& to, IContext* its) { to.onBarProgress(its, code, frequency, progress); });
}

void TapStrategy::onAccountStatus(IContext* context, const TradingAccountID& account, int status,
                                  const ResultStatus& result) {
  pass(
      CallKind::AccountStatus, context,
      [&](CallEncoder& out) {
        out.value(account);
        out.value(status);
        out.value(result);
      },
      [&](IStrategy& to, IContext* its) { to.onAccountStatus(its, account, status, result); });
}

void TapStrategy::onCapital(IContext* context, const TradingAccount& capital) {
  pass(
      CallKind::Capital, context, [&](CallEncoder& out) { out.value(capital); },
      [&](IStrategy& to, IContext* its) { to.onCapital(its, capital); });
}

void TapStrategy::onPosition(IContext* context, const Position& position) {
  pass(
      CallKind::Position, context, [&](CallEncoder& out) { out.value(position); },
      [&](IStrategy& to, IContext* its) { to.onPosition(its, position); });
}

void TapStrategy::onStrategyPosition(IContext* context, const SourcePosition& position) {
  pass(
      CallKind::StrategyPosition, context, [&](CallEncoder& out) { out.value(position); },
      [&](IStrategy& to, IContext* its) { to.onStrategyPosition(its, position); });
}

void TapStrategy::onOrder(IContext* context, const Order& order) {
  pass(
      CallKind::Order, context, [&](CallEncoder& out) { out.value(order); },
      [&](IStrategy& to, IContext* its) { to.onOrder(its, order); });
}

void TapStrategy::onFill(IContext* context, const OrderFill& fill) {
  pass(
      CallKind::Fill, context, [&](CallEncoder& out) { out.value(fill); },
      [&](IStrategy& to, IContext* its) { to.onFill(its, fill); });
}

void TapStrategy::onDicSnapshot(IContext* context, const std::string& name, const std::string& key,
                                const Record& record) {
  DictionaryRecord& found = dictionary(name, key);
  noteRecord(found, record);
  ++found.snapshots;
  pass(
      CallKind::DicSnapshot, context,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.value(record);
      },
      [&](IStrategy& to, IContext* its) { to.onDicSnapshot(its, name, key, record); });
}

void TapStrategy::onDic(IContext* context, const std::string& name, const std::string& key,
                        const std::list<Record>& records, const ResultStatus& status,
                        int batchFlag) {
  DictionaryRecord& found = dictionary(name, key);
  for (const Record& record : records) {
    noteRecord(found, record);
    ++found.records;
  }
  pass(
      CallKind::Dic, context,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.values(records);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to, IContext* its) { to.onDic(its, name, key, records, status, batchFlag); });
}

void TapStrategy::onDicDeleted(IContext* context, const std::string& name, const std::string& key,
                               int64 value1, int64 value2) {
  ++dictionary(name, key).deletions;
  pass(
      CallKind::DicDeleted, context,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.value(value1);
        out.value(value2);
      },
      [&](IStrategy& to, IContext* its) { to.onDicDeleted(its, name, key, value1, value2); });
}

void TapStrategy::onTimer(IContext* context, int timerId, int64 value) {
  pass(
      CallKind::Timer, context,
      [&](CallEncoder& out) {
        out.timerId(timerId);
        out.value(value);
      },
      [&](IStrategy& to, IContext* its) { to.onTimer(its, timerId, value); });
}

void TapStrategy::onStop(IContext* context) {
  // The last moment at which a context can be asked; what `onStop` publishes counts too.
  const auto takeStatistics = [&] {
    record_->statisticsLine = context->env(kStatisticsKey, std::string());
  };
  try {
    pass(
        CallKind::Stop, context, [](CallEncoder&) {},
        [&](IStrategy& to, IContext* its) { to.onStop(its); });
  } catch (...) {
    takeStatistics();
    throw;
  }
  takeStatistics();
}

}  // namespace orvane
