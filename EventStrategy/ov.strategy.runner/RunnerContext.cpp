// The life of a run: the requests that queue control events, and the handlers that carry them out.

#include "EventStrategy/ov.strategy.runner/RunnerContext.h"

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/ServerUserContext.h"
#include "EventStrategy/ov.strategy.runner/UserContext.h"
#include "services/Common/CodeConvert.h"
#include "services/Common/DllLoader.h"
#include "shared/GbkLiteral.h"

namespace orvane {
namespace {

constexpr int kModeServer = 1;

std::unique_ptr<UserContext> makeContext(RunnerContext* owner, int mode) {
  if ((mode & kModeServer) != 0) return std::make_unique<ServerUserContext>(owner);
  return std::make_unique<UserContext>(owner);
}

}  // namespace

RunnerContext::RunnerContext(const std::string& name, int mode) : AbstractEventStrategy(mode) {
  setName(name);
  shared_ = std::make_unique<RunnerShared>(name);
  state_ = std::make_unique<RunnerState>();
  context_ = makeContext(this, mode);
  ORVANE_LOG(runner, Debug, name << ",RunnerContext construct");
}

RunnerContext::~RunnerContext() {
  const std::string name = shared_->name;
  ORVANE_LOG(runner, Debug, name << ",RunnerContext destruct begin");
  context_.reset();
  state_.reset();
  shared_.reset();
  events_.clear();
  notifyRefCounter().reset();
  // After the context: a strategy that is destroyed without `onStop` must not find it alive.
  strategies_.clear();
  ORVANE_LOG(runner, Debug, name << ",RunnerContext destruct end");
}

void RunnerContext::start(const QJsonObject& params) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(runner, Info, shared_->name << ",start");
  append(std::make_unique<RunnerStartEvent>(params));
  isSetStop_ = false;
  schedulePoolTask();
}

void RunnerContext::update(const QJsonObject& params) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(runner, Info, shared_->name << ",update");
  append(std::make_unique<RunnerUpdateEvent>(params));
  schedulePoolTask();
}

void RunnerContext::stop() {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(runner, Info, shared_->name << ",stop");
  discardPending();
  append(std::make_unique<RunnerStopEvent>(shared_from_this()));
  isSetStop_ = true;
  schedulePoolTask();
}

void RunnerContext::reset4PlayBack(const QJsonObject& params) {
  const std::lock_guard lock(mutex_);
  const bool stopping = isSetStop_;
  ORVANE_LOG(runner, Info,
             shared_->name << ",reset for playback,isSetStop=" << static_cast<int>(stopping));
  if (stopping) return;
  append(std::make_unique<RunnerReset4PlayBackEvent>(params));
  schedulePoolTask();
}

void RunnerContext::setError(const std::string& message) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(runner, Info, shared_->name << ",setError," << message);
  discardPending();
  append(std::make_unique<RunnerErrorEvent>(shared_from_this(), message));
  isSetStop_ = true;
  schedulePoolTask();
}

void RunnerContext::setFinish() {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(runner, Info, shared_->name << ",setFinish");
  discardPending();
  append(std::make_unique<RunnerFinishEvent>(shared_from_this()));
  isSetStop_ = true;
  schedulePoolTask();
}

void RunnerContext::saveEnvs(const std::map<std::string, std::string>& values, bool notify,
                             bool store) {
  if (store) {
    const std::lock_guard lock(shared_->mutex);
    for (const auto& [key, value] : values) shared_->envs[key] = value;
  }
  if (!notify) return;
  if (const auto spi = shared_->currentSpi()) spi->onEnvs(values);
}

void RunnerContext::saveEnvItems(const std::list<EnvItem>& items, bool notify, bool store) {
  if (store) {
    const std::lock_guard lock(shared_->mutex);
    for (const EnvItem& item : items) shared_->envItems[item.group][item.key] = item;
  }
  if (!notify) return;
  if (const auto spi = shared_->currentSpi()) spi->onEnvItems(items);
}

void RunnerContext::reportStatus() {
  const auto spi = shared_->currentSpi();
  if (!spi) return;
  const std::string message = state_->message;
  spi->onStatus(state_->statusCode(), message);
}

void RunnerContext::releaseStrategies() {
  for (const auto& strategy : strategies_) strategy->onStop(context_.get());
  strategies_.clear();
  context_->exit();
  const std::lock_guard lock(shared_->mutex);
  shared_->envs.clear();
  shared_->envItems.clear();
}

void RunnerContext::doEventStart(RunnerStartEvent& event) {
  if (state_->isRunning()) return;
  ORVANE_LOG(runner, Debug, shared_->name << ",do start event");
  strategies_.clear();
  state_->flags = RunnerStateRunning;
  state_->message.clear();
  reportStatus();

  std::string path;
  {
    const std::lock_guard lock(shared_->mutex);
    path = shared_->strategyPath;
  }
  const StrategyLoadResult loaded = loadStrategy(path);
  if (loaded.status.code != 0) {
    state_->flags &= ~RunnerStateRunning;
    state_->flags |= RunnerStateError;
    state_->message = loaded.status.message;
    reportStatus();
    return;
  }
  std::unique_ptr<IStrategy> strategy(loaded.strategy);

  resetCache();
  std::map<std::string, CreateSourceTradeInfo> infos;
  {
    const std::lock_guard lock(shared_->mutex);
    infos[shared_->orderSource].override = TradeEventTypeMask;
  }
  trades()->setCreateSourceTradeInfo(infos);
  strategies_.push_back(std::move(strategy));
  for (const auto& each : strategies_) each->onStart(context_.get(), event.params);
}

void RunnerContext::doEventStop() {
  if (!state_->isRunning()) return;
  ORVANE_LOG(runner, Debug, shared_->name << ",do stop event");
  releaseStrategies();
  state_->flags &= ~RunnerStateRunning;
  reportStatus();
}

void RunnerContext::doEventError(const RunnerErrorEvent& event) {
  if (!state_->isRunning()) return;
  ORVANE_LOG(runner, Debug, shared_->name << ",do error event");
  releaseStrategies();
  state_->flags &= ~RunnerStateRunning;
  state_->flags |= RunnerStateError;
  state_->message = event.message;
  reportStatus();
}

void RunnerContext::doEventFinish() {
  if (!state_->isRunning()) return;
  ORVANE_LOG(runner, Debug, shared_->name << ",do finish event");
  releaseStrategies();
  state_->flags &= ~RunnerStateRunning;
  state_->flags |= RunnerStateFinished;
  reportStatus();
}

void RunnerContext::doEventReset4PlayBack(const RunnerReset4PlayBackEvent& event) {
  if (!state_->isRunning()) return;
  ORVANE_LOG(runner, Debug, shared_->name << ",do reset for playback event");
  releaseStrategies();
  state_->flags &= ~RunnerStateRunning;
  RunnerStartEvent start(event.params);
  doEventStart(start);
}

StrategyLoadResult RunnerContext::loadStrategy(const std::string& path) {
  StrategyLoadResult result;
  DllLoader loader;
  loader.load(CodeConvert::gbk_to_unicode(path));
  loader.seekProcAddress(kCreateStrategyName);
  if (loader.hasError()) {
    result.status = {-1, "加载"_gbk + path + "失败,"_gbk + loader.getErrorMsg()};
    return result;
  }
  result.strategy = reinterpret_cast<CreateStrategyFunction>(loader.getProcAddress())();
  return result;
}

}  // namespace orvane
