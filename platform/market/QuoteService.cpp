#include "platform/market/QuoteService.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "platform/core/LostCalls.h"
#include "platform/core/Periods.h"
#include "platform/core/WorkerPool.h"
#include "services/Common/ICodeService.h"
#include "shared/CodeTables.h"
#include "shared/GbkLiteral.h"
#include "shared/TextForms.h"

namespace orvane::detail {
namespace {

const ResultStatus kFine;

std::string termText(const TermPair& term) {
  static constexpr const char* kNames[] = {"?", "x500ms", "s", "m", "h", "d", "w", "M", "y"};
  const bool known = term.timeType >= 1 && term.timeType <= 8;
  return std::to_string(term.count) + kNames[known ? term.timeType : 0];
}

TermPair inLargestUnit(const TermPair& term) {
  const int64 ms = periodMsOf(term);
  if (ms <= 0) return term;
  const ITimeType unit = timeTypeOfTerm(ms);
  return {static_cast<std::int32_t>(unit), static_cast<std::int32_t>(ms / unitMs(unit))};
}

bool asksForTicks(const TermPair& term) {
  return term.timeType == static_cast<int>(ITimeType::Year) && term.count == 0;
}

void noteOrigin(MarketRequest& request) {
  request.posted = std::chrono::steady_clock::now();
  request.isOfTask = detail::WorkerPool::currentOrigin().root != 0;
}

}  // namespace

QuoteService::QuoteService(MarketStore& store, ICodeService& codes, std::function<void()> onRequest)
    : store_(store), codes_(codes), book_(std::move(onRequest)) {}

// What strategies ask.

ResultStatus QuoteService::subscribeQuote(const ICodeID& code, const std::shared_ptr<QuoteSpi>& spi,
                                          int flags) {
  std::string name;
  if (spi == nullptr) return statusWith(-2, "spi");
  if (ResultStatus status = codes_.codeNameOf(code, name); status.code != 0) return status;
  if (store_.ticksOf(code.id) == nullptr)
    return statusWith(1, codeText(code) + " " + "没有行情数据"_gbk);
  if (book_.hasQuote(code.id, spi.get())) return {};
  auto request = std::make_shared<MarketRequest>();
  request->kind = MarketRequest::Kind::Quote;
  request->query.code = code;
  request->query.flags = flags;
  noteOrigin(*request);
  book_.add(std::move(request), spi);
  return {};
}

ResultStatus QuoteService::unsubscribeQuote(const ICodeID& code,
                                            const std::shared_ptr<QuoteSpi>& spi, int /*flags*/) {
  book_.cancelQuote(code.id, spi.get());
  return {};
}

ResultStatus QuoteService::subscribeBars(const IMDQuery& query, const TermPair& term,
                                         const std::shared_ptr<QuoteSpi>& spi, int requestId) {
  std::string name;
  if (spi == nullptr) return statusWith(-2, "spi");
  if (ResultStatus status = codes_.codeNameOf(query.code, name); status.code != 0) return status;
  auto request = std::make_shared<MarketRequest>();
  request->id = requestId;
  request->query = query;
  if (asksForTicks(term)) {
    if (store_.ticksOf(query.code.id) == nullptr)
      return statusWith(8, codeText(query.code) + " " + "没有Tick数据"_gbk);
    request->kind = MarketRequest::Kind::Ticks;
  } else {
    request->term = inLargestUnit(term);
    if (periodMsOf(request->term) <= 0 || store_.sourceOf(query.code.id, request->term) == nullptr)
      return statusWith(
          17, codeText(query.code) + " " + termText(request->term) + " " + "没有可用的数据"_gbk);
    request->kind = MarketRequest::Kind::Bars;
  }
  noteOrigin(*request);
  book_.add(std::move(request), spi);
  return {};
}

ResultStatus QuoteService::cancelRequest(int requestId) {
  book_.cancel(requestId);
  return {};
}

ResultStatus QuoteService::unsubscribeSpi(const std::shared_ptr<QuoteSpi>& spi) {
  book_.cancelSpi(spi.get());
  return {};
}

ResultStatus QuoteService::getQuote(const ICodeID& code, IDepthMarketData& quote, int /*flags*/) {
  std::string name;
  if (ResultStatus status = codes_.codeNameOf(code, name); status.code != 0) return status;
  const MarketStream* stream = store_.ticksOf(code.id);
  const std::size_t known = stream == nullptr ? 0 : stream->known.load();
  if (known == 0 || !stream->fillTick(known - 1, quote)) return statusWith(4, codeText(code));
  const std::lock_guard lock(shiftMutex_);
  shift_.show(quote);
  return {};
}

// Serving requests.

bool QuoteService::serve() {
  bool any = false;
  while (true) {
    if (book_.endedMark()) sweep();
    const std::shared_ptr<MarketRequest> request = book_.anyWaiting() ? book_.takeNext() : nullptr;
    if (request == nullptr) return any;
    any = true;
    serveOne(request, true);
  }
}

bool QuoteService::serveOverdue(const Overdue& overdue) {
  if (delivering_ == 0 && book_.endedMark()) sweep();
  bool any = false;
  while (const std::shared_ptr<MarketRequest> request = book_.takeOverdue(overdue)) {
    any = true;
    serveOne(request, false);
  }
  return any;
}

void QuoteService::sweep() {
  book_.takeEndedMark();
  const auto ended = [](const auto& request) { return request->ended.load(); };
  for (MarketStream* stream : store_.streams()) std::erase_if(stream->live, ended);
  for (const auto& series : store_.derived()) std::erase_if(series->live, ended);
}

void QuoteService::serveOne(const std::shared_ptr<MarketRequest>& request, bool lockstep) {
  if (request->ended.load()) return;
  request->who->serving = true;
  switch (request->kind) {
    case MarketRequest::Kind::Quote:
      store_.ticksOf(request->query.code.id)->live.push_back(request);
      break;
    case MarketRequest::Kind::Ticks:
      serveTicks(request, lockstep);
      break;
    case MarketRequest::Kind::Bars:
      serveBars(request, lockstep);
      break;
  }
  request->who->serving = false;
}

bool QuoteService::goesOn(const MarketRequest& request) const {
  // The clock stands just after what is over; an end at or before that lets nothing more in.
  return !request.ended.load() && request.query.endTime > shift_.shown(closedThrough_ + 1);
}

template <typename Record, typename Fill, typename Send>
void QuoteService::sendHistory(const MarketRequest& request, std::size_t total,
                               std::size_t perBatch, bool lockstep, std::vector<Record>& batch,
                               Fill fill, Send send) {
  if ((request.query.flags & kOneBatchFlag) != 0) perBatch = std::max<std::size_t>(1, total);
  std::size_t sent = 0;
  do {
    const std::size_t size = std::min(perBatch, total - sent);
    batch.resize(size);
    for (std::size_t i = 0; i < size; ++i) fill(sent + i, batch[i]);
    sent += size;
    const bool last = sent == total;
    callSpi(*request.who, lockstep, [&](QuoteSpi& spi) {
      if (!request.ended.load()) send(spi, batch, last ? kLastBatchFlag : 0);
    });
    if (last || request.ended.load()) return;
    KLineProgress progress;
    progress.value1 = static_cast<int64>(sent);
    progress.value2 = static_cast<int64>(total);
    progress.value3 = static_cast<std::int32_t>(sent * 100 / total);
    callSpi(*request.who, lockstep, [&](QuoteSpi& spi) {
      if (!request.ended.load()) spi.onKLineProgress(request.id, progress);
    });
  } while (!request.ended.load());
}

void QuoteService::serveBars(const std::shared_ptr<MarketRequest>& request, bool lockstep) {
  const IMDQuery& query = request->query;
  MarketStream& stream = *store_.sourceOf(query.code.id, request->term);
  const bool direct = stream.periodMs() == periodMsOf(request->term);
  DerivedSeries* series = direct ? nullptr : &store_.derive(stream, request->term, closedThrough_);
  if (series != nullptr) noteOpenEnd(*series);
  const std::span<const IKLine> bars =
      direct ? std::span<const IKLine>(stream.bars().bars) : series->bars();
  const std::size_t known = direct ? stream.known.load() : series->sent;
  const auto begin = [&](std::size_t at) { return shift_.shown(KLineView(bars[at]).beginTime()); };
  std::size_t last = known;
  if (query.endTime != kUnsetTime)
    while (last > 0 && begin(last - 1) >= query.endTime) --last;
  std::size_t first = 0;
  if (query.beginTime != kUnsetTime)
    while (first < last && begin(first) < query.beginTime) ++first;
  if (query.count > 0 && last - first > static_cast<std::size_t>(query.count))
    first = last - static_cast<std::size_t>(query.count);

  // It stands in the list before the history goes out: no record can come between.
  const bool live = goesOn(*request);
  if (live) (direct ? stream.live : series->live).push_back(request);
  std::vector<IKLine> batch;
  sendHistory(
      *request, last - first, kBarsPerBatch, lockstep, batch,
      [&](std::size_t at, IKLine& bar) {
        bar = bars[first + at];
        shift_.show(bar);
      },
      [&](QuoteSpi& spi, const std::vector<IKLine>& part, int flags) {
        spi.onKLine(request->id, part, kFine, flags);
      });
  if (!live) book_.finish(request);
}

void QuoteService::serveTicks(const std::shared_ptr<MarketRequest>& request, bool lockstep) {
  const IMDQuery& query = request->query;
  MarketStream& stream = *store_.ticksOf(query.code.id);
  const auto time = [&](std::size_t at) { return shift_.shown(stream.timeAt(at)); };
  std::size_t last = stream.known.load();
  if (query.endTime != kUnsetTime)
    while (last > 0 && time(last - 1) >= query.endTime) --last;
  std::size_t first = 0;
  if (query.beginTime != kUnsetTime)
    while (first < last && time(first) < query.beginTime) ++first;
  if (query.count > 0 && last - first > static_cast<std::size_t>(query.count))
    first = last - static_cast<std::size_t>(query.count);
  const bool live = goesOn(*request);
  if (live) stream.live.push_back(request);
  std::vector<IDepthMarketData> batch;
  sendHistory(
      *request, last - first, kTicksPerBatch, lockstep, batch,
      [&](std::size_t at, IDepthMarketData& tick) {
        stream.fillTick(first + at, tick);
        shift_.show(tick);
      },
      [&](QuoteSpi& spi, const std::vector<IDepthMarketData>& part, int flags) {
        spi.onTick(request->id, part, kFine, flags);
      });
  if (!live) book_.finish(request);
}

// Delivering records.

/// Lists are being walked. However it ends, nothing of it is left over.
class QuoteService::Delivering {
 public:
  explicit Delivering(QuoteService& service) : service_(service) { ++service_.delivering_; }
  ~Delivering() {
    --service_.delivering_;
    service_.known_.clear();
  }
  Delivering(const Delivering&) = delete;
  Delivering& operator=(const Delivering&) = delete;

