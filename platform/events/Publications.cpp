#include "platform/events/Publications.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <iterator>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/core/ZoneRules.h"
#include "platform/events/PublicationChecks.h"
#include "services/Common/ICodeService.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane::detail {
namespace {

/// More than this many milliseconds are no period.
constexpr int64 kLongestPeriodMs = 366LL * 86'400'000;

ResultStatus wrong(const std::string& what) { return statusWith(-2, what); }

/// The calendar day, YYYYMMDD, of a time in a zone.
std::int32_t dayOf(const std::string& timeZone, int64 time) {
  using namespace std::chrono;
  const auto zone = ZoneRules::find(timeZone);
  const milliseconds local(zone == nullptr ? time : zone->toLocal(time));
  const year_month_day date{floor<days>(sys_time<milliseconds>{local})};
  return static_cast<int>(date.year()) * 10'000 +
         static_cast<std::int32_t>(static_cast<unsigned>(date.month()) * 100 +
                                   static_cast<unsigned>(date.day()));
}

/// A trading day that is not told is the local one.
void tellDay(IDepthMarketData& tick, const std::string& timeZone) {
  const QuoteView view(tick);
  if (view.tradingDay() == 0)
    QuoteWriter(tick).set(quote::TradingDay, dayOf(timeZone, view.time()));
}

void tellDay(IKLine& bar, const std::string& timeZone) {
  const KLineView view(bar);
  if (view.tradingDay() == 0)
    KLineWriter(bar).setDayAndFlags(dayOf(timeZone, view.endTime() - 1), view.flags());
}

std::string placeOf(const char* list, std::size_t at) {
  return std::string(list) + "[" + std::to_string(at) + "]: ";
}

}  // namespace

// What publishers ask.

ResultStatus Publications::begin(int publisher, const ICodeID& code, int64 periodMs, int flags,
                                 Publication& publication) const {
  ICodeProperty property;
  if (ResultStatus status = parts_.codes.currentCodeProperty(code, property, kUnsetTime);
      status.code != 0)
    return status;
  if (parts_.store.hasFileOf(property.code.id))
    return wrong(codeText(property.code) + " is fed by files");
  if (periodMs < 0 || periodMs > kLongestPeriodMs)
    return wrong("term " + std::to_string(periodMs) + " is not a period");
  publication.publisher = publisher;
  publication.code = property.code;
  publication.timeZone = property.timeZone;
  publication.periodMs = periodMs;
  publication.isLive = (flags & kLiveFlag) != 0;
  return {};
}

int64 Publications::lastTimeOf(int publisher, int64 codeId, int64 periodMs) const {
  const MarketStream* stream = parts_.store.exactOf(codeId, periodMs);
  const bool isThere = stream != nullptr && stream->published() != nullptr;
  const int64 told = isThere ? stream->published()->lastTime() : PublishedSeries::kNoTime;
  const std::lock_guard lock(mutex_);
  const int64 last = told == PublishedSeries::kNoTime ? told : shift_.shown(told);
  const auto at = lastTimes_.find({publisher, codeId, periodMs});
  return at == lastTimes_.end() ? last : std::max(last, at->second);
}

ResultStatus Publications::publishTicks(int publisher, const std::list<IDepthMarketData>& ticks,
                                        const ICodeID* code, int flags) {
  if (ticks.empty()) return wrong("no quotes are given");
  const int64 now = parts_.now();
  std::vector<Publication> publications;
  std::map<Line, int64> lastTimes;
  std::size_t at = 0;
  for (const IDepthMarketData& tick : ticks) {
    const std::string place = placeOf("quotes", at++);
    if (code != nullptr && tick.code.id != 0 && tick.code.id != code->id)
      return wrong(place + "its code is " + codeText(tick.code));
    Publication publication;
    const ICodeID& wanted = code != nullptr ? *code : tick.code;
    if (ResultStatus status = begin(publisher, wanted, 0, flags, publication); status.code != 0)
      return status;
    if (const std::string fault = faultOf(tick, now); !fault.empty()) return wrong(place + fault);
    const int64 id = publication.code.id;
    const auto [last, isNew] = lastTimes.try_emplace({publisher, id, 0}, 0);
    if (isNew) last->second = lastTimeOf(publisher, id, 0);
    const int64 time = QuoteView(tick).time();
    if (time < last->second) return wrong(place + "its time is before that of the quote before");
    last->second = time;
    publication.ticks.push_back(tick);
    publication.ticks.back().code = publication.code;
    tellDay(publication.ticks.back(), publication.timeZone);
    publications.push_back(std::move(publication));
  }
  put(std::move(publications), lastTimes);
  return {};
}

