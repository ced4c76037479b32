#pragma once

#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sdk/testing/RecordingTrade.h"

namespace orvane {

/// A context without a platform: it keeps what a strategy did, in the order in which it was done,
/// and answers from what a test put into it. Its members (`subscriptions`, `orders`, `cancels`,
/// `logs`, `timers`, `publications`, ...) are there to be looked at; see `Recorded.h`.
///
/// Codes, accounts, quotes, positions and dictionary records are those that were added, and nothing
/// else: a code that is not known is answered 22, as by a platform. Dictionary records that the
/// strategy published can be read. `script` puts statuses into its mouth:
///
///     context.script.next("sendOrder", {-6, "not connected"});
///
/// A query with a scripted status answers as good as nothing. Nothing is delivered by itself: a
/// `StrategyHarness` does that. For one thread; owns all that it holds.
class RecordingContext final : public detail::RecordingTrade {
 public:
  std::vector<RecordedDicSubscription> dicSubscriptions;  ///< In their order.
  bool isExited = false;                                  ///< `exit` was called.

  /// A dictionary record that can be read; `name` and `target` UTF-8.
  void addRecord(const std::string& name, const std::string& target, const Record& record) {
    put(gbk(name), gbk(target), record);
  }
  /// The records of a dictionary's target, those that were published too, by key; UTF-8 names.
  std::list<Record> records(const std::string& name, const std::string& target) const {
    std::list<Record> result;
    if (const auto found = records_.find({gbk(name), gbk(target)}); found != records_.end())
      for (const auto& [key, record] : found->second) result.push_back(record);
    return result;
  }

  ResultStatus subscribeDic(const std::string& name, const std::string& key, int64, int64,
                            int) override {
    for (const RecordedDicSubscription& each : dicSubscriptions)
      if (isOf(each, name, key, false)) return each.status;
    dicSubscriptions.push_back({name, key, false, answer("subscribeDic")});
    return dicSubscriptions.back().status;
  }
  void subscribeDicSnapshot(const std::string& name, const std::string& key, int) override {
    for (const RecordedDicSubscription& each : dicSubscriptions)
      if (isOf(each, name, key, true)) return;
    dicSubscriptions.push_back({name, key, true, {}});
  }
  void unsubscribeDic(const std::string& name, const std::string& key) override {
    for (RecordedDicSubscription& each : dicSubscriptions)
      if (isOf(each, name, key, false)) each.isEnded = true;
  }
  void unsubscribeDicSnapshot(const std::string& name, const std::string& key) override {
    for (RecordedDicSubscription& each : dicSubscriptions)
      if (isOf(each, name, key, true)) each.isEnded = true;
  }

  ResultStatus publishRecords(const std::string& name, const std::string& target, int,
                              const std::list<Record>& records, int flags) override {
    ResultStatus status = published("publishRecords", name, target, records.size(), flags);
    if (status.code == 0)
      for (const Record& record : records) put(name, target, record);
    return status;
  }
  /// Those whose key lies from `begin` to `end`.
  ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                           int64 end, std::list<Record>& found, int) override {
    for (const auto& [key, record] : records_[{name, target}])
      if ((begin == kUnsetTime || key >= begin) && key <= end) found.push_back(record);
    return answer("readRecords");
  }
  ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                           int64 time, std::map<std::string, Record>& found, int64, int) override {
    for (const std::string& target : targets)
      if (Record record; newest(name, target, time, record)) found[target] = record;
    return answer("readTargets");
  }
  ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                          Record& record, int) override {
    const bool isThere = newest(name, target, time, record);
    ResultStatus status = isThere ? ResultStatus() : notThere();
    script.take("readRecord", status);
    return status;
  }
  ResultStatus readLatest(const std::string& name, const std::string& target, Record& record,
                          int) override {
    const bool isThere = newest(name, target, kUnsetTime, record);
    ResultStatus status = isThere ? ResultStatus() : notThere();
    script.take("readLatest", status);
    return status;
  }
  ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                              std::list<LatestOfName>& latest, int) override {
    for (const auto& [target, name] : keys) {
      Record record;
      if (newest(name, target, kUnsetTime, record))
        latest.push_back({name, {LatestOfTarget{target, {record}}}});
    }
    return answer("readLatestMany");
  }
  void requestRange(const std::string&, const std::string&, int64, int64, int) override {}
  ResultStatus dataDefine(const std::string&, DataDefine&) override { return answer("dataDefine"); }

  /// Ends every subscription and timer.
  void exit() override {
    isExited = true;
    endWhere([](const RecordedSubscription&) { return true; });
    for (RecordedDicSubscription& each : dicSubscriptions) each.isEnded = true;
    for (RecordedTimer& timer : timers) timer.isStopped = true;
  }

 private:
  static bool isOf(const RecordedDicSubscription& each, const std::string& name,
                   const std::string& target, bool isSnapshot) {
    return each.name == name && each.target == target && each.isSnapshot == isSnapshot &&
           !each.isEnded;
  }
  void put(const std::string& name, const std::string& target, const Record& record) {
    records_[{name, target}][record.key] = record;
  }
  /// The newest at or before a time.
  bool newest(const std::string& name, const std::string& target, int64 time, Record& record) {
    const auto& its = records_[{name, target}];
    auto at = its.upper_bound(time);
    if (at == its.begin()) return false;
    record = (--at)->second;
    return true;
  }

  std::map<std::pair<std::string, std::string>, std::map<int64, Record>> records_;  ///< GBK names.
};

}  // namespace orvane