 private:
  QuoteService& service_;
};

template <typename Call>
void QuoteService::callSpi(Subscriber& who, bool lockstep, Call call) {
  if (lockstep && !who.blocks) rounds_.enter(who.round);
  const std::unique_lock calling =
      lockstep ? std::unique_lock<std::mutex>() : std::unique_lock(who.calling);
  guarded("a market data call-back threw", [&] { call(*who.spi); });
}

void QuoteService::deliverNext(MarketStream& stream) {
  const std::size_t row = stream.known.load(std::memory_order_relaxed);
  stream.known.store(row + 1, std::memory_order_release);
  rounds_.begin();
  const Delivering delivering(*this);
  // Everything that this record brings is known before anybody is called: what a runner asks for
  // meanwhile is answered alike, whoever else is there to be called first. And requests that come
  // in meanwhile have it all in their history, so only those that stand now are called.
  const std::size_t receivers = stream.live.size();
  for (DerivedSeries* series : stream.derived) {
    series->catchUp(closedThrough_);
    noteOpenEnd(*series);
    // A bar that a tick completed goes out when all records of that instant are through; one that
    // a shorter bar completed, at once.
    if (!stream.isTicks()) makeKnown(*series);
  }
  if (receivers > 0) {
    if (stream.isTicks())
      deliverTick(stream, row);
    else
      deliverBar(stream.live, receivers, stream.bars().bars[row]);
  }
  deliverKnown();
}

void QuoteService::passOver(MarketStream& stream) {
  for (DerivedSeries* series : stream.derived) {
    series->catchUp(closedThrough_);
    series->sent = series->bars().size();
    noteOpenEnd(*series);
  }
}

/// Finds those of the first `count` that get a record; finishes those for whom it is too late.
template <typename IsOver>
void QuoteService::collectDue(const RequestList& live, std::size_t count, IsOver isOver) {
  due_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    if (live[i]->ended.load(std::memory_order_acquire)) continue;
    if (isOver(*live[i]))
      book_.finish(live[i]);
    else
      due_.push_back(live[i].get());
  }
}

