// The event strategy's life and its forwards to the sources.

#include "EventStrategy/AbstractEventStrategy.h"

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/GeneralEventSrc.h"
#include "EventStrategy/IndexSrc.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TimerSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "services/Common/IServiceRouter.h"

namespace orvane {
namespace {

/// Releases one source of a strategy that is going. A service that throws costs its own source at
/// most: the others are still released, and the process goes on.
template <typename Source>
void releaseSource(Source& source, const std::string& name) {
  try {
    source.release();
  } catch (const std::exception& error) {
    ORVANE_LOG(event, Error, name << ",release error,exception,msg=" << error.what());
  } catch (...) {
    ORVANE_LOG(event, Error, name << ",release error,system exception");
  }
}

}  // namespace

AbstractEventStrategy::AbstractEventStrategy(int mode) {
  dataSrc_ = std::make_shared<DataSrc>(mode);
  quoteSrc_ = std::make_shared<QuoteSrc>(mode);
  tradeSrc_ = std::make_shared<TradeSrc>();
  timerSrc_ = std::make_shared<TimerSrc>();
  generalEventSrc_ = std::make_shared<GeneralEventSrc>();
  indexSrc_ = std::make_shared<IndexSrc>();
}

AbstractEventStrategy::~AbstractEventStrategy() {
  releaseSource(*indexSrc_, name_);
  releaseSource(*generalEventSrc_, name_);
  releaseSource(*tradeSrc_, name_);
  releaseSource(*quoteSrc_, name_);
  releaseSource(*dataSrc_, name_);
}

std::string AbstractEventStrategy::name() {
  const std::lock_guard lock(mutex_);
  return name_;
}

void AbstractEventStrategy::setName(const std::string& name) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name << ",setName");
  name_ = name;
  tradeSrc_->setName(name);
  generalEventSrc_->setName(name);
  indexSrc_->setName(name);
}

void AbstractEventStrategy::startEvent() {
  dataSrc_->setNotify(this);
  quoteSrc_->setNotify(this);
  tradeSrc_->setNotify(this);
  timerSrc_->setNotify(this);
  generalEventSrc_->setNotify(this);
  indexSrc_->setNotify(this);
}

void AbstractEventStrategy::stopEvent() {
  indexSrc_->setNotify(nullptr);
  generalEventSrc_->setNotify(nullptr);
  timerSrc_->setNotify(nullptr);
  tradeSrc_->setNotify(nullptr);
  quoteSrc_->setNotify(nullptr);
  dataSrc_->setNotify(nullptr);
}

void AbstractEventStrategy::resetCache() { tradeSrc_->resetCache(); }

int AbstractEventStrategy::generateId() { return quoteSrc_->generateRequestId(); }

std::shared_ptr<IQuoteSrc> AbstractEventStrategy::quoteSrc() const { return quoteSrc_; }
std::shared_ptr<ITradeSrc> AbstractEventStrategy::tradeSrc() const { return tradeSrc_; }
std::shared_ptr<IDataSrc> AbstractEventStrategy::dataSrc() const { return dataSrc_; }
std::shared_ptr<IGeneralEventSrc> AbstractEventStrategy::generalEventSrc() const {
  return generalEventSrc_;
}
std::shared_ptr<IIndexSrc> AbstractEventStrategy::indexSrc() const { return indexSrc_; }

void AbstractEventStrategy::createTimer(int id, int64 beginTime, int64 interval, int triggerCount) {
  timerSrc_->createTimer(id, beginTime, interval, triggerCount);
}

void AbstractEventStrategy::stopTimer(int id) { timerSrc_->stopTimer(id); }
void AbstractEventStrategy::stopAllTimer() { timerSrc_->stopAllTimer(); }
bool AbstractEventStrategy::isTimerExist(int id) { return timerSrc_->isTimerExist(id); }

void AbstractEventStrategy::setNotifyQuick(bool quick) { tradeSrc_->setNotifyQuick(quick); }

void AbstractEventStrategy::setCreateSourceTradeInfo(
    const std::map<std::string, CreateSourceTradeInfo>& infos) {
  tradeSrc_->setCreateSourceTradeInfo(infos);
}

void AbstractEventStrategy::setRelatedCodeId(const std::vector<ICodeID>& codes) {
  tradeSrc_->setRelatedCodeId(codes);
}

void AbstractEventStrategy::addSubscribeTradeByCreateSource(const std::string& createSource,
                                                            const std::string& subCreateSource) {
  tradeSrc_->addSubscribeTradeByCreateSource(createSource, subCreateSource);
}

void AbstractEventStrategy::addSubscribeTradeByCreateId(const std::string& createSource,
                                                        int64 subCreateId) {
  tradeSrc_->addSubscribeTradeByCreateId(createSource, subCreateId);
}

