#include "EventStrategy/ov.strategy.runner/Runner.h"

#include "EventStrategy/Log.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "services/Common/StringHelper.h"

namespace orvane {

Runner::Runner(const std::string& name, int mode) {
  context_ = std::make_shared<RunnerContext>(name, mode);
  context_->startEvent();
  ORVANE_LOG(runner, Debug, name << ",Runner construct");
}

Runner::~Runner() {
  ORVANE_LOG(runner, Debug, context_->shared().name << ",Runner destruct");
  context_->stopEvent();
}

std::string Runner::name() { return context_->shared().name; }

void Runner::setStrategyPath(const std::string& path) {
  ORVANE_LOG(runner, Debug, context_->shared().name << ",setStrategyPath,path=" << path);
  const std::lock_guard lock(context_->shared().mutex);
  context_->shared().strategyPath = path;
}

void Runner::setSpi(const std::shared_ptr<IRunnerSpi>& spi) {
  ORVANE_LOG(runner, Trace,
             context_->shared().name
                 << ",setSpi=" << StringHelper::FormatString("%p", static_cast<void*>(spi.get())));
  std::shared_ptr<IRunnerSpi> old = spi;  // Released after the lock: its end is the host's code.
  const std::lock_guard lock(context_->shared().mutex);
  context_->shared().spi.swap(old);
}

void Runner::setOrderSource(const std::string& source) {
  // The tag carries the other setter's word; log readers know it so.
  ORVANE_LOG(runner, Debug, context_->shared().name << ",setStrategyPath,source=" << source);
  const std::lock_guard lock(context_->shared().mutex);
  context_->shared().orderSource = source;
}

void Runner::start(const QJsonObject& params) { context_->start(params); }
void Runner::update(const QJsonObject& params) { context_->update(params); }
void Runner::stop() { context_->stop(); }
void Runner::reset4PlayBack(const QJsonObject& params) { context_->reset4PlayBack(params); }

void Runner::setEnvs(const std::map<std::string, std::string>& values) {
  context_->saveEnvs(values, false, true);
}

void Runner::setEnvItems(const std::list<EnvItem>& items) {
  context_->saveEnvItems(items, false, true);
}

}  // namespace orvane
