#include "tests/support/FakePlatform.h"

#include <map>
#include <string>

#include "shared/CodeTables.h"
#include "tests/support/ManualPool.h"

namespace orvane::support {

FakePlatform::FakePlatform()
    : routes(calls),
      timers(calls),
      modules(calls),
      conditions(calls),
      events(std::make_shared<FakeGeneralEventManager>(calls)),
      indexes(calls),
      system(calls),
      maintenance(calls) {
  installPlatform(this);
}

FakePlatform::~FakePlatform() {
  forgetSpis();
  installPlatform(nullptr);
}

void FakePlatform::forgetSpis() {
  routes.realtime.forget();
  routes.data.forget();
  routes.trade.forget();
  events->forget();
  indexes.forget();
  timers.forget();
  maintenance.forget();
}

IServiceRouter* FakePlatform::router() { return &routes; }
int64 FakePlatform::nowUtcMs() { return clock.now(); }

int64 FakePlatform::sysNowUtcMs() {
  if (onSysNow) onSysNow();
  return sysClock.now();
}

int64 FakePlatform::zoneOffsetMs(OVTimeZone zone, int64 /*utcMs*/) {
  return zone == OVTimeZone::Platform ? zoneOffset : 0;
}

bool FakePlatform::isTimeEnabled() { return timeEnabled; }

ThreadPoolBase* FakePlatform::createThreadPool() {
  calls.record("pool.create");
  return &ManualPool::shared();
}

std::unique_ptr<ITimerEngine> FakePlatform::createTimer(int id) { return timers.create(id); }
int FakePlatform::nextTimerId() { return timers.nextId(); }

void FakePlatform::notifyRefAcquired() {
  ++liveRefCounters_;
  ++madeRefCounters_;
}

void FakePlatform::notifyRefReleased() { --liveRefCounters_; }

std::unique_ptr<IModuleLoader> FakePlatform::createModuleLoader() { return modules.createLoader(); }

ResultStatus FakePlatform::freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) {
  static const std::map<std::string, std::pair<int64, bool>> known = {
      {"tick", {0, false}},    {"250ms", {250, false}}, {"1m", {60000, false}},
      {"2m", {120000, false}}, {"90s", {90000, true}},  {"1d", {86400000, false}}};
  const auto it = known.find(frequency);
  if (it == known.end()) return {17, statusMessage(17)};
  term = it->second.first;
  extraFlag = it->second.second;
  return {};
}

IMDQuery FakePlatform::dataRangeToQuery(const OVDataRange& range) {
  calls.record("common.dataRangeToQuery",
               std::to_string(range.term) + " mode=" + std::to_string(range.mode) + " begin=" +
                   std::to_string(range.beginTime) + " end=" + std::to_string(range.endTime) +
                   " flags=" + std::to_string(range.flags));
  return {range.code, range.beginTime, range.endTime, kNoLimit,
          static_cast<std::int32_t>(range.flags)};
}

ITimeType FakePlatform::timeTypeOf(int64 term) {
  return term == 60000 ? ITimeType::Minute : ITimeType::Day;
}

EventSourceId FakePlatform::eventSourceOf(const SourceId& source) {
  return static_cast<EventSourceId>(source.sourceType & 255);
}

ICondService* FakePlatform::conditionService() {
  if (onConditionService) onConditionService();
  return &conditions;
}

IPublisher* FakePlatform::createPublisher(RunnerModeFlag mode) {
  calls.record("publisher.create", std::to_string(mode));
  return new FakePublisher(calls, published);
}

std::shared_ptr<IGeneralEventManager> FakePlatform::generalEventManager() { return events; }
IIndexTrade* FakePlatform::indexTrade() { return &indexes; }
ISystemEvent* FakePlatform::systemEvent() { return &system; }

std::list<std::string> FakePlatform::targetsOfName(const std::string& name) {
  calls.record("data.targetsOfName", name);
  return {name + "-target"};
}

ResultStatus FakePlatform::readRecords(const std::string& target, const std::string& name,
                                       int64 begin, int64 end, std::list<Record>& records,
                                       const std::function<bool()>& cancelled, int64 waitMs,
                                       int flags) {
  dataRead.targets = {target};
  dataRead.name = name;
  dataRead.begin = begin;
  dataRead.end = end;
  dataRead.cancelled = cancelled();
  records.push_back({begin, end, name});
  return calls.record("data.readRecords", name + "/" + target + " wait=" + std::to_string(waitMs) +
                                              " flags=" + std::to_string(flags));
}

ResultStatus FakePlatform::readTargets(const std::list<std::string>& targets,
                                       const std::string& name, int64 time,
                                       std::list<TargetRecord>& records,
                                       const std::function<bool()>& cancelled, int64 waitMs,
                                       int flags) {
  dataRead.targets = targets;
  dataRead.name = name;
  dataRead.begin = time;
  dataRead.cancelled = cancelled();
  if (dataRead.answer)
    records = *dataRead.answer;
  else
    for (const std::string& target : targets) records.push_back({target, {{time, 0, name}}});
  return calls.record("data.readTargets",
                      name + " wait=" + std::to_string(waitMs) + " flags=" + std::to_string(flags));
}

IDataMaintain* FakePlatform::createDataMaintain() { return maintenance.create(); }

}  // namespace orvane::support