void AbstractEventStrategy::onRelatedCodeIdChange(const std::vector<ICodeID>& codes) {
  tradeSrc_->onRelatedCodeIdChange(codes);
}

ResultStatus AbstractEventStrategy::subscribeKline(const OVDataRange& range, int requestId,
                                                   int extraFlags) {
  return quoteSrc_->subscribeKline(range, requestId, extraFlags);
}

ResultStatus AbstractEventStrategy::subscribeKline(const ICodeID& code,
                                                   const std::string& frequency, int64 beginTime,
                                                   int64 endTime, int count, int flags,
                                                   int requestId) {
  return quoteSrc_->subscribeKline(code, frequency, beginTime, endTime, count, flags, requestId);
}

ResultStatus AbstractEventStrategy::subscribeKline(const std::string& code,
                                                   const std::string& frequency, int64 value,
                                                   int flags, int requestId, int extraFlags) {
  return quoteSrc_->subscribeKline(code, frequency, value, flags, requestId, extraFlags);
}

ResultStatus AbstractEventStrategy::subscribeQuote(const ICodeID& code, int flags) {
  return quoteSrc_->subscribeQuote(code, flags);
}

ResultStatus AbstractEventStrategy::subscribeQuote(const std::string& code, int flags) {
  return quoteSrc_->subscribeQuote(code, flags);
}

void AbstractEventStrategy::subscribeTrade(const TradingAccountID& account) {
  tradeSrc_->subscribeTrade(account);
}

void AbstractEventStrategy::subscribeDataSnapshot(const std::string& name,
                                                  const std::string& target, int flags) {
  dataSrc_->subscribeDataSnapshot(name, target, flags);
}

void AbstractEventStrategy::unsubscribeDataSnapshot(const std::string& name,
                                                    const std::string& target, int flags) {
  dataSrc_->unsubscribeDataSnapshot(name, target, flags);
}

ResultStatus AbstractEventStrategy::subscribeData(const DataReq& request, int requestId) {
  return dataSrc_->subscribeData(request, requestId);
}

void AbstractEventStrategy::subscribeGeneralEvent(const std::string& target,
                                                  const std::string& name,
                                                  const std::list<std::string>& keys) {
  generalEventSrc_->subscribeEvent(target, name, keys);
}

void AbstractEventStrategy::subscribeElementChange(const ICodeID& code) {
  indexSrc_->subscribeElementChange(code);
}

void AbstractEventStrategy::subDetail(const CondId& condition) { tradeSrc_->subDetail(condition); }

ResultStatus AbstractEventStrategy::unsubscribeKline(int requestId) {
  return quoteSrc_->unsubscribeKline(requestId);
}

ResultStatus AbstractEventStrategy::unsubscribeQuote(const ICodeID& code, int flags) {
  return quoteSrc_->unsubscribeQuote(code, flags);
}

ResultStatus AbstractEventStrategy::unsubscribeQuote(const std::string& code, int flags) {
  return quoteSrc_->unsubscribeQuote(code, flags);
}

void AbstractEventStrategy::unsubscribeTrade(const TradingAccountID& account) {
  tradeSrc_->unsubscribeTrade(account);
}

void AbstractEventStrategy::unsubscribeData(int requestId) {
  if (!dataSrc_->forgetRequest(requestId)) return;
  IServiceRouter::instance()->quoteHub()->dataService()->unsubscribeData(requestId);
}

void AbstractEventStrategy::unsubscribeGenaralEvent(const std::string& target,
                                                    const std::string& name) {
  generalEventSrc_->unsubscribeEvent(target, name);
}

void AbstractEventStrategy::unsubscribeAllGenaralEvent() {
  generalEventSrc_->unsubscribeAllEvent();
}

void AbstractEventStrategy::unsubscribeElementChange(const ICodeID& code) {
  indexSrc_->unsubscribeElementChange(code);
}

void AbstractEventStrategy::unsubscribeAllElementChange() { indexSrc_->unsubscribeAll(); }

void AbstractEventStrategy::unsubscribeCond() { tradeSrc_->unsubAllDetail(); }

bool AbstractEventStrategy::isSubscribeKline(int requestId) {
  return quoteSrc_->isSubscribeKline(requestId);
}

bool AbstractEventStrategy::isSubscribeQuote(const ICodeID& code) {
  return quoteSrc_->isSubscribeQuote(code);
}

bool AbstractEventStrategy::isSubscribeDataSnapshot(const std::string& name,
                                                    const std::string& target) {
  return dataSrc_->isSubscribeDataSnapshot(name, target);
}

bool AbstractEventStrategy::isSubscribeData(int requestId) {
  return dataSrc_->isSubscribeData(requestId);
}

}  // namespace orvane
