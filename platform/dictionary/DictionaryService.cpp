// What strategies ask the dictionary, and what they publish.

#include "platform/dictionary/DictionaryService.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "platform/core/NotSupported.h"
#include "platform/core/Periods.h"
#include "shared/StatusCodes.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

using status::kBadArgument;
using status::kIgnored;
using status::kNotThere;
using status::kStorageFailed;
using status::kTimedOut;

std::int32_t clamped(int64 value) {
  return static_cast<std::int32_t>(std::min<int64>(value, kNoLimit));
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

/// What is said of a dictionary as a whole.
struct Summary {
  int64 targets = 0;
  int64 records = 0;
  int64 firstKey = kUnsetTime;
  int64 lastKey = -kUnsetTime;
  std::int32_t valueType = 0;  ///< Of the record with the last key.
};

Summary summaryOf(DictionaryTables& tables, const std::string& name, const DictionaryView& view) {
  Summary summary;
  for (const std::string& target : tables.targets(name, view)) {
    const RecordRange range{name, target};
    const std::vector<StoredRecord> first = tables.page(range, view, nullptr, 1);
    StoredRecord last;
    if (first.empty() || !tables.newest(range, view, 0, last)) continue;
    ++summary.targets;
    summary.records += tables.count(range, view);
    summary.firstKey = std::min(summary.firstKey, first.front().record.key);
    if (last.record.key < summary.lastKey) continue;
    summary.lastKey = last.record.key;
    summary.valueType = last.valueType;
  }
  return summary;
}

/// Whether a read may go on. Asked with no lock held. A playback sets no bound: what a strategy
/// sees there must not depend on how fast the machine is.
class Patience {
 public:
  Patience(const std::function<int64()>& clock, const DictionaryService::Cancel& cancelled,
           int64 waitMs)
      : clock_(clock), cancelled_(cancelled), waitMs_(waitMs), begin_(clock()) {}

  /// The status that ends the read; code 0 while it may go on.
  ResultStatus status() const {
    if (cancelled_ && cancelled_()) return statusWith(kIgnored, "cancelled");
    if (waitMs_ > 0 && clock_() - begin_ >= waitMs_)
      return statusWith(kTimedOut, std::to_string(waitMs_) + " ms");
    return {};
  }

 private:
  const std::function<int64()>& clock_;
  const DictionaryService::Cancel& cancelled_;
  const int64 waitMs_;
  const int64 begin_;
};

}  // namespace

DictionaryService::DictionaryService(Parts parts)
    : parts_(std::move(parts)), store_(parts_.file, parts_.isPlayback) {}

DictionaryService::~DictionaryService() = default;

DictionaryView DictionaryService::viewOfReceivers() const {
  const bool isBound = parts_.isPlayback && parts_.hasTime();
  return {isBound ? parts_.clock() : kUnsetTime, store_.admitted(), kUnsetTime};
}

DictionaryView DictionaryService::viewOfReader() const {
  DictionaryView view = viewOfReceivers();
  // What a call-back publishes others see when all are quiet, else it would depend on the threads
  // who sees it. Whoever reads while no call-back runs sees everything.
  if (!parts_.isPlayback || parts_.isOutside()) view.round = kUnsetTime;
  return view;
}

ResultStatus DictionaryService::failed(const std::string& what) const {
  return statusWith(kStorageFailed, parts_.file.empty() ? what : parts_.file + ": " + what);
}

template <typename Answer>
ResultStatus DictionaryService::answer(Answer answer) {
  try {
    return answer(viewOfReader());
  } catch (const SQLite::Exception& error) {
    return failed(error.what());
  }
}

// Questions.

