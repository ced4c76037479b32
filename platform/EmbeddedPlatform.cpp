#include "platform/EmbeddedPlatform.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <system_error>

#include "platform/EmbeddedPlatformImpl.h"
#include "platform/core/LostCalls.h"
#include "platform/core/ModuleLoader.h"
#include "platform/core/Periods.h"
#include "platform/core/PlatformPool.h"
#include "platform/events/Publisher.h"
#include "platform/trade/EventSources.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

int64 wallNow() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

int64 steadyNow() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::shared_ptr<const detail::ZoneRules> zoneOrThrow(const std::string& name) {
  auto zone = detail::ZoneRules::find(name);
  if (zone == nullptr) throw std::invalid_argument("timeZone: \"" + name + "\" is not a time zone");
  return zone;
}

std::unique_ptr<detail::SqliteStore> storeOf(const TradeOptions& options) {
  if (options.storePath.empty()) return nullptr;
  return std::make_unique<detail::SqliteStore>(options.storePath);
}

/// The file that a path leads to, also where nothing stands yet.
std::filesystem::path resolved(std::filesystem::path path) {
  std::error_code error;
  for (int links = 0; links < 40 && std::filesystem::is_symlink(path, error); ++links)
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  const auto whole = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
  return error ? path : whole;
}

/// Whether two paths (UTF-8), of which either may be empty, name one file.
bool isSameFile(const std::string& one, const std::string& other) {
  if (one.empty() || other.empty()) return false;
  std::error_code error;
  return std::filesystem::equivalent(one, other, error) || resolved(one) == resolved(other);
}

/// The calendar day, YYYYMMDD, of a local time.
std::int32_t dayOf(int64 localMs) {
  using namespace std::chrono;
  const year_month_day date{floor<days>(sys_time<milliseconds>{milliseconds(localMs)})};
  return static_cast<int>(date.year()) * 10'000 +
         static_cast<std::int32_t>(static_cast<unsigned>(date.month()) * 100 +
                                   static_cast<unsigned>(date.day()));
}

}  // namespace

EmbeddedPlatform::Impl::Impl(PlatformOptions chosen)
    : options(std::move(chosen)),
      zone(zoneOrThrow(options.timeZone)),
      codes([this] { return now(); }, options.timeZone),
      generalEvents(std::make_shared<detail::GeneralEvents>(options.events, isPlayback(),
                                                            [this] { noteEvent(); })),
      index(codes, isPlayback()),
      systemEvents(*generalEvents),
      store(options.from, options.to, zone),
      publications({store, codes, [this] { return now(); }, [this] { noteEvent(); }, isPlayback()}),
      quotes(store, codes, [this] { noteRequest(); }),
      data(dictionaryParts()),
      tradeFile(storeOf(options.trade)),
      tradeState(options.trade),
      trade(
          tradeState, [this] { return now(); }, [this] { noteTradeRequest(); },
          [this](int64 time) { return dayOf(zone->toLocal(time)); }),
      grids(std::make_shared<detail::GridDesk>(gridParts())),
      desk(deskParts()),
      maintenance(store, codes, quotes.turn()),
      eventDesk(eventParts()),
      playback(parts(), options.speed, progress),
      live(parts(), options.speed, progress) {
  detail::PlatformPool::overrideThreads(options.poolThreads);
  resetClock();
  if (isPlayback()) {
    codes.deferChanges([this] { noteEvent(); });
    answerer = std::make_unique<detail::OverdueAnswerer>(quotes, pool.signal());
  } else {
    timerThread = std::make_unique<detail::TimerThread>(timers);
  }
}

EmbeddedPlatform::Impl::~Impl() {
  cancelled.store(true);
  publishers->freeAll();
}

detail::DriverParts EmbeddedPlatform::Impl::parts() {
  return {loop, pool, *timers, quotes, desk, eventDesk, data, store, clock, cancelled};
}

detail::TradeDesk::Parts EmbeddedPlatform::Impl::deskParts() {
  return {tradeState, store,  options.trade,   [this] { return now(); },
          cancelled,  *grids, tradeFile.get(), isPlayback()};
}

detail::GridDesk::Parts EmbeddedPlatform::Impl::gridParts() {
  return {tradeState, trade, options.trade,
          [this](const std::string& text, ICodeID& code) {
            return codes.codeIdOf(text, code).code == 0;
          },
          [this] { noteTradeRequest(); }};
}

