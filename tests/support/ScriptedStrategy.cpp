#include "tests/support/ScriptedStrategy.h"

#include <QJsonDocument>
#include <utility>

namespace orvane::support {
namespace {

std::string text(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

std::string text(int64 number) { return std::to_string(number); }

std::string text(const ResultStatus& status) {
  return "status=" + text(status.code) + "/" + status.message;
}

/// Ids of the quotes' codes and first words of the bars: enough to tell one batch from another.
std::string text(const std::vector<IDepthMarketData>& ticks) {
  std::string all = "[";
  for (const IDepthMarketData& tick : ticks) all += text(tick.block1[0]) + ",";
  return all + "]";
}

std::string text(const std::vector<IKLine>& bars) {
  std::string all = "[";
  for (const IKLine& bar : bars) all += text(bar.words[0]) + ",";
  return all + "]";
}

std::string text(const ICodeID& code) { return code.code + "#" + text(code.id); }

std::string text(const KLineProgress& progress) {
  return text(progress.value1) + "/" + text(progress.value2) + "/" + text(progress.value3) + "/" +
         text(progress.value4) + " " + text(progress.status);
}

std::string text(const Record& record) {
  return text(record.key) + ":" + text(record.value2) + ":" + record.text;
}

template <typename... Parts>
std::string joined(const Parts&... parts) {
  std::string all;
  ((all += (all.empty() ? "" : " ") + std::string(parts)), ...);
  return all;
}

}  // namespace

void StrategyScript::on(const std::string& callback, Hook hook) {
  const std::lock_guard lock(mutex_);
  hooks_[callback] = std::move(hook);
}

void StrategyScript::onAny(Hook hook) {
  const std::lock_guard lock(mutex_);
  anyHook_ = std::move(hook);
}

void StrategyScript::onCreate(std::function<void()> hook) {
  const std::lock_guard lock(mutex_);
  createHook_ = std::move(hook);
}

std::vector<std::string> StrategyScript::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<std::string> StrategyScript::calls(const std::string& prefix) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> found;
  for (const std::string& call : calls_)
    if (call.starts_with(prefix)) found.push_back(call);
  return found;
}

int StrategyScript::count(const std::string& prefix) const {
  return static_cast<int>(calls(prefix).size());
}

void StrategyScript::clear() {
  const std::lock_guard lock(mutex_);
  calls_.clear();
}

void StrategyScript::note(const std::string& call) {
  const std::lock_guard lock(mutex_);
  calls_.push_back(call);
}

void StrategyScript::enter(IContext* context, const std::string& callback,
                           const std::string& contents) {
  struct Inside {
    explicit Inside(StrategyScript& owner) : script(owner) {
      if (script.inside_.fetch_add(1) != 0) script.overlapped_ = true;
    }
    ~Inside() { script.inside_.fetch_sub(1); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    StrategyScript& script;
  };
  const Inside inside(*this);
  context_ = context;
  Hook any;
  Hook own;
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back(contents.empty() ? callback : callback + " " + contents);
    any = anyHook_;
    if (const auto it = hooks_.find(callback); it != hooks_.end()) own = it->second;
  }
  if (any) any(context);
  if (own) own(context);
}

ScriptedStrategy::ScriptedStrategy(std::shared_ptr<StrategyScript> script)
    : script_(std::move(script)) {
  ++script_->made_;
  ++script_->alive_;
  script_->note("create");
}

ScriptedStrategy::~ScriptedStrategy() {
  --script_->alive_;
  script_->note("destroy");
}

std::function<IStrategy*()> ScriptedStrategy::maker(std::shared_ptr<StrategyScript> script) {
  return [script = std::move(script)]() -> IStrategy* {
    std::function<void()> hook;
    {
      const std::lock_guard lock(script->mutex_);
      hook = script->createHook_;
    }
    if (hook) hook();
    return new ScriptedStrategy(script);
  };
}

void ScriptedStrategy::onStart(IContext* context, const QJsonObject& params) {
  script_->enter(context, "onStart", text(params));
}

void ScriptedStrategy::onUpdate(IContext* context, const QJsonObject& params) {
  script_->enter(context, "onUpdate", text(params));
}

void ScriptedStrategy::onQuote(IContext* context, const IDepthMarketData& quote) {
  script_->enter(context, "onQuote", joined(text(quote.code), text(quote.block1[0])));
}

void ScriptedStrategy::onTickSeriesById(IContext* context, int requestId, const ICodeID& code,
                                        const std::vector<IDepthMarketData>& ticks,
                                        const ResultStatus& status, int batchFlag) {
  script_->enter(context, "onTickSeriesById",
                 joined(text(requestId), text(code), text(ticks), text(status), text(batchFlag)));
}

void ScriptedStrategy::onBarSeriesById(IContext* context, int requestId, const ICodeID& code,
                                       const std::string& frequency,
                                       const std::vector<IKLine>& bars, const ResultStatus& status,
                                       int batchFlag) {
  script_->enter(
      context, "onBarSeriesById",
      joined(text(requestId), text(code), frequency, text(bars), text(status), text(batchFlag)));
}

void ScriptedStrategy::onTickSeries(IContext* context, const ICodeID& code,
                                    const std::vector<IDepthMarketData>& ticks,
                                    const ResultStatus& status, int batchFlag) {
  script_->enter(context, "onTickSeries",
                 joined(text(code), text(ticks), text(status), text(batchFlag)));
}

void ScriptedStrategy::onBarSeries(IContext* context, const ICodeID& code,
                                   const std::string& frequency, const std::vector<IKLine>& bars,
                                   const ResultStatus& status, int batchFlag) {
  script_->enter(context, "onBarSeries",
                 joined(text(code), frequency, text(bars), text(status), text(batchFlag)));
}

void ScriptedStrategy::onBarProgressById(IContext* context, int requestId, const ICodeID& code,
                                         const std::string& frequency,
                                         const KLineProgress& progress) {
  script_->enter(context, "onBarProgressById",
                 joined(text(requestId), text(code), frequency, text(progress)));
}

void ScriptedStrategy::onBarProgress(IContext* context, const ICodeID& code,
                                     const std::string& frequency, const KLineProgress& progress) {
  script_->enter(context, "onBarProgress", joined(text(code), frequency, text(progress)));
}

void ScriptedStrategy::onAccountStatus(IContext* context, const TradingAccountID& account,
                                       int status, const ResultStatus& result) {
  script_->enter(context, "onAccountStatus",
                 joined(text(account.accountKey), text(status), text(result)));
}

void ScriptedStrategy::onCapital(IContext* context, const TradingAccount& capital) {
  script_->enter(context, "onCapital",
                 joined(text(capital.account.accountKey), text(capital.value)));
}

void ScriptedStrategy::onPosition(IContext* context, const Position& position) {
  script_->enter(context, "onPosition",
                 joined(text(position.account.accountKey), text(position.code)));
}

void ScriptedStrategy::onStrategyPosition(IContext* context, const SourcePosition& position) {
  script_->enter(context, "onStrategyPosition",
                 joined(text(position.account.accountKey), text(position.code),
                        text(position.sourceType), position.createSource, position.sourceText));
}

void ScriptedStrategy::onOrder(IContext* context, const Order& order) {
  script_->enter(context, "onOrder", joined(text(order.id), text(order.code)));
}

void ScriptedStrategy::onFill(IContext* context, const OrderFill& fill) {
  script_->enter(context, "onFill", joined(text(fill.id), fill.fillText));
}

void ScriptedStrategy::onDicSnapshot(IContext* context, const std::string& name,
                                     const std::string& key, const Record& record) {
  script_->enter(context, "onDicSnapshot", joined(name, key, text(record)));
}

void ScriptedStrategy::onDic(IContext* context, const std::string& name, const std::string& key,
                             const std::list<Record>& records, const ResultStatus& status,
                             int batchFlag) {
  std::string all = "[";
  for (const Record& record : records) all += text(record) + ",";
  script_->enter(context, "onDic", joined(name, key, all + "]", text(status), text(batchFlag)));
}

void ScriptedStrategy::onDicDeleted(IContext* context, const std::string& name,
                                    const std::string& key, int64 value1, int64 value2) {
  script_->enter(context, "onDicDeleted", joined(name, key, text(value1), text(value2)));
}

void ScriptedStrategy::onTimer(IContext* context, int timerId, int64 value) {
  script_->enter(context, "onTimer", joined(text(timerId), text(value)));
}

void ScriptedStrategy::onStop(IContext* context) { script_->enter(context, "onStop", {}); }

const std::vector<std::string>& strategyCallbacks() {
  static const std::vector<std::string> names = {"onStart",
                                                 "onUpdate",
                                                 "onQuote",
                                                 "onTickSeriesById",
                                                 "onBarSeriesById",
                                                 "onTickSeries",
                                                 "onBarSeries",
                                                 "onBarProgressById",
                                                 "onBarProgress",
                                                 "onAccountStatus",
                                                 "onCapital",
                                                 "onPosition",
                                                 "onStrategyPosition",
                                                 "onOrder",
                                                 "onFill",
                                                 "onDicSnapshot",
                                                 "onDic",
                                                 "onDicDeleted",
                                                 "onTimer",
                                                 "onStop"};
  return names;
}

}  // namespace orvane::support