template <typename Send>
void QuoteService::callDue(Send send) {
  const auto call = [&send](MarketRequest& request) {
    guarded("a market data call-back threw", [&] {
      if (!request.ended.load(std::memory_order_acquire)) send(*request.who->spi, request);
    });
  };
  const auto isNew = [this](const MarketRequest* request) {
    return !request->who->blocks && rounds_.isNew(request->who->round);
  };
  if (rounds_.sharesCalls(due_.size()) && std::all_of(due_.begin(), due_.end(), isNew)) {
    rounds_.callAll(due_.size(), [&](std::size_t at) {
      const std::lock_guard calling(due_[at]->who->calling);
      call(*due_[at]);
    });
    return;
  }
  for (MarketRequest* request : due_) {
    if (!request->who->blocks) rounds_.enter(request->who->round);
    call(*request);
  }
}

void QuoteService::deliverBar(const RequestList& live, std::size_t count, const IKLine& bar) {
  oneBar_[0] = bar;
  shift_.show(oneBar_[0]);
  const int64 begin = oneBar_[0].words[kline::BeginTime];
  collectDue(live, count,
             [begin](const MarketRequest& request) { return begin >= request.query.endTime; });
  callDue([this](QuoteSpi& spi, const MarketRequest& request) {
    spi.onKLine(request.id, oneBar_, kFine, 0);
  });
}

