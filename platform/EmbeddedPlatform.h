#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/dictionary/DictionaryOptions.h"
#include "platform/dictionary/RecordPublication.h"
#include "platform/events/EventOptions.h"
#include "platform/events/IndexFile.h"
#include "platform/market/Series.h"
#include "platform/reference/Instrument.h"
#include "platform/trade/TradeGlance.h"
#include "platform/trade/TradeOptions.h"
#include "platform/trade/TradeResults.h"
#include "platform/trade/conditions/IGridConditions.h"
#include "services/IPlatform.h"
#include "shared/Export.h"

namespace orvane {

/// How an embedded platform runs. Set before it is made.
struct PlatformOptions {
  /// Whose clock counts.
  enum class Mode {
    Playback,  ///< A simulated clock that the driver moves, in lockstep with the runners.
    Live,      ///< The system's clock; the feed is paced in real time.
  };
  Mode mode = Mode::Playback;    ///< Playback unless the host says otherwise.
  int poolThreads = 0;           ///< 0: as many as the library asks for.
  std::string timeZone = "UTC";  ///< IANA name of the zone that time zone 0 of `Timestamp` means.
  bool timeInLog = true;         ///< Whether log lines begin with the platform's time.
  /// Playback: simulated time per real time; 0 means as fast as it can. Live: how fast the feed's
  /// own time runs; 0 counts as 1.
  double speed = 0;
  int64 from = kUnsetTime;  ///< Playback starts here; what lies before is history. UTC ms.
  int64 to = kUnsetTime;    ///< Market data at or after this instant is not played. UTC ms.
  TradeOptions trade = {};  ///< The accounts and the paper exchange.
  DictionaryOptions dictionary = {};  ///< Where dictionary records are kept.
  EventOptions events = {};           ///< The general events that a script tells.
};

/// How far a run has come; handed to the host's progress call-back.
struct PlaybackProgress {
  int64 now = 0;              ///< Simulated time, UTC milliseconds.
  int64 begin = 0;            ///< First instant of the data to be played.
  int64 end = 0;              ///< The last one.
  std::size_t delivered = 0;  ///< Market records played so far.
  std::size_t total = 0;      ///< Market records to be played.
};

/// The platform that comes with the library: market data playback and live pacing in the host's
/// own process. Install it with `installPlatform` before the first runner is made; it must outlive
/// every runner and every task.
///
/// Order of use: make it, add instruments and series, install it, create and start runners, call
/// `run`, stop the runners, call `drain`, take it away.
class ORVANE_API EmbeddedPlatform final : public IPlatform {
 public:
  /// Throws `std::invalid_argument` if an option is wrong, and `std::runtime_error`, which names
  /// the path, if the trade store or the dictionary cannot be written, a `std::system_error` among
  /// them where the disk is at fault; all in UTF-8.
  explicit EmbeddedPlatform(PlatformOptions options = {});
  ~EmbeddedPlatform() override;

  /// Adds an instrument and returns its code. An instrument of the same code and market is
  /// replaced and keeps its id. Throws `std::invalid_argument` with a UTF-8 text that names the
  /// field and the value if one is wrong.
  ICodeID addInstrument(const Instrument& instrument);

  /// The code of a text such as "IF2101.CFFEX" (GBK); false if there is none.
  bool findCode(const std::string& text, ICodeID& code) const;

  /// Adds market data; only before `run`. One bar series for each code and period, and one tick
  /// series for each code: a second one throws `std::invalid_argument`.
  void addBars(BarSeries series);
  /// The same for ticks.
  void addTicks(TickSeries series);

  /// Adds what indexes are made of, as `loadIndexes` reads it; after their instruments and only
  /// before `run`. Throws `std::invalid_argument` with a UTF-8 text that begins with the place of
  /// the composition if a code is not there, an index is made of itself, or has two compositions of
  /// one time; nothing is added then.
  void addIndexes(const std::vector<IndexComposition>& compositions);

