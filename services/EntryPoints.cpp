// The static entry points of the services: each resolves through the one installed platform.

#include "services/Common/BDUtil.h"
#include "services/Common/CmnFactory.h"
#include "services/Common/CodeConvert.h"
#include "services/Common/ICodeService.h"
#include "services/Common/IServiceRouter.h"
#include "services/Common/NotifyRefCounter.h"
#include "services/Common/QuoteUtils.h"
#include "services/Common/ThreadPoolBase.h"
#include "services/Common/TradeUtils.h"
#include "services/IPlatform.h"
#include "services/QuoteClient/BarDataReadSyncWrapper.h"
#include "services/QuoteClient/IDataMaintain.h"
#include "services/QuoteClient/IGeneralEventManager.h"
#include "services/QuoteClient/IIndexTrade.h"
#include "services/QuoteClient/ISystemEvent.h"
#include "services/ov.publisher/IPublisher.h"
#include "shared/TextCodec.h"

namespace orvane {

IServiceRouter* IServiceRouter::instance() { return installedPlatform().router(); }

ThreadPoolBase* ThreadPoolBase::create() { return installedPlatform().createThreadPool(); }

NotifyRefCounter::NotifyRefCounter() { installedPlatform().notifyRefAcquired(); }
NotifyRefCounter::~NotifyRefCounter() { installedPlatform().notifyRefReleased(); }

std::wstring CodeConvert::gbk_to_unicode(const std::string& gbk) { return gbkToWide(gbk); }

ResultStatus QuoteUtils::freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) {
  return installedPlatform().freqToTerm(frequency, term, extraFlag);
}

IMDQuery CommonMethod::DataRange2IMDQuery(const OVDataRange& range) {
  return installedPlatform().dataRangeToQuery(range);
}

ITimeType CommonMethod::MilFrequency2ITimeType(int64 term) {
  return installedPlatform().timeTypeOf(term);
}

namespace {

ICodeService& codeService() { return *IServiceRouter::instance()->quoteHub()->codeService(); }

}  // namespace

bool CodePropertyUtils::getCategoryID(const std::string& text, ICategoryID& category) {
  return codeService().getCategoryID(text, category);
}

ResultStatus CodePropertyUtils::getHistoryCodeProperties(const ICodeID& code,
                                                         std::vector<ITimeCodeProp>& properties,
                                                         int flags) {
  return codeService().historyCodeProperties(code, properties, flags);
}

ResultStatus CodePropertyUtils::correctUserProp(ICodeProperty& property) {
  return codeService().correctUserProp(property);
}

EventSourceId TradeUtils::sourceID2EventSource(const SourceId& source) {
  return installedPlatform().eventSourceOf(source);
}

std::list<std::string> BDUtil::getTargetByName(const std::string& name, IDataService* /*service*/,
                                               bool /*refresh*/) {
  return installedPlatform().targetsOfName(name);
}

CmnFactory* CmnFactory::instance() {
  static CmnFactory factory;
  return &factory;
}

ICondService* CmnFactory::get(int number) {
  return number == 3 ? installedPlatform().conditionService() : nullptr;
}

std::shared_ptr<IGeneralEventManager> IGeneralEventManager::instance() {
  return installedPlatform().generalEventManager();
}

IIndexTrade* IIndexTrade::instance() { return installedPlatform().indexTrade(); }

IDataMaintain* IDataMaintain::Create() { return installedPlatform().createDataMaintain(); }

void IDataMaintain::release(IDataMaintain* maintain) { delete maintain; }

ISystemEvent* ISystemEvent::instance() { return installedPlatform().systemEvent(); }

IPublisher* IPublisher::create(RunnerModeFlag mode) {
  return installedPlatform().createPublisher(mode);
}

ResultStatus BarDataReadSyncWrapper::getRecords(const std::string& target, const std::string& name,
                                                int64 begin, int64 end, std::list<Record>& records,
                                                const Cancel& cancelled, int64 wait, int flags) {
  return installedPlatform().readRecords(target, name, begin, end, records, cancelled, wait, flags);
}

ResultStatus BarDataReadSyncWrapper::getRecord(const std::string& target, const std::string& name,
                                               int64 time, Record& record, const Cancel& cancelled,
                                               int64 wait, int flags) {
  std::list<TargetRecord> found;
  ResultStatus status =
      installedPlatform().readTargets({target}, name, time, found, cancelled, wait, flags);
  if (!found.empty() && !found.back().records.empty()) record = found.back().records.back();
  return status;
}

ResultStatus BarDataReadSyncWrapper::getRecord(const std::list<std::string>& targets,
                                               const std::string& name, int64 time,
                                               std::list<TargetRecord>& records,
                                               const Cancel& cancelled, int64 wait, int flags) {
  return installedPlatform().readTargets(targets, name, time, records, cancelled, wait, flags);
}

}  // namespace orvane
