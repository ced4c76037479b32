#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/SourceId.h"

namespace orvane {

class ICondService;
class IDataMaintain;
class IGeneralEventManager;
class IIndexTrade;
class IModuleLoader;
class IPublisher;
class IServiceRouter;
class ISystemEvent;
class ITimerEngine;
class ThreadPoolBase;

/// The one object behind every static entry point of the services: what a platform implements to
/// stand behind the library. Any thread may call any operation; none blocks.
///
/// The installer owns it. It must stay installed from before the first runner is made until after
/// the last one is gone.
class ORVANE_API IPlatform {
 public:
  IPlatform() = default;
  IPlatform(const IPlatform&) = delete;
  IPlatform& operator=(const IPlatform&) = delete;
  virtual ~IPlatform();

  /// The services of market data, trade, codes and dictionary. The platform keeps them.
  virtual IServiceRouter* router() = 0;

  // Time.
  virtual int64 nowUtcMs() = 0;     ///< By the platform's clock: simulated in playback.
  virtual int64 sysNowUtcMs() = 0;  ///< By the wall clock.
  /// Milliseconds to add to a UTC time for the calendar of `zone`.
  virtual int64 zoneOffsetMs(OVTimeZone zone, int64 utcMs) = 0;
  /// Whether log lines begin with the time.
  virtual bool isTimeEnabled() = 0;

  // Threads and timers.
  virtual ThreadPoolBase* createThreadPool() = 0;  ///< Owned by the caller.
  /// A timer of this id, which does not run yet.
  virtual std::unique_ptr<ITimerEngine> createTimer(int id) = 0;
  /// An id that no timer had.
  virtual int nextTimerId() = 0;
  virtual void notifyRefAcquired() = 0;  ///< A `NotifyRefCounter` was made.
  virtual void notifyRefReleased() = 0;  ///< A `NotifyRefCounter` is gone.

  /// Loads one shared library.
  virtual std::unique_ptr<IModuleLoader> createModuleLoader() = 0;

  // Market data.
  /// As `QuoteUtils::freqToTerm`.
  virtual ResultStatus freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) = 0;
  /// As `CommonMethod::DataRange2IMDQuery`.
  virtual IMDQuery dataRangeToQuery(const OVDataRange& range) = 0;
  /// As `CommonMethod::MilFrequency2ITimeType`.
  virtual ITimeType timeTypeOf(int64 term) = 0;

  // Trade.
  /// As `TradeUtils::sourceID2EventSource`.
  virtual EventSourceId eventSourceOf(const SourceId& source) = 0;
  virtual ICondService* conditionService() = 0;  ///< May be null.

  // Dictionary, events, index, publisher.
  virtual IPublisher* createPublisher(RunnerModeFlag mode) = 0;  ///< Owned by the caller.
  /// Who tells general events.
  virtual std::shared_ptr<IGeneralEventManager> generalEventManager() = 0;
  /// What indexes are made of. The platform keeps it.
  virtual IIndexTrade* indexTrade() = 0;
  /// Events of the system itself. The platform keeps it.
  virtual ISystemEvent* systemEvent() = 0;
  /// The targets of a dictionary.
  virtual std::list<std::string> targetsOfName(const std::string& name) = 0;
  /// The records of a target from the key `begin` to the key `end`. Gives up when `cancelled`
  /// answers true, or after `waitMs` milliseconds.
  virtual ResultStatus readRecords(const std::string& target, const std::string& name, int64 begin,
                                   int64 end, std::list<Record>& records,
                                   const std::function<bool()>& cancelled, int64 waitMs,
                                   int flags) = 0;
  /// The newest record at or before the key `time` of each target; no targets mean all.
  virtual ResultStatus readTargets(const std::list<std::string>& targets, const std::string& name,
                                   int64 time, std::list<TargetRecord>& records,
                                   const std::function<bool()>& cancelled, int64 waitMs,
                                   int flags) = 0;

  virtual IDataMaintain* createDataMaintain() = 0;  ///< Owned by the caller.
};

/// Puts `platform` behind every static entry point; null takes the present one away. Returns the
/// one that was installed before. Not to be called while a runner exists.
ORVANE_API IPlatform* installPlatform(IPlatform* platform);

/// The installed platform. Throws `std::logic_error` if there is none.
ORVANE_API IPlatform& installedPlatform();

}  // namespace orvane