  /// Makes it known that runners will publish bars or ticks ("tick") of a code, so that others can
  /// subscribe them before the first. Only before `run`. Throws `std::invalid_argument`, in UTF-8,
  /// if the code is not there or fed by files, or the frequency is none.
  void addPublished(const ICodeID& code, const std::string& frequency);

  /// Tells a general event, as soon as everything is quiet, to those who subscribed its target and
  /// name, and its key if they chose by keys; see `ScriptedEvent`. Texts are GBK. Any thread may
  /// call it. Code -2 if the target or the name is empty.
  ResultStatus publishEvent(const std::string& target, const std::string& name,
                            const std::string& key = {},
                            std::map<std::string, std::string> fields = {});

  /// Adds dictionary records, only before the first runner is made. What the dictionary's file
  /// holds already, alike in all parts, is not added again. In playback a record is seen from the
  /// later of its key, which is a time, and its publication's `time` on; in live mode at once.
  /// Throws `std::invalid_argument` if a name or target is empty, and `std::runtime_error`, which
  /// names the path, if they cannot be stored; both in UTF-8, and nothing is added then.
  void addRecords(const std::vector<RecordPublication>& records);

  /// How many dictionary records earlier runs published into the dictionary's file, which this one
  /// finds; 0 in memory. Any thread may call it.
  int64 earlierRecords() const;

  /// Is asked for each symbol that a module loader found; what it returns is handed out in its
  /// place. Lets a host stand between the runner and a strategy.
  using SymbolHook = std::function<void*(const std::string& symbol, void* address)>;
  /// Sets it; before the first runner is made. Empty: none.
  void setSymbolHook(SymbolHook hook);

  /// Plays all market data. Waits first until every runner is quiet and its requests are served,
  /// blocks until the data's end or `cancel`, and returns once every runner has digested it.
  /// If a grid condition of the options does not fit its code, `std::invalid_argument`, in UTF-8,
  /// names field and value before anything is played.
  /// `progress` is called on the calling thread, some ten times a second. With a trade store, what
  /// happened is on the disk when it returns, also after `cancel`; if that or a publication into
  /// the dictionary could not be written, `std::runtime_error`, in UTF-8, names the path. It also
  /// tells that the run ended early, for want of memory as a rule.
  void run(const std::function<void(const PlaybackProgress&)>& progress = {});

  /// Takes playback back to its start, as if nothing had been played: the clock, the feed, and
  /// the history. Only while every runner is quiet; standing requests and timers go on as they
  /// are. Reset the runners after it, and `run` plays everything again. Dictionary records that
  /// runners published are gone, also from the file; throws `std::runtime_error`, in UTF-8, which
  /// names the path, if that cannot be written.
  void rewind();

  /// Ends `run` before the next instant. Any thread may call it, also a strategy's.
  void cancel();

  /// Blocks until every runner is quiet: nothing pending, nothing running. Any thread but those
  /// that call back may call it, also while `run` is under way.
  void drain();

  /// Waits until everything that happened is on the disk. Throws as `run` does if something could
  /// not be written since the last call of either: for what runners do before and after a run, or
  /// without one.
  void checkWritten();

  /// What call-backs and tasks threw, since the last time anybody asked, in one line such as
  /// "2 calls were lost, the first: a trade call-back threw: std::bad_alloc"; empty if nothing was
  /// lost. Counts for the whole process.
  static std::string takeLostCalls();

  /// What the accounts did since the start or the last `rewind`, in the order of the options. Only
  /// while every runner is quiet.
  std::vector<AccountResult> tradeResults() const;

  /// The same without a copy. Afterwards the platform knows no order, fill or curve of before, and
  /// `rewind` alone makes it fit for another run. Only when no runner trades any more.
  std::vector<AccountResult> takeTradeResults();

  /// How the accounts stand at this moment, in the order of the options: for a view of a run that
  /// is under way. Any thread may call it at any time, some times a second: it holds the exchange's
  /// own lock for as long as it takes to reckon with the last bars and to add up what is held, and
  /// a playback's results are the same.
  std::vector<AccountGlance> glanceAtTrading() const;

  /// The grid conditions of the run; those of the options are there from the start.
  IGridConditions& gridConditions();

  // IPlatform.
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
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvane
