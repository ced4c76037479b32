// The context's run, environment and log operations, and its forwards to market data, codes,
// publication and dictionary data.

#include "EventStrategy/ov.strategy.runner/UserContext.h"

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/QuoteSrc.h"
#include "EventStrategy/TradeSrc.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "EventStrategy/ov.strategy.runner/RunnerContext.h"
#include "shared/CodeTables.h"

namespace orvane {
namespace {

constexpr int kReadFlag = 32;
constexpr int kPublishFlag = 128;
constexpr int64 kReadWaitMs = 60000;

bool neverCancelled() { return false; }

}  // namespace

UserContext::UserContext(RunnerContext* runnerContext) : runnerContext_(runnerContext) {}

UserContext::~UserContext() = default;

const std::string& UserContext::runnerName() const { return runnerContext_->shared().name; }

ResultStatus UserContext::notSupported() { return {23, statusMessage(23)}; }

std::string UserContext::name() { return runnerName(); }

bool UserContext::isSetStop() { return runnerContext_->isSetStop(); }

void UserContext::setError(const std::string& message) { runnerContext_->setError(message); }

void UserContext::setFinish() { runnerContext_->setFinish(); }

void UserContext::stop() { runnerContext_->stop(); }

void UserContext::notifySpi(const QJsonObject& argument) {
  if (const auto spi = runnerContext_->shared().currentSpi()) spi->onNotify(argument);
}

void UserContext::setEnvs(const std::map<std::string, std::string>& values, bool store) {
  runnerContext_->saveEnvs(values, true, store);
}

void UserContext::setEnv(const std::string& key, const std::string& value, bool store) {
  setEnvs({{key, value}}, store);
}

void UserContext::clearEnv() {
  const std::lock_guard lock(runnerContext_->shared().mutex);
  runnerContext_->shared().envs.clear();
}

std::string UserContext::env(const std::string& key, const std::string& defaultValue) {
  return runnerContext_->shared().env(key, defaultValue);
}

std::map<std::string, std::string> UserContext::envs() {
  return runnerContext_->shared().allEnvs();
}

void UserContext::setEnvItems(const std::list<EnvItem>& items, bool store) {
  runnerContext_->saveEnvItems(items, true, store);
}

void UserContext::setEnvItem(const EnvItem& item, bool store) { setEnvItems({item}, store); }

void UserContext::clearEnvItems() {
  const std::lock_guard lock(runnerContext_->shared().mutex);
  runnerContext_->shared().envItems.clear();
}

std::list<EnvItem> UserContext::envItems(const std::string& group) {
  return runnerContext_->shared().itemsOf(group);
}

int UserContext::generateRequestId() { return runnerContext_->quotes()->generateRequestId(); }

void UserContext::log(detail::LogLevel level, const std::string& message, bool toStg,
                      const log4cxx::spi::LocationInfo& location) {
  const log4cxx::LoggerPtr& logger = toStg ? detail::loggers().stg : detail::loggers().stgF;
  if (!detail::isEnabled(logger, level)) return;
  detail::LogLine line(logger, level);
  line << message;
  line.send(location);
}

void UserContext::logTrace(const std::string& message, bool toStg) {
  log(detail::LogLevel::Trace, message, toStg, LOG4CXX_LOCATION);
}

void UserContext::logDebug(const std::string& message, bool toStg) {
  log(detail::LogLevel::Debug, message, toStg, LOG4CXX_LOCATION);
}

void UserContext::logInfo(const std::string& message, bool toStg) {
  log(detail::LogLevel::Info, message, toStg, LOG4CXX_LOCATION);
}

void UserContext::logWarn(const std::string& message, bool toStg) {
  log(detail::LogLevel::Warn, message, toStg, LOG4CXX_LOCATION);
}

void UserContext::logError(const std::string& message, bool toStg) {
  log(detail::LogLevel::Error, message, toStg, LOG4CXX_LOCATION);
}

void UserContext::setNotifyQuick(bool quick) { runnerContext_->trades()->setNotifyQuick(quick); }

ResultStatus UserContext::getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) {
  return runnerContext_->quoteSrc()->getQuote(code, quote, flags);
}

ResultStatus UserContext::publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) {
  return runnerContext_->quoteSrc()->publishQuoteList(quotes, flags);
}