detail::EventDesk::Parts EmbeddedPlatform::Impl::eventParts() {
  return {*generalEvents, index, publications, codes, quotes, desk, cancelled};
}

detail::DictionaryService::Parts EmbeddedPlatform::Impl::dictionaryParts() {
  if (isSameFile(options.trade.storePath, options.dictionary.file))
    throw std::invalid_argument("dictionary: \"" + options.dictionary.file +
                                "\" is the store of the trade side");
  return {isPlayback(),
          options.dictionary.file,
          [this] { return now(); },
          [this] { return hasTime.load(); },
          [this] { return pool.signal().quiet() && !loop.onLoopThread(); },
          [this] { noteDictionaryRequest(); },
          [this] { loop.post([this] { data.sweep(); }); },
          steadyNow,
          cancelled};
}

int64 EmbeddedPlatform::Impl::now() const { return isPlayback() ? clock.load() : wallNow(); }

void EmbeddedPlatform::Impl::noteRequest() {
  if (!isPlayback()) {
    loop.post([this] {
      const std::lock_guard turn(quotes.turn());
      quotes.serve();
    });
    return;
  }
  // Called for the first time before the thread exists: nobody asks while a platform is made.
  answerer->noteRequest();
  if (options.speed > 0) loop.wake();
}

void EmbeddedPlatform::Impl::noteTradeRequest() {
  if (!isPlayback())
    loop.post([this] { desk.serve(); });
  else if (options.speed > 0)
    loop.wake();
}

void EmbeddedPlatform::Impl::serveEvents() {
  bool isAnyLeft = false;
  {
    const std::lock_guard turn(quotes.turn());
    isAnyLeft = eventDesk.serveTurn();
  }
  if (isAnyLeft) postTelling();
}

void EmbeddedPlatform::Impl::postTelling() {
  if (isTellingPosted.exchange(true)) return;
  loop.post([this] {
    isTellingPosted.store(false);  // First, so that what comes from now on is not forgotten.
    serveEvents();
  });
}

void EmbeddedPlatform::Impl::noteEvent() {
  if (!isPlayback())
    postTelling();
  else if (options.speed > 0)
    loop.wake();
}

void EmbeddedPlatform::Impl::noteDictionaryRequest() {
  if (!isPlayback())
    loop.post([this] { data.serve(); });
  else if (options.speed > 0)
    loop.wake();
}

void EmbeddedPlatform::Impl::resetClock() {
  const std::lock_guard turn(quotes.turn());
  int64 begin = store.beginTime();
  // Without market data the first event of another kind says when it all begins.
  const bool eventsAlone = options.from == kUnsetTime && !store.hasRecords();
  const int64 firstEvent = std::min(generalEvents->firstTime(), index.firstTime());
  if (eventsAlone && firstEvent != kUnsetTime) begin = firstEvent;
  clock.store(begin);
  hasTime.store(!eventsAlone || firstEvent != kUnsetTime);
  progress.now.store(begin);
  quotes.startAt(begin);
  eventDesk.startAt(begin, options.to);
}

void EmbeddedPlatform::Impl::run(const std::function<void(const PlaybackProgress&)>& report) {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  std::string failure;
  grids->prepare();
  const auto tell = [&] {
    if (report)
      report({progress.now, progress.begin, progress.end, progress.delivered, progress.total});
  };
  if (!isPlayback()) drain();
  loop.post([&] {
    try {
      if (isPlayback())
        playback.run();
      else
        live.run();
    } catch (const std::exception& error) {
      failure = std::string("the run ended early: ") + error.what();
    } catch (...) {
      failure = "the run ended early: something was thrown that is no exception";
    }
    const std::lock_guard lock(mutex);
    done = true;
    ended.notify_all();
  });
  {
    std::unique_lock lock(mutex);
    while (!ended.wait_for(lock, std::chrono::milliseconds(100), [&] { return done; })) {
      lock.unlock();
      tell();
      lock.lock();
    }
  }
  if (!isPlayback()) drain();
  cancelled.store(false);
  tell();
  checkWritten(std::move(failure));
}

