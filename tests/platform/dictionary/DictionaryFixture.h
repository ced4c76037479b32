#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/fields/DictionaryFlags.h"
#include "services/Common/BDUtil.h"
#include "services/Common/IDataService.h"
#include "services/QuoteClient/BarDataReadSyncWrapper.h"
#include "services/ov.publisher/IPublisher.h"
#include "tests/platform/dictionary/TempFolder.h"
#include "tests/platform/market/PlatformFixture.h"

namespace orvane::testing {

using Lines = std::vector<std::string>;

inline std::string textOf(const std::list<Record>& records) {
  std::string text;
  for (const Record& record : records)
    text += (text.empty() ? "" : " ") + std::to_string(record.key) + "=" + record.text;
  return text;
}

/// Records every call-back as a line, and hands it on.
class DataRecorder : public DataSpi {
 public:
  void onSnapshot(const SnapshotKey& key, const Record& record) override {
    add("snapshot " + key.name + "/" + key.target + " " + textOf({record}));
  }
  void onProgress(int id, int sent, int total) override {
    add("progress#" + std::to_string(id) + " " + std::to_string(sent) + "/" +
        std::to_string(total));
  }
  void onData(int id, const DataResult& result, const ResultStatus& status, int flags,
              int64 tag) override {
    std::string line = "data#" + std::to_string(id);
    for (const TargetRecord& each : result.targets)
      line += " " + result.name + "/" + each.target + " " +
              (each.records.size() > 9 ? "*" + std::to_string(each.records.size())
                                       : textOf(each.records));
    if (status.code != 0) line += " status=" + std::to_string(status.code);
    if (flags != 0) line += " f" + std::to_string(flags);
    if (tag != 0) line += " t" + std::to_string(tag);
    if (result.valueType != DataValueType::None)
      line += " v" + std::to_string(static_cast<int>(result.valueType));
    add(line);
  }
  void onDelete(int id, const SnapshotKey& key, int64 first, int64 last, int64 count) override {
    add("delete#" + std::to_string(id) + " " + key.name + "/" + key.target + " " +
        std::to_string(first) + "-" + std::to_string(last) + " n" + std::to_string(count));
  }
  Lines lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  Lines take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }
  /// Called on the service's thread after each line.
  std::function<void(const std::string& line)> onLine;

 private:
  void add(const std::string& line) {
    {
      const std::lock_guard lock(mutex_);
      lines_.push_back(line);
    }
    if (onLine) onLine(line);
  }

  mutable std::mutex mutex_;
  Lines lines_;
};

/// Hands what comes to a runner's stand-in, which handles it on the pool.
class RunnerData final : public DataSpi {
 public:
  explicit RunnerData(std::shared_ptr<RunnerSpi> runner) : runner_(std::move(runner)) {}

  void onSnapshot(const SnapshotKey& key, const Record& record) override {
    runner_->push("snapshot " + key.target + " " + record.text);
  }
  void onProgress(int id, int sent, int total) override {
    runner_->push("progress#" + std::to_string(id) + " " + std::to_string(sent) + "/" +
                  std::to_string(total));
  }
  void onData(int id, const DataResult& result, const ResultStatus&, int flags, int64) override {
    std::string line = "data#" + std::to_string(id);
    for (const TargetRecord& each : result.targets) {
      line += " " + each.target;
      for (const Record& record : each.records)
        line += " " + RecordingSpi::relative(record.key) + "=" + record.text;
    }
    runner_->push(line + " f" + std::to_string(flags));
  }
  void onDelete(int id, const SnapshotKey& key, int64 first, int64, int64 count) override {
    runner_->push("delete#" + std::to_string(id) + " " + key.target + " " +
                  RecordingSpi::relative(first) + " n" + std::to_string(count));
  }

 private:
  const std::shared_ptr<RunnerSpi> runner_;
};

inline IDataService& dictionary() { return *IServiceRouter::instance()->quoteHub()->dataService(); }

inline std::unique_ptr<IPublisher> makePublisher() {
  return std::unique_ptr<IPublisher>(IPublisher::create(0));
}

inline DataReq wanting(const std::string& name, std::list<std::string> targets,
                       int64 begin = kUnsetTime, int64 end = kUnsetTime, int count = kNoLimit) {
  DataReq request;
  request.name = name;
  request.targets = std::move(targets);
  request.beginTime = begin;
  request.endTime = end;
  request.count = count;
  return request;
}

inline std::string readAll(const std::string& name, const std::string& target,
                           int64 begin = -kUnsetTime, int64 end = kUnsetTime) {
  std::list<Record> records;
  const ResultStatus status =
      BarDataReadSyncWrapper::getRecords(target, name, begin, end, records, {}, 0, 0);
  return status.code == 0 ? textOf(records) : "status " + std::to_string(status.code);
}

}  // namespace orvane::testing