ResultStatus UserContext::publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                             int term, int flags) {
  return runnerContext_->quoteSrc()->publishQuoteSeries(code, bars, term, flags);
}

ResultStatus UserContext::publishQuoteItems(const ICodeID& code,
                                            const std::list<IDepthMarketData>& ticks, int flags) {
  return runnerContext_->quoteSrc()->publishQuoteItems(code, ticks, flags);
}

ResultStatus UserContext::publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                             int flags) {
  return runnerContext_->quoteSrc()->publishQuoteItems2(code, bars, flags);
}

ResultStatus UserContext::publishOp5(const std::string& key, const std::string& text, int flags) {
  return runnerContext_->quoteSrc()->publishOp5(key, text, flags);
}

ResultStatus UserContext::publishOp6(const std::string& key, const std::string& text, int flags) {
  return runnerContext_->quoteSrc()->publishOp6(key, text, flags);
}

ResultStatus UserContext::publishOp7(const std::string& key, const std::string& text, int flags) {
  return runnerContext_->quoteSrc()->publishOp7(key, text, flags);
}

ResultStatus UserContext::publishOp8(const std::string& key, const std::string& text, int flags) {
  return runnerContext_->quoteSrc()->publishOp8(key, text, flags);
}

ResultStatus UserContext::codeServiceQuery(const std::string& text, ICodeID& code, int flags) {
  return runnerContext_->quoteSrc()->codeServiceQuery(text, code, flags);
}

ResultStatus UserContext::currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                              int64 time) {
  return runnerContext_->quoteSrc()->currentCodeProperty(code, property, time);
}

ResultStatus UserContext::resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) {
  return runnerContext_->quoteSrc()->resolvedCodeProperty(code, property);
}

ResultStatus UserContext::resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) {
  return runnerContext_->quoteSrc()->resolvedCodeProperty3(code, property);
}

ResultStatus UserContext::codeRangeQuery(const std::string& prefix, int first, int limit,
                                         std::list<ICodeID>& codes) {
  return runnerContext_->quoteSrc()->codeRangeQuery(prefix, first, limit, codes);
}

ResultStatus UserContext::publishRecords(const std::string& name, const std::string& target,
                                         int valueType, const std::list<Record>& records,
                                         int flags) {
  return runnerContext_->dataSrc()->publishRecords(name, target, valueType, records,
                                                   flags | kPublishFlag, 0);
}

ResultStatus UserContext::readRecords(const std::string& name, const std::string& target,
                                      int64 begin, int64 end, std::list<Record>& records,
                                      int flags) {
  return runnerContext_->dataSrc()->readRecords(name, target, begin, end, neverCancelled, records,
                                                flags | kReadFlag, kReadWaitMs);
}

ResultStatus UserContext::readTargets(const std::string& name,
                                      const std::list<std::string>& targets, int64 time,
                                      std::map<std::string, Record>& records, int64 wait,
                                      int flags) {
  return runnerContext_->dataSrc()->readTargets(name, targets, time, neverCancelled, records,
                                                flags | kReadFlag, wait);
}

ResultStatus UserContext::readRecord(const std::string& name, const std::string& target, int64 time,
                                     Record& record, int flags) {
  return runnerContext_->dataSrc()->readRecord(name, target, time, neverCancelled, record,
                                               flags | kReadFlag, kReadWaitMs);
}

ResultStatus UserContext::readLatest(const std::string& name, const std::string& target,
                                     Record& record, int flags) {
  return runnerContext_->dataSrc()->readLatest(name, target, record, flags);
}

ResultStatus UserContext::readLatestMany(const std::list<TargetNamePair>& keys,
                                         std::list<LatestOfName>& latest, int flags) {
  return runnerContext_->dataSrc()->readLatestMany(keys, latest, flags);
}

void UserContext::requestRange(const std::string& name, const std::string& target, int64 begin,
                               int64 end, int flags) {
  runnerContext_->dataSrc()->requestRange(name, target, begin, end, 0, flags);
}

ResultStatus UserContext::dataDefine(const std::string& name, DataDefine& define) {
  return runnerContext_->dataSrc()->dataDefine(name, define);
}

}  // namespace orvane
