// The call-backs of the dictionary: what is delivered, in which order, and when.

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "platform/core/LostCalls.h"
#include "platform/dictionary/DictionaryService.h"
#include "platform/dictionary/HistoryWalk.h"
#include "platform/fields/DictionaryFlags.h"

namespace orvane::detail {
namespace {

/// A request that has this flag has no end.
constexpr int kOpenEnd = 1;
const ResultStatus kNoFault;

bool wants(const DataReq& query, const std::string& name, const std::string& target) {
  if (query.name != name) return false;
  return query.targets.empty() ||
         std::find(query.targets.begin(), query.targets.end(), target) != query.targets.end();
}

int64 endOf(const DataReq& query) {
  return (query.flags & kOpenEnd) != 0 ? kUnsetTime : query.endTime;
}

bool covers(const DataReq& query, const Record& record) {
  return record.key >= firstKeyOf(query) && record.key <= endOf(query);
}

/// Wishes without a source come in no order of their own; alike ones are interchangeable.
bool isBefore(const RangeWish& a, const RangeWish& b) {
  if (a.source != b.source) return a.source < b.source;
  if (a.source != 0) return a.sequence < b.sequence;
  const auto parts = [](const RangeWish& wish) {
    const DataReq& query = wish.query;
    return std::tie(query.name, query.targets, query.beginTime, query.endTime, query.count,
                    query.flags, wish.tag);
  };
  return parts(a) < parts(b);
}

}  // namespace

template <typename Wanted, typename Call>
void DictionaryService::callSpi(DataReceiver& who, Wanted isWanted, Call call) {
  if (!isWanted()) return;
  rounds_.enter(who.round);
  if (!isWanted()) return;
  guarded("a dictionary call-back threw", [&] { call(*who.spi); });
}

bool DictionaryService::anyWaiting() const {
  return book_.anyWaiting() || waitingWishes_.load() != 0 ||
         (store_.anyWaiting() && delivers_.load());
}

DictionaryView DictionaryService::viewOfDelivery() {
  const DictionaryView view = viewOfReceivers();
  // Without a time everything was there, and was told: so what comes is what comes from now on.
  if (view.now != kUnsetTime && !hadTime_) shownThrough_ = view.now;
  hadTime_ = view.now != kUnsetTime;
  return view;
}

int64 DictionaryService::findDue() {
  nextDue_ = kUnsetTime;
  const DictionaryView view = viewOfDelivery();
  // In playback the time may yet begin, with nobody to say so.
  dueIsStale_.store(parts_.isPlayback && view.now == kUnsetTime);
  if ((live_.empty() && snapshots_.empty()) || view.now == kUnsetTime) return nextDue_;
  guarded("dictionary: next record", [&] {
    nextDue_ =
        store_.read([&](DictionaryTables& tables) { return tables.nextArrival(shownThrough_); });
  });
  return nextDue_;
}

bool DictionaryService::serve() {
  if (!anyWaiting() && nextDue() > parts_.clock()) return false;
  bool any = false;
  guarded("dictionary: serving", [&] { any = serveAll(); });
  return any;
}

bool DictionaryService::serveAll() {
  rounds_.begin();
  sweep();
  if (parts_.cancelled.load()) delivers_.store(false);
  bool any = deliverPublished();
  any = deliverDue() || any;
  any = serveWishes() || any;
  any = serveRequests() || any;
  return serveSnapshots() || any;
}

void DictionaryService::sweep() {
  if (!book_.takeEndedMark()) return;
  const auto ended = [](const auto& request) { return request->ended.load(); };
  std::erase_if(live_, ended);
  std::erase_if(snapshots_, ended);
}

// What is new.

bool DictionaryService::deliverPublished() {
  if (!delivers_.load() || !store_.anyWaiting()) return false;
  // Records whose time came since the last call were there before these publications.
  deliverDue();
  const int64 now = viewOfReceivers().now;
  const std::list<Arrival> arrivals = store_.admit(now);
  dueIsStale_.store(true);
  for (const Arrival& arrival : arrivals)
    deliver(arrival, {now, arrival.place.round, arrival.place.rank});
  return true;
}

bool DictionaryService::deliverDue() {
  const DictionaryView view = viewOfDelivery();
  if (view.now == kUnsetTime) return false;
  const int64 due = nextDue();
  const int64 after = std::exchange(shownThrough_, view.now);
  if (due > view.now) return false;
  dueIsStale_.store(true);
  std::vector<Arrival> arrivals;
  guarded("dictionary: records that are due", [&] {
    arrivals = store_.read([&](DictionaryTables& tables) { return tables.arrivals(after, view); });
  });
  for (const Arrival& arrival : arrivals)
    deliver(arrival, {arrival.shownAt, view.round, view.rank});
  return !arrivals.empty();
}

void DictionaryService::deliver(const Arrival& arrival, const DictionaryView& view) {
  // Requests that come while a receiver is waited for are served later, and find these records in
  // their history.
  for (const auto& request : live_) {
    if (!wants(request->query, arrival.name, arrival.target)) continue;
    guarded("dictionary: a delivery", [&] { deliverTo(request, arrival, view); });
  }
  const SnapshotKey key{arrival.target, arrival.name};
  for (const auto& request : snapshots_)
    if (request->key == key)
      guarded("dictionary: a snapshot", [&] { tellSnapshot(*request, view); });
}

void DictionaryService::deliverTo(const std::shared_ptr<DataRequest>& request,
                                  const Arrival& arrival, const DictionaryView& view) {
  if (arrival.isDeletion) return tellDeletions(request, arrival, view);
  DataResult result;
  result.name = arrival.name;
  result.valueType = static_cast<DataValueType>(arrival.valueType);
  result.targets.push_back({arrival.target, {}});
  std::copy_if(arrival.records.begin(), arrival.records.end(),
               std::back_inserter(result.targets.front().records),
               [&](const Record& record) { return covers(request->query, record); });
  if (!result.targets.front().records.empty()) {
    callSpi(
        *request->who, [&] { return !request->ended.load(); },
        [&](DataSpi& spi) { spi.onData(request->id, result, kNoFault, 0, arrival.tag); });
  }
  if (!goesOn(*request)) book_.finish(request);
}

void DictionaryService::tellDeletions(const std::shared_ptr<DataRequest>& request,
                                      const Arrival& arrival, const DictionaryView& view) {
  DictionaryView before = view;
  before.round = arrival.place.round;
  before.rank = arrival.place.rank - 1;
  for (const Record& record : arrival.records) {
    if (!covers(request->query, record)) continue;
    const RecordRange range{arrival.name, arrival.target, record.key, record.key};
    const int64 count =
        store_.read([&](DictionaryTables& tables) { return tables.count(range, before); });
    if (count == 0) continue;
    callSpi(
        *request->who, [&] { return !request->ended.load(); },
        [&](DataSpi& spi) {
          spi.onDelete(request->id, {arrival.target, arrival.name}, record.key, record.key, count);
        });
  }
}

void DictionaryService::tellSnapshot(SnapshotRequest& request, const DictionaryView& view) {
  StoredRecord newest;
  const bool isThere = store_.read([&](DictionaryTables& tables) {
    return tables.newest({request.key.name, request.key.target}, view, 0, newest);
  });
  const auto placeOf = [](const StoredRecord& each) {
    return std::tuple(each.record.key, each.place.round, each.place.rank, each.place.item);
  };
  const bool isNew = isThere && (!request.told || placeOf(*request.told) != placeOf(newest));
  request.told = isThere ? std::optional(newest) : std::nullopt;
  if (!isNew) return;
  callSpi(
      *request.who, [&] { return !request.ended.load(); },
      [&](DataSpi& spi) { spi.onSnapshot(request.key, newest.record); });
}

// What was asked.

bool DictionaryService::goesOn(const DataRequest& request) const {
  if (request.ended.load()) return false;
  return endOf(request.query) == kUnsetTime || endOf(request.query) > parts_.clock();
}

std::vector<RangeWish> DictionaryService::takeWishes() {
  std::vector<RangeWish> wishes;
  {
    const std::lock_guard lock(wishMutex_);
    wishes.swap(wishes_);
    waitingWishes_.store(0);
  }
  std::stable_sort(wishes.begin(), wishes.end(), isBefore);
  return wishes;
}

bool DictionaryService::serveWishes() {
  if (waitingWishes_.load() == 0) return false;
  for (const RangeWish& wish : takeWishes()) {
    for (const auto& request : live_) {
      if (request->query.name != wish.query.name) continue;
      DataReq range = wish.query;
      if (range.targets.empty()) {
        range.targets = request->query.targets;
      } else if (!request->query.targets.empty()) {
        range.targets.remove_if([&](const std::string& target) {
          return !wants(request->query, request->query.name, target);
        });
        if (range.targets.empty()) continue;
      }
      guarded("dictionary: a range request",
              [&] { sendRange(request, range, dictionary::kRangeAnswer, wish.tag, false); });
    }
  }
  return true;
}

bool DictionaryService::serveRequests() {
  bool any = false;
  while (const std::shared_ptr<DataRequest> request = book_.takeRequest()) {
    any = true;
    if (request->ended.load()) continue;
    if (goesOn(*request)) live_.push_back(request);
    dueIsStale_.store(true);
    guarded("dictionary: a request", [&] { sendRange(request, request->query, 0, 0, true); });
    if (!goesOn(*request)) book_.finish(request);
  }
  return any;
}

bool DictionaryService::serveSnapshots() {
  bool any = false;
  while (const std::shared_ptr<SnapshotRequest> request = book_.takeSnapshot()) {
    any = true;
    if (request->ended.load()) continue;
    snapshots_.push_back(request);
    dueIsStale_.store(true);
    guarded("dictionary: a snapshot", [&] { tellSnapshot(*request, viewOfReceivers()); });
  }
  return any;
}

void DictionaryService::sendRange(const std::shared_ptr<DataRequest>& request, const DataReq& range,
                                  int flags, int64 tag, bool tellsProgress) {
  const auto isWanted = [&] { return !request->ended.load(); };
  const auto send = [&](const DataResult& result, const ResultStatus& status, int last) {
    callSpi(*request->who, isWanted,
            [&](DataSpi& spi) { spi.onData(request->id, result, status, flags | last, tag); });
  };
  DataResult nothing;
  nothing.name = range.name;
  try {
    HistoryWalk walk(store_, range, endOf(range), viewOfReceivers());
    if (walk.atEnd()) return send(nothing, kNoFault, dictionary::kLastBatch);
    while (isWanted() && !walk.atEnd()) {
      const DataResult result = walk.next(kRecordsPerBatch);
      send(result, kNoFault, walk.atEnd() ? dictionary::kLastBatch : 0);
      if (!tellsProgress || walk.atEnd()) continue;
      callSpi(*request->who, isWanted, [&](DataSpi& spi) {
        spi.onProgress(request->id, static_cast<int>(std::min<int64>(walk.sent(), kNoLimit)),
                       static_cast<int>(std::min<int64>(walk.total(), kNoLimit)));
      });
    }
  } catch (const SQLite::Exception& error) {
    send(nothing, failed(error.what()), dictionary::kLastBatch);
  }
}

// The run.

void DictionaryService::beginRun() { delivers_.store(!parts_.cancelled.load()); }

void DictionaryService::rewind() {
  {
    const std::lock_guard lock(wishMutex_);
    wishes_.clear();
    waitingWishes_.store(0);
  }
  const int64 now = viewOfReceivers().now;
  shownThrough_ = now == kUnsetTime ? -kUnsetTime : now;
  hadTime_ = now != kUnsetTime;
  for (const auto& request : snapshots_) request->told.reset();
  delivers_.store(true);
  dueIsStale_.store(true);
  store_.removeRun();
}

}  // namespace orvane::detail
