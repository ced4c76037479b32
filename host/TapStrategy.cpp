#include "host/TapStrategy.h"

#include <QJsonDocument>
#include <exception>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

std::string compactJson(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

constexpr char kTickFrequency[] = "tick";

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
void TapStrategy::pass(CallKind kind, const Encode& encode, const Forward& forward) {
  ++record_->calls[static_cast<std::size_t>(kind)];
  if (encoder_) {
    encoder_->begin(kind);
    encode(*encoder_);
  }
  if (!inner_) return;
  try {
    forward(*inner_);
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
  ++record_->ticks;
  noteTime(view.time());
}

void TapStrategy::onStart(IContext* context, const QJsonObject& params) {
  records_.set(context->name(), record_);
  pass(
      CallKind::Start, [&](CallEncoder& out) { out.value(compactJson(params)); },
      [&](IStrategy& to) { to.onStart(context, params); });
  if (!inner_) context->setError(failure_);
}

void TapStrategy::onUpdate(IContext* context, const QJsonObject& params) {
  pass(
      CallKind::Update, [&](CallEncoder& out) { out.value(compactJson(params)); },
      [&](IStrategy& to) { to.onUpdate(context, params); });
}

void TapStrategy::onQuote(IContext* context, const IDepthMarketData& quote) {
  noteTick(quote, {});
  pass(
      CallKind::Quote, [&](CallEncoder& out) { out.value(quote); },
      [&](IStrategy& to) { to.onQuote(context, quote); });
}

void TapStrategy::onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                                   const std::vector<IDepthMarketData>& ticks,
                                   const ResultStatus& status, int batchFlag) {
  for (const auto& tick : ticks) noteTick(tick, kTickFrequency);
  pass(
      CallKind::TickSeriesById,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.values(ticks);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to) {
        to.onTickSeriesById(context, requestId, code, ticks, status, batchFlag);
      });
}

void TapStrategy::onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                                  const std::string& frequency, const std::vector<IKLine>& bars,
                                  const ResultStatus& status, int batchFlag) {
  noteBars(code, frequency, bars);
  pass(
      CallKind::BarSeriesById,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.value(frequency);
        out.values(bars);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to) {
        to.onBarSeriesById(context, requestId, code, frequency, bars, status, batchFlag);
      });
}

void TapStrategy::onTickSeries(IContext* context, const ICodeID& code,
                               const std::vector<IDepthMarketData>& ticks,
                               const ResultStatus& status, int batchFlag) {
  for (const auto& tick : ticks) noteTick(tick, kTickFrequency);
  pass(
      CallKind::TickSeries,
      [&](CallEncoder& out) {
        out.value(code);
        out.values(ticks);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to) { to.onTickSeries(context, code, ticks, status, batchFlag); });
}

void TapStrategy::onBarSeries(IContext* context, const ICodeID& code, const std::string& frequency,
                              const std::vector<IKLine>& bars, const ResultStatus& status,
                              int batchFlag) {
  noteBars(code, frequency, bars);
  pass(
      CallKind::BarSeries,
      [&](CallEncoder& out) {
        out.value(code);
        out.value(frequency);
        out.values(bars);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to) { to.onBarSeries(context, code, frequency, bars, status, batchFlag); });
}

void TapStrategy::onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                                    const std::string& frequency, const KLineProgress& progress) {
  pass(
      CallKind::BarProgressById,
      [&](CallEncoder& out) {
        out.requestId(requestId);
        out.value(code);
        out.value(frequency);
        out.value(progress);
      },
      [&](IStrategy& to) { to.onBarProgressById(context, requestId, code, frequency, progress); });
}

void TapStrategy::onBarProgress(IContext* context, const ICodeID& code,
                                const std::string& frequency, const KLineProgress& progress) {
  pass(
      CallKind::BarProgress,
      [&](CallEncoder& out) {
        out.value(code);
        out.value(frequency);
        out.value(progress);
      },
      [&](IStrategy& to) { to.onBarProgress(context, code, frequency, progress); });
}

void TapStrategy::onAccountStatus(IContext* context, const TradingAccountID& account, int status,
                                  const ResultStatus& result) {
  pass(
      CallKind::AccountStatus,
      [&](CallEncoder& out) {
        out.value(account);
        out.value(status);
        out.value(result);
      },
      [&](IStrategy& to) { to.onAccountStatus(context, account, status, result); });
}

void TapStrategy::onCapital(IContext* context, const TradingAccount& capital) {
  pass(
      CallKind::Capital, [&](CallEncoder& out) { out.value(capital); },
      [&](IStrategy& to) { to.onCapital(context, capital); });
}

void TapStrategy::onPosition(IContext* context, const Position& position) {
  pass(
      CallKind::Position, [&](CallEncoder& out) { out.value(position); },
      [&](IStrategy& to) { to.onPosition(context, position); });
}

void TapStrategy::onStrategyPosition(IContext* context, const SourcePosition& position) {
  pass(
      CallKind::StrategyPosition, [&](CallEncoder& out) { out.value(position); },
      [&](IStrategy& to) { to.onStrategyPosition(context, position); });
}

void TapStrategy::onOrder(IContext* context, const Order& order) {
  pass(
      CallKind::Order, [&](CallEncoder& out) { out.value(order); },
      [&](IStrategy& to) { to.onOrder(context, order); });
}

void TapStrategy::onFill(IContext* context, const OrderFill& fill) {
  pass(
      CallKind::Fill, [&](CallEncoder& out) { out.value(fill); },
      [&](IStrategy& to) { to.onFill(context, fill); });
}

void TapStrategy::onDicSnapshot(IContext* context, const std::string& name, const std::string& key,
                                const Record& record) {
  pass(
      CallKind::DicSnapshot,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.value(record);
      },
      [&](IStrategy& to) { to.onDicSnapshot(context, name, key, record); });
}

void TapStrategy::onDic(IContext* context, const std::string& name, const std::string& key,
                        const std::list<Record>& records, const ResultStatus& status,
                        int batchFlag) {
  pass(
      CallKind::Dic,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.values(records);
        out.value(status);
        out.value(batchFlag);
      },
      [&](IStrategy& to) { to.onDic(context, name, key, records, status, batchFlag); });
}

void TapStrategy::onDicDeleted(IContext* context, const std::string& name, const std::string& key,
                               int64 value1, int64 value2) {
  pass(
      CallKind::DicDeleted,
      [&](CallEncoder& out) {
        out.value(name);
        out.value(key);
        out.value(value1);
        out.value(value2);
      },
      [&](IStrategy& to) { to.onDicDeleted(context, name, key, value1, value2); });
}

void TapStrategy::onTimer(IContext* context, int timerId, int64 value) {
  pass(
      CallKind::Timer,
      [&](CallEncoder& out) {
        out.timerId(timerId);
        out.value(value);
      },
      [&](IStrategy& to) { to.onTimer(context, timerId, value); });
}

void TapStrategy::onStop(IContext* context) {
  pass(
      CallKind::Stop, [](CallEncoder&) {}, [&](IStrategy& to) { to.onStop(context); });
}

}  // namespace orvane