void EmbeddedPlatform::Impl::checkWritten(std::string failure) {
  const auto add = [&failure](const std::string& more) {
    failure += (failure.empty() || more.empty() ? "" : "; ") + more;
  };
  add(data.takeFailure());
  try {
    if (tradeFile != nullptr) tradeFile->flush();
  } catch (const std::runtime_error& error) {
    add(error.what());
  }
  if (!failure.empty()) throw std::runtime_error(failure);
}

void EmbeddedPlatform::Impl::drain() {
  const auto settled = [this] {
    return pool.signal().quiet() && !quotes.book().anyWaiting() && !quotes.book().endedMark() &&
           !eventDesk.anyWaiting() && !data.anyWaiting();
  };
  do {
    pool.signal().wait([this] { return pool.signal().quiet(); });
    loop.runAndWait([this] {
      if (isPlayback()) {
        playback.settleOnly();
      } else {
        {
          const std::lock_guard turn(quotes.turn());
          quotes.serve();
        }
        data.serve();
        desk.serve();
        serveEvents();
        desk.persist(true);
      }
    });
  } while (!settled());
}

EmbeddedPlatform::EmbeddedPlatform(PlatformOptions options)
    : impl_(std::make_unique<Impl>(std::move(options))) {}

EmbeddedPlatform::~EmbeddedPlatform() = default;

ICodeID EmbeddedPlatform::addInstrument(const Instrument& instrument) {
  ICodeID code = impl_->codes.add(instrument);
  Instrument known = instrument;
  if (known.timeZone.empty()) known.timeZone = impl_->options.timeZone;
  impl_->trade.addContract(code, known);
  return code;
}

bool EmbeddedPlatform::findCode(const std::string& text, ICodeID& code) const {
  return impl_->codes.codeIdOf(text, code).code == 0;
}

void EmbeddedPlatform::addBars(BarSeries series) {
  impl_->store.add(std::make_shared<const BarSeries>(std::move(series)));
  impl_->resetClock();
}

void EmbeddedPlatform::addTicks(TickSeries series) {
  impl_->store.add(std::make_shared<const TickSeries>(std::move(series)));
  impl_->resetClock();
}

void EmbeddedPlatform::addIndexes(const std::vector<IndexComposition>& compositions) {
  impl_->index.add(compositions);
  impl_->resetClock();
}

void EmbeddedPlatform::addPublished(const ICodeID& code, const std::string& frequency) {
  int64 term = 0;
  bool extraFlag = false;
  if (detail::parseFrequency(frequency, term, extraFlag).code != 0)
    throw std::invalid_argument("\"" + gbkToUtf8(frequency) +
                                "\" is not a period such as 1m, 5m, 1d");
  const std::lock_guard turn(impl_->quotes.turn());
  const ResultStatus status = impl_->publications.makeKnown(code, term);
  if (status.code != 0) throw std::invalid_argument(gbkToUtf8(status.message));
}

ResultStatus EmbeddedPlatform::publishEvent(const std::string& target, const std::string& name,
                                            const std::string& key,
                                            std::map<std::string, std::string> fields) {
  if (!key.empty()) fields["key"] = key;
  return impl_->generalEvents->publishEvent(target, fields, name);
}

void EmbeddedPlatform::addRecords(const std::vector<RecordPublication>& records) {
  impl_->data.load(records);
}

int64 EmbeddedPlatform::earlierRecords() const { return impl_->data.earlierRecords(); }

void EmbeddedPlatform::setSymbolHook(SymbolHook hook) { impl_->symbolHook = std::move(hook); }

void EmbeddedPlatform::run(const std::function<void(const PlaybackProgress&)>& progress) {
  impl_->run(progress);
}

void EmbeddedPlatform::rewind() {
  // As long as the clock shows when it was.
  impl_->loop.runAndWait([this] { impl_->desk.persist(true); });
  {
    const std::lock_guard turn(impl_->quotes.turn());
    impl_->eventDesk.dropWaiting();
    impl_->codes.forgetChanges();
    impl_->quotes.rewind();
  }
  impl_->resetClock();
  std::string failure;
  impl_->loop.runAndWait([this, &failure] {
    impl_->desk.rewind();
    try {
      impl_->data.rewind();
    } catch (const std::exception& error) {
      failure = error.what();
    }
  });
  if (!failure.empty()) throw std::runtime_error(failure);
}

void EmbeddedPlatform::cancel() {
  impl_->cancelled.store(true);
  impl_->loop.wake();
}

void EmbeddedPlatform::drain() { impl_->drain(); }