ResultStatus DictionaryService::dataDefines(std::list<DataDefine>& defines,
                                            const std::list<std::string>& names, int /*flags*/) {
  return answer([&](const DictionaryView& view) {
    std::list<DataDefine> found;
    store_.read([&](DictionaryTables& tables) {
      std::vector<std::string> wanted(names.begin(), names.end());
      if (wanted.empty()) wanted = tables.names(view);
      for (const std::string& name : wanted) {
        const Summary summary = summaryOf(tables, name, view);
        if (summary.targets == 0) continue;
        DataDefine define;
        define.text1 = name;
        define.text2 = std::to_string(summary.firstKey);
        define.text3 = std::to_string(summary.lastKey);
        define.value1 = clamped(summary.targets);
        define.value2 = clamped(summary.records);
        define.value3 = summary.valueType;
        found.push_back(std::move(define));
      }
    });
    defines = std::move(found);
    return ResultStatus();
  });
}

ResultStatus DictionaryService::dataBriefs(std::list<DataBrief>& briefs,
                                           const std::list<std::string>& names) {
  std::list<DataDefine> defines;
  ResultStatus status = dataDefines(defines, names, 0);
  if (status.code != 0) return status;
  briefs.clear();
  for (const DataDefine& define : defines)
    briefs.push_back({define.text1, std::to_string(define.value1) + " targets, " +
                                        std::to_string(define.value2) + " records"});
  return status;
}

ResultStatus DictionaryService::queryOp(const std::string& question, std::string& text) {
  constexpr const char* kTargets = "targets ";
  const bool asksTargets = question.starts_with(kTargets);
  if (!asksTargets && question != "names") return notSupported();
  return answer([&](const DictionaryView& view) {
    text = joined(store_.read([&](DictionaryTables& tables) {
      return asksTargets
                 ? tables.targets(question.substr(std::char_traits<char>::length(kTargets)), view)
                 : tables.names(view);
    }));
    return ResultStatus();
  });
}

std::list<std::string> DictionaryService::targetsOfName(const std::string& name) {
  std::list<std::string> targets;
  answer([&](const DictionaryView& view) {
    const std::vector<std::string> found =
        store_.read([&](DictionaryTables& tables) { return tables.targets(name, view); });
    targets.assign(found.begin(), found.end());
    return ResultStatus();
  });
  return targets;
}

ResultStatus DictionaryService::readLatest(const std::list<TargetNamePair>& keys,
                                           std::list<LatestOfName>& latest, int /*flags*/) {
  return answer([&](const DictionaryView& view) {
    std::list<LatestOfName> found;
    for (const TargetNamePair& key : keys) {
      const std::string& target = key.first;
      const std::string& name = key.second;
      StoredRecord record;
      const bool isThere = store_.read([&](DictionaryTables& tables) {
        return tables.newest({name, target}, view, 0, record);
      });
      if (!isThere) continue;
      auto at = std::find_if(found.begin(), found.end(),
                             [&](const LatestOfName& each) { return each.first == name; });
      if (at == found.end()) at = found.insert(found.end(), {name, {}});
      at->second.push_back({target, {std::move(record.record)}});
    }
    latest = std::move(found);
    return ResultStatus();
  });
}

ResultStatus DictionaryService::readRecords(const RecordRange& range, std::list<Record>& records,
                                            const Cancel& cancelled, int64 waitMs) {
  const Patience patience(parts_.steadyMs, cancelled, parts_.isPlayback ? 0 : waitMs);
  return answer([&](DictionaryView view) {
    std::list<Record> found;
    StoredRecord last;
    bool isFirst = true;
    while (true) {
      if (ResultStatus status = patience.status(); status.code != 0) return status;
      const std::vector<StoredRecord> page = store_.read([&](DictionaryTables& tables) {
        return tables.page(range, view, isFirst ? nullptr : &last, kRecordsPerBatch);
      });
      for (const StoredRecord& each : page) found.push_back(each.record);
      if (page.size() < kRecordsPerBatch) break;
      last = page.back();
      isFirst = false;
    }
    records = std::move(found);
    return ResultStatus();
  });
}