ResultStatus Publications::publishBars(int publisher, const ICodeID& code,
                                       const std::list<IKLine>& bars, int64 periodMs, int flags) {
  if (bars.empty()) return wrong("no bars are given");
  const int64 now = parts_.now();
  const bool isOpenPeriod = periodMs == 0;
  if (isOpenPeriod) {
    const std::string fault = faultOf(bars.front(), kLongestPeriodMs, now);
    if (!fault.empty()) return wrong(placeOf("bars", 0) + fault);
    const KLineView first(bars.front());
    periodMs = first.endTime() - first.beginTime();
  }
  Publication publication;
  if (ResultStatus status = begin(publisher, code, periodMs, flags, publication); status.code != 0)
    return status;
  const Line line{publisher, publication.code.id, periodMs};
  int64 last = lastTimeOf(publisher, publication.code.id, periodMs);
  std::size_t at = 0;
  for (const IKLine& bar : bars) {
    const std::string place = placeOf("bars", at++);
    const KLineView view(bar);
    if (const std::string fault = faultOf(bar, periodMs, now); !fault.empty())
      return wrong(place + fault);
    if (isOpenPeriod && view.endTime() - view.beginTime() != periodMs)
      return wrong(place + "it lasts shorter than bars[0]");
    if (view.endTime() <= last) return wrong(place + "it does not end after the bar before");
    last = view.endTime();
    publication.bars.push_back(bar);
    tellDay(publication.bars.back(), publication.timeZone);
  }
  std::vector<Publication> publications;
  publications.push_back(std::move(publication));
  put(std::move(publications), {{line, last}});
  return {};
}

ResultStatus Publications::announce(int publisher, const ICodeID& code, int64 periodMs) {
  Publication publication;
  if (ResultStatus status = begin(publisher, code, periodMs, 0, publication); status.code != 0)
    return status;
  std::vector<Publication> publications;
  publications.push_back(std::move(publication));
  put(std::move(publications), {});
  return {};
}

ResultStatus Publications::makeKnown(const ICodeID& code, int64 periodMs) {
  Publication publication;
  if (ResultStatus status = begin(0, code, periodMs, 0, publication); status.code != 0)
    return status;
  parts_.store.publishedOf(publication.code, periodMs, publication.timeZone);
  return {};
}

void Publications::put(std::vector<Publication> publications,
                       const std::map<Line, int64>& lastTimes) {
  {
    const std::lock_guard lock(mutex_);
    for (Publication& each : publications) waiting_.push_back(std::move(each));
    for (const auto& [line, last] : lastTimes) lastTimes_[line] = last;
    waitingCount_.store(waiting_.size());
  }
  parts_.onWaiting();
}

// Taking in.

void Publications::beginRun(const TimeShift& shift) {
  {
    const std::lock_guard lock(mutex_);
    shift_ = shift;
  }
  isOpen_.store(true);
}

void Publications::forgetLastTimes() {
  if (!std::exchange(hasTakenIn_, false)) return;
  const std::lock_guard lock(mutex_);
  if (waiting_.empty()) lastTimes_.clear();
}

void Publications::takeIn() {
  hasTakenIn_ = true;
  std::vector<Publication> all;
  {
    const std::lock_guard lock(mutex_);
    all.swap(waiting_);
    waitingCount_.store(0);
  }
  if (parts_.isPlayback)
    std::stable_sort(all.begin(), all.end(), [](const Publication& a, const Publication& b) {
      return a.publisher < b.publisher;
    });
  std::move(all.begin(), all.end(), std::back_inserter(admitted_));
}

bool Publications::appendRow(MarketStream& stream, Publication& publication, std::size_t row) {
  PublishedSeries& series = *stream.published();
  const auto dropped = [&] {
    std::cerr << "a publication was dropped: " << gbkToUtf8(codeText(publication.code))
              << ": another publisher was ahead of it in time\n";
    return false;
  };
  if (publication.periodMs > 0) {
    IKLine& bar = publication.bars[row];
    bar.words[kline::BeginTime] = shift_.inData(bar.words[kline::BeginTime]);
    bar.words[kline::EndTime] = shift_.inData(bar.words[kline::EndTime]);
    if (KLineView(bar).endTime() <= series.lastTime()) return dropped();
    series.append(bar);
  } else {
    IDepthMarketData& tick = publication.ticks[row];
    tick.block1[quote::Time] = shift_.inData(tick.block1[quote::Time]);
    if (QuoteView(tick).time() < series.lastTime()) return dropped();
    series.append(tick);
  }
  return true;
}

bool Publications::dropIfFedByFiles(const Publication& publication) {
  // A host may add a file between the publication and now; then there is nothing to append to.
  if (!parts_.store.hasFileOf(publication.code.id)) return false;
  std::cerr << "a publication was dropped: " << gbkToUtf8(codeText(publication.code))
            << " is fed by files\n";
  admitted_.pop_front();
  nextRow_ = 0;
  return true;
}

MarketStream* Publications::takeNext(const std::function<void(MarketStream&)>& onHistory) {
  if (anyWaiting()) takeIn();
  while (!admitted_.empty()) {
    Publication& first = admitted_.front();
    if (dropIfFedByFiles(first)) continue;
    MarketStream& stream = parts_.store.publishedOf(first.code, first.periodMs, first.timeZone);
    const std::size_t rows = first.periodMs > 0 ? first.bars.size() : first.ticks.size();
    while (nextRow_ < rows) {
      if (!appendRow(stream, first, nextRow_++)) continue;
      if (first.isLive) return &stream;
      stream.known.fetch_add(1);
    }
    if (!first.isLive) onHistory(stream);
    admitted_.pop_front();
    nextRow_ = 0;
  }
  forgetLastTimes();
  return nullptr;
}

void Publications::dropWaiting() {
  const std::lock_guard lock(mutex_);
  waiting_.clear();
  lastTimes_.clear();
  waitingCount_.store(0);
  admitted_.clear();
  nextRow_ = 0;
}

}  // namespace orvane::detail