void EmbeddedPlatform::checkWritten() { impl_->checkWritten(); }

std::string EmbeddedPlatform::takeLostCalls() { return detail::LostCalls::shared().take(); }

std::vector<AccountResult> EmbeddedPlatform::tradeResults() const { return impl_->trade.results(); }

std::vector<AccountResult> EmbeddedPlatform::takeTradeResults() {
  return impl_->trade.takeResults();
}

std::vector<AccountGlance> EmbeddedPlatform::glanceAtTrading() const {
  return impl_->trade.glance();
}

// The entry points behind the services.

IServiceRouter* EmbeddedPlatform::router() { return impl_.get(); }
int64 EmbeddedPlatform::nowUtcMs() { return impl_->now(); }
int64 EmbeddedPlatform::sysNowUtcMs() { return wallNow(); }

int64 EmbeddedPlatform::zoneOffsetMs(OVTimeZone zone, int64 utcMs) {
  return zone == OVTimeZone::Utc ? 0 : impl_->zone->offsetMs(utcMs);
}

bool EmbeddedPlatform::isTimeEnabled() { return impl_->options.timeInLog; }

ThreadPoolBase* EmbeddedPlatform::createThreadPool() { return new detail::PlatformPool; }

std::unique_ptr<ITimerEngine> EmbeddedPlatform::createTimer(int id) {
  return std::make_unique<detail::QueuedTimer>(impl_->timers, id);
}

int EmbeddedPlatform::nextTimerId() { return impl_->timerIds.fetch_add(1) + 1; }
void EmbeddedPlatform::notifyRefAcquired() { impl_->pool.signal().acquireRef(); }
void EmbeddedPlatform::notifyRefReleased() { impl_->pool.signal().releaseRef(); }

std::unique_ptr<IModuleLoader> EmbeddedPlatform::createModuleLoader() {
  return std::make_unique<detail::ModuleLoader>(impl_->symbolHook);
}

ResultStatus EmbeddedPlatform::freqToTerm(const std::string& frequency, int64& term,
                                          bool& extraFlag) {
  return detail::parseFrequency(frequency, term, extraFlag);
}

IMDQuery EmbeddedPlatform::dataRangeToQuery(const OVDataRange& range) {
  return detail::queryOfRange(range);
}

ITimeType EmbeddedPlatform::timeTypeOf(int64 term) { return detail::timeTypeOfTerm(term); }

EventSourceId EmbeddedPlatform::eventSourceOf(const SourceId& source) {
  return detail::eventSourcesOf(source);
}

ICondService* EmbeddedPlatform::conditionService() { return &impl_->grids->details(); }
IGridConditions& EmbeddedPlatform::gridConditions() { return *impl_->grids; }
IPublisher* EmbeddedPlatform::createPublisher(RunnerModeFlag) {
  return new detail::Publisher({impl_->publishers, impl_->publications, impl_->codes,
                                *impl_->generalEvents, impl_->data, [this] { return nowUtcMs(); }});
}

std::shared_ptr<IGeneralEventManager> EmbeddedPlatform::generalEventManager() {
  return impl_->generalEvents;
}

IIndexTrade* EmbeddedPlatform::indexTrade() { return &impl_->index; }
ISystemEvent* EmbeddedPlatform::systemEvent() { return &impl_->systemEvents; }

std::list<std::string> EmbeddedPlatform::targetsOfName(const std::string& name) {
  return impl_->data.targetsOfName(name);
}

ResultStatus EmbeddedPlatform::readRecords(const std::string& target, const std::string& name,
                                           int64 begin, int64 end, std::list<Record>& records,
                                           const std::function<bool()>& cancelled, int64 waitMs,
                                           int /*flags*/) {
  return impl_->data.readRecords({name, target, begin, end}, records, cancelled, waitMs);
}

ResultStatus EmbeddedPlatform::readTargets(const std::list<std::string>& targets,
                                           const std::string& name, int64 time,
                                           std::list<TargetRecord>& records,
                                           const std::function<bool()>& cancelled, int64 waitMs,
                                           int /*flags*/) {
  return impl_->data.readTargets(targets, name, time, records, cancelled, waitMs);
}

IDataMaintain* EmbeddedPlatform::createDataMaintain() {
  return new detail::DataMaintain(impl_->maintenance);
}

}  // namespace orvane