void QuoteService::deliverTick(MarketStream& stream, std::size_t row) {
  stream.fillTick(row, oneTick_[0]);
  shift_.show(oneTick_[0]);
  const int64 time = oneTick_[0].block1[quote::Time];
  collectDue(stream.live, stream.live.size(), [time](const MarketRequest& request) {
    return request.kind != MarketRequest::Kind::Quote && time >= request.query.endTime;
  });
  callDue([this](QuoteSpi& spi, const MarketRequest& request) {
    if (request.kind == MarketRequest::Kind::Quote)
      spi.onQuote(oneTick_[0]);
    else
      spi.onTick(request.id, oneTick_, kFine, 0);
  });
}

void QuoteService::makeKnown(DerivedSeries& series) {
  const std::size_t first = std::exchange(series.sent, series.bars().size());
  if (first < series.sent) known_.push_back({&series, first, series.sent, series.live.size()});
}

void QuoteService::deliverKnown() {
  for (const KnownBars& known : known_)
    for (std::size_t at = known.first; at < known.last; ++at)
      deliverBar(known.series->live, known.receivers, IKLine(known.series->bars()[at]));
}

void QuoteService::noteOpenEnd(const DerivedSeries& series) {
  nextClose_ = std::min(nextClose_, series.openEnd());
  if (series.sent < series.bars().size())
    nextClose_ = std::min(nextClose_, KLineView(series.bars()[series.sent]).endTime());
}

void QuoteService::closeThrough(int64 time) {
  closedThrough_ = std::max(closedThrough_, time);
  rounds_.begin();
  const Delivering delivering(*this);
  nextClose_ = kUnsetTime;
  std::vector<DerivedSeries*> all;
  for (const auto& series : store_.derived()) all.push_back(series.get());
  std::stable_sort(all.begin(), all.end(), [](const auto* a, const auto* b) {
    return std::pair(periodMsOf(a->term()), a->base().code().id) <
           std::pair(periodMsOf(b->term()), b->base().code().id);
  });
  for (DerivedSeries* series : all) {
    series->closeAt(time);
    makeKnown(*series);
    noteOpenEnd(*series);
  }
  deliverKnown();
}

void QuoteService::rewind() {
  closedThrough_ = store_.beginTime() - 1;
  store_.rewind(closedThrough_);
  nextClose_ = kUnsetTime;
  for (const auto& series : store_.derived()) noteOpenEnd(*series);
}

}  // namespace orvane::detail