ResultStatus DictionaryService::readTargets(const std::list<std::string>& targets,
                                            const std::string& name, int64 time,
                                            std::list<TargetRecord>& records,
                                            const Cancel& cancelled, int64 waitMs) {
  const Patience patience(parts_.steadyMs, cancelled, parts_.isPlayback ? 0 : waitMs);
  return answer([&](const DictionaryView& view) {
    std::list<TargetRecord> found;
    const std::list<std::string> wanted = targets.empty() ? targetsOfName(name) : targets;
    for (const std::string& target : wanted) {
      if (ResultStatus status = patience.status(); status.code != 0) return status;
      StoredRecord record;
      RecordRange range{name, target};
      range.end = time;
      if (store_.read(
              [&](DictionaryTables& tables) { return tables.newest(range, view, 0, record); }))
        found.push_back({target, {std::move(record.record)}});
    }
    const bool isEmpty = found.empty();
    records = std::move(found);
    return isEmpty ? statusWith(kNotThere, name) : ResultStatus();
  });
}

// Requests.

ResultStatus DictionaryService::subscribeData(const DataReq& request,
                                              const std::shared_ptr<DataSpi>& spi, int requestId) {
  if (spi == nullptr) return statusWith(kBadArgument, "spi");
  if (request.name.empty()) return statusWith(kBadArgument, "name");
  auto standing = std::make_shared<DataRequest>();
  standing->id = requestId;
  standing->query = request;
  book_.add(standing, spi);
  parts_.onRequest();
  return {};
}

void DictionaryService::unsubscribeData(int requestId) {
  book_.cancel(requestId);
  parts_.onEnded();
}

void DictionaryService::subscribeSnapshot(const std::list<TargetNamePair>& keys,
                                          const std::shared_ptr<DataSpi>& spi, int /*flags*/) {
  if (spi == nullptr) return;
  for (const auto& [target, name] : keys) book_.addSnapshot({target, name}, spi);
  parts_.onRequest();
}

void DictionaryService::unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>& spi) {
  book_.cancelSnapshots(spi.get());
  parts_.onEnded();
}

void DictionaryService::unsubscribeSnapshot(const std::list<TargetNamePair>& keys,
                                            const std::shared_ptr<DataSpi>& spi, int /*flags*/) {
  for (const auto& [target, name] : keys) book_.cancelSnapshot({target, name}, spi.get());
  parts_.onEnded();
}

ResultStatus DictionaryService::requestAll(const DataReq& request, int64 tag) {
  return requestRange(0, request, tag);
}

ResultStatus DictionaryService::requestRange(int source, const DataReq& request, int64 tag) {
  if (request.name.empty()) return statusWith(kBadArgument, "name");
  noteWish({request, tag, source, 0});
  parts_.onRequest();
  return {};
}

void DictionaryService::noteWish(RangeWish wish) {
  const std::lock_guard lock(wishMutex_);
  wish.sequence = ++wishCount_;
  wishes_.push_back(std::move(wish));
  waitingWishes_.store(wishes_.size());
}

// Publications.

ResultStatus DictionaryService::publish(int source, RecordPublication publication) {
  if (publication.name.empty()) return statusWith(kBadArgument, "name");
  if (publication.target.empty()) return statusWith(kBadArgument, "target");
  const bool isInput = parts_.isOutside();
  ResultStatus status = store_.publish(source, std::move(publication), parts_.clock(), isInput);
  if (status.code != 0) return status;
  dueIsStale_.store(true);
  parts_.onRequest();
  return status;
}

void DictionaryService::load(const std::vector<RecordPublication>& publications) {
  for (const RecordPublication& publication : publications) {
    if (publication.name.empty()) throw std::invalid_argument("records: the name is empty");
    if (publication.target.empty())
      throw std::invalid_argument("records of \"" + gbkToUtf8(publication.name) +
                                  "\": the target is empty");
  }
  store_.load(publications);
  dueIsStale_.store(true);
}

}  // namespace orvane::detail
