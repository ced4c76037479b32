#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include "services/IPlatform.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeCondService.h"
#include "tests/support/FakeDataMaintain.h"
#include "tests/support/FakeGeneralEventManager.h"
#include "tests/support/FakeIndexTrade.h"
#include "tests/support/FakeModuleLoader.h"
#include "tests/support/FakePublisher.h"
#include "tests/support/FakeRouter.h"
#include "tests/support/FakeSystemEvent.h"
#include "tests/support/FakeTimerEngine.h"
#include "tests/support/ManualClock.h"

namespace orvane::support {

/// A platform made of fakes: it does nothing of its own accord, notes what it is asked, and
/// answers as scripted. It is the installed platform from its construction to its destruction.
///
/// Frequencies: "1m" is 60000 ms, "90s" 90000 with the extra flag, "250ms", "2m", "1d" and "tick"
/// (0); all others give code 17.
class FakePlatform final : public IPlatform {
 public:
  FakePlatform();
  ~FakePlatform() override;

  CallLog calls;
  ManualClock clock;     ///< Behind `Timestamp::now`.
  ManualClock sysClock;  ///< Behind `Timestamp::sysNow`.
  FakeRouter routes;
  TimerBoard timers;
  ModuleShelf modules;
  FakeCondService conditions;
  std::shared_ptr<FakeGeneralEventManager> events;
  FakeIndexTrade indexes;
  FakeSystemEvent system;
  Published published;
  MaintainDesk maintenance;
  std::atomic<bool> timeEnabled{false};
  int64 zoneOffset = 8 * 3600 * 1000;  ///< Of the platform's own zone.

  /// The last blocking read of dictionary data, and what the reads answer: unset, one record for
  /// each target. Fill it in before other threads read.
  struct DataRead {
    std::list<std::string> targets;
    std::string name;
    int64 begin = 0;  ///< Or the time of a read of one instant.
    int64 end = 0;
    bool cancelled = false;  ///< What the caller's predicate answered.
    std::optional<std::list<TargetRecord>> answer;
  };
  DataRead dataRead;

  /// Runs whenever the condition service is asked for: the moment at which a trade source is
  /// attached or detached. Set it before calls come.
  std::function<void()> onConditionService;

  /// Runs before each look at the wall clock, on the thread that looks. Set it before calls come.
  std::function<void()> onSysNow;

  FakeRealtimeQuoteService& quotes() { return routes.realtime; }
  FakeCodeService& codes() { return routes.codes; }
  FakeDataService& data() { return routes.data; }
  FakeTradeService& trade() { return routes.trade; }

  /// The `NotifyRefCounter`s that live now, and all that ever did.
  int liveRefCounters() const { return liveRefCounters_; }
  int madeRefCounters() const { return madeRefCounters_; }

  /// Lets go of every spi that the services were given, as they do when they end.
  void forgetSpis();

  IServiceRouter* router() override;
  int64 nowUtcMs() override;
  int64 sysNowUtcMs() override;
  int64 zoneOffsetMs(OVTimeZone zone, int64 utcMs) override;
  bool isTimeEnabled() override;
  ThreadPoolBase* createThreadPool() override;
  std::unique_ptr<ITimerEngine> createTimer(int id) override;
  int nextTimerId() override;
  void notifyRefAcquired() override;
  void notifyRefReleased() override;
  std::unique_ptr<IModuleLoader> createModuleLoader() override;
  ResultStatus freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) override;
  IMDQuery dataRangeToQuery(const OVDataRange& range) override;
  ITimeType timeTypeOf(int64 term) override;
  EventSourceId eventSourceOf(const SourceId& source) override;
  ICondService* conditionService() override;
  IPublisher* createPublisher(RunnerModeFlag mode) override;
  std::shared_ptr<IGeneralEventManager> generalEventManager() override;
  IIndexTrade* indexTrade() override;
  ISystemEvent* systemEvent() override;
  std::list<std::string> targetsOfName(const std::string& name) override;
  ResultStatus readRecords(const std::string& target, const std::string& name, int64 begin,
                           int64 end, std::list<Record>& records,
                           const std::function<bool()>& cancelled, int64 waitMs,
                           int flags) override;
  ResultStatus readTargets(const std::list<std::string>& targets, const std::string& name,
                           int64 time, std::list<TargetRecord>& records,
                           const std::function<bool()>& cancelled, int64 waitMs,
                           int flags) override;
  IDataMaintain* createDataMaintain() override;

 private:
  std::atomic<int> liveRefCounters_{0};
  std::atomic<int> madeRefCounters_{0};
};

}  // namespace orvane::support
